// StallLength arithmetic and the stickiness of the indefinite value, and the
// HardwareUsage bit queries.
#include <gtest/gtest.h>

#include "timing/hardware_usage.h"
#include "timing/stall_length.h"

namespace vesk {
namespace {

constexpr int kInf = 2147483647;

TEST(StallLengthTest, IndefiniteIsStickyForEveryMutationButSetIndefinite) {
  const std::vector<std::pair<const char*, void (*)(StallLength&)>> mutations = {
      {"Set", [](StallLength& s) { s.Set(3); }},
      {"assign int", [](StallLength& s) { s = 3; }},
      {"prefix ++", [](StallLength& s) { ++s; }},
      {"prefix --", [](StallLength& s) { --s; }},
      {"postfix --", [](StallLength& s) { s--; }},
      {"+= 1", [](StallLength& s) { s += 1; }},
      {"-= 1", [](StallLength& s) { s -= 1; }},
      {"-= finite length", [](StallLength& s) { s -= StallLength(kInf - 1); }},
  };
  for (const auto& [label, mutate] : mutations) {
    StallLength s(kInf);
    mutate(s);
    EXPECT_TRUE(s.IsIndefinite()) << label;
    EXPECT_EQ(static_cast<int>(s), kInf) << label;
  }
  StallLength finite(4);
  finite.SetIndefinite();
  EXPECT_TRUE(finite.IsIndefinite());
  // Copying another length is the way back to a finite value.
  finite = StallLength(2);
  EXPECT_EQ(finite, 2);
}

TEST(StallLengthTest, Arithmetic) {
  EXPECT_TRUE((StallLength(5) += StallLength(kInf)).IsIndefinite());
  EXPECT_TRUE((StallLength(5) += kInf).IsIndefinite());
  EXPECT_TRUE((StallLength(5) - StallLength(kInf)).IsIndefinite());
  EXPECT_TRUE((StallLength(kInf) - 5).IsIndefinite());
  EXPECT_EQ(StallLength(5) - StallLength(7), -2);
  EXPECT_EQ(StallLength(5) + 7, 12);
  StallLength s(3);
  EXPECT_EQ(s++, 3);
  EXPECT_EQ(s--, 4);
  EXPECT_EQ(s, 3);
  EXPECT_TRUE(StallLength().IsZero());
  EXPECT_TRUE(StallLength(kInf - 1) + 1 == StallLength(kInf));  // sums may reach the sentinel
}

TEST(StallLengthTest, ComparisonsTreatIndefiniteAsLargest) {
  const StallLength inf(kInf);
  EXPECT_GT(inf, StallLength(1000000));
  EXPECT_EQ(inf, StallLength(kInf));
  EXPECT_LT(StallLength(-2), StallLength(0));
  EXPECT_TRUE(StallLength(3) >= 3 && 3 <= StallLength(3) && StallLength(2) != 3);
}

TEST(HardwareUsageTest, BitsAndLdsDirect) {
  HardwareUsage usage;
  EXPECT_TRUE(usage.IsEmpty());
  usage |= InstructionUnit::LDS;
  EXPECT_TRUE(usage.UseLDS());
  EXPECT_FALSE(usage.IsLDS_DIRECT());
  usage |= static_cast<unsigned short>(2);  // VALU
  EXPECT_TRUE(usage.UseVALU());
  EXPECT_TRUE(usage.IsLDS_DIRECT());
  EXPECT_EQ(usage.GetBits(), 0x22);
  EXPECT_FALSE(usage.UseSALU() || usage.UseTransVALU() || usage.UseSMEM() || usage.UseVMEM() ||
               usage.UseGDS() || usage.UseBranch());
  EXPECT_NE(usage, HardwareUsage(0x80));
}

}  // namespace
}  // namespace vesk
