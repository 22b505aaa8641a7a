// StallDescription: how long one instruction waited before issue and why.
#pragma once

#include <cstdint>

#include "timing/stall_length.h"

namespace vesk {

enum StallReason : uint8_t {
  kNoStall = 0,
  kVGPRSourceStall = 1,   // a VGPR source is still being written
  kSGPRSourceStall = 2,   // an SALU-written SGPR source is not yet visible
  kF32BusyStall = 5,      // the VALU is busy
  kTrans32BusyStall = 6,  // the transcendental unit is busy
  kSaSdstStall = 7,       // 7..16: a dependency counter blocks the issue
  kSaExecStall = 8,
  kSaM0Stall = 9,
  kVmVsrcStall = 10,
  kVaSdstStall = 11,
  kVaSsrcStall = 12,
  kVaVccStall = 13,
  kVaExecStall = 14,
  kVaVdstStall = 15,
  kLdsDirStall = 16,
  kPCReadStall = 17,         // program-counter read, or the drain before one
  kMemoryCounterStall = 18,  // s_waitcnt and its per-counter forms
  kIssueDistanceStall = 19,  // cycles before the instruction could issue at all
  // Recorded as a stall cause only (StallCause), never as a reason: vector
  // memory waited for pending VALU results and issued once all of them
  // finish in the next cycle.
  kShortenedVaVdstStall = 20,
  // Recorded as a stall cause only: a program-counter reading instruction
  // (or s_setreg, s_call, ...) waited for every dependency counter to drain
  // before it could issue; kPCReadStall as a cause is the latency of such an
  // instruction issued before.
  kPCReadDrainStall = 21,
};

struct StallDescription {
  StallLength length;
  uint8_t reason = kNoStall;
};

}  // namespace vesk
