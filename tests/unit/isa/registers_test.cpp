// Register numbering, special names and the fixed-size register sets.
#include "isa/registers.h"

#include <gtest/gtest.h>

#include <vector>

namespace vesk {
namespace {

TEST(RegisterID, ClassBoundaries) {
  EXPECT_TRUE(IsVGPR(0));
  EXPECT_TRUE(IsVGPR(255));
  EXPECT_FALSE(IsVGPR(256));
  EXPECT_FALSE(IsVGPR(-1));
  EXPECT_TRUE(IsStandardSGPR(383));  // ttmp15
  EXPECT_FALSE(IsSpecialSGPR(383));
  EXPECT_TRUE(IsSpecialSGPR(384));
  EXPECT_TRUE(IsSpecialSGPR(390));
  EXPECT_TRUE(IsAnySGPR(390));
  EXPECT_FALSE(IsAnySGPR(391));
  EXPECT_FALSE(IsAnySGPR(255));
}

TEST(SpecialRegisters, NamesMapToUnifiedNumbers) {
  struct Case {
    const char* name;
    RegisterID id;
  };
  const Case cases[] = {{"exec", 384},  {"exec_lo", 384}, {"vcc", 385},   {"vcc_lo", 385},
                        {"scc", 386},   {"sccz", 387},    {"m0", 388},    {"vccz", 389},
                        {"execz", 390}, {"ttmp0", 368},   {"ttmp15", 383}};
  for (const Case& c : cases) {
    RegisterID id = -1;
    EXPECT_TRUE(TryGetSpecialRegisterID(c.name, id)) << c.name;
    EXPECT_EQ(id, c.id) << c.name;
  }
  for (const char* name : {"exec_hi", "vcc_hi", "flat_scratch", "s5", "v5", "EXEC"}) {
    RegisterID id = 7;
    EXPECT_FALSE(TryGetSpecialRegisterID(name, id)) << name;
    EXPECT_EQ(id, 7) << name;
  }
}

TEST(SmallIntSet, SetAlgebraAndIteration) {
  SmallIntSet<256> a{0, 63, 64, 255};
  SmallIntSet<256> b{63, 100};
  EXPECT_EQ(a.Count(), 4);
  EXPECT_EQ((a | b).Count(), 5);
  EXPECT_EQ((a - b).Count(), 3);
  EXPECT_FALSE((a - b).Contains(63));
  EXPECT_EQ(a.Last(), 255);
  EXPECT_EQ(SmallIntSet<256>().Last(), -1);
  std::vector<int> members(a.begin(), a.end());
  EXPECT_EQ(members, (std::vector<int>{0, 63, 64, 255}));
  EXPECT_TRUE(SmallIntSet<256>().begin() == SmallIntSet<256>().end());
}

// Scalar numbers read from text run to s255 (ids up to 511), past the named
// register space; ids beyond both halves are in no set rather than indexing
// past the bits.
TEST(UnifiedRegisterSet, IdsOutsideTheRegisterSpace) {
  UnifiedRegisterSet set({456, 511, 512, -1, 100000});
  EXPECT_EQ(std::vector<RegisterID>(set.begin(), set.end()), (std::vector<RegisterID>{456, 511}));
  EXPECT_TRUE(set.Contains(456));
  EXPECT_TRUE(set.GetSGPRSet().Contains(200));
  for (RegisterID id : {-1, 200, 391, 512, 100000, -2147483647 - 1}) {
    EXPECT_FALSE(set.Contains(id)) << id;
  }
  set.Insert(-5);
  set.Insert(1 << 30);
  EXPECT_EQ(set.Count(), 2);
}

TEST(UnifiedRegisterSet, IteratesVectorThenScalarAndReportsLastByClass) {
  const UnifiedRegisterSet set({3, 256, 384});
  EXPECT_TRUE(set.Contains(3));
  EXPECT_TRUE(set.Contains(256));
  EXPECT_TRUE(set.Contains(384));
  EXPECT_FALSE(set.Contains(4));
  EXPECT_EQ(set.Count(), 3);
  EXPECT_EQ(set.Last(), 128);  // the SGPR index of exec
  EXPECT_EQ(std::vector<RegisterID>(set.begin(), set.end()),
            (std::vector<RegisterID>{3, 256, 384}));

  EXPECT_EQ(UnifiedRegisterSet({200}).Last(), 200);
  EXPECT_EQ(UnifiedRegisterSet({200, 257}).Last(), 1);  // scalar wins over vector
  EXPECT_EQ(UnifiedRegisterSet().Last(), 0);
  const UnifiedRegisterSet empty;
  EXPECT_TRUE(empty.begin() == empty.end());
  EXPECT_TRUE(empty.IsEmpty());

  const UnifiedRegisterSet scalarsOnly({300, 260});
  EXPECT_EQ(std::vector<RegisterID>(scalarsOnly.begin(), scalarsOnly.end()),
            (std::vector<RegisterID>{260, 300}));
  const UnifiedRegisterSet byClass({1, 2}, {0, 129});
  EXPECT_TRUE(byClass.Contains(385));
  EXPECT_TRUE(byClass == UnifiedRegisterSet({1, 2, 256, 385}));
}

}  // namespace
}  // namespace vesk
