// The per-instruction control-flow graph of one register class: one node per
// instruction, lowered from the basic-block graph, with the backward liveness
// sets (live-in and live-out) solved when the graph is built.
#pragma once

#include <memory>
#include <vector>

#include "cfg/basic_block.h"
#include "isa/invocation.h"
#include "isa/registers.h"

namespace vesk {

// Which links a depth-first walk follows.
enum class GatherOrder : int { Forward = 0, Backward = 1 };

class PerInvocationCfgNode {
 public:
  using Set = SmallIntSet<256>;

  // `invocation` is null for the single node standing for an empty block
  // ("entry", "exit").
  static std::unique_ptr<PerInvocationCfgNode> Create(const Invocation* invocation,
                                                      const BasicBlock* block, int order,
                                                      RegisterType type);
  // Appends `to` to the successors of `from` and `from` to the predecessors
  // of `to`; duplicate links are kept.
  static void Link(PerInvocationCfgNode* from, PerInvocationCfgNode* to);

  const Invocation* GetInvocation() const { return invocation; }
  const BasicBlock* GetBasicBlock() const { return block; }
  int GetOrder() const { return order; }
  RegisterType GetRegisterType() const { return type; }
  std::vector<PerInvocationCfgNode*>& GetSuccessors() { return successors; }
  const std::vector<PerInvocationCfgNode*>& GetSuccessors() const { return successors; }
  std::vector<PerInvocationCfgNode*>& GetPredecessors() { return predecessors; }
  const std::vector<PerInvocationCfgNode*>& GetPredecessors() const { return predecessors; }
  const Set& In() const { return in; }
  const Set& Out() const { return out; }
  // The node's position in its graph's node list (GetNodes), so that per-node
  // tables can be plain vectors; -1 for a node outside a graph.
  int GetIndex() const { return index; }

  // Registers of the node's class the instruction writes / reads; empty for
  // a node without instruction.
  const Set& Def() const;
  const Set& Use() const;

  // One backward dataflow step each; true when the set gained members.
  // out = out | in(successor) for every successor.
  bool UpdateOut();
  // in = use | (out - def).
  bool UpdateIn();

 private:
  PerInvocationCfgNode(const Invocation* invocation, const BasicBlock* block, int order,
                       RegisterType type);
  friend class PerInvocationCfg;

  const Invocation* invocation;
  const BasicBlock* block;
  int order;
  RegisterType type;
  int index = -1;
  Set in;
  Set out;
  std::vector<PerInvocationCfgNode*> successors;
  std::vector<PerInvocationCfgNode*> predecessors;
};

class PerInvocationCfg {
 public:
  using NodeList = std::vector<std::unique_ptr<PerInvocationCfgNode>>;

  // Lowers every block reachable from `entry` and solves liveness for the
  // registers of `type`. Throws AnalysisError when the program's end cannot
  // be reached from its entry (an endless loop), since liveness flows
  // backward from the end.
  PerInvocationCfg(const BasicBlock* entry, RegisterType type);

  // The node of the entry block.
  PerInvocationCfgNode* GetRoot() const { return root; }
  // The node without successors: the node of the "exit" block.
  PerInvocationCfgNode* GetExit() const { return exit; }
  // All nodes, in the order they were created.
  const NodeList& GetNodes() const { return nodes; }
  // The nodes that reach the exit, in the depth-first pre-order from the exit
  // along predecessor links (GatherDepthFirst(GetExit(), Backward)).
  const std::vector<PerInvocationCfgNode*>& GetBackwardOrder() const { return backwardOrder; }

 private:
  PerInvocationCfgNode* root = nullptr;
  NodeList nodes;
  PerInvocationCfgNode* exit = nullptr;
  std::vector<PerInvocationCfgNode*> backwardOrder;
};

// Dense numbers 0..n-1 for a list of nodes, looked up by node pointer, so
// that per-node tables can be plain vectors. Open addressing over one array.
class PerInvocationCfgNodeIndex {
 public:
  explicit PerInvocationCfgNodeIndex(const std::vector<const PerInvocationCfgNode*>& nodes);
  // The node's position in the list given at construction, or -1.
  int Find(const PerInvocationCfgNode* node) const;
  int Size() const { return size; }

 private:
  std::vector<const PerInvocationCfgNode*> keys;
  std::vector<int> values;
  size_t mask = 0;
  int size = 0;
};

// Depth-first pre-order from `start`, following successors (Forward) or
// predecessors (Backward); of a node's neighbours the last one listed is
// explored first.
std::vector<PerInvocationCfgNode*> GatherDepthFirst(PerInvocationCfgNode* start, GatherOrder order);
std::vector<const PerInvocationCfgNode*> GatherDepthFirst(const PerInvocationCfgNode* start,
                                                          GatherOrder order);

}  // namespace vesk
