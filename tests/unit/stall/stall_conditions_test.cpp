// Stall rules before issue: source readiness, dependency counters and their
// conditions, s_waitcnt_depctr, program-counter reads, the release of stale
// counters, the fatal unresolved load, and the wait argument parsers.
#include <gtest/gtest.h>

#include <stdexcept>

#include "stall_test_util.h"

namespace vesk::testing {
namespace {

class StallConditionsTest : public StallTest {
 protected:
  void Issue(const std::string& line) { state_.IssueInstruction(Info(line)); }
  StallDescription Stall(const std::string& line) { return state_.ApplyStall(Info(line)); }
  HardwareState state_;
};

TEST_F(StallConditionsTest, VGPRSourceWaitsForVisibility) {
  Issue("v_add_f32 v1, v2, v3");
  state_.UpdateCounters(1);
  const StallDescription s = Stall("v_mul_f32 v4, v1, v1");
  EXPECT_EQ(s.length.Get(), 4);
  EXPECT_EQ(s.reason, kVGPRSourceStall);
}

// The transcendental unit forwards its own results three cycles early; a
// negative remainder lowers the stall.
TEST_F(StallConditionsTest, TranscendentalForwarding) {
  struct Case {
    int cyclesPassed;  // v_sqrt_f32 results are visible after 4 + 6 cycles
    int expected;
  };
  // Even a visible result is "3 cycles early" while it still executes.
  const Case cases[] = {{5, 2}, {7, 0}, {8, -1}, {10, -3}, {16, 0}};
  for (const Case& c : cases) {
    HardwareState state;
    state.IssueInstruction(Info("v_sqrt_f32 v1, v2"));
    state.UpdateCounters(c.cyclesPassed);
    const StallDescription s = state.ApplyStall(Info("v_sqrt_f32 v3, v1"));
    EXPECT_EQ(s.length.Get(), c.expected) << c.cyclesPassed;
    if (c.expected != 0) {
      EXPECT_EQ(s.reason, kVGPRSourceStall);
    }
  }
}

TEST_F(StallConditionsTest, SALUResultsMustBeVisibleUnlessLaneMasks) {
  for (bool laneMask : {false, true}) {
    HardwareState state;
    RegisterPipelineUsage e = Entry(9, 2, Units({InstructionUnit::SALU}));
    e.writesLaneMask = laneMask;
    state.GetWriteScoreboard(S(4)).AddEntry(e);
    const StallDescription s = state.ApplyStall(Info("s_mov_b32 s5, s4"));
    EXPECT_EQ(s.length.Get(), laneMask ? 0 : 2);
    EXPECT_EQ(s.reason, laneMask ? kNoStall : kSGPRSourceStall);
  }
  // A VALU-written SGPR is waited for through va_sdst_ only (16 cycles),
  // not through its visibility.
  Issue("v_readfirstlane_b32 s4, v0");
  const StallDescription s = Stall("s_mov_b32 s5, s4");
  EXPECT_EQ(s.length.Get(), 16);
  EXPECT_EQ(s.reason, kVaSdstStall);
}

TEST_F(StallConditionsTest, FirstBlockingRowNamesTheStall) {
  Issue("s_add_u32 s4, s1, s2");  // sa_sdst_ 2 for 9 cycles
  state_.GetCounters().f32_busy_ = 3;
  const StallDescription s = Stall("v_readfirstlane_b32 s5, v0");
  EXPECT_EQ(s.length.Get(), 9);
  EXPECT_EQ(s.reason, kSaSdstStall);
  EXPECT_EQ(state_.GetCounters().f32_busy_, 0);
}

TEST_F(StallConditionsTest, BusyUnits) {
  Issue("v_add_f64 v[0:1], v[2:3], v[4:5]");  // issue latency 16 on both units
  EXPECT_EQ(Stall("v_mov_b32 v8, v9").reason, kF32BusyStall);
  Issue("v_add_f64 v[0:1], v[2:3], v[4:5]");
  const StallDescription s = Stall("v_sqrt_f32 v8, v9");
  EXPECT_EQ(s.reason, kTrans32BusyStall);
  EXPECT_EQ(s.length.Get(), 16);
}

TEST_F(StallConditionsTest, VectorMemoryIssuesWhenVALUResultsLandNextCycle) {
  Issue("v_add_f32 v1, v2, v3");
  state_.UpdateCounters(14);  // one execute cycle left after the next one
  StallDescription s = Stall("buffer_load_dword v5, v6, s[0:3], 0 offen");
  EXPECT_EQ(s.length.Get(), 1);
  EXPECT_EQ(s.reason, kVaVdstStall);
  EXPECT_EQ(state_.GetCounters().va_vdst_, 1);
}

// A vector memory instruction after a vector result: it may issue once every
// pending result lands in the next cycle, whichever vector unit (VALU or the
// transcendental unit) produces it. GDS (here every global_ access) waits
// for the result to land.
TEST_F(StallConditionsTest, VectorMemoryAfterVectorResultsWriterByReader) {
  struct Writer {
    const char* line;
    int executeCycles;  // issue + execute latency of the writer
  };
  const Writer writers[] = {
      {"v_cos_f32 v58, v46", 16},       {"v_sin_f32 v58, v46", 16},  {"v_rcp_f32 v58, v46", 16},
      {"v_rsq_f32 v58, v46", 16},       {"v_sqrt_f32 v58, v46", 16}, {"v_log_f32 v58, v46", 16},
      {"v_rcp_iflag_f32 v58, v46", 16}, {"v_cos_f16 v58, v46", 16},  {"v_sin_f16 v58, v46", 16},
      {"v_rcp_f16 v58, v46", 16},       {"v_rsq_f16 v58, v46", 16},  {"v_sqrt_f16 v58, v46", 16},
      {"v_log_f16 v58, v46", 16},       {"v_exp_f32 v58, v46", 15},  // VALU and transcendental
      {"v_add_f32 v58, v46, v47", 16},                               // VALU only
  };
  struct Reader {
    const char* line;
    bool shortened;  // may issue one cycle before the result lands
  };
  const Reader readers[] = {
      {"ds_write_b32 v48, v67", true},
      {"ds_read_b32 v1, v0", true},
      {"buffer_load_dword v5, v6, s[0:3], 0 offen", true},
      {"buffer_store_dword v5, v6, s[0:3], 0 offen", true},
      {"flat_load_dword v1, v[2:3]", true},
      {"flat_store_dword v[2:3], v1", true},
      {"global_load_dword v1, v[2:3], off", false},
  };
  for (const Writer& w : writers) {
    for (const Reader& r : readers) {
      HardwareState state;
      state.Step(Info(w.line), 0, false);  // the issue cycle passes
      const StallDescription s = state.Step(Info(r.line), 0, false);
      // The writer's result lands after executeCycles - 1 further cycles.
      const int expected = w.executeCycles - 1 - (r.shortened ? 1 : 0);
      EXPECT_EQ(s.length.Get(), expected) << w.line << " / " << r.line;
      EXPECT_EQ(s.reason, kVaVdstStall) << w.line << " / " << r.line;
    }
  }
}

TEST_F(StallConditionsTest, DepCtrWaitsOnTheMaskedCounters) {
  struct Case {
    const char* setup;
    const char* wait;
    int expected;
  };
  const Case cases[] = {
      {"buffer_store_dword v1, v0, s[0:3], 0 offen", "s_waitcnt_depctr 0xffe3", 11},
      {"v_add_f32 v1, v2, v3", "s_waitcnt_depctr 0xffe3", 0},
      {"v_add_f32 v1, v2, v3", "s_waitcnt_depctr 0x0fff", 16},
      {"v_add_f32 v1, v2, v3", "s_waitcnt_depctr 0x1fff", 0},  // one in flight allowed
      {"s_add_u32 s4, s1, s2", "s_waitcnt_depctr 0xfffe", 9},
      {"s_add_u32 s4, s1, s2", "s_waitcnt_depctr 0xffff", 0},
  };
  for (const Case& c : cases) {
    HardwareState state;
    state.IssueInstruction(Info(c.setup));
    EXPECT_EQ(state.ApplyStall(Info(c.wait)).length.Get(), c.expected) << c.setup << c.wait;
  }
}

TEST_F(StallConditionsTest, ProgramCounterReadsDrainAndDelay) {
  Issue("v_add_f32 v1, v2, v3");
  StallDescription s = Stall("s_getpc_b64 s[4:5]");
  EXPECT_EQ(s.length.Get(), 16);  // va_vdst_ drains
  EXPECT_EQ(s.reason, kPCReadStall);
  Issue("s_getpc_b64 s[4:5]");
  s = Stall("s_nop 0");
  EXPECT_EQ(s.length.Get(), 16);
  EXPECT_EQ(s.reason, kPCReadStall);
}

TEST_F(StallConditionsTest, MemoryCounterWaitIsResolvedAtIssue) {
  const StallDescription s = Stall("s_waitcnt vmcnt(0)");
  EXPECT_TRUE(s.length.IsIndefinite());
  EXPECT_EQ(s.reason, kMemoryCounterStall);
}

// Counters that no in-flight operation will lower again are released
// instead of waited on forever.
TEST_F(StallConditionsTest, StaleCountersAreReleased) {
  struct Case {
    const char* setup;  // optional real operation in flight
    CounterField counter;
    int staleValue;
    const char* instruction;
    int expectedLength;
    int expectedCounter;
  };
  const Case cases[] = {
      {nullptr, &HardwareCounters::sa_sdst_, 3, "s_load_dword s4, s[0:1], 0x0", 0, 0},
      {"s_mov_b32 s9, s8", &HardwareCounters::sa_sdst_, 4, "s_load_dword s4, s[0:1], 0x0", 9, 0},
      {nullptr, &HardwareCounters::va_vdst_, 5, "s_waitcnt_depctr 0x0fff", 0, 0},
      {nullptr, &HardwareCounters::va_vdst_, 5, "s_waitcnt_depctr 0x3fff", 0, 3},
      {nullptr, &HardwareCounters::vm_vsrc_, 2, "s_getpc_b64 s[4:5]", 0, 0},
      {nullptr, &HardwareCounters::va_sdst_, -2, "s_getpc_b64 s[4:5]", 0, -2},
  };
  for (const Case& c : cases) {
    HardwareState state;
    if (c.setup) state.IssueInstruction(Info(c.setup));
    state.GetCounters().*c.counter += c.staleValue;
    const StallDescription s = state.ApplyStall(Info(c.instruction));
    EXPECT_EQ(s.length.Get(), c.expectedLength) << c.instruction;
    EXPECT_EQ(state.GetCounters().*c.counter, c.expectedCounter) << c.instruction;
  }
}

TEST_F(StallConditionsTest, ConditionsPerInstructionKind) {
  // Rows: sa_sdst, sa_exec, sa_m0, vm_vsrc, va_sdst, va_ssrc, va_vcc, va_exec,
  // va_vdst, lds_dir, f32_busy, trans32_busy.
  struct Case {
    const char* line;
    const char* expected;
  };
  const Case cases[] = {
      {"s_mov_b32 s1, s2", "001011000100"},
      {"s_mov_b32 exec_lo, s2", "001011010100"},
      {"s_load_dword s4, s[0:1], 0x0", "111011100100"},
      {"v_add_f32 v1, v2, v3", "010100010110"},
      {"v_sqrt_f32 v1, v2", "010100010101"},
      // Reading a standard SGPR is judged from the written SGPRs (none here).
      {"v_add_co_u32 v0, vcc, s1, v0", "010100010110"},
      {"v_readfirstlane_b32 s5, v0", "111100010110"},
      {"buffer_load_dword v1, v0, s[0:3], 0 offen", "110010111100"},
      {"ds_read_b32 v1, v0", "011000011100"},
      {"s_cbranch_vccz _L1", "101000100000"},
      {"s_cbranch_execz _L1", "011000010000"},
      {"v_interp_p1_f32 v1, v0, attr0.x", "011100010110"},
      {"exp mrt0 v0, v0, v0, v0", "011100011000"},
  };
  for (const Case& c : cases) {
    const InvocationDependencyInfo& info = Info(c.line);
    const bool rows[] = {state_.GetSaSdstCondition(info),  state_.GetSaExecCondition(info),
                         state_.GetSaM0Condition(info),    state_.GetVmVsrcCondition(info),
                         state_.GetVaSdstCondition(info),  state_.GetVaSsrcCondition(info),
                         state_.GetVaVccCondition(info),   state_.GetVaExecCondition(info),
                         state_.GetVaVdstCondition(info),  state_.GetLDSDirCondition(info),
                         state_.GetF32BusyCondition(info), state_.GetTrans32BusyCondition(info)};
    std::string got;
    for (bool row : rows) got += row ? '1' : '0';
    EXPECT_EQ(got, c.expected) << c.line;
  }
}

TEST_F(StallConditionsTest, VMEMKindDecidesVmVsrc) {
  const InvocationDependencyInfo& tex = Info("buffer_load_dword v1, v0, s[0:3], 0 offen");
  const InvocationDependencyInfo& lds = Info("ds_read_b32 v1, v0");
  state_.SetVMEMKind(HardwareState::kVMEMLDS);
  EXPECT_TRUE(state_.GetVmVsrcCondition(tex));
  EXPECT_FALSE(state_.GetVmVsrcCondition(lds));
  state_.SetVMEMKind(HardwareState::kTextureOrFlat);
  EXPECT_FALSE(state_.GetVmVsrcCondition(tex));
  EXPECT_TRUE(state_.GetVmVsrcCondition(lds));
}

TEST_F(StallConditionsTest, UnresolvedLoadIsFatal) {
  Issue("buffer_load_dword v1, v0, s[0:3], 0 offen");
  EXPECT_EXIT(Stall("v_add_f32 v2, v1, v1"), ::testing::ExitedWithCode(255),
              "^Error: Found a problem while resolving a stall caused by the instruction "
              "buffer_load_dword\\. Aborting\\.\n$");
}

// Malformed numbers in wait operands are listing errors naming the line and
// the operand. Operands the wait rules never read as numbers stay harmless.
TEST_F(StallConditionsTest, MalformedWaitNumbers) {
  struct Case {
    const char* line;
    const char* message;  // "" when the wait is accepted
  };
  const Case cases[] = {
      {"s_waitcnt vmcnt(99999999999)", "wait count 'vmcnt(99999999999)' does not fit 32 bits"},
      {"s_waitcnt lgkmcnt(4294967296)", "wait count 'lgkmcnt(4294967296)' does not fit 32 bits"},
      {"s_waitcnt vmcnt(x)", "wait count 'vmcnt(x)' is not a number"},
      {"s_waitcnt vmcnt", "wait count 'vmcnt' is not a number"},
      {"s_waitcnt expcnt()", "wait count 'expcnt()' is not a number"},
      {"s_waitcnt_vscnt null, 99999999999", "wait count '99999999999' does not fit 32 bits"},
      {"s_waitcnt_vmcnt 12345678901, 0", "wait count '12345678901' does not fit 32 bits"},
      {"s_waitcnt_depctr", "s_waitcnt_depctr has no mask operand"},
      {"s_waitcnt_depctr 0x1ffffffffffffffff",
       "s_waitcnt_depctr mask '0x1ffffffffffffffff' does not fit 64 bits"},
      {"s_waitcnt_depctr zz", "s_waitcnt_depctr mask 'zz' is not a number"},
      // Read as 0: hexadecimal or non-digit operands of the per-counter forms.
      {"s_waitcnt_vscnt null, 0x99999999999", ""},
      {"s_waitcnt_vmcnt x, 0", ""},
      // A wait selecting no queue is done before its count is read.
      {"s_waitcnt 99999999999", ""},
      {"s_waitcnt_depctr 0xffff", ""},
  };
  for (const Case& c : cases) {
    const InvocationDependencyInfo& info = InfoAt(12, c.line);
    HardwareState state;
    const auto [line, message] = ListingErrorOf([&] { state.Step(info, 0, false); });
    EXPECT_EQ(message, c.message) << c.line;
    EXPECT_EQ(line, c.message[0] ? 12u : 0u) << c.line;
  }
}

TEST(WaitArgumentTest, CountParsing) {
  struct Case {
    const char* text;
    int expected;
  };
  const Case cases[] = {{"vmcnt(0)", 0}, {"lgkmcnt(15)", 15}, {"vmcnt(3", 3},
                        {"7)", 7},       {"12", 12},          {"vmcnt(2) & x", 2}};
  for (const Case& c : cases)
    EXPECT_EQ(HardwareState::ExtractNewCountFromWaitArgument(c.text), c.expected) << c.text;
  EXPECT_THROW(HardwareState::ExtractNewCountFromWaitArgument("vmcnt()"), std::invalid_argument);
  EXPECT_THROW(HardwareState::ExtractNewCountFromWaitArgument("vmcnt(99999999999)"),
               std::out_of_range);
}

TEST(WaitArgumentTest, MaskParsing) {
  EXPECT_EQ(HardwareState::ExtractMaskFromHexValue("0xffe3"), 0xffe3u);
  EXPECT_EQ(HardwareState::ExtractMaskFromHexValue("FFE3"), 0xffe3u);
  EXPECT_THROW(HardwareState::ExtractMaskFromHexValue("zz"), std::invalid_argument);
  EXPECT_THROW(HardwareState::ExtractMaskFromHexValue("0x1ffffffffffffffff"), std::out_of_range);
}

}  // namespace
}  // namespace vesk::testing
