// LLVM's AMDGPU processor names (gfx700 ... gfx1013) and the instruction-set
// generation whose table describes each of them.
#pragma once

#include <string>
#include <string_view>

namespace vesk {

// "gfx7", "gfx8", "gfx9" or "gfx10" for a processor with a table (any letter
// case), or empty.
std::string GenerationOfProcessor(std::string_view processor);

// The processor names that have a table, for messages: "gfx700-gfx705, ...".
const char* SupportedProcessorNames();

}  // namespace vesk
