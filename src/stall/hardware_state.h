// HardwareState: the simulated state of one GFX10 wave at a program point:
// per-register scoreboards of in-flight writes and reads, the dependency
// counter block, the memory counter queues, the kind of the last vector
// memory access and the pending program-counter read. Step() advances the
// state over one instruction: the cycles before it, its stall, its issue.
#pragma once

#include <array>
#include <cassert>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "isa/registers.h"
#include "stall/hardware_counters.h"
#include "stall/memory_counter_queues.h"
#include "stall/scoreboard.h"
#include "stall/stall_cause.h"
#include "stall/stall_description.h"
#include "timing/invocation_dependency_info.h"

namespace vesk {

class PackedHardwareState;

class HardwareState {
 public:
  static constexpr int kRegisterCount = kRegisterIdCount;
  static_assert(kRegisterCount == 391, "one scoreboard per unified register number");

  // vmem_kind_ values.
  static constexpr int kNoVMEM = 0;
  static constexpr int kTextureOrFlat = 1;
  static constexpr int kVMEMLDS = 2;
  static constexpr int kMixedVMEM = 3;

  using Queue = MemoryQueueKind;

  HardwareState() = default;

  // Special register names (exec, vcc, m0, ttmp0..15, ...).
  static const std::unordered_map<std::string_view, RegisterID> specialRegisters;
  static bool TryGetRegisterFromName(const char* name, Register& out);
  static RegisterID GetRegisterID(const char* name);
  static Register GetRegisterFromName(const char* name);

  const Scoreboard& GetWriteScoreboard(RegisterID reg) const { return Board(kWrite, reg); }
  const Scoreboard& GetReadScoreboard(RegisterID reg) const { return Board(kRead, reg); }
  // Mutable access (for setting up a state by hand); the activity tracking
  // of the register is refreshed before the next simulated cycle.
  Scoreboard& GetWriteScoreboard(RegisterID reg);
  Scoreboard& GetReadScoreboard(RegisterID reg);

  const HardwareCounters& GetCounters() const { return counters_; }
  HardwareCounters& GetCounters() { return counters_; }
  const MemoryCounterQueues& GetQueues() const { return queues_; }
  MemoryCounterQueues& GetQueues() { return queues_; }
  int GetVMEMKind() const { return vmem_kind_; }
  void SetVMEMKind(int kind) { vmem_kind_ = kind; }
  int GetPCReadLatency() const { return pc_read_latency_; }
  void SetPCReadLatency(int cycles) { pc_read_latency_ = cycles; }

  static void DecrementIfGreaterZero(int& value) { value = value - 1 > 0 ? value - 1 : 0; }
  static int GetMinimumMemLatency(const InvocationDependencyInfo& info);
  static bool MergeQueues(MemoryCounterQueues& queues, int queue, const MemoryCounterQueues& other);

  bool AnyCounterActive() const;
  using ScoreboardArray = std::array<Scoreboard, kRegisterIdCount>;
  ScoreboardUsageCounts GetUsageCountsForRange(const ScoreboardArray& scoreboards, RegisterID first,
                                               RegisterID last) const;
  int VGPRsUsed() const;
  std::string PrintRegistersInUse() const;

  // Advances the state by `cycles` cycles; nothing for fewer than 1.
  void UpdateCounters(int cycles);
  // Records the issue of one instruction. For a memory counter wait, the
  // cycles it waited; indefinite for every other instruction. `waitCause`,
  // when given, receives the cause of a memory counter wait.
  StallLength IssueInstruction(const InvocationDependencyInfo& info,
                               StallCause* waitCause = nullptr);
  // `cause`, when given, receives what held the instruction back (kNone when
  // the returned stall is not positive).
  StallDescription Step(const InvocationDependencyInfo& info, int distance, bool extraCycle,
                        StallCause* cause = nullptr);
  // Merges another path's state at a control-flow join; true when this
  // state gained something.
  bool UpdateInput(const HardwareState& other);

  bool operator==(const HardwareState& other) const;
  bool operator!=(const HardwareState& other) const { return !(*this == other); }

  // Stall rules before issue. `cause`, when given, receives the condition
  // that made the instruction wait last (left as it is when none did).
  StallDescription ApplyStall(const InvocationDependencyInfo& info, StallCause* cause = nullptr);
  void ReevaluateCounters();
  bool GetSaSdstCondition(const InvocationDependencyInfo& info) const;
  bool GetSaExecCondition(const InvocationDependencyInfo& info) const;
  bool GetSaM0Condition(const InvocationDependencyInfo& info) const;
  bool GetVmVsrcCondition(const InvocationDependencyInfo& info) const;
  bool GetVaSdstCondition(const InvocationDependencyInfo& info) const;
  bool GetVaSsrcCondition(const InvocationDependencyInfo& info) const;
  bool GetVaVccCondition(const InvocationDependencyInfo& info) const;
  bool GetVaExecCondition(const InvocationDependencyInfo& info) const;
  bool GetVaVdstCondition(const InvocationDependencyInfo& info) const;
  bool GetLDSDirCondition(const InvocationDependencyInfo& info) const;
  bool GetF32BusyCondition(const InvocationDependencyInfo& info) const;
  bool GetTrans32BusyCondition(const InvocationDependencyInfo& info) const;
  bool GetShortenedVaVdstCondition(const InvocationDependencyInfo& info) const;
  static int ExtractNewCountFromWaitArgument(std::string_view argument);
  static unsigned long ExtractMaskFromHexValue(const std::string& value);
  std::string ToString() const;

