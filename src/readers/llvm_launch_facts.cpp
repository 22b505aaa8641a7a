// Reads the kernel descriptor directives and the amdhsa.kernels metadata
// entries that say how a kernel is launched.
#include "readers/llvm_launch_facts.h"

#include <charconv>
#include <limits>

#include <fmt/format.h>

#include "util/analysis_error.h"
#include "util/string_helpers.h"

namespace vesk {

namespace {

uint32_t ReadNumber(std::string_view key, std::string_view value, uint32_t line) {
  value = TrimBlanks(value);
  uint32_t number = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  if (value.empty() || error != std::errc() || end != value.data() + value.size()) {
    throw ListingError(line, fmt::format("{} '{}' is not a number", key, value));
  }
  return number;
}

bool ReadFlag(std::string_view key, std::string_view value, uint32_t line) {
  const uint32_t number = ReadNumber(key, value, line);
  if (number > 1) throw ListingError(line, fmt::format("{} must be 0 or 1, not {}", key, number));
  return number == 1;
}

int IndentOf(std::string_view text) {
  int indent = 0;
  while (static_cast<size_t>(indent) < text.size() && text[indent] == ' ') ++indent;
  return indent;
}

std::string_view Unquoted(std::string_view value) {
  value = TrimBlanks(value);
  if (value.size() >= 2 && (value.front() == '\'' || value.front() == '"') &&
      value.back() == value.front()) {
    value = value.substr(1, value.size() - 2);
  }
  return value;
}

}  // namespace

void LaunchFactsCollector::ReadDescriptorLine(const std::string& kernel, std::string_view code,
                                              uint32_t line) {
  size_t end = 0;
  while (end < code.size() && !IsBlank(code[end])) ++end;
  const std::string_view directive = code.substr(0, end);
  const std::string_view value = code.substr(end);
  ProgramAttributes& facts = facts_[kernel];
  if (directive == ".amdhsa_wavefront_size32") {
    facts.waveSize = ReadFlag(directive, value, line) ? 32 : 64;
  } else if (directive == ".amdhsa_group_segment_fixed_size") {
    facts.ldsBytes = ReadNumber(directive, value, line);
  } else if (directive == ".amdhsa_reserve_xnack_mask") {
    facts.reservesXnackMask = ReadFlag(directive, value, line);
  }
}

void LaunchFactsCollector::ReadMetadataLine(std::string_view text, uint32_t line) {
  int indent = IndentOf(text);
  std::string_view content = TrimBlanks(text);
  if (content.empty() || content.starts_with('#')) return;
  const bool item = content.starts_with("- ") || content == "-";
  if (indent == 0 && !(item && inKernels_)) {
    // A top-level key: only the kernel list is of interest.
    inKernels_ = content == "amdhsa.kernels:";
    kernelColumn_ = -1;
    inRequiredList_ = false;
    return;
  }
  if (!inKernels_) return;
  if (item) {
    if (kernelColumn_ < 0) kernelColumn_ = indent;
    if (indent == kernelColumn_) {
      // "  - .args:" opens the next kernel's entry; its first key stands on
      // the same line.
      entries_.push_back(Entry{});
      entries_.back().line = line;
      keyColumn_ = indent + 2;
      inRequiredList_ = false;
      content = TrimBlanks(content.substr(1));
      indent = keyColumn_;
      if (content.empty()) return;
    } else {
      if (inRequiredList_ && indent > keyColumn_) {
        entries_.back().requiredSize.push_back(
            ReadNumber(".reqd_workgroup_size", content.substr(1), line));
      }
      return;
    }
  }
  if (indent != keyColumn_ || entries_.empty()) return;  // inside a nested entry
  inRequiredList_ = false;
  const size_t colon = content.find(':');
  if (colon == std::string_view::npos) return;
  ReadKernelKey(content.substr(0, colon), content.substr(colon + 1), line);
}

void LaunchFactsCollector::ReadKernelKey(std::string_view key, std::string_view value,
                                         uint32_t line) {
  Entry& entry = entries_.back();
  value = TrimBlanks(value);
  if (key == ".name") {
    entry.name = std::string(Unquoted(value));
  } else if (key == ".max_flat_workgroup_size") {
    entry.maxFlatSize = ReadNumber(key, value, line);
  } else if (key == ".reqd_workgroup_size") {
    entry.line = line;
    if (value.empty()) {
      inRequiredList_ = true;  // the sizes follow as "- N" lines
      return;
    }
    // The flow form: [ 16, 16, 1 ].
    if (!value.starts_with('[') || !value.ends_with(']')) {
      throw ListingError(line, fmt::format("{} '{}' is not a list of numbers", key, value));
    }
    value = value.substr(1, value.size() - 2);
    while (!value.empty()) {
      const size_t comma = value.find(',');
      entry.requiredSize.push_back(ReadNumber(key, value.substr(0, comma), line));
      value = comma == std::string_view::npos ? std::string_view() : value.substr(comma + 1);
    }
  }
}

void LaunchFactsCollector::AttachTo(std::vector<ListingProgram>& programs) const {
  std::map<std::string_view, uint32_t> workgroupSizes;
  for (const Entry& entry : entries_) {
    if (entry.name.empty()) continue;
    if (!entry.requiredSize.empty()) {
      if (entry.requiredSize.size() != 3) {
        throw ListingError(entry.line,
                           fmt::format(".reqd_workgroup_size of '{}' needs three sizes, not {}",
                                       entry.name, entry.requiredSize.size()));
      }
      uint64_t product = 1;
      for (uint32_t size : entry.requiredSize) product *= size;
      if (product > std::numeric_limits<uint32_t>::max()) {
        throw ListingError(entry.line,
                           fmt::format(".reqd_workgroup_size of '{}' is too large", entry.name));
      }
      workgroupSizes[entry.name] = static_cast<uint32_t>(product);
    } else if (entry.maxFlatSize) {
      workgroupSizes[entry.name] = *entry.maxFlatSize;
    }
  }
  for (ListingProgram& program : programs) {
    if (const auto found = facts_.find(program.name); found != facts_.end()) {
      program.attributes = found->second;
    }
    if (const auto found = workgroupSizes.find(program.name); found != workgroupSizes.end()) {
      program.attributes.workgroupSize = found->second;
    }
  }
}

}  // namespace vesk
