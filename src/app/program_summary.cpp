// Gathers the summary figures of one program from the block graph, the
// vector and scalar liveness, the operand allocation, the occupancy model
// and (GFX10) the stall simulation.
#include "app/program_summary.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "cfg/basic_block.h"
#include "liveness/liveness_analysis.h"
#include "liveness/register_pressure.h"
#include "stall/stall_analysis.h"
#include "util/analysis_error.h"
#include "util/fatal_exit.h"

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

  if (options.generation == 10) {
    // A condition the stall simulation cannot go on from ends only the stall
    // part of the summary: the counts, pressure and occupancy still hold.
    const FatalExitHandler previous = SetFatalExitHandler(ThrowFatalListingExit);
    try {
      summary.stall = SummarizeStalls(invocations, options.waveSize);
    } catch (const FatalListingExit& error) {
      // The message of the fatal exit, without its "Error: " and "Aborting."
      // frame, which belong to ending the run.
      std::string_view message = error.what();
      if (message.starts_with("Error: ")) message.remove_prefix(7);
      if (message.ends_with(" Aborting.")) message.remove_suffix(10);
      summary.stallError = message;
    } catch (const ListingError& error) {
      summary.stallError = fmt::format("line {}: {}", error.Line(), error.what());
    } catch (...) {
      SetFatalExitHandler(previous);
      throw;
    }
    SetFatalExitHandler(previous);
  }
  return summary;
}

}  // namespace vesk
