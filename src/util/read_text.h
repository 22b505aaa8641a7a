// Reading a whole input text from any kind of file: regular files, pipes,
// FIFOs, terminals and /dev/fd paths alike. Nothing asks the file for its
// size first, since only regular files know it.
#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <string>

namespace vesk {

// Appends everything `in` delivers until its end to `text`. False when a read
// fails before the end (for example on a directory); `text` then holds what
// was read up to the failure.
// `sizeHint`, when not 0, is the size the input is expected to have.
bool ReadAll(std::istream& in, std::string& text, size_t sizeHint = 0);

// Asks the system to back the memory of a large buffer that is about to be
// filled by huge pages, where it can: one page fault then maps megabytes
// instead of kilobytes. Harmless when the system cannot; small buffers are
// left alone.
void AdviseHugePages(const void* data, size_t bytes);

// The whole content of the file at `path`; nothing when it cannot be opened
// or read to its end.
std::optional<std::string> ReadFile(const std::string& path);

}  // namespace vesk
