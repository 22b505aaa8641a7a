// Collects the solved liveness sets of the per-instruction graph in program
// order, optionally hiding registers that are live before their first write.
#include "liveness/liveness_analysis.h"

#include <algorithm>
#include <unordered_map>

#include "cfg/basic_block.h"
#include "cfg/per_instruction_cfg.h"
#include "util/string_helpers.h"

namespace vesk {

namespace {

using Set = RegisterState::Set;

// A graph node with its position in the program, for sorting.
struct Node {
  int blockOrder;
  int nodeOrder;
  const PerInvocationCfgNode* node;
};

// For every collected node, the registers that are live at the program start
// and not yet written on the way to it. Registers the hardware preloads (or
// that are read uninitialised) show up as live from the very first line; this
// single forward pass from the entry strips them until their first write.
// Each node is settled at its first visit: a predecessor not visited yet (the
// source of a loop's back edge) adds what it holds at that moment.
std::unordered_map<const PerInvocationCfgNode*, Set> FindUnwrittenRegisters(
    const std::vector<const PerInvocationCfgNode*>& collected) {
  std::unordered_map<const PerInvocationCfgNode*, Set> unwritten;
  unwritten.reserve(collected.size());
  std::vector<const PerInvocationCfgNode*> queue;
  for (const PerInvocationCfgNode* node : collected) {
    if (node->GetPredecessors().empty()) {
      unwritten[node] = node->In();
      queue.push_back(node);
    } else {
      unwritten[node] = Set();
    }
  }

  std::unordered_map<const PerInvocationCfgNode*, bool> visited;
  visited.reserve(collected.size());
  for (size_t head = 0; head < queue.size(); ++head) {
    const PerInvocationCfgNode* node = queue[head];
    bool& seen = visited[node];
    if (seen) continue;
    seen = true;
    // Successors that cannot reach the end of the program are not part of
    // the result and cannot feed a node that is; they are left out.
    auto own = unwritten.find(node);
    if (own == unwritten.end()) continue;
    Set merged = own->second;
    for (const PerInvocationCfgNode* predecessor : node->GetPredecessors()) {
      merged |= unwritten[predecessor];
    }
    merged -= node->Def();
    own->second = merged;
    for (const PerInvocationCfgNode* successor : node->GetSuccessors()) queue.push_back(successor);
  }
  return unwritten;
}

}  // namespace

RegisterStates LivenessAnalysis::Analyze(const std::vector<Invocation>& invocations,
                                         RegisterType type, LivenessAnalysisOptions options) {
  const BasicBlockList blocks = CreateBasicBlocksFromInvocations(invocations);
  const PerInvocationCfg cfg(blocks.front().get(), type);

  const std::vector<const PerInvocationCfgNode*> collected = GatherDepthFirst(
      static_cast<const PerInvocationCfgNode*>(cfg.GetExit()), GatherOrder::Backward);

  std::vector<Node> sorted;
  sorted.reserve(collected.size());
  for (const PerInvocationCfgNode* node : collected) {
    sorted.push_back({node->GetBasicBlock()->GetOrder(), node->GetOrder(), node});
  }
  std::sort(sorted.begin(), sorted.end(), [](const Node& a, const Node& b) {
    if (a.blockOrder != b.blockOrder) return a.blockOrder < b.blockOrder;
    return a.nodeOrder < b.nodeOrder;
  });

  std::unordered_map<const PerInvocationCfgNode*, Set> unwritten;
  if (options.removeStartLines) unwritten = FindUnwrittenRegisters(collected);

  RegisterStates states;
  states.reserve(sorted.size());
  for (const Node& entry : sorted) {
    const PerInvocationCfgNode* node = entry.node;
    Set hidden;
    if (auto found = unwritten.find(node); found != unwritten.end()) hidden = found->second;
    const Set live = (node->In() | node->Out()) - hidden;
    const Set read = node->Use() - hidden;
    // A write is always shown, even of a register hidden as unwritten.
    states.emplace_back(node->GetInvocation(), RegisterState(read, node->Def(), live));
  }
  return states;
}

RegisterUsage LivenessAnalysis::GetRegisterUsage(const RegisterStates& states) {
  RegisterUsage usage;
  for (const auto& [invocation, state] : states) {
    const Set& live = state.Live();
    usage.maxLiveCount = std::max(usage.maxLiveCount, live.Count());
    if (!live.IsEmpty()) usage.maxRegisterIndex = std::max(usage.maxRegisterIndex, live.Last());
  }
  return usage;
}

std::string LivenessAnalysis::FormatRegisterUsage(
    const std::pair<const Invocation*, RegisterState>& state, RegisterUsage usage) {
  const Invocation* invocation = state.first;
  if (!invocation) return std::string();
  const RegisterState& registers = state.second;
  std::string columns;
  columns.reserve(static_cast<size_t>(usage.maxRegisterIndex) + 1);
  for (int r = 0; r <= usage.maxRegisterIndex; ++r) {
    const bool read = registers.Read().Contains(r);
    const bool written = registers.Written().Contains(r);
    if (read && written) {
      columns += 'x';
    } else if (read) {
      columns += 'v';
    } else if (written) {
      columns += '^';
    } else if (registers.Live().Contains(r)) {
      columns += ':';
    } else {
      columns += ' ';
    }
  }
  return LeftPad(registers.Live().Count(), 3) + " | " + columns + " | " + invocation->ToString();
}

}  // namespace vesk
