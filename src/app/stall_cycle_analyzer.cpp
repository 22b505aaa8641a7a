// The "stall-cycles" report: one row per instruction with the largest number
// of cycles it waited before issue, optionally drawn as gap rows.
#include "app/stall_cycle_analyzer.h"

#include <string>
#include <string_view>

#include <fmt/format.h>

#include "app/json_printers.h"
#include "stall/stall_analysis.h"

namespace {

// `text` right-aligned in `width` columns (never cut).
void AppendRight(std::string& out, std::string_view text, size_t width) {
  if (text.size() < width) out.append(width - text.size(), ' ');
  out.append(text);
}

// Line number, optional 3-character marker column, cycles, instruction,
// appended to the report buffer.
void PrintStallLine(std::string& out, size_t line, std::string_view cyclesText,
                    std::string_view instructionText, std::string_view marker) {
  char digits[24];
  const auto end = fmt::format_to(digits, "{}", line);
  AppendRight(out, std::string_view(digits, static_cast<size_t>(end - digits)), 6);
  out += " | ";
  if (!marker.empty()) {
    AppendRight(out, marker, 3);
    out += " | ";
  }
  AppendRight(out, cyclesText, 10);
  out += " | ";
  out.append(instructionText);
  out += '\n';
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
  if (format == vesk::ReportFormat::Json) {
    vesk::WriteStallJson(*jsonWriter, result);
    return true;
  }

  std::string report = "  Line";
  if (showGaps) report += " |    ";
  report += " | Max Cycles | Instruction\n";
  report.append(80, '-');
  report += '\n';
  // Rows are gathered in one buffer and written a megabyte at a time, so a
  // long program's report never sits in memory whole.
  constexpr size_t kFlushSize = size_t{1} << 20;
  report.reserve(kFlushSize + 4096);

  size_t line = 0;
  for (const auto& [invocation, stalls] : result) {
    ++line;
    const vesk::StallLength& length = stalls.first.length;
    const std::string cycles = length.IsIndefinite() ? "Inf" : std::to_string(length.Get());
    const std::string text = invocation->ToString();
    if (!showGaps) {
      PrintStallLine(report, line, cycles, text, "");
    } else if (length.IsZero()) {
      PrintStallLine(report, line, cycles, text, " ");
    } else if (!length.IsIndefinite() && length >= 1 && length <= 5) {
      for (int i = 0; i < length.Get(); ++i) PrintStallLine(report, line, cycles, text, "OOO");
    } else if (length.IsIndefinite() || length >= 6) {
      PrintStallLine(report, line, cycles, text, "OOO");
      PrintStallLine(report, line, cycles, text, "...");
      PrintStallLine(report, line, cycles, text, "OOO");
    }
    if (report.size() >= kFlushSize) {
      out.write(report.data(), static_cast<std::streamsize>(report.size()));
      report.clear();
    }
  }
  out.write(report.data(), static_cast<std::streamsize>(report.size()));
  out.flush();
  return true;
}
