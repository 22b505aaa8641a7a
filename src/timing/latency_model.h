// Opcode and operand traits that decide the issue, execute and visibility
// latencies of an instruction, and the latency used for operations whose end
// is only known through a hardware counter (memory, messages, GDS).
#pragma once

#include <cstdint>

namespace vesk {

// Latency of memory-like operations. Issue (15) plus this value is exactly the
// indefinite StallLength, so their total latency reads as indefinite.
constexpr int32_t kUnboundedLatency = 0x7FFFFFF0;

struct LatencyBaseData {
  bool isTransF64 = false;   // 64-bit float op on the transcendental unit
  bool isSlowTrans = false;  // 64-bit reciprocal / square root family
  bool isSlowMul = false;    // 32-bit integer multiply-low/high, 64-bit mad, qsad
  bool isPipeSync = false;   // needs the VALU pipeline drained
  bool isShift64 = false;    // 64-bit shift
  bool isCompare64 = false;  // 64-bit compare
  bool isWideOrDpp = false;  // 64-bit shift/compare, or any DPP operand
  bool isRowDpp = false;     // row-crossing DPP (shift, rotate, mirror, share, wide xmask)
};

}  // namespace vesk