  // Block-boundary storage: only the scoreboards in use are kept.
  void Pack(PackedHardwareState& out) const;
  void Unpack(const PackedHardwareState& packed);

  // Waiting can change nothing any more: no entry will finish executing by
  // itself and neither unit is busy.
  bool IsQuiescent() const;

 private:
  enum Direction : int { kWrite = 0, kRead = 1 };
  using RegisterBits = SmallIntSet<448>;
  static_assert(RegisterBits::kWords * 64 >= kRegisterCount);

  // Every per-register table access goes through these; register numbers
  // outside the unified register space are rejected before simulation.
  static bool InRegisterSpace(RegisterID reg) {
    return static_cast<unsigned>(reg) < static_cast<unsigned>(kRegisterCount);
  }
  Scoreboard& Board(int dir, RegisterID reg) {
    assert(InRegisterSpace(reg) && (dir == kWrite || dir == kRead));
    return dir == kWrite ? write_scoreboards_[reg] : read_scoreboards_[reg];
  }
  const Scoreboard& Board(int dir, RegisterID reg) const {
    assert(InRegisterSpace(reg) && (dir == kWrite || dir == kRead));
    return dir == kWrite ? write_scoreboards_[reg] : read_scoreboards_[reg];
  }
  Scoreboard& WriteBoard(RegisterID reg) { return Board(kWrite, reg); }
  const Scoreboard& WriteBoard(RegisterID reg) const { return Board(kWrite, reg); }
  Scoreboard& ReadBoard(RegisterID reg) { return Board(kRead, reg); }
  const Scoreboard& ReadBoard(RegisterID reg) const { return Board(kRead, reg); }
  // Recomputes the activity bits of one scoreboard after it changed.
  void Refresh(int dir, RegisterID reg) const;
  void RefreshPending() const;
  void SimulateCycle();
  void AdvanceIdle(int64_t cycles);
  void UpdateWriteScoreboard(RegisterID reg);
  void UpdateReadScoreboard(RegisterID reg);
  void ClearScoreboards();
  StallLength WaitOnMemoryCounter(const InvocationDependencyInfo& info, StallCause* cause);
  // The in-flight operation that keeps the dependency counter of `reason`
  // (7..16) above `limit` longest: among the entries the counter counts, the
  // one whose end brings it down to `limit`. Null when no entry accounts
  // for the counter.
  const InvocationDependencyInfo* FindCounterCulprit(uint8_t reason, int limit) const;
  uint32_t BlockingConditions(const InvocationDependencyInfo& info) const;
  [[noreturn]] static void AbortUnresolvedStall(const RegisterPipelineUsage& writer);

  ScoreboardArray write_scoreboards_{};
  ScoreboardArray read_scoreboards_{};
  HardwareCounters counters_;
  MemoryCounterQueues queues_;
  int32_t vmem_kind_ = kNoVMEM;
  int32_t pc_read_latency_ = 0;

  // Per direction: scoreboards with live entries, with entries still counting
  // down, with entries still executing, possibly holding non-empty slots, and
  // changed through the mutable accessors.
  // (Derived from the scoreboards, hence mutable.)
  mutable std::array<RegisterBits, 2> live_{};
  mutable std::array<RegisterBits, 2> running_{};
  mutable std::array<RegisterBits, 2> executing_{};
  mutable std::array<RegisterBits, 2> touched_{};
  mutable std::array<RegisterBits, 2> pending_{};
  mutable bool anyPending_ = false;
};

// A HardwareState as stored at a block boundary: counters, queues and the
// ring contents of the scoreboards in use, rotated so that the oldest entry
// comes first.
class PackedHardwareState {
 public:
  // State equality: the slots beyond a scoreboard's live entries and the
  // kind of the last vector memory access are not compared.
  bool operator==(const PackedHardwareState& other) const;
  bool operator!=(const PackedHardwareState& other) const { return !(*this == other); }
  // Gives back the memory of the stored entries and queues (the state is
  // then that of an empty hardware state).
  void Release();

 private:
  friend class HardwareState;
  struct Board {
    uint16_t id;     // direction * 391 + register
    uint16_t slots;  // stored ring slots from the oldest entry on (at most 20)
    int32_t count;   // live entries (beyond 20 the ring has wrapped onto itself)
    uint32_t first;  // index of the first stored slot
  };

  HardwareCounters counters;
  int32_t vmemKind = 0;
  int32_t pcReadLatency = 0;
  // The five queues one after the other; queueEnds[q] is where queue q ends.
  std::array<uint32_t, kMemoryQueueCount> queueEnds{};
  std::vector<MemoryQueueElement> queued;
  std::vector<Board> boards;
  std::vector<RegisterPipelineUsage> slots;
};

}  // namespace vesk
