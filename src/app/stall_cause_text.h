// Readable forms of a stall cause: one short phrase for a table of the worst
// stalls, and a JSON object for tools.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "stall/stall_cause.h"

namespace vesk {

// One short phrase, e.g. "vmcnt: waits for buffer_load_dword v[4:7] (line
// 12)", "v5 written by v_mul_f32 (line 30)", "va_vdst: waits for v_add_f32
// (line 7)", "VALU busy", "shortened vdst wait". The culprit is named by its
// opcode, with its first operand for memory waits; "(line N)" only when the
// listing line is known; "vmcnt wait" for a memory wait with nothing
// outstanding. Empty for a cause of kind kNone.
std::string DescribeStallCause(const StallCause& cause);

// {"kind": "memory_counter" | "register" | "dependency_counter" | "hardware"
// | "none", "condition": GetStallConditionName, "counter": "vmcnt" ... |
// null, "register": "v5" | "s4" | "vcc" ... | null, "source_line": N | null,
// "source": instruction text | null}. "source" is the culprit's text without
// labels and modifiers; "source_line" is null when there is no culprit or its
// line is unknown (0).
// An ordered_json (the app's JsonDocument) keeps the fields in this order.
nlohmann::ordered_json StallCauseToJson(const StallCause& cause);

// The register's assembly name: "v5", "s4", "exec", "vcc", "scc", "m0", ...
std::string StallRegisterName(RegisterID reg);

}  // namespace vesk
