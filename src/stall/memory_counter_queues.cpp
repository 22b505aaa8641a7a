// Queue operations on the clock-based memory counter queues.
#include "stall/memory_counter_queues.h"

#include <algorithm>

namespace vesk {

void MemoryCounterQueues::Clear() {
  for (auto& q : queues_) q.clear();
  now_ = 0;
}

std::vector<MemoryQueueElement> MemoryCounterQueues::Elements(int queue) const {
  std::vector<Element> result;
  result.reserve(queues_[queue].size());
  for (const Slot& slot : queues_[queue]) result.push_back(ToElement(slot));
  return result;
}

MemoryQueueElement MemoryCounterQueues::PopFront(int queue) {
  const Element front = ToElement(queues_[queue].front());
  queues_[queue].pop_front();
  return front;
}

void MemoryCounterQueues::Remove(int queue, const Element& element) {
  auto& q = queues_[queue];
  q.erase(std::remove_if(q.begin(), q.end(),
                         [&](const Slot& slot) { return ToElement(slot) == element; }),
          q.end());
}

bool MemoryCounterQueues::SetMaxForMemOp(int queue, const Element& element) {
  for (Slot& slot : queues_[queue]) {
    if (slot.info != element.info) continue;
    const Element mine = ToElement(slot);
    slot.readyCycle = now_ + std::max(mine.remaining, element.remaining);
    return true;
  }
  return false;
}

bool MemoryCounterQueues::QueueEquals(int queue, const MemoryCounterQueues& other) const {
  const auto& a = queues_[queue];
  const auto& b = other.queues_[queue];
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (ToElement(a[i]) != other.ToElement(b[i])) return false;
  return true;
}

}  // namespace vesk
