// Queue operations on the clock-based memory counter queues.
#include "stall/memory_counter_queues.h"

#include <algorithm>
#include <cassert>
#include <functional>
#include <unordered_map>

namespace vesk {

void MemoryCounterQueues::Clear() {
  for (auto& q : queues_) q.clear();
  now_ = 0;
}

std::vector<MemoryQueueElement> MemoryCounterQueues::Elements(int queue) const {
  std::vector<Element> result;
  result.reserve(Queue(queue).size());
  for (const Slot& slot : Queue(queue)) result.push_back(ToElement(slot));
  return result;
}

void MemoryCounterQueues::CopyElements(int queue, std::vector<Element>& out) const {
  out.clear();
  for (const Slot& slot : Queue(queue)) out.push_back(ToElement(slot));
}

void MemoryCounterQueues::AppendElements(int queue, std::vector<Element>& out) const {
  for (const Slot& slot : Queue(queue)) out.push_back(ToElement(slot));
}

MemoryQueueElement MemoryCounterQueues::PopFront(int queue) {
  assert(!IsEmpty(queue));
  const Element front = ToElement(Queue(queue).front());
  Queue(queue).pop_front();
  return front;
}

void MemoryCounterQueues::RemoveAll(int queue, const std::vector<Element>& elements) {
  if (elements.empty()) return;
  auto& q = Queue(queue);
  if (q.empty()) return;
  // Few elements: compare directly.
  if (elements.size() <= 8) {
    q.erase(std::remove_if(q.begin(), q.end(),
                           [&](const Slot& slot) {
                             const Element mine = ToElement(slot);
                             for (const Element& e : elements)
                               if (e == mine) return true;
                             return false;
                           }),
            q.end());
    return;
  }
  auto order = [](const Element& a, const Element& b) {
    return a.info != b.info ? std::less<>()(a.info, b.info) : a.remaining < b.remaining;
  };
  std::vector<Element> sorted = elements;
  std::sort(sorted.begin(), sorted.end(), order);
  q.erase(std::remove_if(q.begin(), q.end(),
                         [&](const Slot& slot) {
                           return std::binary_search(sorted.begin(), sorted.end(), ToElement(slot),
                                                     order);
                         }),
          q.end());
}

bool MemoryCounterQueues::MergeFrom(int queue, const MemoryCounterQueues& other) {
  auto& q = Queue(queue);
  const auto& theirs = other.Queue(queue);
  bool pushed = false;
  // Short queues: search directly.
  if (q.size() * theirs.size() <= 256) {
    for (size_t i = theirs.size(); i-- > 0;) {
      const Element element = other.ToElement(theirs[i]);
      if (!SetMaxForMemOp(queue, element)) {
        PushFront(queue, element);
        pushed = true;
      }
    }
    return pushed;
  }
  // Long queues: index the first element of every instruction. Pushing at
  // the front of a deque keeps references to the other elements valid.
  std::unordered_map<const InvocationDependencyInfo*, Slot*> first;
  for (auto it = q.rbegin(); it != q.rend(); ++it) first[it->info] = &*it;
  for (size_t i = theirs.size(); i-- > 0;) {
    const Element element = other.ToElement(theirs[i]);
    const auto found = first.find(element.info);
    if (found != first.end()) {
      Slot& slot = *found->second;
      slot.readyCycle = now_ + std::max(ToElement(slot).remaining, element.remaining);
    } else {
      PushFront(queue, element);
      first[element.info] = &q.front();
      pushed = true;
    }
  }
  return pushed;
}

bool MemoryCounterQueues::SetMaxForMemOp(int queue, const Element& element) {
  for (Slot& slot : Queue(queue)) {
    if (slot.info != element.info) continue;
    const Element mine = ToElement(slot);
    slot.readyCycle = now_ + std::max(mine.remaining, element.remaining);
    return true;
  }
  return false;
}

bool MemoryCounterQueues::QueueEquals(int queue, const MemoryCounterQueues& other) const {
  const auto& a = Queue(queue);
  const auto& b = other.Queue(queue);
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (ToElement(a[i]) != other.ToElement(b[i])) return false;
  return true;
}

}  // namespace vesk
