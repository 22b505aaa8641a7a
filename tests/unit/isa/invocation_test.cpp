// Invocation: operand register parsing, branch targets, register roles and
// the printed form of an instruction line.
#include "isa/invocation.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace vesk {

// Failure lines show registers as written in a listing (v5, s12). Found by
// argument-dependent lookup, so it lives in the namespace of Register.
void PrintTo(const Register& reg, std::ostream* out) {
  *out << (reg.type == VGPR ? "v" : reg.type == SGPR ? "s" : "?") << reg.index;
}

namespace {

using Strings = std::vector<std::string>;

std::vector<int> Members(const SmallIntSet<256>& set) {
  return {set.begin(), set.end()};
}

TEST(ParseRegister, OperandForms) {
  struct Case {
    std::string operand;
    std::vector<Register> expected;
  };
  const Case cases[] = {
      {"v5", {{5, VGPR}}},
      {"s12", {{12, SGPR}}},
      {"-v3", {{3, VGPR}}},
      {"abs(v3)", {{3, VGPR}}},
      {"neg(abs(v3))", {{3, VGPR}}},
      {"-abs(v3)", {{3, VGPR}}},
      {"v[2:5]", {{2, VGPR}, {3, VGPR}, {4, VGPR}, {5, VGPR}}},
      {"s[0:1]", {{0, SGPR}, {1, SGPR}}},
      {"s[5:4]", {}},
      {"[v1,s2]", {{1, VGPR}, {2, SGPR}}},
      {"[v1, s2]", {{1, VGPR}}},  // a blank inside the list hides the element
      {"[s0,s1]", {{0, SGPR}, {1, SGPR}}},
      {"vcc", {}},
      {"exec", {}},
      {"m0", {}},
      {"ttmp4", {}},
      {"0x10", {}},
      {"1.0", {}},
      {"|v1|", {}},
      {"label_0004", {}},
      {"off", {}},
      // Unbalanced wrappers: without a ")" after the "(", the rest is kept.
      {"abs(neg(v3", {{3, VGPR}}},
      {")abs(neg(v3", {{3, VGPR}}},
      {"a)b(v4", {{4, VGPR}}},
      {"abs(v3))", {{3, VGPR}}},
      // Ranges are cut to the register file instead of walked.
      {"v[-2:1]", {{0, VGPR}, {1, VGPR}}},
      {"v[-2147483648:0]", {{0, VGPR}}},
      {"s[253:2147483647]", {{253, SGPR}, {254, SGPR}, {255, SGPR}}},
      {"v[256:2147483647]", {}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Invocation::ParseRegister(c.operand), c.expected) << c.operand;
  }
}

TEST(Invocation, BranchTargetsDropTheLabelPrefix) {
  const GFX10InstructionSet set;
  struct Case {
    std::string operand;
    std::string target;
  };
  const Case cases[] = {{"label_0004", "0004"}, {"_L3", "3"}, {"BB0_1", "0_1"}, {"_main", "_main"}};
  for (const Case& c : cases) {
    const Invocation branch(set, "s_cbranch_scc0", {c.operand}, {}, {});
    EXPECT_TRUE(branch.IsBranch());
    EXPECT_EQ(branch.GetBranchTarget(), c.target) << c.operand;
    const Invocation jump(set, "s_branch", {c.operand}, {}, {});
    EXPECT_TRUE(jump.IsJump());
    EXPECT_EQ(jump.GetJumpTarget(), c.target) << c.operand;
  }
  const Invocation plain(set, "s_mov_b32", {"s0", "s1"}, {}, {});
  EXPECT_EQ(plain.GetBranchTarget(), "");
}

TEST(InvocationDeathTest, UnresolvableBranchTargetIsFatal) {
  const GFX10InstructionSet set;
  EXPECT_EXIT(Invocation(set, "s_branch", {"somewhere"}, {}, {}), testing::ExitedWithCode(255),
              "Error: Could not determine label type. Aborting.");
}

TEST(Invocation, UnknownOpcodeHasNoRolesAndPrintsAsUnknown) {
  const GFX10InstructionSet set;
  const Invocation upper(set, "S_NOP", {"0"}, {}, {});
  EXPECT_STREQ(upper.GetInstruction()->GetName(), "<unknown>");
  const Invocation e32(set, "v_add_f32_e32", {"v0", "v1", "v2"}, {}, {});
  EXPECT_STREQ(e32.GetInstruction()->GetName(), "<unknown>");
  EXPECT_TRUE(e32.GetUsedOperands(VGPR).GetRead().IsEmpty());
  EXPECT_TRUE(e32.GetWriteRegisters().IsEmpty());
  EXPECT_EQ(e32.ToString(), "<unknown> v0, v1, v2");
}

TEST(Invocation, RegisterRolesFollowTheOpcodeRecord) {
  const GFX10InstructionSet set;
  const Invocation mov(set, "v_mov_b32", {"v0", "v1"}, {}, {});
  EXPECT_EQ(Members(mov.GetUsedOperands(VGPR).GetWritten()), std::vector<int>{0});
  EXPECT_EQ(Members(mov.GetUsedOperands(VGPR).GetRead()), std::vector<int>{1});

  const Invocation load(set, "buffer_load_dword", {"v1", "v2", "s[4:7]", "0"}, {"offen"}, {});
  EXPECT_EQ(Members(load.GetUsedOperands(VGPR).GetWritten()), std::vector<int>{1});
  EXPECT_EQ(Members(load.GetUsedOperands(VGPR).GetRead()), std::vector<int>{2});
  EXPECT_EQ(Members(load.GetUsedOperands(SGPR).GetRead()), (std::vector<int>{4, 5, 6, 7}));

  // Special registers are in the unified sets only, never in the class sets.
  const Invocation cndmask(set, "v_cndmask_b32", {"v0", "v1", "v2", "vcc_lo"}, {}, {});
  EXPECT_TRUE(cndmask.GetReadRegisters().Contains(385));
  EXPECT_TRUE(cndmask.GetUsedOperands(SGPR).GetRead().IsEmpty());
}

TEST(Invocation, ToStringPrintsLabelsNameOperandsAndModifiers) {
  const GFX10InstructionSet set;
  const Invocation branch(set, "s_cbranch_scc1", {"BB0_3"}, {}, {"BB0_1"});
  EXPECT_EQ(branch.ToString(), "label_BB0_1: s_cbranch_scc1 BB0_3");
  const Invocation twoLabels(set, "s_nop", {"0"}, {}, {"a", "b"});
  EXPECT_EQ(twoLabels.ToString(), "label_a, label_b: s_nop 0");
  EXPECT_EQ(twoLabels.ToString(false, false), "s_nop 0");
  const Invocation end(set, "s_endpgm", {}, {}, {});
  EXPECT_EQ(end.ToString(), "s_endpgm ");
  const Invocation load(set, "buffer_load_dword", {"v1", "v0", "s[0:3]", "0"}, {"glc"}, {});
  EXPECT_EQ(load.ToString(true, true), "buffer_load_dword v1, v0, s[0:3], 0 glc");
  EXPECT_EQ(load.ToString(), "buffer_load_dword v1, v0, s[0:3], 0");
}

TEST(Invocation, UsedLabelsAreCollectedOnce) {
  const GFX10InstructionSet set;
  std::vector<Invocation> program;
  program.emplace_back(set, "s_cbranch_scc0", Strings{"BB0_2"}, Strings{}, Strings{});
  program.emplace_back(set, "s_cbranch_vccz", Strings{"BB0_2"}, Strings{}, Strings{});
  program.emplace_back(set, "s_branch", Strings{"_L7"}, Strings{}, Strings{});
  program.emplace_back(set, "s_nop", Strings{"BB0_9"}, Strings{}, Strings{});
  const auto labels = GetUsedLabels(program);
  EXPECT_EQ(labels.size(), 2u);
  EXPECT_TRUE(labels.count("0_2"));
  EXPECT_TRUE(labels.count("7"));
}

}  // namespace
}  // namespace vesk
