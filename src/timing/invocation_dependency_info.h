// InvocationDependencyInfo: the immutable per-instruction record that the
// stall simulation works on: execution units used, explicit and implicit
// register reads and writes, boolean properties, the counter a wait
// instruction waits on, and the issue/execute/visibility latencies.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "isa/invocation.h"
#include "isa/registers.h"
#include "timing/hardware_usage.h"
#include "timing/latency_model.h"
#include "timing/opcode_name_traits.h"

namespace vesk {

// Bit numbers of the property word of InvocationDependencyInfo.
enum class InfoFlag : uint8_t {
  UsesSALU = 0,
  UsesSMEM = 1,
  UsesVALU = 2,
  UsesTransVALU = 3,
  UsesVMEMTex = 4,
  UsesFlat = 5,
  UsesVMEMLDS = 6,
  UsesBranch = 7,
  UsesMsg = 8,
  UsesExport = 9,
  UsesGDS = 10,
  UsesACVDMA = 11,
  ReadsAnySGPR = 12,
  WritesAnySGPR = 13,
  ReadsAnyVGPR = 14,
  WritesAnyVGPR = 15,
  ReadsAnyStandardSGPR = 16,
  WritesAnyStandardSGPR = 17,
  ReadsSCC = 18,
  ReadsSCCZ = 19,
  WritesSCC = 20,
  ReadsVCC = 21,
  ReadsVCCZ = 22,
  WritesVCC = 23,
  ReadsExec = 24,
  ReadsExecZ = 25,
  WritesExec = 26,
  ReadsM0 = 27,
  WritesM0 = 28,
  IsMoveRel = 29,
  IsSwapRel = 30,
  IsSubvectorBeginEnd = 31,
  IsLDSDirect = 32,
  IsReadFirstLane = 33,
  IsVInterp = 34,
  IsDiv_FMas = 35,
  IsAddTid = 36,
  IsSpecial = 37,
  IsWaitCnt = 38,
  IsLoad = 39,
  IsStore = 40,
  IsPCReadEtc = 41,
  WriteLaneMask = 42,
  ReadsLaneMask = 43,
};

// The counter an s_waitcnt-style instruction waits on.
enum class WaitType : uint8_t { None = 0, VmCnt = 1, VsCnt = 2, LgkmCnt = 3, ExpCnt = 4 };

class InvocationDependencyInfo {
 public:
  using InfoFlag = vesk::InfoFlag;
  using WaitType = vesk::WaitType;

  // The invocation must outlive this object.
  explicit InvocationDependencyInfo(const Invocation& invocation);

  // Execution units.
  bool UsesSALU() const { return Has(InfoFlag::UsesSALU); }
  bool UsesSMEM() const { return Has(InfoFlag::UsesSMEM); }
  bool UsesVALU() const { return Has(InfoFlag::UsesVALU); }
  bool UsesTransVALU() const { return Has(InfoFlag::UsesTransVALU); }
  bool UsesVMEMTex() const { return Has(InfoFlag::UsesVMEMTex); }
  bool UsesFlat() const { return Has(InfoFlag::UsesFlat); }
  bool UsesVMEMLDS() const { return Has(InfoFlag::UsesVMEMLDS); }
  bool UsesBranch() const { return Has(InfoFlag::UsesBranch); }
  bool UsesMsg() const { return Has(InfoFlag::UsesMsg); }
  bool UsesExport() const { return Has(InfoFlag::UsesExport); }
  bool UsesGDS() const { return Has(InfoFlag::UsesGDS); }
  bool UsesACVDMA() const { return Has(InfoFlag::UsesACVDMA); }
  // Texture path, flat, or LDS through the vector memory pipe.
  bool UsesVMEM() const {
    return Has(InfoFlag::UsesVMEMTex) || Has(InfoFlag::UsesFlat) || Has(InfoFlag::UsesVMEMLDS);
  }

