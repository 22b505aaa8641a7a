// Numbers read from the operand text of one instruction (wait counts, depctr
// masks, DPP lane masks). A malformed number is reported as a listing error
// that names the instruction's line and the operand, never as an escaping
// conversion exception.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "isa/invocation.h"
#include "util/analysis_error.h"

namespace vesk {

// Runs `convert` (a std::stoi-style conversion of `text`). Its
// invalid-argument exception becomes "WHAT 'TEXT' is not a number", its
// out-of-range exception "WHAT 'TEXT' does not fit BITS bits", both tied to
// the listing line of `invocation`.
template <typename Convert>
auto ConvertOperandNumber(const Invocation& invocation, std::string_view what,
                          std::string_view text, int bits, Convert&& convert)
    -> decltype(convert()) {
  try {
    return convert();
  } catch (const std::invalid_argument&) {
    throw ListingError(invocation.GetSourceLine(),
                       fmt::format("{} '{}' is not a number", what, text));
  } catch (const std::out_of_range&) {
    throw ListingError(invocation.GetSourceLine(),
                       fmt::format("{} '{}' does not fit {} bits", what, text, bits));
  }
}

}  // namespace vesk
