// Stall causes: for each kind of condition, the condition, the instruction
// waited for, the register and the memory counter recorded for the largest
// stall of an instruction.
#include <gtest/gtest.h>

#include "stall/stall_analysis.h"
#include "stall/stall_cause.h"
#include "stall_test_util.h"

namespace vesk::testing {
namespace {

class StallCauseTest : public ::testing::Test {
 protected:
  // Lines "label:" attach a label to the next instruction; every line,
  // labels included, counts as a listing line (1-based).
  std::vector<Invocation> Program(const std::vector<std::string>& lines) {
    std::vector<Invocation> program;
    std::vector<std::string> labels;
    for (size_t i = 0; i < lines.size(); ++i) {
      const std::string& line = lines[i];
      if (line.back() == ':') {
        labels.push_back(line.substr(0, line.size() - 1));
        continue;
      }
      auto [opcode, args] = SplitLine(line);
      EXPECT_TRUE(set_.Contains(opcode.c_str())) << opcode;
      program.emplace_back(set_, opcode, args, std::vector<std::string>{}, labels);
      program.back().SetSourceLine(static_cast<uint32_t>(i + 1));
      labels.clear();
    }
    return program;
  }

  GFX10InstructionSet set_;
};

constexpr int kNone = 0;

TEST_F(StallCauseTest, EachConditionNamesWhatItWaitedFor) {
  struct Case {
    const char* name;
    std::vector<std::string> lines;
    uint32_t line;  // the stalled instruction
    uint8_t condition;
    uint32_t culpritLine;  // 0: no instruction waited for
    RegisterID reg;
    WaitCounter counter;
  };
  const char* const kLoad = "buffer_load_dword v1, v0, s[4:7], 0 offen";
  const Case cases[] = {
      // Memory counters: the oldest operation above the waited count.
      {"vmcnt",
       {kLoad, "s_waitcnt vmcnt(0)", "s_endpgm"},
       2,
       kMemoryCounterStall,
       1,
       kNoRegister,
       WaitCounter::kVmCnt},
      {"vmcnt above a count",
       {"buffer_load_dword v1, v0, s[4:7], 0 offen", "buffer_load_dword v2, v0, s[4:7], 0 offen",
        "buffer_load_dword v3, v0, s[4:7], 0 offen", "s_waitcnt vmcnt(1)", "s_endpgm"},
       4,
       kMemoryCounterStall,
       1,
       kNoRegister,
       WaitCounter::kVmCnt},
      {"vscnt",
       {"buffer_store_dword v1, v0, s[4:7], 0 offen", "s_waitcnt_vscnt null, 0x0", "s_endpgm"},
       2,
       kMemoryCounterStall,
       1,
       kNoRegister,
       WaitCounter::kVsCnt},
      {"lgkmcnt",
       {"s_load_dword s4, s[2:3], 0x0", "s_waitcnt lgkmcnt(0)", "s_endpgm"},
       2,
       kMemoryCounterStall,
       1,
       kNoRegister,
       WaitCounter::kLgkmCnt},
      {"lgkmcnt for a load of a predecessor block",
       {"s_load_dword s4, s[2:3], 0x0", "s_cmp_eq_u32 s0, 0", "s_cbranch_scc1 label_JOIN",
        "s_nop 0", "JOIN:", "s_waitcnt lgkmcnt(0)", "s_endpgm"},
       6,
       kMemoryCounterStall,
       1,
       kNoRegister,
       WaitCounter::kLgkmCnt},
      {"expcnt with nothing outstanding",
       {"s_waitcnt expcnt(0)", "s_endpgm"},
       1,
       kMemoryCounterStall,
       0,
       kNoRegister,
       WaitCounter::kExpCnt},
      // Register sources: the register and its writer.
      {"VGPR source",
       {"v_mul_f32 v5, v1, v2", "v_add_f32 v6, v5, v3", "s_endpgm"},
       2,
       kVGPRSourceStall,
       1,
       5,
       WaitCounter::kNone},
      {"SGPR source",
       {"s_add_u32 s4, s0, s1", "v_cmp_eq_u32 vcc_lo, s4, v0", "s_endpgm"},
       2,
       kSGPRSourceStall,
       1,
       S(4),
       WaitCounter::kNone},
      // Units and issue.
      {"VALU busy",
       {"v_fma_f64 v[0:1], v[2:3], v[4:5], v[6:7]", "v_mov_b32 v8, v9", "s_endpgm"},
       2,
       kF32BusyStall,
       0,
       kNoRegister,
       WaitCounter::kNone},
      {"transcendental unit busy",
       {"v_sqrt_f32 v1, v2", "v_rcp_f32 v3, v4", "s_endpgm"},
       2,
       kTrans32BusyStall,
       0,
       kNoRegister,
       WaitCounter::kNone},
      {"program counter read",
       {"s_getpc_b64 s[0:1]", "s_nop 0", "s_endpgm"},
       2,
       kPCReadStall,
       0,
       kNoRegister,
       WaitCounter::kNone},
      {"counters drained before a program counter read",
       {"v_add_f32 v0, v1, v2", "s_getpc_b64 s[0:1]", "s_endpgm"},
       2,
       kPCReadDrainStall,
       0,
       kNoRegister,
       WaitCounter::kNone},
      {"issue distance of a branch target",
       {"s_cbranch_scc1 label_T", "s_nop 0", "T:", "s_nop 0", "s_endpgm"},
       4,
       kIssueDistanceStall,
       0,
       kNoRegister,
       WaitCounter::kNone},
      {"shortened vdst wait",
       {"v_add_f32 v1, v2, v3", "buffer_store_dword v1, v0, s[4:7], 0 offen", "s_endpgm"},
       2,
       kShortenedVaVdstStall,
       0,
       kNoRegister,
       WaitCounter::kNone},
      // Dependency counters: the operation that keeps the counter up.
      {"sa_sdst",
       {"s_mov_b32 s4, 0", "v_cmp_eq_u32 s[6:7], v0, v1", "s_endpgm"},
       2,
       kSaSdstStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"sa_exec",
       {"s_mov_b32 exec_lo, -1", "v_mov_b32 v0, v1", "s_endpgm"},
       2,
       kSaExecStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"sa_m0",
       {"s_mov_b32 m0, s0", "s_mov_b32 s1, 0", "s_endpgm"},
       2,
       kSaM0Stall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"vm_vsrc",
       {"buffer_store_dword v1, v0, s[4:7], 0 offen", "v_mov_b32 v1, 0", "s_endpgm"},
       2,
       kVmVsrcStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"va_sdst",
       {"v_cmp_eq_u32 s[0:1], v0, v1", "s_and_b64 s[2:3], s[0:1], exec", "s_endpgm"},
       2,
       kVaSdstStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"va_ssrc",
       {"v_add_f32 v0, s4, v1", "s_mov_b32 s5, 0", "s_endpgm"},
       2,
       kVaSsrcStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"va_vcc",
       {"v_add_co_u32 v0, vcc_lo, v1, v2", "s_and_b32 s0, vcc_lo, s1", "s_endpgm"},
       2,
       kVaVccStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"va_exec",
       {"v_cmpx_eq_u32 v0, v1", "v_readfirstlane_b32 s0, v1", "s_endpgm"},
       2,
       kVaExecStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"lds_dir",
       {"v_interp_p1_f32 v0, v1, attr0.x", "s_mov_b32 s1, 0", "s_endpgm"},
       2,
       kLdsDirStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"va_vdst",
       {"v_add_f32 v1, v2, v3", "exp mrt0 v1, v1, v1, v1", "s_endpgm"},
       2,
       kVaVdstStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      // s_waitcnt_depctr: the field still failing last, and the operation
      // whose end lets the counter reach the field's value.
      {"depctr va_vdst",
       {"v_add_f32 v1, v2, v3", "v_add_f32 v4, v5, v6", "s_waitcnt_depctr 0x0fff", "s_endpgm"},
       3,
       kVaVdstStall,
       2,
       kNoRegister,
       WaitCounter::kNone},
      {"depctr va_vdst above a count",
       {"v_add_f32 v1, v2, v3", "v_add_f32 v4, v5, v6", "v_add_f32 v7, v8, v9",
        "s_waitcnt_depctr 0x1fff", "s_endpgm"},
       4,
       kVaVdstStall,
       2,
       kNoRegister,
       WaitCounter::kNone},
      {"depctr vm_vsrc",
       {"buffer_store_dword v1, v0, s[4:7], 0 offen", "s_waitcnt_depctr 0xffe3", "s_endpgm"},
       2,
       kVmVsrcStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"depctr sa_sdst",
       {"s_mov_b32 s4, 0", "s_waitcnt_depctr 0xfffe", "s_endpgm"},
       2,
       kSaSdstStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"depctr va_vcc",
       {"v_add_co_u32 v0, vcc_lo, v1, v2", "s_waitcnt_depctr 0xfffd", "s_endpgm"},
       2,
       kVaVccStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"depctr va_ssrc",
       {"v_add_f32 v0, s4, v1", "s_waitcnt_depctr 0xfeff", "s_endpgm"},
       2,
       kVaSsrcStall,
       1,
       kNoRegister,
       WaitCounter::kNone},
      {"depctr va_sdst",
       {"v_cmp_eq_u32 s[0:1], v0, v1", "v_cmp_eq_u32 s[2:3], v0, v1", "s_waitcnt_depctr 0xf1ff",
        "s_endpgm"},
       3,
       kVaSdstStall,
       2,
       kNoRegister,
       WaitCounter::kNone},
      {"no stall", {"s_nop 0", "s_endpgm"}, 1, kNone, 0, kNoRegister, WaitCounter::kNone},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const auto program = Program(c.lines);
    std::vector<StallCause> causes;
    const auto result = StallCycleAnalysis::AnalyzeStallCycles(program, false, nullptr, &causes);
    ASSERT_EQ(causes.size(), result.size());
    const StallCause* cause = nullptr;
    for (size_t i = 0; i < result.size(); ++i) {
      if (result[i].first->GetSourceLine() != c.line) continue;
      cause = &causes[i];
      // A cause is recorded exactly for a positive largest stall.
      EXPECT_EQ(result[i].second.first.length > 0, c.condition != kNone);
    }
    ASSERT_NE(cause, nullptr);
    EXPECT_EQ(+cause->condition, +c.condition) << GetStallConditionName(cause->condition);
    EXPECT_EQ(cause->culprit != nullptr ? cause->culprit->GetSourceLine() : 0, c.culpritLine);
    EXPECT_EQ(cause->reg, c.reg);
    EXPECT_EQ(cause->counter, c.counter);
  }
}

// The cause belongs to the reported (largest) stall: in a loop the header's
// wait sees the latch's load only in the second pass, with a longer wait
// than for the load before the loop.
TEST_F(StallCauseTest, LoopReportsTheCauseOfTheLargestStall) {
  const auto program =
      Program({"s_load_dword s4, s[2:3], 0x0", "s_mov_b32 s0, 0", "s_nop 0", "s_nop 0",
               "LOOP:", "s_waitcnt lgkmcnt(0)", "s_add_u32 s0, s0, s4", "s_cmp_lt_u32 s0, 64",
               "s_load_dword s4, s[2:3], 0x0", "s_cbranch_scc1 label_LOOP", "s_endpgm"});
  std::vector<StallCause> causes;
  const auto result = StallCycleAnalysis::AnalyzeStallCycles(program, false, nullptr, &causes);
  ASSERT_EQ(result.size(), program.size());
  EXPECT_EQ(result[4].second.first.length.Get(), 33);
  ASSERT_NE(causes[4].culprit, nullptr);
  EXPECT_EQ(causes[4].culprit->GetSourceLine(), 9u);  // the latch's load
  EXPECT_EQ(causes[4].counter, WaitCounter::kLgkmCnt);
}

// Asking for causes changes no stall.
TEST_F(StallCauseTest, RecordingCausesLeavesTheStallsAlone) {
  const auto program =
      Program({"s_load_dword s4, s[2:3], 0x0", "v_sqrt_f32 v1, v2", "v_rcp_f32 v3, v1",
               "LOOP:", "v_mul_f32 v5, v1, v3", "buffer_store_dword v5, v0, s[4:7], 0 offen",
               "s_waitcnt lgkmcnt(0)", "s_add_u32 s0, s0, s4", "s_cmp_lt_u32 s0, 64",
               "s_cbranch_scc1 label_LOOP", "s_waitcnt_vscnt null, 0x0", "s_endpgm"});
  std::vector<StallCause> causes;
  const auto with = StallCycleAnalysis::AnalyzeStallCycles(program, false, nullptr, &causes);
  const auto without = StallCycleAnalysis::AnalyzeStallCycles(program, false);
  ASSERT_EQ(with.size(), without.size());
  for (size_t i = 0; i < with.size(); ++i) {
    EXPECT_EQ(with[i].second.first.length.Get(), without[i].second.first.length.Get()) << i;
    EXPECT_EQ(with[i].second.first.reason, without[i].second.first.reason) << i;
    EXPECT_EQ(with[i].second.second.length.Get(), without[i].second.second.length.Get()) << i;
  }
}

}  // namespace
}  // namespace vesk::testing
