// The name tests of the dependency record, run once per distinct opcode name
// and remembered.
#include "timing/opcode_name_traits.h"

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

#include "timing/invocation_flag_info.h"
#include "util/string_helpers.h"

namespace vesk {
namespace {

bool Contains(std::string_view text, const char* needle) {
  return text.find(needle) != std::string_view::npos;
}

OpcodeNameTraits Classify(std::string_view name) {
  OpcodeNameTraits t;
  const InvocationFlagInfo units{std::string(name)};
  t.isSALU = units.IsSALUInvocation();
  t.isSMEM = units.IsSMEMInvocation();
  t.isVALU = units.IsVALUInvocation();
  t.isTransVALU = units.IsTransVALUInvocation();
  t.isVMEMTex = units.IsVMEMTexInvocation();
  t.isFlat = units.IsFlatInvocation();

  t.startsFlat = name.starts_with("flat_");
  t.startsDS = name.starts_with("ds_");
  t.isBranch = Contains(name, "branch");
  t.isMsg = name.starts_with("s_sendmsg");
  t.isExport = name == "exp";
  t.startsGlobal = name.starts_with("global_");

  t.readsExecAsVector = name.size() > 1 && name.starts_with("v_");
  t.readsVccCarry = ContainsAny(name, {"_div_fmas", "_ci_"});
  t.namesScc = Contains(name, "scc");
  t.namesVcc = Contains(name, "vcc");
  t.namesExec = Contains(name, "exec");
  t.isSaveExec = Contains(name, "saveexec");

  t.writesVccCarry = ContainsAny(name, {"_div_scale", "_co_", "_mad_u64", "_mad_i64"});
  t.isCmpx = name.starts_with("v_cmpx_");
  t.writesScc = StartsWithAny(
      name, {"s_abs", "s_add", "s_sub", "s_min",      "s_max",  "s_and",  "s_or",
             "s_xor", "s_nan", "s_nor", "s_xno",      "s_lsh",  "s_ash",  "s_bfe",
             "s_cmp", "s_not", "s_wqm", "s_quadmask", "s_bcnt", "s_cmp_", "s_bitcmp"});
  t.namesWrExec = Contains(name, "wrexec");

  t.isMoveRel = Contains(name, "_movrel");
  t.isSwapRel = Contains(name, "_swaprel");
  t.isSubvector = Contains(name, "_subvector");
  t.isInterp = Contains(name, "_interp");
  t.isReadFirstLane = Contains(name, "_readfirstlane");
  t.isDivFmas = Contains(name, "_div_fmas");
  t.writesLaneMaskByName = Contains(name, "_co_") || Contains(name, "v_cmp");
  t.readsLaneMask = Contains(name, "_ci_") || Contains(name, "v_cndmask");
  t.isAddTid = Contains(name, "_addtid");
  t.isSwapB32 = Contains(name, "_swap_b32");
  t.isWaitCnt = Contains(name, "_waitcnt");
  t.isStore = ContainsAny(name, {"_store", "_atomic"});
  t.isLoad = ContainsAny(name, {"_load", "_atomic", "_sample", "_gather"});
  t.isPCReadEtc = ContainsAny(name, {"_setreg", "clrexcp", "_swappc_", "_getpc", "_call"});
  t.isWaitCntDepCtr = name.starts_with("s_waitcnt_depctr");

  const std::string lower = ToLower(std::string(name));
  t.isExactDepCtr = lower == "s_waitcnt_depctr";
  t.isPerCounterWait = StartsWith(lower, "s_waitcnt_");
  if (lower == "s_waitcnt_vmcnt")
    t.perCounterWaitType = 1;
  else if (lower == "s_waitcnt_vscnt")
    t.perCounterWaitType = 2;
  else if (lower == "s_waitcnt_lgkmcnt")
    t.perCounterWaitType = 3;
  else if (lower == "s_waitcnt_expcnt")
    t.perCounterWaitType = 4;

  t.isSlowTrans =
      ContainsAny(name, {"_rcp_f64", "_rsq_f64", "_sqrt_f64", "v_mp", "_rsq_cla", "rcp_cla"});
  t.isCompare64 = name.starts_with("v_cmp") && EndsWithAny(name, {"u64", "i64", "f64"});
  t.isShift64 = StartsWithAny(name, {"v_lshlrev_b64", "v_lshrrev_b64", "v_ashrrev_i64",
                                     "v_lshl_b64", "v_lshr_b64", "v_ashr_i64"});
  t.isSlowMulName =
      ContainsAny(name, {"qsad", "mul_lo_u32", "mul_lo_i32", "_mad_u64", "_mad_i64"}) ||
      name == "s_mul_hi_i32" || name == "s_mul_hi_u32";
  t.namesF64 = name.find("f64") != std::string_view::npos;
  t.isPipeSync = ContainsAny(name, {"_mov_fed", "_pipeflush", "_clrexcp"});
  t.startsVCmp_ = name.starts_with("v_cmp_");
  return t;
}

struct NameHash {
  using is_transparent = void;
  size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};

}  // namespace

const OpcodeNameTraits& GetOpcodeNameTraits(std::string_view name) {
  // Node-based map: references to the traits stay valid as it grows.
  static std::unordered_map<std::string, OpcodeNameTraits, NameHash, std::equal_to<>> cache;
  auto found = cache.find(name);
  if (found == cache.end()) found = cache.emplace(std::string(name), Classify(name)).first;
  return found->second;
}

}  // namespace vesk
