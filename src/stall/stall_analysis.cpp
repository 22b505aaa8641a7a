// Fixpoint iteration of the stall simulation over the basic-block graph and
// the ordering of its per-instruction results.
#include "stall/stall_analysis.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>

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

void BasicBlockState::UpdateInputState(const BasicBlockState& predecessor) {
  HardwareState& merged = workspace_->merged;
  HardwareState& incoming = workspace_->incoming;
  merged.Unpack(input_state_);
  incoming.Unpack(predecessor.output_state_);
  if (merged.UpdateInput(incoming)) input_changed_ = true;
  // The merge rebuilds the counters even when it reports no change.
  merged.Pack(input_state_);
}

void BasicBlockState::SetupFixpointIterationStep() {
  input_changed_before_ = input_changed_;
  input_changed_ = false;
  processed_this_iteration_ = false;
}

bool BasicBlockState::RunFixpointIterationStep(bool isStartBlock, bool isWave64,
                                               bool isBranchTarget) {
  processed_this_iteration_ = true;
  if (!input_changed_before_ && !input_changed_) return false;
  HardwareState& state = workspace_->working;
  state.Unpack(input_state_);
  for (size_t i = 0; i < infos_.size(); ++i) {
    int distance = 0;
    if (i == 0)
      distance = isBranchTarget ? kBranchTargetDistance : (isStartBlock ? 0 : kFallThroughDistance);
    const StallDescription stall = state.Step(infos_[i], distance, isWave64);
    if (stall.length > stalls_[i].first.length) stalls_[i].first = stall;
    if (stall.length < stalls_[i].second.length) stalls_[i].second = stall;
  }
  PackedHardwareState& exit = workspace_->packed;
  state.Pack(exit);
  if (exit == output_state_) return false;
  std::swap(output_state_, exit);
  return true;
}

int RunFixpointIteration(const BasicBlockStateMap& states,
                         const std::unordered_set<std::string>& usedLabels, bool isWave64,
                         std::vector<BasicBlockState>& allStates, BasicBlockState* startState) {
  if (startState == nullptr) ExitFatally("Error: Could not find start basic block. Aborting.");
  // Merges only add in-flight operations and raise busy counts, so the
  // passes end.
  int passes = 0;
  bool changed = true;
  while (changed) {
    ++passes;
    for (BasicBlockState& state : allStates) state.SetupFixpointIterationStep();
    std::deque<BasicBlockState*> work{startState};
    changed = false;
    while (!work.empty()) {
      BasicBlockState* state = work.front();
      work.pop_front();
      if (state == nullptr)
        ExitFatally("Error: Could not determine state of basic block. Aborting.");
      if (state->GetProcessedThisIteration()) continue;
      const BasicBlock* block = state->GetBasicBlock();
      const bool isBranchTarget = usedLabels.count(block->GetLabel()) != 0;
      const bool isStart = state == startState;
      const auto& successors = block->GetSuccessors();
      if (state->RunFixpointIterationStep(isStart, isWave64, isBranchTarget)) {
        changed = true;
        for (const BasicBlock* successor : successors)
          states.at(successor)->UpdateInputState(*state);
      }
      for (const BasicBlock* successor : successors) work.push_back(states.at(successor));
    }
  }
  return passes;
}

StallCycleAnalysis::Result StallCycleAnalysis::AnalyzeStallCycles(
    const std::vector<Invocation>& invocations, bool isWave64, int* passes) {
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

  BasicBlockState* start = nullptr;
  for (const auto& block : blocks) {
    if (block->IsEntry()) {
      if (!block->GetSuccessors().empty()) start = stateOf.at(block->GetSuccessors().front());
      break;
    }
  }
  const int passCount = RunFixpointIteration(stateOf, usedLabels, isWave64, states, start);
  if (passes != nullptr) *passes = passCount;
  return FormatOutput(blocks, stateOf);
}

StallCycleAnalysis::Result StallCycleAnalysis::FormatOutput(const BasicBlockList& blocks,
                                                            const BasicBlockStateMap& states) {
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

  Result result;
  for (const auto& block : blocks) {
    if (leadsToExit.count(block.get()) == 0) continue;
    const auto& stalls = states.at(block.get())->GetStalls();
    const auto& invocations = block->GetInvocations();
    for (size_t i = 0; i < invocations.size(); ++i) result.emplace_back(invocations[i], stalls[i]);
  }
  return result;
}

}  // namespace vesk
