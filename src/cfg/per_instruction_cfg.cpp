// Lowering of the basic-block graph to one node per instruction, the
// depth-first orders over that graph, and the backward liveness solve.
#include "cfg/per_instruction_cfg.h"

#include <unordered_map>

#include "util/analysis_error.h"

namespace vesk {

namespace {

const PerInvocationCfg::Set kEmptySet;

// The lowered number of each block. Blocks of one program have distinct
// orders 0..n-1, so the table is a vector indexed by order, checked against
// the block; blocks whose order does not fit go to a hash map.
class LoweredBlocks {
 public:
  // The number of `block`, given `number` when it is new, and whether it is.
  std::pair<uint32_t, bool> Insert(const BasicBlock* block, uint32_t number) {
    const int order = block->GetOrder();
    if (order >= 0 && order < kDenseLimit) {
      if (static_cast<size_t>(order) >= byOrder.size())
        byOrder.resize(order + size_t{1} + order / 2);
      Slot& slot = byOrder[order];
      if (!slot.block) {
        slot = {block, number};
        return {number, true};
      }
      if (slot.block == block) return {slot.number, false};
    }
    const auto [found, added] = others.try_emplace(block, number);
    return {found->second, added};
  }
  // The number of a block inserted before.
  uint32_t Find(const BasicBlock* block) { return Insert(block, 0).first; }

