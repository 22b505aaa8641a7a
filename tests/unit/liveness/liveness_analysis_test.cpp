// Per-instruction liveness records, the start-of-program pass and the report
// line format.
#include <gtest/gtest.h>

#include "../cfg/test_program.h"
#include "liveness/liveness_analysis.h"

namespace vesk {
namespace {

using Set = RegisterState::Set;

struct ReportCase {
  const char* name;
  std::vector<std::string> program;
  bool removeStartLines;
  // FormatRegisterUsage of every record, entry and exit (empty) included.
  std::vector<std::string> lines;
  int maxRegisterIndex;
  int maxLiveCount;
};

const std::vector<std::string> kUnwrittenReads = {"v_mov_b32 v0, v1", "v_add_f32 v2, v0, v3",
                                                  "s_endpgm"};
// v1 is read in the loop header before the loop body writes it.
const std::vector<std::string> kLoopHeaderRead = {"v_mov_b32 v0, v5", "LOOP: v_add_f32 v2, v1, v0",
                                                  "v_mov_b32 v1, v2", "s_cbranch_scc0 label_LOOP",
                                                  "s_endpgm"};

// The loop header H is reached first from a path that writes v1; the back
// edge's source lies on a longer path that skips the write, and is visited
// after H, so v1 stays shown at H.
const std::vector<std::string> kBackEdgeAfterHeader = {"s_cbranch_scc0 label_SIDE",
                                                       "v_mov_b32 v1, v2",
                                                       "H: v_mov_b32 v3, v1",
                                                       "SIDE: v_add_f32 v4, v1, v3",
                                                       "v_add_f32 v3, v4, v1",
                                                       "s_cbranch_scc0 label_H",
                                                       "s_endpgm"};

const ReportCase kReportCases[] = {
    {"registers never written are live from the start",
     kUnwrittenReads,
     false,
     {"", "  3 | ^v : | v_mov_b32 v0, v1", "  2 | v ^v | v_add_f32 v2, v0, v3",
      "  0 |      | s_endpgm ", ""},
     3,
     3},
    {"start lines removed, writes still shown",
     kUnwrittenReads,
     true,
     {"", "  1 | ^ | v_mov_b32 v0, v1", "  1 | v | v_add_f32 v2, v0, v3", "  0 |   | s_endpgm ",
      ""},
     0,
     1},
    {"loop-carried register",
     kLoopHeaderRead,
     false,
     {"", "  3 | ^:   v | v_mov_b32 v0, v5", "  3 | vv^    | label_LOOP: v_add_f32 v2, v1, v0",
      "  3 | :^v    | v_mov_b32 v1, v2", "  2 | ::     | s_cbranch_scc0 label_LOOP",
      "  0 |        | s_endpgm ", ""},
     5,
     3},
    {"loop header keeps hiding the register; the back edge adds nothing",
     kLoopHeaderRead,
     true,
     {"", "  1 | ^   | v_mov_b32 v0, v5", "  2 | v ^ | label_LOOP: v_add_f32 v2, v1, v0",
      "  3 | :^v | v_mov_b32 v1, v2", "  2 | ::  | s_cbranch_scc0 label_LOOP",
      "  0 |     | s_endpgm ", ""},
     2,
     3},
    {"start-of-program pass visits each node once, not to a fixpoint",
     kBackEdgeAfterHeader,
     true,
     {"", "  0 |       | s_cbranch_scc0 label_SIDE", "  1 |  ^    | v_mov_b32 v1, v2",
      "  2 |  v ^  | label_H: v_mov_b32 v3, v1", "  1 |     ^ | label_SIDE: v_add_f32 v4, v1, v3",
      "  1 |    ^v | v_add_f32 v3, v4, v1", "  0 |       | s_cbranch_scc0 label_H",
      "  0 |       | s_endpgm ", ""},
     4,
     2},
    {"nothing live", {"s_endpgm"}, false, {"", "  0 |   | s_endpgm ", ""}, 0, 0},
    // An empty program's graph has only its entry and exit nodes: two
    // records without invocation, nothing live.
    {"empty program", {}, false, {"", ""}, 0, 0},
    {"empty program, start lines removed", {}, true, {"", ""}, 0, 0},
    {"highest register", {"v_mov_b32 v0, v255", "s_endpgm"}, false, {}, 255, 1},
    {"code after the end of program is left out",
     {"v_mov_b32 v0, v1", "s_endpgm", "s_nop 0", "v_mov_b32 v2, v3", "s_endpgm"},
     false,
     {"", "  1 | ^v | v_mov_b32 v0, v1", "  0 |    | s_endpgm ", ""},
     1,
     1},
};

TEST(LivenessAnalysisTest, RecordsInProgramOrder) {
  for (const ReportCase& c : kReportCases) {
    SCOPED_TRACE(c.name);
    const std::vector<Invocation> program = test::MakeProgram(c.program);
    LivenessAnalysisOptions options;
    options.removeStartLines = c.removeStartLines;
    const RegisterStates states = LivenessAnalysis::Analyze(program, VGPR, options);
    const RegisterUsage usage = LivenessAnalysis::GetRegisterUsage(states);
    EXPECT_EQ(usage.maxRegisterIndex, c.maxRegisterIndex);
    EXPECT_EQ(usage.maxLiveCount, c.maxLiveCount);
    // The states formed on demand agree with the gathered ones.
    const LivenessStates onDemand(program, VGPR, options);
    ASSERT_EQ(onDemand.Size(), states.size());
    for (size_t i = 0; i < states.size(); ++i) {
      EXPECT_EQ(onDemand.Live(i), states[i].second.Live()) << i;
    }
    const RegisterUsage onDemandUsage = LivenessAnalysis::GetRegisterUsage(onDemand);
    EXPECT_EQ(onDemandUsage.maxRegisterIndex, c.maxRegisterIndex);
    EXPECT_EQ(onDemandUsage.maxLiveCount, c.maxLiveCount);
    if (c.lines.empty()) continue;
    for (size_t i = 0; i < states.size(); ++i) {
      // Only the graph's entry and exit nodes stand for no instruction.
      EXPECT_EQ(states[i].first == nullptr, i == 0 || i + 1 == states.size()) << i;
    }
    std::vector<std::string> lines;
    for (const auto& state : states)
      lines.push_back(LivenessAnalysis::FormatRegisterUsage(state, usage));
    EXPECT_EQ(lines, c.lines);
  }
}

// Blocks each branching back to the one before them: a register read only in
// the first block is live around every back edge, so its liveness has to
// travel the whole chain against the visiting order, one back edge at a time.
TEST(LivenessAnalysisTest, LiveAroundAChainOfBackEdges) {
  std::vector<std::string> lines = {"B0: v_add_f32 v1, v40, v1"};
  constexpr int kBlocks = 300;
  for (int b = 1; b < kBlocks; ++b) {
    lines.push_back("B" + std::to_string(b) + ": v_mov_b32 v" + std::to_string(b % 32) + ", v2");
    lines.push_back("s_cbranch_scc0 label_B" + std::to_string(b - 1));
  }
  lines.push_back("s_endpgm");
  const std::vector<Invocation> program = test::MakeProgram(lines);
  const RegisterStates states = LivenessAnalysis::Analyze(program, VGPR, {});
  ASSERT_EQ(states.size(), lines.size() + 2);
  // Live from the program start to the last back edge, not after it.
  for (size_t i = 0; i + 2 < states.size(); ++i) {
    EXPECT_TRUE(states[i].second.Live().Contains(40)) << i;
  }
  EXPECT_FALSE(states[states.size() - 2].second.Live().Contains(40));
}

TEST(LivenessAnalysisTest, RemovedStartLinesKeepTheWrite) {
  // v1 is hidden everywhere before it is written, but its write shows.
  const std::vector<Invocation> program = test::MakeProgram(
      {"v_add_f32 v0, v1, v1", "v_mov_b32 v1, v0", "v_mov_b32 v2, v1", "s_endpgm"});
  LivenessAnalysisOptions options;
  options.removeStartLines = true;
  const RegisterStates states = LivenessAnalysis::Analyze(program, VGPR, options);
  ASSERT_EQ(states.size(), 6u);
  EXPECT_EQ(states[1].second.Read(), Set{});
  EXPECT_EQ(states[1].second.Live(), (Set{0}));
  EXPECT_EQ(states[2].second.Written(), (Set{1}));
  EXPECT_EQ(states[3].second.Read(), (Set{1}));
  EXPECT_EQ(states[3].first, &program[2]);
}

struct FormatCase {
  const char* name;
  Set read;
  Set written;
  Set live;
  RegisterUsage usage;
  std::string columns;  // the register characters between the bars
  const char* count;
};

const FormatCase kFormatCases[] = {
    {"precedence: both, read, written, live", {3, 5}, {3, 4}, {0, 3}, {6, 2}, ":  x^v ", "  2"},
    {"a 64-register word boundary",
     {63},
     {64},
     {62, 63, 64, 65, 66},
     {66, 5},
     std::string(62, ' ') + ":v^::",
     "  5"},
    {"the last register", {255}, {}, {255}, {255, 1}, std::string(255, ' ') + "v", "  1"},
    {"columns beyond the register file stay blank",
     {},
     {},
     {255},
     {259, 1},
     std::string(255, ' ') + ":    ",
     "  1"},
    {"members beyond the width are cut, still counted", {}, {6}, {0, 5}, {2, 2}, ":  ", "  2"},
    {"nothing live: one blank column", {}, {}, {}, {0, 0}, " ", "  0"},
};

TEST(LivenessAnalysisTest, FormatsRegisterColumns) {
  const Invocation invocation = test::ParseTestLine("v_mac_f32 v3, v1, v2");
  for (const FormatCase& c : kFormatCases) {
    SCOPED_TRACE(c.name);
    const RegisterState state(c.read, c.written, c.live);
    EXPECT_EQ(LivenessAnalysis::FormatRegisterUsage({&invocation, state}, c.usage),
              std::string(c.count) + " | " + c.columns + " | v_mac_f32 v3, v1, v2");
    std::string appended = "prefix";
    LivenessAnalysis::AppendRegisterUsage(appended, {&invocation, state}, c.usage);
    EXPECT_EQ(appended,
              "prefix" + LivenessAnalysis::FormatRegisterUsage({&invocation, state}, c.usage));
    EXPECT_EQ(LivenessAnalysis::FormatRegisterUsage({nullptr, state}, c.usage), "");
  }
}

}  // namespace
}  // namespace vesk
