// Listing readers: the reader interface, the shared token-line machinery, the
// four layout readers (raw, shader analyzer, HSAIL tool, driver dump) and the
// reader that detects the layout.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "isa/instruction_set.h"
#include "isa/invocation.h"

namespace vesk {

using TokenLine = std::vector<std::string>;
// The words of one line as views into the listing text.
using TokenViews = std::vector<std::string_view>;

// A token line with the 1-based number of the listing line it came from.
struct NumberedLine {
  uint32_t number;
  TokenLine tokens;
};

// What a listing states about how a program is launched, where it says it
// (LLVM's kernel descriptor directives); unstated facts stay empty.
struct ProgramAttributes {
  std::optional<int> waveSize;            // 32 or 64
  std::optional<uint32_t> ldsBytes;       // LDS bytes one workgroup allocates
  std::optional<uint32_t> workgroupSize;  // most work-items in one workgroup
  std::optional<bool> reservesXnackMask;  // two SGPRs kept for XNACK_MASK (gfx8/gfx9)
};

// One program of a listing: a named function of a listing that holds
// several, or the whole listing (with no name) for the layouts that hold one.
struct ListingProgram {
  std::string name;
  std::vector<Invocation> invocations;
  ProgramAttributes attributes;
};

class IsaReader {
 public:
  virtual ~IsaReader() = default;
  virtual std::vector<Invocation> Parse(std::stringstream& input,
                                        const InstructionSet& instructionSet) = 0;
  // Every program of the listing, in listing order. Layouts that hold one
  // program give the one unnamed program that Parse reads.
  virtual std::vector<ListingProgram> ReadPrograms(std::stringstream& input,
                                                   const InstructionSet& instructionSet) {
    std::vector<ListingProgram> programs(1);
    programs[0].invocations = Parse(input, instructionSet);
    return programs;
  }
};

class BaseIsaReader : public IsaReader {
 public:
  // One token line per input line: text from "//" on cut off, trimmed, split
  // at blanks. An unterminated last line is dropped.
  static std::vector<TokenLine> GetLines(std::stringstream& input);
  // Splits one line the way GetLines does.
  static TokenLine Tokenize(std::string_view line);
  // The same words as views into `line`, replacing the content of `words`.
  static void TokenizeViews(std::string_view line, TokenViews& words);
  static bool IsComment(const TokenLine& tokens);
  static bool IsLLCLabel(const TokenLine& tokens);
  static std::vector<Invocation> ReadInstructions(const InstructionSet& instructionSet,
                                                  const std::vector<NumberedLine>& lines);
};

// Turns token lines, one at a time, into invocations: skips comments and
// directives, collects label lines, and attaches the pending labels to the
// next instruction. Labels still pending at the end are dropped.
class InstructionLineReader {
 public:
  explicit InstructionLineReader(const InstructionSet& instructionSet)
      : instructionSet_(instructionSet) {}
  // `line` is the 1-based listing line the tokens came from.
  void Read(const TokenLine& tokens, uint32_t line);
  void Read(const TokenViews& tokens, uint32_t line);
  // A label whose name the caller has already read from its line; kept as given.
  void AddLabel(std::string label) { pendingLabels_.push_back(std::move(label)); }
  // A line the caller knows to be an instruction (opcode first). A branch or
  // jump goes to its first operand exactly as written: no label-prefix rules.
  void ReadInstructionWithNamedTarget(const TokenLine& tokens, uint32_t line);
  // Room for this many invocations, so a long listing is not moved while it grows.
  void Reserve(size_t count);
  std::vector<Invocation> TakeInvocations() { return std::move(invocations_); }

 private:
  // Builds the invocation of an instruction line; `namedTarget` keeps the
  // first operand as the branch target.
  void ReadInstruction(const TokenViews& tokens, uint32_t line, bool namedTarget);

  const InstructionSet& instructionSet_;
  std::vector<Invocation> invocations_;
  std::vector<std::string> pendingLabels_;
  // Reused between lines, so that reading a line allocates only what the
  // invocation keeps.
  TokenViews views_;
  std::string operandText_;
  std::string opcode_;
  std::vector<std::string_view> argsScratch_;
  std::vector<std::string_view> modifiersScratch_;
};

class RawIsaReader : public BaseIsaReader {
 public:
  std::vector<Invocation> Parse(std::stringstream& input,
                                const InstructionSet& instructionSet) override;
};

class ShaderAnalyzerIsaReader : public BaseIsaReader {
 public:
  std::vector<Invocation> Parse(std::stringstream& input,
                                const InstructionSet& instructionSet) override;
  // True when some line starts with "shader"; rewinds the stream.
  static bool CanParse(std::stringstream& input);
};

class HSAILIsaReader : public BaseIsaReader {
 public:
  std::vector<Invocation> Parse(std::stringstream& input,
                                const InstructionSet& instructionSet) override;
};

class ShaderDumpIsaReader : public BaseIsaReader {
 public:
  std::vector<Invocation> Parse(std::stringstream& input,
                                const InstructionSet& instructionSet) override;
  // The generation named by an "asic(...)" line, or empty.
  static std::string ExtractInstructionSet(const TokenLine& tokens);
};

class AutoIsaReader : public IsaReader {
 public:
  std::vector<Invocation> Parse(std::stringstream& input,
                                const InstructionSet& instructionSet) override;
  std::vector<ListingProgram> ReadPrograms(std::stringstream& input,
                                           const InstructionSet& instructionSet) override;
  // The reader for the layout the text is in.
  static std::unique_ptr<IsaReader> Detect(std::stringstream& input);
};

}  // namespace vesk
