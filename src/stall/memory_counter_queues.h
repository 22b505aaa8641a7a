// The memory counter queues of one wave: outstanding vector loads (vmcnt),
// vector stores (vscnt), LDS/GDS/scalar-memory/message operations (lgkmcnt),
// a spare queue and the export queue. Each element keeps the cycles left
// until its data returns at the earliest; an element stays outstanding until
// a wait retires it.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace vesk {

class InvocationDependencyInfo;

// One outstanding memory operation as seen from outside: the issuing
// instruction and the cycles it still needs (never below 0).
struct MemoryQueueElement {
  const InvocationDependencyInfo* info = nullptr;
  int32_t remaining = 0;
  bool operator==(const MemoryQueueElement&) const = default;
};

enum MemoryQueueKind : int {
  kVmCntQueue = 0,
  kVsCntQueue,
  kLgkmCntQueue,
  kSpareCntQueue,
  kExpCntQueue
};
constexpr int kMemoryQueueCount = 5;

// The five queues share one cycle clock: an element stores the cycle at which
// its remaining count reaches 0, so advancing the clock counts every element
// down at once instead of walking the queues each cycle.
class MemoryCounterQueues {
 public:
  using Element = MemoryQueueElement;

  void Advance(int64_t cycles) { now_ += cycles; }
  void Clear();

  size_t Size(int queue) const { return Queue(queue).size(); }
  bool IsEmpty(int queue) const { return Queue(queue).empty(); }
  Element At(int queue, size_t i) const {
    assert(i < Size(queue));
    return ToElement(Queue(queue)[i]);
  }
  std::vector<Element> Elements(int queue) const;
  // The same into `out`, reusing its storage.
  void CopyElements(int queue, std::vector<Element>& out) const;
  // The same appended to `out`.
  void AppendElements(int queue, std::vector<Element>& out) const;

  void PushBack(int queue, const Element& element) {
    Queue(queue).push_back({element.info, now_ + element.remaining});
  }
  void PushFront(int queue, const Element& element) {
    Queue(queue).push_front({element.info, now_ + element.remaining});
  }
  Element PopFront(int queue);
  // Removes every element equal (instruction and remaining) to one of
  // `elements`.
  void RemoveAll(int queue, const std::vector<Element>& elements);
  // Raises the remaining cycles of the first element of the same instruction
  // to the greater of the two; false when the instruction is not queued.
  bool SetMaxForMemOp(int queue, const Element& element);

  // Merge at a control-flow join: walking `other`'s queue from back to
  // front, an instruction already queued here gets the greater remaining
  // count, any other element is pushed at the front. True when something was
  // pushed.
  bool MergeFrom(int queue, const MemoryCounterQueues& other);

  bool QueueEquals(int queue, const MemoryCounterQueues& other) const;

 private:
  struct Slot {
    const InvocationDependencyInfo* info;
    int64_t readyCycle;
  };
  std::deque<Slot>& Queue(int queue) {
    assert(queue >= 0 && queue < kMemoryQueueCount);
    return queues_[queue];
  }
  const std::deque<Slot>& Queue(int queue) const {
    assert(queue >= 0 && queue < kMemoryQueueCount);
    return queues_[queue];
  }
  Element ToElement(const Slot& slot) const {
    const int64_t left = slot.readyCycle - now_;
    return {slot.info, static_cast<int32_t>(left > 0 ? left : 0)};
  }

  std::array<std::deque<Slot>, kMemoryQueueCount> queues_;
  int64_t now_ = 0;
};

}  // namespace vesk
