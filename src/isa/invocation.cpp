// Invocation construction: opcode binding, branch-target extraction and the
// operand register parser.
#include "isa/invocation.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include "util/fatal_exit.h"
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
  ExitFatally("Error: Could not determine label type. Aborting.");
}

}  // namespace

const std::vector<std::string> Invocation::kNoWords;
const std::string Invocation::kNoText;

Invocation::Invocation(const InstructionSet& set, const std::string& opcode,
                       std::vector<std::string> args_, std::vector<std::string> modifiers_,
                       std::vector<std::string> labels_)
    : instruction(&unknownInstruction_), args(std::move(args_)) {
  // An opcode the table does not hold binds to the unknown record.
  if (const Instruction* record = set.Find(opcode.c_str())) instruction = record;
  std::string target;
  if (instruction->IsBranch() || instruction->IsJump()) {
    target = TargetFromOperand(args.empty() ? std::string() : args[0]);
  }
  SetExtras(std::move(modifiers_), std::move(labels_), std::move(target));
  ComputeUsedOperands();
}

Invocation::Invocation(const InstructionSet& set, const std::string& opcode,
                       std::vector<std::string> args_, std::vector<std::string> modifiers_,
                       std::vector<std::string> labels_, std::string target_)
    : instruction(&unknownInstruction_), args(std::move(args_)) {
  if (const Instruction* record = set.Find(opcode.c_str())) instruction = record;
  if (!instruction->IsBranch() && !instruction->IsJump()) target_.clear();
  SetExtras(std::move(modifiers_), std::move(labels_), std::move(target_));
  ComputeUsedOperands();
}

Invocation::Invocation(const Invocation& other)
    : instruction(other.instruction),
      args(other.args),
      extras(other.extras ? std::make_unique<Extras>(*other.extras) : nullptr),
      sourceLine(other.sourceLine),
      usedOperands(other.usedOperands) {}

Invocation& Invocation::operator=(const Invocation& other) {
  if (this != &other) *this = Invocation(other);
  return *this;
}

void Invocation::SetExtras(std::vector<std::string>&& modifiers, std::vector<std::string>&& labels,
                           std::string&& target) {
  if (modifiers.empty() && labels.empty() && target.empty()) return;
  extras =
      std::make_unique<Extras>(Extras{std::move(modifiers), std::move(labels), std::move(target)});
}

namespace {

// The first "(" of an operand text; a plain loop, since operands are a few
// characters long.
size_t FindOpening(std::string_view text) {
  for (size_t i = 0; i < text.size(); ++i)
    if (text[i] == '(') return i;
  return std::string_view::npos;
}

// A register number of `operand`; `what` names its place in the operand
// ("register index", "register range bound") for the error message.
int ReadRegisterNumber(std::string_view digits, std::string_view operand, const char* what) {
  try {
    return ParseIntView(digits);
  } catch (const std::out_of_range&) {
    throw OperandError(std::string(what) + " in '" + std::string(operand) +
                       "' does not fit 32 bits");
  } catch (const std::invalid_argument&) {
    throw OperandError(std::string(what) + " in '" + std::string(operand) + "' is not a number");
  }
}

// Calls `visit(index, type)` for every general-purpose register that one
// operand text names, in order. The work is done on views of the text: the
// readers hand over hundreds of thousands of operands.
template <typename Visit>
void ForEachRegister(const std::string_view operand, Visit&& visit) {
  std::string_view s = operand;
  // Peel modifier wrappers such as abs(...) and neg(...), nested ones too:
  // each round keeps the text between the first "(" and the last ")", or all
  // after the "(" when no ")" follows it. From then on no ")" can turn up in
  // what is left, so the later rounds only skip to the next "(". Every
  // character is scanned at most twice, however deep the nesting.
  bool closing = true;
  for (size_t open = FindOpening(s); open != std::string_view::npos; open = FindOpening(s)) {
    if (closing) {
      const size_t close = s.rfind(')');
      if (close != std::string_view::npos && close > open) {
        s = s.substr(open + 1, close - open - 1);
        continue;
      }
      closing = false;
    }
    s.remove_prefix(open + 1);
  }
  if (!s.empty() && s[0] == '-') s.remove_prefix(1);

  if (s.size() >= 2 && (s[0] == 'v' || s[0] == 's') && (s[1] == '[' || IsDigit(s[1]))) {
    const RegisterType type = s[0] == 'v' ? VGPR : SGPR;
    if (s[1] != '[') {
      visit(ReadRegisterNumber(s.substr(1), operand, "register index"), type);
      return;
    }
    // v[4:7]: the text between "[" and the last character, split at ":".
    const std::string_view range = s.substr(2, s.size() - 3);
    const size_t colon = range.find(':');
    const int lo = ReadRegisterNumber(range.substr(0, colon), operand, "register range bound");
    const int hi = ReadRegisterNumber(
        colon == std::string_view::npos ? std::string_view() : range.substr(colon + 1), operand,
        "register range bound");
    // Both register files are numbered 0 to 255; a range in malformed text
    // that reaches beyond is cut to the file rather than walked.
    const int last = std::min(hi, 255);
    for (int index = std::max(lo, 0); index <= last; ++index) visit(index, type);
    return;
  }
  if (!s.empty() && s[0] == '[') {
    // [v1,s2]: each element keeps the class of the last element that named
    // one; elements before any class are of neither class.
    std::string_view inner = s.size() >= 2 ? s.substr(1, s.size() - 2) : std::string_view();
    RegisterType type = kNoRegisterType;
    while (true) {
      const size_t comma = inner.find(',');
      const std::string_view part = inner.substr(0, comma);
      if (!part.empty() && part[0] == 'v') type = VGPR;
      if (!part.empty() && part[0] == 's') type = SGPR;
      if (part.size() >= 2 && IsDigit(part[1])) {
        visit(ReadRegisterNumber(part.substr(1), operand, "register index"), type);
      }
      if (comma == std::string_view::npos) break;
      inner.remove_prefix(comma + 1);
    }
  }
}

}  // namespace

