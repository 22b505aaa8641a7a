// Fixpoint iteration of the stall simulation over the basic-block graph and
// the ordering of its per-instruction results.
#include "stall/stall_analysis.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <queue>

#include <fmt/format.h>

#include "util/analysis_error.h"
#include "util/fatal_exit.h"

namespace vesk {

namespace {

// Cycles before the first instruction of a block can issue: a taken branch
// or jump refetches, falling through costs little.
constexpr int kBranchTargetDistance = 20;
constexpr int kFallThroughDistance = 2;

// Scalar register numbers are read up to s255, but the scalar register space
// ends with the special registers (s128 to s134 by number); the per-register
// tables of the simulation hold nothing beyond. An instruction naming such a
// register is rejected before it is simulated.
void CheckRegisterSpace(const InvocationDependencyInfo& info) {
  if (info.GetHighestRegister() < kRegisterIdCount) return;
  constexpr int kFirstOutside = kRegisterIdCount - kFirstSGPR;
  const int outside = std::min(info.GetWriteRegisters().GetSGPRSet().NextFrom(kFirstOutside),
                               info.GetReadRegisters().GetSGPRSet().NextFrom(kFirstOutside));
  if (outside >= UnifiedRegisterSet::Half::kWords * 64) return;
  const Invocation& invocation = info.GetInvocation();
  for (const std::string& operand : invocation.GetArgs()) {
    for (const Register& reg : Invocation::ParseRegister(operand)) {
      if (reg.type == SGPR && reg.index == outside)
        throw ListingError(invocation.GetSourceLine(),
                           fmt::format("scalar register s{} (operand '{}') is outside the "
                                       "register space",
                                       outside, operand));
    }
  }
  throw ListingError(invocation.GetSourceLine(),
                     fmt::format("scalar register s{} is outside the register space", outside));
}

}  // namespace

BasicBlockState::BasicBlockState(const BasicBlock& block_, StallWorkspace& workspace)
    : block(&block_), workspace_(&workspace) {
  const auto& invocations = block_.GetInvocations();
  infos_.reserve(invocations.size());
  for (const Invocation* invocation : invocations) {
    infos_.emplace_back(*invocation);
    CheckRegisterSpace(infos_.back());
  }
  stalls_.resize(invocations.size());
}

bool BasicBlockState::UpdateInputState(const BasicBlockState& predecessor) {
  HardwareState& merged = workspace_->merged;
  HardwareState& incoming = workspace_->incoming;
  merged.Unpack(input_state_);
  incoming.Unpack(predecessor.output_state_);
  const bool changed = merged.UpdateInput(incoming);
  // The merge rebuilds the counters even when it reports no change.
  merged.Pack(input_state_);
  ++input_updates_;
  return changed;
}

bool BasicBlockState::RunFixpointIterationStep(bool isStartBlock, bool isWave64,
                                               bool isBranchTarget) {
  simulated_updates_ = input_updates_;
  HardwareState& state = workspace_->working;
  state.Unpack(input_state_);
  // The cause of an instruction's largest stall is replaced with the stall.
  std::vector<StallCause>* causes = nullptr;
  if (!workspace_->causes.empty()) causes = &workspace_->causes[this - workspace_->firstState];
  StallCause cause;
  for (size_t i = 0; i < infos_.size(); ++i) {
    int distance = 0;
    if (i == 0)
      distance = isBranchTarget ? kBranchTargetDistance : (isStartBlock ? 0 : kFallThroughDistance);
    const StallDescription stall =
        state.Step(infos_[i], distance, isWave64, causes != nullptr ? &cause : nullptr);
    if (stall.length > stalls_[i].first.length) {
      stalls_[i].first = stall;
      if (causes != nullptr) (*causes)[i] = cause;
    }
    if (stall.length < stalls_[i].second.length) stalls_[i].second = stall;
  }
  PackedHardwareState& exit = workspace_->packed;
  state.Pack(exit);
  if (exit == output_state_) return false;
  std::swap(output_state_, exit);
  return true;
}

void BasicBlockState::ReleaseSimulationData() {
  input_state_.Release();
  output_state_.Release();
  std::vector<InvocationDependencyInfo>().swap(infos_);
}

int RunFixpointIteration(const BasicBlockStateMap& states,
                         const std::unordered_set<std::string>& usedLabels, bool isWave64,
                         std::vector<BasicBlockState>& allStates, BasicBlockState* startState) {
  if (startState == nullptr) ExitFatally("Error: Could not find start basic block. Aborting.");

  // The walk of a pass does not depend on what changes: breadth-first from
  // the start block, each block at its first appearance. Number the blocks
  // in that order once; a pass then visits, in rising number, only the
  // blocks whose entry state changed.
  std::vector<BasicBlockState*> order;
  std::unordered_map<const BasicBlockState*, int> rank;
  rank.reserve(allStates.size());
  order.push_back(startState);
  rank.emplace(startState, 0);
  for (size_t head = 0; head < order.size(); ++head) {
    for (const BasicBlock* successor : order[head]->GetBasicBlock()->GetSuccessors()) {
      BasicBlockState* next = states.at(successor);
      if (next == nullptr)
        ExitFatally("Error: Could not determine state of basic block. Aborting.");
      if (rank.emplace(next, static_cast<int>(order.size())).second) order.push_back(next);
    }
  }
  const size_t count = order.size();
  std::vector<std::vector<int>> successorRanks(count);
  std::vector<char> isBranchTarget(count);
  for (size_t r = 0; r < count; ++r) {
    const BasicBlock* block = order[r]->GetBasicBlock();
    isBranchTarget[r] = usedLabels.count(block->GetLabel()) != 0;
    for (const BasicBlock* successor : block->GetSuccessors())
      successorRanks[r].push_back(rank.at(states.at(successor)));
  }

  // A block is simulated in a pass when a merge changed its entry state in
  // the previous pass, or earlier in this pass (before its turn); every
  // block is simulated in the first pass. A block whose entry state is the
  // one it was last simulated from is skipped: it would repeat itself.
  std::vector<int> thisPass(count);
  for (size_t r = 0; r < count; ++r) thisPass[r] = static_cast<int>(r);
  std::vector<int> nextPass;
  std::vector<char> inThisPass(count, 1);
  std::vector<char> inNextPass(count, 0);
  std::priority_queue<int, std::vector<int>, std::greater<int>> queue(std::greater<int>(),
                                                                      std::move(thisPass));
  int passes = 0;
  bool changed = true;
  while (changed) {
    ++passes;
    changed = false;
    while (!queue.empty()) {
      const int r = queue.top();
      queue.pop();
      inThisPass[r] = 0;
      BasicBlockState* state = order[r];
      if (!state->InputChangedSinceLastRun()) continue;
      if (!state->RunFixpointIterationStep(r == 0, isWave64, isBranchTarget[r] != 0)) continue;
      changed = true;
      for (const int s : successorRanks[r]) {
        if (!order[s]->UpdateInputState(*state)) continue;
        if (!inNextPass[s]) {
          inNextPass[s] = 1;
          nextPass.push_back(s);
        }
        if (s > r && !inThisPass[s]) {
          inThisPass[s] = 1;
          queue.push(s);
        }
      }
    }
    for (const int s : nextPass) {
      inNextPass[s] = 0;
      inThisPass[s] = 1;
      queue.push(s);
    }
    nextPass.clear();
  }
  return passes;
}

StallCycleAnalysis::Result StallCycleAnalysis::AnalyzeStallCycles(
    const std::vector<Invocation>& invocations, bool isWave64, int* passes,
    std::vector<StallCause>* causes) {
  const std::unordered_set<std::string> usedLabels = GetUsedLabels(invocations);
  const BasicBlockList blocks = CreateBasicBlocksFromInvocations(invocations);

  auto workspace = std::make_unique<StallWorkspace>();
  std::vector<BasicBlockState> states;
  states.reserve(blocks.size());
  BasicBlockStateMap stateOf;
  for (const auto& block : blocks) {
    states.emplace_back(*block, *workspace);
    stateOf.emplace(block.get(), &states.back());
  }
  if (causes != nullptr) {
    // The states never move (reserved above), so a state's position in the
    // sequence finds its causes.
    workspace->firstState = states.data();
    workspace->causes.resize(states.size());
    for (size_t i = 0; i < states.size(); ++i)
      workspace->causes[i].resize(states[i].GetStalls().size());
  }

  BasicBlockState* start = nullptr;
  for (const auto& block : blocks) {
    if (block->IsEntry()) {
      if (!block->GetSuccessors().empty()) start = stateOf.at(block->GetSuccessors().front());
      break;
    }
  }
  const int passCount = RunFixpointIteration(stateOf, usedLabels, isWave64, states, start);
  if (passes != nullptr) *passes = passCount;
  // The result needs only the stalls: free the states and the dependency
  // records before it is built.
  for (BasicBlockState& state : states) state.ReleaseSimulationData();
  return FormatOutput(blocks, stateOf, workspace.get(), causes);
}

StallCycleAnalysis::Result StallCycleAnalysis::FormatOutput(const BasicBlockList& blocks,
                                                            const BasicBlockStateMap& states,
                                                            const StallWorkspace* workspace,
                                                            std::vector<StallCause>* causes) {
  const bool withCauses = causes != nullptr && workspace != nullptr && !workspace->causes.empty();
  if (causes != nullptr) causes->clear();
  // The instructions reported are those of the per-instruction graph that
  // lead to the program's end: blocks reached from the entry block from
  // which the exit block can be reached. Within a block every instruction
  // leads on to the block's end, so the choice is made per block; the
  // result is ordered by block, then by position in the block.
  const BasicBlock* entry = nullptr;
  const BasicBlock* exit = nullptr;
  for (const auto& block : blocks) {
    if (entry == nullptr && block->IsEntry()) entry = block.get();
    if (block->IsExit()) exit = block.get();
  }
  std::unordered_set<const BasicBlock*> reached;
  if (entry != nullptr) {
    std::vector<const BasicBlock*> stack{entry};
    reached.insert(entry);
    while (!stack.empty()) {
      const BasicBlock* block = stack.back();
      stack.pop_back();
      for (const BasicBlock* successor : block->GetSuccessors())
        if (reached.insert(successor).second) stack.push_back(successor);
    }
  }
  if (exit == nullptr || reached.count(exit) == 0)
    throw AnalysisError("The end of the program is unreachable from its entry (endless loop).");
  std::unordered_set<const BasicBlock*> leadsToExit{exit};
  std::vector<const BasicBlock*> stack{exit};
  while (!stack.empty()) {
    const BasicBlock* block = stack.back();
    stack.pop_back();
    for (const BasicBlock* predecessor : block->GetPredecessors())
      if (reached.count(predecessor) != 0 && leadsToExit.insert(predecessor).second)
        stack.push_back(predecessor);
  }

  size_t rows = 0;
  for (const auto& block : blocks)
    if (leadsToExit.count(block.get()) != 0) rows += block->GetInvocations().size();
  Result result;
  result.reserve(rows);
  if (withCauses) causes->reserve(rows);
  for (const auto& block : blocks) {
    if (leadsToExit.count(block.get()) == 0) continue;
    const BasicBlockState* state = states.at(block.get());
    const auto& stalls = state->GetStalls();
    const auto& invocations = block->GetInvocations();
    for (size_t i = 0; i < invocations.size(); ++i) result.emplace_back(invocations[i], stalls[i]);
    if (withCauses) {
      const auto& blockCauses = workspace->causes[state - workspace->firstState];
      causes->insert(causes->end(), blockCauses.begin(), blockCauses.end());
    }
  }
  if (causes != nullptr && !withCauses) causes->assign(result.size(), StallCause{});
  return result;
}

}  // namespace vesk
