// The launch facts an LLVM assembly listing states for each kernel: wave
// size, LDS bytes and the XNACK_MASK reservation from its kernel descriptor
// (.amdhsa_kernel NAME ... .end_amdhsa_kernel), and the workgroup size from
// the amdhsa.kernels metadata. The metadata comes after the functions, so
// the facts are gathered while reading and attached at the end.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "readers/isa_reader.h"

namespace vesk {

class LaunchFactsCollector {
 public:
  // A line inside the descriptor block of `kernel` (without its comment).
  // Raises ListingError for a value that is not a number.
  void ReadDescriptorLine(const std::string& kernel, std::string_view code, uint32_t line);
  // A line inside the .amdgpu_metadata block, as written (indentation counts).
  void ReadMetadataLine(std::string_view text, uint32_t line);
  // Gives each program the facts stated for its name.
  void AttachTo(std::vector<ListingProgram>& programs) const;

 private:
  void ReadKernelKey(std::string_view key, std::string_view value, uint32_t line);

  std::map<std::string, ProgramAttributes, std::less<>> facts_;
  // The metadata reader's place: the column of the "- " that opens each
  // kernel's entry, the entry's name, its sizes, and the key whose list
  // items follow on their own lines.
  bool inKernels_ = false;
  int kernelColumn_ = -1;
  int keyColumn_ = -1;
  struct Entry {
    std::string name;
    std::optional<uint32_t> maxFlatSize;
    std::vector<uint32_t> requiredSize;
    uint32_t line = 0;
  };
  std::vector<Entry> entries_;
  bool inRequiredList_ = false;
};

}  // namespace vesk
