// The shared reader machinery: token lines, comment and label recognition,
// and the conversion of token lines into invocations.
#include <cctype>
#include <string>
#include <string_view>
#include <utility>

#include "readers/isa_reader.h"
#include "util/analysis_error.h"
#include "util/string_helpers.h"

namespace vesk {

namespace {

std::string_view TrimView(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) {
    text.remove_prefix(1);
  }
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) {
    text.remove_suffix(1);
  }
  return text;
}

}  // namespace

TokenLine BaseIsaReader::Tokenize(std::string_view line) {
  // Equivalent to splitting the trimmed text before "//" at single blanks and
  // dropping empty words, without the intermediate copies: every line of a
  // listing goes through here.
  std::string_view text = line;
  if (const size_t comment = text.find("//"); comment != std::string_view::npos) {
    text = text.substr(0, comment);
  }
  text = TrimView(text);
  TokenLine words;
  size_t position = 0;
  while (position < text.size()) {
    if (text[position] == ' ') {
      ++position;
      continue;
    }
    size_t end = text.find(' ', position);
    if (end == std::string_view::npos) end = text.size();
    words.emplace_back(text.substr(position, end - position));
    position = end;
  }
  return words;
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

// The label a label line defines, or false when the line is no label line.
bool ReadLabel(const TokenLine& tokens, std::string& label) {
  const std::string& word = tokens[0];
  if (word.empty() || word.back() != ':') return false;
  const std::string name = word.substr(0, word.size() - 1);
  if (StartsWith(word, "label")) {
    label = name.size() > 6 ? name.substr(6) : std::string();
  } else if (StartsWith(word, "_L") || StartsWith(word, "BB")) {
    label = name.substr(2);
  } else if (StartsWith(word, "_")) {
    label = name;
  } else if (BaseIsaReader::IsLLCLabel(tokens)) {
    label = name;
  } else {
    return false;
  }
  return true;
}

// The encoding suffix is dropped when the word contains it anywhere; the cut
// is always at the end of the word.
std::string StripEncodingSuffix(const std::string& word) {
  bool shortSuffix = false;  // "_e64", "_e32" or "_dpp" anywhere
  bool sdwa = false;         // "_sdwa" anywhere
  const std::string_view view(word);
  for (size_t p = view.find('_'); p != std::string_view::npos; p = view.find('_', p + 1)) {
    const std::string_view rest = view.substr(p);
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
void SplitOperands(const std::string& text, std::vector<std::string>& args,
                   std::vector<std::string>& modifiers) {
  const std::string_view all(text);
  size_t position = 0;
  while (true) {
    const size_t found = all.find(", ", position);
    const std::string_view piece = TrimView(
        all.substr(position, found == std::string_view::npos ? all.npos : found - position));
    if (!piece.empty()) {
      const size_t blank = piece.find(' ');
      if (blank == std::string_view::npos) {
        args.emplace_back(piece);
      } else {
        args.emplace_back(piece.substr(0, blank));
        modifiers.clear();
        std::string_view rest = piece.substr(blank + 1);
        while (true) {
          const size_t next = rest.find(' ');
          modifiers.emplace_back(rest.substr(0, next));
          if (next == std::string_view::npos) break;
          rest.remove_prefix(next + 1);
        }
      }
    }
    if (found == std::string_view::npos) break;
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

void InstructionLineReader::Read(const TokenLine& tokens, uint32_t line) {
  if (tokens.empty() || BaseIsaReader::IsComment(tokens)) return;
  const std::string& first = tokens[0];
  if (first.find('(') != std::string::npos || first.find('@') != std::string::npos ||
      first == "shader") {
    return;
  }
  std::string label;
  if (ReadLabel(tokens, label)) {
    pendingLabels_.push_back(std::move(label));
    return;
  }

  const std::string opcode = StripEncodingSuffix(first);
  std::vector<std::string> args;
  std::vector<std::string> modifiers;
  SplitOperands(Trim(Join(" ", tokens.begin() + 1, tokens.end())), args, modifiers);
  AppendInvocation(invocations_, line, instructionSet_, opcode, std::move(args),
                   std::move(modifiers), std::move(pendingLabels_));
  pendingLabels_.clear();
}

void InstructionLineReader::ReadInstructionWithNamedTarget(const TokenLine& tokens, uint32_t line) {
  if (tokens.empty()) return;
  const std::string opcode = StripEncodingSuffix(tokens[0]);
  std::vector<std::string> args;
  std::vector<std::string> modifiers;
  SplitOperands(Trim(Join(" ", tokens.begin() + 1, tokens.end())), args, modifiers);
  std::string target = args.empty() ? std::string() : args[0];
  AppendInvocation(invocations_, line, instructionSet_, opcode, std::move(args),
                   std::move(modifiers), std::move(pendingLabels_), std::move(target));
  pendingLabels_.clear();
}

std::vector<Invocation> BaseIsaReader::ReadInstructions(const InstructionSet& instructionSet,
                                                        const std::vector<NumberedLine>& lines) {
  InstructionLineReader reader(instructionSet);
  reader.Reserve(lines.size());
  for (const NumberedLine& line : lines) reader.Read(line.tokens, line.number);
  return reader.TakeInvocations();
}

}  // namespace vesk
