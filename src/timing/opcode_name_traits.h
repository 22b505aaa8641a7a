// OpcodeNameTraits: everything the dependency record derives from the opcode
// name alone, worked out once per distinct name instead of once per
// instruction (the name tests are substring searches).
#pragma once

#include <cstdint>
#include <string_view>

namespace vesk {

struct OpcodeNameTraits {
  // Execution units by name.
  bool isSALU = false;
  bool isSMEM = false;
  bool isVALU = false;
  bool isTransVALU = false;
  bool isVMEMTex = false;
  bool isFlat = false;
  // Prefixes and markers.
  bool startsFlat = false;    // "flat_"
  bool startsDS = false;      // "ds_"
  bool isBranch = false;      // contains "branch"
  bool isMsg = false;         // "s_sendmsg..."
  bool isExport = false;      // exactly "exp"
  bool startsGlobal = false;  // "global_"
  // Implicit reads.
  bool readsExecAsVector = false;  // "v_..."
  bool readsVccCarry = false;      // "_div_fmas", "_ci_"
  bool namesScc = false;
  bool namesVcc = false;
  bool namesExec = false;
  bool isSaveExec = false;
  // Implicit writes.
  bool writesVccCarry = false;  // "_div_scale", "_co_", "_mad_u64", "_mad_i64"
  bool isCmpx = false;          // "v_cmpx_"
  bool writesScc = false;       // the scalar ALU prefixes that set scc
  bool namesWrExec = false;
  // Generic properties.
  bool isMoveRel = false;
  bool isSwapRel = false;
  bool isSubvector = false;
  bool isInterp = false;
  bool isReadFirstLane = false;
  bool isDivFmas = false;
  bool writesLaneMaskByName = false;  // "_co_", "v_cmp" (v_div_fmas apart)
  bool readsLaneMask = false;
  bool isAddTid = false;
  bool isSwapB32 = false;
  bool isWaitCnt = false;
  bool isStore = false;
  bool isLoad = false;
  bool isPCReadEtc = false;
  bool isWaitCntDepCtr = false;
  // Wait forms (on the lower-cased name): exactly "s_waitcnt_depctr", a
  // per-counter form "s_waitcnt_...", and the counter such a form names
  // (a WaitType value; 0 for none).
  bool isExactDepCtr = false;
  bool isPerCounterWait = false;
  uint8_t perCounterWaitType = 0;
  // Latency traits.
  bool isSlowTrans = false;
  bool isCompare64 = false;
  bool isShift64 = false;
  bool isSlowMulName = false;
  bool namesF64 = false;
  bool isPipeSync = false;
  bool startsVCmp_ = false;  // "v_cmp_"
};

// The traits of `name`; the reference stays valid for the program's life.
const OpcodeNameTraits& GetOpcodeNameTraits(std::string_view name);

}  // namespace vesk
