// Block splitting and linking.
#include "cfg/basic_block.h"

#include <functional>
#include <string_view>
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

namespace {

// Blocks by name, open addressing over one array of (hash, block); the name
// of an entry is its block's label. Setting a name again replaces the block.
class BlockNameTable {
 public:
  explicit BlockNameTable(size_t expected) {
    size_t capacity = 16;
    while (capacity < 2 * expected) capacity *= 2;
    slots.resize(capacity);
    mask = capacity - 1;
  }

  void Set(BasicBlock* block) {
    if (2 * (count + 1) > slots.size()) Grow();
    const size_t hash = std::hash<std::string_view>{}(block->GetLabel());
    Slot& slot = slots[Probe(block->GetLabel(), hash)];
    if (!slot.block) ++count;
    slot = {hash, block};
  }

  BasicBlock* Find(std::string_view name) const {
    return slots[Probe(name, std::hash<std::string_view>{}(name))].block;
  }

 private:
  struct Slot {
    size_t hash = 0;
    BasicBlock* block = nullptr;
  };

  // The slot holding `name`, or the empty slot where it would go.
  size_t Probe(std::string_view name, size_t hash) const {
    size_t i = hash & mask;
    while (slots[i].block &&
           (slots[i].hash != hash || std::string_view(slots[i].block->GetLabel()) != name)) {
      i = (i + 1) & mask;
    }
    return i;
  }

  void Grow() {
    std::vector<Slot> old(slots.size() * 2);
    old.swap(slots);
    mask = slots.size() - 1;
    for (const Slot& slot : old) {
      if (slot.block) slots[Probe(slot.block->GetLabel(), slot.hash)] = slot;
    }
  }

  std::vector<Slot> slots;
  size_t mask = 0;
  size_t count = 0;
};

}  // namespace

BasicBlockList CreateBasicBlocksFromInvocations(const std::vector<Invocation>& invocations) {
  // Where blocks start: at a labelled instruction, and after a branch, a jump
  // or an end of program. Found first, so that every block's list of
  // instructions is made once at its final size.
  std::vector<size_t> starts;
  bool startNewBlock = true;
  for (size_t i = 0; i < invocations.size(); ++i) {
    const Invocation& invocation = invocations[i];
    if (startNewBlock || !invocation.GetLabels().empty()) starts.push_back(i);
    startNewBlock = invocation.IsBranch() || invocation.IsJump() || invocation.IsEnd();
  }

  BasicBlockList blocks;
  blocks.reserve(starts.size() + 2);
  BlockNameTable blockTable(starts.size() + 2);
  // Second labels of a line, as views of the instructions' label texts.
  std::unordered_map<std::string_view, const std::string*> aliasTable;
  const auto addBlock = [&](const std::string& name, size_t first, size_t end) {
    std::vector<const Invocation*> members(end - first);
    for (size_t i = first; i < end; ++i) members[i - first] = &invocations[i];
    const int order = static_cast<int>(blocks.size());
    blocks.push_back(BasicBlock::CreateBasicBlock(name, std::move(members), order));
    // A later block with the same label replaces the earlier one here.
    blockTable.Set(blocks.back().get());
  };

  // The first instruction always starts a block, so "entry" stays empty.
  addBlock("entry", 0, 0);
  for (size_t k = 0; k < starts.size(); ++k) {
    const size_t end = k + 1 < starts.size() ? starts[k + 1] : invocations.size();
    const std::vector<std::string>& labels = invocations[starts[k]].GetLabels();
    if (labels.empty()) {
      addBlock("basic_block_" + std::to_string(blocks.size()), starts[k], end);
    } else {
      for (size_t i = 1; i < labels.size(); ++i) aliasTable[labels[i]] = &labels.front();
      addBlock(labels.front(), starts[k], end);
    }
  }

  blocks.push_back(BasicBlock::CreateBasicBlock("exit", {}, static_cast<int>(blocks.size())));
  BasicBlock* exitBlock = blocks.back().get();
  blockTable.Set(exitBlock);

  for (size_t i = 0; i + 1 < blocks.size(); ++i) {
    BasicBlock* block = blocks[i].get();
    BasicBlock* next = blocks[i + 1].get();
    if (block->IsEmpty()) {
      BasicBlock::Link(block, next);
      continue;
    }
    const Invocation* last = block->GetInvocations().back();
    if (last->IsBranch()) {
      std::string_view target = last->GetBranchTarget();
      if (auto alias = aliasTable.find(target); alias != aliasTable.end()) target = *alias->second;
      if (BasicBlock* found = blockTable.Find(target)) BasicBlock::Link(block, found);
      BasicBlock::Link(block, next);
    } else if (last->IsJump()) {
      BasicBlock* found = blockTable.Find(last->GetJumpTarget());
      if (!found) {
        throw AnalysisError("Jump to '" + last->GetJumpTarget() + "', which names no block.");
      }
      BasicBlock::Link(block, found);
    } else if (last->IsEnd()) {
      BasicBlock::Link(block, exitBlock);
    } else {
      BasicBlock::Link(block, next);
    }
  }
  return blocks;
}

}  // namespace vesk
