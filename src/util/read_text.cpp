// Whole-text reading in growing chunks straight into the result string.
#include "util/read_text.h"

#include <fstream>

namespace vesk {

bool ReadAll(std::istream& in, std::string& text) {
  size_t chunk = 1 << 16;
  while (true) {
    const size_t size = text.size();
    text.resize(size + chunk);
    in.read(text.data() + size, static_cast<std::streamsize>(chunk));
    text.resize(size + static_cast<size_t>(in.gcount()));
    if (!in) break;
    // Fewer, larger reads for long inputs.
    if (chunk < (size_t{1} << 24)) chunk *= 2;
  }
  // The end of the input sets eofbit and failbit together; badbit alone
  // means the read itself failed.
  return !in.bad();
}

std::optional<std::string> ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::string text;
  if (!ReadAll(file, text)) return std::nullopt;
  return text;
}

}  // namespace vesk
