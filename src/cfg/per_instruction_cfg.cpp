// Lowering of the basic-block graph to one node per instruction, the
// depth-first orders over that graph, and the backward liveness solve.
#include "cfg/per_instruction_cfg.h"

#include <unordered_map>
#include <unordered_set>

#include "util/analysis_error.h"

namespace vesk {

namespace {

const PerInvocationCfgNode::Set kEmptySet;

// The first and last node of a lowered block; a block without instructions
// has one node, which is both.
struct LoweredBlock {
  PerInvocationCfgNode* first;
  PerInvocationCfgNode* last;
};

using NodesByBlock = std::unordered_map<const BasicBlock*, LoweredBlock>;

// Creates the chained nodes of one block, appends them to `nodes` and records
// the block in `nodesByBlock`. False when the block was lowered before.
bool LowerBlockNodes(const BasicBlock* block, RegisterType type, NodesByBlock& nodesByBlock,
                     PerInvocationCfg::NodeList& nodes) {
  if (nodesByBlock.count(block)) return false;
  const size_t firstIndex = nodes.size();
  const std::vector<const Invocation*>& invocations = block->GetInvocations();
  if (invocations.empty()) {
    nodes.push_back(PerInvocationCfgNode::Create(nullptr, block, 0, type));
  } else {
    for (size_t i = 0; i < invocations.size(); ++i) {
      nodes.push_back(
          PerInvocationCfgNode::Create(invocations[i], block, static_cast<int>(i), type));
      if (i > 0) PerInvocationCfgNode::Link(nodes[nodes.size() - 2].get(), nodes.back().get());
    }
  }
  nodesByBlock.emplace(block, LoweredBlock{nodes[firstIndex].get(), nodes.back().get()});
  return true;
}

// Lowers every block reachable from `entry`, visiting blocks depth first in
// successor order. A block's last node is linked to a successor's first node
// only after that successor's whole subtree has been lowered, so node and
// link order are those of the natural recursion:
//   lower(b): create b's nodes; for each successor s: lower(s); link(b, s).
// The recursion is kept on an explicit stack because real shaders can have
// thousands of blocks in a chain.
void LowerBasicBlockCfgToPerIncovationCfg(const BasicBlock* entry, RegisterType type,
                                          NodesByBlock& nodesByBlock,
                                          PerInvocationCfg::NodeList& nodes) {
  struct Frame {
    const BasicBlock* block;
    size_t nextSuccessor;
  };
  std::vector<Frame> stack;
  if (LowerBlockNodes(entry, type, nodesByBlock, nodes)) stack.push_back({entry, 0});

  auto linkToSuccessor = [&nodesByBlock](const Frame& frame) {
    const BasicBlock* successor = frame.block->GetSuccessors()[frame.nextSuccessor];
    PerInvocationCfgNode::Link(nodesByBlock.at(frame.block).last, nodesByBlock.at(successor).first);
  };

  while (!stack.empty()) {
    Frame& frame = stack.back();
    const std::vector<BasicBlock*>& successors = frame.block->GetSuccessors();
    if (frame.nextSuccessor < successors.size()) {
      const BasicBlock* successor = successors[frame.nextSuccessor];
      if (LowerBlockNodes(successor, type, nodesByBlock, nodes)) {
        // Descend; the link is made when this frame is popped.
        stack.push_back({successor, 0});
      } else {
        linkToSuccessor(frame);
        ++frame.nextSuccessor;
      }
      continue;
    }
    stack.pop_back();
    if (!stack.empty()) {
      linkToSuccessor(stack.back());
      ++stack.back().nextSuccessor;
    }
  }
}

// A node without successors, searched depth first from the nodes taken in
// reverse vector order; null when every node has a successor.
PerInvocationCfgNode* GetExitImpl(const PerInvocationCfg::NodeList& nodes) {
  std::vector<PerInvocationCfgNode*> stack;
  stack.reserve(nodes.size());
  for (const auto& node : nodes) stack.push_back(node.get());
  std::unordered_set<const PerInvocationCfgNode*> seen;
  while (!stack.empty()) {
    PerInvocationCfgNode* node = stack.back();
    stack.pop_back();
    if (node->GetSuccessors().empty()) return node;
    if (!seen.insert(node).second) continue;
    for (PerInvocationCfgNode* successor : node->GetSuccessors()) stack.push_back(successor);
  }
  return nullptr;
}

template <typename NodePointer>
std::vector<NodePointer> GatherDepthFirstImpl(NodePointer start, GatherOrder order) {
  std::vector<NodePointer> result;
  if (!start) return result;
  std::vector<NodePointer> stack{start};
  std::unordered_set<NodePointer> visited;
  while (!stack.empty()) {
    NodePointer node = stack.back();
    stack.pop_back();
    if (!visited.insert(node).second) continue;
    result.push_back(node);
    const auto& neighbours =
        order == GatherOrder::Forward ? node->GetSuccessors() : node->GetPredecessors();
    for (NodePointer neighbour : neighbours) stack.push_back(neighbour);
  }
  return result;
}

}  // namespace

PerInvocationCfgNode::PerInvocationCfgNode(const Invocation* invocation_, const BasicBlock* block_,
                                           int order_, RegisterType type_)
    : invocation(invocation_), block(block_), order(order_), type(type_) {}

std::unique_ptr<PerInvocationCfgNode> PerInvocationCfgNode::Create(const Invocation* invocation,
                                                                   const BasicBlock* block,
                                                                   int order, RegisterType type) {
  return std::unique_ptr<PerInvocationCfgNode>(
      new PerInvocationCfgNode(invocation, block, order, type));
}

void PerInvocationCfgNode::Link(PerInvocationCfgNode* from, PerInvocationCfgNode* to) {
  from->successors.push_back(to);
  to->predecessors.push_back(from);
}

const PerInvocationCfgNode::Set& PerInvocationCfgNode::Def() const {
  return invocation ? invocation->GetUsedOperands(type).GetWritten() : kEmptySet;
}

const PerInvocationCfgNode::Set& PerInvocationCfgNode::Use() const {
  return invocation ? invocation->GetUsedOperands(type).GetRead() : kEmptySet;
}

// Both sets only grow while the solve iterates, so a change shows as a
// change in the member count.
bool PerInvocationCfgNode::UpdateOut() {
  const int before = out.Count();
  for (const PerInvocationCfgNode* successor : successors) out |= successor->in;
  return out.Count() != before;
}

bool PerInvocationCfgNode::UpdateIn() {
  const int before = in.Count();
  in = Use() | (out - Def());
  return in.Count() != before;
}

PerInvocationCfg::PerInvocationCfg(const BasicBlock* entry, RegisterType type) {
  NodesByBlock nodesByBlock;
  LowerBasicBlockCfgToPerIncovationCfg(entry, type, nodesByBlock, nodes);
  root = nodes.empty() ? nullptr : nodes.front().get();

  exit = GetExitImpl(nodes);
  if (!exit) {
    throw AnalysisError("The end of the program is unreachable from its entry (endless loop).");
  }

  // Liveness flows backward, so visiting nodes in depth-first order from the
  // exit along predecessor links settles straight-line code in one pass;
  // each loop nesting level costs about one more pass.
  const std::vector<PerInvocationCfgNode*> worklist = GatherDepthFirst(exit, GatherOrder::Backward);
  bool changed = true;
  while (changed) {
    changed = false;
    for (PerInvocationCfgNode* node : worklist) {
      const bool outChanged = node->UpdateOut();
      const bool inChanged = node->UpdateIn();
      changed = changed || outChanged || inChanged;
    }
  }
}

std::vector<PerInvocationCfgNode*> GatherDepthFirst(PerInvocationCfgNode* start,
                                                    GatherOrder order) {
  return GatherDepthFirstImpl(start, order);
}

std::vector<const PerInvocationCfgNode*> GatherDepthFirst(const PerInvocationCfgNode* start,
                                                          GatherOrder order) {
  return GatherDepthFirstImpl(start, order);
}

}  // namespace vesk
