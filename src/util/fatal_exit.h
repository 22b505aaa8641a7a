// The listing conditions the analyses cannot go on from end the process with
// status 255 after one message on standard error. In-process drivers (the
// fuzz target, tests) install a handler that throws instead, so one input's
// fatal condition does not end the whole run.
#pragma once

#include <stdexcept>
#include <string>

namespace vesk {

// Thrown by the handler that in-process drivers install.
class FatalListingExit : public std::runtime_error {
 public:
  explicit FatalListingExit(const std::string& message) : std::runtime_error(message) {}
};

using FatalExitHandler = void (*)(const std::string& message);

// Writes `message` and a line end to standard error and exits with 255, or
// calls the installed handler, which must not return.
[[noreturn]] void ExitFatally(const std::string& message);

// Installs `handler` (null restores the default exit). Returns the previous one.
FatalExitHandler SetFatalExitHandler(FatalExitHandler handler);

// A handler that throws FatalListingExit with the message.
[[noreturn]] void ThrowFatalListingExit(const std::string& message);

}  // namespace vesk
