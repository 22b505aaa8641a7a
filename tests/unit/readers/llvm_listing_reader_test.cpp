// LLVM listings: clang -S assembly and llvm-objdump text, split into
// functions, rewritten into raw spellings, branches resolved; the stated
// target, the processor names and the layout detection.
#include "readers/llvm_listing_reader.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "readers/llvm_processors.h"
#include "util/analysis_error.h"

namespace vesk {
namespace {

using Strings = std::vector<std::string>;

struct Function {
  std::string name;
  Strings lines;  // ToString(true, true) of each invocation
  bool operator==(const Function&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Function& f) {
  out << f.name << ":";
  for (const std::string& line : f.lines) out << " [" << line << "]";
  return out;
}

std::vector<Function> Read(const std::string& text, const InstructionSet& set) {
  std::stringstream stream(text);
  LlvmIsaReader reader;
  std::vector<Function> functions;
  for (const ListingProgram& program : reader.ReadPrograms(stream, set)) {
    Function function{program.name, {}};
    for (const Invocation& invocation : program.invocations) {
      function.lines.push_back(invocation.ToString(true, true));
    }
    functions.push_back(function);
  }
  return functions;
}

// The line and message of the ListingError the text raises.
std::string ErrorOf(const std::string& text) {
  const GFX10InstructionSet set;
  try {
    Read(text, set);
  } catch (const ListingError& error) {
    return std::to_string(error.Line()) + ": " + error.what();
  }
  return "no error";
}

TEST(LlvmAssembly, FramingLabelsAndSpellings) {
  const GFX10InstructionSet set;
  struct Case {
    const char* what;
    std::string text;
    std::vector<Function> expected;
  };
  const Case cases[] = {
      {"directives, comments and blocks are no instructions; local labels keep their names",
       "\t.text\n\t.amdgcn_target \"amdgcn-amd-amdhsa--gfx1010\"\n"
       "\t.type\tk,@function\n"
       "k:                  ; @k\n"
       "; %bb.0:\n"
       "\ts_cmp_lt_i32 s8, 1 ; trailing comment\n"
       "\ts_cbranch_scc1 .LBB0_3\n"
       ".LBB0_2:            ; =>This Inner Loop Header: Depth=1\n"
       "\tv_add_co_ci_u32_e32 v3, vcc_lo, 0, v3, vcc_lo\n"
       "\ts_cbranch_scc0 .LBB0_2\n"
       ".LBB0_3:\n"
       "\ts_endpgm\n"
       "\t.section\t.rodata,\"a\",@progbits\n"
       "\t.amdhsa_kernel k\n\t\t.amdhsa_next_free_vgpr 4\n\t.end_amdhsa_kernel\n"
       "\t.text\n.Lfunc_end0:\n\t.size\tk, .Lfunc_end0-k\n"
       "\t.amdgpu_metadata\n---\namdhsa.kernels:\n  - .name: k\n\t.end_amdgpu_metadata\n",
       {{"k",
         {"s_cmp_lt_i32 s8, 1", "s_cbranch_scc1 .LBB0_3",
          "label_.LBB0_2: v_add_co_ci_u32 v3, vcc_lo, 0, v3, vcc_lo", "s_cbranch_scc0 .LBB0_2",
          "label_.LBB0_3: s_endpgm "}}}},
      {"LLVM spellings become raw ones: |x|, counters joined by &, tabs",
       "\t.type f,@function\nf:\n"
       "\tv_fma_f32 v5, -|v4|, -0.5, s2\n"
       "\ts_waitcnt vmcnt(0) expcnt(0) lgkmcnt(0)\n"
       "\ts_waitcnt vmcnt(0) & lgkmcnt(1)\n"
       "\tglobal_load_dword\tv4, v[2:3], off offset:16\n"
       "\ts_setpc_b64 s[30:31]\n",
       {{"f",
         {"v_fma_f32 v5, -abs(v4), -0.5, s2", "s_waitcnt vmcnt(0) & expcnt(0) & lgkmcnt(0)",
          "s_waitcnt vmcnt(0) & lgkmcnt(1)", "global_load_dword v4, v[2:3], off offset:16",
          "s_setpc_b64 s[30:31]"}}}},
      {"several functions in file order; data labels and debug labels are not blocks",
       "\t.type a,@function\n\t.type b,@function\n\t.type d,@object\n"
       "a:\n.Lfunc_begin0:\n\ts_nop 0\n.Ltmp0:\n\ts_endpgm\n.Lfunc_end0:\n"
       "d:\n\t.long 500\n"
       "b:\n.LBB1_1:\n\ts_branch .LBB1_1\n.Lfunc_end1:\n",
       {{"a", {"s_nop 0", "s_endpgm "}}, {"b", {"label_.LBB1_1: s_branch .LBB1_1"}}}},
      {"without function declarations every global label starts a function",
       "main:\n\ts_mov_b32 s0, s1\n.L1:\n\ts_endpgm\nsecond:\n\ts_endpgm\n",
       {{"main", {"s_mov_b32 s0, s1", "label_.L1: s_endpgm "}}, {"second", {"s_endpgm "}}}},
  };
  for (const Case& c : cases) EXPECT_EQ(Read(c.text, set), c.expected) << c.what;
}

TEST(LlvmObjdump, BranchesPaddingAndHeaders) {
  const GFX10InstructionSet set;
  // 29 words forward from 0xC reaches 0x80; 65534 is -2 words, from 0x40
  // back to 0x38; 65519 is -17 words, from 0x44 back to the start.
  const std::string text =
      "\n/tmp/k.o:\tfile format elf64-amdgpu\n\nDisassembly of section .text:\n\n"
      "0000000000000000 <k>:\n"
      "\ts_load_dwordx4 s[0:3], s[4:5], null     // 000000000000: F4080002 FA000000\n"
      "\ts_cbranch_scc1 29                        // 000000000008: BF85001D <k+0x80>\n"
      "\ts_nop 0                                  // 00000000000C: BF800000\n"
      "\tv_mov_b32_e32 v0, 0                      // 000000000038: 7E000280\n"
      "\ts_cbranch_scc0 65534// 00000000003C: BF84FFFE <k+0x38>\n"
      "\ts_branch 65519                           // 000000000040: BF82FFEF <k>\n"
      "\ts_endpgm                                 // 000000000080: BF810000\n"
      "\ts_code_end                               // 000000000084: BF9F0000\n"
      "\ts_nop 0                                  // 000000000088: BF800000\n"
      "\n0000000000000100 <g>:\n"
      "\ts_setpc_b64 s[30:31]                     // 000000000100: BE80201E\n"
      "\ts_code_end                               // 000000000104: BF9F0000\n";
  const std::vector<Function> expected = {
      {"k",
       {"label_k: s_load_dwordx4 s[0:3], s[4:5], null", "s_cbranch_scc1 k+0x80", "s_nop 0",
        "label_k+0x38: v_mov_b32 v0, 0", "s_cbranch_scc0 k+0x38", "s_branch k",
        "label_k+0x80: s_endpgm "}},
      {"g", {"s_setpc_b64 s[30:31]"}}};
  EXPECT_EQ(Read(text, set), expected);
}

TEST(LlvmObjdump, BranchToTheFunctionStartLabelsItsFirstInstruction) {
  const GFX10InstructionSet set;
  const std::string text =
      "0000000000000000 <k>:\n"
      "\ts_nop 0           // 000000000000: BF800000\n"
      "\ts_cbranch_scc0 65534 // 000000000004: BF84FFFE <k>\n"
      "\ts_endpgm          // 000000000008: BF810000\n";
  const std::vector<Function> expected = {
      {"k", {"label_k: s_nop 0", "s_cbranch_scc0 k", "s_endpgm "}}};
  EXPECT_EQ(Read(text, set), expected);
}

TEST(LlvmObjdump, SymbolizedOperandsAndHeadersWithoutAddress) {
  const GFX10InstructionSet set;
  // llvm-objdump --symbolize-operands: targets get headers of their own and
  // the branches name them; the program is the one the offsets give.
  const std::string numeric =
      "0000000000000100 <k>:\n"
      "\ts_cbranch_scc1 1   // 000000000100: BF850001 <k+0x8>\n"
      "\ts_nop 0            // 000000000104: BF800000\n"
      "\ts_cbranch_scc0 65534 // 000000000108: BF84FFFE <k+0x4>\n"
      "\ts_endpgm           // 00000000010C: BF810000\n";
  const std::string symbolized =
      "0000000000000100 <k>:\n"
      "\ts_cbranch_scc1 L1  // 000000000100: BF850001\n"
      "\n0000000000000104 <L0>:\n"
      "\ts_nop 0            // 000000000104: BF800000\n"
      "\n0000000000000108 <L1>:\n"
      "\ts_cbranch_scc0 L0  // 000000000108: BF84FFFE\n"
      "\ts_endpgm           // 00000000010C: BF810000\n";
  const std::vector<Function> expected = {{"k",
                                           {"s_cbranch_scc1 k+0x8", "label_k+0x4: s_nop 0",
                                            "label_k+0x8: s_cbranch_scc0 k+0x4", "s_endpgm "}}};
  EXPECT_EQ(Read(numeric, set), expected);
  EXPECT_EQ(Read(symbolized, set), expected);
  // --no-leading-addr: the headers take the address of the next instruction.
  std::string addressless = symbolized;
  for (const char* header : {"0000000000000100 <", "0000000000000104 <", "0000000000000108 <"}) {
    addressless.replace(addressless.find(header), std::string(header).size(), "<");
  }
  EXPECT_EQ(Read(addressless, set), expected);
}

TEST(LlvmListing, ErrorsNameTheLine) {
  const std::string header = "0000000000000000 <k>:\n";
  struct Case {
    std::string text;
    std::string expected;
  };
  const Case cases[] = {
      {"\t.type k,@function\nk:\n\ts_branch .LBB7_1\n\ts_endpgm\n",
       "3: branch to '.LBB7_1', which is no label of function 'k'"},
      {"\t.amdgcn_target \"amdgcn-amd-amdhsa--gfx1010\"\n\ts_nop 0\n",
       "2: instruction outside a function: no function label before it"},
      {header + "\ts_branch 3   // 000000000000: BF820003 <k+0x10>\n"
                "\ts_endpgm     // 000000000004: BF810000\n",
       "2: branch target 0x10 lies outside function 'k'"},
      {header + "\ts_branch 65534 // 000000000000: BF82FFFE\n",
       "2: branch target 0xfffffffffffffffc lies outside function 'k'"},
      {header + "\ts_branch 1   // 000000000000: BF820001\n"
                "\ts_load_dwordx2 s[0:1], s[4:5], 0x0 // 000000000004: F4040002 FA000000\n"
                "\ts_endpgm     // 00000000000C: BF810000\n",
       "2: branch target 0x8 is not the start of an instruction of function 'k'"},
      {header + "\ts_branch .L1  // 000000000000: BF820001\n",
       "2: branch operand '.L1' is neither a word offset nor a label objdump named"},
      {header + "\ts_branch // 000000000000: BF820001\n", "2: branch without an operand"},
      {header + "\ts_nop 0\n", "2: instruction without its '// ADDRESS: ENCODING' comment"},
      {header + "\ts_nop 0 // zero: BF800000\n",
       "2: the '// ADDRESS: ENCODING' comment cannot be read"},
      {"file format elf64-amdgpu\n\ts_nop 0 // 000000000000: BF800000\n" + header,
       "2: instruction outside a function: no '<name>:' header before it"},
  };
  for (const Case& c : cases) EXPECT_EQ(ErrorOf(c.text), c.expected) << c.text;
}

TEST(LlvmListing, StatedProcessorAndGenerations) {
  struct Case {
    const char* text;
    const char* processor;
    uint32_t line;
  };
  const Case cases[] = {
      {"\t.text\n\t.amdgcn_target \"amdgcn-amd-amdhsa--gfx900\"\n", "gfx900", 2},
      {"\t.amdgcn_target \"amdgcn-amd-amdhsa--gfx1010:xnack-\"\n", "gfx1010", 1},
      {"\t.amdgcn_target \"amdgcn-amd-amdhsa--gfx906:sramecc+:xnack-\"\n", "gfx906", 1},
      {"\t.amdgcn_target \"amdgcn-amd-amdhsa--gfx803+xnack\"\n", "gfx803", 1},
      {"\t.text\n\ts_endpgm\n", "", 0},
  };
  for (const Case& c : cases) {
    const StatedProcessor stated = FindStatedProcessor(c.text);
    EXPECT_EQ(stated.name, c.processor) << c.text;
    EXPECT_EQ(stated.line, c.line) << c.text;
  }
  const std::pair<const char*, const char*> generations[] = {
      {"gfx700", "gfx7"}, {"GFX705", "gfx7"}, {"gfx803", "gfx8"},   {"gfx810", "gfx8"},
      {"gfx90c", "gfx9"}, {"gfx90A", "gfx9"}, {"gfx1010", "gfx10"}, {"gfx1013", "gfx10"},
      {"gfx1030", ""},    {"gfx600", ""},     {"gfx9", ""},         {"gfx804", ""},
  };
  for (const auto& [processor, generation] : generations) {
    EXPECT_EQ(GenerationOfProcessor(processor), generation) << processor;
  }
}

TEST(LlvmListing, DetectionKeepsTheOtherLayouts) {
  const GFX10InstructionSet set;
  struct Case {
    std::string text;
    bool llvm;     // IsLlvmListing
    size_t count;  // invocations that the detecting reader yields
  };
  const Case cases[] = {
      {"\t.amdgcn_target \"amdgcn-amd-amdhsa--gfx1010\"\n\t.type k,@function\nk:\n"
       "\ts_cbranch_scc1 .LBB0_1\n.LBB0_1:\n\ts_endpgm\n",
       true, 2},
      {"\t.amdhsa_kernel k\n\t.end_amdhsa_kernel\n", true, 0},
      {"/tmp/k.o:\tfile format elf64-amdgpu\n0000000000000000 <k>:\n"
       "\ts_endpgm // 000000000000: BF810000\n",
       true, 1},
      // A raw listing without markers, and a shader-analyzer listing that
      // happens to hold a marker, keep their readers.
      {"s_mov_b32 s0, s1\n.LBB0_1: ; comment\ns_endpgm\n", false, 2},
      {"shader main\n.amdgcn_target\ns_nop 0\nend\n", true, 2},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(IsLlvmListing(c.text), c.llvm) << c.text;
    std::stringstream stream(c.text);
    AutoIsaReader reader;
    EXPECT_EQ(reader.Parse(stream, set).size(), c.count) << c.text;
  }
}

}  // namespace
}  // namespace vesk
