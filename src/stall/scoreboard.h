// Scoreboard: the operations in flight on one register, a fixed ring of 20
// entries in issue order. Each simulated cycle counts the entries down; a
// finishing entry lowers the aggregate dependency counters it was counted in.
#pragma once

#include <array>
#include <cassert>
#include <cstdint>
#include <type_traits>

#include "isa/registers.h"
#include "stall/register_pipeline_usage.h"

namespace vesk {

// Live entries per unit class; the "Instructions" half counts only entries
// made for an instruction's first register.
struct ScoreboardUsageCounts {
  int32_t saluEntries = 0;
  int32_t valuEntries = 0;
  int32_t transEntries = 0;
  int32_t valuTransEntries = 0;
  int32_t ldsDirectEntries = 0;
  int32_t vmemEntries = 0;
  int32_t saluInstructions = 0;
  int32_t valuInstructions = 0;
  int32_t transInstructions = 0;
  int32_t valuTransInstructions = 0;
  int32_t ldsDirectInstructions = 0;
  int32_t vmemInstructions = 0;

  ScoreboardUsageCounts& operator+=(const ScoreboardUsageCounts& other);
  bool operator==(const ScoreboardUsageCounts&) const = default;
};

// Subtracts 1 from `counter` when `condition` holds (no floor at zero).
inline void DecrementForCondition(int& counter, bool condition) {
  if (condition) --counter;
}

class Scoreboard {
 public:
  static constexpr int kCapacity = 20;

  bool IsEmpty() const { return count_ == 0; }
  int Size() const { return count_; }
  int GetHead() const { return head_; }
  // Positions past the capacity wrap around the ring (more than 20 entries in
  // flight overwrite the oldest slots); the slot is always within the ring.
  int GetCurrentIndex(int i) const {
    assert(i >= 0 && IsSlot(head_));
    return (head_ + i) % kCapacity;
  }
  RegisterPipelineUsage& operator[](int i) { return entries_[GetCurrentIndex(i)]; }
  const RegisterPipelineUsage& operator[](int i) const { return entries_[GetCurrentIndex(i)]; }
  // The oldest entry; on an empty scoreboard whatever the head slot holds.
  const RegisterPipelineUsage& GetFirst() const {
    assert(IsSlot(head_));
    return entries_[head_];
  }
  // Raw ring slot, for packing a scoreboard into block-boundary storage.
  const RegisterPipelineUsage& GetSlot(int slot) const {
    assert(IsSlot(slot));
    return entries_[slot];
  }
  RegisterPipelineUsage& GetSlot(int slot) {
    assert(IsSlot(slot));
    return entries_[slot];
  }
  void SetRing(int head, int count) {
    assert(IsSlot(head) && count >= 0);
    head_ = head;
    count_ = count;
  }

  // No capacity check: a 21st entry overwrites the head slot.
  void AddEntry(const RegisterPipelineUsage& entry);
  void PopFront();
  void Reset();
  bool Find(const RegisterPipelineUsage& entry) const;
  // Live entry with the greatest executeLength (oldest on ties); the head
  // slot when fewer than two entries are live.
  const RegisterPipelineUsage& GetMax() const;
  ScoreboardUsageCounts GetUsageCounts() const;

  bool operator==(const Scoreboard& other) const;
  bool operator!=(const Scoreboard& other) const { return !(*this == other); }

  // Decrements `length` (clamped at 0, indefinite stays); true exactly in the
  // cycle it reaches 0 from a non-zero value.
  static bool TryDecrementCounter(StallLength& length);

  // One cycle each; true when at least one entry finished.
  bool UpdateSGPRWrites(int& valuCounter, int& saluCounter);
  bool UpdateVcc(int& valuCounter, int& saluCounter) {
    return UpdateSGPRWrites(valuCounter, saluCounter);
  }
  bool UpdateExec(int& valuCounterA, int& valuCounterB, int& saluCounter);
  bool UpdateM0(int& saluCounter);
  bool UpdateOtherHWRegWrites(RegisterID reg, int& valuCounter, int& saluCounter);
  bool UpdateVGPRReads(int& vmemCounter);
  bool UpdateSGPRReads(RegisterID reg, int& valuReadCounter);
  bool UpdateVGPRWrites(int& valuCounter, int& ldsDirectCounter);

  // Union with another path's in-flight operations; true when entries were
  // added (or this scoreboard was empty and took the other one whole).
  bool Merge(const Scoreboard& other);
  // Drops entries whose execution finished, keeping the order of the rest.
  void Compress();
  // Retires the oldest operation whose end is signalled by a memory counter.
  void PopFirstMemOp();

  // Some live entry still counts down a finite, non-zero length; cycles
  // change nothing on a scoreboard without one.
  bool HasRunningEntry() const;
  // Some live entry has a finite, non-zero executeLength, i.e. will finish
  // (and lower a counter) by waiting alone.
  bool HasRunningExecution() const;

 private:
  static constexpr bool IsSlot(int slot) { return slot >= 0 && slot < kCapacity; }
  template <bool kVisibility, typename OnEntry>
  bool Advance(OnEntry onEntry);

  std::array<RegisterPipelineUsage, kCapacity> entries_{};
  int32_t head_ = 0;
  int32_t count_ = 0;
};

static_assert(std::is_trivially_copyable_v<Scoreboard>);
static_assert(sizeof(Scoreboard) == 488, "20 slots plus head and count");

}  // namespace vesk
