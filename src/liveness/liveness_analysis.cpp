// Collects the solved liveness sets of the per-instruction graph in program
// order, optionally hiding registers that are live before their first write.
#include "liveness/liveness_analysis.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include "cfg/basic_block.h"
#include "cfg/per_instruction_cfg.h"
#include "util/string_helpers.h"

namespace vesk {

namespace {

using Set = RegisterState::Set;

// For every node that reaches the program's end (by node number), the
// registers that are live at the program start and not yet written on the
// way to it. Registers the hardware preloads (or that are read
// uninitialised) show up as live from the very first line; this single
// forward pass from the entry strips them until their first write. Each node
// is settled at its first visit: a predecessor not visited yet (the source of
// a loop's back edge) adds what it holds at that moment.
std::vector<Set> FindUnwrittenRegisters(const PerInvocationCfg& cfg) {
  std::vector<Set> unwritten(cfg.Size());
  std::vector<CfgNodeId> queue;
  for (CfgNodeId node : cfg.GetBackwardOrder()) {
    if (cfg.GetPredecessors(node).empty()) {
      unwritten[node] = cfg.In(node);
      queue.push_back(node);
    }
  }

  std::vector<char> visited(cfg.Size(), 0);
  for (size_t head = 0; head < queue.size(); ++head) {
    const CfgNodeId node = queue[head];
    if (visited[node]) continue;
    visited[node] = 1;
    Set merged = unwritten[node];
    // Predecessors of a node that reaches the end reach it too.
    for (CfgNodeId predecessor : cfg.GetPredecessors(node)) merged |= unwritten[predecessor];
    merged -= cfg.Def(node);
    unwritten[node] = merged;
    // Successors that cannot reach the end of the program are not part of
    // the result and cannot feed a node that is; they are left out.
    for (CfgNodeId successor : cfg.GetSuccessors(node)) {
      if (cfg.ReachesExit(successor)) queue.push_back(successor);
    }
  }
  return unwritten;
}

// Member count without a library call per word (the build targets no
// particular population-count instruction).
int CountMembers(const Set& set) {
  int count = 0;
  for (uint64_t word : set.Words()) {
    word = word - ((word >> 1) & 0x5555555555555555ull);
    word = (word & 0x3333333333333333ull) + ((word >> 2) & 0x3333333333333333ull);
    word = (word + (word >> 4)) & 0x0F0F0F0F0F0F0F0Full;
    count += static_cast<int>((word * 0x0101010101010101ull) >> 56);
  }
  return count;
}

// The report characters of four consecutive registers, indexed by their
// live bits | written bits << 4 | read bits << 8 (lowest register in the
// lowest bit): 'x' read and written, 'v' read, '^' written, ':' live, else a
// blank.
struct ColumnTable {
  char text[4096][4];
  ColumnTable() {
    for (int index = 0; index < 4096; ++index) {
      for (int bit = 0; bit < 4; ++bit) {
        const bool live = (index >> bit) & 1;
        const bool written = (index >> (4 + bit)) & 1;
        const bool read = (index >> (8 + bit)) & 1;
        text[index][bit] = read && written ? 'x' : read ? 'v' : written ? '^' : live ? ':' : ' ';
      }
    }
  }
};

unsigned Nibble(const Set& set, int first) {
  return static_cast<unsigned>(set.Words()[first >> 6] >> (first & 63)) & 0xF;
}

}  // namespace

LivenessStates::LivenessStates(const std::vector<Invocation>& invocations, RegisterType type,
                               LivenessAnalysisOptions options)
    : blocks_(CreateBasicBlocksFromInvocations(invocations)),
      cfg_(std::make_unique<PerInvocationCfg>(blocks_.front().get(), type)) {
  const PerInvocationCfg& cfg = *cfg_;
  // Program order: by block, then by place in the block. A block's nodes
  // have consecutive numbers in place order and either all reach the end of
  // the program or none, so it is enough to order the blocks, found by their
  // first node in the backward walk.
  struct Keyed {
    int blockOrder;
    CfgNodeId firstNode;
  };
  std::vector<Keyed> starts;
  for (CfgNodeId node : cfg.GetBackwardOrder()) {
    if (cfg.GetOrder(node) == 0) starts.push_back({cfg.GetBasicBlock(node)->GetOrder(), node});
  }
  std::stable_sort(starts.begin(), starts.end(),
                   [](const Keyed& a, const Keyed& b) { return a.blockOrder < b.blockOrder; });
  sorted_.reserve(cfg.GetBackwardOrder().size());
  for (const Keyed& start : starts) {
    CfgNodeId node = start.firstNode;
    do {
      sorted_.push_back(node++);
    } while (node < cfg.Size() && cfg.GetOrder(node) != 0);
  }

  if (options.removeStartLines) unwritten_ = FindUnwrittenRegisters(cfg);
}

LivenessStates::~LivenessStates() = default;

std::pair<const Invocation*, RegisterState> LivenessStates::Get(size_t i) const {
  const CfgNodeId node = sorted_[i];
  const Invocation* invocation = cfg_->GetInvocation(node);
  Set live = cfg_->In(node) | cfg_->Out(node);
  if (!invocation)
    return {nullptr,
            RegisterState(Set(), Set(), unwritten_.empty() ? live : live - unwritten_[node])};
  const InstructionOperands& operands = invocation->GetUsedOperands(cfg_->GetRegisterType());
  if (unwritten_.empty())
    return {invocation, RegisterState(operands.GetRead(), operands.GetWritten(), live)};
  // A write is always shown, even of a register hidden as unwritten.
  const Set& hidden = unwritten_[node];
  return {invocation,
          RegisterState(operands.GetRead() - hidden, operands.GetWritten(), live - hidden)};
}

RegisterState::Set LivenessStates::Live(size_t i) const {
  const CfgNodeId node = sorted_[i];
  const Set live = cfg_->In(node) | cfg_->Out(node);
  return unwritten_.empty() ? live : live - unwritten_[node];
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
    const Set live = states.Live(i);
    usage.maxLiveCount = std::max(usage.maxLiveCount, CountMembers(live));
    if (!live.IsEmpty()) usage.maxRegisterIndex = std::max(usage.maxRegisterIndex, live.Last());
  }
  return usage;
}

