// The per-instruction control-flow graph of one register class: one node per
// instruction, lowered from the basic-block graph, with the backward liveness
// sets (live-in and live-out) solved when the graph is built.
//
// Nodes are numbered densely in the order they are created; the nodes of one
// block have consecutive numbers, so a node inside a block needs no link
// storage of its own (its neighbours are the numbers next to it) and only the
// block boundaries keep link lists.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "cfg/basic_block.h"
#include "isa/invocation.h"
#include "isa/registers.h"

namespace vesk {

// Which links a depth-first walk follows.
enum class GatherOrder : int { Forward = 0, Backward = 1 };

// A node's number in its graph.
using CfgNodeId = uint32_t;

// The successors or predecessors of one node, in link order (duplicates
// kept). A view into the graph, or the single neighbour held in place.
class CfgNodeLinks {
 public:
  CfgNodeLinks(const CfgNodeId* list, size_t count) : list_(list), count_(count) {}
  explicit CfgNodeLinks(CfgNodeId single) : single_(single), count_(1) {}

  const CfgNodeId* begin() const { return list_ ? list_ : &single_; }
  const CfgNodeId* end() const { return begin() + count_; }
  size_t size() const { return count_; }
  bool empty() const { return count_ == 0; }
  CfgNodeId operator[](size_t i) const { return begin()[i]; }

 private:
  const CfgNodeId* list_ = nullptr;
  CfgNodeId single_ = 0;
  size_t count_ = 0;
};

class PerInvocationCfg {
 public:
  using Set = SmallIntSet<256>;

  // Lowers every block reachable from `entry` and solves liveness for the
  // registers of `type`. Throws AnalysisError when the program's end cannot
  // be reached from its entry (an endless loop), since liveness flows
  // backward from the end.
  PerInvocationCfg(const BasicBlock* entry, RegisterType type);

  // Number of nodes: one per instruction of every reachable block, one for
  // each reachable empty block.
  size_t Size() const { return nodeBlock.size(); }
  RegisterType GetRegisterType() const { return type; }

  // The node of the entry block (the first node created).
  CfgNodeId GetRoot() const { return 0; }
  // The node without successors: the node of the "exit" block.
  CfgNodeId GetExit() const { return exit; }

  // Null for the node of an empty block ("entry", "exit").
  const Invocation* GetInvocation(CfgNodeId node) const;
  const BasicBlock* GetBasicBlock(CfgNodeId node) const { return blocks[nodeBlock[node]].block; }
  // The instruction's index in its block (0 for the node of an empty block).
  int GetOrder(CfgNodeId node) const {
    return static_cast<int>(node - blocks[nodeBlock[node]].firstNode);
  }
  CfgNodeLinks GetSuccessors(CfgNodeId node) const;
  CfgNodeLinks GetPredecessors(CfgNodeId node) const;

  // Registers of the graph's class the instruction writes / reads; empty for
  // a node without instruction.
  const Set& Def(CfgNodeId node) const;
  const Set& Use(CfgNodeId node) const;
  // Live on entry to / on exit from the node; empty for a node that does
  // not reach the exit.
  const Set& In(CfgNodeId node) const { return in[node]; }
  const Set& Out(CfgNodeId node) const;
  // True when the exit can be reached from the node.
  bool ReachesExit(CfgNodeId node) const { return blocks[nodeBlock[node]].reachesExit; }

  // The nodes that reach the exit, in the depth-first pre-order from the exit
  // along predecessor links (GatherDepthFirst(*this, GetExit(), Backward)).
  const std::vector<CfgNodeId>& GetBackwardOrder() const { return backwardOrder; }

 private:
  // One lowered block: its nodes are firstNode .. firstNode + nodeCount - 1.
  // The links of its last node are successorFirst[successorBegin ..
  // successorEnd) (first nodes of the successor blocks, in successor order),
  // those of its first node predecessorLast[predecessorBegin ..
  // predecessorEnd) (last nodes of the predecessor blocks, in link order).
  struct Block {
    const BasicBlock* block;
    CfgNodeId firstNode;
    uint32_t nodeCount;
    uint32_t successorBegin = 0;
    uint32_t successorEnd = 0;
    uint32_t predecessorBegin = 0;
    uint32_t predecessorEnd = 0;
    bool reachesExit = false;
  };

  void Lower(const BasicBlock* entry);
  CfgNodeId FindExit() const;
  void Solve();

  CfgNodeId LastNode(const Block& b) const { return b.firstNode + b.nodeCount - 1; }

  RegisterType type;
  std::vector<Block> blocks;
  // The lowered block of every node.
  std::vector<uint32_t> nodeBlock;
  std::vector<CfgNodeId> successorFirst;
  std::vector<CfgNodeId> predecessorLast;
  CfgNodeId exit = 0;
  std::vector<CfgNodeId> backwardOrder;
  // Live-in of every node; live-out of every block's last node.
  std::vector<Set> in;
  std::vector<Set> blockOut;
};

// Depth-first pre-order from `start`, following successors (Forward) or
// predecessors (Backward); of a node's neighbours the last one listed is
// explored first.
std::vector<CfgNodeId> GatherDepthFirst(const PerInvocationCfg& cfg, CfgNodeId start,
                                        GatherOrder order);

}  // namespace vesk
