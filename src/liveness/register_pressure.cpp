// Register pressure: one pass over the per-instruction live sets.
#include "liveness/register_pressure.h"

#include <bit>

namespace vesk {

namespace {

// Members of the live set that count for the class.
int CountLive(const RegisterState::Set& live, RegisterType type) {
  if (type == VGPR) return live.Count();
  static_assert(kCountedSGPRs == 128, "s0..s127 are the first two words of the set");
  const auto& words = live.Words();
  return std::popcount(words[0]) + std::popcount(words[1]);
}

void Consider(RegisterPressure& pressure, const Invocation* invocation, const RegisterState& state,
              RegisterType type) {
  if (invocation == nullptr) return;
  const int live = CountLive(state.Live(), type);
  // Strictly greater: the first instruction reaching the peak is kept.
  if (live > pressure.maxLive) {
    pressure.maxLive = live;
    pressure.peak = invocation;
    pressure.peakLine = invocation->GetSourceLine();
  }
}

}  // namespace

RegisterPressure ComputeRegisterPressure(const LivenessStates& states, RegisterType type) {
  RegisterPressure pressure;
  for (size_t i = 0; i < states.Size(); ++i) {
    const auto [invocation, state] = states.Get(i);
    Consider(pressure, invocation, state, type);
  }
  return pressure;
}

RegisterPressure ComputeRegisterPressure(const RegisterStates& states, RegisterType type) {
  RegisterPressure pressure;
  for (const auto& [invocation, state] : states) Consider(pressure, invocation, state, type);
  return pressure;
}

}  // namespace vesk
