// Opcode lookup and the generation factory.
#include "isa/instruction_set.h"

#include <gtest/gtest.h>

#include <stdexcept>

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

TEST(InstructionSet, SuffixFormsExistWhereTheEncodingDoes) {
  EXPECT_TRUE(GFX8InstructionSet().Contains("v_add_f32_sdwa"));
  EXPECT_TRUE(GFX9InstructionSet().Contains("v_add_f32_sdwa"));
  EXPECT_FALSE(GFX7InstructionSet().Contains("v_add_f32_sdwa"));
  EXPECT_FALSE(GFX10InstructionSet().Contains("v_add_f32_sdwa"));
}

}  // namespace
}  // namespace vesk
