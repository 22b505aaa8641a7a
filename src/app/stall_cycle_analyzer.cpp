// The "stall-cycles" report: one row per instruction with the largest number
// of cycles it waited before issue, optionally drawn as gap rows.
#include "app/stall_cycle_analyzer.h"

#include <string>

#include <fmt/format.h>

#include "stall/stall_analysis.h"

namespace {

// Line number, optional 3-character marker column, cycles, instruction.
void PrintStallLine(std::ostream& out, size_t line, const std::string& cyclesText,
                    const std::string& instructionText, const std::string& marker) {
  out << fmt::format("{:>6} | ", line);
  if (!marker.empty()) out << fmt::format("{:>3} | ", marker);
  out << fmt::format("{:>10} | {}", cyclesText, instructionText) << std::endl;
}

}  // namespace

StallCycleAnalyzer::StallCycleAnalyzer(std::stringstream& input, std::ostream* output, bool wave64_,
                                       bool showGaps_)
    : BaseVeskAppTask(input, output), wave64(wave64_), showGaps(showGaps_) {}

bool StallCycleAnalyzer::InvokeImpl() {
  std::ostream& out = *output;
  if (instructionSet == nullptr || (instructionSet->GetVersion() >> 16) != 10) {
    out << "Stall cycle analysis is currently only available for GFX10 targets." << std::endl;
    return false;
  }
  const auto result = vesk::StallCycleAnalysis::AnalyzeStallCycles(invocations, wave64);

  out << "  Line";
  if (showGaps) out << " |    ";
  out << " | Max Cycles"
      << " | Instruction" << '\n'
      << std::string(80, '-') << '\n';

  size_t line = 0;
  for (const auto& [invocation, stalls] : result) {
    ++line;
    const vesk::StallLength& length = stalls.first.length;
    const std::string cycles = length.IsIndefinite() ? "Inf" : std::to_string(length.Get());
    const std::string text = invocation->ToString();
    if (!showGaps) {
      PrintStallLine(out, line, cycles, text, "");
    } else if (length.IsZero()) {
      PrintStallLine(out, line, cycles, text, " ");
    } else if (!length.IsIndefinite() && length >= 1 && length <= 5) {
      for (int i = 0; i < length.Get(); ++i) PrintStallLine(out, line, cycles, text, "OOO");
    } else if (length.IsIndefinite() || length >= 6) {
      PrintStallLine(out, line, cycles, text, "OOO");
      PrintStallLine(out, line, cycles, text, "...");
      PrintStallLine(out, line, cycles, text, "OOO");
    }
  }
  return true;
}
