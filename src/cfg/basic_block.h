// Basic blocks: named runs of invocations linked into the block-level
// control-flow graph, with an empty "entry" block first and an empty "exit"
// block last.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "isa/invocation.h"

namespace vesk {

class BasicBlock {
 public:
  static std::unique_ptr<BasicBlock> CreateBasicBlock(const std::string& label,
                                                      std::vector<const Invocation*>&& invocations,
                                                      int order);
  // Appends `to` to the successors of `from` and `from` to the predecessors
  // of `to`; duplicate links are kept.
  static void Link(BasicBlock* from, BasicBlock* to);

  const std::vector<BasicBlock*>& GetPredecessors() const { return predecessors; }
  const std::vector<BasicBlock*>& GetSuccessors() const { return successors; }
  std::vector<const Invocation*>& GetInvocations() { return invocations; }
  const std::vector<const Invocation*>& GetInvocations() const { return invocations; }
  const std::string& GetLabel() const { return label; }
  void SetLabel(const std::string& newLabel) { label = newLabel; }
  int GetOrder() const { return order; }

  bool IsEmpty() const { return invocations.empty(); }
  bool IsEntry() const { return label == "entry"; }
  bool IsExit() const { return label == "exit"; }

  InstructionOperands GetUsedVGPRs() const;
  InstructionOperands GetUsedSGPRs() const;

 private:
  BasicBlock(const std::string& label, std::vector<const Invocation*>&& invocations, int order);

  std::vector<BasicBlock*> predecessors;
  std::vector<BasicBlock*> successors;
  std::vector<const Invocation*> invocations;
  std::string label;
  int order;
};

using BasicBlockList = std::vector<std::unique_ptr<BasicBlock>>;

// Splits a program into blocks at labels and after control instructions and
// links them: a branch's target before its fall-through, a jump to its
// target, an end of program to "exit". The invocations must outlive the
// blocks.
BasicBlockList CreateBasicBlocksFromInvocations(const std::vector<Invocation>& invocations);

}  // namespace vesk
