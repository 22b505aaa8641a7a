// RegisterPipelineUsage: one operation in flight on one register (a pending
// write of its value or a pending read of it), counting down cycle by cycle.
#pragma once

#include <type_traits>

#include "timing/hardware_usage.h"
#include "timing/stall_length.h"

namespace vesk {

class InvocationDependencyInfo;

struct RegisterPipelineUsage {
  // Units the issuing instruction uses; cleared once the operation finished.
  HardwareUsage usage;
  // Set on the entry of the instruction's first register only, so that one
  // instruction counts once in the per-instruction counters. (The two flags
  // sit next to `usage` to keep a slot three words wide.)
  bool isFirstRegister = true;
  // The writer produces a lane mask (compare, carry out, v_div_fmas).
  bool writesLaneMask = false;
  // Cycles until the value is written (or the register has been read);
  // indefinite for memory operations whose end only a counter signals.
  StallLength executeLength;
  // Cycles until the result can be consumed by other units.
  StallLength visibilityLength;
  const InvocationDependencyInfo* info = nullptr;

  bool operator==(const RegisterPipelineUsage& other) const {
    return isFirstRegister == other.isFirstRegister && executeLength == other.executeLength &&
           visibilityLength == other.visibilityLength && info == other.info &&
           usage == other.usage && writesLaneMask == other.writesLaneMask;
  }
  bool operator!=(const RegisterPipelineUsage& other) const { return !(*this == other); }

  // The state of a cleared slot.
  bool IsEmptySlot() const { return *this == RegisterPipelineUsage{}; }
};

static_assert(std::is_trivially_copyable_v<RegisterPipelineUsage>);
static_assert(sizeof(RegisterPipelineUsage) == 24, "scoreboard slots stay three words wide");

}  // namespace vesk
