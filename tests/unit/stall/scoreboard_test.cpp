// The per-register scoreboard: count-down, ring compression, merging, memory
// retirement and the counters lowered when entries finish.
#include <gtest/gtest.h>

#include "stall_test_util.h"

namespace vesk::testing {
namespace {

constexpr int kInf = StallLength::kIndefinite;

TEST(ScoreboardTest, TryDecrementCounterReportsTheFinishingCycleOnce) {
  struct Case {
    int before;
    int after;
    bool finished;
  };
  const Case cases[] = {
      {1, 0, true}, {0, 0, false}, {5, 4, false}, {kInf, kInf, false}, {-3, 0, true}};
  for (const Case& c : cases) {
    StallLength length(c.before);
    EXPECT_EQ(Scoreboard::TryDecrementCounter(length), c.finished) << c.before;
    EXPECT_EQ(length.Get(), c.after) << c.before;
  }
}

TEST(ScoreboardTest, CompressDropsFinishedEntriesInOrder) {
  struct Case {
    std::vector<int> lengths;
    std::vector<int> expected;
    int headAdvance;
  };
  const Case cases[] = {
      {{0, 5, 0, 0, 3}, {5, 3}, 1},    {{4, 0, 0}, {4}, 0},          {{0, 0}, {}, 2},
      {{2, 0, 7, 0, 9}, {2, 7, 9}, 0}, {{kInf, 0, 1}, {kInf, 1}, 0},
  };
  for (const Case& c : cases) {
    Scoreboard board;
    for (int length : c.lengths) board.AddEntry(Entry(length));
    board.Compress();
    EXPECT_EQ(ExecuteLengths(board), c.expected);
    EXPECT_EQ(board.GetHead(), c.headAdvance);
  }
}

TEST(ScoreboardTest, TruncatedEntriesStayBehindTheRingAndResurface) {
  // [5, 1]: the second entry finishes first and is cut off, not cleared.
  Scoreboard board;
  board.AddEntry(Entry(5, 0));
  RegisterPipelineUsage late = Entry(1, 3);
  board.AddEntry(late);
  int valu = 0, salu = 0;
  board.UpdateSGPRWrites(valu, salu);
  ASSERT_EQ(board.Size(), 1);
  for (int i = 0; i < 4; ++i) board.UpdateSGPRWrites(valu, salu);
  // The first entry finished and was popped; the head slot is the old entry.
  ASSERT_TRUE(board.IsEmpty());
  EXPECT_EQ(board.GetMax().visibilityLength.Get(), 2);
  EXPECT_EQ(board.GetMax().info, late.info);
}

TEST(ScoreboardTest, RingWrapsAroundItsCapacity) {
  Scoreboard board;
  for (int i = 0; i < 19; ++i) board.AddEntry(Entry(0));
  board.Compress();  // pops all 19: head at slot 19
  ASSERT_EQ(board.GetHead(), 19);
  board.AddEntry(Entry(3));
  board.AddEntry(Entry(4));
  EXPECT_EQ(board.GetCurrentIndex(1), 0);
  EXPECT_EQ(ExecuteLengths(board), (std::vector<int>{3, 4}));
}

TEST(ScoreboardTest, GetMaxPrefersTheOldestOfEqualLengths) {
  Scoreboard board;
  board.AddEntry(Entry(3, 1));
  RegisterPipelineUsage second = Entry(9, 2);
  RegisterPipelineUsage third = Entry(9, 3);
  third.info = second.info;
  board.AddEntry(second);
  board.AddEntry(third);
  EXPECT_EQ(board.GetMax().visibilityLength.Get(), 2);
}

TEST(ScoreboardTest, MergeIsAUnionOfEntries) {
  Scoreboard empty, a, b;
  a.AddEntry(Entry(4));
  a.AddEntry(Entry(6));
  b.AddEntry(Entry(6));
  b.AddEntry(Entry(8));

  Scoreboard target = a;
  EXPECT_FALSE(target.Merge(empty));
  EXPECT_EQ(target, a);

  Scoreboard fresh;
  EXPECT_TRUE(fresh.Merge(a));
  EXPECT_EQ(fresh, a);

  Scoreboard same = a;
  EXPECT_FALSE(same.Merge(a));
  EXPECT_EQ(same.Size(), 2);

  EXPECT_TRUE(target.Merge(b));
  EXPECT_EQ(ExecuteLengths(target), (std::vector<int>{4, 6, 8}));
}

TEST(ScoreboardTest, EqualityIgnoresHeadPosition) {
  Scoreboard a, b;
  b.AddEntry(Entry(0));
  b.Compress();
  a.AddEntry(Entry(7));
  b.AddEntry(Entry(7));
  EXPECT_NE(a.GetHead(), b.GetHead());
  EXPECT_EQ(a, b);
  b.AddEntry(Entry(7));
  EXPECT_NE(a, b);
}

TEST(ScoreboardTest, PopFirstMemOpRetiresTheOldestMemoryOperation) {
  Scoreboard board;
  board.AddEntry(Entry(5));
  RegisterPipelineUsage first = Entry(kInf);
  RegisterPipelineUsage second = Entry(kInf);
  second.info = Entry(77).info;
  board.AddEntry(first);
  board.AddEntry(second);
  board.PopFirstMemOp();
  ASSERT_EQ(board.Size(), 2);
  EXPECT_EQ(board[1].info, second.info);
  board.PopFirstMemOp();
  EXPECT_EQ(ExecuteLengths(board), (std::vector<int>{5}));
  board.PopFirstMemOp();  // nothing left to retire
  EXPECT_EQ(board.Size(), 1);
}

TEST(ScoreboardTest, IndefiniteEntriesNeverFinishByCounting) {
  Scoreboard board;
  board.AddEntry(Entry(kInf, kInf, Units({InstructionUnit::VMEM})));
  int valu = 1, lds = 1;
  for (int i = 0; i < 100; ++i) EXPECT_FALSE(board.UpdateVGPRWrites(valu, lds));
  EXPECT_EQ(board.Size(), 1);
  EXPECT_FALSE(board.HasRunningEntry());
}

// Which counters a finishing entry lowers, per update operation.
TEST(ScoreboardTest, FinishingEntriesLowerTheirCounters) {
  const HardwareUsage salu = Units({InstructionUnit::SALU});
  const HardwareUsage valu = Units({InstructionUnit::VALU});
  const HardwareUsage trans = Units({InstructionUnit::TransVALU});
  const HardwareUsage vmem = Units({InstructionUnit::VMEM});
  enum Op { kSGPRWrites, kExecOp, kM0Op, kOther, kVGPRReads, kSGPRReads, kVGPRWrites };
  struct Case {
    Op op;
    RegisterID reg;
    HardwareUsage usage;
    bool isFirst;
    std::array<int, 3> expected;  // counters after, each starting at 5
  };
  const Case cases[] = {
      {kSGPRWrites, S(0), valu, false, {4, 5, 5}},
      {kSGPRWrites, S(0), trans, true, {4, 5, 5}},
      {kSGPRWrites, S(0), salu, true, {5, 4, 5}},
      {kExecOp, kExec, valu, true, {4, 4, 5}},
      {kExecOp, kExec, salu, true, {5, 5, 4}},
      {kM0Op, kM0, valu, true, {5, 5, 5}},
      {kM0Op, kM0, salu, true, {4, 5, 5}},
      {kOther, kVcc, valu, true, {5, 5, 5}},  // vcc: the VALU counter is not lowered
      {kOther, kVcc, salu, true, {5, 4, 5}},
      {kOther, kScc, valu, true, {4, 5, 5}},
      {kVGPRReads, 3, vmem, true, {4, 5, 5}},
      {kVGPRReads, 3, vmem, false, {5, 5, 5}},
      {kSGPRReads, S(2), valu, true, {4, 5, 5}},
      {kSGPRReads, S(2), valu, false, {5, 5, 5}},
      {kSGPRReads, kVcc, valu, true, {5, 5, 5}},
      {kVGPRWrites, 3, trans, true, {4, 5, 5}},
      {kVGPRWrites, 3, valu, false, {5, 5, 5}},
  };
  for (const Case& c : cases) {
    Scoreboard board;
    board.AddEntry(Entry(1, 0, c.usage, c.isFirst));
    std::array<int, 3> n = {5, 5, 5};
    bool finished = false;
    switch (c.op) {
      case kSGPRWrites:
        finished = board.UpdateSGPRWrites(n[0], n[1]);
        break;
      case kExecOp:
        finished = board.UpdateExec(n[0], n[1], n[2]);
        break;
      case kM0Op:
        finished = board.UpdateM0(n[0]);
        break;
      case kOther:
        finished = board.UpdateOtherHWRegWrites(c.reg, n[0], n[1]);
        break;
      case kVGPRReads:
        finished = board.UpdateVGPRReads(n[0]);
        break;
      case kSGPRReads:
        finished = board.UpdateSGPRReads(c.reg, n[0]);
        break;
      case kVGPRWrites:
        finished = board.UpdateVGPRWrites(n[0], n[1]);
        break;
    }
    EXPECT_TRUE(finished);
    EXPECT_TRUE(board.IsEmpty());
    EXPECT_EQ(n, c.expected) << "case op " << c.op << " reg " << c.reg;
  }
}

TEST(ScoreboardTest, LDSDirectWriteLeavesItsCounterInTheFifthCycle) {
  Scoreboard board;
  board.AddEntry(Entry(20, 4, Units({InstructionUnit::VALU, InstructionUnit::LDS})));
  int valu = 1, lds = 1;
  for (int cycle = 1; cycle <= 4; ++cycle) {
    board.UpdateVGPRWrites(valu, lds);
    EXPECT_EQ(lds, 1) << cycle;
  }
  EXPECT_EQ(board.GetUsageCounts().ldsDirectEntries, 1);
  board.UpdateVGPRWrites(valu, lds);
  EXPECT_EQ(lds, 0);
  EXPECT_EQ(board.GetUsageCounts().ldsDirectEntries, 0);
  EXPECT_EQ(valu, 1);
}

TEST(ScoreboardTest, UsageCountsSplitEntriesAndInstructions) {
  Scoreboard board;
  board.AddEntry(Entry(9, 0, Units({InstructionUnit::VALU, InstructionUnit::TransVALU}), true));
  board.AddEntry(Entry(8, 0, Units({InstructionUnit::VALU}), false));
  board.AddEntry(Entry(7, 0, Units({InstructionUnit::SALU}), true));
  const ScoreboardUsageCounts c = board.GetUsageCounts();
  EXPECT_EQ(c.valuEntries, 2);
  EXPECT_EQ(c.transEntries, 1);
  EXPECT_EQ(c.valuTransEntries, 1);
  EXPECT_EQ(c.saluEntries, 1);
  EXPECT_EQ(c.valuInstructions, 1);
  EXPECT_EQ(c.valuTransInstructions, 1);
  EXPECT_EQ(c.saluInstructions, 1);
}

}  // namespace
}  // namespace vesk::testing
