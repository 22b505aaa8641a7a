// Block splitting and linking.
#include "cfg/basic_block.h"

#include <unordered_map>

#include "util/analysis_error.h"

namespace vesk {

BasicBlock::BasicBlock(const std::string& label_, std::vector<const Invocation*>&& invocations_,
                       int order_)
    : invocations(std::move(invocations_)), label(label_), order(order_) {}

std::unique_ptr<BasicBlock> BasicBlock::CreateBasicBlock(
    const std::string& label, std::vector<const Invocation*>&& invocations, int order) {
  return std::unique_ptr<BasicBlock>(new BasicBlock(label, std::move(invocations), order));
}

void BasicBlock::Link(BasicBlock* from, BasicBlock* to) {
  from->successors.push_back(to);
  to->predecessors.push_back(from);
}

InstructionOperands BasicBlock::GetUsedVGPRs() const {
  InstructionOperands merged;
  for (const Invocation* invocation : invocations)
    merged.MergeWith(invocation->GetUsedOperands(VGPR));
  return merged;
}

InstructionOperands BasicBlock::GetUsedSGPRs() const {
  InstructionOperands merged;
  for (const Invocation* invocation : invocations)
    merged.MergeWith(invocation->GetUsedOperands(SGPR));
  return merged;
}

BasicBlockList CreateBasicBlocksFromInvocations(const std::vector<Invocation>& invocations) {
  BasicBlockList blocks;
  std::unordered_map<std::string, BasicBlock*> blockTable;
  std::unordered_map<std::string, std::string> aliasTable;

  std::string currentName = "entry";
  std::vector<const Invocation*> current;
  bool startNewBlock = true;

  auto closeBlock = [&] {
    const int order = static_cast<int>(blocks.size());
    blocks.push_back(BasicBlock::CreateBasicBlock(currentName, std::move(current), order));
    // A later block with the same label replaces the earlier one here.
    blockTable[currentName] = blocks.back().get();
    current.clear();
  };

  for (const Invocation& invocation : invocations) {
    const std::vector<std::string>& labels = invocation.GetLabels();
    if (!labels.empty() || startNewBlock) {
      closeBlock();
      if (!labels.empty()) {
        currentName = labels.front();
        for (size_t i = 1; i < labels.size(); ++i) aliasTable[labels[i]] = labels.front();
      } else {
        currentName = "basic_block_" + std::to_string(blocks.size());
      }
    }
    startNewBlock = invocation.IsBranch() || invocation.IsJump() || invocation.IsEnd();
    current.push_back(&invocation);
  }
  // An empty program still gets its empty "entry" block.
  if (!current.empty() || blocks.empty()) closeBlock();

  blocks.push_back(BasicBlock::CreateBasicBlock("exit", {}, static_cast<int>(blocks.size())));
  BasicBlock* exitBlock = blocks.back().get();
  blockTable["exit"] = exitBlock;

  for (size_t i = 0; i + 1 < blocks.size(); ++i) {
    BasicBlock* block = blocks[i].get();
    BasicBlock* next = blocks[i + 1].get();
    if (block->IsEmpty()) {
      BasicBlock::Link(block, next);
      continue;
    }
    const Invocation* last = block->GetInvocations().back();
    if (last->IsBranch()) {
      std::string target = last->GetBranchTarget();
      if (auto alias = aliasTable.find(target); alias != aliasTable.end()) target = alias->second;
      if (auto found = blockTable.find(target); found != blockTable.end()) {
        BasicBlock::Link(block, found->second);
      }
      BasicBlock::Link(block, next);
    } else if (last->IsJump()) {
      auto found = blockTable.find(last->GetJumpTarget());
      if (found == blockTable.end()) {
        throw AnalysisError("Jump to '" + last->GetJumpTarget() + "', which names no block.");
      }
      BasicBlock::Link(block, found->second);
    } else if (last->IsEnd()) {
      BasicBlock::Link(block, exitBlock);
    } else {
      BasicBlock::Link(block, next);
    }
  }
  return blocks;
}

}  // namespace vesk
