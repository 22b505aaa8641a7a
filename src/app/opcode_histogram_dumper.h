// The "opcode-histogram" task: how often each opcode (or operand type) occurs.
#pragma once

#include <string>

#include "app/base_task.h"

class OpcodeHistogramDumper : public BaseVeskAppTask {
 public:
  OpcodeHistogramDumper(std::stringstream& input, std::ostream* output, std::string groupBy);
  bool InvokeImpl() override;

 private:
  std::string groupBy;
};
