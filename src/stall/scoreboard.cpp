// Ring operations, per-cycle count-down and merging of one register's
// in-flight operations.
#include "stall/scoreboard.h"

#include <cassert>

namespace vesk {

namespace {

bool UsesAnyVALU(HardwareUsage usage) {
  return usage.UseVALU() || usage.UseTransVALU();
}
}  // namespace

ScoreboardUsageCounts& ScoreboardUsageCounts::operator+=(const ScoreboardUsageCounts& o) {
  saluEntries += o.saluEntries;
  valuEntries += o.valuEntries;
  transEntries += o.transEntries;
  valuTransEntries += o.valuTransEntries;
  ldsDirectEntries += o.ldsDirectEntries;
  vmemEntries += o.vmemEntries;
  saluInstructions += o.saluInstructions;
  valuInstructions += o.valuInstructions;
  transInstructions += o.transInstructions;
  valuTransInstructions += o.valuTransInstructions;
  ldsDirectInstructions += o.ldsDirectInstructions;
  vmemInstructions += o.vmemInstructions;
  return *this;
}

void Scoreboard::AddEntry(const RegisterPipelineUsage& entry) {
  entries_[GetCurrentIndex(count_)] = entry;
  ++count_;
}

void Scoreboard::PopFront() {
  assert(IsSlot(head_) && count_ > 0);
  entries_[head_] = RegisterPipelineUsage{};
  head_ = (head_ + 1) % kCapacity;
  --count_;
}

void Scoreboard::Reset() {
  for (int i = 0; i < count_; ++i) (*this)[i] = RegisterPipelineUsage{};
  count_ = 0;
}

bool Scoreboard::Find(const RegisterPipelineUsage& entry) const {
  for (int i = 0; i < count_; ++i)
    if ((*this)[i] == entry) return true;
  return false;
}

const RegisterPipelineUsage& Scoreboard::GetMax() const {
  if (count_ < 2) return GetFirst();
  int best = 0;
  for (int i = 1; i < count_; ++i)
    if ((*this)[i].executeLength > (*this)[best].executeLength) best = i;
  return (*this)[best];
}

ScoreboardUsageCounts Scoreboard::GetUsageCounts() const {
  ScoreboardUsageCounts c;
  for (int i = 0; i < count_; ++i) {
    const RegisterPipelineUsage& e = (*this)[i];
    const bool salu = e.usage.UseSALU();
    const bool valu = e.usage.UseVALU();
    const bool trans = e.usage.UseTransVALU();
    const bool valuTrans = valu && trans;
    const bool ldsDirect = e.usage.IsLDS_DIRECT() && e.executeLength > 15;
    const bool vmem = e.usage.UseVMEM();
    c.saluEntries += salu;
    c.valuEntries += valu;
    c.transEntries += trans;
    c.valuTransEntries += valuTrans;
    c.ldsDirectEntries += ldsDirect;
    c.vmemEntries += vmem;
    if (e.isFirstRegister) {
      c.saluInstructions += salu;
      c.valuInstructions += valu;
      c.transInstructions += trans;
      c.valuTransInstructions += valuTrans;
      c.ldsDirectInstructions += ldsDirect;
      c.vmemInstructions += vmem;
    }
  }
  return c;
}

bool Scoreboard::operator==(const Scoreboard& other) const {
  if (count_ != other.count_) return false;
  for (int i = 0; i < count_; ++i)
    if ((*this)[i] != other[i]) return false;
  return true;
}

bool Scoreboard::TryDecrementCounter(StallLength& length) {
  const StallLength old = length;
  --length;
  if (length < 0) length = StallLength(0);
  return !old.IsZero() && length.IsZero();
}

// Counts every live entry down by one cycle. `onEntry(entry, finished,
// executeBefore)` runs right after the entry's decrement, before a finished
// entry's usage is cleared.
template <bool kVisibility, typename OnEntry>
bool Scoreboard::Advance(OnEntry onEntry) {
  bool anyFinished = false;
  for (int i = 0; i < count_; ++i) {
    RegisterPipelineUsage& e = (*this)[i];
    const StallLength before = e.executeLength;
    const bool finished = TryDecrementCounter(e.executeLength);
    if constexpr (kVisibility) TryDecrementCounter(e.visibilityLength);
    onEntry(e, finished, before);
    if (finished) {
      e.usage = HardwareUsage();
      anyFinished = true;
    }
  }
  if (anyFinished) Compress();
  return anyFinished;
}

bool Scoreboard::UpdateSGPRWrites(int& valuCounter, int& saluCounter) {
  return Advance<true>([&](const RegisterPipelineUsage& e, bool finished, StallLength) {
    if (!finished) return;
    DecrementForCondition(valuCounter, UsesAnyVALU(e.usage));
    DecrementForCondition(saluCounter, e.usage.UseSALU());
  });
}

bool Scoreboard::UpdateExec(int& valuCounterA, int& valuCounterB, int& saluCounter) {
  return Advance<true>([&](const RegisterPipelineUsage& e, bool finished, StallLength) {
    if (!finished) return;
    DecrementForCondition(valuCounterB, UsesAnyVALU(e.usage));
    DecrementForCondition(valuCounterA, UsesAnyVALU(e.usage));
    DecrementForCondition(saluCounter, e.usage.UseSALU());
  });
}

bool Scoreboard::UpdateM0(int& saluCounter) {
  return Advance<true>([&](const RegisterPipelineUsage& e, bool finished, StallLength) {
    if (finished) DecrementForCondition(saluCounter, e.usage.UseSALU());
  });
}

bool Scoreboard::UpdateOtherHWRegWrites(RegisterID reg, int& valuCounter, int& saluCounter) {
  return Advance<true>([&](const RegisterPipelineUsage& e, bool finished, StallLength) {
    if (!finished) return;
    // vcc writes by the VALU are tracked by their own counter.
    DecrementForCondition(valuCounter, reg != kVcc && UsesAnyVALU(e.usage));
    DecrementForCondition(saluCounter, e.usage.UseSALU());
  });
}

bool Scoreboard::UpdateVGPRReads(int& vmemCounter) {
  return Advance<false>([&](const RegisterPipelineUsage& e, bool finished, StallLength) {
    if (finished) DecrementForCondition(vmemCounter, e.usage.UseVMEM() && e.isFirstRegister);
  });
}

bool Scoreboard::UpdateSGPRReads(RegisterID reg, int& valuReadCounter) {
  return Advance<false>([&](const RegisterPipelineUsage& e, bool finished, StallLength) {
    if (finished)
      DecrementForCondition(valuReadCounter,
                            UsesAnyVALU(e.usage) && e.isFirstRegister && reg != kVcc);
  });
}

bool Scoreboard::UpdateVGPRWrites(int& valuCounter, int& ldsDirectCounter) {
  return Advance<true>([&](const RegisterPipelineUsage& e, bool finished, StallLength before) {
    if (finished) DecrementForCondition(valuCounter, UsesAnyVALU(e.usage) && e.isFirstRegister);
    // An LDS-direct write leaves the LDS-direct counter once fewer than 16
    // cycles remain. A finished entry loses its usage, so it never counts.
    const bool ldsDirect = !finished && e.usage.IsLDS_DIRECT();
    DecrementForCondition(ldsDirectCounter,
                          ldsDirect && before >= 16 && e.executeLength < 16 && e.isFirstRegister);
  });
}

bool Scoreboard::Merge(const Scoreboard& other) {
  if (other.IsEmpty()) return false;
  if (IsEmpty()) {
    *this = other;
    return true;
  }
  bool added = false;
  for (int i = 0; i < other.count_; ++i) {
    if (!Find(other[i])) {
      AddEntry(other[i]);
      added = true;
    }
  }
  return added;
}

void Scoreboard::Compress() {
  if (count_ < 1) return;
  while (GetFirst().executeLength.IsZero()) {
    PopFront();
    if (count_ < 1) return;
  }
  if (count_ < 2) return;
  for (int i = 1; i < count_; ++i) {
    if (!(*this)[i].executeLength.IsZero()) continue;
    int j = i + 1;
    while (j < count_ && (*this)[j].executeLength.IsZero()) ++j;
    if (j >= count_) {
      // The finished entries beyond stay in their slots, outside the ring.
      count_ = i;
      return;
    }
    (*this)[i] = (*this)[j];
    (*this)[j] = RegisterPipelineUsage{};
  }
}

void Scoreboard::PopFirstMemOp() {
  for (int i = 0; i < count_; ++i) {
    if ((*this)[i].executeLength.IsIndefinite()) {
      (*this)[i] = RegisterPipelineUsage{};
      Compress();
      return;
    }
  }
}

bool Scoreboard::HasRunningEntry() const {
  for (int i = 0; i < count_; ++i) {
    const RegisterPipelineUsage& e = (*this)[i];
    if ((!e.executeLength.IsZero() && !e.executeLength.IsIndefinite()) ||
        (!e.visibilityLength.IsZero() && !e.visibilityLength.IsIndefinite()))
      return true;
  }
  return false;
}

bool Scoreboard::HasRunningExecution() const {
  for (int i = 0; i < count_; ++i) {
    const StallLength& l = (*this)[i].executeLength;
    if (!l.IsZero() && !l.IsIndefinite()) return true;
  }
  return false;
}

}  // namespace vesk
