// Whole-text reading in growing chunks straight into the result string.
#include "util/read_text.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace vesk {

bool ReadAll(std::istream& in, std::string& text, size_t sizeHint) {
  // With the expected size known, the first read takes it all (and one byte
  // more, to see the end), so the text is not copied while it grows.
  size_t chunk = sizeHint > 0 ? sizeHint + 1 : size_t{1} << 16;
  if (sizeHint > 0) {
    text.reserve(text.size() + chunk);
    AdviseHugePages(text.data(), text.capacity());
  }
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

void AdviseHugePages(const void* data, size_t bytes) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  constexpr uintptr_t kHugePage = uintptr_t{1} << 21;
  if (bytes < 2 * kHugePage) return;
  // Only the whole huge pages inside the buffer.
  const uintptr_t first = (reinterpret_cast<uintptr_t>(data) + kHugePage - 1) & ~(kHugePage - 1);
  const uintptr_t last = (reinterpret_cast<uintptr_t>(data) + bytes) & ~(kHugePage - 1);
  if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#else
  (void)data;
  (void)bytes;
#endif
}

std::optional<std::string> ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  // A regular file tells its size, which serves as a hint only: the reading
  // still goes to the end, wherever that is.
  std::error_code error;
  size_t sizeHint = 0;
  if (std::filesystem::is_regular_file(path, error)) {
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (!error && size < (std::uintmax_t{1} << 40)) sizeHint = static_cast<size_t>(size);
  }
  std::string text;
  if (!ReadAll(file, text, sizeHint)) return std::nullopt;
  return text;
}

}  // namespace vesk
