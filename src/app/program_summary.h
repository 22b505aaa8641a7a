// The figures of the summary report for one program, gathered from the
// analyses: program counts, vector and scalar register pressure and
// allocation, occupancy, and (GFX10) the stall totals and the worst stalls
// with their causes. A plain record; the report printers format it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cfg/program_statistics.h"
#include "isa/invocation.h"
#include "isa/occupancy.h"
#include "readers/isa_reader.h"
#include "stall/stall_cause.h"

namespace vesk {

struct SummaryOptions {
  int generation = 10;  // 7, 8, 9 or 10 (InstructionSet::GetVersion() >> 16)
  int waveSize = 64;    // 32 or 64: the wave size the program runs with
  // What the listing states about the launch; LDS bytes and workgroup size
  // limit occupancy when both are known.
  ProgramAttributes attributes;
};

// One register file: pressure from liveness, allocation from the operands.
struct RegisterFileSummary {
  // Most registers live at one instruction. Scalar: s0..s127 only; the trap
  // handler's ttmp registers and the special registers are not the wave's.
  int maxLive = 0;
  // The first instruction in program order where `maxLive` is reached, and
  // its listing line (0 for instructions built in memory); null and 0 when
  // nothing is live.
  const Invocation* peakInstruction = nullptr;
  uint32_t peakLine = 0;
  // Highest register index any operand names + 1 (scalar: special
  // registers and ttmp excluded); 0 when none is named.
  int allocated = 0;
};

// One stalled instruction.
struct StallEntry {
  const Invocation* invocation = nullptr;
  uint32_t line = 0;  // listing line of `invocation`
  int cycles = 0;     // its largest stall, finite and above 0
  StallCause cause;   // what held it back in that stall
};

struct StallSummary {
  // Sum of every instruction's largest stall where that is finite.
  int64_t totalCycles = 0;
  // Instructions whose largest stall has no bound ("Inf" in the stall
  // report): waits on memory operations whose latency is unknown.
  int unboundedWaits = 0;
  // At most ten finite stalls above 0 cycles, most cycles first; equal
  // cycles in program order.
  std::vector<StallEntry> worst;
};

constexpr size_t kWorstStallCount = 10;

struct ProgramSummary {
  int generation = 10;
  int waveSize = 64;
  ProgramStatistics statistics;
  RegisterFileSummary vgpr;
  RegisterFileSummary sgpr;
  // Special registers the program uses, which are not in `sgpr.allocated`:
  // "vcc", "exec", "m0", "scc", "flat_scratch", "xnack_mask", in that order.
  std::vector<std::string> specialRegisters;
  // Waves per SIMD, the limiting resource and the registers fewer that would
  // gain one more wave.
  Occupancy occupancy;
  // GFX10 only; empty for the other generations.
  std::optional<StallSummary> stall;
  // GFX10: why the stall simulation could not finish (a listing condition it
  // cannot resolve, such as a wait it cannot attribute); `stall` is then
  // empty while the other figures stand.
  std::string stallError;
};

// Runs the analyses over one program. The invocations must outlive the
// result (it points into them). Throws AnalysisError where the analyses do
// (a program whose end cannot be reached, a jump to a label that names no
// block).
ProgramSummary SummarizeProgram(const std::vector<Invocation>& invocations,
                                const SummaryOptions& options);

// The stall part alone, from the stall simulation in the given wave size.
StallSummary SummarizeStalls(const std::vector<Invocation>& invocations, int waveSize);

}  // namespace vesk
