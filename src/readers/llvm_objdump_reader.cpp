// llvm-objdump -d output for AMDGPU code objects. A header line
// ("0000000000001900 <name>:") starts a function; each instruction line
// carries a "// ADDRESS: ENCODING" comment. A branch shows its raw 16-bit
// word offset from the next instruction; it is resolved to the instruction
// it reaches, which gets a label named like objdump's own annotation
// ("name+0x4c"), also when objdump names it itself (--symbolize-operands).
// The padding after a function's last instruction
// (s_code_end, s_nop) is not program.
#include <charconv>
#include <cstdint>
#include <unordered_map>
#include <unordered_set>

#include <fmt/format.h>

#include "readers/llvm_listing_reader.h"
#include "util/analysis_error.h"
#include "util/string_helpers.h"

namespace vesk {

namespace {

struct ObjdumpInstruction {
  uint32_t line;
  uint64_t address;
  uint64_t size;  // bytes of the encoding
  TokenLine tokens;
};

struct ObjdumpFunction {
  std::string name;
  uint64_t start;
  std::vector<ObjdumpInstruction> instructions;
  // With --symbolize-operands, objdump names branch targets L0, L1, ... in
  // headers of their own ("0000000000000038 <L0>:") and in the operands.
  std::unordered_map<std::string, uint64_t> operandLabels;
};

// "L" followed by decimal digits only.
bool IsOperandLabel(std::string_view name) {
  if (name.size() < 2 || name[0] != 'L') return false;
  for (char c : name.substr(1))
    if (c < '0' || c > '9') return false;
  return true;
}

// A hexadecimal number of at most 16 digits that makes up the whole text.
bool ParseHex(std::string_view text, uint64_t& value) {
  if (text.empty() || text.size() > 16) return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  return error == std::errc() && end == text.data() + text.size();
}

// "0000000000001900 <name>:" gives the start address and the name; with
// --no-leading-addr the header is "<name>:" and the address is that of the
// instruction that follows (`startKnown` false).
bool ReadFunctionHeader(std::string_view line, ObjdumpFunction& function, bool& startKnown) {
  if (!line.ends_with(">:")) return false;
  if (line.starts_with("<") && line.size() >= 3) {
    function.name = std::string(line.substr(1, line.size() - 3));
    startKnown = false;
    return true;
  }
  const size_t open = line.find(" <");
  if (open == std::string_view::npos) return false;
  if (!ParseHex(line.substr(0, open), function.start) || open < 8) return false;
  function.name = std::string(line.substr(open + 2, line.size() - open - 4));
  startKnown = true;
  return true;
}

// "000000000024: BF850014 <name+0x78>": the address and the encoding length.
bool ReadAddressComment(std::string_view comment, uint64_t& address, uint64_t& size) {
  comment = TrimBlanks(comment);
  const size_t colon = comment.find(':');
  if (colon == std::string_view::npos || !ParseHex(comment.substr(0, colon), address)) {
    return false;
  }
  std::string_view words = comment.substr(colon + 1, comment.find('<') - colon - 1);
  size = 0;
  while (true) {
    words = TrimBlanks(words);
    if (words.empty()) break;
    size_t end = 0;
    while (end < words.size() && !IsBlank(words[end])) ++end;
    uint64_t word = 0;
    if (end != 8 || !ParseHex(words.substr(0, end), word)) return false;
    size += 4;
    words.remove_prefix(end);
  }
  if (size == 0) size = 4;  // shown without its encoding: one word
  return true;
}

// The branch operand: the unsigned 16-bit word offset objdump prints, or a
// signed one.
bool ReadWordOffset(const std::string& operand, int64_t& offset) {
  int64_t value = 0;
  const char* first = operand.data();
  const char* last = operand.data() + operand.size();
  if (operand.ends_with(",")) --last;
  const auto [end, error] = std::from_chars(first, last, value, 10);
  if (error != std::errc() || end != last || value < -32768 || value > 65535) return false;
  offset = static_cast<int16_t>(static_cast<uint16_t>(value & 0xFFFF));
  return true;
}

std::string LabelName(const ObjdumpFunction& function, uint64_t address) {
  if (address == function.start) return function.name;
  return fmt::format("{}+0x{:x}", function.name, address - function.start);
}

bool IsPadding(const ObjdumpInstruction& instruction) {
  return instruction.tokens[0] == "s_code_end" || instruction.tokens[0] == "s_nop";
}

ListingProgram ReadFunction(ObjdumpFunction& function, const InstructionSet& instructionSet) {
  std::vector<ObjdumpInstruction>& instructions = function.instructions;
  std::unordered_map<uint64_t, size_t> byAddress;
  for (size_t i = 0; i < instructions.size(); ++i) byAddress.emplace(instructions[i].address, i);
  const uint64_t end = instructions.empty()
                           ? function.start
                           : instructions.back().address + instructions.back().size;

  std::unordered_set<size_t> targets;
  for (ObjdumpInstruction& instruction : instructions) {
    const Instruction* record = instructionSet.Find(instruction.tokens[0].c_str());
    if (!record || !(record->IsBranch() || record->IsJump())) continue;
    int64_t offset = 0;
    uint64_t target = 0;
    if (instruction.tokens.size() >= 2 && ReadWordOffset(instruction.tokens[1], offset)) {
      target = instruction.address + instruction.size + static_cast<uint64_t>(offset * 4);
    } else if (const auto label = instruction.tokens.size() >= 2
                                      ? function.operandLabels.find(instruction.tokens[1])
                                      : function.operandLabels.end();
               label != function.operandLabels.end()) {
      target = label->second;
    } else if (instruction.tokens.size() < 2) {
      throw ListingError(instruction.line, "branch without an operand");
    } else {
      throw ListingError(instruction.line,
                         fmt::format("branch operand '{}' is neither a word offset nor a "
                                     "label objdump named",
                                     instruction.tokens[1]));
    }
    const auto found = byAddress.find(target);
    if (found == byAddress.end()) {
      const bool inside = target >= function.start && target < end;
      throw ListingError(
          instruction.line,
          fmt::format("branch target 0x{:x} {} function '{}'", target,
                      inside ? "is not the start of an instruction of" : "lies outside",
                      function.name));
    }
    targets.insert(found->second);
    instruction.tokens[1] = LabelName(function, target);
  }
  while (!instructions.empty() && IsPadding(instructions.back()) &&
         !targets.count(instructions.size() - 1)) {
    instructions.pop_back();
  }

  InstructionLineReader reader(instructionSet);
  reader.Reserve(instructions.size());
  for (size_t i = 0; i < instructions.size(); ++i) {
    if (targets.count(i)) reader.AddLabel(LabelName(function, instructions[i].address));
    reader.ReadInstructionWithNamedTarget(instructions[i].tokens, instructions[i].line);
  }
  return {function.name, reader.TakeInvocations(), {}};
}

}  // namespace

std::vector<ListingProgram> ReadLlvmObjdump(std::string_view text,
                                            const InstructionSet& instructionSet) {
  std::vector<ObjdumpFunction> functions;
  // A header without its address takes that of the next instruction.
  std::string addresslessLabel;
  bool addresslessFunction = false;
  const std::vector<std::string_view> lines = SplitTextLines(text);
  for (size_t i = 0; i < lines.size(); ++i) {
    const uint32_t number = static_cast<uint32_t>(i + 1);
    const std::string_view line = TrimBlanks(lines[i]);
    ObjdumpFunction header;
    bool startKnown = true;
    if (ReadFunctionHeader(line, header, startKnown)) {
      if (!functions.empty() && IsOperandLabel(header.name)) {
        if (startKnown) {
          functions.back().operandLabels.emplace(header.name, header.start);
        } else {
          addresslessLabel = header.name;
        }
      } else {
        functions.push_back(std::move(header));
        addresslessFunction = !startKnown;
      }
      continue;
    }
    const size_t comment = line.find("//");
    if (comment == std::string_view::npos) {
      // File and section headers, blank lines, "..." for skipped zeros,
      // ";" source annotations: none is an instruction.
      const bool known = line.empty() || line == "..." || line.starts_with(";") ||
                         line.starts_with("Disassembly of section") ||
                         line.find("file format") != std::string_view::npos;
      if (!known && !functions.empty()) {
        throw ListingError(number, "instruction without its '// ADDRESS: ENCODING' comment");
      }
      continue;
    }
    TokenLine tokens = NormalizeLlvmInstruction(TrimBlanks(line.substr(0, comment)));
    if (tokens.empty()) continue;
    if (functions.empty()) {
      throw ListingError(number, "instruction outside a function: no '<name>:' header before it");
    }
    ObjdumpInstruction instruction{number, 0, 0, std::move(tokens)};
    if (!ReadAddressComment(line.substr(comment + 2), instruction.address, instruction.size)) {
      throw ListingError(number, "the '// ADDRESS: ENCODING' comment cannot be read");
    }
    ObjdumpFunction& function = functions.back();
    if (addresslessFunction) function.start = instruction.address;
    if (!addresslessLabel.empty()) {
      function.operandLabels.emplace(std::move(addresslessLabel), instruction.address);
    }
    addresslessFunction = false;
    addresslessLabel.clear();
    function.instructions.push_back(std::move(instruction));
  }

  std::vector<ListingProgram> programs;
  for (ObjdumpFunction& function : functions) {
    programs.push_back(ReadFunction(function, instructionSet));
  }
  return programs;
}

}  // namespace vesk
