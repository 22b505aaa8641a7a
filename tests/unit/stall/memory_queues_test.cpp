// The memory counter queues: counting down through the shared clock, removal
// of retired operations and the merge at control-flow joins.
#include <gtest/gtest.h>

#include <random>

#include "stall/memory_counter_queues.h"

namespace vesk {
namespace {

const InvocationDependencyInfo* Op(int i) {
  return reinterpret_cast<const InvocationDependencyInfo*>(uintptr_t{0x100} * (i + 1));
}

std::vector<MemoryQueueElement> Queue(const MemoryCounterQueues& queues) {
  return queues.Elements(kLgkmCntQueue);
}

TEST(MemoryQueuesTest, ElementsCountDownToZeroAndStay) {
  MemoryCounterQueues queues;
  queues.PushBack(kLgkmCntQueue, {Op(0), 35});
  queues.Advance(10);
  queues.PushBack(kLgkmCntQueue, {Op(1), 5});
  queues.Advance(7);
  EXPECT_EQ(Queue(queues), (std::vector<MemoryQueueElement>{{Op(0), 18}, {Op(1), 0}}));
  EXPECT_EQ(queues.PopFront(kLgkmCntQueue), (MemoryQueueElement{Op(0), 18}));
}

TEST(MemoryQueuesTest, RemoveAllMatchesInstructionAndRemainingCycles) {
  MemoryCounterQueues queues;
  for (auto e : std::vector<MemoryQueueElement>{{Op(0), 3}, {Op(1), 4}, {Op(0), 5}, {Op(0), 3}})
    queues.PushBack(kLgkmCntQueue, e);
  queues.RemoveAll(kLgkmCntQueue, {{Op(0), 3}, {Op(2), 4}});
  EXPECT_EQ(Queue(queues), (std::vector<MemoryQueueElement>{{Op(1), 4}, {Op(0), 5}}));
}

TEST(MemoryQueuesTest, MergeRaisesKnownInstructionsAndPrependsNewOnes) {
  MemoryCounterQueues mine, theirs;
  mine.PushBack(kLgkmCntQueue, {Op(0), 10});
  mine.PushBack(kLgkmCntQueue, {Op(1), 30});
  theirs.PushBack(kLgkmCntQueue, {Op(2), 7});
  theirs.PushBack(kLgkmCntQueue, {Op(3), 8});
  theirs.PushBack(kLgkmCntQueue, {Op(0), 20});
  EXPECT_TRUE(mine.MergeFrom(kLgkmCntQueue, theirs));
  EXPECT_EQ(Queue(mine),
            (std::vector<MemoryQueueElement>{{Op(2), 7}, {Op(3), 8}, {Op(0), 20}, {Op(1), 30}}));
  EXPECT_FALSE(mine.MergeFrom(kLgkmCntQueue, theirs));
}

// Long queues take an indexed path; it must give what the element-by-element
// walk gives, duplicates of one instruction included.
TEST(MemoryQueuesTest, IndexedMergeOfLongQueuesMatchesTheWalk) {
  std::mt19937 random(7);
  for (int round = 0; round < 50; ++round) {
    MemoryCounterQueues mine, theirs;
    const int mineSize = 17 + random() % 30, theirSize = 17 + random() % 30;
    for (int i = 0; i < mineSize; ++i)
      mine.PushBack(kLgkmCntQueue, {Op(random() % 40), static_cast<int32_t>(random() % 36)});
    for (int i = 0; i < theirSize; ++i)
      theirs.PushBack(kLgkmCntQueue, {Op(random() % 40), static_cast<int32_t>(random() % 36)});

    MemoryCounterQueues walked = mine;
    bool pushed = false;
    for (size_t i = theirs.Size(kLgkmCntQueue); i-- > 0;) {
      const MemoryQueueElement e = theirs.At(kLgkmCntQueue, i);
      if (!walked.SetMaxForMemOp(kLgkmCntQueue, e)) {
        walked.PushFront(kLgkmCntQueue, e);
        pushed = true;
      }
    }
    ASSERT_GT(mine.Size(kLgkmCntQueue) * theirs.Size(kLgkmCntQueue), 256u);
    EXPECT_EQ(mine.MergeFrom(kLgkmCntQueue, theirs), pushed);
    EXPECT_EQ(Queue(mine), Queue(walked)) << "round " << round;
  }
}

}  // namespace
}  // namespace vesk
