// The "dump-bb-cfg" and "dump-pi-cfg" task: the control-flow graph as a dot
// digraph, one box per basic block or one per instruction.
#pragma once

#include <ostream>

#include "app/base_task.h"
#include "cfg/basic_block.h"

class CFGDumper : public BaseVeskAppTask {
 public:
  CFGDumper(std::stringstream& input, std::ostream* output, CFGStyle style);
  bool InvokeImpl() override;
  std::ostream& WriteBlockContent(const vesk::BasicBlock* block);
  std::ostream& WriteBlockContent(const vesk::BasicBlock* block, bool compact);

 private:
  CFGStyle style;
};
