// Register allocation and occupancy: the registers a program allocates, read
// from the operands it names, and how many of its waves fit on one SIMD at
// once given the register files, the wave slots and the LDS of a generation.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "isa/invocation.h"

namespace vesk {

// Registers a program allocates, from the operands it names.
struct RegisterAllocation {
  int vgprs = 0;  // highest VGPR index read or written + 1
  int sgprs = 0;  // highest s-register index (s0..) named + 1; special registers and ttmp excluded
  // Special registers named by an operand or implied by the opcode
  // (s_cbranch_vccz reads vcc, s_and_saveexec_b64 and v_cmpx write exec,
  // s_cmp_* sets scc, s_cselect reads it, ...). Every vector instruction
  // reads exec and most scalar ALU instructions set scc: those implicit uses
  // do not count, only exec named or moved as a mask and scc as a condition.
  bool usesVcc = false;
  bool usesExec = false;
  bool usesM0 = false;
  bool usesScc = false;
  bool usesFlatScratch = false;  // flat_scratch, flat_scratch_lo/hi named
  bool usesXnackMask = false;    // xnack_mask, xnack_mask_lo/hi named
  // The special registers used, as names for reports, in this order: "vcc",
  // "exec", "m0", "scc", "flat_scratch", "xnack_mask".
  std::vector<std::string> SpecialRegisterNames() const;
};

RegisterAllocation CountAllocatedRegisters(const std::vector<Invocation>& invocations);

enum class OccupancyLimit { Vgpr, Sgpr, Lds, Waves };
// "vgpr", "sgpr", "lds", "waves".
const char* OccupancyLimitName(OccupancyLimit limit);

struct OccupancyInputs {
  int generation = 10;  // 7, 8, 9 or 10 (InstructionSet::GetVersion() >> 16)
  int waveSize = 64;    // 32 or 64 (32 only on generation 10)
  RegisterAllocation allocation;
  // The target can replay faulting memory accesses (XNACK): gfx8 and gfx9
  // then reserve two SGPRs for XNACK_MASK. LLVM listings state it
  // (.amdhsa_reserve_xnack_mask); false when unknown.
  bool reservesXnackMask = false;
  // The program accesses scratch through flat addressing, which reserves
  // FLAT_SCRATCH on gfx7-gfx9; also true when allocation.usesFlatScratch.
  bool reservesFlatScratch = false;
  std::optional<uint32_t> ldsBytes;       // LDS one workgroup allocates
  std::optional<uint32_t> workgroupSize;  // most work-items in one workgroup
};

struct Occupancy {
  int wavesPerSimd = 0;  // the smallest of the limits below
  int maxWaves = 0;      // wave slots of one SIMD
  // The first of vgpr, sgpr, lds whose limit is below maxWaves and lowest;
  // waves when none is.
  OccupancyLimit limitedBy = OccupancyLimit::Waves;
  // VGPRs: allocated in granules; waves the VGPR file holds.
  int vgprGranule = 0;
  int vgprsRounded = 0;
  int vgprWaves = 0;
  // SGPRs counted with the ones hardware reserves (vcc, flat_scratch,
  // xnack_mask); the most SGPRs a wave may count for the same waves (its SGPR
  // budget; the counted figure itself on gfx10); waves the SGPR file holds
  // (maxWaves on gfx10, where SGPRs do not limit waves).
  int sgprsCounted = 0;
  int sgprsRounded = 0;
  int sgprWaves = 0;
  // Waves per SIMD that the workgroups fitting on a compute unit give (their
  // LDS, and the CU's workgroup slots); 0 when a workgroup asks for more LDS
  // than the CU has. Empty unless LDS bytes and workgroup size are both
  // known.
  std::optional<int> ldsWaves;
  // Registers of the limiting class fewer that would gain one more wave; 0
  // when registers do not limit, or another limit holds the same count.
  int fewerForNextWave = 0;
};

Occupancy ComputeOccupancy(const OccupancyInputs& inputs);

}  // namespace vesk
