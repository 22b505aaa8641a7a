// The JSON document type and the report format choice, without the full
// JSON library header (for headers that only pass documents around).
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace vesk {

// Field order is kept as written, so the documents read top-down like the
// text reports.
using JsonDocument = nlohmann::ordered_json;

// The text and JSON forms of a report.
enum class ReportFormat { Text, Json };

}  // namespace vesk