  // Register classes and special registers.
  bool ReadsAnySGPR() const { return Has(InfoFlag::ReadsAnySGPR); }
  bool WritesAnySGPR() const { return Has(InfoFlag::WritesAnySGPR); }
  bool ReadsAnyVGPR() const { return Has(InfoFlag::ReadsAnyVGPR); }
  bool WritesAnyVGPR() const { return Has(InfoFlag::WritesAnyVGPR); }
  bool ReadsAnyStandardSGPR() const { return Has(InfoFlag::ReadsAnyStandardSGPR); }
  bool WritesAnyStandardSGPR() const { return Has(InfoFlag::WritesAnyStandardSGPR); }
  bool ReadsSCC() const { return Has(InfoFlag::ReadsSCC); }
  bool ReadsSCCZ() const { return Has(InfoFlag::ReadsSCCZ); }
  bool WritesSCC() const { return Has(InfoFlag::WritesSCC); }
  bool ReadsVCC() const { return Has(InfoFlag::ReadsVCC); }
  bool ReadsVCCZ() const { return Has(InfoFlag::ReadsVCCZ); }
  bool WritesVCC() const { return Has(InfoFlag::WritesVCC); }
  bool ReadsExec() const { return Has(InfoFlag::ReadsExec); }
  bool ReadsExecZ() const { return Has(InfoFlag::ReadsExecZ); }
  bool WritesExec() const { return Has(InfoFlag::WritesExec); }
  bool ReadsM0() const { return Has(InfoFlag::ReadsM0); }
  bool WritesM0() const { return Has(InfoFlag::WritesM0); }

  // Opcode properties.
  bool IsMoveRel() const { return Has(InfoFlag::IsMoveRel); }
  bool IsSwapRel() const { return Has(InfoFlag::IsSwapRel); }
  bool IsSubvectorBeginEnd() const { return Has(InfoFlag::IsSubvectorBeginEnd); }
  bool IsLDSDirect() const { return Has(InfoFlag::IsLDSDirect); }
  bool IsReadFirstLane() const { return Has(InfoFlag::IsReadFirstLane); }
  bool IsVInterp() const { return Has(InfoFlag::IsVInterp); }
  bool IsDiv_FMas() const { return Has(InfoFlag::IsDiv_FMas); }
  bool IsAddTid() const { return Has(InfoFlag::IsAddTid); }
  bool IsSpecial() const { return Has(InfoFlag::IsSpecial); }
  bool IsWaitCnt() const { return Has(InfoFlag::IsWaitCnt); }
  bool IsLoad() const { return Has(InfoFlag::IsLoad); }
  bool IsStore() const { return Has(InfoFlag::IsStore); }
  bool IsPCReadEtc() const { return Has(InfoFlag::IsPCReadEtc); }
  bool WriteLaneMask() const { return Has(InfoFlag::WriteLaneMask); }
  bool ReadsLaneMask() const { return Has(InfoFlag::ReadsLaneMask); }

  // s_waitcnt_depctr: waits on dependency counters rather than memory counters.
  bool IsWaitCntDepCtr() const { return isWaitCntDepCtr_; }
  WaitType GetWaitType() const { return waitType_; }
  uint64_t GetFlags() const { return flags_; }

  // Register sets. The SGPR sets hold only the scalar half, the VGPR sets only
  // the vector half; special registers sit at SGPR index 128..134. The sets
  // are stored as runs of consecutive register numbers and formed on request;
  // the simulation walks the runs through the ForEach... calls instead. The
  // implicit registers are always special ones, kept as small masks.
  UnifiedRegisterSet GetWriteRegisters() const { return FormSet(WriteRuns()); }
  UnifiedRegisterSet GetReadRegisters() const { return FormSet(ReadRuns()); }
  UnifiedRegisterSet GetImplicitWriteSGPRs() const { return SpecialSet(implicitWriteMask_); }
  UnifiedRegisterSet GetExplicitWriteSGPRs() const {
    return ExplicitHalf(GetWriteRegisters(), explicitWriteSpecial_);
  }
  UnifiedRegisterSet GetImplicitReadSGPRs() const { return SpecialSet(implicitReadMask_); }
  UnifiedRegisterSet GetExplicitReadSGPRs() const {
    return ExplicitHalf(GetReadRegisters(), explicitReadSpecial_);
  }
  UnifiedRegisterSet GetWrittenSGPRs() const { return ScalarHalf(GetWriteRegisters()); }
  UnifiedRegisterSet GetReadSGPRs() const { return ScalarHalf(GetReadRegisters()); }
  UnifiedRegisterSet GetWrittenVGPRs() const { return VectorHalf(GetWriteRegisters()); }
  UnifiedRegisterSet GetReadVGPRs() const { return VectorHalf(GetReadRegisters()); }

