// Assembly written by clang/llc for AMDGPU (-S). A function starts at the
// label of a symbol declared ".type NAME,@function" and ends at its
// .Lfunc_end label; instructions are the lines that are neither directives
// (first word starts with "."), labels ("NAME:") nor ";" comments, and the
// kernel-descriptor and metadata blocks hold no instructions: they are read
// only for the launch facts of each kernel.
#include <memory>
#include <unordered_set>
#include <utility>

#include <fmt/format.h>

#include "readers/llvm_launch_facts.h"
#include "readers/llvm_listing_reader.h"
#include "util/analysis_error.h"
#include "util/string_helpers.h"

namespace vesk {

namespace {

// Blocks whose lines are descriptor fields or metadata, never instructions.
constexpr std::pair<const char*, const char*> kSkippedBlocks[] = {
    {".amdhsa_kernel", ".end_amdhsa_kernel"},
    {".amdgpu_metadata", ".end_amdgpu_metadata"},
    {".amd_kernel_code_t", ".end_amd_kernel_code_t"},
    {".amdgpu_pal_metadata", ".end_amdgpu_pal_metadata"},
};

// The line before its ";" comment, without surrounding white space.
std::string_view CodeOf(std::string_view line) {
  return TrimBlanks(line.substr(0, line.find(';')));
}

std::string_view FirstWord(std::string_view code) {
  size_t end = 0;
  while (end < code.size() && !IsBlank(code[end])) ++end;
  return code.substr(0, end);
}

std::string_view Rest(std::string_view code, std::string_view first) {
  std::string_view rest = code.substr(first.size());
  while (!rest.empty() && IsBlank(rest.front())) rest.remove_prefix(1);
  return rest;
}

// The names of ".type NAME,@function" directives.
std::unordered_set<std::string> DeclaredFunctions(const std::vector<std::string_view>& lines) {
  std::unordered_set<std::string> names;
  for (std::string_view line : lines) {
    const std::string_view code = CodeOf(line);
    const std::string_view first = FirstWord(code);
    if (first != ".type") continue;
    const std::string_view rest = Rest(code, first);
    const size_t comma = rest.find(',');
    if (comma == std::string_view::npos) continue;
    std::string_view kind = CodeOf(rest.substr(comma + 1));
    if (kind != "@function" && kind != "%function") continue;
    names.emplace(CodeOf(rest.substr(0, comma)));
  }
  return names;
}

// Debug-information markers, not blocks of the program.
bool IsDebugLabel(std::string_view name) {
  return name.starts_with(".Ltmp") || name.starts_with(".Lfunc_begin");
}

// Collects the functions of one listing as they are read.
class FunctionCollector {
 public:
  explicit FunctionCollector(const InstructionSet& instructionSet)
      : instructionSet_(instructionSet) {}

  bool IsOpen() const { return reader_ != nullptr; }

  void Open(std::string name) {
    Close();
    name_ = std::move(name);
    reader_ = std::make_unique<InstructionLineReader>(instructionSet_);
  }

  void Label(std::string name) {
    if (reader_) reader_->AddLabel(std::move(name));
  }

  void Instruction(std::string_view code, uint32_t line) {
    if (!reader_) {
      throw ListingError(line, "instruction outside a function: no function label before it");
    }
    reader_->ReadInstructionWithNamedTarget(NormalizeLlvmInstruction(code), line);
  }

  // Labels that no instruction follows before the end are dropped.
  void Close() {
    if (!reader_) return;
    ListingProgram program{std::move(name_), reader_->TakeInvocations(), {}};
    reader_.reset();
    CheckTargets(program);
    programs_.push_back(std::move(program));
  }

  std::vector<ListingProgram> Take() {
    Close();
    return std::move(programs_);
  }

 private:
  // Every branch must name a label of its own function.
  static void CheckTargets(const ListingProgram& program) {
    std::unordered_set<std::string> labels;
    for (const Invocation& invocation : program.invocations) {
      labels.insert(invocation.GetLabels().begin(), invocation.GetLabels().end());
    }
    for (const Invocation& invocation : program.invocations) {
      if (!invocation.IsBranch() && !invocation.IsJump()) continue;
      const std::string& target = invocation.GetBranchTarget();
      if (labels.count(target)) continue;
      throw ListingError(
          invocation.GetSourceLine(),
          fmt::format("branch to '{}', which is no label of function '{}'", target, program.name));
    }
  }

  const InstructionSet& instructionSet_;
  std::unique_ptr<InstructionLineReader> reader_;
  std::string name_;
  std::vector<ListingProgram> programs_;
};

}  // namespace

std::vector<ListingProgram> ReadLlvmAssembly(std::string_view text,
                                             const InstructionSet& instructionSet) {
  const std::vector<std::string_view> lines = SplitTextLines(text);
  const std::unordered_set<std::string> functions = DeclaredFunctions(lines);
  FunctionCollector collector(instructionSet);
  LaunchFactsCollector launchFacts;
  const char* blockEnd = nullptr;  // the directive that ends the skipped block
  std::string descriptorKernel;    // the kernel whose descriptor block is open
  bool inMetadata = false;
  for (size_t i = 0; i < lines.size(); ++i) {
    const uint32_t number = static_cast<uint32_t>(i + 1);
    std::string_view code = CodeOf(lines[i]);
    if (code.empty()) continue;
    std::string_view first = FirstWord(code);
    if (blockEnd) {
      if (first == blockEnd) {
        blockEnd = nullptr;
        descriptorKernel.clear();
        inMetadata = false;
      } else if (!descriptorKernel.empty()) {
        launchFacts.ReadDescriptorLine(descriptorKernel, code, number);
      } else if (inMetadata) {
        launchFacts.ReadMetadataLine(lines[i], number);
      }
      continue;
    }
    if (first.size() > 1 && first.back() == ':') {
      const std::string name(first.substr(0, first.size() - 1));
      // Without any function declaration, every global label starts one.
      if (functions.count(name) || (functions.empty() && !name.starts_with(".L"))) {
        collector.Open(name);
      } else if (name.starts_with(".Lfunc_end")) {
        collector.Close();
      } else if (!IsDebugLabel(name)) {
        collector.Label(name);
      }
      code = Rest(code, first);
      if (code.empty()) continue;
      first = FirstWord(code);
    }
    if (first.starts_with(".")) {
      for (const auto& [open, close] : kSkippedBlocks) {
        if (first == open) blockEnd = close;
      }
      if (first == ".amdhsa_kernel") descriptorKernel = std::string(Rest(code, first));
      inMetadata = first == ".amdgpu_metadata";
      continue;
    }
    collector.Instruction(code, number);
  }
  std::vector<ListingProgram> programs = collector.Take();
  launchFacts.AttachTo(programs);
  return programs;
}

}  // namespace vesk
