// The LLVM reader's entry points, the detection markers, the stated target
// and the rewriting of LLVM's instruction spellings into raw ones.
#include "readers/llvm_listing_reader.h"

#include <cctype>

#include "util/string_helpers.h"

namespace vesk {

namespace {

bool IsHexDigit(char c) {
  return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

// "0000000000001900 <name>:", or "<name>:" (--no-leading-addr), as a line.
bool IsObjdumpFunctionHeader(std::string_view line) {
  if (line.starts_with("<") && line.ends_with(">:") && line.size() >= 3) return true;
  size_t digits = 0;
  while (digits < line.size() && IsHexDigit(line[digits])) ++digits;
  if (digits < 8 || line.substr(digits).size() < 4) return false;
  const std::string_view rest = line.substr(digits);
  return rest.starts_with(" <") && rest.ends_with(">:");
}

}  // namespace

std::vector<std::string_view> SplitTextLines(std::string_view text) {
  std::vector<std::string_view> lines;
  for (size_t start = 0; start < text.size();) {
    size_t end = text.find('\n', start);
    if (end == std::string_view::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

bool IsLlvmListing(std::string_view text) {
  // Searched for in place: every listing read with automatic detection goes
  // through here, however long. The directives count only as the first word
  // of a line.
  auto startsLine = [&](size_t position) {
    while (position > 0 && IsBlank(text[position - 1])) --position;
    return position == 0 || text[position - 1] == '\n';
  };
  for (const char* directive : {".amdgcn_target", ".amdhsa_kernel"}) {
    for (size_t found = FindText(text, directive); found != std::string_view::npos;
         found = FindText(text, directive, found + 1)) {
      if (startsLine(found)) return true;
    }
  }
  return FindText(text, "file format elf64-amdgpu") != std::string_view::npos;
}

bool IsLlvmObjdumpText(std::string_view text) {
  for (std::string_view line : SplitTextLines(text)) {
    if (IsObjdumpFunctionHeader(TrimBlanks(line))) return true;
  }
  return false;
}

StatedProcessor FindStatedProcessor(std::string_view text) {
  const std::vector<std::string_view> lines = SplitTextLines(text);
  for (size_t i = 0; i < lines.size(); ++i) {
    const std::string_view line = TrimBlanks(lines[i]);
    if (!line.starts_with(".amdgcn_target")) continue;
    // .amdgcn_target "amdgcn-amd-amdhsa--gfx1010:xnack-": the processor
    // follows the "--" of the target triple and ends at the first feature.
    const size_t quote = line.find('"');
    std::string_view target =
        quote == std::string_view::npos ? std::string_view() : line.substr(quote + 1);
    target = target.substr(0, target.find('"'));
    const size_t dashes = target.find("--");
    if (dashes != std::string_view::npos) target.remove_prefix(dashes + 2);
    target = target.substr(0, target.find_first_of(":+"));
    return {std::string(TrimBlanks(target)), static_cast<uint32_t>(i + 1)};
  }
  return {};
}

TokenLine NormalizeLlvmInstruction(std::string_view text) {
  // |v1| is LLVM's absolute-value operand; the raw spelling is abs(v1).
  std::string line;
  line.reserve(text.size() + 8);
  bool insideAbs = false;
  for (char c : text) {
    if (c == '|') {
      line += insideAbs ? ")" : "abs(";
      insideAbs = !insideAbs;
    } else {
      line += IsBlank(c) ? ' ' : c;
    }
  }
  TokenLine tokens = BaseIsaReader::Tokenize(line);
  // s_waitcnt vmcnt(0) lgkmcnt(0): raw listings join the counters with "&".
  if (!tokens.empty() && tokens[0] == "s_waitcnt" && tokens.size() > 2) {
    TokenLine joined{tokens[0], tokens[1]};
    for (size_t i = 2; i < tokens.size(); ++i) {
      if (tokens[i] != "&" && joined.back() != "&") joined.push_back("&");
      joined.push_back(tokens[i]);
    }
    tokens = std::move(joined);
  }
  return tokens;
}

std::vector<ListingProgram> LlvmIsaReader::ReadPrograms(std::stringstream& input,
                                                        const InstructionSet& instructionSet) {
  const std::string_view text = input.view();
  if (IsLlvmObjdumpText(text)) return ReadLlvmObjdump(text, instructionSet);
  return ReadLlvmAssembly(text, instructionSet);
}

std::vector<Invocation> LlvmIsaReader::Parse(std::stringstream& input,
                                             const InstructionSet& instructionSet) {
  std::vector<ListingProgram> programs = ReadPrograms(input, instructionSet);
  if (programs.empty()) return {};
  return std::move(programs.front().invocations);
}

}  // namespace vesk
