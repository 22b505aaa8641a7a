// Scalar register liveness over loops, divergent branches and multi-register
// operands, and the scalar pressure peak with its listing line.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "../app/isa_test_program.h"
#include "liveness/liveness_analysis.h"
#include "liveness/register_pressure.h"

namespace vesk {
namespace {

std::string Members(const RegisterState::Set& set) {
  std::string text;
  for (int member : set) text += (text.empty() ? "" : " ") + std::to_string(member);
  return text;
}

struct SgprCase {
  const char* name;
  std::vector<std::string> program;
  // (listing line, live scalar registers there) for the lines worth checking.
  std::vector<std::pair<uint32_t, std::string>> live;
  int maxLive;
  uint32_t peakLine;
};

const SgprCase kCases[] = {
    {"loop counter is live around the back edge, the bound from the start",
     {"s_load_dwordx2 s[2:3], s[0:1], 0x0", "s_mov_b32 s4, 0", "LOOP: s_add_u32 s4, s4, 1",
      "s_cmp_lg_u32 s4, s2", "s_cbranch_scc1 label_LOOP", "s_endpgm"},
     // s3 is loaded but never read: a dead write is not live.
     {{1, "0 1 2"}, {2, "2 4"}, {3, "2 4"}, {5, "2 4"}, {6, ""}},
     3,
     1},
    {"exec mask saved in a pair lives across the skipped side of a divergent branch",
     {"v_cmp_gt_u32 vcc, s0, v0", "s_and_saveexec_b64 s[2:3], vcc", "s_cbranch_execz label_SKIP",
      "v_mov_b32 v1, s1", "SKIP: s_or_b64 exec, exec, s[2:3]", "s_endpgm"},
     // s1 is read on one side only, so it is live at the branch.
     {{1, "0 1"}, {2, "1 2 3"}, {3, "1 2 3"}, {4, "1 2 3"}, {5, "2 3"}},
     3,
     2},
    {"quad of a descriptor load is live until the memory instruction that reads it",
     {"s_load_dwordx4 s[4:7], s[0:1], 0x0", "s_waitcnt lgkmcnt(0)",
      "buffer_load_dword v0, v1, s[4:7], 0 offen", "s_endpgm"},
     {{1, "0 1 4 5 6 7"}, {2, "4 5 6 7"}, {3, "4 5 6 7"}, {4, ""}},
     6,
     1},
    {"nested loops: the inner counter is dead at the outer latch",
     {"s_mov_b32 s8, 0", "OUTER: s_mov_b32 s9, 0", "INNER: s_add_u32 s9, s9, 1",
      "v_cmp_gt_u32 vcc, s9, v0", "s_cbranch_vccz label_INNER", "s_add_u32 s8, s8, 1",
      "s_cmp_lg_u32 s8, s10", "s_cbranch_scc1 label_OUTER", "s_endpgm"},
     {{1, "8 10"}, {2, "8 9 10"}, {5, "8 9 10"}, {6, "8 10"}, {8, "8 10"}},
     3,
     2},
    {"if-else: a pair written on both sides is live at the join, not before",
     {"s_cbranch_vccz label_ELSE", "s_mov_b64 s[10:11], s[0:1]", "s_branch label_JOIN",
      "ELSE: s_mov_b64 s[10:11], s[2:3]", "JOIN: s_load_dword s12, s[10:11], 0x0",
      "s_waitcnt lgkmcnt(0)", "v_mov_b32 v0, s12", "s_endpgm"},
     {{1, "0 1 2 3"}, {2, "0 1 10 11"}, {3, "10 11"}, {4, "2 3 10 11"}, {5, "10 11 12"}, {7, "12"}},
     4,
     1},
};

TEST(SgprLivenessTest, LiveSetsAndPeak) {
  for (const SgprCase& c : kCases) {
    SCOPED_TRACE(c.name);
    const std::vector<Invocation> program = test::MakeIsaProgram("gfx10", c.program);
    const LivenessStates states(program, SGPR, LivenessAnalysisOptions{});
    for (const auto& [line, expected] : c.live) {
      bool found = false;
      for (size_t i = 0; i < states.Size(); ++i) {
        const auto [invocation, state] = states.Get(i);
        if (invocation == nullptr || invocation->GetSourceLine() != line) continue;
        found = true;
        EXPECT_EQ(Members(state.Live()), expected) << "line " << line;
      }
      EXPECT_TRUE(found) << "line " << line;
    }
    const RegisterPressure pressure = ComputeRegisterPressure(states, SGPR);
    EXPECT_EQ(pressure.maxLive, c.maxLive);
    EXPECT_EQ(pressure.peakLine, c.peakLine);
    ASSERT_NE(pressure.peak, nullptr);
    EXPECT_EQ(pressure.peak, &program[c.peakLine - 1]);
  }
}

}  // namespace
}  // namespace vesk
