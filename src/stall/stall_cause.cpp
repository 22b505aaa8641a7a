// Kinds and short names of stall causes.
#include "stall/stall_cause.h"

namespace vesk {

StallCauseKind GetStallCauseKind(uint8_t condition) {
  switch (condition) {
    case kVGPRSourceStall:
    case kSGPRSourceStall:
      return StallCauseKind::kRegister;
    case kMemoryCounterStall:
      return StallCauseKind::kMemoryCounter;
    case kF32BusyStall:
    case kTrans32BusyStall:
    case kPCReadStall:
    case kPCReadDrainStall:
    case kIssueDistanceStall:
    case kShortenedVaVdstStall:
      return StallCauseKind::kHardware;
    default:
      break;
  }
  if (condition >= kSaSdstStall && condition <= kLdsDirStall)
    return StallCauseKind::kDependencyCounter;
  return StallCauseKind::kNone;
}

StallCauseKind StallCause::GetKind() const {
  return GetStallCauseKind(condition);
}

const char* GetStallConditionName(uint8_t condition) {
  switch (condition) {
    case kVGPRSourceStall:
      return "vgpr_source";
    case kSGPRSourceStall:
      return "sgpr_source";
    case kF32BusyStall:
      return "valu_busy";
    case kTrans32BusyStall:
      return "trans_busy";
    case kSaSdstStall:
      return "sa_sdst";
    case kSaExecStall:
      return "sa_exec";
    case kSaM0Stall:
      return "sa_m0";
    case kVmVsrcStall:
      return "vm_vsrc";
    case kVaSdstStall:
      return "va_sdst";
    case kVaSsrcStall:
      return "va_ssrc";
    case kVaVccStall:
      return "va_vcc";
    case kVaExecStall:
      return "va_exec";
    case kVaVdstStall:
      return "va_vdst";
    case kLdsDirStall:
      return "lds_dir";
    case kPCReadStall:
      return "pc_read";
    case kPCReadDrainStall:
      return "pc_read_drain";
    case kMemoryCounterStall:
      return "memory_wait";
    case kIssueDistanceStall:
      return "issue_distance";
    case kShortenedVaVdstStall:
      return "shortened_vdst_wait";
    default:
      return "none";
  }
}

const char* GetWaitCounterName(WaitCounter counter) {
  switch (counter) {
    case WaitCounter::kVmCnt:
      return "vmcnt";
    case WaitCounter::kVsCnt:
      return "vscnt";
    case WaitCounter::kLgkmCnt:
      return "lgkmcnt";
    case WaitCounter::kExpCnt:
      return "expcnt";
    case WaitCounter::kNone:
      break;
  }
  return nullptr;
}

}  // namespace vesk
