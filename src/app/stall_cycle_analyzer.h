// The "stall-cycles" task: simulates the issue of every instruction on a
// GFX10 compute unit and reports the cycles each one waits.
#pragma once

#include "app/base_task.h"

class StallCycleAnalyzer : public BaseVeskAppTask {
 public:
  StallCycleAnalyzer(std::stringstream& input, std::ostream* output, bool wave64, bool showGaps);
  bool InvokeImpl() override;

 private:
  bool wave64;
  bool showGaps;
};
