// Builds small programs for the CFG and liveness tests from one-line texts
// such as "A B: v_mov_b32 v0, v1", against a fixed opcode table whose
// register roles the tests spell out.
#pragma once

#include <string>
#include <vector>

#include "isa/instruction.h"
#include "isa/instruction_set.h"
#include "isa/invocation.h"

namespace vesk::test {

// Sorted by name, as the table lookup requires.
inline constexpr Instruction kTestTable[] = {
    {"s_branch", 0x0, 0x1, 0x0, kKindJump},      {"s_cbranch_scc0", 0x0, 0x1, 0x0, kKindBranch},
    {"s_endpgm", 0x0, 0x0, 0x0, kKindEnd},       {"s_nop", 0x0, 0x0, 0x0, kKindImmediate},
    {"v_add_f32", 0x1, 0x6, 0x0, kKindOrdinary}, {"v_mac_f32", 0x1, 0x7, 0x1, kKindOrdinary},
    {"v_mov_b32", 0x1, 0x2, 0x0, kKindOrdinary},
};

inline const InstructionSet& TestInstructionSet() {
  static const InstructionSet set(kTestTable, std::size(kTestTable));
  return set;
}

// "L1 L2: opcode a, b" -> labels L1 and L2, the opcode and its operands
// (split at ", "), looked up in `set`.
inline Invocation ParseTestLine(const InstructionSet& set, const std::string& line) {
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
    std::string operands = rest.substr(blank + 1);
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

inline Invocation ParseTestLine(const std::string& line) {
  return ParseTestLine(TestInstructionSet(), line);
}

inline std::vector<Invocation> MakeProgram(const std::vector<std::string>& lines) {
  std::vector<Invocation> program;
  program.reserve(lines.size());
  for (const std::string& line : lines) program.push_back(ParseTestLine(line));
  return program;
}

}  // namespace vesk::test
