// The liveness report: legend, one line per instruction with a character per
// vector register, and the register-pressure summary.
#include "app/liveness_analyzer.h"

#include <string>

#include "liveness/liveness_analysis.h"
#include "util/string_helpers.h"

using vesk::LivenessAnalysis;

LivenessAnalyzer::LivenessAnalyzer(std::stringstream& input, std::ostream* output,
                                   AnalyzeLiveness::Options options_)
    : BaseVeskAppTask(input, output), options(options_) {}

bool LivenessAnalyzer::InvokeImpl() {
  std::ostream& out = *output;
  vesk::LivenessAnalysisOptions analysisOptions;
  analysisOptions.removeStartLines = (options & AnalyzeLiveness::removeStartLines) != 0;
  const vesk::RegisterStates states =
      LivenessAnalysis::Analyze(invocations, vesk::VGPR, analysisOptions);
  const vesk::RegisterUsage usage = LivenessAnalysis::GetRegisterUsage(states);
  const int width = usage.maxRegisterIndex + 1;
  const bool summaryOnly = (options & AnalyzeLiveness::summaryOnly) != 0;

  if (!summaryOnly) {
    out << "Legend:\n";
    out << "  ':' means that the register is kept alive, while it is not actively being used by "
           "the current instruction\n";
    out << "  '^' means that the current instruction writes to the register\n";
    out << "  'v' means that the current instruction reads from the register\n";
    out << "  'x' means that the current instruction both reads from the register and writes to "
           "it\n";
    out << " 'Rn': Number of live registers\n\n";
    out << "  Line | Rn  | " << std::string(static_cast<size_t>(width), ' ') << " | Instruction\n";
    out << std::string(80, '-') << "\n";
    // The first and last entries are the graph's entry and exit nodes.
    if (states.size() >= 3) {
      for (size_t i = 1; i + 1 < states.size(); ++i) {
        out << vesk::LeftPad(static_cast<int>(i), 6) << " | "
            << LivenessAnalysis::FormatRegisterUsage(states[i], usage) << '\n';
      }
    }
  }
  out << "Maximum # VGPR used " << vesk::LeftPad(usage.maxLiveCount, 3)
      << ", # VGPR allocated: " << vesk::LeftPad(usage.maxRegisterIndex + 1, 3) << "\n";
  return true;
}
