// The shared reader machinery: token lines, comment and label recognition,
// and the conversion of token lines into invocations.
#include <cctype>
#include <string>
#include <string_view>

#include "readers/isa_reader.h"
#include "util/string_helpers.h"

namespace vesk {

TokenLine BaseIsaReader::Tokenize(const std::string& line) {
  const size_t comment = line.find("//");
  return Split(Trim(comment == std::string::npos ? line : line.substr(0, comment)), " ", SkipEmpty);
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
  return ContainsAny(tokens.front(), {";", "//"});
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
  if (ContainsAny(word, {"_e64", "_e32", "_dpp"})) return word.substr(0, word.size() - 4);
  if (ContainsAny(word, {"_sdwa"})) return word.substr(0, word.size() - 5);
  return word;
}

std::string_view TrimView(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) {
    text.remove_prefix(1);
  }
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) {
    text.remove_suffix(1);
  }
  return text;
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

}  // namespace

std::vector<Invocation> BaseIsaReader::ReadInstructions(const InstructionSet& instructionSet,
                                                        const std::vector<TokenLine>& lines) {
  std::vector<Invocation> invocations;
  invocations.reserve(lines.size());
  std::vector<std::string> pendingLabels;
  for (const TokenLine& tokens : lines) {
    if (tokens.empty() || IsComment(tokens)) continue;
    const std::string& first = tokens[0];
    if (first.find('(') != std::string::npos || first.find('@') != std::string::npos ||
        first == "shader") {
      continue;
    }
    std::string label;
    if (ReadLabel(tokens, label)) {
      pendingLabels.push_back(std::move(label));
      continue;
    }

    const std::string opcode = StripEncodingSuffix(first);
    std::vector<std::string> args;
    std::vector<std::string> modifiers;
    SplitOperands(Trim(Join(" ", tokens.begin() + 1, tokens.end())), args, modifiers);
    invocations.emplace_back(instructionSet, opcode, std::move(args), std::move(modifiers),
                             std::move(pendingLabels));
    pendingLabels.clear();
  }
  return invocations;
}

}  // namespace vesk
