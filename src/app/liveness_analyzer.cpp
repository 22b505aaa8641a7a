// The liveness report: legend, one line per instruction with a character per
// vector register, and the register-pressure summary.
#include "app/liveness_analyzer.h"

#include <string>

#include "app/json_printers.h"
#include "liveness/liveness_analysis.h"
#include "util/string_helpers.h"

using vesk::LivenessAnalysis;

LivenessAnalyzer::LivenessAnalyzer(std::stringstream& input, std::ostream* output,
                                   AnalyzeLiveness::Options options_)
    : BaseVeskAppTask(input, output), options(options_) {}

bool LivenessAnalyzer::InvokeImpl() {
  vesk::LivenessAnalysisOptions analysisOptions;
  analysisOptions.removeStartLines = (options & AnalyzeLiveness::removeStartLines) != 0;
  const vesk::LivenessStates states(invocations, vesk::VGPR, analysisOptions);
  const vesk::RegisterUsage usage = LivenessAnalysis::GetRegisterUsage(states);
  const int width = usage.maxRegisterIndex + 1;
  const bool summaryOnly = (options & AnalyzeLiveness::summaryOnly) != 0;
  if (format == vesk::ReportFormat::Json) {
    vesk::WriteLivenessJson(*jsonWriter, states, usage, summaryOnly);
    return true;
  }

  // The report is built in memory and written in large pieces: one write for
  // a short report, one per megabyte for a long one.
  std::string report;
  const auto flushLarge = [&] {
    if (report.size() < (size_t{1} << 20)) return;
    output->write(report.data(), static_cast<std::streamsize>(report.size()));
    report.clear();
  };
  if (!summaryOnly) {
    report += "Legend:\n";
    report +=
        "  ':' means that the register is kept alive, while it is not actively being used by "
        "the current instruction\n";
    report += "  '^' means that the current instruction writes to the register\n";
    report += "  'v' means that the current instruction reads from the register\n";
    report +=
        "  'x' means that the current instruction both reads from the register and writes to "
        "it\n";
    report += " 'Rn': Number of live registers\n\n";
    report += "  Line | Rn  | ";
    report.append(static_cast<size_t>(width), ' ');
    report += " | Instruction\n";
    report.append(80, '-');
    report += '\n';
    // The first and last entries are the graph's entry and exit nodes.
    if (states.Size() >= 3) {
      for (size_t i = 1; i + 1 < states.Size(); ++i) {
        vesk::AppendLeftPadded(report, static_cast<int>(i), 6);
        report += " | ";
        LivenessAnalysis::AppendRegisterUsage(report, states.Get(i), usage);
        report += '\n';
        flushLarge();
      }
    }
  }
  report += "Maximum # VGPR used ";
  report += vesk::LeftPad(usage.maxLiveCount, 3);
  report += ", # VGPR allocated: ";
  report += vesk::LeftPad(usage.maxRegisterIndex + 1, 3);
  report += '\n';
  output->write(report.data(), static_cast<std::streamsize>(report.size()));
  return true;
}
