// Helpers for the stall simulation tests: GFX10 instructions from one line of
// text, and scoreboard entries with given lengths.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "isa/instruction_set.h"
#include "isa/invocation.h"
#include "stall/hardware_state.h"
#include "stall/scoreboard.h"
#include "timing/invocation_dependency_info.h"
#include "util/analysis_error.h"

namespace vesk::testing {

constexpr RegisterID S(int i) {
  return 256 + i;
}

// "v_add_f32 v0, v1, v2" -> opcode and operands (split at ", ").
inline std::pair<std::string, std::vector<std::string>> SplitLine(const std::string& line) {
  const size_t blank = line.find(' ');
  std::string opcode = line.substr(0, blank);
  std::vector<std::string> args;
  if (blank != std::string::npos) {
    std::string rest = line.substr(blank + 1);
    size_t start = 0;
    while (start <= rest.size()) {
      size_t comma = rest.find(", ", start);
      if (comma == std::string::npos) {
        if (start < rest.size()) args.push_back(rest.substr(start));
        break;
      }
      args.push_back(rest.substr(start, comma - start));
      start = comma + 2;
    }
  }
  return {opcode, args};
}

class StallTest : public ::testing::Test {
 protected:
  const Invocation& Inv(const std::string& line, std::vector<std::string> labels = {}) {
    auto [opcode, args] = SplitLine(line);
    EXPECT_TRUE(set_.Contains(opcode.c_str())) << opcode << " missing from the GFX10 table";
    invocations_.emplace_back(set_, opcode, std::move(args), std::vector<std::string>{},
                              std::move(labels));
    return invocations_.back();
  }
  const InvocationDependencyInfo& Info(const std::string& line) { return InfoAt(0, line); }
  // The same for an instruction on the given listing line.
  const InvocationDependencyInfo& InfoAt(uint32_t sourceLine, const std::string& line) {
    Inv(line);
    invocations_.back().SetSourceLine(sourceLine);
    infos_.push_back(std::make_unique<InvocationDependencyInfo>(invocations_.back()));
    return *infos_.back();
  }

  GFX10InstructionSet set_;
  std::deque<Invocation> invocations_;
  std::vector<std::unique_ptr<InvocationDependencyInfo>> infos_;
};

inline RegisterPipelineUsage Entry(int execute, int visibility = 0,
                                   HardwareUsage usage = HardwareUsage(), bool isFirst = true) {
  RegisterPipelineUsage e;
  e.usage = usage;
  e.executeLength = StallLength(execute);
  e.visibilityLength = StallLength(visibility);
  e.isFirstRegister = isFirst;
  // Any non-null marker tells entries apart from cleared slots.
  e.info = reinterpret_cast<const InvocationDependencyInfo*>(uintptr_t{0x1000} +
                                                             static_cast<uint32_t>(execute));
  return e;
}

inline HardwareUsage Units(std::initializer_list<InstructionUnit> units) {
  HardwareUsage usage;
  for (InstructionUnit u : units) usage |= u;
  return usage;
}

// Runs `f` and returns the line and message of the listing error it throws;
// line 0 and an empty message when it throws none.
template <typename F>
std::pair<uint32_t, std::string> ListingErrorOf(F&& f) {
  try {
    f();
  } catch (const ListingError& error) {
    return {error.Line(), error.what()};
  }
  return {0, ""};
}

inline std::vector<int> ExecuteLengths(const Scoreboard& board) {
  std::vector<int> lengths;
  for (int i = 0; i < board.Size(); ++i) lengths.push_back(board[i].executeLength.Get());
  return lengths;
}

}  // namespace vesk::testing
