// A listing that breaks the program's assumptions in a way the analysis
// cannot continue from (a jump to a label that names no block, a program
// whose end is unreachable). The entry point reports it as one "Error: "
// line and exits with status 1.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace vesk {

class AnalysisError : public std::runtime_error {
 public:
  explicit AnalysisError(const std::string& message) : std::runtime_error(message) {}
};

// An analysis error tied to one line of the listing text; the entry point
// prefixes the message with the input's name and the line number.
class ListingError : public AnalysisError {
 public:
  ListingError(uint32_t line, const std::string& message) : AnalysisError(message), line_(line) {}
  uint32_t Line() const { return line_; }

 private:
  uint32_t line_;
};

}  // namespace vesk
