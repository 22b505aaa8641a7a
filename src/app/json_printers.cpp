// JSON rows of the liveness, histogram and stall reports.
#include "app/json_printers.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "app/json_report.h"

namespace vesk {

namespace {

// Fills `list` (kept between rows, so its storage is reused).
void SetRegisterList(JsonDocument& list, const RegisterState::Set& set) {
  if (!list.is_array()) list = JsonDocument::array();
  list.clear();
  for (const int index : set) list.push_back(index);
}

}  // namespace

std::string InstructionJsonText(const Invocation& invocation, bool withLabels) {
  std::string text = invocation.ToString(withLabels, false);
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

JsonDocument SourceLineJson(const Invocation& invocation) {
  const uint32_t line = invocation.GetSourceLine();
  return line == 0 ? JsonDocument(nullptr) : JsonDocument(line);
}

void WriteLivenessJson(JsonStreamWriter& program, const LivenessStates& states,
                       const RegisterUsage& usage, bool summaryOnly) {
  if (!summaryOnly) {
    program.BeginArray("rows");
    // The first and last states are the graph's entry and exit nodes; rows
    // are numbered from 1 as in the text report. One document is refilled
    // for every row.
    JsonDocument row = JsonDocument::object();
    for (size_t i = 1; i + 1 < states.Size(); ++i) {
      const auto [invocation, state] = states.Get(i);
      row["line"] = i;
      row["source_line"] = invocation ? SourceLineJson(*invocation) : JsonDocument(nullptr);
      row["instruction"] = invocation ? InstructionJsonText(*invocation, true) : std::string();
      row["live"] = state.Live().Count();
      SetRegisterList(row["read"], state.Read());
      SetRegisterList(row["written"], state.Written());
      SetRegisterList(row["live_registers"], state.Live());
      program.Add(row);
    }
    program.End();
  }
  program.Add("max_live", usage.maxLiveCount);
  program.Add("allocated", usage.maxRegisterIndex + 1);
}

void FillHistogramJson(JsonDocument& program, const std::string& groupBy, size_t total,
                       const std::vector<std::pair<std::string, int>>& entries) {
  program["group"] = groupBy.empty() ? JsonDocument(nullptr) : JsonDocument(groupBy);
  program["total"] = total;
  JsonDocument counts = JsonDocument::array();
  for (const auto& [key, count] : entries) {
    // The share to two decimals; the text report rounds it further.
    const double percent =
        std::round(static_cast<double>(count) * 10000.0 / static_cast<double>(total)) / 100.0;
    counts.push_back(JsonDocument{{"key", key}, {"count", count}, {"percent", percent}});
  }
  program["counts"] = std::move(counts);
}

void WriteStallJson(JsonStreamWriter& program, const StallCycleAnalysis::Result& result) {
  program.BeginArray("rows");
  size_t line = 0;
  JsonDocument row = JsonDocument::object();
  for (const auto& [invocation, stalls] : result) {
    const StallLength& length = stalls.first.length;
    row["line"] = ++line;
    row["source_line"] = SourceLineJson(*invocation);
    row["instruction"] = InstructionJsonText(*invocation, true);
    row["cycles"] = length.IsIndefinite() ? JsonDocument(nullptr) : JsonDocument(length.Get());
    row["unbounded"] = length.IsIndefinite();
    program.Add(row);
  }
  program.End();
}

}  // namespace vesk