 private:
  static constexpr int kDenseLimit = 1 << 22;
  struct Slot {
    const BasicBlock* block = nullptr;
    uint32_t number = 0;
  };
  std::vector<Slot> byOrder;
  std::unordered_map<const BasicBlock*, uint32_t> others;
};

}  // namespace

PerInvocationCfg::PerInvocationCfg(const BasicBlock* entry, RegisterType type_) : type(type_) {
  Lower(entry);
  const CfgNodeId noExit = static_cast<CfgNodeId>(Size());
  exit = FindExit();
  if (exit == noExit) {
    throw AnalysisError("The end of the program is unreachable from its entry (endless loop).");
  }
  backwardOrder = GatherDepthFirst(*this, exit, GatherOrder::Backward);
  // A block is entered by the backward walk at its last node and left at its
  // first, so either all its nodes reach the exit or none.
  for (CfgNodeId node : backwardOrder) blocks[nodeBlock[node]].reachesExit = true;
  Solve();
}

// Lowers every block reachable from `entry`, visiting blocks depth first in
// successor order. A block's last node is linked to a successor's first node
// only after that successor's whole subtree has been lowered, so node and
// link order are those of the natural recursion:
//   lower(b): create b's nodes; for each successor s: lower(s); link(b, s).
// The recursion is kept on an explicit stack because real shaders can have
// thousands of blocks in a chain. Nodes are numbered in creation order.
void PerInvocationCfg::Lower(const BasicBlock* entry) {
  LoweredBlocks lowered;
  CfgNodeId nodeCount = 0;
  // The block's number among the lowered blocks, and whether it is new.
  const auto lowerBlock = [&](const BasicBlock* block) -> std::pair<uint32_t, bool> {
    const auto [number, added] = lowered.Insert(block, static_cast<uint32_t>(blocks.size()));
    if (!added) return {number, false};
    const size_t instructions = block->GetInvocations().size();
    const uint32_t count = instructions == 0 ? 1 : static_cast<uint32_t>(instructions);
    blocks.push_back(Block{block, nodeCount, count});
    nodeCount += count;
    return {number, true};
  };

  // Block-to-block links in the order the recursion makes them.
  struct Link {
    uint32_t from;
    uint32_t to;
  };
  std::vector<Link> links;
  struct Frame {
    uint32_t block;
    size_t nextSuccessor;
  };
  std::vector<Frame> stack;
  stack.push_back({lowerBlock(entry).first, 0});
  while (!stack.empty()) {
    Frame& frame = stack.back();
    const std::vector<BasicBlock*>& successors = blocks[frame.block].block->GetSuccessors();
    if (frame.nextSuccessor < successors.size()) {
      const auto [successor, added] = lowerBlock(successors[frame.nextSuccessor]);
      if (added) {
        // Descend; the link is made when that frame is popped.
        stack.push_back({successor, 0});
      } else {
        links.push_back({frame.block, successor});
        ++frame.nextSuccessor;
      }
      continue;
    }
    const uint32_t done = frame.block;
    stack.pop_back();
    if (!stack.empty()) {
      links.push_back({stack.back().block, done});
      ++stack.back().nextSuccessor;
    }
  }

  nodeBlock.resize(nodeCount);
  for (uint32_t b = 0; b < blocks.size(); ++b) {
    for (uint32_t i = 0; i < blocks[b].nodeCount; ++i) nodeBlock[blocks[b].firstNode + i] = b;
  }

  // A block's links are made in its successor order, so its successor list
  // is that order; predecessor lists keep the global link order.
  successorFirst.reserve(links.size());
  for (Block& b : blocks) {
    b.successorBegin = static_cast<uint32_t>(successorFirst.size());
    for (const BasicBlock* successor : b.block->GetSuccessors()) {
      successorFirst.push_back(blocks[lowered.Find(successor)].firstNode);
    }
    b.successorEnd = static_cast<uint32_t>(successorFirst.size());
  }
  std::vector<uint32_t> predecessorCount(blocks.size() + 1, 0);
  for (const Link& link : links) ++predecessorCount[link.to + 1];
  for (size_t b = 0; b < blocks.size(); ++b) {
    predecessorCount[b + 1] += predecessorCount[b];
    blocks[b].predecessorBegin = blocks[b].predecessorEnd = predecessorCount[b];
  }
  predecessorLast.resize(links.size());
  for (const Link& link : links) {
    predecessorLast[blocks[link.to].predecessorEnd++] = LastNode(blocks[link.from]);
  }
}

// A node without successors, searched as by a stack that starts with every
// node in number order (the last on top): pop a node; a node without
// successors is the answer; a node seen before is skipped; otherwise it is
// marked and its successors pushed. Size() when every node has a successor.
CfgNodeId PerInvocationCfg::FindExit() const {
  const CfgNodeId count = static_cast<CfgNodeId>(Size());
  std::vector<char> seen(count, 0);
  std::vector<CfgNodeId> stack;
  for (CfgNodeId start = count; start-- > 0;) {
    stack.push_back(start);
    while (!stack.empty()) {
      const CfgNodeId node = stack.back();
      stack.pop_back();
      const CfgNodeLinks successors = GetSuccessors(node);
      if (successors.empty()) return node;
      if (seen[node]) continue;
      seen[node] = 1;
      for (CfgNodeId successor : successors) stack.push_back(successor);
    }
  }
  return count;
}

// Liveness flows backward. Inside a block it is a chain of steps
// in = use | (out - def), which compose into one step per block:
// in = gen | (out - kill), with gen the registers read before any write in
// the block and kill every register it writes. The blocks are solved with a
// worklist (a block is revisited only when the live-in of a successor grew).
// A block's first visit sweeps its instructions, which gives their sets and
// the block's gen and kill in one pass; later visits use gen and kill, and
// the blocks whose live-out grew after their sweep are swept again at the
// end. Without loops every block is swept once. Both sets only grow from
// empty, so this is the least solution, the same as node by node in any
// order. Blocks that do not reach the exit keep empty sets and add nothing
// to their predecessors.
void PerInvocationCfg::Solve() {
  in.assign(Size(), Set());
  blockOut.assign(blocks.size(), Set());
  std::vector<Set> gen(blocks.size());
  std::vector<Set> kill(blocks.size());
  std::vector<Set> blockIn(blocks.size());
  // 0: not swept yet, 1: swept with its current live-out, 2: live-out grew
  // since the sweep.
  std::vector<char> swept(blocks.size(), 0);

  // The live-in of every instruction of `b` from the block's live-out; with
  // `summarise`, also the block's gen and kill. Returns the block's live-in.
  const auto sweep = [&](uint32_t b, bool summarise) {
    const std::vector<const Invocation*>& invocations = blocks[b].block->GetInvocations();
    const CfgNodeId first = blocks[b].firstNode;
    Set live = blockOut[b];
    Set read;
    Set written;
    for (size_t i = invocations.size(); i-- > 0;) {
      const InstructionOperands& operands = invocations[i]->GetUsedOperands(type);
      live -= operands.GetWritten();
      live |= operands.GetRead();
      in[first + i] = live;
      if (summarise) {
        read -= operands.GetWritten();
        read |= operands.GetRead();
        written |= operands.GetWritten();
      }
    }
    if (invocations.empty()) in[first] = live;
    if (summarise) {
      gen[b] = read;
      kill[b] = written;
    }
    return live;
  };

  // Blocks in the order the backward walk first reaches them: straight-line
  // code settles in one visit per block.
  std::vector<uint32_t> queue;
  queue.reserve(blocks.size());
  std::vector<char> queued(blocks.size(), 0);
  for (CfgNodeId node : backwardOrder) {
    const uint32_t b = nodeBlock[node];
    if (!queued[b]) {
      queued[b] = 1;
      queue.push_back(b);
    }
  }
  // A ring over `queue`: a block is in it at most once.
  size_t head = 0;
  size_t pending = queue.size();
  queue.resize(blocks.size());
  while (pending > 0) {
    const uint32_t b = queue[head];
    head = (head + 1) % queue.size();
    --pending;
    queued[b] = 0;
    const Block& block = blocks[b];
    Set out;
    for (uint32_t s = block.successorBegin; s < block.successorEnd; ++s) {
      out |= blockIn[nodeBlock[successorFirst[s]]];
    }
    Set live;
    if (!swept[b]) {
      blockOut[b] = out;
      live = sweep(b, true);
      swept[b] = 1;
    } else {
      if (out == blockOut[b]) continue;
      blockOut[b] = out;
      live = gen[b] | (out - kill[b]);
      swept[b] = 2;
    }
    if (live == blockIn[b]) continue;
    blockIn[b] = live;
    // Predecessors of a block that reaches the exit reach it too.
    for (uint32_t p = block.predecessorBegin; p < block.predecessorEnd; ++p) {
      const uint32_t predecessor = nodeBlock[predecessorLast[p]];
      if (queued[predecessor]) continue;
      queued[predecessor] = 1;
      queue[(head + pending) % queue.size()] = predecessor;
      ++pending;
    }
  }

  for (uint32_t b = 0; b < blocks.size(); ++b) {
    if (swept[b] == 2) sweep(b, false);
  }
}

const Invocation* PerInvocationCfg::GetInvocation(CfgNodeId node) const {
  const Block& b = blocks[nodeBlock[node]];
  const std::vector<const Invocation*>& invocations = b.block->GetInvocations();
  return invocations.empty() ? nullptr : invocations[node - b.firstNode];
}

CfgNodeLinks PerInvocationCfg::GetSuccessors(CfgNodeId node) const {
  const Block& b = blocks[nodeBlock[node]];
  if (node != LastNode(b)) return CfgNodeLinks(node + 1);
  return CfgNodeLinks(successorFirst.data() + b.successorBegin, b.successorEnd - b.successorBegin);
}

CfgNodeLinks PerInvocationCfg::GetPredecessors(CfgNodeId node) const {
  const Block& b = blocks[nodeBlock[node]];
  if (node != b.firstNode) return CfgNodeLinks(node - 1);
  return CfgNodeLinks(predecessorLast.data() + b.predecessorBegin,
                      b.predecessorEnd - b.predecessorBegin);
}

const PerInvocationCfg::Set& PerInvocationCfg::Def(CfgNodeId node) const {
  const Invocation* invocation = GetInvocation(node);
  return invocation ? invocation->GetUsedOperands(type).GetWritten() : kEmptySet;
}

const PerInvocationCfg::Set& PerInvocationCfg::Use(CfgNodeId node) const {
  const Invocation* invocation = GetInvocation(node);
  return invocation ? invocation->GetUsedOperands(type).GetRead() : kEmptySet;
}

const PerInvocationCfg::Set& PerInvocationCfg::Out(CfgNodeId node) const {
  const uint32_t b = nodeBlock[node];
  return node == LastNode(blocks[b]) ? blockOut[b] : in[node + 1];
}

std::vector<CfgNodeId> GatherDepthFirst(const PerInvocationCfg& cfg, CfgNodeId start,
                                        GatherOrder order) {
  std::vector<CfgNodeId> result;
  if (start >= cfg.Size()) return result;
  std::vector<char> visited(cfg.Size(), 0);
  std::vector<CfgNodeId> stack{start};
  while (!stack.empty()) {
    const CfgNodeId node = stack.back();
    stack.pop_back();
    if (visited[node]) continue;
    visited[node] = 1;
    result.push_back(node);
    const CfgNodeLinks neighbours =
        order == GatherOrder::Forward ? cfg.GetSuccessors(node) : cfg.GetPredecessors(node);
    for (CfgNodeId neighbour : neighbours) stack.push_back(neighbour);
  }
  return result;
}

}  // namespace vesk
