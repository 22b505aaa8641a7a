// Register allocation from the operands of a program, and waves per SIMD
// from the register files, wave slots and LDS of each generation.
//
// Figures and their public sources (each checked against the "; NumVgprs:",
// "; NumSgprs:" and "; Occupancy:" figures clang-19 writes for gfx700,
// gfx803, gfx900 and gfx1010 in wave32 and wave64):
// - Wave slots per SIMD: 10 on GCN (gfx7-gfx9), 20 on gfx10 for wave32 and
//   wave64 alike (AMD's GCN3/Vega and RDNA 1.0 ISA documents).
// - VGPRs: gfx7-gfx9 256 per SIMD lane, allocated in granules of 4; gfx10
//   1024 in granules of 8 for wave32, 512 in granules of 4 for wave64 (the
//   GRANULATED_WORKITEM_VGPR_COUNT field of the kernel descriptor in LLVM's
//   AMDGPUUsage).
// - SGPRs: gfx7 512 per SIMD, gfx8/gfx9 800 (AMD's Sea Islands and GCN3/Vega
//   ISA documents). The waves they allow follow AMD's published GCN
//   occupancy tables, which are also what clang prints: gfx7 <=48 SGPRs 10
//   waves, <=56 9, <=64 8, <=72 7, <=80 6, more 5; gfx8/gfx9 <=80 10, <=88
//   9, <=100 8, more 7. On gfx10 SGPRs never limit waves.
// - Reserved SGPRs, counted on top of the highest s-register (AMDGPUUsage's
//   kernel descriptor counts VCC, FLAT_SCRATCH and XNACK_MASK with the SGPRs
//   a wave uses): 2 for VCC when it is used; gfx7 4 in all once FLAT_SCRATCH
//   is used; gfx8/gfx9 4 in all when XNACK_MASK is reserved, 6 in all with
//   FLAT_SCRATCH (the reserved registers sit in a fixed order at the top,
//   so the later ones take the earlier ones' places too); gfx10 counts VCC
//   only.
// - LDS: 64 KiB per CU on gfx7-gfx9, shared by 4 SIMDs, at most 16
//   workgroups (barriers) per CU. gfx10 runs workgroups in WGP mode unless
//   told otherwise (LLVM's default; its metadata states
//   ".workgroup_processor_mode: 1"): 128 KiB per WGP, shared by 4 SIMD32s,
//   at most 32 workgroups. CU mode (64 KiB, 2 SIMD32s, 16 workgroups) gives
//   the same waves per SIMD. A workgroup of one wave needs no barrier, so
//   only wave slots bound how many of those fit.
#include "isa/occupancy.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace vesk {

