// Implementation of the shared text helpers.
#include "util/string_helpers.h"

#include <cctype>
#include <climits>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace vesk {

int ParseIntView(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  const size_t firstDigit = i;
  int64_t magnitude = 0;
  for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
    // Saturate just past the int range; the digits are still consumed.
    if (magnitude <= int64_t{INT_MAX} + 1) magnitude = magnitude * 10 + (text[i] - '0');
  }
  if (i == firstDigit) throw std::invalid_argument("stoi");
  const int64_t value = negative ? -magnitude : magnitude;
  if (value > INT_MAX || value < INT_MIN) throw std::out_of_range("stoi");
  return static_cast<int>(value);
}

int ParseInt(const std::string& text) {
  return ParseIntView(text);
}

namespace {

// isspace() of the "C" locale, without the library call per character.
inline bool IsCSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

}  // namespace

std::string Trim(const std::string& text) {
  size_t first = 0;
  size_t last = text.size();
  while (first < last && IsCSpace(text[first])) ++first;
  while (last > first && IsCSpace(text[last - 1])) --last;
  return text.substr(first, last - first);
}

size_t FindText(std::string_view text, std::string_view needle, size_t from) {
  if (from > text.size()) return std::string_view::npos;
  if (needle.empty()) return from;
  const void* found = memmem(text.data() + from, text.size() - from, needle.data(), needle.size());
  if (!found) return std::string_view::npos;
  return static_cast<size_t>(static_cast<const char*>(found) - text.data());
}

std::string ToLower(const std::string& text) {
  std::string result = text;
  for (char& c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return result;
}

bool StartsWith(const std::string& text, const char* prefix) {
  return std::string_view(text).starts_with(prefix);
}

bool ContainsAny(const std::string_view& text, std::initializer_list<const char*> needles) {
  for (const char* needle : needles) {
    const size_t length = std::strlen(needle);
    if (length > text.size()) continue;
    const size_t found =
        length == 1 ? text.find(needle[0]) : text.find(std::string_view(needle, length));
    if (found != std::string_view::npos) return true;
  }
  return false;
}

bool StartsWithAny(const std::string_view& text, std::initializer_list<const char*> prefixes) {
  for (const char* prefix : prefixes) {
    if (std::strlen(prefix) > text.size()) continue;
    if (text.starts_with(prefix)) return true;
  }
  return false;
}

bool EndsWithAny(const std::string_view& text, std::initializer_list<const char*> suffixes) {
  for (const char* suffix : suffixes) {
    if (std::strlen(suffix) > text.size()) return false;
    if (text.ends_with(suffix)) return true;
  }
  return false;
}

std::string LeftPad(int value, int width) {
  std::string digits = std::to_string(value);
  if (width > 0 && digits.size() < static_cast<size_t>(width)) {
    digits.insert(0, static_cast<size_t>(width) - digits.size(), ' ');
  }
  return digits;
}

void AppendLeftPadded(std::string& text, int value, int width) {
  char digits[16];
  int length = 0;
  // The magnitude as unsigned, so that the most negative int has one too.
  unsigned magnitude = value < 0 ? 0u - static_cast<unsigned>(value) : static_cast<unsigned>(value);
  do {
    digits[length++] = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  if (value < 0) digits[length++] = '-';
  if (width > length) text.append(static_cast<size_t>(width - length), ' ');
  while (length > 0) text += digits[--length];
}

std::vector<std::string> Split(const std::string& text, const std::string_view& delimiter,
                               SplitOptions options) {
  std::vector<std::string> pieces;
  const std::string_view all(text);
  size_t position = 0;
  while (true) {
    const size_t found =
        delimiter.size() == 1 ? all.find(delimiter[0], position) : all.find(delimiter, position);
    const size_t end = found == std::string_view::npos ? all.size() : found;
    if (end > position || options == KeepEmpty) {
      pieces.emplace_back(all.substr(position, end - position));
    }
    if (found == std::string_view::npos) break;
    position = found + 1;
  }
  return pieces;
}

}  // namespace vesk
