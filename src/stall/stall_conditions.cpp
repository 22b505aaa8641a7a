// The rules that hold an instruction back before issue: a pending
// program-counter read, s_waitcnt_depctr, the dependency counters with their
// per-counter conditions, and SGPR/VGPR sources still being written; the
// counter block rebuilt after a merge; the wait argument parsers.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <fmt/format.h>

#include "stall/hardware_state.h"
#include "timing/operand_number.h"
#include "util/analysis_error.h"
#include "util/fatal_exit.h"

namespace vesk {

namespace {

bool IsAnyVALU(const InvocationDependencyInfo& info) {
  return info.UsesVALU() || info.UsesTransVALU();
}

bool UsesTextureOrFlat(const InvocationDependencyInfo& info) {
  return info.UsesVMEMTex() || info.UsesFlat();
}

// Each row's condition is the Get...Condition of the same position
// (BlockingConditions).
struct DependencyRow {
  CounterField counter;
  uint8_t reason;
};

// Scanned in this order; the first blocking row names the stall.
constexpr DependencyRow kDependencyRows[] = {
    {&HardwareCounters::sa_sdst_, kSaSdstStall},
    {&HardwareCounters::sa_exec_, kSaExecStall},
    {&HardwareCounters::sa_m0_, kSaM0Stall},
    {&HardwareCounters::vm_vsrc_, kVmVsrcStall},
    {&HardwareCounters::va_sdst_, kVaSdstStall},
    {&HardwareCounters::va_ssrc_, kVaSsrcStall},
    {&HardwareCounters::va_vcc_, kVaVccStall},
    {&HardwareCounters::va_exec_, kVaExecStall},
    {&HardwareCounters::va_vdst_, kVaVdstStall},
    {&HardwareCounters::lds_dir_, kLdsDirStall},
    {&HardwareCounters::f32_busy_, kF32BusyStall},
    {&HardwareCounters::trans32_busy_, kTrans32BusyStall},
};
constexpr int kDependencyRowCount = sizeof(kDependencyRows) / sizeof(kDependencyRows[0]);
static_assert(kDependencyRowCount == 12);

// One field of the s_waitcnt_depctr immediate: the counter it limits, where
// the field sits, and the field value that means "do not wait".
struct DepCtrField {
  CounterField counter;
  int shift;
  unsigned mask;
  uint8_t reason;  // the dependency row of the same counter
};

constexpr DepCtrField kDepCtrFields[] = {
    {&HardwareCounters::sa_sdst_, 0, 0x1, kSaSdstStall},
    {&HardwareCounters::va_vcc_, 1, 0x1, kVaVccStall},
    {&HardwareCounters::vm_vsrc_, 2, 0x7, kVmVsrcStall},
    {&HardwareCounters::va_ssrc_, 8, 0x1, kVaSsrcStall},
    {&HardwareCounters::va_sdst_, 9, 0x7, kVaSdstStall},
    {&HardwareCounters::va_vdst_, 12, 0xF, kVaVdstStall},
};

// A one-bit field set to 1, or a wider field at its maximum, does not wait;
// otherwise the counter may be at most the field value.
bool DepCtrFieldPasses(const HardwareCounters& counters, const DepCtrField& field,
                       unsigned mask16) {
  const unsigned value = (mask16 >> field.shift) & field.mask;
  if (value == field.mask) return true;
  return counters.*field.counter <= static_cast<int32_t>(value);
}

// Which scoreboards and entries a dependency counter counts: the direction,
// the registers, the units of the entry, and whether only the entry of an
// instruction's first register counts (the counters kept per instruction).
struct CounterSource {
  bool read;
  bool (*holds)(RegisterID reg);
  bool (*counts)(const RegisterPipelineUsage& entry);
  bool perInstruction;
};

bool SaluEntry(const RegisterPipelineUsage& e) {
  return e.usage.UseSALU();
}
bool ValuEntry(const RegisterPipelineUsage& e) {
  return e.usage.UseVALU() || e.usage.UseTransVALU();
}
bool VmemEntry(const RegisterPipelineUsage& e) {
  return e.usage.UseVMEM();
}
bool LdsDirectEntry(const RegisterPipelineUsage& e) {
  return e.usage.IsLDS_DIRECT() && e.executeLength > 15;
}
bool AnyVGPR(RegisterID reg) {
  return IsVGPR(reg);
}
bool SaluSdstRegister(RegisterID reg) {
  return IsAnySGPR(reg) && reg != kExec && reg != kM0;
}
bool ValuSdstRegister(RegisterID reg) {
  return IsAnySGPR(reg) && reg != kVcc;
}
bool ValuSsrcRegister(RegisterID reg) {
  return IsAnySGPR(reg) && reg != kVcc && reg != kVccz;
}
bool ExecRegister(RegisterID reg) {
  return reg == kExec;
}
bool M0Register(RegisterID reg) {
  return reg == kM0;
}
bool VccRegister(RegisterID reg) {
  return reg == kVcc;
}

// Indexed by reason - kSaSdstStall.
constexpr CounterSource kCounterSources[] = {
    {false, SaluSdstRegister, SaluEntry, false},  // sa_sdst_
    {false, ExecRegister, SaluEntry, false},      // sa_exec_
    {false, M0Register, SaluEntry, false},        // sa_m0_
    {true, AnyVGPR, VmemEntry, true},             // vm_vsrc_
    {false, ValuSdstRegister, ValuEntry, false},  // va_sdst_
    {true, ValuSsrcRegister, ValuEntry, true},    // va_ssrc_
    {false, VccRegister, ValuEntry, false},       // va_vcc_
    {false, ExecRegister, ValuEntry, false},      // va_exec_
    {false, AnyVGPR, ValuEntry, true},            // va_vdst_
    {false, AnyVGPR, LdsDirectEntry, true},       // lds_dir_
};
static_assert(sizeof(kCounterSources) / sizeof(kCounterSources[0]) ==
              kLdsDirStall - kSaSdstStall + 1);

StallCause CauseOf(uint8_t condition, const InvocationDependencyInfo* culprit = nullptr,
                   RegisterID reg = kNoRegister) {
  StallCause cause;
  cause.condition = condition;
  cause.reg = reg;
  if (culprit != nullptr) cause.culprit = &culprit->GetInvocation();
  return cause;
}

}  // namespace

const InvocationDependencyInfo* HardwareState::FindCounterCulprit(uint8_t reason, int limit) const {
  if (reason < kSaSdstStall || reason > kLdsDirStall) return nullptr;
  const CounterSource& source = kCounterSources[reason - kSaSdstStall];
  RefreshPending();
  // The counter reaches `limit` when all but `limit` of its operations have
  // finished: the operation with the (limit + 1)-th longest execution left
  // is the one waited for. Ties go to the earlier register and entry.
  constexpr int kMaxRank = 16;
  const int rank = std::clamp(limit, 0, kMaxRank - 1);
  struct Candidate {
    StallLength left;
    const InvocationDependencyInfo* info;
  };
  std::array<Candidate, kMaxRank> longest{};
  int found = 0;
  const int dir = source.read ? kRead : kWrite;
  for (int reg : live_[dir]) {
    if (!source.holds(reg)) continue;
    const Scoreboard& board = Board(dir, reg);
    for (int i = 0; i < board.Size(); ++i) {
      const RegisterPipelineUsage& e = board[i];
      if (e.info == nullptr || !source.counts(e) || (source.perInstruction && !e.isFirstRegister))
        continue;
      int at = std::min(found, rank + 1);
      while (at > 0 && longest[at - 1].left < e.executeLength) --at;
      if (at > rank) continue;
      const int last = std::min(found, rank);
      for (int j = last; j > at; --j) longest[j] = longest[j - 1];
      longest[at] = {e.executeLength, e.info};
      found = std::min(found + 1, rank + 1);
    }
  }
  if (found == 0) return nullptr;
  return longest[std::min(found - 1, rank)].info;
}

bool HardwareState::GetSaSdstCondition(const InvocationDependencyInfo& i) const {
  return i.UsesSMEM() || i.UsesVMEMTex() || i.UsesFlat() ||
         (IsAnyVALU(i) && (i.WritesAnyStandardSGPR() || i.ReadsVCCZ() || i.ReadsSCC())) ||
         ((i.UsesBranch() || i.UsesMsg()) && (i.ReadsSCC() || i.ReadsVCCZ()));
}

bool HardwareState::GetSaExecCondition(const InvocationDependencyInfo& i) const {
  return i.UsesExport() || i.UsesGDS() || IsAnyVALU(i) || i.UsesSMEM() || i.UsesMsg() ||
         i.UsesVMEM() || (i.UsesBranch() && i.ReadsExecZ());
}

bool HardwareState::GetSaM0Condition(const InvocationDependencyInfo& i) const {
  return i.UsesSALU() || i.UsesSMEM() ||
         (IsAnyVALU(i) &&
          (i.WritesAnyStandardSGPR() || i.ReadsVCCZ() || i.ReadsSCC() || i.ReadsAnyStandardSGPR() ||
           i.ReadsVCC() || i.IsMoveRel() || i.IsSwapRel() || i.IsLDSDirect() || i.IsVInterp())) ||
         i.UsesVMEMLDS() || i.UsesBranch() || i.UsesMsg() || i.UsesExport() || i.UsesGDS();
}

bool HardwareState::GetVmVsrcCondition(const InvocationDependencyInfo& i) const {
  return i.UsesExport() || i.UsesGDS() || IsAnyVALU(i) ||
         (UsesTextureOrFlat(i) && vmem_kind_ == kVMEMLDS) ||
         (i.UsesVMEMLDS() && vmem_kind_ == kTextureOrFlat);
}

bool HardwareState::GetVaSdstCondition(const InvocationDependencyInfo& i) const {
  return UsesTextureOrFlat(i) || i.UsesSMEM() ||
         (i.UsesSALU() &&
          (i.ReadsAnyStandardSGPR() || i.ReadsExec() || i.ReadsExecZ() || i.ReadsM0() ||
           i.WritesAnyStandardSGPR() || i.WritesExec() || i.WritesM0()));
}

bool HardwareState::GetVaSsrcCondition(const InvocationDependencyInfo& i) const {
  return i.UsesSALU() || i.UsesSMEM();
}

bool HardwareState::GetVaVccCondition(const InvocationDependencyInfo& i) const {
  return (i.UsesSALU() && (i.ReadsVCC() || i.WritesVCC())) || i.UsesSMEM() ||
         (IsAnyVALU(i) && (i.ReadsVCCZ() || i.IsDiv_FMas())) || UsesTextureOrFlat(i) ||
         ((i.UsesBranch() || i.UsesMsg()) && i.ReadsVCCZ());
}

bool HardwareState::GetVaExecCondition(const InvocationDependencyInfo& i) const {
  return (i.UsesSALU() && (i.ReadsExec() || i.WritesExec())) ||
         (IsAnyVALU(i) && (i.ReadsExec() || i.IsReadFirstLane() || i.IsVInterp())) ||
         i.UsesExport() || i.UsesGDS() || i.UsesMsg() || i.UsesVMEM() ||
         (i.UsesBranch() && i.ReadsExecZ());
}

bool HardwareState::GetVaVdstCondition(const InvocationDependencyInfo& i) const {
  return i.UsesExport() || i.UsesGDS() || i.UsesVMEM();
}

bool HardwareState::GetLDSDirCondition(const InvocationDependencyInfo& i) const {
  return i.UsesSALU() || i.UsesSMEM() || i.UsesVALU() || i.UsesTransVALU() || i.UsesVMEM() ||
         i.IsLDSDirect();
}

bool HardwareState::GetF32BusyCondition(const InvocationDependencyInfo& i) const {
  return i.UsesVALU();
}

bool HardwareState::GetTrans32BusyCondition(const InvocationDependencyInfo& i) const {
  return i.UsesTransVALU();
}

bool HardwareState::GetShortenedVaVdstCondition(const InvocationDependencyInfo& i) const {
  if (!i.UsesVMEM()) return false;
  const HardwareCounters& c = counters_;
  if (UsesTextureOrFlat(i) && (c.va_exec_ != 0 || c.va_sdst_ != 0 || c.va_vcc_ != 0)) return false;
  if (i.UsesVMEMLDS() && c.va_exec_ != 0) return false;
  int pending = c.va_vdst_;
  if (i.UsesVMEMLDS()) pending += c.va_vcc_ + c.va_sdst_;
  RefreshPending();
  // Only a live oldest entry can have exactly one cycle left. Pending
  // transcendental results are counted in va_vdst_ like VALU results, so
  // they count alike here.
  int finishing = 0;
  for (int reg : live_[kWrite]) {
    if (!IsVGPR(reg) && (!i.UsesVMEMLDS() || reg == kExec)) continue;
    const RegisterPipelineUsage& first = WriteBoard(reg).GetFirst();
    const bool vectorResult = first.usage.UseVALU() || first.usage.UseTransVALU();
    if (vectorResult && first.executeLength == 1 && first.isFirstRegister) ++finishing;
  }
  return pending == finishing;
}

int HardwareState::ExtractNewCountFromWaitArgument(std::string_view argument) {
  std::string_view text = argument;
  const size_t open = argument.find('(');
  if (open != std::string_view::npos) {
    text = argument.substr(open + 1);
    const size_t close = text.find(')');
    if (close != std::string_view::npos) text = text.substr(0, close);
  } else {
    const size_t close = argument.find(')');
    if (close != std::string_view::npos) text = argument.substr(0, close);
  }
  return std::stoi(std::string(text));
}

unsigned long HardwareState::ExtractMaskFromHexValue(const std::string& value) {
  return std::stoul(value, nullptr, 16);
}

std::string HardwareState::ToString() const {
  const HardwareCounters& c = counters_;
  return fmt::format(
      "sa_sdst_:\t{}\nsa_exec_:\t{}\nsa_m0_:\t{}\nvm_vsrc_:\t{}\nva_sdst_:\t{}\nva_ssrc_:\t{}\n"
      "va_vcc_:\t{}\nva_exec_:\t{}\nva_vdst_:\t{}\nlds_dir_:\t{}\nf32_busy_:\t{}\n"
      "trans32_busy_:\t{}\n",
      c.sa_sdst_, c.sa_exec_, c.sa_m0_, c.vm_vsrc_, c.va_sdst_, c.va_ssrc_, c.va_vcc_, c.va_exec_,
      c.va_vdst_, c.lds_dir_, c.f32_busy_, c.trans32_busy_);
}

void HardwareState::ReevaluateCounters() {
  RefreshPending();
  // Sums over the scoreboards with live entries only (the others add
  // nothing), each into the register class it belongs to.
  ScoreboardUsageCounts standard;
  ScoreboardUsageCounts exec;
  ScoreboardUsageCounts vcc;
  ScoreboardUsageCounts m0;
  ScoreboardUsageCounts conditionBits;
  ScoreboardUsageCounts vgprWrites;
  for (int reg : live_[kWrite]) {
    const ScoreboardUsageCounts counts = WriteBoard(reg).GetUsageCounts();
    if (IsVGPR(reg))
      vgprWrites += counts;
    else if (reg < kExec)
      standard += counts;
    else if (reg == kExec)
      exec += counts;
    else if (reg == kVcc)
      vcc += counts;
    else if (reg == kM0)
      m0 += counts;
    else
      conditionBits += counts;  // scc, sccz, vccz, execz
  }
  ScoreboardUsageCounts vgprReads;
  ScoreboardUsageCounts sgprReads;
  for (int reg : live_[kRead]) {
    if (IsVGPR(reg))
      vgprReads += ReadBoard(reg).GetUsageCounts();
    else if (reg != kVcc && reg != kVccz)
      sgprReads += ReadBoard(reg).GetUsageCounts();
  }
  static_assert(kExec == 384 && kVcc == 385 && kScc == 386 && kSccz == 387 && kM0 == 388 &&
                    kVccz == 389 && kExecz == 390 && kRegisterIdCount == 391,
                "the special registers follow the 128 standard SGPRs in this order");

  auto valuOrTrans = [](const ScoreboardUsageCounts& u) { return u.valuEntries + u.transEntries; };
  auto valuInstructions = [](const ScoreboardUsageCounts& u) {
    return u.valuInstructions + u.transInstructions - u.valuTransInstructions;
  };
  HardwareCounters& c = counters_;
  c.sa_sdst_ = standard.saluEntries + vcc.saluEntries + conditionBits.saluEntries;
  // m0 is counted twice here; the issue side counts it once.
  c.va_sdst_ =
      valuOrTrans(standard) + valuOrTrans(exec) + 2 * m0.valuEntries + valuOrTrans(conditionBits);
  c.sa_exec_ = exec.saluEntries;
  c.sa_m0_ = m0.saluEntries;
  c.va_vcc_ = valuOrTrans(vcc);
  c.va_exec_ = valuOrTrans(exec);
  c.va_vdst_ = valuInstructions(vgprWrites);
  c.lds_dir_ = vgprWrites.ldsDirectEntries;
  c.va_ssrc_ = valuInstructions(sgprReads);
  c.vm_vsrc_ = vgprReads.vmemInstructions;
}

uint32_t HardwareState::BlockingConditions(const InvocationDependencyInfo& info) const {
  // In the order of kDependencyRows.
  const bool rows[kDependencyRowCount] = {
      GetSaSdstCondition(info), GetSaExecCondition(info),  GetSaM0Condition(info),
      GetVmVsrcCondition(info), GetVaSdstCondition(info),  GetVaSsrcCondition(info),
      GetVaVccCondition(info),  GetVaExecCondition(info),  GetVaVdstCondition(info),
      GetLDSDirCondition(info), GetF32BusyCondition(info), GetTrans32BusyCondition(info)};
  uint32_t mask = 0;
  for (int row = 0; row < kDependencyRowCount; ++row)
    if (rows[row]) mask |= 1u << row;
  return mask;
}

void HardwareState::AbortUnresolvedStall(const RegisterPipelineUsage& writer) {
  const char* name = writer.info ? writer.info->GetInvocation().GetInstruction()->GetName() : "";
  ExitFatally(fmt::format(
      "Error: Found a problem while resolving a stall caused by the instruction {}. Aborting.",
      name));
}

StallDescription HardwareState::ApplyStall(const InvocationDependencyInfo& info,
                                           StallCause* cause) {
  RefreshPending();
  StallDescription result;
  HardwareCounters& c = counters_;
  // The cause follows the condition the instruction last waited cycles for;
  // a condition that names the reason without costing a cycle leaves it.
  const bool recordCause = cause != nullptr;

  // A program-counter read in flight holds everything back.
  if (pc_read_latency_ > 0) {
    const int cycles = pc_read_latency_;
    result.length = StallLength(cycles);
    UpdateCounters(cycles);
    result.reason = kPCReadStall;
    if (recordCause) *cause = CauseOf(kPCReadStall);
  }

  // Reading or changing the program counter drains every dependency counter.
  // Counters that no in-flight operation will lower any more are stale and
  // are dropped instead of waited on.
  if (info.IsPCReadEtc()) {
    while (AnyCounterActive()) {
      result.reason = kPCReadStall;
      if (IsQuiescent()) {
        for (int row = 0; row < 10; ++row)
          if (c.*kDependencyRows[row].counter >= 1) c.*kDependencyRows[row].counter = 0;
        break;
      }
      UpdateCounters(1);
      ++result.length;
      if (recordCause) *cause = CauseOf(kPCReadDrainStall);
    }
  }

  if (info.IsWaitCnt()) {
    if (info.IsWaitCntDepCtr()) {
      const Invocation& invocation = info.GetInvocation();
      const std::vector<std::string>& args = invocation.GetArgs();
      if (args.empty())
        throw ListingError(invocation.GetSourceLine(), "s_waitcnt_depctr has no mask operand");
      const unsigned long mask =
          ConvertOperandNumber(invocation, "s_waitcnt_depctr mask", args[0], 64,
                               [&] { return ExtractMaskFromHexValue(args[0]); });
      const unsigned mask16 = static_cast<unsigned>(mask & 0xFFFFu);
      auto allPass = [&] {
        for (const DepCtrField& field : kDepCtrFields)
          if (!DepCtrFieldPasses(c, field, mask16)) return false;
        return true;
      };
      // The cause is the first field still failing in the last cycle waited;
      // its culprit is looked up when that field changes, not every cycle.
      const DepCtrField* waitedField = nullptr;
      const InvocationDependencyInfo* fieldCulprit = nullptr;
      while (!allPass()) {
        if (IsQuiescent()) {
          for (const DepCtrField& field : kDepCtrFields)
            if (!DepCtrFieldPasses(c, field, mask16))
              c.*field.counter = static_cast<int32_t>((mask16 >> field.shift) & field.mask);
          break;
        }
        if (recordCause) {
          const DepCtrField* failing = nullptr;
          for (const DepCtrField& field : kDepCtrFields) {
            if (!DepCtrFieldPasses(c, field, mask16)) {
              failing = &field;
              break;
            }
          }
          if (failing != waitedField) {
            waitedField = failing;
            fieldCulprit = FindCounterCulprit(
                failing->reason, static_cast<int>((mask16 >> failing->shift) & failing->mask));
          }
        }
        UpdateCounters(1);
        ++result.length;
      }
      if (waitedField != nullptr) *cause = CauseOf(waitedField->reason, fieldCulprit);
    } else {
      // Memory counter waits are resolved at issue.
      result.length.SetIndefinite();
      result.reason = kMemoryCounterStall;
    }
  }

  // Dependency counters: wait while a counter is in use by an operation this
  // instruction depends on.
  // The cause is the row blocking in the last cycle waited, or the
  // shortened wait when that ended the waiting.
  const uint32_t conditions = BlockingConditions(info);
  int waitedRow = -1;
  const InvocationDependencyInfo* rowCulprit = nullptr;
  bool shortened = false;
  while (true) {
    int blocking = -1;
    for (int row = 0; row < kDependencyRowCount; ++row) {
      if ((conditions >> row & 1u) && c.*kDependencyRows[row].counter > 0) {
        blocking = row;
        break;
      }
    }
    if (blocking < 0) break;
    result.reason = kDependencyRows[blocking].reason;
    // Vector memory may issue when every pending VALU result lands next cycle.
    if (c.va_vdst_ != 0 && GetShortenedVaVdstCondition(info)) {
      shortened = true;
      break;
    }
    if (IsQuiescent()) {
      for (int row = 0; row < kDependencyRowCount; ++row)
        if ((conditions >> row & 1u) && c.*kDependencyRows[row].counter > 0)
          c.*kDependencyRows[row].counter = 0;
      break;
    }
    if (recordCause && blocking != waitedRow) {
      waitedRow = blocking;
      rowCulprit = FindCounterCulprit(kDependencyRows[blocking].reason, 0);
    }
    UpdateCounters(1);
    ++result.length;
  }
  if (waitedRow >= 0)
    *cause = shortened ? CauseOf(kShortenedVaVdstStall)
                       : CauseOf(kDependencyRows[waitedRow].reason, rowCulprit);

  // SGPR sources written by the SALU must be visible; lane masks are
  // forwarded.
  if (info.UsesSALU() || IsAnyVALU(info)) {
    info.ForEachReadSGPR([&](RegisterID reg) {
      const RegisterPipelineUsage& writer = WriteBoard(reg).GetMax();
      if (!writer.usage.UseSALU()) return;
      const StallLength remaining = writer.visibilityLength;
      if (!remaining.IsZero() && !writer.writesLaneMask) {
        result.length += remaining;
        if (recordCause) *cause = CauseOf(kSGPRSourceStall, writer.info, reg);
        UpdateCounters(remaining);
        result.reason = kSGPRSourceStall;
      }
    });
  }

  if (!IsAnyVALU(info)) return result;

  // VGPR sources must be visible. The transcendental unit forwards its own
  // results three cycles early.
  const bool transOnly = info.UsesTransVALU() && !info.UsesVALU();
  info.ForEachReadVGPR([&](RegisterID reg) {
    const RegisterPipelineUsage& writer = WriteBoard(reg).GetMax();
    StallLength remaining = writer.visibilityLength;
    if (transOnly && writer.usage.UseTransVALU()) remaining -= 3;
    if (remaining.IsZero()) return;
    if (remaining.IsIndefinite()) AbortUnresolvedStall(writer);
    result.length += remaining;
    if (recordCause) *cause = CauseOf(kVGPRSourceStall, writer.info, reg);
    if (remaining > 0) UpdateCounters(remaining);
    result.reason = kVGPRSourceStall;
  });
  return result;
}

}  // namespace vesk
