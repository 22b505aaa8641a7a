// A listing that breaks the program's assumptions in a way the analysis
// cannot continue from (a jump to a label that names no block, a program
// whose end is unreachable). The entry point reports it as one "Error: "
// line and exits with status 1.
#pragma once

#include <stdexcept>
#include <string>

namespace vesk {

class AnalysisError : public std::runtime_error {
 public:
  explicit AnalysisError(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace vesk
