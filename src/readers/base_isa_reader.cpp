// The shared reader machinery: token lines, comment and label recognition,
// and the conversion of token lines into invocations.
#include <cctype>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "readers/isa_reader.h"
#include "util/analysis_error.h"
#include "util/read_text.h"
#include "util/string_helpers.h"

namespace vesk {

namespace {

// isspace() of the "C" locale, without a library call per character.
inline bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string_view TrimView(std::string_view text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace

void BaseIsaReader::TokenizeViews(std::string_view line, TokenViews& words) {
  // Equivalent to splitting the trimmed text before "//" at single blanks and
  // dropping empty words, without copies or library calls per word: every
  // line of a listing goes through here.
  words.clear();
  const char* const data = line.data();
  size_t end = line.size();
  for (const char* slash = static_cast<const char*>(std::memchr(data, '/', end)); slash;) {
    const size_t at = static_cast<size_t>(slash - data);
    if (at + 1 < end && slash[1] == '/') {
      end = at;
      break;
    }
    slash = static_cast<const char*>(std::memchr(slash + 1, '/', end - at - 1));
  }
  size_t position = 0;
  while (position < end && IsSpace(data[position])) ++position;
  while (end > position && IsSpace(data[end - 1])) --end;
  while (position < end) {
    if (data[position] == ' ') {
      ++position;
      continue;
    }
    const size_t start = position;
    while (position < end && data[position] != ' ') ++position;
    words.emplace_back(data + start, position - start);
  }
}

TokenLine BaseIsaReader::Tokenize(std::string_view line) {
  TokenViews views;
  TokenizeViews(line, views);
  return TokenLine(views.begin(), views.end());
}

std::vector<TokenLine> BaseIsaReader::GetLines(std::stringstream& input) {
  std::vector<TokenLine> lines;
  std::string line;
  // A read that reaches the end of the stream ends the loop before its line
  // is used, so an unterminated last line is not part of the listing.
  while (std::getline(input, line) && !input.eof()) lines.push_back(Tokenize(line));
  return lines;
}

bool BaseIsaReader::IsComment(const TokenLine& tokens) {
  const std::string& word = tokens.front();
  return word.find(';') != std::string::npos || word.find("//") != std::string::npos;
}

bool BaseIsaReader::IsLLCLabel(const TokenLine& tokens) {
  return tokens.size() >= 2 && !tokens[0].empty() && tokens[0].back() == ':' &&
         StartsWith(tokens[1], ";");
}

namespace {

bool IsLLCLabelLine(const TokenViews& tokens) {
  return tokens.size() >= 2 && !tokens[0].empty() && tokens[0].back() == ':' &&
         tokens[1].starts_with(";");
}

// The label a label line defines, or false when the line is no label line.
bool ReadLabel(const TokenViews& tokens, std::string& label) {
  const std::string_view word = tokens[0];
  if (word.empty() || word.back() != ':') return false;
  const std::string_view name = word.substr(0, word.size() - 1);
  if (word.starts_with("label")) {
    label = name.size() > 6 ? std::string(name.substr(6)) : std::string();
  } else if (word.starts_with("_L") || word.starts_with("BB")) {
    label = name.substr(2);
  } else if (word.starts_with("_")) {
    label = name;
  } else if (IsLLCLabelLine(tokens)) {
    label = name;
  } else {
    return false;
  }
  return true;
}

// The encoding suffix is dropped when the word contains it anywhere; the cut
// is always at the end of the word.
std::string_view StripEncodingSuffix(std::string_view word) {
  bool shortSuffix = false;  // "_e64", "_e32" or "_dpp" anywhere
  bool sdwa = false;         // "_sdwa" anywhere
  for (size_t p = word.find('_'); p != std::string_view::npos; p = word.find('_', p + 1)) {
    const std::string_view rest = word.substr(p);
    shortSuffix |= rest.starts_with("_e64") || rest.starts_with("_e32") || rest.starts_with("_dpp");
    sdwa |= rest.starts_with("_sdwa");
  }
  if (shortSuffix) return word.substr(0, word.size() - 4);
  if (sdwa) return word.substr(0, word.size() - 5);
  return word;
}

// The operand text is split at ", "; the search resumes one character after
// each match, so every later piece starts with the blank, which trimming
// removes. A piece with a blank holds an operand followed by modifier words
// (offen, offset:16); only the last such piece keeps its modifiers.
void SplitOperands(const std::string_view all, std::vector<std::string_view>& args,
                   std::vector<std::string_view>& modifiers) {
  const char* const data = all.data();
  const size_t size = all.size();
  size_t position = 0;
  while (true) {
    size_t found = position;
    while (found + 1 < size && !(data[found] == ',' && data[found + 1] == ' ')) ++found;
    const bool last = found + 1 >= size;
    const std::string_view piece =
        TrimView(all.substr(position, last ? std::string_view::npos : found - position));
    if (!piece.empty()) {
      size_t blank = 0;
      while (blank < piece.size() && piece[blank] != ' ') ++blank;
      args.push_back(piece.substr(0, blank));
      if (blank < piece.size()) {
        modifiers.clear();
        std::string_view rest = piece.substr(blank + 1);
        while (true) {
          const size_t next = rest.find(' ');
          modifiers.push_back(rest.substr(0, next));
          if (next == std::string_view::npos) break;
          rest.remove_prefix(next + 1);
        }
      }
    }
    if (last) break;
    position = found + 1;
  }
}

// Builds the invocation at the end of `invocations` and marks its listing
// line. An operand whose register number cannot be read fails the listing at
// that line.
template <typename... Args>
void AppendInvocation(std::vector<Invocation>& invocations, uint32_t line, Args&&... args) {
  try {
    invocations.emplace_back(std::forward<Args>(args)...);
  } catch (const OperandError& error) {
    throw ListingError(line, error.what());
  }
  invocations.back().SetSourceLine(line);
}

}  // namespace

void InstructionLineReader::Reserve(size_t count) {
  invocations_.reserve(count);
  AdviseHugePages(invocations_.data(), invocations_.capacity() * sizeof(Invocation));
}

void InstructionLineReader::Read(const TokenLine& tokens, uint32_t line) {
  views_.assign(tokens.begin(), tokens.end());
  Read(views_, line);
}

void InstructionLineReader::Read(const TokenViews& tokens, uint32_t line) {
  if (tokens.empty()) return;
  const std::string_view first = tokens[0];
  // A comment line (";" or "//" in the first word), a directive or a
  // statement such as type(CS), or a shader-analyzer block head.
  for (size_t i = 0; i < first.size(); ++i) {
    const char c = first[i];
    if (c == ';' || c == '(' || c == '@') return;
    if (c == '/' && i + 1 < first.size() && first[i + 1] == '/') return;
  }
  if (first == "shader") return;
  std::string label;
  if (ReadLabel(tokens, label)) {
    pendingLabels_.push_back(std::move(label));
    return;
  }
  ReadInstruction(tokens, line, false);
}

void InstructionLineReader::ReadInstruction(const TokenViews& tokens, uint32_t line,
                                            bool namedTarget) {
  opcode_.assign(StripEncodingSuffix(tokens[0]));
  // The operand words joined by single blanks and trimmed (a word may hold
  // tabs), then split into operands and modifiers.
  operandText_.clear();
  for (size_t i = 1; i < tokens.size(); ++i) {
    if (i > 1) operandText_ += ' ';
    operandText_ += tokens[i];
  }
  argsScratch_.clear();
  modifiersScratch_.clear();
  SplitOperands(TrimView(operandText_), argsScratch_, modifiersScratch_);
  // The invocation keeps vectors of exactly the words it holds.
  std::vector<std::string> args(argsScratch_.begin(), argsScratch_.end());
  std::vector<std::string> modifiers(modifiersScratch_.begin(), modifiersScratch_.end());
  if (namedTarget) {
    std::string target = args.empty() ? std::string() : args[0];
    AppendInvocation(invocations_, line, instructionSet_, opcode_, std::move(args),
                     std::move(modifiers), std::move(pendingLabels_), std::move(target));
  } else {
    AppendInvocation(invocations_, line, instructionSet_, opcode_, std::move(args),
                     std::move(modifiers), std::move(pendingLabels_));
  }
  pendingLabels_.clear();
}

void InstructionLineReader::ReadInstructionWithNamedTarget(const TokenLine& tokens, uint32_t line) {
  if (tokens.empty()) return;
  views_.assign(tokens.begin(), tokens.end());
  ReadInstruction(views_, line, true);
}

std::vector<Invocation> BaseIsaReader::ReadInstructions(const InstructionSet& instructionSet,
                                                        const std::vector<NumberedLine>& lines) {
  InstructionLineReader reader(instructionSet);
  reader.Reserve(lines.size());
  for (const NumberedLine& line : lines) reader.Read(line.tokens, line.number);
  return reader.TakeInvocations();
}

}  // namespace vesk
