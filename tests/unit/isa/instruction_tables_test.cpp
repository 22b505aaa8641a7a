// Shape checks over the four generated opcode tables: row totals, family and
// encoding-suffix counts, control kinds, the operand-mask distribution,
// ordering, generation membership, and agreement with data/isa/*.tsv. The
// roles of the irregular rows are checked through parsed lines in
// operand_roles_test.cpp.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "isa/instruction_set.h"

namespace vesk {
namespace {

constexpr std::array<const char*, 10> kFamilies = {
    "buffer_", "ds_", "exp", "flat_", "global_", "image_", "s_", "scratch_", "tbuffer_", "v_"};

struct TableShape {
  const char* generation;
  uint32_t version;
  size_t total;
  std::array<size_t, kFamilies.size()> families;  // without the immediate-barrier rows
  size_t e64, sdwa, dpp;
  std::map<uint32_t, size_t> kinds;  // every non-ordinary kind with its row count
  size_t readWritten;
  std::set<uint64_t> writtenMasks;
};

// Test names and failure lines show the generation, not the raw record.
void PrintTo(const TableShape& shape, std::ostream* out) {
  *out << shape.generation;
}

const std::set<uint64_t> kPlainWritten = {0x0, 0x1, 0x3};
const std::set<uint64_t> kSdwaWritten = {0x0, 0x1, 0x3, 0x5, 0x9, 0x11};
const std::set<uint64_t> kReadMasks = {0x0, 0x1, 0x2, 0x3,  0x6,  0x7,
                                       0xC, 0xE, 0xF, 0x1C, 0x1E, 0x1F};

const TableShape kShapes[] = {
    {"gfx7",
     0x70000,
     1188,
     {56, 139, 1, 46, 0, 89, 167, 0, 8, 682},
     307,
     0,
     0,
     {{1, 13}, {2, 1}, {4, 1}, {8, 8}},
     51,
     kPlainWritten},
    {"gfx8",
     0x80000,
     1607,
     {59, 144, 1, 40, 0, 89, 187, 0, 16, 1071},
     324,
     234,
     102,
     {{1, 13}, {2, 1}, {4, 2}, {8, 8}},
     45,
     kSdwaWritten},
    {"gfx9",
     0x90000,
     1852,
     {69, 154, 1, 48, 48, 89, 263, 22, 16, 1142},
     328,
     239,
     109,
     {{1, 13}, {2, 1}, {4, 3}, {8, 7}},
     97,
     kSdwaWritten},
    {"gfx10",
     0xA0000,
     1541,
     {72, 153, 1, 54, 52, 107, 280, 22, 16, 782},
     312,
     0,
     0,
     {{1, 10}, {2, 1}, {4, 3}, {8, 10}, {24, 2}},
     105,
     kPlainWritten},
};

bool StartsWith(const char* text, const char* prefix) {
  return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

bool EndsWith(const char* text, const char* suffix) {
  size_t length = std::strlen(text), suffixLength = std::strlen(suffix);
  return length >= suffixLength && std::strcmp(text + length - suffixLength, suffix) == 0;
}

class InstructionTableTest : public ::testing::TestWithParam<TableShape> {
 protected:
  void SetUp() override {
    set_ = CreateInstructionSet(GetParam().generation);
    ASSERT_NE(set_, nullptr);
  }
  std::vector<const Instruction*> Rows() const {
    std::vector<const Instruction*> rows;
    for (const Instruction& row : *set_) rows.push_back(&row);
    return rows;
  }
  std::unique_ptr<InstructionSet> set_;
};

TEST_P(InstructionTableTest, TotalAndVersion) {
  EXPECT_EQ(static_cast<size_t>(set_->end() - set_->begin()), GetParam().total);
  EXPECT_EQ(set_->GetVersion(), GetParam().version);
}

TEST_P(InstructionTableTest, FamilyCounts) {
  // The two GFX10 immediate-barrier rows are not part of the family counts.
  for (size_t i = 0; i < kFamilies.size(); ++i) {
    size_t count = 0;
    for (const Instruction* row : Rows())
      if (row->kind != kKindImmediateBarrier && StartsWith(row->name, kFamilies[i])) ++count;
    EXPECT_EQ(count, GetParam().families[i]) << kFamilies[i];
  }
}

TEST_P(InstructionTableTest, EncodingSuffixCounts) {
  size_t e64 = 0, sdwa = 0, dpp = 0, e32 = 0;
  for (const Instruction* row : Rows()) {
    if (!StartsWith(row->name, "v_")) continue;
    e64 += EndsWith(row->name, "_e64");
    sdwa += EndsWith(row->name, "_sdwa");
    dpp += EndsWith(row->name, "_dpp");
    e32 += EndsWith(row->name, "_e32");
  }
  EXPECT_EQ(e64, GetParam().e64);
  EXPECT_EQ(sdwa, GetParam().sdwa);
  EXPECT_EQ(dpp, GetParam().dpp);
  EXPECT_EQ(e32, 0u);
}

TEST_P(InstructionTableTest, KindCounts) {
  std::map<uint32_t, size_t> kinds;
  for (const Instruction* row : Rows())
    if (row->kind != kKindOrdinary) ++kinds[row->kind];
  EXPECT_EQ(kinds, GetParam().kinds);
}

TEST_P(InstructionTableTest, MaskDistribution) {
  std::set<uint64_t> written;
  size_t readWritten = 0;
  for (const Instruction* row : Rows()) {
    written.insert(row->written);
    EXPECT_TRUE(kReadMasks.count(row->read)) << row->name << " read 0x" << std::hex << row->read;
    EXPECT_TRUE(row->readWritten == 0 || row->readWritten == 0x1) << row->name;
    // An operand read and written in place is both read and written.
    EXPECT_EQ(row->readWritten & ~(row->read & row->written), 0u) << row->name;
    readWritten += row->readWritten == 0x1;
  }
  EXPECT_EQ(written, GetParam().writtenMasks);
  EXPECT_EQ(readWritten, GetParam().readWritten);
}

TEST_P(InstructionTableTest, SortedUniqueAndFoundByLookup) {
  std::vector<const Instruction*> rows = Rows();
  for (size_t i = 1; i < rows.size(); ++i)
    EXPECT_LT(std::strcmp(rows[i - 1]->name, rows[i]->name), 0) << rows[i]->name;
  for (const Instruction* row : rows) {
    ASSERT_TRUE(set_->Contains(row->name)) << row->name;
    EXPECT_EQ(&set_->Get(row->name), row);
  }
}

// The generated table holds exactly the rows of its data file.
TEST_P(InstructionTableTest, MatchesDataFile) {
  std::ifstream file(std::string(VESK_SOURCE_DIR) + "/data/isa/" + GetParam().generation + ".tsv");
  ASSERT_TRUE(file) << "data file missing";
  std::string line;
  std::getline(file, line);
  EXPECT_EQ(line, "name\twritten\tread\treadWritten\tkind");
  const Instruction* row = set_->begin();
  while (std::getline(file, line)) {
    ASSERT_NE(row, set_->end()) << "extra data row " << line;
    std::istringstream fields(line);
    std::string name, written, read, readWritten, kind;
    std::getline(fields, name, '\t');
    std::getline(fields, written, '\t');
    std::getline(fields, read, '\t');
    std::getline(fields, readWritten, '\t');
    std::getline(fields, kind, '\t');
    EXPECT_STREQ(row->name, name.c_str());
    EXPECT_EQ(row->written, std::stoull(written, nullptr, 16)) << name;
    EXPECT_EQ(row->read, std::stoull(read, nullptr, 16)) << name;
    EXPECT_EQ(row->readWritten, std::stoull(readWritten, nullptr, 16)) << name;
    EXPECT_EQ(row->kind, std::stoul(kind)) << name;
    ++row;
  }
  EXPECT_EQ(row, set_->end());
}

INSTANTIATE_TEST_SUITE_P(Generations, InstructionTableTest, ::testing::ValuesIn(kShapes),
                         [](const auto& info) { return std::string(info.param.generation); });

// Rows present in some generations only.
TEST(InstructionTableRows, GenerationMembership) {
  struct Case {
    const char* name;
    std::array<bool, 4> present;  // gfx7, gfx8, gfx9, gfx10
  };
  const Case cases[] = {
      {"v_add_f32_sdwa", {false, true, true, false}},
      {"v_mov_b32_dpp", {false, true, true, false}},
      {"v_add_f32_e64", {true, true, true, true}},
      {"v_add_f32_e32", {false, false, false, false}},
      {"s_cbranch_join", {true, true, true, false}},
      {"s_endpgm_saved", {false, true, true, true}},
      {"s_endpgm_ordered_ps_done", {false, false, true, true}},
      {"s_clause", {false, false, false, true}},
      {"global_load_dword", {false, false, true, true}},
      {"v_add_co_ci_u32", {true, true, true, true}},
      {"S_NOP", {false, false, false, false}},
  };
  const char* generations[] = {"gfx7", "gfx8", "gfx9", "gfx10"};
  for (size_t g = 0; g < 4; ++g) {
    auto set = CreateInstructionSet(generations[g]);
    ASSERT_NE(set, nullptr);
    for (const Case& c : cases)
      EXPECT_EQ(set->Contains(c.name), c.present[g]) << generations[g] << " " << c.name;
  }
}

}  // namespace
}  // namespace vesk
