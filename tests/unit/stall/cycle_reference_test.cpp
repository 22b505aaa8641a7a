// Cross-checks the cycle advance against a plain reference that walks all
// 782 scoreboards every cycle and counts every queue element down, and
// checks that packing a state for a block boundary changes nothing.
#include <gtest/gtest.h>

#include <array>
#include <random>

#include "stall_test_util.h"

namespace vesk::testing {
namespace {

struct ReferenceState {
  std::array<Scoreboard, 391> writes;
  std::array<Scoreboard, 391> reads;
  HardwareCounters counters;
  std::array<std::vector<MemoryQueueElement>, kMemoryQueueCount> queues;
  int pcReadLatency = 0;

  explicit ReferenceState(const HardwareState& state) {
    for (RegisterID reg = 0; reg < 391; ++reg) {
      writes[reg] = state.GetWriteScoreboard(reg);
      reads[reg] = state.GetReadScoreboard(reg);
    }
    counters = state.GetCounters();
    for (int q = 0; q < kMemoryQueueCount; ++q) queues[q] = state.GetQueues().Elements(q);
    pcReadLatency = state.GetPCReadLatency();
  }

  void Cycle() {
    HardwareCounters& c = counters;
    for (RegisterID reg = 0; reg < 256; ++reg) writes[reg].UpdateVGPRWrites(c.va_vdst_, c.lds_dir_);
    for (RegisterID reg = 256; reg < 384; ++reg)
      writes[reg].UpdateSGPRWrites(c.va_sdst_, c.sa_sdst_);
    writes[kExec].UpdateExec(c.va_sdst_, c.va_exec_, c.sa_exec_);
    writes[kM0].UpdateM0(c.sa_m0_);
    writes[kVcc].UpdateVcc(c.va_vcc_, c.sa_sdst_);
    for (RegisterID reg : {386, 387, 389, 390})
      writes[reg].UpdateOtherHWRegWrites(reg, c.va_sdst_, c.sa_sdst_);
    for (RegisterID reg = 0; reg < 256; ++reg) reads[reg].UpdateVGPRReads(c.vm_vsrc_);
    for (RegisterID reg = 256; reg < 391; ++reg) reads[reg].UpdateSGPRReads(reg, c.va_ssrc_);
    HardwareState::DecrementIfGreaterZero(c.f32_busy_);
    HardwareState::DecrementIfGreaterZero(c.trans32_busy_);
    for (auto& queue : queues)
      for (MemoryQueueElement& e : queue) HardwareState::DecrementIfGreaterZero(e.remaining);
    HardwareState::DecrementIfGreaterZero(pcReadLatency);
  }

  // Full comparison, slots beyond the live entries included.
  void ExpectSame(const HardwareState& state, const std::string& where) const {
    for (RegisterID reg = 0; reg < 391; ++reg) {
      for (const auto& [mine, theirs] : {std::pair{&writes[reg], &state.GetWriteScoreboard(reg)},
                                         std::pair{&reads[reg], &state.GetReadScoreboard(reg)}}) {
        ASSERT_EQ(*mine, *theirs) << where << " register " << reg;
        ASSERT_EQ(mine->GetMax(), theirs->GetMax()) << where << " register " << reg;
        for (int i = mine->Size(); i < Scoreboard::kCapacity; ++i)
          ASSERT_EQ((*mine)[i], (*theirs)[i]) << where << " register " << reg << " slot " << i;
      }
    }
    ASSERT_EQ(counters, state.GetCounters()) << where;
    for (int q = 0; q < kMemoryQueueCount; ++q)
      ASSERT_EQ(queues[q], state.GetQueues().Elements(q)) << where;
    ASSERT_EQ(pcReadLatency, state.GetPCReadLatency()) << where;
  }
};

class CycleReferenceTest : public StallTest {};

TEST_F(CycleReferenceTest, SkippingIdleScoreboardsAndPackingChangeNothing) {
  const std::vector<std::string> lines = {
      "v_add_f32 v1, v2, v3",
      "v_fma_f32 v4, v0, v4, v8",
      "v_sqrt_f32 v5, v1",
      "v_add_f64 v[6:7], v[2:3], v[4:5]",
      "v_add_co_u32 v0, vcc, s1, v0",
      "v_cmp_gt_f32 vcc, v1, v2",
      "v_readfirstlane_b32 m0, v3",
      "v_interp_p1_f32 v9, v0, attr0.x",
      "s_add_u32 s4, s1, s2",
      "s_mov_b32 exec_lo, s2",
      "s_mov_b32 m0, s3",
      "s_getpc_b64 s[10:11]",
      "s_load_dword s4, s[0:1], 0x0",
      "s_atomic_sub_x2 s[6:7], s[0:1], 0x0",
      "buffer_load_dword v1, v0, s[0:3], 0 offen",
      "buffer_store_dword v2, v3, s[0:3], 0 offen",
      "global_load_dword v5, v[2:3], off",
      "ds_read_b32 v4, v0",
      "s_waitcnt vmcnt(1)",
      "s_waitcnt lgkmcnt(0)",
      "s_waitcnt_vscnt null, 0x0",
      "s_nop 0",
  };
  std::vector<const InvocationDependencyInfo*> infos;
  for (const std::string& line : lines) infos.push_back(&Info(line));

  std::mt19937 random(12345);
  HardwareState state;
  for (int step = 0; step < 1200; ++step) {
    state.IssueInstruction(*infos[random() % infos.size()]);
    ReferenceState reference(state);
    const int cycles = static_cast<int>(random() % 40);
    for (int i = 0; i < cycles; ++i) reference.Cycle();
    // Sometimes in single cycles, sometimes at once.
    if (step % 2 == 0) {
      state.UpdateCounters(cycles);
    } else {
      for (int i = 0; i < cycles; ++i) state.UpdateCounters(1);
    }
    reference.ExpectSame(state, "step " + std::to_string(step));
    if (step % 7 == 0) {
      PackedHardwareState packed;
      state.Pack(packed);
      HardwareState copy;
      copy.IssueInstruction(*infos[random() % infos.size()]);
      copy.Unpack(packed);
      ASSERT_EQ(copy, state);
      ReferenceState(state).ExpectSame(copy, "unpacked at step " + std::to_string(step));
      state = copy;
    }
    if (HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace vesk::testing
