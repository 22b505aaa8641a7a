// Invocation construction: opcode binding, branch-target extraction and the
// operand register parser.
#include "isa/invocation.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iostream>

#include "util/string_helpers.h"

namespace vesk {

namespace {

bool IsDigit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// Branch operands name their label in one of the assembler spellings; the
// block names drop the prefix the same way the reader does for label lines.
std::string TargetFromOperand(const std::string& operand) {
  if (StartsWith(operand, "label_")) return operand.substr(6);
  if (StartsWith(operand, "_L")) return operand.substr(2);
  if (StartsWith(operand, "BB")) return operand.substr(2);
  if (StartsWith(operand, "_")) return operand;
  std::cerr << "Error: Could not determine label type. Aborting." << std::endl;
  std::exit(-1);
}

}  // namespace

Invocation::Invocation(const InstructionSet& set, const std::string& opcode,
                       std::vector<std::string> args_, std::vector<std::string> modifiers_,
                       std::vector<std::string> labels_)
    : instruction(&unknownInstruction_),
      args(std::move(args_)),
      modifiers(std::move(modifiers_)),
      labels(std::move(labels_)) {
  if (set.Contains(opcode.c_str())) instruction = &set.Get(opcode.c_str());
  if (instruction->IsBranch() || instruction->IsJump()) {
    target = TargetFromOperand(args.empty() ? std::string() : args[0]);
  }
  usedOperands[VGPR] = GetUsedRegisters(VGPR);
  usedOperands[SGPR] = GetUsedRegisters(SGPR);
}

std::vector<Register> Invocation::ParseRegister(const std::string& operand) {
  std::string s = operand;
  // Peel modifier wrappers such as abs(...) and neg(...), nested ones too.
  for (size_t open = s.find('('); open != std::string::npos; open = s.find('(')) {
    const size_t close = s.rfind(')');
    if (close == std::string::npos || close < open) {
      s = s.substr(open + 1);
    } else {
      s = s.substr(open + 1, close - open - 1);
    }
  }
  if (!s.empty() && s[0] == '-') s.erase(0, 1);

  std::vector<Register> result;
  if (s.size() >= 2 && (s[0] == 'v' || s[0] == 's') && (s[1] == '[' || IsDigit(s[1]))) {
    const RegisterType type = s[0] == 'v' ? VGPR : SGPR;
    if (s[1] != '[') {
      result.push_back({ParseInt(s.substr(1)), type});
      return result;
    }
    const std::vector<std::string> bounds = Split(s.substr(2, s.size() - 3), ":", KeepEmpty);
    const int lo = ParseInt(bounds[0]);
    const int hi = ParseInt(bounds.size() > 1 ? bounds[1] : std::string());
    // Register numbers stop at 255; a wider range in malformed text is cut
    // rather than enumerated.
    const int last = std::min(hi, 511);
    for (int index = lo; index <= last; ++index) result.push_back({index, type});
    return result;
  }
  if (!s.empty() && s[0] == '[') {
    const std::string inner = s.size() >= 2 ? s.substr(1, s.size() - 2) : std::string();
    bool haveType = false;
    RegisterType type = VGPR;
    for (const std::string& part : Split(inner, ",", KeepEmpty)) {
      if (!part.empty() && part[0] == 'v') {
        type = VGPR;
        haveType = true;
      } else if (!part.empty() && part[0] == 's') {
        type = SGPR;
        haveType = true;
      }
      if (part.size() >= 2 && IsDigit(part[1])) {
        // A list element before any v/s element has no class; it is counted
        // with neither class.
        result.push_back(
            {ParseInt(part.substr(1)), haveType ? type : static_cast<RegisterType>(-1)});
      }
    }
  }
  return result;
}

InstructionOperands Invocation::GetUsedRegisters(RegisterType type) const {
  InstructionOperands operands;
  const uint64_t readWritten = instruction->GetReadWritten();
  const uint64_t written = instruction->GetWritten();
  const uint64_t read = instruction->GetRead();
  for (size_t i = 0; i < args.size(); ++i) {
    const uint64_t bit = i < 64 ? uint64_t{1} << i : 0;
    if (!((readWritten | written | read) & bit)) continue;
    for (const Register& reg : ParseRegister(args[i])) {
      if (reg.type != type || reg.index < 0 || reg.index > 255) continue;
      if (readWritten & bit) {
        operands.GetRead().Insert(reg.index);
        operands.GetWritten().Insert(reg.index);
      } else if (written & bit) {
        operands.GetWritten().Insert(reg.index);
      } else {
        operands.GetRead().Insert(reg.index);
      }
    }
  }
  return operands;
}

UnifiedRegisterSet Invocation::GetRegisterSet(RegisterUsageType usage) const {
  UnifiedRegisterSet set;
  const uint64_t mask = usage == Read ? instruction->GetRead() : instruction->GetWritten();
  for (size_t i = 0; i < 64 && i < args.size(); ++i) {
    if (!((mask >> i) & 1u)) continue;
    const std::vector<Register> registers = ParseRegister(args[i]);
    for (const Register& reg : registers) {
      if (reg.index < 0 || reg.index > 255) continue;
      if (reg.type == SGPR) {
        set.GetSGPRSet().Insert(reg.index);
      } else {
        set.GetVGPRSet().Insert(reg.index);
      }
    }
    if (registers.empty()) {
      RegisterID id = 0;
      if (TryGetSpecialRegisterID(args[i].c_str(), id)) set.GetSGPRSet().Insert(GetSGPRIndex(id));
    }
  }
  return set;
}

std::string Invocation::ToString(bool withLabels, bool withModifiers) const {
  std::string line;
  if (withLabels && !labels.empty()) {
    for (size_t i = 0; i + 1 < labels.size(); ++i) line += "label_" + labels[i] + ", ";
    line += "label_" + labels.back() + ": ";
  }
  line += instruction->GetName();
  line += ' ';
  line += Join(", ", args.begin(), args.end());
  if (withModifiers && !modifiers.empty()) {
    line += ' ';
    line += Join(" ", modifiers.begin(), modifiers.end());
  }
  return line;
}

std::unordered_set<std::string> GetUsedLabels(const std::vector<Invocation>& invocations) {
  std::unordered_set<std::string> labels;
  for (const Invocation& invocation : invocations) {
    if (invocation.IsBranch() || invocation.IsJump()) labels.insert(invocation.GetBranchTarget());
  }
  return labels;
}

}  // namespace vesk
