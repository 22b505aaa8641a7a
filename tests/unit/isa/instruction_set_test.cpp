// Opcode lookup and the generation factory.
#include "isa/instruction_set.h"

#include <gtest/gtest.h>

#include <iterator>
#include <stdexcept>
#include <string>

namespace vesk {
namespace {

TEST(InstructionSet, FactoryMatchesExactGenerationNames) {
  struct Case {
    const char* name;
    uint32_t version;  // 0: no set
  };
  const Case cases[] = {{"gfx7", 0x70000},
                        {"gfx8", 0x80000},
                        {"gfx9", 0x90000},
                        {"gfx10", 0xA0000},
                        {"GFX9", 0},
                        {"gfx11", 0},
                        {"", 0}};
  for (const Case& c : cases) {
    auto set = CreateInstructionSet(c.name);
    EXPECT_EQ(set ? set->GetVersion() : 0u, c.version) << c.name;
  }
  const Instruction row = {"x", 0, 0, 0, 0};
  EXPECT_EQ(InstructionSet(&row, 1).GetVersion(), 0xFFFF0000u);
}

TEST(InstructionSet, LookupIsExactAndCaseSensitive) {
  const GFX10InstructionSet set;
  EXPECT_TRUE(set.Contains("s_nop"));
  EXPECT_FALSE(set.Contains("S_NOP"));
  EXPECT_FALSE(set.Contains("s_no"));
  EXPECT_FALSE(set.Contains("v_add_f32_e32"));
  EXPECT_TRUE(set.Contains("v_add_f32_e64"));
  EXPECT_STREQ(set.Get("s_nop").GetName(), "s_nop");
  EXPECT_THROW(
      {
        try {
          set.Get("s_no");
        } catch (const std::runtime_error& error) {
          EXPECT_STREQ(error.what(), "Instruction not found");
          throw;
        }
      },
      std::runtime_error);
  EXPECT_STREQ(unknownInstruction_.GetName(), "<unknown>");
}

TEST(InstructionSet, EveryRowIsFoundUnderItsOwnNameOnly) {
  for (const char* generation : {"gfx7", "gfx8", "gfx9", "gfx10"}) {
    const auto set = CreateInstructionSet(generation);
    for (const Instruction& row : *set) {
      const std::string name = row.GetName();
      EXPECT_EQ(set->Find(name.c_str()), &row) << generation << " " << name;
      EXPECT_EQ(&set->Get(name.c_str()), &row) << generation << " " << name;
      // Near misses: a prefix, one more character, an upper-case first letter.
      for (const std::string& other :
           {name.substr(0, name.size() - 1), name + "x", "S" + name.substr(1)}) {
        const Instruction* found = set->Find(other.c_str());
        EXPECT_TRUE(found == nullptr || other == found->GetName()) << generation << " " << other;
      }
    }
  }
}

TEST(InstructionSet, HandBuiltTableFindsTheFirstOfTwoEqualNames) {
  const Instruction rows[] = {
      {"a", 0, 0, 0, 0}, {"b", 1, 0, 0, 0}, {"b", 2, 0, 0, 0}, {"", 3, 0, 0, 0}};
  const InstructionSet set(rows, std::size(rows));
  EXPECT_EQ(set.Find("b"), &rows[1]);
  EXPECT_EQ(set.Find(""), &rows[3]);
  EXPECT_EQ(set.Find("c"), nullptr);
  EXPECT_EQ(InstructionSet(rows, 0).Find("a"), nullptr);
}

TEST(InstructionSet, SuffixFormsExistWhereTheEncodingDoes) {
  EXPECT_TRUE(GFX8InstructionSet().Contains("v_add_f32_sdwa"));
  EXPECT_TRUE(GFX9InstructionSet().Contains("v_add_f32_sdwa"));
  EXPECT_FALSE(GFX7InstructionSet().Contains("v_add_f32_sdwa"));
  EXPECT_FALSE(GFX10InstructionSet().Contains("v_add_f32_sdwa"));
}

}  // namespace
}  // namespace vesk
