// Gathers the summary figures of one program from the block graph, the
// vector and scalar liveness, the operand allocation, the occupancy model
// and (GFX10) the stall simulation.
#include "app/program_summary.h"

#include <algorithm>

#include "cfg/basic_block.h"
#include "liveness/liveness_analysis.h"
#include "liveness/register_pressure.h"
#include "stall/stall_analysis.h"

namespace vesk {

namespace {

RegisterFileSummary SummarizeRegisterFile(const std::vector<Invocation>& invocations,
                                          RegisterType type, int allocated) {
  // Values live before their first write (kernel arguments, work-item ids)
  // occupy registers too, so they count.
  const LivenessStates states(invocations, type, LivenessAnalysisOptions{});
  const RegisterPressure pressure = ComputeRegisterPressure(states, type);
  RegisterFileSummary summary;
  summary.maxLive = pressure.maxLive;
  summary.peakInstruction = pressure.peak;
  summary.peakLine = pressure.peakLine;
  summary.allocated = allocated;
  return summary;
}

}  // namespace

StallSummary SummarizeStalls(const std::vector<Invocation>& invocations, int waveSize) {
  std::vector<StallCause> causes;
  const StallCycleAnalysis::Result result =
      StallCycleAnalysis::AnalyzeStallCycles(invocations, waveSize == 64, nullptr, &causes);
  StallSummary summary;
  // Rows with a finite stall above 0, by position in the result.
  std::vector<size_t> stalled;
  for (size_t i = 0; i < result.size(); ++i) {
    const StallLength& length = result[i].second.first.length;
    if (length.IsIndefinite()) {
      ++summary.unboundedWaits;
    } else if (length.Get() > 0) {
      summary.totalCycles += length.Get();
      stalled.push_back(i);
    }
  }
  // Most cycles first; the result is in program order, so equal cycles stay
  // in program order.
  const size_t count = std::min(stalled.size(), kWorstStallCount);
  std::partial_sort(stalled.begin(), stalled.begin() + count, stalled.end(),
                    [&](size_t a, size_t b) {
                      const int ca = result[a].second.first.length.Get();
                      const int cb = result[b].second.first.length.Get();
                      return ca != cb ? ca > cb : a < b;
                    });
  summary.worst.reserve(count);
  for (size_t k = 0; k < count; ++k) {
    const size_t i = stalled[k];
    StallEntry entry;
    entry.invocation = result[i].first;
    entry.line = entry.invocation != nullptr ? entry.invocation->GetSourceLine() : 0;
    entry.cycles = result[i].second.first.length.Get();
    if (i < causes.size()) entry.cause = causes[i];
    summary.worst.push_back(entry);
  }
  return summary;
}

ProgramSummary SummarizeProgram(const std::vector<Invocation>& invocations,
                                const SummaryOptions& options) {
  ProgramSummary summary;
  summary.generation = options.generation;
  summary.waveSize = options.waveSize;
  {
    const BasicBlockList blocks = CreateBasicBlocksFromInvocations(invocations);
    summary.statistics = ComputeProgramStatistics(invocations, blocks);
  }

  const RegisterAllocation allocation = CountAllocatedRegisters(invocations);
  summary.vgpr = SummarizeRegisterFile(invocations, VGPR, allocation.vgprs);
  summary.sgpr = SummarizeRegisterFile(invocations, SGPR, allocation.sgprs);
  summary.specialRegisters = allocation.SpecialRegisterNames();

  OccupancyInputs inputs;
  inputs.generation = options.generation;
  inputs.waveSize = options.waveSize;
  inputs.allocation = allocation;
  inputs.reservesXnackMask = options.attributes.reservesXnackMask.value_or(false);
  inputs.ldsBytes = options.attributes.ldsBytes;
  inputs.workgroupSize = options.attributes.workgroupSize;
  summary.occupancy = ComputeOccupancy(inputs);

  if (options.generation == 10) summary.stall = SummarizeStalls(invocations, options.waveSize);
  return summary;
}

}  // namespace vesk
