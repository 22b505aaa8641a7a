// Lookup in the sorted opcode tables and the four generation tables, whose
// rows are generated from data/isa/*.tsv.
#include "isa/instruction_set.h"

#include <cstring>
#include <stdexcept>

namespace vesk {

const Instruction unknownInstruction_ = {"<unknown>", 0, 0, 0, kKindOrdinary};

namespace {

constexpr Instruction kGfx7Table[] = {
#include "isa/generated/gfx7_table.inc"
};
constexpr Instruction kGfx8Table[] = {
#include "isa/generated/gfx8_table.inc"
};
constexpr Instruction kGfx9Table[] = {
#include "isa/generated/gfx9_table.inc"
};
constexpr Instruction kGfx10Table[] = {
#include "isa/generated/gfx10_table.inc"
};

}  // namespace

namespace {

// FNV-1a over the bytes of the name.
uint32_t HashName(std::string_view name) {
  uint32_t hash = 2166136261u;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
  return hash;
}

}  // namespace

InstructionSet::InstructionSet(const Instruction* first, size_t count)
    : first_(first), count_(count) {
  // At most half the slots are used, so probe sequences stay short. Where a
  // name occurs twice the first row wins, as the sorted search would find it.
  size_t size = 16;
  while (size < 2 * count) size *= 2;
  slots_.assign(size, Slot{0, 0});
  for (size_t row = 0; row < count; ++row) {
    if (!first[row].name) continue;
    const std::string_view name(first[row].name);
    const uint32_t hash = HashName(name);
    for (size_t i = hash & (size - 1);; i = (i + 1) & (size - 1)) {
      Slot& slot = slots_[i];
      if (slot.row == 0) {
        slot = Slot{hash, static_cast<uint32_t>(row + 1)};
        break;
      }
      if (slot.hash == hash && name == first[slot.row - 1].name) break;
    }
  }
}

const Instruction* InstructionSet::Find(std::string_view name) const {
  const uint32_t hash = HashName(name);
  const size_t mask = slots_.size() - 1;
  for (size_t i = hash & mask;; i = (i + 1) & mask) {
    const Slot& slot = slots_[i];
    if (slot.row == 0) return nullptr;
    if (slot.hash == hash && name == first_[slot.row - 1].name) return first_ + slot.row - 1;
  }
}

const Instruction* InstructionSet::Find(const char* name) const {
  return Find(std::string_view(name));
}

bool InstructionSet::Contains(const char* name) const {
  return Find(name) != nullptr;
}

const Instruction& InstructionSet::Get(const char* name) const {
  const Instruction* row = Find(name);
  if (!row) throw std::runtime_error("Instruction not found");
  return *row;
}

GFX7InstructionSet::GFX7InstructionSet() : InstructionSet(kGfx7Table, std::size(kGfx7Table)) {}
GFX8InstructionSet::GFX8InstructionSet() : InstructionSet(kGfx8Table, std::size(kGfx8Table)) {}
GFX9InstructionSet::GFX9InstructionSet() : InstructionSet(kGfx9Table, std::size(kGfx9Table)) {}
GFX10InstructionSet::GFX10InstructionSet() : InstructionSet(kGfx10Table, std::size(kGfx10Table)) {}

std::unique_ptr<InstructionSet> CreateInstructionSet(const std::string& name) {
  if (name == "gfx7") return std::make_unique<GFX7InstructionSet>();
  if (name == "gfx8") return std::make_unique<GFX8InstructionSet>();
  if (name == "gfx9") return std::make_unique<GFX9InstructionSet>();
  if (name == "gfx10") return std::make_unique<GFX10InstructionSet>();
  return nullptr;
}

}  // namespace vesk
