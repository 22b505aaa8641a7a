// One immutable opcode record of a generation's instruction table: which
// operand positions the instruction writes, reads, or both, and its control
// kind (branch, jump, end of program, immediate-only).
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "isa/registers.h"

namespace vesk {

// Control kinds, compared by equality. kImmediateBarrier marks the GFX10
// barrier rows that are immediate-only and a barrier at once; no predicate
// reports them.
constexpr uint32_t kKindOrdinary = 0;
constexpr uint32_t kKindBranch = 1;
constexpr uint32_t kKindJump = 2;
constexpr uint32_t kKindEnd = 4;
constexpr uint32_t kKindImmediate = 8;
constexpr uint32_t kKindBarrier = 16;
constexpr uint32_t kKindImmediateBarrier = kKindImmediate | kKindBarrier;

struct Instruction {
  const char* name;
  uint64_t written;      // bit i: operand i is written
  uint64_t read;         // bit i: operand i is read
  uint64_t readWritten;  // bit i: operand i is read and written in place
  uint32_t kind;

  const char* GetName() const { return name; }
  uint64_t GetWritten() const { return written; }
  uint64_t GetRead() const { return read; }
  uint64_t GetReadWritten() const { return readWritten; }
  bool Is(const char* other) const {
    return name == other || (name && other && std::strcmp(name, other) == 0);
  }
  bool IsJump() const { return kind == kKindJump; }
  bool IsBranch() const { return kind == kKindBranch; }
  bool IsEnd() const { return kind == kKindEnd; }
  bool IsImmediate() const { return kind == kKindImmediate; }
};

// Stands for every opcode the active table does not hold: no register roles,
// not a control instruction.
extern const Instruction unknownInstruction_;

// The registers of one class that an instruction (or a group of them) reads
// and writes.
class InstructionOperands {
 public:
  using Set = SmallIntSet<256>;

  InstructionOperands() = default;
  InstructionOperands(const Set& read, const Set& written) : read_(read), written_(written) {}

  Set& GetRead() { return read_; }
  const Set& GetRead() const { return read_; }
  Set& GetWritten() { return written_; }
  const Set& GetWritten() const { return written_; }

  InstructionOperands& MergeWith(const InstructionOperands& other) {
    read_ |= other.read_;
    written_ |= other.written_;
    return *this;
  }
  static InstructionOperands Merge(const std::vector<InstructionOperands>& list) {
    InstructionOperands result;
    for (const auto& item : list) result.MergeWith(item);
    return result;
  }

 private:
  Set read_;
  Set written_;
};

}  // namespace vesk