RegisterUsage LivenessAnalysis::GetRegisterUsage(const RegisterStates& states) {
  RegisterUsage usage;
  for (const auto& [invocation, state] : states) {
    const Set& live = state.Live();
    usage.maxLiveCount = std::max(usage.maxLiveCount, CountMembers(live));
    if (!live.IsEmpty()) usage.maxRegisterIndex = std::max(usage.maxRegisterIndex, live.Last());
  }
  return usage;
}

void LivenessAnalysis::AppendRegisterUsage(std::string& line,
                                           const std::pair<const Invocation*, RegisterState>& state,
                                           RegisterUsage usage) {
  static const ColumnTable table;
  const Invocation* invocation = state.first;
  if (!invocation) return;
  const RegisterState& registers = state.second;
  AppendLeftPadded(line, CountMembers(registers.Live()), 3);
  line += " | ";
  // One column per register up to the highest live one, four at a time;
  // columns beyond the register file stay blank.
  const int columns = usage.maxRegisterIndex + 1;
  const int tracked = std::min(columns, Set::kWords * 64);
  const size_t first = line.size();
  line.resize(first + ((static_cast<size_t>(tracked) + 3) & ~size_t{3}));
  char* column = line.data() + first;
  for (int r = 0; r < tracked; r += 4) {
    const unsigned index = Nibble(registers.Live(), r) | Nibble(registers.Written(), r) << 4 |
                           Nibble(registers.Read(), r) << 8;
    std::memcpy(column + r, table.text[index], 4);
  }
  line.resize(first + static_cast<size_t>(tracked));
  if (columns > tracked) line.append(static_cast<size_t>(columns - tracked), ' ');
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
