// Builds small programs for the summary tests from one-line texts such as
// "LOOP: s_add_u32 s0, s0, 1" against a real generation's opcode table, and
// numbers them as listing lines 1, 2, 3 ...
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "isa/instruction_set.h"
#include "isa/invocation.h"

namespace vesk::test {

inline const InstructionSet& Generation(const std::string& name) {
  static std::unique_ptr<InstructionSet> sets[4];
  const int slot = name == "gfx7" ? 0 : name == "gfx8" ? 1 : name == "gfx9" ? 2 : 3;
  if (!sets[slot]) sets[slot] = CreateInstructionSet(name);
  return *sets[slot];
}

// "L1 L2: opcode a, b" -> labels L1 and L2, the opcode and its operands
// (split at ", "). Words after a blank inside the last operand stay in it.
inline Invocation ParseIsaLine(const InstructionSet& set, const std::string& line) {
  std::string rest = line;
  std::vector<std::string> labels;
  if (const size_t colon = rest.find(": "); colon != std::string::npos) {
    std::string names = rest.substr(0, colon);
    rest = rest.substr(colon + 2);
    size_t start = 0;
    while (start < names.size()) {
      size_t blank = names.find(' ', start);
      if (blank == std::string::npos) blank = names.size();
      if (blank > start) labels.push_back(names.substr(start, blank - start));
      start = blank + 1;
    }
  }
  const size_t blank = rest.find(' ');
  const std::string opcode = rest.substr(0, blank);
  std::vector<std::string> args;
  if (blank != std::string::npos) {
    const std::string operands = rest.substr(blank + 1);
    size_t start = 0;
    while (start <= operands.size()) {
      size_t comma = operands.find(", ", start);
      if (comma == std::string::npos) comma = operands.size();
      args.push_back(operands.substr(start, comma - start));
      start = comma + 2;
    }
  }
  return Invocation(set, opcode, args, {}, labels);
}

// Line i of `lines` becomes listing line i + 1.
inline std::vector<Invocation> MakeIsaProgram(const std::string& generation,
                                              const std::vector<std::string>& lines) {
  const InstructionSet& set = Generation(generation);
  std::vector<Invocation> program;
  program.reserve(lines.size());
  for (const std::string& line : lines) {
    program.push_back(ParseIsaLine(set, line));
    program.back().SetSourceLine(static_cast<uint32_t>(program.size()));
  }
  return program;
}

}  // namespace vesk::test
