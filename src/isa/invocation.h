// One parsed instruction line: the opcode bound to its table record, the
// operand and modifier texts, the labels that stand at the line, the branch
// target, and the registers of each class it reads and writes.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "isa/instruction.h"
#include "isa/instruction_set.h"
#include "isa/registers.h"
#include "util/analysis_error.h"

namespace vesk {

// A register number in an operand that cannot be read (not a number, or
// beyond 32 bits), such as v99999999999 or v[x:3]. The message names the
// operand; the readers add the listing line.
class OperandError : public AnalysisError {
 public:
  explicit OperandError(const std::string& message) : AnalysisError(message) {}
};

class Invocation {
 public:
  enum RegisterUsageType { Written = 0, Read = 1 };

  Invocation(const InstructionSet& set, const std::string& opcode, std::vector<std::string> args,
             std::vector<std::string> modifiers, std::vector<std::string> labels);
  // A branch or jump goes to `target` exactly as given (a label name such as
  // .LBB0_3 that the label-prefix rules above do not know); other opcodes
  // ignore it.
  Invocation(const InstructionSet& set, const std::string& opcode, std::vector<std::string> args,
             std::vector<std::string> modifiers, std::vector<std::string> labels,
             std::string target);
  Invocation(const Invocation& other);
  Invocation(Invocation&&) noexcept = default;
  Invocation& operator=(const Invocation& other);
  Invocation& operator=(Invocation&&) noexcept = default;
  ~Invocation() = default;

  const Instruction* GetInstruction() const { return instruction; }
  const std::vector<std::string>& GetArgs() const { return args; }
  const std::vector<std::string>& GetModifiers() const {
    return extras ? extras->modifiers : kNoWords;
  }
  const std::vector<std::string>& GetLabels() const { return extras ? extras->labels : kNoWords; }
  std::string GetArg(size_t i) const { return args[i]; }

  bool Is(const char* name) const { return instruction->Is(name); }
  bool IsBranch() const { return instruction->IsBranch(); }
  bool IsJump() const { return instruction->IsJump(); }
  bool IsEnd() const { return instruction->IsEnd(); }
  bool IsImmediate() const { return instruction->IsImmediate(); }

  // The 1-based line of the listing text the instruction was read from; 0
  // when it was built in memory.
  uint32_t GetSourceLine() const { return sourceLine; }
  void SetSourceLine(uint32_t line) { sourceLine = line; }

  const std::string& GetBranchTarget() const { return extras ? extras->target : kNoText; }
  const std::string& GetJumpTarget() const { return GetBranchTarget(); }

  const InstructionOperands& GetUsedOperands(RegisterType type) const { return usedOperands[type]; }
  // The registers of one class that the operands read and write, by the
  // record's role masks; computed once at construction.
  InstructionOperands GetUsedRegisters(RegisterType type) const;

  // Both classes, special registers included (vcc, exec, m0, ...).
  UnifiedRegisterSet GetRegisterSet(RegisterUsageType usage) const;
  UnifiedRegisterSet GetReadRegisters() const { return GetRegisterSet(Read); }
  UnifiedRegisterSet GetWriteRegisters() const { return GetRegisterSet(Written); }

  // The general-purpose registers one operand text names: v5, s[0:3],
  // [v1,s2], through abs()/neg() wrappers and a leading minus. A range is
  // cut to the register file (0 to 255). Throws OperandError when a register
  // number cannot be read.
  static std::vector<Register> ParseRegister(const std::string& operand);

  std::string ToString(bool withLabels, bool withModifiers) const;
  std::string ToString() const { return ToString(true, false); }
  // The text of ToString appended to `line`.
  void AppendText(std::string& line, bool withLabels, bool withModifiers) const;

 private:
  // What most instruction lines lack: modifiers, labels, a branch target.
  // Held apart and only when present, which keeps the record of an ordinary
  // line small.
  struct Extras {
    std::vector<std::string> modifiers;
    std::vector<std::string> labels;
    std::string target;
  };
  static const std::vector<std::string> kNoWords;
  static const std::string kNoText;

  void ComputeUsedOperands();
  void SetExtras(std::vector<std::string>&& modifiers, std::vector<std::string>&& labels,
                 std::string&& target);

  const Instruction* instruction;
  std::vector<std::string> args;
  std::unique_ptr<Extras> extras;
  uint32_t sourceLine = 0;
  std::array<InstructionOperands, 2> usedOperands;
};

// Every label that a branch or jump of the program goes to.
std::unordered_set<std::string> GetUsedLabels(const std::vector<Invocation>& invocations);

}  // namespace vesk
