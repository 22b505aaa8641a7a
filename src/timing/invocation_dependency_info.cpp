// Construction of the per-instruction dependency record: unit flags from the
// opcode name and LDS/GDS operand markers, explicit registers from the
// operands plus the registers the hardware reads or writes implicitly
// (exec, vcc, scc and the condition bits), register-class flags, opcode
// properties and the counter a wait instruction waits on.
#include "timing/invocation_dependency_info.h"

#include <cassert>
#include <string_view>

#include "timing/opcode_name_traits.h"
#include "util/string_helpers.h"

namespace vesk {
namespace {

// Inserts the single register `id` (not a range) into a 256-member set whose
// numbering starts at `base`.
void InsertRegisterRange(SmallIntSet<256>& set, RegisterID id, RegisterID base) {
  set.Insert(id - base);
}

// Registers read without appearing as operands. Returns them and adds them to
// the scalar half of `registers`.
UnifiedRegisterSet AddImplicitReads(const OpcodeNameTraits& name, bool usesBranch,
                                    UnifiedRegisterSet& registers) {
  UnifiedRegisterSet implicit;
  SmallIntSet<256>& sgprs = implicit.GetSGPRSet();
  // Every vector instruction is predicated by the exec mask.
  if (name.readsExecAsVector) InsertRegisterRange(sgprs, kExec, kFirstSGPR);
  // v_div_fmas and the carry-in forms consume vcc.
  if (name.readsVccCarry) InsertRegisterRange(sgprs, kVcc, kFirstSGPR);
  // Conditional branches test the condition bits named in the opcode.
  if (usesBranch) {
    if (name.namesScc) InsertRegisterRange(sgprs, kScc, kFirstSGPR);
    if (name.namesVcc) InsertRegisterRange(sgprs, kVccz, kFirstSGPR);
    if (name.namesExec) InsertRegisterRange(sgprs, kExecz, kFirstSGPR);
  }
  if (name.isSaveExec) InsertRegisterRange(sgprs, kExec, kFirstSGPR);
  registers.GetSGPRSet() |= sgprs;
  return implicit;
}

// Registers written without appearing as operands. Returns them and adds them
// to the scalar half of `registers`.
UnifiedRegisterSet AddImplicitWrites(const OpcodeNameTraits& name, UnifiedRegisterSet& registers) {
  UnifiedRegisterSet implicit;
  SmallIntSet<256>& sgprs = implicit.GetSGPRSet();
  // Carry-out and division-scale flags go to vcc.
  if (name.writesVccCarry) {
    InsertRegisterRange(sgprs, kVcc, kFirstSGPR);
  }
  // v_cmpx writes its result to exec.
  if (name.isCmpx) InsertRegisterRange(sgprs, kExec, kFirstSGPR);
  // Scalar ALU operations that set scc.
  if (name.writesScc) {
    InsertRegisterRange(sgprs, kScc, kFirstSGPR);
    if (name.namesWrExec) InsertRegisterRange(sgprs, kExec, kFirstSGPR);
  }
  registers.GetSGPRSet() |= sgprs;
  return implicit;
}

// True when `set` holds a standard SGPR: walks the members in ascending order
// and counts them up to the first special register.
bool HasStandardSGPR(const UnifiedRegisterSet& set) {
  int count = 0;
  for (RegisterID id : set) {
    if (IsSpecialSGPR(id)) break;
    ++count;
  }
  return count != 0;
}

}  // namespace

InvocationDependencyInfo::InvocationDependencyInfo(const Invocation& invocation)
    : invocation_(&invocation) {
  const OpcodeNameTraits& name = GetOpcodeNameTraits(GetName());
  InitializeConditionalFlags(name);
  // The full sets are formed once here; the record keeps them as runs.
  UnifiedRegisterSet writes;
  UnifiedRegisterSet reads;
  InitializeRegisters(name, writes, reads);
  InitializeRegisterFlags(writes, reads);
  UpdateGenericFlags(name);
  UpdateLatencies(name);
}

const char* InvocationDependencyInfo::GetName() const {
  return invocation_->GetInstruction()->GetName();
}

void InvocationDependencyInfo::InitializeConditionalFlags(const OpcodeNameTraits& name) {
  if (name.isSALU) SetFlag(InfoFlag::UsesSALU);
  if (name.isSMEM) SetFlag(InfoFlag::UsesSMEM);
  if (name.isVALU) SetFlag(InfoFlag::UsesVALU);
  if (name.isTransVALU) SetFlag(InfoFlag::UsesTransVALU);
  if (name.isVMEMTex) SetFlag(InfoFlag::UsesVMEMTex);
  if (name.isFlat) SetFlag(InfoFlag::UsesFlat);

  // An "lds"/"gds" operand routes a memory instruction to the LDS or the GDS.
  const std::vector<std::string>& args = invocation_->GetArgs();
  const bool isFlat = name.startsFlat;
  auto hasMarker = [&](const char* marker) {
    return (isFlat && args.size() >= 2 && args[0] == marker) ||
           (args.size() >= 3 && args[1] == marker);
  };
  const bool hasLdsArg = hasMarker("lds");
  const bool hasGdsArg = hasMarker("gds");
  const bool isDS = name.startsDS;

  // Interpolation and LDS-direct also use the LDS, but their flags are only
  // known after UpdateGenericFlags, so they do not count here.
  if (UsesFlat() || hasLdsArg || (isDS && !hasGdsArg)) SetFlag(InfoFlag::UsesVMEMLDS);
  if (name.isBranch) SetFlag(InfoFlag::UsesBranch);
  if (name.isMsg) SetFlag(InfoFlag::UsesMsg);
  if (name.isExport) SetFlag(InfoFlag::UsesExport);
  // Global memory instructions are tracked together with GDS accesses.
  if ((isDS && hasGdsArg) || name.startsGlobal) SetFlag(InfoFlag::UsesGDS);
}

void InvocationDependencyInfo::InitializeRegisters(const OpcodeNameTraits& name,
                                                   UnifiedRegisterSet& writes,
                                                   UnifiedRegisterSet& reads) {
  reads = invocation_->GetReadRegisters();
  writes = invocation_->GetWriteRegisters();
  explicitReadSpecial_ = SpecialMask(reads);
  explicitWriteSpecial_ = SpecialMask(writes);

  const UnifiedRegisterSet implicitReads = AddImplicitReads(name, UsesBranch(), reads);
  const UnifiedRegisterSet implicitWrites = AddImplicitWrites(name, writes);
  // Implicit registers are special ones only, so the masks hold them whole.
  implicitReadMask_ = SpecialMask(implicitReads);
  implicitWriteMask_ = SpecialMask(implicitWrites);
  assert(SpecialSet(implicitReadMask_) == implicitReads);
  assert(SpecialSet(implicitWriteMask_) == implicitWrites);

  StoreRuns(writes, reads);
}

// One record per instruction of the program is kept for the whole stall
// analysis.
static_assert(sizeof(InvocationDependencyInfo) <= 64);

void InvocationDependencyInfo::StoreRuns(const UnifiedRegisterSet& writes,
                                         const UnifiedRegisterSet& reads) {
  std::vector<RegisterRun> runs;
  auto addRuns = [&runs](const UnifiedRegisterSet& set) {
    size_t count = 0;
    for (RegisterID reg : set) {
      if (count != 0 && runs.back().last + 1 == reg) {
        runs.back().last = static_cast<uint16_t>(reg);
      } else {
        runs.push_back({static_cast<uint16_t>(reg), static_cast<uint16_t>(reg)});
        ++count;
      }
    }
    return count;
  };
  writeRunCount_ = static_cast<uint8_t>(addRuns(writes));
  const size_t readRuns = addRuns(reads);
  if (runs.size() <= kInlineRuns) {
    readRunCount_ = static_cast<uint8_t>(readRuns);
    std::copy(runs.begin(), runs.end(), runs_.begin());
  } else {
    // The read count is implied by the heap vector's size.
    readRunCount_ = 0;
    spilledRuns_ = SpilledRuns(std::move(runs));
  }
}

UnifiedRegisterSet InvocationDependencyInfo::FormSet(RunSpan runs) {
  UnifiedRegisterSet set;
  for (const RegisterRun& run : runs)
    for (int reg = run.first; reg <= run.last; ++reg) set.Insert(reg);
  return set;
}

void InvocationDependencyInfo::InitializeRegisterFlags(const UnifiedRegisterSet& writes,
                                                       const UnifiedRegisterSet& readRegisters) {
  const UnifiedRegisterSet writtenSGPRs = ScalarHalf(writes);
  const UnifiedRegisterSet readSGPRs = ScalarHalf(readRegisters);
  if (implicitWriteMask_ >> (kScc - kExec) & 1u) SetFlag(InfoFlag::WritesAnySGPR);
  if (!writes.GetVGPRSet().IsEmpty()) SetFlag(InfoFlag::WritesAnyVGPR);

  const bool writesStandardSGPR = HasStandardSGPR(writtenSGPRs);
  if (!writtenSGPRs.IsEmpty()) {
    SetFlag(InfoFlag::WritesAnySGPR);
    if (writesStandardSGPR) SetFlag(InfoFlag::WritesAnyStandardSGPR);
    if (writtenSGPRs.Contains(kScc)) SetFlag(InfoFlag::WritesSCC);
    if (writtenSGPRs.Contains(kVcc)) SetFlag(InfoFlag::WritesVCC);
    if (writtenSGPRs.Contains(kExec)) SetFlag(InfoFlag::WritesExec);
    if (writtenSGPRs.Contains(kM0)) SetFlag(InfoFlag::WritesM0);
  }

  if (!readRegisters.GetVGPRSet().IsEmpty()) SetFlag(InfoFlag::ReadsAnyVGPR);

  if (!readSGPRs.IsEmpty()) {
    SetFlag(InfoFlag::ReadsAnySGPR);
    // Deliberately decided by the written SGPRs: the stall model keys the
    // "reads a standard SGPR" hazards on this.
    if (writesStandardSGPR) SetFlag(InfoFlag::ReadsAnyStandardSGPR);
    if (readRegisters.Contains(kVcc)) SetFlag(InfoFlag::ReadsAnySGPR);
    if (readRegisters.Contains(kScc)) SetFlag(InfoFlag::ReadsSCC);
    if (readRegisters.Contains(kSccz)) SetFlag(InfoFlag::ReadsSCCZ);
    if (readRegisters.Contains(kVcc)) SetFlag(InfoFlag::ReadsVCC);
    if (readRegisters.Contains(kVccz)) SetFlag(InfoFlag::ReadsVCCZ);
    if (readRegisters.Contains(kExec)) SetFlag(InfoFlag::ReadsExec);
    if (readRegisters.Contains(kExecz)) SetFlag(InfoFlag::ReadsExecZ);
    if (readRegisters.Contains(kM0)) SetFlag(InfoFlag::ReadsM0);
  }
}

void InvocationDependencyInfo::UpdateGenericFlags(const OpcodeNameTraits& name) {
  const std::vector<std::string>& args = invocation_->GetArgs();

  if (name.isMoveRel) SetFlag(InfoFlag::IsMoveRel);
  if (name.isSwapRel) SetFlag(InfoFlag::IsSwapRel);
  if (name.isSubvector) SetFlag(InfoFlag::IsSubvectorBeginEnd);
  if (name.isInterp) SetFlag(InfoFlag::IsVInterp);
  bool hasLdsDirectArg = false;
  for (const std::string& arg : args) hasLdsDirectArg |= arg == "lds_direct";
  if (hasLdsDirectArg || IsVInterp()) SetFlag(InfoFlag::IsLDSDirect);
  if (name.isReadFirstLane) SetFlag(InfoFlag::IsReadFirstLane);
  if (name.isDivFmas) SetFlag(InfoFlag::IsDiv_FMas);
  if (IsDiv_FMas() || name.writesLaneMaskByName) {
    SetFlag(InfoFlag::WriteLaneMask);
  }
  if (name.readsLaneMask) SetFlag(InfoFlag::ReadsLaneMask);
  if (name.isAddTid) SetFlag(InfoFlag::IsAddTid);
  if (name.isSwapB32) SetFlag(InfoFlag::IsSpecial);
  if (name.isWaitCnt) {
    SetFlag(InfoFlag::IsWaitCnt);
    ResolveWaitType(name);
  }
  if (name.isStore) SetFlag(InfoFlag::IsStore);
  if (name.isLoad) SetFlag(InfoFlag::IsLoad);
  if (name.isPCReadEtc) {
    SetFlag(InfoFlag::IsPCReadEtc);
  }
  isWaitCntDepCtr_ = name.isWaitCntDepCtr;
}

void InvocationDependencyInfo::ResolveWaitType(const OpcodeNameTraits& name) {
  waitType_ = WaitType::None;
  if (name.isExactDepCtr) return;
  if (name.isPerCounterWait) {
    waitType_ = static_cast<WaitType>(name.perCounterWaitType);
    return;
  }
  // Plain s_waitcnt: the first counter named in the operands decides. The
  // export counter is deliberately mapped to the store counter in this form.
  const std::vector<std::string>& args = invocation_->GetArgs();
  if (args.empty()) return;
  const std::string& first = args[0];
  if (StartsWith(first, "vmcnt")) {
    waitType_ = WaitType::VmCnt;
  } else if (StartsWith(first, "vscnt")) {
    waitType_ = WaitType::VsCnt;
  } else if (StartsWith(first, "lgkmcnt")) {
    waitType_ = WaitType::LgkmCnt;
  } else if (StartsWith(first, "expcnt")) {
    waitType_ = WaitType::VsCnt;
  }
}

HardwareUsage InvocationDependencyInfo::GetHardwareUsage() const {
  HardwareUsage usage;
  if (UsesSALU()) usage |= InstructionUnit::SALU;
  if (UsesVALU() || IsLDSDirect()) usage |= InstructionUnit::VALU;
  if (UsesTransVALU()) usage |= InstructionUnit::TransVALU;
  if (UsesSMEM()) usage |= InstructionUnit::SMEM;
  if (UsesVMEM()) usage |= InstructionUnit::VMEM;
  if (UsesVMEMLDS() || IsLDSDirect()) usage |= InstructionUnit::LDS;
  if (UsesGDS()) usage |= InstructionUnit::GDS;
  if (UsesBranch()) usage |= InstructionUnit::Branch;
  return usage;
}

}  // namespace vesk

namespace vesk {
// One record per instruction is kept for the whole simulation: two register
// sets and a few words.
static_assert(sizeof(InvocationDependencyInfo) <= 2 * sizeof(UnifiedRegisterSet) + 48,
              "the dependency record stays compact");
}  // namespace vesk
