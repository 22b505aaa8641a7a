// The simulated wave: issue bookkeeping, bank penalties, memory counter waits,
// merging, block-boundary packing and the cycle advance.
#include <gtest/gtest.h>

#include <utility>

#include "stall_test_util.h"

namespace vesk::testing {
namespace {

constexpr int kInf = StallLength::kIndefinite;

class HardwareStateTest : public StallTest {
 protected:
  StallLength Issue(const std::string& line) { return state_.IssueInstruction(Info(line)); }
  HardwareState state_;
};

TEST_F(HardwareStateTest, UpdateCountersIgnoresNonPositiveCycles) {
  Issue("v_add_f32 v1, v2, v3");
  const HardwareState before = state_;
  state_.UpdateCounters(0);
  state_.UpdateCounters(-4);
  EXPECT_EQ(state_, before);
  state_.UpdateCounters(1);
  EXPECT_NE(state_, before);
}

TEST_F(HardwareStateTest, IssueCountsDependencyCounters) {
  Issue("s_add_u32 s4, s1, s2");  // s4 and the implicit scc
  Issue("v_add_co_u32 v0, vcc, s1, v0");
  Issue("buffer_store_dword v1, v0, s[0:3], 0 offen");
  const HardwareCounters& c = state_.GetCounters();
  EXPECT_EQ(c.sa_sdst_, 2);
  EXPECT_EQ(c.va_sdst_, 0);  // vcc is not counted here
  EXPECT_EQ(c.va_vcc_, 1);
  EXPECT_EQ(c.va_ssrc_, 1);
  EXPECT_EQ(c.va_vdst_, 1);
  EXPECT_EQ(c.vm_vsrc_, 1);
  EXPECT_EQ(c.f32_busy_, 1);
  EXPECT_EQ(state_.GetReadScoreboard(0).Size(), 1);  // VALU reads of VGPRs are not tracked
  EXPECT_EQ(state_.GetReadScoreboard(1)[0].executeLength.Get(), 2 + 9);
}

TEST_F(HardwareStateTest, BankConflictsDelayResults) {
  struct Case {
    const char* line;
    RegisterID written;
    int execute;
    int visibility;
  };
  const Case cases[] = {
      {"s_add_u32 s5, s0, s16", S(5), 9 + 1, 2 + 1},   // row 0, columns 0 and 1
      {"s_add_u32 s5, s0, s2", S(5), 9, 2},            // rows 0 and 1
      {"s_add_u32 s5, s0, s32", S(5), 9 + 1, 2 + 1},   // row 0, columns 0 and 2
      {"v_fma_f32 v9, v0, v4, v8", 9, 16 + 2, 5 + 2},  // three reads in bank 0
      {"v_add_f32 v9, v0, v1", 9, 16, 5},
      {"v_add_f32 v9, v0, v4", 9, 17, 6},
  };
  for (const Case& c : cases) {
    HardwareState state;
    state.IssueInstruction(Info(c.line));
    const RegisterPipelineUsage& e = state.GetWriteScoreboard(c.written)[0];
    EXPECT_EQ(e.executeLength.Get(), c.execute) << c.line;
    EXPECT_EQ(e.visibilityLength.Get(), c.visibility) << c.line;
  }
}

// Memory counter waits: (setup, wait, expected issue result, queue left).
TEST_F(HardwareStateTest, MemoryCounterWaits) {
  struct Case {
    std::vector<const char*> setup;
    const char* wait;
    int expected;
    size_t left;
  };
  const char* load = "buffer_load_dword v1, v0, s[0:3], 0 offen";
  const char* store = "buffer_store_dword v1, v0, s[0:3], 0 offen";
  const char* sload = "s_load_dword s4, s[0:1], 0x0";
  const Case cases[] = {
      {{load, load, load}, "s_waitcnt vmcnt(0)", 60, 0},  // texture loads: fixed 60
      {{load, load}, "s_waitcnt vmcnt(1)", 60, 1},
      {{load}, "s_waitcnt vmcnt(1)", 60, 1},  // nothing to pop, still 60
      {{load}, "s_waitcnt vmcnt(5)", 60, 0},  // count above size empties the queue
      {{store, store}, "s_waitcnt_vscnt null, 0x0", kInf, 0},
      {{sload, sload}, "s_waitcnt lgkmcnt(0)", 35, 0},
      {{sload}, "s_waitcnt lgkmcnt(4)", 35, 0},
      {{sload}, "s_waitcnt lgkmcnt(1)", kInf, 1},  // nothing popped
      {{}, "s_waitcnt lgkmcnt(0)", kInf, 0},       // an empty queue, nothing to pop
      {{sload}, "s_waitcnt_lgkmcnt null, 0", 35, 0},
      {{"ds_read_b32 v1, v0"}, "s_waitcnt lgkmcnt(0)", kInf, 0},
      {{sload}, "s_waitcnt 0", 0, 1},  // no queue named: no wait
      {{sload}, "s_waitcnt_expcnt null, 0", 0, 1},
      {{}, "s_waitcnt expcnt(0)", kInf, 0},
  };
  for (const Case& c : cases) {
    HardwareState state;
    for (const char* line : c.setup) state.IssueInstruction(Info(line));
    const StallLength result = state.IssueInstruction(Info(c.wait));
    EXPECT_EQ(result.Get(), c.expected) << c.wait;
    const MemoryCounterQueues& q = state.GetQueues();
    EXPECT_EQ(q.Size(kVmCntQueue) + q.Size(kVsCntQueue) + q.Size(kLgkmCntQueue), c.left) << c.wait;
  }
}

TEST_F(HardwareStateTest, WaitRetiresLoadsInOrderAndAdvancesByTheLongestRemaining) {
  Issue("buffer_load_dword v1, v0, s[0:3], 0 offen");
  state_.UpdateCounters(10);
  Issue("buffer_load_dword v1, v2, s[0:3], 0 offen");
  Issue("buffer_load_dword v3, v2, s[0:3], 0 offen");
  Issue("v_add_f32 v9, v8, v7");  // executes for 16 cycles
  ASSERT_EQ(state_.GetWriteScoreboard(1).Size(), 2);
  Issue("s_waitcnt vmcnt(1)");  // pops the two oldest loads
  EXPECT_TRUE(state_.GetWriteScoreboard(1).IsEmpty());
  EXPECT_EQ(state_.GetWriteScoreboard(3).Size(), 1);
  // 35 cycles passed: the add finished.
  EXPECT_TRUE(state_.GetWriteScoreboard(9).IsEmpty());
  EXPECT_EQ(state_.GetQueues().At(kVmCntQueue, 0).remaining, 0);
}

TEST_F(HardwareStateTest, GlobalLoadSitsInTwoQueuesAndLeavesBoth) {
  Issue("global_load_dword v1, v[2:3], off");
  EXPECT_EQ(state_.GetQueues().Size(kVmCntQueue), 1u);
  EXPECT_EQ(state_.GetQueues().Size(kLgkmCntQueue), 1u);
  Issue("s_waitcnt vmcnt(0)");
  EXPECT_EQ(state_.GetQueues().Size(kLgkmCntQueue), 0u);
}

TEST_F(HardwareStateTest, StepReportsDistanceWaitAndExtraCycle) {
  const auto& add = Info("v_add_f32 v1, v2, v3");
  StallDescription s = state_.Step(add, 20, false);
  EXPECT_EQ(s.length.Get(), 20);
  EXPECT_EQ(s.reason, kIssueDistanceStall);
  EXPECT_EQ(state_.GetWriteScoreboard(1)[0].executeLength.Get(), 15);

  // In wave64 mode a VALU instruction spends one more cycle.
  HardwareState wave64;
  wave64.Step(Info("v_add_f32 v1, v2, v3"), 0, true);
  EXPECT_EQ(wave64.GetWriteScoreboard(1)[0].executeLength.Get(), 15);
  HardwareState wave64b;
  wave64b.Step(Info("v_mov_b32 v5, v6"), 0, true);
  wave64b.Step(Info("v_add_f32 v1, v2, v3"), 0, true);
  EXPECT_EQ(wave64b.GetWriteScoreboard(5)[0].executeLength.Get(), 13);

  HardwareState waits;
  waits.Step(Info("s_load_dword s4, s[0:1], 0x0"), 0, false);
  s = waits.Step(Info("s_waitcnt lgkmcnt(0)"), 2, false);
  EXPECT_EQ(s.length.Get(), 2 + 34 - 2);
  EXPECT_EQ(s.reason, kMemoryCounterStall);
  s = waits.Step(Info("s_waitcnt 0"), 2, false);
  EXPECT_EQ(s.length.Get(), 2);
  EXPECT_EQ(s.reason, kMemoryCounterStall);
  s = waits.Step(Info("s_waitcnt vmcnt(0)"), 0, false);
  EXPECT_TRUE(s.length.IsIndefinite());
}

TEST_F(HardwareStateTest, MergeRaisesQueueCyclesWithoutReportingAChange) {
  const auto& load = Info("s_load_dword s4, s[0:1], 0x0");
  HardwareState fresh;
  fresh.IssueInstruction(load);
  state_ = fresh;
  state_.UpdateCounters(25);
  HardwareState merged = state_;
  merged.UpdateInput(state_);
  EXPECT_FALSE(merged.UpdateInput(fresh));
  EXPECT_EQ(merged.GetQueues().At(kLgkmCntQueue, 0).remaining, 35);
  EXPECT_EQ(merged.GetQueues().Size(kLgkmCntQueue), 1u);
}

TEST_F(HardwareStateTest, MergeUnitesPathsAndRebuildsCounters) {
  HardwareState a, b;
  a.IssueInstruction(Info("s_add_u32 s4, s1, s2"));
  b.IssueInstruction(Info("v_readfirstlane_b32 m0, v0"));
  b.IssueInstruction(Info("buffer_load_dword v1, v0, s[0:3], 0 offen"));
  EXPECT_EQ(b.GetCounters().va_sdst_, 1);
  EXPECT_TRUE(a.UpdateInput(b));
  const HardwareCounters& c = a.GetCounters();
  EXPECT_EQ(c.sa_sdst_, 2);
  EXPECT_EQ(c.va_sdst_, 2);  // a VALU m0 write counts twice after a merge
  EXPECT_EQ(c.vm_vsrc_, 1);
  EXPECT_EQ(a.GetVMEMKind(), HardwareState::kTextureOrFlat);
  EXPECT_FALSE(a.UpdateInput(b));

  HardwareState lds;
  lds.IssueInstruction(Info("ds_read_b32 v1, v0"));
  EXPECT_TRUE(a.UpdateInput(lds));
  EXPECT_EQ(a.GetVMEMKind(), HardwareState::kMixedVMEM);
}

TEST_F(HardwareStateTest, PackingKeepsEverythingObservable) {
  Issue("s_getpc_b64 s[10:11]");
  Issue("v_add_f32 v1, v2, v3");
  Issue("buffer_load_dword v4, v0, s[0:3], 0 offen");
  Issue("s_load_dword s4, s[0:1], 0x0");
  state_.UpdateCounters(3);
  // A finished entry cut off behind the ring of s5.
  Scoreboard& board = state_.GetWriteScoreboard(S(5));
  board.AddEntry(Entry(9, 1, Units({InstructionUnit::SALU})));
  board.AddEntry(Entry(0, 4, Units({InstructionUnit::SALU})));
  board.Compress();
  state_.SetVMEMKind(2);

  PackedHardwareState packed;
  state_.Pack(packed);
  HardwareState copy;
  copy.IssueInstruction(Info("v_mov_b32 v7, v8"));  // replaced by the unpacked state
  copy.Unpack(packed);
  EXPECT_EQ(copy, state_);
  EXPECT_EQ(copy.GetVMEMKind(), 2);
  EXPECT_EQ(copy.GetPCReadLatency(), state_.GetPCReadLatency());
  EXPECT_TRUE(std::as_const(copy).GetWriteScoreboard(7).IsEmpty());

  // Both run on identically; the cut-off entry of s5 resurfaces in both.
  copy.UpdateCounters(9);
  state_.UpdateCounters(9);
  EXPECT_EQ(copy, state_);
  const RegisterPipelineUsage& stale = std::as_const(copy).GetWriteScoreboard(S(5)).GetMax();
  EXPECT_TRUE(std::as_const(copy).GetWriteScoreboard(S(5)).IsEmpty());
  EXPECT_EQ(stale.visibilityLength.Get(), 4);  // not live, so not counted down
  EXPECT_EQ(stale, std::as_const(state_).GetWriteScoreboard(S(5)).GetMax());
  PackedHardwareState a, b;
  copy.Pack(a);
  state_.Pack(b);
  EXPECT_EQ(a, b);
  EXPECT_NE(a, packed);
}

}  // namespace
}  // namespace vesk::testing

