// The "analyse-liveness" task: per-instruction VGPR liveness map and the
// register-pressure summary.
#pragma once

#include "app/base_task.h"

class LivenessAnalyzer : public BaseVeskAppTask {
 public:
  LivenessAnalyzer(std::stringstream& input, std::ostream* output,
                   AnalyzeLiveness::Options options);
  bool InvokeImpl() override;

 private:
  AnalyzeLiveness::Options options;
};