  // The members of the sets above in ascending register order, without
  // forming them; `f` is called with each RegisterID.
  template <class F>
  void ForEachWriteRegister(F&& f) const {
    ForEachIn(WriteRuns(), 0, kSetEnd, f);
  }
  template <class F>
  void ForEachWrittenSGPR(F&& f) const {
    ForEachIn(WriteRuns(), kFirstSGPR, kSetEnd, f);
  }
  template <class F>
  void ForEachWrittenVGPR(F&& f) const {
    ForEachIn(WriteRuns(), 0, kFirstSGPR, f);
  }
  template <class F>
  void ForEachReadSGPR(F&& f) const {
    ForEachIn(ReadRuns(), kFirstSGPR, kSetEnd, f);
  }
  template <class F>
  void ForEachReadVGPR(F&& f) const {
    ForEachIn(ReadRuns(), 0, kFirstSGPR, f);
  }
  template <class F>
  void ForEachExplicitReadSGPR(F&& f) const {
    ForEachIn(ReadRuns(), kFirstSGPR, kExec, f);
    for (int i = 0; i < kSpecialCount; ++i)
      if (explicitReadSpecial_ >> i & 1u) f(static_cast<RegisterID>(kExec + i));
    ForEachIn(ReadRuns(), kExec + kSpecialCount, kSetEnd, f);
  }
  int CountWrittenSGPRs() const { return CountIn(WriteRuns(), kFirstSGPR, kSetEnd); }
  int CountReadVGPRs() const { return CountIn(ReadRuns(), 0, kFirstSGPR); }
  int CountExplicitReadSGPRs() const {
    return CountIn(ReadRuns(), kFirstSGPR, kExec) + std::popcount(explicitReadSpecial_) +
           CountIn(ReadRuns(), kExec + kSpecialCount, kSetEnd);
  }
  // The greatest register number in either set; -1 when both are empty.
  int GetHighestRegister() const {
    const RunSpan w = WriteRuns();
    const RunSpan r = ReadRuns();
    return std::max(w.empty() ? -1 : int{w.back().last}, r.empty() ? -1 : int{r.back().last});
  }
  // Whether the special register `special` (exec ... execz) is an explicit
  // operand read.
  bool ExplicitlyReads(RegisterID special) const {
    return explicitReadSpecial_ >> (special - kExec) & 1u;
  }

  const Invocation& GetInvocation() const { return *invocation_; }
  HardwareUsage GetHardwareUsage() const;

  // Latencies in cycles. Memory-like operations have kUnboundedLatency as
  // execute and visibility latency (their totals then equal the indefinite
  // StallLength value).
  LatencyBaseData GetLatencyBaseData() const;
  LatencyBaseData GetLatencyBaseData(const OpcodeNameTraits& name) const;
  int GetIssueLatency() const { return issueLatency_; }
  int GetExecuteLatency() const { return executeLatency_; }
  int GetVisibilityLatency() const { return visibilityLatency_; }
  int GetTotalExecuteLatency() const { return issueLatency_ + executeLatency_; }
  int GetTotalVisibilityLatency() const { return issueLatency_ + visibilityLatency_; }
  // "Issue latency:\t<n>\nExecute latency:\t<n>\nVisibility latency:\t<n>\n"
  std::string LatenciesToString() const;

 private:
  bool Has(InfoFlag flag) const { return (flags_ >> static_cast<unsigned>(flag)) & 1u; }
  void SetFlag(InfoFlag flag) { flags_ |= uint64_t{1} << static_cast<unsigned>(flag); }
  const char* GetName() const;

  // Construction steps, in this order; each sees the flags of the earlier ones.
  void InitializeConditionalFlags(const OpcodeNameTraits& name);
  void InitializeRegisters(const OpcodeNameTraits& name, UnifiedRegisterSet& writes,
                           UnifiedRegisterSet& reads);
  void InitializeRegisterFlags(const UnifiedRegisterSet& writes,
                               const UnifiedRegisterSet& readRegisters);
  void UpdateGenericFlags(const OpcodeNameTraits& name);
  void ResolveWaitType(const OpcodeNameTraits& name);
  void UpdateLatencies(const OpcodeNameTraits& name);