namespace vesk::testing {
namespace {

TEST(SpecialRegisterNamesTest, LookUpOnlySpecialNames) {
  struct Case {
    const char* name;
    bool found;
    int sgprIndex;
  };
  const Case cases[] = {{"vcc", true, 129},     {"vcc_lo", true, 129}, {"exec", true, 128},
                        {"exec_lo", true, 128}, {"m0", true, 132},     {"execz", true, 134},
                        {"ttmp15", true, 127},  {"exec_hi", false, 0}, {"s5", false, 0},
                        {"v5", false, 0},       {"EXEC", false, 0}};
  for (const Case& c : cases) {
    Register r{-7, VGPR};
    EXPECT_EQ(HardwareState::TryGetRegisterFromName(c.name, r), c.found) << c.name;
    if (c.found) {
      EXPECT_EQ(r, (Register{c.sgprIndex, SGPR})) << c.name;
      EXPECT_EQ(HardwareState::GetRegisterID(c.name), 256 + c.sgprIndex);
      EXPECT_EQ(HardwareState::GetRegisterFromName(c.name), r);
    } else {
      EXPECT_EQ(r, (Register{-7, VGPR})) << c.name;  // left unchanged
    }
  }
  EXPECT_EQ(HardwareState::specialRegisters.size(), 25u);
}

}  // namespace
}  // namespace vesk::testing
