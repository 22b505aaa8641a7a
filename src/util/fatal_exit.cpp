// Fatal listing conditions: exit with status 255, or the installed handler.
#include "util/fatal_exit.h"

#include <cstdio>
#include <cstdlib>

namespace vesk {

namespace {
FatalExitHandler installedHandler = nullptr;
}  // namespace

void ExitFatally(const std::string& message) {
  if (installedHandler != nullptr) {
    installedHandler(message);
    std::abort();  // a handler that returns breaks the contract
  }
  std::fputs(message.c_str(), stderr);
  std::fputc('\n', stderr);
  std::fflush(stderr);
  std::exit(255);
}

FatalExitHandler SetFatalExitHandler(FatalExitHandler handler) {
  const FatalExitHandler previous = installedHandler;
  installedHandler = handler;
  return previous;
}

void ThrowFatalListingExit(const std::string& message) {
  throw FatalListingExit(message);
}

}  // namespace vesk
