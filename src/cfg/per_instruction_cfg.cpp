// Lowering of the basic-block graph to one node per instruction, the
// depth-first orders over that graph, and the backward liveness solve.
#include "cfg/per_instruction_cfg.h"

#include <cstdint>
#include <deque>
#include <unordered_map>

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

// Member count of a register set, inlined: the liveness solve counts two
// sets per node and pass, and without a hardware population-count target
// the library's std::popcount is an out-of-line call per word.
int CountMembers(const PerInvocationCfgNode::Set& set) {
  int count = 0;
  for (uint64_t word : set.Words()) {
    word = word - ((word >> 1) & 0x5555555555555555ull);
    word = (word & 0x3333333333333333ull) + ((word >> 2) & 0x3333333333333333ull);
    word = (word + (word >> 4)) & 0x0F0F0F0F0F0F0F0Full;
    count += static_cast<int>((word * 0x0101010101010101ull) >> 56);
  }
  return count;
}

// Hash of a node pointer: nodes are heap blocks, so the low bits carry
// little; mix all bits into the low ones the tables use.
size_t HashNode(const void* node) {
  uint64_t x = reinterpret_cast<uintptr_t>(node);
  x ^= x >> 33;
  x *= 0xFF51AFD7ED558CCDull;
  x ^= x >> 33;
  return static_cast<size_t>(x);
}

// Set of node pointers with open addressing; the graphs have up to a few
// hundred thousand nodes, and a node-based set would allocate once per node.
class VisitedSet {
 public:
  VisitedSet() : slots(1024, nullptr), mask(1023) {}
  // True when `node` was not in the set before.
  bool Insert(const void* node) {
    if (2 * (count + 1) > slots.size()) Grow();
    for (size_t i = HashNode(node) & mask;; i = (i + 1) & mask) {
      if (slots[i] == node) return false;
      if (!slots[i]) {
        slots[i] = node;
        ++count;
        return true;
      }
    }
  }

 private:
  void Grow() {
    std::vector<const void*> old(slots.size() * 2, nullptr);
    old.swap(slots);
    mask = slots.size() - 1;
    count = 0;
    for (const void* node : old)
      if (node) Insert(node);
  }

  std::vector<const void*> slots;
  size_t mask;
  size_t count = 0;
};

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
  std::vector<char> seen(nodes.size(), 0);
  while (!stack.empty()) {
    PerInvocationCfgNode* node = stack.back();
    stack.pop_back();
    if (node->GetSuccessors().empty()) return node;
    if (seen[node->GetIndex()]) continue;
    seen[node->GetIndex()] = 1;
    for (PerInvocationCfgNode* successor : node->GetSuccessors()) stack.push_back(successor);
  }
  return nullptr;
}

// GatherDepthFirst(start, Backward) over the nodes of one graph, marking
// visits by node index rather than in a hash set.
std::vector<PerInvocationCfgNode*> GatherBackwardInGraph(PerInvocationCfgNode* start,
                                                         size_t nodeCount) {
  std::vector<PerInvocationCfgNode*> result;
  std::vector<PerInvocationCfgNode*> stack{start};
  std::vector<char> visited(nodeCount, 0);
  while (!stack.empty()) {
    PerInvocationCfgNode* node = stack.back();
    stack.pop_back();
    if (visited[node->GetIndex()]) continue;
    visited[node->GetIndex()] = 1;
    result.push_back(node);
    for (PerInvocationCfgNode* neighbour : node->GetPredecessors()) stack.push_back(neighbour);
  }
  return result;
}

template <typename NodePointer>
std::vector<NodePointer> GatherDepthFirstImpl(NodePointer start, GatherOrder order) {
  std::vector<NodePointer> result;
  if (!start) return result;
  std::vector<NodePointer> stack{start};
  VisitedSet visited;
  while (!stack.empty()) {
    NodePointer node = stack.back();
    stack.pop_back();
    if (!visited.Insert(node)) continue;
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
  const int before = CountMembers(out);
  for (const PerInvocationCfgNode* successor : successors) out |= successor->in;
  return CountMembers(out) != before;
}

bool PerInvocationCfgNode::UpdateIn() {
  const int before = CountMembers(in);
  in = Use() | (out - Def());
  return CountMembers(in) != before;
}

PerInvocationCfg::PerInvocationCfg(const BasicBlock* entry, RegisterType type) {
  NodesByBlock nodesByBlock;
  LowerBasicBlockCfgToPerIncovationCfg(entry, type, nodesByBlock, nodes);
  for (size_t i = 0; i < nodes.size(); ++i) nodes[i]->index = static_cast<int>(i);
  root = nodes.empty() ? nullptr : nodes.front().get();

  exit = GetExitImpl(nodes);
  if (!exit) {
    throw AnalysisError("The end of the program is unreachable from its entry (endless loop).");
  }

  // Liveness flows backward: a node is revisited only when the live-in set of
  // one of its successors grew, so the cost follows the changes rather than
  // passes times nodes (deeply nested loops would need one full pass per
  // level). Both sets only grow, so the least fixpoint reached is the same in
  // any visiting order; starting in depth-first order from the exit along
  // predecessor links settles straight-line code in one visit per node.
  backwardOrder = GatherBackwardInGraph(exit, nodes.size());
  const std::vector<PerInvocationCfgNode*>& order = backwardOrder;
  // Position in `order` of every node, by node index; -1 for nodes that do
  // not reach the exit.
  std::vector<int> positionOf(nodes.size(), -1);
  for (size_t i = 0; i < order.size(); ++i) positionOf[order[i]->GetIndex()] = static_cast<int>(i);
  std::vector<char> queued(order.size(), 1);
  std::deque<int> queue(order.size());
  for (size_t i = 0; i < order.size(); ++i) queue[i] = static_cast<int>(i);
  while (!queue.empty()) {
    const int position = queue.front();
    queue.pop_front();
    queued[position] = 0;
    PerInvocationCfgNode* node = order[position];
    node->UpdateOut();
    if (!node->UpdateIn()) continue;
    // Predecessors of a node that reaches the exit reach it too.
    for (const PerInvocationCfgNode* predecessor : node->GetPredecessors()) {
      const int next = positionOf[predecessor->GetIndex()];
      if (next >= 0 && !queued[next]) {
        queued[next] = 1;
        queue.push_back(next);
      }
    }
  }
}

PerInvocationCfgNodeIndex::PerInvocationCfgNodeIndex(
    const std::vector<const PerInvocationCfgNode*>& nodes)
    : size(static_cast<int>(nodes.size())) {
  size_t capacity = 16;
  while (capacity < 2 * nodes.size()) capacity *= 2;
  keys.assign(capacity, nullptr);
  values.assign(capacity, -1);
  mask = capacity - 1;
  for (int position = 0; position < size; ++position) {
    const PerInvocationCfgNode* node = nodes[position];
    size_t i = HashNode(node) & mask;
    while (keys[i] && keys[i] != node) i = (i + 1) & mask;
    if (!keys[i]) {
      keys[i] = node;
      values[i] = position;
    }
  }
}

int PerInvocationCfgNodeIndex::Find(const PerInvocationCfgNode* node) const {
  for (size_t i = HashNode(node) & mask; keys[i]; i = (i + 1) & mask) {
    if (keys[i] == node) return values[i];
  }
  return -1;
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
