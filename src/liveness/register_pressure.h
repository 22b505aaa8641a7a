// Register pressure of one register class: the most registers live at once
// and the first instruction where that many are live, from the
// per-instruction liveness of a program.
#pragma once

#include <cstdint>

#include "isa/invocation.h"
#include "isa/registers.h"
#include "liveness/liveness_analysis.h"

namespace vesk {

struct RegisterPressure {
  // Most registers live at one instruction.
  int maxLive = 0;
  // The first instruction, in program order, at which `maxLive` registers
  // are live, and its listing line (0 for instructions built in memory);
  // null when no register is live anywhere.
  const Invocation* peak = nullptr;
  uint32_t peakLine = 0;
};

// Scalar pressure counts s0..s127 only: the special registers (vcc, exec,
// m0, scc and the condition bits) that share the scalar index space above
// them are not general registers of the wave.
constexpr int kCountedSGPRs = 128;

// The pressure over the states of `type` (the class the states were built
// for). The nodes without instruction (the graph's entry and exit) are
// skipped: the entry's live set is contained in the first instruction's.
RegisterPressure ComputeRegisterPressure(const LivenessStates& states, RegisterType type);

// The same over already gathered states.
RegisterPressure ComputeRegisterPressure(const RegisterStates& states, RegisterType type);

}  // namespace vesk
