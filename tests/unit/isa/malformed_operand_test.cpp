// Invocation: register numbers that cannot be read fail the line with a
// message naming the operand, even when the operand has no register role;
// pathological but readable operands are handled in time linear in their
// length.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "isa/invocation.h"

namespace vesk {
namespace {

using Strings = std::vector<std::string>;

TEST(MalformedOperand, FailsWhereverItStandsAndNamesTheOperand) {
  const GFX10InstructionSet set;
  struct Case {
    const char* opcode;
    Strings args;
    const char* message;
  };
  const Case cases[] = {
      // Unknown opcode: no operand has a role.
      {"x_unknown_op", {"v99999999999"}, "register index in 'v99999999999' does not fit 32 bits"},
      {"x_unknown_op", {"s[4:x]"}, "register range bound in 's[4:x]' is not a number"},
      // s_endpgm has no operand roles at all.
      {"s_endpgm", {"s[:3]"}, "register range bound in 's[:3]' is not a number"},
      // Third operand of v_mov_b32 lies outside its role masks.
      {"v_mov_b32", {"v0", "v1", "v[1:]"}, "register range bound in 'v[1:]' is not a number"},
      // Operands with a role fail as well.
      {"v_mov_b32", {"v4294967296", "v1"}, "register index in 'v4294967296' does not fit 32 bits"},
      {"v_mov_b32",
       {"v[0:99999999999]", "v1"},
       "register range bound in 'v[0:99999999999]' does not fit 32 bits"},
      {"v_mov_b32",
       {"v0", "v[-99999999999:3]"},
       "register range bound in 'v[-99999999999:3]' does not fit 32 bits"},
      {"v_mov_b32", {"v0", "v[x:3]"}, "register range bound in 'v[x:3]' is not a number"},
      // No ":" between the bounds: the upper bound is missing.
      {"v_mov_b32", {"v0", "s[0?3]"}, "register range bound in 's[0?3]' is not a number"},
      {"v_mov_b32", {"v0", "v["}, "register range bound in 'v[' is not a number"},
      // The message names the operand as written, wrappers and lists included.
      {"v_mov_b32",
       {"v0", "-abs(v99999999999)"},
       "register index in '-abs(v99999999999)' does not fit 32 bits"},
      {"s_mov_b64",
       {"[s0,s99999999999]", "0"},
       "register index in '[s0,s99999999999]' does not fit 32 bits"},
  };
  for (const Case& c : cases) {
    try {
      Invocation(set, c.opcode, c.args, {}, {});
      ADD_FAILURE() << "no error for " << c.opcode << " " << c.args.back();
    } catch (const OperandError& error) {
      EXPECT_EQ(std::string(error.what()), c.message);
    }
  }
  // ParseRegister reports the same way.
  EXPECT_THROW(Invocation::ParseRegister("v99999999999"), OperandError);
}

TEST(MalformedOperand, WellFormedOperandWithoutRoleAddsNothing) {
  const GFX10InstructionSet set;
  const Invocation mov(set, "v_mov_b32", {"v0", "v1", "v7"}, {}, {});
  const InstructionOperands& vgprs = mov.GetUsedOperands(VGPR);
  EXPECT_FALSE(vgprs.GetRead().Contains(7));
  EXPECT_FALSE(vgprs.GetWritten().Contains(7));
  EXPECT_EQ(vgprs.GetRead().Count() + vgprs.GetWritten().Count(), 2);
}

// Deep wrapper nesting, balanced or not, and ranges with bounds far outside
// the register file: each operand must cost time linear in its length. A
// quadratic peel takes many seconds on these; the bound is generous.
TEST(MalformedOperand, PathologicalOperandsParseInLinearTime) {
  const GFX10InstructionSet set;
  constexpr int kDepth = 300000;
  std::string open;
  for (int i = 0; i < kDepth; ++i) open += i % 2 ? "neg(" : "abs(";
  const std::string balanced = open + "v7" + std::string(kDepth, ')');
  const std::string unbalanced = open + "v7";
  const std::string closedBefore = ")" + open + "v7";
  const auto start = std::chrono::steady_clock::now();
  for (const std::string& operand : {balanced, unbalanced, closedBefore}) {
    const Invocation mov(set, "v_mov_b32", {"v0", operand}, {}, {});
    EXPECT_EQ(mov.GetReadRegisters(), UnifiedRegisterSet({7}, {})) << operand.substr(0, 16);
  }
  const Invocation wide(set, "v_mov_b32", {"v[-2147483648:0]", "v[255:2147483647]"}, {}, {});
  EXPECT_EQ(wide.GetWriteRegisters(), UnifiedRegisterSet({0}, {}));
  EXPECT_EQ(wide.GetReadRegisters(), UnifiedRegisterSet({255}, {}));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
}

}  // namespace
}  // namespace vesk
