// HardwareUsage: the set of execution units (scalar ALU, vector ALU,
// transcendental unit, scalar/vector memory, LDS, GDS, branch) that one
// instruction occupies, as a 16-bit mask of InstructionUnit bits.
#pragma once

#include <cstdint>

namespace vesk {

enum class InstructionUnit : uint16_t {
  SALU = 1 << 0,
  VALU = 1 << 1,
  TransVALU = 1 << 2,
  SMEM = 1 << 3,
  VMEM = 1 << 4,
  LDS = 1 << 5,
  GDS = 1 << 6,
  Branch = 1 << 7,
};

class HardwareUsage {
 public:
  constexpr HardwareUsage() = default;
  constexpr explicit HardwareUsage(uint16_t bits) : bits_(bits) {}

  constexpr bool Uses(InstructionUnit unit) const {
    return (bits_ & static_cast<uint16_t>(unit)) != 0;
  }
  constexpr bool UseSALU() const { return Uses(InstructionUnit::SALU); }
  constexpr bool UseVALU() const { return Uses(InstructionUnit::VALU); }
  constexpr bool UseTransVALU() const { return Uses(InstructionUnit::TransVALU); }
  constexpr bool UseSMEM() const { return Uses(InstructionUnit::SMEM); }
  constexpr bool UseVMEM() const { return Uses(InstructionUnit::VMEM); }
  constexpr bool UseLDS() const { return Uses(InstructionUnit::LDS); }
  constexpr bool UseGDS() const { return Uses(InstructionUnit::GDS); }
  constexpr bool UseBranch() const { return Uses(InstructionUnit::Branch); }
  // LDS-direct reads (and interpolation) go through the LDS but are issued
  // and written back by the VALU.
  constexpr bool IsLDS_DIRECT() const { return UseLDS() && UseVALU(); }

  constexpr uint16_t GetBits() const { return bits_; }
  constexpr bool IsEmpty() const { return bits_ == 0; }

  constexpr HardwareUsage& operator|=(const InstructionUnit& unit) {
    bits_ |= static_cast<uint16_t>(unit);
    return *this;
  }
  constexpr HardwareUsage& operator|=(unsigned short bits) {
    bits_ |= bits;
    return *this;
  }
  constexpr bool operator==(const HardwareUsage& other) const { return bits_ == other.bits_; }
  constexpr bool operator!=(const HardwareUsage& other) const { return bits_ != other.bits_; }

 private:
  uint16_t bits_ = 0;
};

}  // namespace vesk
