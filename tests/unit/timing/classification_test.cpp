// Opcode-name classification into execution units, including the deliberate
// over-matches of the substring rules.
#include <gtest/gtest.h>

#include "timing/invocation_flag_info.h"

namespace vesk {
namespace {

constexpr unsigned kSALU = 1, kSMEM = 2, kVALU = 4, kTrans = 8, kTex = 16, kFlat = 32;

struct ClassificationCase {
  const char* name;
  unsigned expected;
};

unsigned Classify(const std::string& name) {
  const InvocationFlagInfo info(name);
  return (info.IsSALUInvocation() ? kSALU : 0) | (info.IsSMEMInvocation() ? kSMEM : 0) |
         (info.IsVALUInvocation() ? kVALU : 0) | (info.IsTransVALUInvocation() ? kTrans : 0) |
         (info.IsVMEMTexInvocation() ? kTex : 0) | (info.IsFlatInvocation() ? kFlat : 0);
}

TEST(InvocationFlagInfoTest, ClassifiesByName) {
  const ClassificationCase cases[] = {
      {"s_and_b32", kSALU},
      {"s_cbranch_cdbgsys_and_user", 0},  // contains "_and" but excluded by hand
      {"s_cbranch_cdbgsys", 0},
      {"s_nop", 0},
      {"s_mov_b32", kSALU},
      {"s_getreg_b32", kSALU},  // "reg"
      {"s_load_dword", kSMEM},
      {"s_dcache_inv", kSMEM},
      {"s_atomic_add", kSMEM},
      {"scratch_load_dword", kSMEM},
      {"s_waitcnt", 0},
      {"v_add_f32", kVALU},
      {"v_sqrt_f32", kTrans},         // "sq", no VALU fragment
      {"v_add_f64", kVALU | kTrans},  // every 64-bit op counts as transcendental
      {"v_exp_f32", kVALU | kTrans},  // "_exp" and "v_exp"
      {"v_log_f32", kTrans},
      {"v_rcp_f64", kVALU | kTrans},
      {"v_mul_lo_u32", kVALU | kTrans},
      {"v_swap_b32", kVALU | kTrans},
      {"v_pipeflush", kVALU | kTrans},
      {"v_readfirstlane_b32", kVALU},
      {"v_interp_p1_f32", kVALU},
      {"v_cmp_eq_u32", kVALU},
      {"image_sample", kTex},
      {"tbuffer_load_format_x", kTex},
      {"buffer_load_dword", kTex},
      {"image_get_resinfo", 0},
      {"image_bvh_intersect_ray", 0},
      {"flat_load_dword", kFlat},
      {"global_load_dword", 0},
      {"ds_read_b32", 0},
      {"exp", 0},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Classify(c.name), c.expected) << c.name;
}

}  // namespace
}  // namespace vesk
