// Invocation: register numbers that cannot be read fail the line even when the
// operand has no register role, while well-formed role-less operands add no
// registers.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "isa/invocation.h"

namespace vesk {
namespace {

using Strings = std::vector<std::string>;

TEST(MalformedOperand, FailsWhereverItStands) {
  const GFX10InstructionSet set;
  enum Failure { OutOfRange, InvalidArgument };
  struct Case {
    const char* opcode;
    Strings args;
    Failure failure;
  };
  const Case cases[] = {
      // Unknown opcode: no operand has a role.
      {"x_unknown_op", {"v99999999999"}, OutOfRange},
      {"x_unknown_op", {"s[4:x]"}, InvalidArgument},
      // s_endpgm has no operand roles at all.
      {"s_endpgm", {"s[:3]"}, InvalidArgument},
      // Third operand of v_mov_b32 lies outside its role masks.
      {"v_mov_b32", {"v0", "v1", "v[1:]"}, InvalidArgument},
      // Operands with a role fail as well.
      {"v_mov_b32", {"v4294967296", "v1"}, OutOfRange},
  };
  for (const Case& c : cases) {
    const auto construct = [&] { Invocation(set, c.opcode, c.args, {}, {}); };
    if (c.failure == OutOfRange) {
      EXPECT_THROW(construct(), std::out_of_range) << c.opcode << " " << c.args.back();
    } else {
      EXPECT_THROW(construct(), std::invalid_argument) << c.opcode << " " << c.args.back();
    }
  }
}

TEST(MalformedOperand, WellFormedOperandWithoutRoleAddsNothing) {
  const GFX10InstructionSet set;
  const Invocation mov(set, "v_mov_b32", {"v0", "v1", "v7"}, {}, {});
  const InstructionOperands& vgprs = mov.GetUsedOperands(VGPR);
  EXPECT_FALSE(vgprs.GetRead().Contains(7));
  EXPECT_FALSE(vgprs.GetWritten().Contains(7));
  EXPECT_EQ(vgprs.GetRead().Count() + vgprs.GetWritten().Count(), 2);
}

}  // namespace
}  // namespace vesk
