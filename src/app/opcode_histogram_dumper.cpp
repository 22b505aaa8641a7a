// Opcode histogram: counts per opcode name, or per operand type taken from
// the name's last "_" part (f32, b64, ...), most frequent first.
#include "app/opcode_histogram_dumper.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iomanip>
#include <map>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "app/json_printers.h"

namespace {

// The operand type that an opcode name ends in ("v_add_f32" -> "f32"), or
// "unknown" when the last part is not a type.
std::string OperandSizeKey(const std::string& name) {
  const size_t underscore = name.rfind('_');
  if (underscore == std::string::npos) return "unknown";
  const std::string tail = name.substr(underscore + 1);
  if (tail.size() < 2 || std::string_view("bfiu").find(tail[0]) == std::string_view::npos ||
      !std::isdigit(static_cast<unsigned char>(tail[1]))) {
    return "unknown";
  }
  return tail;
}

}  // namespace

OpcodeHistogramDumper::OpcodeHistogramDumper(std::stringstream& input, std::ostream* output,
                                             std::string groupBy_)
    : BaseVeskAppTask(input, output), groupBy(std::move(groupBy_)) {}

bool OpcodeHistogramDumper::InvokeImpl() {
  // Instructions are counted per opcode record first, so the names are
  // compared once per distinct opcode rather than once per line.
  std::unordered_map<const vesk::Instruction*, int> perRecord;
  if (groupBy.empty() || groupBy == "operand-size") {
    for (const vesk::Invocation& invocation : invocations) ++perRecord[invocation.GetInstruction()];
  }
  std::map<std::string, int> counts;
  for (const auto& [record, count] : perRecord) {
    const std::string name = record->GetName();
    counts[groupBy.empty() ? name : OperandSizeKey(name)] += count;
  }
  std::vector<std::pair<std::string, int>> entries(counts.begin(), counts.end());
  std::sort(entries.begin(), entries.end(),
            [](const auto& a, const auto& b) { return a.second > b.second; });
  if (format == vesk::ReportFormat::Json) {
    vesk::FillHistogramJson(*jsonProgram, groupBy, invocations.size(), entries);
    return true;
  }
  // "instruction-class" is accepted but counts nothing.
  if (entries.empty()) return true;

  size_t nameWidth = 0;
  int countWidth = 0;
  for (const auto& [key, count] : entries) {
    nameWidth = std::max(nameWidth, key.size());
    countWidth = std::max(countWidth, static_cast<int>(std::log10(count)) + 1);
  }

  // The report is formatted in memory and written at once.
  std::ostringstream out;
  const float total = static_cast<float>(invocations.size());
  for (const auto& [key, count] : entries) {
    const float percent = static_cast<float>(count) / total * 100.0f;
    out << std::setw(static_cast<int>(nameWidth)) << key << " : " << std::setw(countWidth) << count
        << " (" << std::setprecision(2) << std::setw(6) << static_cast<double>(percent) << " %)\n";
  }
  const std::string report = std::move(out).str();
  output->write(report.data(), static_cast<std::streamsize>(report.size()));
  return true;
}
