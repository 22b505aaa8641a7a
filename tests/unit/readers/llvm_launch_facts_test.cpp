// Launch facts of LLVM assembly listings: wave size, LDS bytes and the
// XNACK_MASK reservation from each kernel descriptor, workgroup size from the
// metadata that follows the functions, and errors for values that are not
// numbers. Objdump text states none of them.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "readers/llvm_listing_reader.h"
#include "util/analysis_error.h"

namespace vesk {
namespace {

struct Facts {
  std::string name;
  std::optional<int> waveSize;
  std::optional<uint32_t> ldsBytes;
  std::optional<uint32_t> workgroupSize;
  std::optional<bool> xnack;
  bool operator==(const Facts&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Facts& f) {
  const auto show = [&](const char* what, const auto& value) {
    out << " " << what << "=";
    if (value) {
      out << *value;
    } else {
      out << "-";
    }
  };
  out << f.name;
  show("wave", f.waveSize);
  show("lds", f.ldsBytes);
  show("wg", f.workgroupSize);
  show("xnack", f.xnack);
  return out;
}

std::vector<Facts> FactsOf(const std::string& text) {
  const GFX10InstructionSet set;
  std::vector<Facts> facts;
  for (const ListingProgram& p : ReadLlvmAssembly(text, set)) {
    facts.push_back({p.name, p.attributes.waveSize, p.attributes.ldsBytes,
                     p.attributes.workgroupSize, p.attributes.reservesXnackMask});
  }
  return facts;
}

std::string Kernel(const std::string& name, const std::string& descriptor) {
  return "\t.type " + name + ",@function\n" + name + ":\n\ts_endpgm\n.Lfunc_end_" + name +
         ":\n\t.amdhsa_kernel " + name + "\n" + descriptor + "\t.end_amdhsa_kernel\n";
}

std::string Metadata(const std::string& kernels) {
  return "\t.amdgpu_metadata\n---\namdhsa.kernels:\n" + kernels +
         "amdhsa.target: amdgcn-amd-amdhsa--gfx1010\namdhsa.version:\n  - 1\n  - 2\n"
         "...\n\n\t.end_amdgpu_metadata\n";
}

TEST(LlvmLaunchFacts, DescriptorAndMetadataPerKernel) {
  // An argument entry of the metadata also has a .name; it must not rename
  // the kernel.
  const std::string args =
      "  - .args:\n      - .name: n\n        .offset: 0\n        .size: 4\n"
      "        .value_kind: by_value\n";
  struct Case {
    const char* what;
    std::string text;
    std::vector<Facts> expected;
  };
  const Case cases[] = {
      {"wave32 kernel with LDS; the metadata after the functions gives the workgroup size",
       Kernel("a",
              "\t\t.amdhsa_group_segment_fixed_size 16384\n\t\t.amdhsa_wavefront_size32 1\n"
              "\t\t.amdhsa_reserve_xnack_mask 1\n") +
           Metadata(args + "    .max_flat_workgroup_size: 256\n    .name:           a\n"
                           "    .wavefront_size: 32\n"),
       {{"a", 32, 16384, 256, true}}},
      {"the required size wins over the flat maximum: product of three, block or flow list",
       Kernel("b", "\t\t.amdhsa_wavefront_size32 0\n\t\t.amdhsa_reserve_xnack_mask 0\n") +
           Kernel("c", "\t\t.amdhsa_group_segment_fixed_size 0\n") +
           Metadata("  - .max_flat_workgroup_size: 1024\n    .name: b\n"
                    "    .reqd_workgroup_size:\n      - 16\n      - 8\n      - 2\n"
                    "    .sgpr_count: 9\n"
                    "  - .name: 'c'\n    .reqd_workgroup_size: [ 64, 1, 1 ]\n"),
       {{"b", 64, std::nullopt, 256, false}, {"c", std::nullopt, 0, 64, std::nullopt}}},
      {"kernel entries may start in the first column",
       Kernel("d", "") + "\t.amdgpu_metadata\n---\namdhsa.kernels:\n- .name: d\n"
                         "  .max_flat_workgroup_size: 128\n- .name: e\namdhsa.version:\n"
                         "- 1\n\t.end_amdgpu_metadata\n",
       {{"d", std::nullopt, std::nullopt, 128, std::nullopt}}},
      {"a device function and a kernel without metadata keep unstated facts empty",
       "\t.type f,@function\nf:\n\ts_setpc_b64 s[30:31]\n.Lfunc_end0:\n" +
           Kernel("k", "\t\t.amdhsa_next_free_vgpr 3\n"),
       {{"f", std::nullopt, std::nullopt, std::nullopt, std::nullopt},
        {"k", std::nullopt, std::nullopt, std::nullopt, std::nullopt}}},
  };
  for (const Case& c : cases) EXPECT_EQ(FactsOf(c.text), c.expected) << c.what;
}

TEST(LlvmLaunchFacts, ObjdumpTextStatesNone) {
  const GFX10InstructionSet set;
  const std::vector<ListingProgram> programs =
      ReadLlvmObjdump("0000000000000000 <k>:\n\ts_endpgm // 000000000000: BF810000\n", set);
  ASSERT_EQ(programs.size(), 1u);
  EXPECT_FALSE(programs[0].attributes.waveSize || programs[0].attributes.ldsBytes ||
               programs[0].attributes.workgroupSize || programs[0].attributes.reservesXnackMask);
}

TEST(LlvmLaunchFacts, MalformedValuesNameTheLine) {
  struct Case {
    std::string text;
    std::string expected;
  };
  // Kernel() puts the first descriptor line on line 6; Metadata() its first
  // kernel line on line 4 after what precedes it.
  const std::string k = Kernel("k", "");  // 6 lines
  const Case cases[] = {
      {Kernel("k", "\t\t.amdhsa_group_segment_fixed_size 0x100\n"),
       "6: .amdhsa_group_segment_fixed_size '0x100' is not a number"},
      {Kernel("k", "\t\t.amdhsa_wavefront_size32 2\n"),
       "6: .amdhsa_wavefront_size32 must be 0 or 1, not 2"},
      {Kernel("k", "\t\t.amdhsa_reserve_xnack_mask\n"),
       "6: .amdhsa_reserve_xnack_mask '' is not a number"},
      {k + Metadata("  - .name: k\n    .max_flat_workgroup_size: many\n"),
       "11: .max_flat_workgroup_size 'many' is not a number"},
      {k + Metadata("  - .name: k\n    .reqd_workgroup_size:\n      - 8\n      - x\n      - 1\n"),
       "13: .reqd_workgroup_size 'x' is not a number"},
      {k + Metadata("  - .name: k\n    .reqd_workgroup_size:\n      - 8\n      - 8\n"),
       "11: .reqd_workgroup_size of 'k' needs three sizes, not 2"},
      {k + Metadata("  - .name: k\n    .reqd_workgroup_size: 64\n"),
       "11: .reqd_workgroup_size '64' is not a list of numbers"},
      {k + Metadata("  - .name: k\n    .reqd_workgroup_size: [65536, 65536, 2]\n"),
       "11: .reqd_workgroup_size of 'k' is too large"},
  };
  for (const Case& c : cases) {
    std::string got = "no error";
    try {
      FactsOf(c.text);
    } catch (const ListingError& error) {
      got = std::to_string(error.Line()) + ": " + error.what();
    }
    EXPECT_EQ(got, c.expected) << c.text;
  }
}

}  // namespace
}  // namespace vesk
