// The per-generation opcode tables: sorted arrays of Instruction records
// searched by name, and the factory that picks one by generation name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "isa/instruction.h"

namespace vesk {

class InstructionSet {
 public:
  InstructionSet(const Instruction* first, size_t count);
  virtual ~InstructionSet() = default;
  // Generation in the upper 16 bits (major << 16); 0xFFFF0000 for none.
  virtual uint32_t GetVersion() const { return 0xFFFF0000u; }

  const Instruction* begin() const { return first_; }
  const Instruction* end() const { return first_ + count_; }
  size_t size() const { return count_; }

  bool Contains(const char* name) const;
  // Throws std::runtime_error("Instruction not found") when absent.
  const Instruction& Get(const char* name) const;
  // The record of that name, or null.
  const Instruction* Find(const char* name) const;
  const Instruction* Find(std::string_view name) const;

 private:
  // An open-addressed hash table over the names, built once per set: every
  // instruction line of a listing looks its opcode up here. A slot holds the
  // name's hash and its row number plus one (0: empty).
  struct Slot {
    uint32_t hash;
    uint32_t row;
  };

  const Instruction* first_;
  size_t count_;
  std::vector<Slot> slots_;
};

class GFX7InstructionSet : public InstructionSet {
 public:
  GFX7InstructionSet();
  uint32_t GetVersion() const override { return 0x70000u; }
};

class GFX8InstructionSet : public InstructionSet {
 public:
  GFX8InstructionSet();
  uint32_t GetVersion() const override { return 0x80000u; }
};

class GFX9InstructionSet : public InstructionSet {
 public:
  GFX9InstructionSet();
  uint32_t GetVersion() const override { return 0x90000u; }
};

class GFX10InstructionSet : public InstructionSet {
 public:
  GFX10InstructionSet();
  uint32_t GetVersion() const override { return 0xA0000u; }
};

// "gfx7", "gfx8", "gfx9" or "gfx10" (exact); anything else gives null.
std::unique_ptr<InstructionSet> CreateInstructionSet(const std::string& name);

}  // namespace vesk