namespace {

struct Generation {
  int maxWaves;
  int vgprTotal;
  int vgprGranule;
  int simdsPerCu;
  uint32_t ldsPerCu;
  int workgroupsPerCu;  // barrier slots
};

Generation GenerationOf(int generation, int waveSize) {
  if (generation >= 10) {
    return waveSize == 32 ? Generation{20, 1024, 8, 4, 131072, 32}
                          : Generation{20, 512, 4, 4, 131072, 32};
  }
  return Generation{10, 256, 4, 4, 65536, 16};
}

int RoundUp(int value, int granule) {
  return (value + granule - 1) / granule * granule;
}

struct SgprStep {
  int waves;
  int sgprs;  // the most SGPRs a wave may count for this many waves
};
constexpr SgprStep kGfx7Sgprs[] = {{10, 48}, {9, 56}, {8, 64}, {7, 72}, {6, 80}, {5, 104}};
constexpr SgprStep kGfx8Sgprs[] = {{10, 80}, {9, 88}, {8, 100}, {7, 112}};

std::span<const SgprStep> SgprSteps(int generation) {
  if (generation <= 7) return kGfx7Sgprs;
  return kGfx8Sgprs;
}

// The most SGPRs a wave may count and still let `waves` run per SIMD; 0 when
// no count allows that many.
int SgprBudget(int generation, int waves) {
  int budget = 0;
  for (const SgprStep& step : SgprSteps(generation)) {
    if (step.waves >= waves) budget = std::max(budget, step.sgprs);
  }
  return budget;
}

// Counts beyond the last step are more than a wave can address; they get
// the fewest waves of the table rather than none.
int SgprWaves(int generation, int sgprs) {
  for (const SgprStep& step : SgprSteps(generation)) {
    if (sgprs <= step.sgprs) return step.waves;
  }
  return SgprSteps(generation).back().waves;
}

int ReservedSgprs(int generation, bool vcc, bool flatScratch, bool xnackMask) {
  int reserved = vcc ? 2 : 0;
  if (generation >= 10) return reserved;
  if (generation <= 7) return flatScratch ? 4 : reserved;
  if (flatScratch) return 6;
  return xnackMask ? 4 : reserved;
}

// The waves per SIMD the workgroups that fit on a CU give.
int LdsWaves(const Generation& g, int waveSize, uint32_t ldsBytes, uint32_t workgroupSize) {
  const int wavesPerGroup =
      static_cast<int>((std::max<uint32_t>(workgroupSize, 1) + waveSize - 1) / waveSize);
  const int waveSlots = g.maxWaves * g.simdsPerCu;
  int groups =
      wavesPerGroup == 1 ? waveSlots : std::min(waveSlots / wavesPerGroup, g.workgroupsPerCu);
  if (ldsBytes > 0) {
    groups =
        static_cast<int>(std::min<uint32_t>(static_cast<uint32_t>(groups), g.ldsPerCu / ldsBytes));
  }
  const int waves = (groups * wavesPerGroup + g.simdsPerCu - 1) / g.simdsPerCu;
  return std::min(waves, g.maxWaves);
}

// The operand text inside modifier wrappers and without a leading minus:
// "-abs(vcc_lo)" gives "vcc_lo".
std::string_view Unwrapped(std::string_view operand) {
  const size_t open = operand.rfind('(');
  if (open != std::string_view::npos) {
    operand.remove_prefix(open + 1);
    operand = operand.substr(0, operand.find(')'));
  }
  if (operand.starts_with('-')) operand.remove_prefix(1);
  return operand;
}

bool Names(std::string_view operand, std::string_view base) {
  if (!operand.starts_with(base)) return false;
  const std::string_view half = operand.substr(base.size());
  return half.empty() || half == "_lo" || half == "_hi";
}

void NoteSpecialOperand(std::string_view operand, RegisterAllocation& allocation) {
  if (Names(operand, "vcc")) allocation.usesVcc = true;
  if (Names(operand, "exec")) allocation.usesExec = true;
  if (operand == "m0") allocation.usesM0 = true;
  if (operand == "scc") allocation.usesScc = true;
  if (Names(operand, "flat_scratch")) allocation.usesFlatScratch = true;
  if (Names(operand, "xnack_mask")) allocation.usesXnackMask = true;
}

// Special registers an opcode reads or writes without naming them: the vcc
// and exec branches, the exec-mask moves and v_cmpx, the scalar compares and the
// instructions that consume scc, the carry read of v_div_fmas, and the short
// encodings written without their vcc operand (a vector compare with two
// operands writes vcc, v_cndmask_b32 with three reads it).
void NoteImpliedRegisters(std::string_view opcode, size_t operands,
                          RegisterAllocation& allocation) {
  const auto has = [&](std::string_view part) {
    return opcode.find(part) != std::string_view::npos;
  };
  if (has("vccz") || has("vccnz") || has("_div_fmas") ||
      (opcode.starts_with("v_cmp_") && operands == 2) ||
      (opcode.starts_with("v_cndmask_b32") && operands == 3)) {
    allocation.usesVcc = true;
  }
  if (has("execz") || has("execnz") || has("saveexec") || has("wrexec") ||
      opcode.starts_with("v_cmpx")) {
    allocation.usesExec = true;
  }
  for (std::string_view prefix :
       {"s_cmp", "s_bitcmp", "s_cbranch_scc", "s_cselect", "s_cmov", "s_addc", "s_subb"}) {
    if (opcode.starts_with(prefix)) allocation.usesScc = true;
  }
}

}  // namespace

std::vector<std::string> RegisterAllocation::SpecialRegisterNames() const {
  std::vector<std::string> names;
  if (usesVcc) names.emplace_back("vcc");
  if (usesExec) names.emplace_back("exec");
  if (usesM0) names.emplace_back("m0");
  if (usesScc) names.emplace_back("scc");
  if (usesFlatScratch) names.emplace_back("flat_scratch");
  if (usesXnackMask) names.emplace_back("xnack_mask");
  return names;
}

