// StallCause: what held one instruction back before issue, as recorded by
// the stall simulation for the stall it reports (the largest one): the
// condition, the instruction waited for, and the register or memory counter
// involved.
#pragma once

#include <cstdint>

#include "isa/registers.h"
#include "stall/stall_description.h"

namespace vesk {

class Invocation;

// The family of a cause, derived from its condition.
enum class StallCauseKind : uint8_t {
  kNone,               // the instruction did not wait
  kMemoryCounter,      // s_waitcnt and its per-counter forms
  kRegister,           // a VGPR or SGPR source still being written
  kDependencyCounter,  // one of the dependency counters (sa_sdst ... lds_dir)
  kHardware,           // a unit or issue condition without an instruction
};

// The memory counter a wait drains.
enum class WaitCounter : uint8_t { kNone, kVmCnt, kVsCnt, kLgkmCnt, kExpCnt };

constexpr RegisterID kNoRegister = -1;

struct StallCause {
  // A StallReason code: the condition that held the issue back last. Besides
  // the reasons of StallDescription it can be kShortenedVaVdstStall or
  // kPCReadDrainStall.
  uint8_t condition = kNoStall;
  // Memory counter waits: the counter waited on (kNone for a wait that names
  // no counter).
  WaitCounter counter = WaitCounter::kNone;
  // Register source stalls: the register whose value was not yet visible.
  RegisterID reg = kNoRegister;
  // The instruction waited for: the writer of the register, the oldest
  // memory operation the counter had to drop below, or the operation that
  // kept a dependency counter up. Null when there is none (unit conditions,
  // an empty queue, a counter no operation accounts for). It points into the
  // program the analysis ran on; it may lie in another basic block.
  const Invocation* culprit = nullptr;

  StallCauseKind GetKind() const;
  bool operator==(const StallCause&) const = default;
};

// The kind of a condition code.
StallCauseKind GetStallCauseKind(uint8_t condition);
// Short lower-case name of a condition: "vgpr_source", "sgpr_source",
// "valu_busy", "trans_busy", "sa_sdst" ... "lds_dir", "pc_read",
// "pc_read_drain",
// "memory_wait", "issue_distance", "shortened_vdst_wait"; "none" for
// kNoStall and unknown codes.
const char* GetStallConditionName(uint8_t condition);
// "vmcnt", "vscnt", "lgkmcnt", "expcnt"; null for kNone.
const char* GetWaitCounterName(WaitCounter counter);

}  // namespace vesk
