// Listings written by LLVM for AMD GPUs: the assembly that clang/llc write
// (-S) and the disassembly of a code object by llvm-objdump -d. Both hold
// every function of a translation unit; each function is one program. Lines
// are rewritten into the spelling of a raw listing and read by the shared
// instruction-line machinery, so the analyses see ordinary invocations.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "readers/isa_reader.h"

namespace vesk {

class LlvmIsaReader : public IsaReader {
 public:
  // The first function of the listing.
  std::vector<Invocation> Parse(std::stringstream& input,
                                const InstructionSet& instructionSet) override;
  // Every function, in listing order, named as in the listing.
  std::vector<ListingProgram> ReadPrograms(std::stringstream& input,
                                           const InstructionSet& instructionSet) override;
};

// True when the text carries a marker that only LLVM's output has: an
// .amdgcn_target or .amdhsa_kernel directive, or objdump's
// "file format elf64-amdgpu" line.
bool IsLlvmListing(std::string_view text);

// The processor an assembly listing names in its .amdgcn_target directive
// ("amdgcn-amd-amdhsa--gfx1010:xnack-" gives gfx1010), with the directive's
// 1-based line; an empty name and line 0 when there is none.
struct StatedProcessor {
  std::string name;
  uint32_t line = 0;
};
StatedProcessor FindStatedProcessor(std::string_view text);

// True for llvm-objdump text: some line is a function header
// ("0000000000001900 <name>:").
bool IsLlvmObjdumpText(std::string_view text);

// The two dialects; both raise ListingError for what they cannot read.
std::vector<ListingProgram> ReadLlvmAssembly(std::string_view text,
                                             const InstructionSet& instructionSet);
std::vector<ListingProgram> ReadLlvmObjdump(std::string_view text,
                                            const InstructionSet& instructionSet);

// One LLVM instruction text (no comment) as the token line of its raw
// spelling: blanks for tabs, abs(x) for |x|, and the counters of s_waitcnt
// joined by "&".
TokenLine NormalizeLlvmInstruction(std::string_view text);

// Splits a listing into its lines (without line ends); an unterminated last
// line counts.
std::vector<std::string_view> SplitTextLines(std::string_view text);

}  // namespace vesk
