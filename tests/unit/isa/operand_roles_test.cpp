// Operand roles seen through parsed instruction lines: which registers a
// real line reads and writes, for the rows whose roles are irregular or
// fixed by the hardware's syntax.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "isa/instruction_set.h"
#include "isa/invocation.h"

namespace vesk {
namespace {

using Ids = std::vector<RegisterID>;

struct Case {
  const char* generation;
  const char* opcode;
  std::vector<std::string> args;
  Ids written;  // GetWriteRegisters(), special registers included
  Ids read;     // GetReadRegisters()
};

constexpr RegisterID S(int index) {
  return 256 + index;
}

const Case kCases[] = {
    // Accumulators read their destination.
    {"gfx10", "v_mac_f32", {"v0", "v1", "v2"}, {0}, {0, 1, 2}},
    {"gfx10", "v_fmac_f32", {"v0", "v1", "v2"}, {0}, {0, 1, 2}},
    // ... but not in their VOP3 form.
    {"gfx7", "v_mac_f32_e64", {"v0", "v1", "v2"}, {0}, {1, 2}},
    // v_cndmask reads the lane mask.
    {"gfx10", "v_cndmask_b32", {"v0", "v1", "v2", "vcc_lo"}, {0}, {1, 2, kVcc}},
    {"gfx8", "v_cndmask_b32", {"v0", "v1", "v2", "vcc"}, {0}, {1, 2, kVcc}},
    // GFX10 v_cmpx writes exec implicitly and names no destination.
    {"gfx10", "v_cmpx_eq_u32", {"v0", "v1"}, {}, {0, 1}},
    {"gfx10", "v_cmpx_eq_u32_e64", {"v0", "v1"}, {}, {0, 1}},
    // Before GFX10 the short form names vcc first, the VOP3 form a destination.
    {"gfx9", "v_cmpx_eq_u32", {"vcc", "v0", "v1"}, {}, {kVcc, 0, 1}},
    {"gfx9", "v_cmpx_eq_u32_e64", {"s[0:1]", "v0", "v1"}, {S(0), S(1)}, {0, 1}},
    {"gfx10", "v_cmp_eq_u32", {"vcc_lo", "v0", "v1"}, {kVcc}, {0, 1}},
    // Carry forms.
    {"gfx10", "v_add_co_u32", {"v0", "vcc_lo", "v1", "v2"}, {0, kVcc}, {1, 2}},
    {"gfx9", "v_add_co_u32", {"v0", "vcc", "v1", "v2"}, {0}, {1, 2, kVcc}},
    {"gfx9", "v_add_co_u32_e64", {"v0", "s[0:1]", "v1", "v2"}, {0, S(0), S(1)}, {1, 2}},
    {"gfx9", "v_addc_co_u32", {"v0", "vcc", "v1", "v2", "vcc"}, {0}, {1, 2, kVcc}},
    {"gfx8", "v_add_u32", {"v0", "vcc", "v1", "v2"}, {0}, {1, 2, kVcc}},
    {"gfx9", "v_add_u32", {"v0", "v1", "v2"}, {0}, {1, 2}},
    {"gfx10", "v_add_co_ci_u32", {"v0", "vcc_lo", "v1", "v2", "vcc_lo"}, {0, kVcc}, {1, 2, kVcc}},
    {"gfx7", "v_add_co_ci_u32", {"v0", "vcc", "v1", "v2", "vcc"}, {0, kVcc}, {1, 2, kVcc}},
    {"gfx10", "v_mad_u64_u32", {"v[0:1]", "s0", "v2", "v3", "v[4:5]"}, {0, 1, S(0)}, {2, 3, 4, 5}},
    // SDWA rows keep their odd destination masks.
    {"gfx9", "v_add_f32_sdwa", {"v0", "v1", "v2"}, {0, 2}, {1}},
    {"gfx9", "v_add_co_u32_sdwa", {"v0", "vcc", "v1", "v2"}, {0, 2}, {1, kVcc}},
    // Lane access and exec saving.
    {"gfx10", "v_readlane_b32", {"s0", "v1", "s2"}, {S(0)}, {1, S(2)}},
    {"gfx10", "v_writelane_b32", {"v0", "s1", "s2"}, {0}, {S(1), S(2)}},
    {"gfx9", "v_swap_b32", {"v0", "v1"}, {0}, {1}},
    {"gfx8", "s_and_saveexec_b64", {"s[0:1]", "vcc"}, {S(0), S(1)}, {kVcc}},
    {"gfx10", "s_and_saveexec_b64", {"s[0:1]", "exec"}, {S(0), S(1)}, {kExec}},
    // Memory: loads write the data, stores read everything, atomics both.
    {"gfx10", "buffer_load_dword", {"v1", "v2", "s[4:7]", "0"}, {1}, {2, S(4), S(5), S(6), S(7)}},
    {"gfx10",
     "buffer_store_dword",
     {"v1", "v2", "s[4:7]", "s8"},
     {},
     {1, 2, S(4), S(5), S(6), S(7), S(8)}},
    {"gfx9", "global_load_dword", {"v1", "v[2:3]", "off"}, {1}, {2, 3}},
    {"gfx9", "global_store_dword", {"v[2:3]", "v1", "off"}, {}, {1, 2, 3}},
    {"gfx7", "ds_read_b32", {"v1", "v2"}, {1}, {2}},
    {"gfx7", "ds_write_b32", {"v1", "v2"}, {}, {1, 2}},
    {"gfx8", "ds_add_u32", {"v1", "v2"}, {}, {1, 2}},
    {"gfx8", "ds_add_rtn_u32", {"v0", "v1", "v2"}, {0}, {1, 2}},
    {"gfx10", "ds_append", {"v0"}, {0}, {}},
    {"gfx10", "s_load_dword", {"s0", "s[4:5]", "0x0"}, {S(0)}, {S(4), S(5)}},
    {"gfx10",
     "buffer_atomic_add",
     {"v0", "v1", "s[4:7]", "0"},
     {0},
     {0, 1, S(4), S(5), S(6), S(7)}},
    {"gfx10",
     "image_atomic_add",
     {"v0", "v1", "s[8:15]"},
     {0},
     {0, 1, S(8), S(9), S(10), S(11), S(12), S(13), S(14), S(15)}},
    {"gfx10",
     "image_sample",
     {"v[0:3]", "v4", "s[8:15]", "s[16:19]"},
     {0, 1, 2, 3},
     {4, S(8), S(9), S(10), S(11), S(12), S(13), S(14), S(15), S(16), S(17), S(18), S(19)}},
    {"gfx7", "exp", {"mrt0", "v0", "v1", "v2", "v3"}, {}, {0, 1, 2, 3}},
    // Control transfers through registers are ordinary instructions.
    {"gfx10", "s_setpc_b64", {"s[0:1]"}, {}, {S(0), S(1)}},
    {"gfx10", "s_swappc_b64", {"s[0:1]", "s[2:3]"}, {S(0), S(1)}, {S(2), S(3)}},
    {"gfx10", "s_getpc_b64", {"s[0:1]"}, {S(0), S(1)}, {}},
    {"gfx10", "v_readfirstlane_b32", {"s0", "v1"}, {S(0)}, {1}},
    {"gfx10", "s_getreg_b32", {"s0", "hwreg(HW_REG_MODE)"}, {S(0)}, {}},
    {"gfx10", "v_nop", {}, {}, {}},
};

TEST(OperandRoles, ParsedLinesReadAndWriteTheirRegisters) {
  for (const Case& c : kCases) {
    const auto set = CreateInstructionSet(c.generation);
    ASSERT_NE(set, nullptr);
    SCOPED_TRACE(std::string(c.generation) + " " + c.opcode);
    if (!set->Contains(c.opcode)) {
      ADD_FAILURE() << "not in the table";
      continue;
    }
    const Invocation line(*set, c.opcode, c.args, {}, {});
    const UnifiedRegisterSet written = line.GetWriteRegisters();
    const UnifiedRegisterSet read = line.GetReadRegisters();
    const UnifiedRegisterSet expectedWritten(c.written);
    const UnifiedRegisterSet expectedRead(c.read);
    EXPECT_EQ(Ids(written.begin(), written.end()),
              Ids(expectedWritten.begin(), expectedWritten.end()));
    EXPECT_EQ(Ids(read.begin(), read.end()), Ids(expectedRead.begin(), expectedRead.end()));
  }
}

TEST(OperandRoles, ControlKindsByGeneration) {
  struct Kind {
    const char* generation;
    const char* opcode;
    bool branch, jump, end, immediate;
  };
  const Kind kinds[] = {
      {"gfx10", "s_cbranch_scc0", true, false, false, false},
      {"gfx9", "s_cbranch_join", true, false, false, false},
      {"gfx10", "s_branch", false, true, false, false},
      {"gfx9", "s_endpgm_ordered_ps_done", false, false, true, false},
      {"gfx7", "s_barrier", false, false, false, true},
      {"gfx8", "s_barrier", false, false, false, true},
      {"gfx9", "s_barrier", false, false, false, false},
      {"gfx10", "s_barrier", false, false, false, false},
      {"gfx10", "s_clause", false, false, false, true},
      {"gfx10", "s_waitcnt_vmcnt", false, false, false, false},
      {"gfx10", "s_setpc_b64", false, false, false, false},
  };
  for (const Kind& k : kinds) {
    const auto set = CreateInstructionSet(k.generation);
    const Instruction& row = set->Get(k.opcode);
    SCOPED_TRACE(std::string(k.generation) + " " + k.opcode);
    EXPECT_EQ(row.IsBranch(), k.branch);
    EXPECT_EQ(row.IsJump(), k.jump);
    EXPECT_EQ(row.IsEnd(), k.end);
    EXPECT_EQ(row.IsImmediate(), k.immediate);
  }
  EXPECT_EQ(GFX10InstructionSet().Get("s_barrier").kind, 24u);
}

}  // namespace
}  // namespace vesk
