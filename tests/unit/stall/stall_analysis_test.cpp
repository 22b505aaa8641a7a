// The fixpoint iteration over basic blocks and the order of its results.
#include <gtest/gtest.h>

#include "stall/stall_analysis.h"
#include "stall_test_util.h"
#include "util/analysis_error.h"

namespace vesk::testing {
namespace {

class StallAnalysisTest : public ::testing::Test {
 protected:
  // Lines "label:" attach a label to the next instruction.
  std::vector<Invocation> Program(const std::vector<std::string>& lines) {
    std::vector<Invocation> program;
    std::vector<std::string> labels;
    for (const std::string& line : lines) {
      if (line.back() == ':') {
        labels.push_back(line.substr(0, line.size() - 1));
        continue;
      }
      auto [opcode, args] = SplitLine(line);
      EXPECT_TRUE(set_.Contains(opcode.c_str())) << opcode;
      program.emplace_back(set_, opcode, args, std::vector<std::string>{}, labels);
      labels.clear();
    }
    return program;
  }
  static std::vector<int> MaxLengths(const StallCycleAnalysis::Result& result) {
    std::vector<int> lengths;
    for (const auto& [invocation, stalls] : result) lengths.push_back(stalls.first.length.Get());
    return lengths;
  }

  GFX10InstructionSet set_;
};

TEST_F(StallAnalysisTest, LoopKeepsTheLargestStallOfAllPasses) {
  // The wait in the loop header sees the latch's later load only in the
  // second pass (13 remaining cycles instead of 11 from the preheader).
  const auto program =
      Program({"s_load_dword s4, s[2:3], 0x0", "s_mov_b32 s0, 0", "s_nop 0", "s_nop 0",
               "LOOP:", "s_waitcnt lgkmcnt(0)", "s_add_u32 s0, s0, s4", "s_cmp_lt_u32 s0, 64",
               "s_load_dword s4, s[2:3], 0x0", "s_cbranch_scc1 label_LOOP", "s_endpgm"});
  const auto result = StallCycleAnalysis::AnalyzeStallCycles(program, false);
  EXPECT_EQ(MaxLengths(result), (std::vector<int>{0, 0, 0, 0, 33, 0, 1, 8, 0, 2}));
  ASSERT_EQ(result.size(), program.size());
  for (size_t i = 0; i < result.size(); ++i) {
    EXPECT_EQ(result[i].first, &program[i]);
    EXPECT_EQ(result[i].second.second.length.Get(), 0);  // smallest: never negative here
  }
  EXPECT_EQ(result[4].second.first.reason, kMemoryCounterStall);
  EXPECT_EQ(result[9].second.first.reason, kIssueDistanceStall);
}

TEST_F(StallAnalysisTest, SmallestStallKeepsNegativeForwarding) {
  const auto program = Program({"v_sqrt_f32 v1, v2", "s_nop 0", "s_nop 0", "s_nop 0", "s_nop 0",
                                "s_nop 0", "s_nop 0", "s_nop 0", "v_sqrt_f32 v3, v1", "s_endpgm"});
  const auto result = StallCycleAnalysis::AnalyzeStallCycles(program, false);
  ASSERT_EQ(result.size(), program.size());
  // Eight cycles after issue two visibility cycles are left: 2 - 3.
  EXPECT_EQ(result[8].second.first.length.Get(), 0);
  EXPECT_EQ(result[8].second.second.length.Get(), -1);
}

TEST_F(StallAnalysisTest, OnlyInstructionsOnAPathToTheEndAreReported) {
  // The block after s_endpgm has no predecessor.
  const auto program = Program({"v_mov_b32 v0, v1", "s_endpgm", "v_mov_b32 v2, v3", "s_endpgm"});
  const auto result = StallCycleAnalysis::AnalyzeStallCycles(program, false);
  ASSERT_EQ(result.size(), 2u);
  EXPECT_EQ(result[0].first, &program[0]);
  EXPECT_EQ(result[1].first, &program[1]);
}

TEST_F(StallAnalysisTest, Wave64CostsVectorInstructionsACycle) {
  const auto program =
      Program({"v_add_f32 v0, v1, v2", "v_mov_b32 v3, v4", "v_mul_f32 v5, v0, v0", "s_endpgm"});
  EXPECT_EQ(MaxLengths(StallCycleAnalysis::AnalyzeStallCycles(program, false)),
            (std::vector<int>{0, 0, 3, 0}));
  EXPECT_EQ(MaxLengths(StallCycleAnalysis::AnalyzeStallCycles(program, true)),
            (std::vector<int>{0, 0, 2, 0}));
}

// Passes until nothing changes: the last pass changes no exit state. A loop
// that keeps issuing loads without waiting for them still converges: the
// second pass adds the loop's own load once more to its exit state, but the
// merge into the loop's entry finds every operation already pending there.
TEST_F(StallAnalysisTest, FixpointPassCounts) {
  struct Case {
    const char* name;
    std::vector<std::string> lines;
    int passes;
  };
  std::vector<std::string> manyLoads = {"s_mov_b32 s0, 0", "LOOP:"};
  for (int i = 0; i < 25; ++i) manyLoads.push_back("buffer_load_dword v1, v0, s[4:7], 0 offen");
  for (const char* line :
       {"s_add_u32 s0, s0, 1", "s_cmp_lt_u32 s0, 64", "s_cbranch_scc1 label_LOOP", "s_endpgm"})
    manyLoads.push_back(line);
  const Case cases[] = {
      {"one block", {"v_add_f32 v0, v1, v2", "s_endpgm"}, 2},
      {"two blocks", {"v_add_f32 v0, v1, v2", "s_cbranch_scc1 label_END", "END:", "s_endpgm"}, 2},
      {"loop keeping a load in flight",
       {"s_mov_b32 s0, 0", "LOOP:", "buffer_load_dword v1, v0, s[4:7], 0 offen",
        "s_add_u32 s0, s0, 1", "s_cmp_lt_u32 s0, 64", "s_cbranch_scc1 label_LOOP", "s_endpgm"},
       3},
      {"loop keeping loads in flight in two queues",
       {"s_mov_b32 s0, 0", "LOOP:", "buffer_load_dword v1, v0, s[4:7], 0 offen",
        "s_load_dword s8, s[2:3], 0x0", "ds_read_b32 v2, v0", "s_add_u32 s0, s0, 1",
        "s_cmp_lt_u32 s0, 64", "s_cbranch_scc1 label_LOOP", "s_endpgm"},
       3},
      // The second pass simulates the loop again with the latch's load, but
      // the wait leaves the same exit state.
      {"loop waiting in its header for the latch's load",
       {"s_load_dword s4, s[2:3], 0x0", "LOOP:", "s_waitcnt lgkmcnt(0)", "s_add_u32 s0, s0, s4",
        "s_cmp_lt_u32 s0, 64", "s_load_dword s4, s[2:3], 0x0", "s_cbranch_scc1 label_LOOP",
        "s_endpgm"},
       2},
      // More loads in flight on one register than the scoreboard ring holds.
      {"loop with 25 loads of one register", manyLoads, 3},
  };
  for (const Case& c : cases) {
    const auto program = Program(c.lines);
    int passes = 0;
    StallCycleAnalysis::AnalyzeStallCycles(program, false, &passes);
    EXPECT_EQ(passes, c.passes) << c.name;
  }
}

// s128 to s134 are the special registers by number; anything beyond lies
// outside the register space and is rejected before simulation, wherever it
// stands (source or destination) and whether or not the block is reached.
TEST_F(StallAnalysisTest, ScalarRegistersOutsideTheRegisterSpace) {
  struct Case {
    const char* line;
    const char* message;  // "" when accepted
  };
  const Case cases[] = {
      {"s_mov_b32 s134, s128", ""},
      {"s_mov_b32 s127, s1", ""},
      {"s_mov_b32 s253, s1", "scalar register s253 (operand 's253') is outside the register space"},
      {"s_mov_b32 s1, s135", "scalar register s135 (operand 's135') is outside the register space"},
      {"s_mov_b64 s[252:253], s[0:1]",
       "scalar register s252 (operand 's[252:253]') is outside the register space"},
      {"s_load_dwordx8 s[24:2532], s[0:1], 0x0",
       "scalar register s135 (operand 's[24:2532]') is outside the register space"},
      {"v_readfirstlane_b32 s200, v0",
       "scalar register s200 (operand 's200') is outside the register space"},
      {"v_add_co_u32 v0, vcc, s[130:140], v0",
       "scalar register s135 (operand 's[130:140]') is outside the register space"},
  };
  for (const Case& c : cases) {
    for (bool reached : {true, false}) {
      std::vector<Invocation> program = reached
                                            ? Program({"s_nop 0", c.line, "s_endpgm"})
                                            : Program({"s_nop 0", "s_endpgm", c.line, "s_endpgm"});
      for (size_t i = 0; i < program.size(); ++i) program[i].SetSourceLine(i + 10);
      const auto [line, message] =
          ListingErrorOf([&] { StallCycleAnalysis::AnalyzeStallCycles(program, false); });
      EXPECT_EQ(message, c.message) << c.line;
      EXPECT_EQ(line, !c.message[0] ? 0u : reached ? 11u : 12u) << c.line;
    }
  }
}

TEST_F(StallAnalysisTest, EndlessLoopHasNoReportableEnd) {
  const auto program = Program({"A:", "s_branch label_A"});
  EXPECT_THROW(StallCycleAnalysis::AnalyzeStallCycles(program, false), AnalysisError);
}

}  // namespace
}  // namespace vesk::testing
