// Builds small programs for the summary tests from one-line texts such as
// "LOOP: s_add_u32 s0, s0, 1" against a real generation's opcode table, and
// numbers them as listing lines 1, 2, 3 ...
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "../cfg/test_program.h"
#include "isa/instruction_set.h"
#include "isa/invocation.h"

namespace vesk::test {

inline const InstructionSet& Generation(const std::string& name) {
  static std::unique_ptr<InstructionSet> sets[4];
  const int slot = name == "gfx7" ? 0 : name == "gfx8" ? 1 : name == "gfx9" ? 2 : 3;
  if (!sets[slot]) sets[slot] = CreateInstructionSet(name);
  return *sets[slot];
}

// Line i of `lines` becomes listing line i + 1.
inline std::vector<Invocation> MakeIsaProgram(const std::string& generation,
                                              const std::vector<std::string>& lines) {
  const InstructionSet& set = Generation(generation);
  std::vector<Invocation> program;
  program.reserve(lines.size());
  for (const std::string& line : lines) {
    program.push_back(ParseTestLine(set, line));
    program.back().SetSourceLine(static_cast<uint32_t>(program.size()));
  }
  return program;
}

}  // namespace vesk::test
