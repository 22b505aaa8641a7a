// Lookup in the sorted opcode tables and the four generation tables, whose
// rows are generated from data/isa/*.tsv.
#include "isa/instruction_set.h"

#include <algorithm>
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

const Instruction* InstructionSet::Find(const char* name) const {
  const Instruction* it = std::lower_bound(
      begin(), end(), name,
      [](const Instruction& row, const char* key) { return std::strcmp(row.name, key) < 0; });
  if (it != end() && std::strcmp(it->name, name) == 0) return it;
  return nullptr;
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
