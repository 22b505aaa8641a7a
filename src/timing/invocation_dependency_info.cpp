// Construction of the per-instruction dependency record: unit flags from the
// opcode name and LDS/GDS operand markers, explicit registers from the
// operands plus the registers the hardware reads or writes implicitly
// (exec, vcc, scc and the condition bits), register-class flags, opcode
// properties and the counter a wait instruction waits on.
#include "timing/invocation_dependency_info.h"

#include <string_view>

#include "timing/invocation_flag_info.h"
#include "util/string_helpers.h"

namespace vesk {
namespace {


bool Contains(std::string_view text, const char* needle) {
  return text.find(needle) != std::string_view::npos;
}

// Inserts the single register `id` (not a range) into a 256-member set whose
// numbering starts at `base`.
void InsertRegisterRange(SmallIntSet<256>& set, RegisterID id, RegisterID base) {
  set.Insert(id - base);
}

// The scalar half of `set` only.
UnifiedRegisterSet ScalarHalf(const UnifiedRegisterSet& set) {
  UnifiedRegisterSet result;
  result.GetSGPRSet() = set.GetSGPRSet();
  return result;
}

UnifiedRegisterSet VectorHalf(const UnifiedRegisterSet& set) {
  UnifiedRegisterSet result;
  result.GetVGPRSet() = set.GetVGPRSet();
  return result;
}

// Registers read without appearing as operands. Returns them and adds them to
// the scalar half of `registers`.
UnifiedRegisterSet AddImplicitReads(std::string_view name, bool usesBranch,
                                    UnifiedRegisterSet& registers) {
  UnifiedRegisterSet implicit;
  SmallIntSet<256>& sgprs = implicit.GetSGPRSet();
  // Every vector instruction is predicated by the exec mask.
  if (name.size() > 1 && name.starts_with("v_"))
    InsertRegisterRange(sgprs, kExec, kFirstSGPR);
  // v_div_fmas and the carry-in forms consume vcc.
  if (ContainsAny(name, {"_div_fmas", "_ci_"}))
    InsertRegisterRange(sgprs, kVcc, kFirstSGPR);
  // Conditional branches test the condition bits named in the opcode.
  if (usesBranch) {
    if (Contains(name, "scc"))
      InsertRegisterRange(sgprs, kScc, kFirstSGPR);
    if (Contains(name, "vcc"))
      InsertRegisterRange(sgprs, kVccz, kFirstSGPR);
    if (Contains(name, "exec"))
      InsertRegisterRange(sgprs, kExecz, kFirstSGPR);
  }
  if (Contains(name, "saveexec"))
    InsertRegisterRange(sgprs, kExec, kFirstSGPR);
  registers.GetSGPRSet() |= sgprs;
  return implicit;
}

// Registers written without appearing as operands. Returns them and adds them
// to the scalar half of `registers`.
UnifiedRegisterSet AddImplicitWrites(std::string_view name, UnifiedRegisterSet& registers) {
  UnifiedRegisterSet implicit;
  SmallIntSet<256>& sgprs = implicit.GetSGPRSet();
  // Carry-out and division-scale flags go to vcc.
  if (ContainsAny(name, {"_div_scale", "_co_", "_mad_u64", "_mad_i64"})) {
    InsertRegisterRange(sgprs, kVcc, kFirstSGPR);
  }
  // v_cmpx writes its result to exec.
  if (name.starts_with("v_cmpx_"))
    InsertRegisterRange(sgprs, kExec, kFirstSGPR);
  // Scalar ALU operations that set scc.
  if (StartsWithAny(name,
                    {"s_abs", "s_add", "s_sub", "s_min",      "s_max",  "s_and",  "s_or",
                     "s_xor", "s_nan", "s_nor", "s_xno",      "s_lsh",  "s_ash",  "s_bfe",
                     "s_cmp", "s_not", "s_wqm", "s_quadmask", "s_bcnt", "s_cmp_", "s_bitcmp"})) {
    InsertRegisterRange(sgprs, kScc, kFirstSGPR);
    if (Contains(name, "wrexec"))
      InsertRegisterRange(sgprs, kExec, kFirstSGPR);
  }
  registers.GetSGPRSet() |= sgprs;
  return implicit;
}

// True when `set` holds a standard SGPR: walks the members in ascending order
// and counts them up to the first special register.
bool HasStandardSGPR(const UnifiedRegisterSet& set) {
  int count = 0;
  for (RegisterID id : set) {
    if (IsSpecialSGPR(id))
      break;
    ++count;
  }
  return count != 0;
}

}  // namespace

InvocationDependencyInfo::InvocationDependencyInfo(const Invocation& invocation)
    : invocation_(&invocation) {
  InitializeConditionalFlags();
  InitializeRegisters();
  InitializeRegisterFlags();
  UpdateGenericFlags();
  UpdateLatencies();
}

const char* InvocationDependencyInfo::GetName() const {
  return invocation_->GetInstruction()->GetName();
}

void InvocationDependencyInfo::InitializeConditionalFlags() {
  const std::string_view name = GetName();
  const InvocationFlagInfo info{std::string(name)};
  if (info.IsSALUInvocation())
    SetFlag(InfoFlag::UsesSALU);
  if (info.IsSMEMInvocation())
    SetFlag(InfoFlag::UsesSMEM);
  if (info.IsVALUInvocation())
    SetFlag(InfoFlag::UsesVALU);
  if (info.IsTransVALUInvocation())
    SetFlag(InfoFlag::UsesTransVALU);
  if (info.IsVMEMTexInvocation())
    SetFlag(InfoFlag::UsesVMEMTex);
  if (info.IsFlatInvocation())
    SetFlag(InfoFlag::UsesFlat);

  // An "lds"/"gds" operand routes a memory instruction to the LDS or the GDS.
  const std::vector<std::string>& args = invocation_->GetArgs();
  const bool isFlat = name.starts_with("flat_");
  auto hasMarker = [&](const char* marker) {
    return (isFlat && args.size() >= 2 && args[0] == marker) ||
           (args.size() >= 3 && args[1] == marker);
  };
  const bool hasLdsArg = hasMarker("lds");
  const bool hasGdsArg = hasMarker("gds");
  const bool isDS = name.starts_with("ds_");

  // Interpolation and LDS-direct also use the LDS, but their flags are only
  // known after UpdateGenericFlags, so they do not count here.
  if (UsesFlat() || hasLdsArg || (isDS && !hasGdsArg))
    SetFlag(InfoFlag::UsesVMEMLDS);
  if (Contains(name, "branch"))
    SetFlag(InfoFlag::UsesBranch);
  if (name.starts_with("s_sendmsg"))
    SetFlag(InfoFlag::UsesMsg);
  if (name == "exp")
    SetFlag(InfoFlag::UsesExport);
  // Global memory instructions are tracked together with GDS accesses.
  if ((isDS && hasGdsArg) || name.starts_with("global_"))
    SetFlag(InfoFlag::UsesGDS);
}

void InvocationDependencyInfo::InitializeRegisters() {
  const std::string_view name = GetName();
  UnifiedRegisterSet reads = invocation_->GetReadRegisters();
  UnifiedRegisterSet writes = invocation_->GetWriteRegisters();

  explicitReadSGPRs_ = ScalarHalf(reads);
  readSGPRs_ = explicitReadSGPRs_;
  readVGPRs_ = VectorHalf(reads);
  explicitWriteSGPRs_ = ScalarHalf(writes);
  writtenSGPRs_ = explicitWriteSGPRs_;
  writtenVGPRs_ = VectorHalf(writes);

  implicitReadSGPRs_ = AddImplicitReads(name, UsesBranch(), reads);
  implicitWriteSGPRs_ = AddImplicitWrites(name, writes);

  readSGPRs_ |= implicitReadSGPRs_;
  writtenSGPRs_ |= implicitWriteSGPRs_;
  readRegisters_ = reads;
  writeRegisters_ = writes;
}

void InvocationDependencyInfo::InitializeRegisterFlags() {
  if (implicitWriteSGPRs_.Contains(kScc))
    SetFlag(InfoFlag::WritesAnySGPR);
  if (!writtenVGPRs_.IsEmpty())
    SetFlag(InfoFlag::WritesAnyVGPR);

  const bool writesStandardSGPR = HasStandardSGPR(writtenSGPRs_);
  if (!writtenSGPRs_.IsEmpty()) {
    SetFlag(InfoFlag::WritesAnySGPR);
    if (writesStandardSGPR)
      SetFlag(InfoFlag::WritesAnyStandardSGPR);
    if (writtenSGPRs_.Contains(kScc))
      SetFlag(InfoFlag::WritesSCC);
    if (writtenSGPRs_.Contains(kVcc))
      SetFlag(InfoFlag::WritesVCC);
    if (writtenSGPRs_.Contains(kExec))
      SetFlag(InfoFlag::WritesExec);
    if (writtenSGPRs_.Contains(kM0))
      SetFlag(InfoFlag::WritesM0);
  }

  if (!readVGPRs_.IsEmpty())
    SetFlag(InfoFlag::ReadsAnyVGPR);

  if (!readSGPRs_.IsEmpty()) {
    SetFlag(InfoFlag::ReadsAnySGPR);
    // Deliberately decided by the written SGPRs: the stall model keys the
    // "reads a standard SGPR" hazards on this.
    if (writesStandardSGPR)
      SetFlag(InfoFlag::ReadsAnyStandardSGPR);
    if (readRegisters_.Contains(kVcc))
      SetFlag(InfoFlag::ReadsAnySGPR);
    if (readRegisters_.Contains(kScc))
      SetFlag(InfoFlag::ReadsSCC);
    if (readRegisters_.Contains(kSccz))
      SetFlag(InfoFlag::ReadsSCCZ);
    if (readRegisters_.Contains(kVcc))
      SetFlag(InfoFlag::ReadsVCC);
    if (readRegisters_.Contains(kVccz))
      SetFlag(InfoFlag::ReadsVCCZ);
    if (readRegisters_.Contains(kExec))
      SetFlag(InfoFlag::ReadsExec);
    if (readRegisters_.Contains(kExecz))
      SetFlag(InfoFlag::ReadsExecZ);
    if (readRegisters_.Contains(kM0))
      SetFlag(InfoFlag::ReadsM0);
  }
}

void InvocationDependencyInfo::UpdateGenericFlags() {
  const std::string_view name = GetName();
  const std::vector<std::string>& args = invocation_->GetArgs();

  if (Contains(name, "_movrel"))
    SetFlag(InfoFlag::IsMoveRel);
  if (Contains(name, "_swaprel"))
    SetFlag(InfoFlag::IsSwapRel);
  if (Contains(name, "_subvector"))
    SetFlag(InfoFlag::IsSubvectorBeginEnd);
  if (Contains(name, "_interp"))
    SetFlag(InfoFlag::IsVInterp);
  bool hasLdsDirectArg = false;
  for (const std::string& arg : args)
    hasLdsDirectArg |= arg == "lds_direct";
  if (hasLdsDirectArg || IsVInterp())
    SetFlag(InfoFlag::IsLDSDirect);
  if (Contains(name, "_readfirstlane"))
    SetFlag(InfoFlag::IsReadFirstLane);
  if (Contains(name, "_div_fmas"))
    SetFlag(InfoFlag::IsDiv_FMas);
  if (IsDiv_FMas() || Contains(name, "_co_") || Contains(name, "v_cmp")) {
    SetFlag(InfoFlag::WriteLaneMask);
  }
  if (Contains(name, "_ci_") || Contains(name, "v_cndmask"))
    SetFlag(InfoFlag::ReadsLaneMask);
  if (Contains(name, "_addtid"))
    SetFlag(InfoFlag::IsAddTid);
  if (Contains(name, "_swap_b32"))
    SetFlag(InfoFlag::IsSpecial);
  if (Contains(name, "_waitcnt")) {
    SetFlag(InfoFlag::IsWaitCnt);
    ResolveWaitType();
  }
  if (ContainsAny(name, {"_store", "_atomic"}))
    SetFlag(InfoFlag::IsStore);
  if (ContainsAny(name, {"_load", "_atomic", "_sample", "_gather"}))
    SetFlag(InfoFlag::IsLoad);
  if (ContainsAny(name, {"_setreg", "clrexcp", "_swappc_", "_getpc", "_call"})) {
    SetFlag(InfoFlag::IsPCReadEtc);
  }
  isWaitCntDepCtr_ = name.starts_with("s_waitcnt_depctr");
}

void InvocationDependencyInfo::ResolveWaitType() {
  const std::string name = ToLower(GetName());
  waitType_ = WaitType::None;
  if (name == "s_waitcnt_depctr")
    return;
  if (StartsWith(name, "s_waitcnt_")) {
    if (name == "s_waitcnt_vmcnt") {
      waitType_ = WaitType::VmCnt;
    } else if (name == "s_waitcnt_vscnt") {
      waitType_ = WaitType::VsCnt;
    } else if (name == "s_waitcnt_lgkmcnt") {
      waitType_ = WaitType::LgkmCnt;
    } else if (name == "s_waitcnt_expcnt") {
      waitType_ = WaitType::ExpCnt;
    }
    return;
  }
  // Plain s_waitcnt: the first counter named in the operands decides. The
  // export counter is deliberately mapped to the store counter in this form.
  const std::vector<std::string>& args = invocation_->GetArgs();
  if (args.empty())
    return;
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
  if (UsesSALU())
    usage |= InstructionUnit::SALU;
  if (UsesVALU() || IsLDSDirect())
    usage |= InstructionUnit::VALU;
  if (UsesTransVALU())
    usage |= InstructionUnit::TransVALU;
  if (UsesSMEM())
    usage |= InstructionUnit::SMEM;
  if (UsesVMEM())
    usage |= InstructionUnit::VMEM;
  if (UsesVMEMLDS() || IsLDSDirect())
    usage |= InstructionUnit::LDS;
  if (UsesGDS())
    usage |= InstructionUnit::GDS;
  if (UsesBranch())
    usage |= InstructionUnit::Branch;
  return usage;
}

}  // namespace vesk
