// The dependency counter block of a wave: operations in flight per kind that
// s_waitcnt_depctr and the issue rules wait on, plus the busy cycles of the
// VALU and the transcendental unit.
#pragma once

#include <cstdint>

namespace vesk {

struct HardwareCounters {
  int32_t sa_sdst_ = 0;       // SALU SGPR writes in flight (exec and m0 excluded)
  int32_t sa_exec_ = 0;       // SALU exec writes in flight
  int32_t sa_m0_ = 0;         // SALU m0 writes in flight
  int32_t vm_vsrc_ = 0;       // vector-memory instructions still reading VGPR sources
  int32_t va_sdst_ = 0;       // VALU SGPR writes in flight (vcc excluded)
  int32_t va_ssrc_ = 0;       // VALU instructions still reading SGPR sources
  int32_t va_vcc_ = 0;        // VALU vcc writes in flight
  int32_t va_exec_ = 0;       // VALU exec writes in flight
  int32_t va_vdst_ = 0;       // VALU instructions with VGPR results in flight
  int32_t lds_dir_ = 0;       // LDS-direct instructions with more than 15 cycles left
  int32_t f32_busy_ = 0;      // cycles the VALU stays busy
  int32_t trans32_busy_ = 0;  // cycles the transcendental unit stays busy

  bool operator==(const HardwareCounters&) const = default;
};

static_assert(sizeof(HardwareCounters) == 12 * sizeof(int32_t), "twelve counters, no padding");

// Pointer to one counter of the block, for the tables that walk them.
using CounterField = int32_t HardwareCounters::*;

}  // namespace vesk