RegisterAllocation CountAllocatedRegisters(const std::vector<Invocation>& invocations) {
  RegisterAllocation allocation;
  for (const Invocation& invocation : invocations) {
    NoteImpliedRegisters(invocation.GetInstruction()->GetName(), invocation.GetArgs().size(),
                         allocation);
    for (const std::string& operand : invocation.GetArgs()) {
      for (const Register& reg : Invocation::ParseRegister(operand)) {
        if (reg.index < 0 || reg.index > 255) continue;  // beyond both register files
        int& highest = reg.type == VGPR ? allocation.vgprs : allocation.sgprs;
        highest = std::max(highest, reg.index + 1);
      }
      NoteSpecialOperand(Unwrapped(operand), allocation);
    }
  }
  return allocation;
}

const char* OccupancyLimitName(OccupancyLimit limit) {
  switch (limit) {
    case OccupancyLimit::Vgpr:
      return "vgpr";
    case OccupancyLimit::Sgpr:
      return "sgpr";
    case OccupancyLimit::Lds:
      return "lds";
    case OccupancyLimit::Waves:
      break;
  }
  return "waves";
}

Occupancy ComputeOccupancy(const OccupancyInputs& inputs) {
  const Generation g = GenerationOf(inputs.generation, inputs.waveSize);
  const RegisterAllocation& allocation = inputs.allocation;
  Occupancy result;
  result.maxWaves = g.maxWaves;

  result.vgprGranule = g.vgprGranule;
  result.vgprsRounded = RoundUp(std::max(allocation.vgprs, 1), g.vgprGranule);
  result.vgprWaves = std::min(g.maxWaves, g.vgprTotal / result.vgprsRounded);

  result.sgprsCounted =
      allocation.sgprs + ReservedSgprs(inputs.generation, allocation.usesVcc,
                                       allocation.usesFlatScratch || inputs.reservesFlatScratch,
                                       allocation.usesXnackMask || inputs.reservesXnackMask);
  if (inputs.generation >= 10) {
    result.sgprsRounded = result.sgprsCounted;
    result.sgprWaves = g.maxWaves;
  } else {
    result.sgprWaves = SgprWaves(inputs.generation, result.sgprsCounted);
    result.sgprsRounded =
        std::max(result.sgprsCounted, SgprBudget(inputs.generation, result.sgprWaves));
  }

  if (inputs.ldsBytes && inputs.workgroupSize) {
    result.ldsWaves = LdsWaves(g, inputs.waveSize, *inputs.ldsBytes, *inputs.workgroupSize);
  }

  result.wavesPerSimd = g.maxWaves;
  result.limitedBy = OccupancyLimit::Waves;
  const auto limit = [&](int waves, OccupancyLimit by) {
    if (waves < result.wavesPerSimd) {
      result.wavesPerSimd = waves;
      result.limitedBy = by;
    }
  };
  limit(result.vgprWaves, OccupancyLimit::Vgpr);
  limit(result.sgprWaves, OccupancyLimit::Sgpr);
  if (result.ldsWaves) limit(*result.ldsWaves, OccupancyLimit::Lds);

  // One more wave is gained by the limiting register class alone only when
  // nothing else holds the count where it is.
  const int next = result.wavesPerSimd + 1;
  const bool othersAllow = [&] {
    if (result.ldsWaves && *result.ldsWaves < next) return false;
    if (result.limitedBy == OccupancyLimit::Vgpr) return result.sgprWaves >= next;
    return result.vgprWaves >= next;
  }();
  if (result.limitedBy == OccupancyLimit::Vgpr && othersAllow) {
    const int most = g.vgprTotal / next / g.vgprGranule * g.vgprGranule;
    if (most > 0) result.fewerForNextWave = allocation.vgprs - most;
  } else if (result.limitedBy == OccupancyLimit::Sgpr && othersAllow) {
    const int most = SgprBudget(inputs.generation, next);
    if (most > 0) result.fewerForNextWave = result.sgprsCounted - most;
  }
  return result;
}

}  // namespace vesk