std::vector<Register> Invocation::ParseRegister(const std::string& operand) {
  std::vector<Register> result;
  ForEachRegister(operand, [&](int index, RegisterType type) { result.push_back({index, type}); });
  return result;
}

void Invocation::ComputeUsedOperands() {
  const uint64_t readWritten = instruction->GetReadWritten();
  const uint64_t written = instruction->GetWritten();
  const uint64_t read = instruction->GetRead();
  // Every operand is parsed, also one without a role (an unknown opcode's, a
  // constant slot's): a malformed register number such as v99999999999 or
  // s[4:x] fails the read wherever it stands.
  for (size_t i = 0; i < args.size(); ++i) {
    const uint64_t bit = i < 64 ? uint64_t{1} << i : 0;
    const bool hasRole = ((readWritten | written | read) & bit) != 0;
    ForEachRegister(args[i], [&](int index, RegisterType type) {
      if (!hasRole || (type != VGPR && type != SGPR) || index < 0 || index > 255) return;
      InstructionOperands& operands = usedOperands[type];
      if (readWritten & bit) {
        operands.GetRead().Insert(index);
        operands.GetWritten().Insert(index);
      } else if (written & bit) {
        operands.GetWritten().Insert(index);
      } else {
        operands.GetRead().Insert(index);
      }
    });
  }
}

InstructionOperands Invocation::GetUsedRegisters(RegisterType type) const {
  return usedOperands[type];
}

UnifiedRegisterSet Invocation::GetRegisterSet(RegisterUsageType usage) const {
  UnifiedRegisterSet set;
  const uint64_t mask = usage == Read ? instruction->GetRead() : instruction->GetWritten();
  for (size_t i = 0; i < 64 && i < args.size(); ++i) {
    if (!((mask >> i) & 1u)) continue;
    bool named = false;
    ForEachRegister(args[i], [&](int index, RegisterType type) {
      named = true;
      if (index < 0 || index > 255) return;
      if (type == SGPR) {
        set.GetSGPRSet().Insert(index);
      } else {
        set.GetVGPRSet().Insert(index);
      }
    });
    RegisterID id = 0;
    if (!named && TryGetSpecialRegisterID(args[i].c_str(), id)) {
      set.GetSGPRSet().Insert(GetSGPRIndex(id));
    }
  }
  return set;
}

std::string Invocation::ToString(bool withLabels, bool withModifiers) const {
  std::string line;
  AppendText(line, withLabels, withModifiers);
  return line;
}

void Invocation::AppendText(std::string& line, bool withLabels, bool withModifiers) const {
  const std::vector<std::string>& labels = GetLabels();
  if (withLabels && !labels.empty()) {
    for (size_t i = 0; i < labels.size(); ++i) {
      line += "label_";
      line += labels[i];
      line += i + 1 < labels.size() ? ", " : ": ";
    }
  }
  line += instruction->GetName();
  line += ' ';
  for (size_t i = 0; i < args.size(); ++i) {
    if (i > 0) line += ", ";
    line += args[i];
  }
  const std::vector<std::string>& modifiers = GetModifiers();
  if (withModifiers && !modifiers.empty()) {
    for (const std::string& modifier : modifiers) {
      line += ' ';
      line += modifier;
    }
  }
}

std::unordered_set<std::string> GetUsedLabels(const std::vector<Invocation>& invocations) {
  std::unordered_set<std::string> labels;
  for (const Invocation& invocation : invocations) {
    if (invocation.IsBranch() || invocation.IsJump()) labels.insert(invocation.GetBranchTarget());
  }
  return labels;
}

}  // namespace vesk
