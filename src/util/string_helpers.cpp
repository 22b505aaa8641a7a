// Implementation of the shared text helpers.
#include "util/string_helpers.h"

#include <cctype>
#include <cerrno>
#include <cstring>

namespace vesk {

int ParseInt(const std::string& text) {
  const int savedErrno = errno;
  const int value = std::stoi(text);
  errno = savedErrno;
  return value;
}

std::string Trim(const std::string& text) {
  size_t first = 0;
  size_t last = text.size();
  while (first < last && std::isspace(static_cast<unsigned char>(text[first]))) ++first;
  while (last > first && std::isspace(static_cast<unsigned char>(text[last - 1]))) --last;
  return text.substr(first, last - first);
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
    if (text.find(std::string_view(needle, length)) != std::string_view::npos) return true;
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

std::vector<std::string> Split(const std::string& text, const std::string_view& delimiter,
                               SplitOptions options) {
  std::vector<std::string> pieces;
  size_t position = 0;
  while (true) {
    const size_t found = text.find(delimiter, position);
    const size_t end = found == std::string::npos ? text.size() : found;
    if (end > position || options == KeepEmpty)
      pieces.push_back(text.substr(position, end - position));
    if (found == std::string::npos) break;
    position = found + 1;
  }
  return pieces;
}

}  // namespace vesk
