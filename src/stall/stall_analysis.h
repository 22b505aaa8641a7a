// The stall-cycle analysis of a whole program: one hardware state at the
// entry and exit of every basic block, blocks simulated instruction by
// instruction and exit states merged into successors until nothing changes,
// with the largest and smallest stall of every instruction kept.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "cfg/basic_block.h"
#include "isa/invocation.h"
#include "stall/hardware_state.h"
#include "stall/stall_cause.h"
#include "stall/stall_description.h"
#include "timing/invocation_dependency_info.h"

namespace vesk {

class BasicBlockState;

// Full-size hardware states the block simulation works in; block states
// themselves are stored packed.
struct StallWorkspace {
  HardwareState working;
  HardwareState merged;
  HardwareState incoming;
  PackedHardwareState packed;
  // Stall causes, only when asked for: per block state (by its position in
  // the contiguous sequence that starts at `firstState`), the cause of each
  // instruction's largest stall. Empty otherwise, so the plain analysis
  // carries nothing per instruction for them.
  std::vector<std::vector<StallCause>> causes;
  const BasicBlockState* firstState = nullptr;
};

class BasicBlockState {
 public:
  // (largest, smallest) stall of one instruction.
  using StallRange = std::pair<StallDescription, StallDescription>;

  BasicBlockState(const BasicBlock& block, StallWorkspace& workspace);
  BasicBlockState(const BasicBlockState&) = delete;
  BasicBlockState& operator=(const BasicBlockState&) = delete;
  BasicBlockState(BasicBlockState&&) = default;

  const BasicBlock* GetBasicBlock() const { return block; }
  const std::vector<StallRange>& GetStalls() const { return stalls_; }

  // Merges a predecessor's exit state into the entry state; true when the
  // entry state gained something.
  bool UpdateInputState(const BasicBlockState& predecessor);
  // False when the entry state is the one the block was last simulated from:
  // simulating again would repeat the same stalls and the same exit state.
  bool InputChangedSinceLastRun() const { return input_updates_ != simulated_updates_; }
  // Simulates the block from its entry state; true when its exit state
  // changed.
  bool RunFixpointIterationStep(bool isStartBlock, bool isWave64, bool isBranchTarget);
  // Frees what only the simulation needs (entry and exit states, dependency
  // records) once the block will not be simulated again; the stalls stay.
  void ReleaseSimulationData();

 private:
  const BasicBlock* block;
  PackedHardwareState input_state_;
  PackedHardwareState output_state_;
  // Merges into the entry state so far, and their number at the last
  // simulation; a merge that reports no change can still rebuild counters.
  uint64_t input_updates_ = 1;
  uint64_t simulated_updates_ = 0;
  std::vector<StallRange> stalls_;
  std::vector<InvocationDependencyInfo> infos_;
  StallWorkspace* workspace_;
};

using BasicBlockStateMap = std::unordered_map<const BasicBlock*, BasicBlockState*>;

// Runs passes over the blocks until one changes no exit state; returns the
// number of passes, the last (unchanging) one included. Every pass walks the
// blocks breadth-first from the start block and simulates those whose entry
// state changed since the previous pass or earlier in this one.
int RunFixpointIteration(const BasicBlockStateMap& states,
                         const std::unordered_set<std::string>& usedLabels, bool isWave64,
                         std::vector<BasicBlockState>& allStates, BasicBlockState* startState);

class StallCycleAnalysis {
 public:
  using Result =
      std::vector<std::pair<const Invocation*, std::pair<StallDescription, StallDescription>>>;

  // `passes`, when given, receives the number of fixpoint passes. `causes`,
  // when given, receives one StallCause per result row (same order): what
  // held the instruction back in its largest stall; the first such stall
  // when several passes reach the same largest length.
  static Result AnalyzeStallCycles(const std::vector<Invocation>& invocations, bool isWave64,
                                   int* passes = nullptr,
                                   std::vector<StallCause>* causes = nullptr);
  // Per-instruction stalls in program order of the blocks that lie on a path
  // from the entry to the exit. With `workspace` and `causes`, the causes
  // recorded in the workspace are gathered in the same order.
  static Result FormatOutput(const BasicBlockList& blocks, const BasicBlockStateMap& states,
                             const StallWorkspace* workspace = nullptr,
                             std::vector<StallCause>* causes = nullptr);
};

}  // namespace vesk
