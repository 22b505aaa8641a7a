// Issue, execute and visibility latencies per instruction kind, including the
// later rules overriding the earlier ones and the DPP operand traits.

#include "timing/latency_model.h"
#include "timing_test_util.h"
#include "util/analysis_error.h"

namespace vesk::testing {
namespace {

constexpr int U = kUnboundedLatency;

struct LatencyCase {
  const char* opcode;
  std::vector<std::string> args;
  int issue, execute, visibility;
};

class LatencyTest : public TimingTest {};

TEST_F(LatencyTest, LatenciesByInstruction) {
  const LatencyCase cases[] = {
      {"s_mov_b32", {"s0", "s1"}, 1, 8, 1},
      {"s_mul_hi_u32", {"s0", "s1", "s2"}, 1, 8, 1},  // slow multiply, but SALU wins
      {"v_add_f32", {"v0", "v1", "v2"}, 1, 15, 4},
      {"v_add_f32", {"v0", "v1", "v2", "row_shr:1"}, 2, 15, 4},
      {"v_add_f32", {"v0", "v1", "v2", "row_xmask:7"}, 1, 15, 4},
      {"v_add_f32", {"v0", "v1", "v2", "row_xmask:8"}, 2, 15, 4},
      {"v_add_f32", {"v0", "v1", "v2", "quad_perm:[1,0,3,2]"}, 1, 15, 4},
      {"v_log_f32", {"v0", "v1"}, 4, 12, 6},
      {"v_rcp_f32", {"v0", "v1"}, 4, 12, 6},
      {"v_exp_f32", {"v0", "v1"}, 0, 15, 0},  // VALU and transcendental without traits
      {"v_cmp_eq_u32", {"vcc_lo", "v1", "v2"}, 1, 15, 1},
      {"v_cmp_eq_u64", {"vcc_lo", "v[0:1]", "v[2:3]"}, 2, 15, 0},
      {"v_cmp_lt_f64", {"vcc_lo", "v[0:1]", "v[2:3]"}, 2, 15, 0},
      {"v_add_f64", {"v[0:1]", "v[2:3]", "v[4:5]"}, 16, 15, 6},
      {"v_cvt_f64_f32", {"v[0:1]", "v2"}, 16, 15, 6},
      {"v_add_f64", {"v[0:1]", "v[2:3]", "v[4:5]", "row_shr:1"}, 3, 15, 0},  // DPP drops F64
      {"v_rcp_f64", {"v[0:1]", "v[2:3]"}, 16, 15, 8},
      {"v_lshlrev_b64", {"v[0:1]", "2", "v[2:3]"}, 2, 15, 4},
      {"v_mul_lo_u32", {"v0", "v1", "v2"}, 4, 15, 4},
      {"v_mad_u64_u32", {"v[0:1]", "vcc_lo", "v2", "v3", "v[4:5]"}, 4, 15, 4},
      {"v_swap_b32", {"v0", "v1"}, 2, 15, 4},
      {"v_pipeflush", {}, 1, 15, 1},
      {"v_interp_p1_f32", {"v0", "v1", "attr0.x"}, 1, 18, 4},
      {"s_load_dword", {"s0", "s[0:1]", "0x0"}, 15, U, U},
      {"buffer_load_dword", {"v0", "v1", "s[0:3]", "0"}, 15, U, U},
      {"global_load_dword", {"v0", "v[0:1]", "off"}, 15, U, U},
      {"flat_load_dword", {"v0", "v[0:1]"}, 15, U, U},
      {"ds_read_b32", {"v0", "v1"}, 15, U, U},
      {"s_sendmsg", {"sendmsg(MSG_INTERRUPT)"}, 15, U, U},
      // SALU by "_sub_" and SMEM by "_atomic": the memory latency wins.
      {"s_atomic_sub_x2", {"s[0:1]", "s[2:3]", "0x0"}, 15, U, U},
      {"s_setreg_b32", {"hwreg(HW_REG_MODE)", "s0"}, 1, 15, 16},  // overrides SALU
      {"s_getpc_b64", {"s[0:1]"}, 1, 15, 16},
      {"s_cbranch_scc1", {"BB0_1"}, 0, 0, 0},
      {"s_waitcnt", {"vmcnt(0)"}, 0, 0, 0},
  };
  for (const auto& c : cases) {
    const InvocationDependencyInfo& info = Info(c.opcode, c.args);
    const std::string label = std::string(c.opcode) + (c.args.size() > 3 ? " " + c.args[3] : "");
    EXPECT_EQ(info.GetIssueLatency(), c.issue) << label;
    EXPECT_EQ(info.GetExecuteLatency(), c.execute) << label;
    EXPECT_EQ(info.GetVisibilityLatency(), c.visibility) << label;
  }
}

TEST_F(LatencyTest, TotalsAndText) {
  const InvocationDependencyInfo& load = Info("buffer_load_dword", {"v0", "v1", "s[0:3]", "0"});
  // Memory totals land exactly on the indefinite stall length.
  EXPECT_EQ(load.GetTotalExecuteLatency(), 2147483647);
  EXPECT_EQ(load.GetTotalVisibilityLatency(), 2147483647);
  const InvocationDependencyInfo& add = Info("v_add_f64", {"v[0:1]", "v[2:3]", "v[4:5]"});
  EXPECT_EQ(add.GetTotalExecuteLatency(), 31);
  EXPECT_EQ(add.GetTotalVisibilityLatency(), 22);
  EXPECT_EQ(add.LatenciesToString(),
            "Issue latency:\t16\nExecute latency:\t15\nVisibility latency:\t6\n");
}

// A malformed DPP lane mask is a listing error naming the line and the
// operand; well-formed masks around the half-row boundary still decide the
// extra issue cycle.
TEST_F(LatencyTest, RowXmaskOperands) {
  struct Case {
    const char* operand;
    int issue;            // -1: the operand is rejected
    const char* message;  // the listing error's text
  };
  const Case cases[] = {
      {"row_xmask:7", 1, ""},
      {"row_xmask:8", 2, ""},
      {"row_xmask:15", 2, ""},
      {"row_xmask", -1, "row_xmask operand 'row_xmask' has no lane mask"},
      {"row_xmask:", -1, "row_xmask operand 'row_xmask:' is not a number"},
      {"row_xmask:x", -1, "row_xmask operand 'row_xmask:x' is not a number"},
      {"row_xmask:99999999999", -1,
       "row_xmask operand 'row_xmask:99999999999' does not fit 32 bits"},
  };
  for (const Case& c : cases) {
    Invocation invocation(set_, "v_mov_b32", {"v1", "v2", c.operand}, {}, {});
    invocation.SetSourceLine(7);
    if (c.issue >= 0) {
      EXPECT_EQ(InvocationDependencyInfo(invocation).GetIssueLatency(), c.issue) << c.operand;
      continue;
    }
    try {
      InvocationDependencyInfo info(invocation);
      ADD_FAILURE() << c.operand << " accepted";
    } catch (const ListingError& error) {
      EXPECT_EQ(error.Line(), 7u);
      EXPECT_STREQ(error.what(), c.message);
    }
  }
}

}  // namespace
}  // namespace vesk::testing
