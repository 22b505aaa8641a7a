// The base of every analysis task: the instruction set, the input text, the
// report stream and the parsed program, filled in by the application before
// the task runs.
#pragma once

#include <cstdint>
#include <ostream>
#include <sstream>
#include <vector>

#include "app/json_document.h"
#include "isa/instruction_set.h"
#include "isa/invocation.h"
#include "readers/isa_reader.h"

namespace vesk {
class JsonStreamWriter;
}  // namespace vesk

class BaseVeskAppTask {
 public:
  BaseVeskAppTask(std::stringstream& input_, std::ostream* output_)
      : input(input_), output(output_) {}
  virtual ~BaseVeskAppTask() = default;
  // Runs the analysis and writes its report; false when it could not.
  virtual bool InvokeImpl() = 0;

  const vesk::InstructionSet* instructionSet = nullptr;
  std::stringstream& input;
  std::ostream* output;
  std::vector<vesk::Invocation> invocations;
  // Text writes the report to `output`. Json adds the program's members
  // after its "function": long tables go straight to `jsonWriter` (whose
  // innermost open object is the program's), short reports may fill
  // `jsonProgram` instead, which the application adds after them.
  vesk::ReportFormat format = vesk::ReportFormat::Text;
  vesk::JsonDocument* jsonProgram = nullptr;
  vesk::JsonStreamWriter* jsonWriter = nullptr;
  // What the listing states about the program (launch facts) and the wave
  // size the application chose for it (-w, else the listing's, else the
  // generation's).
  vesk::ProgramAttributes attributes;
  int waveSize = 32;
};

enum CFGStyle : uint32_t { BasicBlocks = 0, CompactBasicBlocks = 1, PerInstruction = 2 };

namespace AnalyzeLiveness {
enum Options : uint32_t { None = 0, removeStartLines = 1, summaryOnly = 2 };
}  // namespace AnalyzeLiveness
