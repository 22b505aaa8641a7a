// Pressure peak over hand-made live sets: which members count for each
// class, the first of equal peaks, and the nodes without instruction.
#include <gtest/gtest.h>

#include <vector>

#include "../app/isa_test_program.h"
#include "liveness/register_pressure.h"

namespace vesk {
namespace {

using Set = RegisterState::Set;

struct PressureCase {
  const char* name;
  // Live set per state; -1 in `nullAt` marks no state without instruction.
  std::vector<Set> live;
  int nullAt;
  RegisterType type;
  int maxLive;
  int peakIndex;  // -1: no peak
};

const PressureCase kCases[] = {
    {"nothing live", {{}, {}}, -1, VGPR, 0, -1},
    {"first of two equal peaks", {{1}, {1, 2}, {3, 4}, {5}}, -1, VGPR, 2, 1},
    {"all 256 vector registers", {{0, 255}, {}}, -1, VGPR, 2, 0},
    {"scalar count stops at s127", {{5, 127, 128, 130}, {1, 2, 3}}, -1, SGPR, 3, 1},
    {"vector count takes every index", {{5, 127, 128, 130}, {1, 2, 3}}, -1, VGPR, 4, 0},
    {"a node without instruction is not a peak", {{1, 2, 3}, {1}}, 0, VGPR, 1, 1},
};

TEST(RegisterPressureTest, PeakOverStates) {
  const std::vector<Invocation> program =
      test::MakeIsaProgram("gfx10", {"s_nop 0", "s_nop 0", "s_nop 0", "s_nop 0"});
  for (const PressureCase& c : kCases) {
    SCOPED_TRACE(c.name);
    RegisterStates states;
    for (size_t i = 0; i < c.live.size(); ++i) {
      const Invocation* invocation = static_cast<int>(i) == c.nullAt ? nullptr : &program[i];
      states.emplace_back(invocation, RegisterState({}, {}, c.live[i]));
    }
    const RegisterPressure pressure = ComputeRegisterPressure(states, c.type);
    EXPECT_EQ(pressure.maxLive, c.maxLive);
    if (c.peakIndex < 0) {
      EXPECT_EQ(pressure.peak, nullptr);
      EXPECT_EQ(pressure.peakLine, 0u);
    } else {
      EXPECT_EQ(pressure.peak, &program[c.peakIndex]);
      EXPECT_EQ(pressure.peakLine, static_cast<uint32_t>(c.peakIndex + 1));
    }
  }
}

}  // namespace
}  // namespace vesk
