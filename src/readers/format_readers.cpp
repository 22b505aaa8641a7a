// Framing of the four listing layouts: which lines of the text hold the
// program. Each reader hands its selected lines to ReadInstructions.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "readers/isa_reader.h"
#include "readers/llvm_listing_reader.h"
#include "util/string_helpers.h"

namespace vesk {

namespace {

// isspace() of the "C" locale.
bool IsCSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

// The number of lines, an unterminated last one included (an upper bound on
// the instructions). memchr finds the line ends several times faster than a
// byte loop.
size_t CountLines(std::string_view text) {
  size_t count = 1;
  const char* position = text.data();
  const char* const end = position + text.size();
  while ((position = static_cast<const char*>(std::memchr(position, '\n', end - position)))) {
    ++count;
    ++position;
  }
  return count;
}

bool HasWord(const TokenViews& tokens, std::string_view word) {
  for (const std::string_view token : tokens)
    if (token == word) return true;
  return false;
}

}  // namespace

// A raw listing ends after s_endpgm and the filler s_nop lines and labels
// that directly follow it, so a dump of several shaders yields the first.
std::vector<Invocation> RawIsaReader::Parse(std::stringstream& input,
                                            const InstructionSet& instructionSet) {
  // Lines are turned into invocations as they are read, so a long listing
  // is never held as token lines.
  InstructionLineReader instructions(instructionSet);
  const std::string_view text = input.view();
  instructions.Reserve(CountLines(text));
  long lineIndex = 0;
  long endIndex = -1;
  TokenViews tokens;
  // Lines are read in place. Unlike GetLines, an unterminated last line is
  // kept: only the end of the text stops the reading.
  for (size_t start = 0; start < text.size(); ++lineIndex) {
    size_t end = text.find('\n', start);
    if (end == std::string_view::npos) end = text.size();
    TokenizeViews(text.substr(start, end - start), tokens);
    start = end + 1;
    if (HasWord(tokens, "s_endpgm")) endIndex = lineIndex;
    if (tokens.size() == 1 && tokens[0] == "s_code_end") break;
    if (endIndex >= 0 && endIndex == lineIndex - 1) {
      if (tokens.size() == 1 && tokens[0].back() == ':') {
        endIndex = -1;
      } else if (tokens.empty()) {
        break;
      } else if (tokens[0] == "s_nop") {
        endIndex = -1;
      } else {
        break;
      }
    }
    instructions.Read(tokens, static_cast<uint32_t>(lineIndex + 1));
  }
  return instructions.TakeInvocations();
}

bool ShaderAnalyzerIsaReader::CanParse(std::stringstream& input) {
  // A line whose text, after leading white space, starts with "shader". The
  // text is scanned in place; the stream is rewound either way so that the
  // chosen reader sees the whole listing.
  // Only the places where the word occurs are looked at.
  const std::string_view text = input.view();
  bool found = false;
  for (size_t at = FindText(text, "shader"); at != std::string_view::npos && !found;
       at = FindText(text, "shader", at + 1)) {
    size_t start = at;
    while (start > 0 && text[start - 1] != '\n' && IsCSpace(text[start - 1])) --start;
    found = start == 0 || text[start - 1] == '\n';
  }
  input.clear();
  input.seekg(0);
  return found;
}

std::vector<Invocation> ShaderAnalyzerIsaReader::Parse(std::stringstream& input,
                                                       const InstructionSet& instructionSet) {
  const std::vector<TokenLine> lines = GetLines(input);
  std::vector<NumberedLine> kept;
  bool open = false;
  for (size_t i = 0; i < lines.size(); ++i) {
    const TokenLine& tokens = lines[i];
    if (tokens.empty() || tokens[0] == "s_code_end") continue;
    if (tokens[0] == "shader" || tokens[0] == "end") {
      const bool isEnd = tokens[0] == "end";
      if (open == isEnd) {
        if (isEnd) break;  // only the first shader block is read
        open = true;
        continue;
      }
      throw std::runtime_error(fmt::format("Mismatch shader/end in line {}", i + 1));
    }
    if (open) kept.push_back({static_cast<uint32_t>(i + 1), tokens});
  }
  return ReadInstructions(instructionSet, kept);
}

std::vector<Invocation> HSAILIsaReader::Parse(std::stringstream& input,
                                              const InstructionSet& instructionSet) {
  const std::vector<TokenLine> lines = GetLines(input);
  std::vector<NumberedLine> kept;
  bool open = false;
  for (size_t i = 0; i < lines.size(); ++i) {
    const TokenLine& tokens = lines[i];
    if (tokens.empty()) continue;
    const bool secondIsFor = tokens.size() >= 2 && tokens[1] == "for";
    bool mismatch = false;
    if (tokens[0] == "Disassembly") {
      if (secondIsFor) {
        open = true;
        continue;
      }
      mismatch = true;
    } else if (tokens[0] == "end") {
      if (open) break;
      mismatch = true;
    } else if (secondIsFor) {
      mismatch = true;
    }
    if (mismatch) {
      throw std::runtime_error(fmt::format("Mismatched Disassembly for/end in line {}", i + 1));
    }
    if (open) kept.push_back({static_cast<uint32_t>(i + 1), tokens});
  }
  return ReadInstructions(instructionSet, kept);
}

std::string ShaderDumpIsaReader::ExtractInstructionSet(const TokenLine& tokens) {
  if (tokens.empty()) return {};
  const std::string& word = tokens[0];
  if (!StartsWith(word, "asic(") || word.find(')') == std::string::npos) return {};
  std::string inner = word.substr(5, word.size() - 6);
  if (inner.empty()) return {};
  const size_t underscore = inner.find('_');
  if (underscore != std::string::npos) inner = inner.substr(0, underscore);
  inner = ToLower(inner);
  if (inner == "vi") return "gfx8";
  if (inner == "ci" || inner == "si") return "gfx7";
  return inner;
}

std::vector<Invocation> ShaderDumpIsaReader::Parse(std::stringstream& input,
                                                   const InstructionSet& instructionSet) {
  const std::vector<TokenLine> lines = GetLines(input);
  std::vector<NumberedLine> kept;
  // The dump names its target; its table reads the rest of the listing.
  std::unique_ptr<InstructionSet> detected;
  const InstructionSet* readingSet = &instructionSet;
  bool open = false;
  for (size_t i = 0; i < lines.size(); ++i) {
    const TokenLine& tokens = lines[i];
    if (tokens.empty()) continue;
    if (Join(" ", tokens.begin(), tokens.end()) == "; -------- Disassembly --------------------") {
      open = true;
    } else if (tokens[0] == "end" && open) {
      break;
    } else if (StartsWith(tokens[0], "asic(")) {
      const std::string name = ExtractInstructionSet(tokens);
      [[maybe_unused]] const std::string trace = fmt::format("Detected {} as architecture.", name);
      if (auto set = CreateInstructionSet(name)) {
        detected = std::move(set);
        readingSet = detected.get();
      }
    } else if (open) {
      kept.push_back({static_cast<uint32_t>(i + 1), tokens});
    }
  }
  return ReadInstructions(*readingSet, kept);
}

std::unique_ptr<IsaReader> AutoIsaReader::Detect(std::stringstream& input) {
  const std::string_view text = input.view();
  if (text.starts_with("AMD Kernel Code for")) return std::make_unique<HSAILIsaReader>();
  if (text.starts_with(";--------") ||
      FindText(text, "; -------- Disassembly --------------------") != std::string::npos) {
    return std::make_unique<ShaderDumpIsaReader>();
  }
  if (ShaderAnalyzerIsaReader::CanParse(input)) return std::make_unique<ShaderAnalyzerIsaReader>();
  // LLVM's assembly and disassembly carry markers no other layout has.
  if (IsLlvmListing(text)) return std::make_unique<LlvmIsaReader>();
  return std::make_unique<RawIsaReader>();
}

std::vector<Invocation> AutoIsaReader::Parse(std::stringstream& input,
                                             const InstructionSet& instructionSet) {
  return Detect(input)->Parse(input, instructionSet);
}

std::vector<ListingProgram> AutoIsaReader::ReadPrograms(std::stringstream& input,
                                                        const InstructionSet& instructionSet) {
  return Detect(input)->ReadPrograms(input, instructionSet);
}

}  // namespace vesk
