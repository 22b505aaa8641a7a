// Processor name to generation. Only the processors LLVM knows are listed;
// later processors (gfx1030 and on) have instruction encodings of their own
// and no table here.
#include "readers/llvm_processors.h"

#include "util/string_helpers.h"

namespace vesk {

namespace {

struct ProcessorGeneration {
  const char* processor;
  const char* generation;
};

constexpr ProcessorGeneration kProcessors[] = {
    {"gfx700", "gfx7"},   {"gfx701", "gfx7"},   {"gfx702", "gfx7"},   {"gfx703", "gfx7"},
    {"gfx704", "gfx7"},   {"gfx705", "gfx7"},   {"gfx801", "gfx8"},   {"gfx802", "gfx8"},
    {"gfx803", "gfx8"},   {"gfx805", "gfx8"},   {"gfx810", "gfx8"},   {"gfx900", "gfx9"},
    {"gfx902", "gfx9"},   {"gfx904", "gfx9"},   {"gfx906", "gfx9"},   {"gfx908", "gfx9"},
    {"gfx909", "gfx9"},   {"gfx90a", "gfx9"},   {"gfx90c", "gfx9"},   {"gfx1010", "gfx10"},
    {"gfx1011", "gfx10"}, {"gfx1012", "gfx10"}, {"gfx1013", "gfx10"},
};

}  // namespace

std::string GenerationOfProcessor(std::string_view processor) {
  const std::string name = ToLower(std::string(processor));
  for (const ProcessorGeneration& entry : kProcessors) {
    if (name == entry.processor) return entry.generation;
  }
  return {};
}

const char* SupportedProcessorNames() {
  return "gfx700-gfx705, gfx801, gfx802, gfx803, gfx805, gfx810, gfx900, gfx902, gfx904, "
         "gfx906, gfx908, gfx909, gfx90a, gfx90c, gfx1010-gfx1013";
}

}  // namespace vesk
