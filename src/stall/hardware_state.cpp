// The simulated wave: cycle advance, instruction issue, the per-instruction
// step, the merge at control-flow joins and state equality.
#include "stall/hardware_state.h"

#include <algorithm>
#include <cassert>

#include <fmt/format.h>

#include "timing/operand_number.h"
#include "util/string_helpers.h"

namespace vesk {

namespace {

bool IsAnyVALU(const InvocationDependencyInfo& info) {
  return info.UsesVALU() || info.UsesTransVALU();
}

const char* OpcodeName(const InvocationDependencyInfo& info) {
  return info.GetInvocation().GetInstruction()->GetName();
}

// Cycles lost to SGPR bank conflicts of an SALU instruction: registers are
// read through an 8 x 16 grid of (pair mod 8, group of 16); reads in the same
// row but different columns serialize.
int GetSGPRBankPenalty(const InvocationDependencyInfo& info) {
  if (!info.UsesSALU()) return 0;
  std::array<uint16_t, 8> rows{};
  bool onlyConditionBits = true;
  info.ForEachExplicitReadSGPR([&](RegisterID reg) {
    if (reg != kScc && reg != kVccz && reg != kExecz) onlyConditionBits = false;
    if (!IsStandardSGPR(reg)) return;
    const int index = GetSGPRIndex(reg);
    rows[(index / 2) % 8] |= static_cast<uint16_t>(1u << (index / 16));
  });
  int penalty = 0;
  for (uint16_t row : rows) penalty = std::max(penalty, std::max(std::popcount(row) - 1, 0));
  if (onlyConditionBits) penalty = std::max(penalty - 2, 0);
  return penalty;
}

// Cycles lost to VGPR bank conflicts of a VALU instruction: four banks
// (index mod 4), one read per bank and cycle.
int GetVGPRBankPenalty(const InvocationDependencyInfo& info) {
  if (!IsAnyVALU(info)) return 0;
  std::array<int, 4> banks{};
  info.ForEachReadVGPR([&](RegisterID reg) { ++banks[GetVGPRIndex(reg) % 4]; });
  return std::max(*std::max_element(banks.begin(), banks.end()) - 1, 0);
}

// Operand value of the per-counter wait forms: a decimal number when the
// text starts with one or two digits; anything else (e.g. hexadecimal) is 0.
int ReadWaitOperand(const Invocation& invocation, size_t i) {
  const std::vector<std::string>& args = invocation.GetArgs();
  if (i >= args.size()) return 0;
  const std::string& text = args[i];
  auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  if (!text.empty() && isDigit(text[0]) && (text.size() == 1 || isDigit(text[1])))
    return ConvertOperandNumber(invocation, "wait count", text, 32,
                                [&] { return std::stoi(text); });
  return 0;
}

}  // namespace

const std::unordered_map<std::string_view, RegisterID> HardwareState::specialRegisters = [] {
  std::unordered_map<std::string_view, RegisterID> table;
  static const char* const kNames[] = {
      "ttmp0", "ttmp1",  "ttmp2",  "ttmp3",  "ttmp4",  "ttmp5",  "ttmp6",  "ttmp7", "ttmp8",
      "ttmp9", "ttmp10", "ttmp11", "ttmp12", "ttmp13", "ttmp14", "ttmp15", "exec",  "exec_lo",
      "vcc",   "vcc_lo", "scc",    "sccz",   "m0",     "vccz",   "execz"};
  for (const char* name : kNames) table.emplace(name, GetSpecialRegisterID(name));
  return table;
}();

bool HardwareState::TryGetRegisterFromName(const char* name, Register& out) {
  RegisterID id = 0;
  if (!TryGetSpecialRegisterID(name, id)) return false;
  out = Register{GetSGPRIndex(id), SGPR};
  return true;
}

RegisterID HardwareState::GetRegisterID(const char* name) {
  return GetSpecialRegisterID(name);
}

Register HardwareState::GetRegisterFromName(const char* name) {
  return Register{GetSGPRIndex(GetRegisterID(name)), SGPR};
}

Scoreboard& HardwareState::GetWriteScoreboard(RegisterID reg) {
  Scoreboard& board = WriteBoard(reg);
  pending_[kWrite].Insert(reg);
  anyPending_ = true;
  return board;
}

Scoreboard& HardwareState::GetReadScoreboard(RegisterID reg) {
  Scoreboard& board = ReadBoard(reg);
  pending_[kRead].Insert(reg);
  anyPending_ = true;
  return board;
}

void HardwareState::Refresh(int dir, RegisterID reg) const {
  const Scoreboard& board = Board(dir, reg);
  touched_[dir].Insert(reg);
  if (board.IsEmpty()) {
    live_[dir].Erase(reg);
    running_[dir].Erase(reg);
    executing_[dir].Erase(reg);
    return;
  }
  live_[dir].Insert(reg);
  if (board.HasRunningEntry())
    running_[dir].Insert(reg);
  else
    running_[dir].Erase(reg);
  if (board.HasRunningExecution())
    executing_[dir].Insert(reg);
  else
    executing_[dir].Erase(reg);
}

void HardwareState::RefreshPending() const {
  if (!anyPending_) return;
  for (int dir = 0; dir < 2; ++dir) {
    for (int reg : pending_[dir]) Refresh(dir, reg);
    pending_[dir] = RegisterBits();
  }
  anyPending_ = false;
}

int HardwareState::GetMinimumMemLatency(const InvocationDependencyInfo& info) {
  if (info.UsesVMEM() || info.UsesSMEM() || info.UsesVMEMLDS() || info.UsesGDS() || info.UsesMsg())
    return 35;
  return 0;
}

bool HardwareState::MergeQueues(MemoryCounterQueues& queues, int queue,
                                const MemoryCounterQueues& other) {
  return queues.MergeFrom(queue, other);
}

bool HardwareState::AnyCounterActive() const {
  const HardwareCounters& c = counters_;
  return c.sa_sdst_ >= 1 || c.sa_exec_ >= 1 || c.sa_m0_ >= 1 || c.vm_vsrc_ >= 1 ||
         c.va_sdst_ >= 1 || c.va_ssrc_ >= 1 || c.va_vcc_ >= 1 || c.va_exec_ >= 1 ||
         c.va_vdst_ >= 1 || c.lds_dir_ >= 1;
}

ScoreboardUsageCounts HardwareState::GetUsageCountsForRange(const ScoreboardArray& scoreboards,
                                                            RegisterID first,
                                                            RegisterID last) const {
  ScoreboardUsageCounts sum;
  assert(first >= 0 && (first >= last || last <= kRegisterCount));
  for (RegisterID reg = first; reg < last; ++reg)
    if (!scoreboards[reg].IsEmpty()) sum += scoreboards[reg].GetUsageCounts();
  return sum;
}

int HardwareState::VGPRsUsed() const {
  int used = 0;
  for (RegisterID reg = 0; reg < 256; ++reg) used += WriteBoard(reg).Size();
  return used;
}

std::string HardwareState::PrintRegistersInUse() const {
  std::string text = "Currently used registers:";
  for (RegisterID reg = 0; reg < kRegisterCount; ++reg) {
    const int writes = WriteBoard(reg).Size();
    const int reads = ReadBoard(reg).Size();
    if (writes == 0 && reads == 0) continue;
    text += fmt::format("\n{}{}: {} write(s), {} read(s)", IsVGPR(reg) ? "v" : "s",
                        IsVGPR(reg) ? reg : GetSGPRIndex(reg), writes, reads);
  }
  return text;
}

bool HardwareState::IsQuiescent() const {
  return executing_[kWrite].IsEmpty() && executing_[kRead].IsEmpty() && counters_.f32_busy_ == 0 &&
         counters_.trans32_busy_ == 0;
}

void HardwareState::UpdateWriteScoreboard(RegisterID reg) {
  HardwareCounters& c = counters_;
  Scoreboard& board = WriteBoard(reg);
  if (IsVGPR(reg)) {
    board.UpdateVGPRWrites(c.va_vdst_, c.lds_dir_);
  } else if (IsStandardSGPR(reg)) {
    board.UpdateSGPRWrites(c.va_sdst_, c.sa_sdst_);
  } else if (reg == kExec) {
    board.UpdateExec(c.va_sdst_, c.va_exec_, c.sa_exec_);
  } else if (reg == kM0) {
    board.UpdateM0(c.sa_m0_);
  } else if (reg == kVcc) {
    board.UpdateVcc(c.va_vcc_, c.sa_sdst_);
  } else {
    board.UpdateOtherHWRegWrites(reg, c.va_sdst_, c.sa_sdst_);
  }
  Refresh(kWrite, reg);
}

void HardwareState::UpdateReadScoreboard(RegisterID reg) {
  Scoreboard& board = ReadBoard(reg);
  if (IsVGPR(reg))
    board.UpdateVGPRReads(counters_.vm_vsrc_);
  else
    board.UpdateSGPRReads(reg, counters_.va_ssrc_);
  Refresh(kRead, reg);
}

// One cycle. Only scoreboards with an entry still counting down are visited:
// on every other one the cycle changes nothing. Each scoreboard touches only
// its own entries and lowers counters, so the visiting order is free.
void HardwareState::SimulateCycle() {
  const RegisterBits writes = running_[kWrite];
  for (int reg : writes) UpdateWriteScoreboard(reg);
  const RegisterBits reads = running_[kRead];
  for (int reg : reads) UpdateReadScoreboard(reg);
  DecrementIfGreaterZero(counters_.f32_busy_);
  DecrementIfGreaterZero(counters_.trans32_busy_);
  queues_.Advance(1);
  DecrementIfGreaterZero(pc_read_latency_);
}

// `cycles` cycles in which no scoreboard entry counts down: only the busy
// counters, the queues and the program-counter latency move.
void HardwareState::AdvanceIdle(int64_t cycles) {
  auto drain = [cycles](int32_t& value) {
    const int64_t left = static_cast<int64_t>(value) - cycles;
    value = static_cast<int32_t>(left > 0 ? left : 0);
  };
  drain(counters_.f32_busy_);
  drain(counters_.trans32_busy_);
  queues_.Advance(cycles);
  drain(pc_read_latency_);
}

void HardwareState::UpdateCounters(int cycles) {
  if (cycles < 1) return;
  RefreshPending();
  int done = 0;
  while (done < cycles && !(running_[kWrite].IsEmpty() && running_[kRead].IsEmpty())) {
    SimulateCycle();
    ++done;
  }
  if (done < cycles) AdvanceIdle(cycles - done);
}

StallLength HardwareState::IssueInstruction(const InvocationDependencyInfo& info,
                                            StallCause* waitCause) {
  RefreshPending();
  HardwareCounters& c = counters_;
  const bool anyVALU = IsAnyVALU(info);

  // 1. Dependency counters.
  if (info.UsesSALU()) {
    if (info.WritesAnySGPR()) {
      // The written-register flags of exec and m0 are set exactly when the
      // written SGPRs hold them.
      const int n = info.CountWrittenSGPRs() - info.WritesExec() - info.WritesM0();
      if (n >= 1) c.sa_sdst_ += n;
    }
    if (info.WritesExec()) c.sa_exec_ += 1;
    if (info.WritesM0()) c.sa_m0_ += 1;
  }
  if (info.UsesVMEM() && info.ReadsAnyVGPR()) c.vm_vsrc_ += 1;
  if (anyVALU) {
    const int n = info.CountWrittenSGPRs() - info.WritesVCC();
    if (n != 0) c.va_sdst_ += n;
    const int reads = info.CountExplicitReadSGPRs();
    if (info.ExplicitlyReads(kVcc) ? reads > 1 : reads >= 1) c.va_ssrc_ += 1;
    if (info.WritesVCC()) c.va_vcc_ += 1;
    if (info.WritesExec()) c.va_exec_ += 1;
    if (info.WritesAnyVGPR()) c.va_vdst_ += 1;
  }
  if (info.IsLDSDirect()) c.lds_dir_ += 1;

  // 2., 3. Register bank conflicts delay the results.
  const int penalty = GetSGPRBankPenalty(info) + GetVGPRBankPenalty(info);

  // 4., 5. Pending writes.
  const HardwareUsage usage = info.GetHardwareUsage();
  RegisterPipelineUsage entry;
  entry.usage = usage;
  entry.executeLength = StallLength(info.GetTotalExecuteLatency()) + penalty;
  entry.visibilityLength = StallLength(info.GetTotalVisibilityLatency()) + penalty;
  entry.info = &info;
  entry.writesLaneMask = info.WriteLaneMask();
  entry.isFirstRegister = true;
  auto addWrite = [&](RegisterID reg) {
    WriteBoard(reg).AddEntry(entry);
    Refresh(kWrite, reg);
    entry.isFirstRegister = false;
  };
  info.ForEachWrittenSGPR(addWrite);
  entry.writesLaneMask = false;
  entry.isFirstRegister = true;
  info.ForEachWrittenVGPR(addWrite);

  // 6., 7. Pending source reads.
  RegisterPipelineUsage read;
  read.usage = usage;
  read.info = &info;
  auto addRead = [&](RegisterID reg) {
    ReadBoard(reg).AddEntry(read);
    Refresh(kRead, reg);
    read.isFirstRegister = false;
  };
  if (anyVALU) {
    read.executeLength = StallLength(7);
    read.isFirstRegister = true;
    info.ForEachExplicitReadSGPR(addRead);
  }
  if (info.UsesVMEM() && info.ReadsAnyVGPR()) {
    read.executeLength = StallLength(info.CountReadVGPRs() + 9);
    read.isFirstRegister = true;
    info.ForEachReadVGPR(addRead);
  }

  // 8. Busy units.
  if (info.UsesVALU()) {
    c.f32_busy_ = info.GetIssueLatency();
    if (info.UsesTransVALU()) c.trans32_busy_ = info.GetIssueLatency();
  } else if (info.UsesTransVALU()) {
    c.trans32_busy_ = info.GetIssueLatency();
  }

  // 9. Memory counter queues.
  const MemoryQueueElement element{&info, GetMinimumMemLatency(info)};
  if (info.UsesVMEM() || info.UsesGDS()) {
    if (info.IsStore()) queues_.PushBack(kVsCntQueue, element);
    if (info.IsLoad()) queues_.PushBack(kVmCntQueue, element);
  }
  if ((info.UsesVMEMLDS() && !info.IsLDSDirect()) || info.UsesGDS() || info.UsesSMEM() ||
      info.UsesMsg())
    queues_.PushBack(kLgkmCntQueue, element);

  // 10. Kind of the last vector memory access.
  if (info.UsesVMEMLDS())
    vmem_kind_ = kVMEMLDS;
  else if (info.UsesVMEMTex() || info.UsesFlat())
    vmem_kind_ = kTextureOrFlat;

  // 11. Program-counter reads.
  if (info.IsPCReadEtc()) pc_read_latency_ = info.GetTotalExecuteLatency();

  // 12., 13. Memory counter waits.
  if (!info.IsWaitCnt()) return StallLength(StallLength::kIndefinite);
  return WaitOnMemoryCounter(info, waitCause);
}

StallLength HardwareState::WaitOnMemoryCounter(const InvocationDependencyInfo& info,
                                               StallCause* cause) {
  if (info.IsWaitCntDepCtr()) return StallLength(StallLength::kIndefinite);
  const std::string_view name = OpcodeName(info);
  const std::vector<std::string>& args = info.GetInvocation().GetArgs();
  const std::string_view first = args.empty() ? std::string_view() : std::string_view(args[0]);

  int queue = -1;
  if (first.starts_with("vm") || name == "s_waitcnt_vmcnt") queue = kVmCntQueue;
  if (first.starts_with("vs") || name == "s_waitcnt_vscnt") queue = kVsCntQueue;
  if (first.starts_with("lgkm") || name == "s_waitcnt_lgkmcnt") queue = kLgkmCntQueue;
  if (first.starts_with("expcnt")) queue = kExpCntQueue;
  if (cause != nullptr) {
    static constexpr WaitCounter kCounterOfQueue[kMemoryQueueCount] = {
        WaitCounter::kVmCnt, WaitCounter::kVsCnt, WaitCounter::kLgkmCnt, WaitCounter::kNone,
        WaitCounter::kExpCnt};
    *cause = StallCause{};
    cause->condition = kMemoryCounterStall;
    if (queue >= 0) cause->counter = kCounterOfQueue[queue];
  }
  // A wait that names no queue waits for nothing.
  if (queue < 0) return StallLength(0);

  const Invocation& invocation = info.GetInvocation();
  const int64_t count =
      name == "s_waitcnt"
          ? ConvertOperandNumber(invocation, "wait count", first, 32,
                                 [&] { return ExtractNewCountFromWaitArgument(first); })
          : static_cast<int64_t>(ReadWaitOperand(invocation, 0)) + ReadWaitOperand(invocation, 1);
  const int64_t toPop = static_cast<int64_t>(queues_.Size(queue)) - count;

  // Pop the oldest (size - count) operations; a count above the queue size
  // makes the difference negative and empties the queue.
  // Reused across waits: the simulation allocates nothing per instruction.
  static thread_local std::vector<MemoryQueueElement> popped;
  popped.clear();
  int32_t waitTime = 0;
  bool allScalarMemory = true;
  bool allLoads = true;
  for (int64_t left = toPop; left != 0 && !queues_.IsEmpty(queue); --left) {
    const MemoryQueueElement element = queues_.PopFront(queue);
    // The oldest operation the counter has to drop below is the one waited
    // for.
    if (cause != nullptr && popped.empty()) cause->culprit = &element.info->GetInvocation();
    element.info->ForEachWriteRegister([&](RegisterID reg) {
      WriteBoard(reg).PopFirstMemOp();
      Refresh(kWrite, reg);
    });
    popped.push_back(element);
    waitTime = std::max(waitTime, element.remaining);
    allScalarMemory = allScalarMemory && element.info->UsesSMEM();
    allLoads = allLoads && element.info->IsLoad();
  }
  for (int q : {kVmCntQueue, kVsCntQueue, kLgkmCntQueue}) queues_.RemoveAll(q, popped);
  UpdateCounters(waitTime);

  if (toPop != 0 && allScalarMemory) return StallLength(waitTime);
  if (info.GetWaitType() == WaitType::VmCnt && vmem_kind_ == kTextureOrFlat && allLoads)
    return StallLength(60);
  return StallLength(StallLength::kIndefinite);
}

StallDescription HardwareState::Step(const InvocationDependencyInfo& info, int distance,
                                     bool extraCycle, StallCause* cause) {
  UpdateCounters(distance);
  StallDescription result;
  result.length = StallLength(distance);
  result.reason = distance > 0 ? kIssueDistanceStall : kNoStall;
  StallCause distanceCause;
  if (distance > 0) distanceCause.condition = kIssueDistanceStall;
  StallCause applied = distanceCause;
  const StallDescription stall = ApplyStall(info, cause != nullptr ? &applied : nullptr);
  if (!stall.length.IsZero()) {
    result.reason = stall.reason;
    result.length += stall.length;
  } else {
    applied = distanceCause;
  }
  // In wave64 mode the two halves of a vector operation issue one cycle apart.
  if (extraCycle && (info.UsesVALU() || info.UsesVMEM())) UpdateCounters(1);
  StallCause waited;
  const StallLength issued = IssueInstruction(info, cause != nullptr ? &waited : nullptr);
  if (!issued.IsIndefinite()) {
    result.length = issued + distance;
    result.reason = kMemoryCounterStall;
    // A wait that had nothing to wait for only lost the issue distance.
    if (issued.IsZero()) waited = distanceCause;
    applied = waited;
  } else if (waited.condition == kMemoryCounterStall) {
    // The wait's end is unknown: it, not what came before, is unbounded.
    applied = waited;
  }
  UpdateCounters(1);
  if (cause != nullptr) *cause = result.length > 0 ? applied : StallCause{};
  return result;
}

bool HardwareState::UpdateInput(const HardwareState& other) {
  RefreshPending();
  other.RefreshPending();
  bool changed = false;
  if (other.counters_.f32_busy_ > counters_.f32_busy_) {
    counters_.f32_busy_ = other.counters_.f32_busy_;
    changed = true;
  }
  if (other.counters_.trans32_busy_ > counters_.trans32_busy_) {
    counters_.trans32_busy_ = other.counters_.trans32_busy_;
    changed = true;
  }
  for (int q : {kVmCntQueue, kVsCntQueue, kLgkmCntQueue})
    changed = MergeQueues(queues_, q, other.queues_) || changed;
  // A scoreboard merge with an empty scoreboard changes nothing.
  for (int dir = 0; dir < 2; ++dir) {
    for (int reg : other.live_[dir]) {
      changed = Board(dir, reg).Merge(other.Board(dir, reg)) || changed;
      Refresh(dir, reg);
    }
  }
  if (other.vmem_kind_ != kNoVMEM) {
    if (vmem_kind_ == kNoVMEM) {
      vmem_kind_ = other.vmem_kind_;
      changed = true;
    } else if (vmem_kind_ != kMixedVMEM && vmem_kind_ != other.vmem_kind_) {
      vmem_kind_ = kMixedVMEM;
      changed = true;
    }
  }
  ReevaluateCounters();
  return changed;
}

bool HardwareState::operator==(const HardwareState& other) const {
  RefreshPending();
  other.RefreshPending();
  if (counters_ != other.counters_ || pc_read_latency_ != other.pc_read_latency_) return false;
  for (int dir = 0; dir < 2; ++dir) {
    if (live_[dir] != other.live_[dir]) return false;
    for (int reg : live_[dir])
      if (Board(dir, reg) != other.Board(dir, reg)) return false;
  }
  for (int q = 0; q < kMemoryQueueCount; ++q)
    if (!queues_.QueueEquals(q, other.queues_)) return false;
  return true;
}

void HardwareState::ClearScoreboards() {
  for (int dir = 0; dir < 2; ++dir) {
    for (int reg : touched_[dir]) Board(dir, reg) = Scoreboard();
    // Hand-edited scoreboards not refreshed yet are cleared too.
    for (int reg : pending_[dir]) Board(dir, reg) = Scoreboard();
    live_[dir] = running_[dir] = executing_[dir] = touched_[dir] = pending_[dir] = RegisterBits();
  }
  anyPending_ = false;
}

namespace {

// Empties `v` and makes room for exactly `size` elements, giving back storage
// well beyond that: block states are kept for the whole analysis, so their
// vectors stay at the size they hold rather than the largest they held.
template <class T>
void ClearToSize(std::vector<T>& v, size_t size) {
  v.clear();
  if (v.capacity() < size || v.capacity() > size + size / 4 + 4) {
    std::vector<T> fresh;
    fresh.reserve(size);
    v.swap(fresh);
  }
}

}  // namespace

void HardwareState::Pack(PackedHardwareState& out) const {
  RefreshPending();
  out.counters = counters_;
  out.vmemKind = vmem_kind_;
  out.pcReadLatency = pc_read_latency_;
  size_t queued = 0;
  for (int q = 0; q < kMemoryQueueCount; ++q) queued += queues_.Size(q);
  ClearToSize(out.queued, queued);
  for (int q = 0; q < kMemoryQueueCount; ++q) {
    queues_.AppendElements(q, out.queued);
    out.queueEnds[q] = static_cast<uint32_t>(out.queued.size());
  }
  // Headers first, so the slots are stored at their exact size.
  ClearToSize(out.boards, touched_[kWrite].Count() + touched_[kRead].Count());
  uint32_t slotCount = 0;
  for (int dir = 0; dir < 2; ++dir) {
    for (int reg : touched_[dir]) {
      const Scoreboard& board = Board(dir, reg);
      // Keep the live entries and any finished entries left behind the ring's
      // end: they become visible again once the ring empties.
      int stored = std::min(board.Size(), Scoreboard::kCapacity);
      for (int i = Scoreboard::kCapacity - 1; i >= stored; --i) {
        if (!board[i].IsEmptySlot()) {
          stored = i + 1;
          break;
        }
      }
      if (stored == 0) continue;
      out.boards.push_back({static_cast<uint16_t>(dir * kRegisterCount + reg),
                            static_cast<uint16_t>(stored), board.Size(), slotCount});
      slotCount += static_cast<uint32_t>(stored);
    }
  }
  ClearToSize(out.slots, slotCount);
  for (const PackedHardwareState::Board& stored : out.boards) {
    const Scoreboard& board = Board(stored.id / kRegisterCount, stored.id % kRegisterCount);
    for (int i = 0; i < stored.slots; ++i) out.slots.push_back(board[i]);
  }
}

void HardwareState::Unpack(const PackedHardwareState& packed) {
  ClearScoreboards();
  counters_ = packed.counters;
  vmem_kind_ = packed.vmemKind;
  pc_read_latency_ = packed.pcReadLatency;
  queues_.Clear();
  uint32_t begin = 0;
  for (int q = 0; q < kMemoryQueueCount; ++q) {
    for (uint32_t i = begin; i < packed.queueEnds[q]; ++i) queues_.PushBack(q, packed.queued[i]);
    begin = packed.queueEnds[q];
  }
  for (const PackedHardwareState::Board& stored : packed.boards) {
    const int dir = stored.id / kRegisterCount;
    const RegisterID reg = stored.id % kRegisterCount;
    Scoreboard& board = Board(dir, reg);
    for (int i = 0; i < stored.slots; ++i) board.GetSlot(i) = packed.slots[stored.first + i];
    board.SetRing(0, stored.count);
    Refresh(dir, reg);
  }
}

void PackedHardwareState::Release() {
  *this = PackedHardwareState();
}

bool PackedHardwareState::operator==(const PackedHardwareState& other) const {
  if (counters != other.counters || pcReadLatency != other.pcReadLatency ||
      queueEnds != other.queueEnds || queued != other.queued)
    return false;
  // Scoreboards compare by their live entries; stored ones without any are
  // equal to absent ones.
  size_t a = 0;
  size_t b = 0;
  auto skipIdle = [](const std::vector<Board>& boards, size_t& i) {
    while (i < boards.size() && boards[i].count == 0) ++i;
  };
  while (true) {
    skipIdle(boards, a);
    skipIdle(other.boards, b);
    if (a == boards.size() || b == other.boards.size())
      return a == boards.size() && b == other.boards.size();
    const Board& x = boards[a];
    const Board& y = other.boards[b];
    if (x.id != y.id || x.count != y.count) return false;
    for (int i = 0; i < x.count; ++i)
      if (slots[x.first + i % Scoreboard::kCapacity] !=
          other.slots[y.first + i % Scoreboard::kCapacity])
        return false;
    ++a;
    ++b;
  }
}

}  // namespace vesk
