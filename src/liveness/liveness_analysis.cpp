// Collects the solved liveness sets of the per-instruction graph in program
// order, optionally hiding registers that are live before their first write.
#include "liveness/liveness_analysis.h"

#include <algorithm>
#include <cstdint>
#include <memory>

#include "cfg/basic_block.h"
#include "cfg/per_instruction_cfg.h"
#include "util/string_helpers.h"

namespace vesk {

namespace {

using Set = RegisterState::Set;

// For every collected node (by its position in `collected`), the registers
// that are live at the program start and not yet written on the way to it.
// Registers the hardware preloads (or that are read uninitialised) show up as
// live from the very first line; this single forward pass from the entry
// strips them until their first write. Each node is settled at its first
// visit: a predecessor not visited yet (the source of a loop's back edge)
// adds what it holds at that moment.
std::vector<Set> FindUnwrittenRegisters(const std::vector<PerInvocationCfgNode*>& collected,
                                        size_t nodeCount) {
  // Position in `collected` by node index; -1 for nodes that do not reach the
  // end of the program.
  std::vector<int> positionOf(nodeCount, -1);
  for (size_t i = 0; i < collected.size(); ++i) {
    positionOf[collected[i]->GetIndex()] = static_cast<int>(i);
  }
  std::vector<Set> unwritten(collected.size());
  std::vector<int> queue;
  for (size_t i = 0; i < collected.size(); ++i) {
    if (collected[i]->GetPredecessors().empty()) {
      unwritten[i] = collected[i]->In();
      queue.push_back(static_cast<int>(i));
    }
  }

  std::vector<bool> visited(collected.size(), false);
  for (size_t head = 0; head < queue.size(); ++head) {
    const int position = queue[head];
    if (visited[position]) continue;
    visited[position] = true;
    const PerInvocationCfgNode* node = collected[position];
    Set merged = unwritten[position];
    // Predecessors of a collected node are collected too: they reach the
    // end of the program through it.
    for (const PerInvocationCfgNode* predecessor : node->GetPredecessors()) {
      merged |= unwritten[positionOf[predecessor->GetIndex()]];
    }
    merged -= node->Def();
    unwritten[position] = merged;
    // Successors that cannot reach the end of the program are not part of
    // the result and cannot feed a node that is; they are left out.
    for (const PerInvocationCfgNode* successor : node->GetSuccessors()) {
      const int next = positionOf[successor->GetIndex()];
      if (next >= 0) queue.push_back(next);
    }
  }
  return unwritten;
}

}  // namespace

LivenessStates::LivenessStates(const std::vector<Invocation>& invocations, RegisterType type,
                               LivenessAnalysisOptions options)
    : blocks_(CreateBasicBlocksFromInvocations(invocations)),
      cfg_(std::make_unique<PerInvocationCfg>(blocks_.front().get(), type)) {
  // The depth-first order from the exit along predecessor links, which the
  // graph has already gathered for its solve.
  const std::vector<PerInvocationCfgNode*>& collected = cfg_->GetBackwardOrder();

  // Program order: by block, then by place in the block (unique per node).
  struct Keyed {
    uint64_t key;
    uint32_t position;
  };
  std::vector<Keyed> keyed(collected.size());
  for (size_t i = 0; i < collected.size(); ++i) {
    const PerInvocationCfgNode* node = collected[i];
    const uint64_t block = static_cast<uint32_t>(node->GetBasicBlock()->GetOrder());
    const uint64_t place = static_cast<uint32_t>(node->GetOrder());
    keyed[i] = {(block << 32) | place, static_cast<uint32_t>(i)};
  }
  std::sort(keyed.begin(), keyed.end(),
            [](const Keyed& a, const Keyed& b) { return a.key < b.key; });
  sorted_.resize(keyed.size());
  for (size_t i = 0; i < keyed.size(); ++i) sorted_[i] = keyed[i].position;
  std::vector<Keyed>().swap(keyed);

  if (options.removeStartLines) {
    unwritten_ = FindUnwrittenRegisters(collected, cfg_->GetNodes().size());
  }
}

LivenessStates::~LivenessStates() = default;

std::pair<const Invocation*, RegisterState> LivenessStates::Get(size_t i) const {
  const size_t position = sorted_[i];
  const PerInvocationCfgNode* node = cfg_->GetBackwardOrder()[position];
  const Set hidden = unwritten_.empty() ? Set() : unwritten_[position];
  const Set live = (node->In() | node->Out()) - hidden;
  const Set read = node->Use() - hidden;
  // A write is always shown, even of a register hidden as unwritten.
  return {node->GetInvocation(), RegisterState(read, node->Def(), live)};
}

RegisterStates LivenessAnalysis::Analyze(const std::vector<Invocation>& invocations,
                                         RegisterType type, LivenessAnalysisOptions options) {
  const LivenessStates computed(invocations, type, options);
  RegisterStates states;
  states.reserve(computed.Size());
  for (size_t i = 0; i < computed.Size(); ++i) states.push_back(computed.Get(i));
  return states;
}

RegisterUsage LivenessAnalysis::GetRegisterUsage(const LivenessStates& states) {
  RegisterUsage usage;
  for (size_t i = 0; i < states.Size(); ++i) {
    const Set live = states.Get(i).second.Live();
    usage.maxLiveCount = std::max(usage.maxLiveCount, live.Count());
    if (!live.IsEmpty()) usage.maxRegisterIndex = std::max(usage.maxRegisterIndex, live.Last());
  }
  return usage;
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

void LivenessAnalysis::AppendRegisterUsage(std::string& line,
                                           const std::pair<const Invocation*, RegisterState>& state,
                                           RegisterUsage usage) {
  const Invocation* invocation = state.first;
  if (!invocation) return;
  const RegisterState& registers = state.second;
  AppendLeftPadded(line, registers.Live().Count(), 3);
  line += " | ";
  // One column per register up to the highest live one: blank, then ':' for
  // live, '^' for written, 'v' for read, 'x' for both, later marks winning.
  const int columns = usage.maxRegisterIndex + 1;
  const size_t first = line.size();
  line.append(static_cast<size_t>(columns), ' ');
  char* column = line.data() + first;
  const auto mark = [&](const Set& set, char symbol) {
    for (int r = set.NextFrom(0); r < columns; r = set.NextFrom(r + 1)) column[r] = symbol;
  };
  mark(registers.Live(), ':');
  mark(registers.Written(), '^');
  mark(registers.Read(), 'v');
  for (int r = registers.Read().NextFrom(0); r < columns; r = registers.Read().NextFrom(r + 1)) {
    if (registers.Written().Contains(r)) column[r] = 'x';
  }
  line += " | ";
  invocation->AppendText(line, true, false);
}

std::string LivenessAnalysis::FormatRegisterUsage(
    const std::pair<const Invocation*, RegisterState>& state, RegisterUsage usage) {
  std::string line;
  AppendRegisterUsage(line, state, usage);
  return line;
}

}  // namespace vesk
