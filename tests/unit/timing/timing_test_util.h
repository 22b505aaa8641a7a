// Builds dependency records from GFX10 invocations for the timing tests.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "isa/instruction_set.h"
#include "isa/invocation.h"
#include "timing/invocation_dependency_info.h"

namespace vesk::testing {

class TimingTest : public ::testing::Test {
 protected:
  // The opcode must be in the GFX10 table; an unknown opcode would silently
  // classify as "<unknown>".
  const InvocationDependencyInfo& Info(const std::string& opcode,
                                       std::vector<std::string> args = {}) {
    EXPECT_TRUE(set_.Contains(opcode.c_str())) << opcode << " missing from the GFX10 table";
    invocations_.emplace_back(set_, opcode, std::move(args), std::vector<std::string>{},
                              std::vector<std::string>{});
    infos_.push_back(std::make_unique<InvocationDependencyInfo>(invocations_.back()));
    return *infos_.back();
  }

  GFX10InstructionSet set_;
  std::deque<Invocation> invocations_;
  std::vector<std::unique_ptr<InvocationDependencyInfo>> infos_;
};


}  // namespace vesk::testing
