// The "summary" task: one screen of figures for each program (counts,
// register pressure, occupancy and, on GFX10, the worst stalls), as text or
// as JSON.
#pragma once

#include <string>

#include "app/base_task.h"
#include "app/json_document.h"

namespace vesk {
struct ProgramSummary;
}  // namespace vesk

class SummaryReporter : public BaseVeskAppTask {
 public:
  SummaryReporter(std::stringstream& input, std::ostream* output);
  bool InvokeImpl() override;
};

namespace vesk {

// The text report of one program; `attributes` are the launch facts the
// listing states (LDS bytes and workgroup size are named when LDS limits).
std::string FormatSummaryText(const ProgramSummary& summary, const ProgramAttributes& attributes);
// The fields of one program's JSON object (after "function").
void FillSummaryJson(JsonDocument& program, const ProgramSummary& summary,
                     const ProgramAttributes& attributes);

}  // namespace vesk
