// Text helpers shared by the listing readers, the operand parser, the opcode
// classifiers and the reports: number parsing, trimming, prefix/suffix tests,
// padding, splitting and joining.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

enum SplitOptions { KeepEmpty = 0, SkipEmpty = 1 };

// Base-10 conversion with std::stoi semantics: leading blanks and a sign are
// accepted, trailing text is ignored; throws std::invalid_argument /
// std::out_of_range ("stoi") when no number can be read.
int ParseInt(const std::string& text);
// The same conversion on a view of the text, without copying it.
int ParseIntView(std::string_view text);

std::string Trim(const std::string& text);
// Blank within a line: space, tab, carriage return, vertical tab, form feed.
inline bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}
// The view without the blanks at either end.
inline std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}
std::string ToLower(const std::string& text);
// The position of the first `needle` in `text` at or after `from`, or npos;
// the same result as text.find(needle, from), by a search that skips ahead
// rather than stopping at every occurrence of the needle's first character
// (the readers search whole listings for markers such as "shader").
size_t FindText(std::string_view text, std::string_view needle, size_t from = 0);
bool StartsWith(const std::string& text, const char* prefix);
bool ContainsAny(const std::string_view& text, std::initializer_list<const char*> needles);
bool StartsWithAny(const std::string_view& text, std::initializer_list<const char*> prefixes);
// Stops with false at the first suffix longer than the text, even when a later
// one would match; list suffixes shortest first.
bool EndsWithAny(const std::string_view& text, std::initializer_list<const char*> suffixes);
std::string LeftPad(int value, int width);
// LeftPad(value, width) appended to `text`, without a string of its own.
void AppendLeftPadded(std::string& text, int value, int width);

// Splits at every occurrence of the whole delimiter. The search resumes one
// character after a match, so with a multi-character delimiter such as ", "
// each later piece starts with the delimiter's tail; callers trim the pieces.
std::vector<std::string> Split(const std::string& text, const std::string_view& delimiter,
                               SplitOptions options);

template <typename Iterator>
std::string Join(const std::string& separator, Iterator first, Iterator last) {
  std::string result;
  if (first == last) return result;
  result += *first;
  for (++first; first != last; ++first) {
    result += separator;
    result += *first;
  }
  return result;
}

}  // namespace vesk