  // Special registers (exec, vcc, scc, sccz, m0, vccz, execz) as bit masks,
  // bit i standing for register kExec + i.
  static constexpr int kSpecialCount = kRegisterIdCount - kExec;
  static_assert(kSpecialCount <= 8, "the special registers fit one byte");
  static uint8_t SpecialMask(const UnifiedRegisterSet& set) {
    uint8_t mask = 0;
    for (int i = 0; i < kSpecialCount; ++i)
      if (set.Contains(kExec + i)) mask |= static_cast<uint8_t>(1u << i);
    return mask;
  }
  static UnifiedRegisterSet SpecialSet(uint8_t mask) {
    UnifiedRegisterSet set;
    for (int i = 0; i < kSpecialCount; ++i)
      if (mask >> i & 1u) set.Insert(kExec + i);
    return set;
  }
  static UnifiedRegisterSet ScalarHalf(const UnifiedRegisterSet& set) {
    UnifiedRegisterSet result;
    result.GetSGPRSet() = set.GetSGPRSet();
    return result;
  }
  static UnifiedRegisterSet VectorHalf(const UnifiedRegisterSet& set) {
    UnifiedRegisterSet result;
    result.GetVGPRSet() = set.GetVGPRSet();
    return result;
  }
  // The scalar half of `set` with its special registers replaced by `special`.
  static UnifiedRegisterSet ExplicitHalf(const UnifiedRegisterSet& set, uint8_t special) {
    UnifiedRegisterSet result = ScalarHalf(set);
    for (int i = 0; i < kSpecialCount; ++i) {
      if (special >> i & 1u)
        result.Insert(kExec + i);
      else
        result.GetSGPRSet().Erase(kExec + i - kFirstSGPR);
    }
    return result;
  }

  // Runs of consecutive register numbers, both ends included, ascending and
  // apart by at least one number: the write set's runs, then the read set's.
  // A record with more runs than fit inline keeps them all on the heap.
  struct RegisterRun {
    uint16_t first;
    uint16_t last;
  };
  using RunSpan = std::span<const RegisterRun>;
  static constexpr int kInlineRuns = 5;
  static constexpr int kSetEnd = kFirstSGPR + UnifiedRegisterSet::Half::kWords * 64;

  RunSpan AllRuns() const {
    if (spilledRuns_) return RunSpan(*spilledRuns_);
    return RunSpan(runs_.data(), writeRunCount_ + readRunCount_);
  }
  RunSpan WriteRuns() const { return AllRuns().first(writeRunCount_); }
  RunSpan ReadRuns() const { return AllRuns().subspan(writeRunCount_); }
  void StoreRuns(const UnifiedRegisterSet& writes, const UnifiedRegisterSet& reads);
  static UnifiedRegisterSet FormSet(RunSpan runs);
  template <class F>
  static void ForEachIn(RunSpan runs, int lo, int hi, F& f) {
    for (const RegisterRun& run : runs) {
      const int last = std::min<int>(run.last, hi - 1);
      for (int reg = std::max<int>(run.first, lo); reg <= last; ++reg)
        f(static_cast<RegisterID>(reg));
    }
  }
  static int CountIn(RunSpan runs, int lo, int hi) {
    int count = 0;
    for (const RegisterRun& run : runs)
      count += std::max(std::min<int>(run.last, hi - 1) - std::max<int>(run.first, lo) + 1, 0);
    return count;
  }

  // Owns the heap runs and copies them with the record.
  class SpilledRuns {
   public:
    SpilledRuns() = default;
    explicit SpilledRuns(std::vector<RegisterRun> runs)
        : runs_(std::make_unique<const std::vector<RegisterRun>>(std::move(runs))) {}
    SpilledRuns(const SpilledRuns& other) { *this = other; }
    SpilledRuns& operator=(const SpilledRuns& other) {
      if (this != &other)
        runs_ =
            other.runs_ ? std::make_unique<const std::vector<RegisterRun>>(*other.runs_) : nullptr;
      return *this;
    }
    SpilledRuns(SpilledRuns&&) noexcept = default;
    SpilledRuns& operator=(SpilledRuns&&) noexcept = default;
    explicit operator bool() const { return runs_ != nullptr; }
    const std::vector<RegisterRun>& operator*() const { return *runs_; }

   private:
    std::unique_ptr<const std::vector<RegisterRun>> runs_;
  };

  SpilledRuns spilledRuns_;
  std::array<RegisterRun, kInlineRuns> runs_{};
  uint8_t writeRunCount_ = 0;
  uint8_t readRunCount_ = 0;
  uint8_t implicitWriteMask_ = 0;
  uint8_t implicitReadMask_ = 0;
  uint8_t explicitWriteSpecial_ = 0;
  uint8_t explicitReadSpecial_ = 0;
  WaitType waitType_ = WaitType::None;
  bool isWaitCntDepCtr_ = false;
  int32_t issueLatency_ = 0;
  int32_t executeLatency_ = 0;
  int32_t visibilityLatency_ = 0;
  const Invocation* invocation_;
  uint64_t flags_ = 0;
};

}  // namespace vesk
