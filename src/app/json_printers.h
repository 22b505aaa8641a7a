// The JSON forms of the per-instruction reports. Each fills the object of
// one program from the same records the text report is written from.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "app/json_document.h"
#include "liveness/liveness_analysis.h"
#include "stall/stall_analysis.h"

namespace vesk {

class JsonStreamWriter;

// "rows" (unless summaryOnly): one per instruction with its report line,
// listing line, text, live count and the read, written and live register
// numbers; then "max_live" and "allocated". Rows are written as they are
// formed.
void WriteLivenessJson(JsonStreamWriter& program, const LivenessStates& states,
                       const RegisterUsage& usage, bool summaryOnly);

// "group" (null when ungrouped), "total" instructions, and "counts" in the
// text report's order: key, count and share in percent.
void FillHistogramJson(JsonDocument& program, const std::string& groupBy, size_t total,
                       const std::vector<std::pair<std::string, int>>& entries);

// "rows": report line, listing line, text, and the largest stall's cycles
// (null when it has no bound, with "unbounded" true), written as formed.
void WriteStallJson(JsonStreamWriter& program, const StallCycleAnalysis::Result& result);

// The instruction's text as the text reports write it (with its labels when
// `withLabels`), without the trailing blanks they keep.
std::string InstructionJsonText(const Invocation& invocation, bool withLabels);

// The listing line of an instruction, or null when it was not read from one.
JsonDocument SourceLineJson(const Invocation& invocation);

}  // namespace vesk
