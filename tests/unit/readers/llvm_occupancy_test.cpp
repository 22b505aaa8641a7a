// Register allocation and occupancy of kernels compiled by clang-19 for each
// generation (tests/fixtures/occupancy, made by its Makefile), read with the
// LLVM reader and checked against the figures the compiler wrote beside
// each function: "; NumVgprs:", "; NumSgprs:" and "; Occupancy:".
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "isa/occupancy.h"
#include "readers/llvm_listing_reader.h"
#include "util/read_text.h"
#include "util/string_helpers.h"

namespace vesk {
namespace {

// What clang-19 wrote for one function.
struct CompilerFigures {
  int numVgprs = -1;
  int numSgprs = -1;
  int occupancy = -1;
};

// The figures of each function, by name: the comments follow the function's
// code, before the next function's label.
std::map<std::string, CompilerFigures> ReadCompilerFigures(const std::string& text,
                                                           const std::vector<ListingProgram>& ps) {
  std::map<std::string, CompilerFigures> figures;
  std::string current;
  for (std::string_view line : SplitTextLines(text)) {
    for (const ListingProgram& p : ps) {
      if (line.starts_with(p.name + ":")) current = p.name;
    }
    const auto number = [&](std::string_view key, int& out) {
      if (line.starts_with(key)) out = ParseIntView(TrimBlanks(line.substr(key.size())));
    };
    number("; NumVgprs:", figures[current].numVgprs);
    number("; NumSgprs:", figures[current].numSgprs);
    number("; Occupancy:", figures[current].occupancy);
  }
  return figures;
}

// One kernel in one fixture: Vesk's figures. `sgprs` is the highest
// s-register named + 1; `counted` adds the registers the hardware reserves.
struct Row {
  const char* file;  // under tests/fixtures/occupancy
  const char* kernel;
  int generation;
  int waveSize;
  int vgprs;
  int sgprs;
  int counted;
  int waves;
  OccupancyLimit limit;
  int fewer;
};

constexpr OccupancyLimit V = OccupancyLimit::Vgpr, S = OccupancyLimit::Sgpr,
                         L = OccupancyLimit::Lds, W = OccupancyLimit::Waves;

// Reserved SGPRs, counted as clang does: vcc (2) on every generation; gfx7
// 4 in all with flat_scratch; gfx8/9 4 in all when XNACK_MASK is reserved
// (gfx900 reserves it by default, gfx803 cannot replay faults), 6 with
// flat_scratch (`smooth` calls a function, so it sets flat_scratch up);
// gfx10 only vcc. So `counted` equals clang's NumSgprs in every row, and
// `sgprs` its next free SGPR. The last rows are kernels of the LLVM reader's
// fixtures (tests/fixtures/llvm). Device functions are left out: clang
// writes no occupancy for them.
// `waves` is waves per SIMD; `fewer` the registers of the limiting class to
// drop for one wave more. "lds" also covers the workgroup slots of a CU: `wide` has no LDS, but
// only two workgroups of 1024 fit (barrier and wave slots).
// clang-format off
const Row kRows[] = {
    // file                        kernel             gen wave vgpr sgpr cnt waves lim fewer
    {"kernels.gfx700.s",           "light",           7,  64, 3,   7,  9,  10, W, 0},
    // 124 rounded; 3 waves need 84
    {"kernels.gfx700.s",           "matmul8",         7,  64, 122, 12, 14, 2,  V, 38},
    // 68 rounded; 4 waves need 64
    {"kernels.gfx700.s",           "vgpr65",          7,  64, 65,  7,  9,  3,  V, 1},
    // 6 waves need <= 80
    {"kernels.gfx700.s",           "sgpr86",          7,  64, 3,   86, 88, 5,  S, 8},
    // 64K/16K: 4 groups of 4 waves
    {"kernels.gfx700.s",           "lds_tile",        7,  64, 22,  7,  9,  4,  L, 0},
    // 2 groups of 16 waves on 4 SIMDs
    {"kernels.gfx700.s",           "wide",            7,  64, 3,   7,  9,  8,  L, 0},
    {"kernels.gfx803.s",           "light",           8,  64, 3,   7,  9,  10, W, 0},
    {"kernels.gfx803.s",           "matmul8",         8,  64, 122, 12, 14, 2,  V, 38},
    {"kernels.gfx803.s",           "vgpr65",          8,  64, 65,  7,  9,  3,  V, 1},
    // 10 waves need <= 80
    {"kernels.gfx803.s",           "sgpr86",          8,  64, 3,   86, 88, 9,  S, 8},
    {"kernels.gfx803.s",           "lds_tile",        8,  64, 22,  7,  9,  4,  L, 0},
    {"kernels.gfx803.s",           "wide",            8,  64, 3,   7,  9,  8,  L, 0},
    {"kernels.gfx900.s",           "light",           9,  64, 3,   7,  11, 10, W, 0},
    {"kernels.gfx900.s",           "matmul8",         9,  64, 109, 10, 14, 2,  V, 25},
    {"kernels.gfx900.s",           "vgpr65",          9,  64, 65,  7,  11, 3,  V, 1},
    // 9 waves need <= 88
    {"kernels.gfx900.s",           "sgpr86",          9,  64, 3,   86, 90, 8,  S, 2},
    {"kernels.gfx900.s",           "lds_tile",        9,  64, 23,  7,  11, 4,  L, 0},
    {"kernels.gfx900.s",           "wide",            9,  64, 3,   7,  11, 8,  L, 0},
    {"kernels.gfx1010.s",          "light",           10, 32, 3,   7,  9,  20, W, 0},
    // 112 by 8s; 10 waves need 96
    {"kernels.gfx1010.s",          "matmul8",         10, 32, 110, 12, 14, 9,  V, 14},
    // 72 rounded; 15 waves need 64
    {"kernels.gfx1010.s",          "vgpr65",          10, 32, 65,  7,  9,  14, V, 1},
    // SGPRs never limit on gfx10
    {"kernels.gfx1010.s",          "sgpr86",          10, 32, 3,   86, 88, 20, W, 0},
    // 128 KiB WGP: 8 groups of 8 waves
    {"kernels.gfx1010.s",          "lds_tile",        10, 32, 21,  7,  9,  16, L, 0},
    // 2 groups of 32 waves
    {"kernels.gfx1010.s",          "wide",            10, 32, 3,   7,  9,  16, L, 0},
    {"kernels.gfx1010-w64.s",      "light",           10, 64, 3,   7,  9,  20, W, 0},
    // 116 of 512; 5 waves need 100
    {"kernels.gfx1010-w64.s",      "matmul8",         10, 64, 114, 12, 14, 4,  V, 14},
    {"kernels.gfx1010-w64.s",      "vgpr65",          10, 64, 65,  7,  9,  7,  V, 1},
    {"kernels.gfx1010-w64.s",      "sgpr86",          10, 64, 3,   86, 88, 20, W, 0},
    // 8 groups of 4 waves
    {"kernels.gfx1010-w64.s",      "lds_tile",        10, 64, 21,  7,  9,  8,  L, 0},
    // 5 groups of 16 waves fill it
    {"kernels.gfx1010-w64.s",      "wide",            10, 64, 3,   7,  9,  20, W, 0},
    {"../llvm/loop.gfx900.s",      "scale_sum",       9,  64, 7,   10, 14, 10, W, 0},
    {"../llvm/divergent.gfx700.s", "clamp_or_square", 7,  64, 6,   7,  9,  10, W, 0},
    // flat_scratch: 6 in all
    {"../llvm/multi.gfx803.s",     "smooth",          8,  64, 11,  33, 39, 10, W, 0},
    {"../llvm/multi.gfx1010.s",    "smooth",          10, 32, 12,  33, 35, 20, W, 0},
    // HIP: groups of 1024
    {"../llvm/saxpy.gfx900.s",     "_Z5saxpyPfPKffi", 9,  64, 5,   33, 39, 8,  L, 0},
    {"../llvm/saxpy.gfx1010.s",    "_Z5saxpyPfPKffi", 10, 32, 5,   33, 35, 16, L, 0},
};
// clang-format on

std::unique_ptr<InstructionSet> SetOf(int generation) {
  return CreateInstructionSet("gfx" + std::to_string(generation));
}

TEST(LlvmOccupancy, AgreesWithTheCompilerOnEveryFixtureKernel) {
  std::map<std::string, std::string> texts;
  for (const Row& row : kRows) {
    const std::string path = std::string(VESK_SOURCE_DIR) + "/tests/fixtures/occupancy/" + row.file;
    if (!texts.count(path)) {
      const std::optional<std::string> text = ReadFile(path);
      ASSERT_TRUE(text) << path;
      texts[path] = *text;
    }
    const std::string& text = texts[path];
    const std::unique_ptr<InstructionSet> set = SetOf(row.generation);
    const std::vector<ListingProgram> programs = ReadLlvmAssembly(text, *set);
    const std::map<std::string, CompilerFigures> compiler = ReadCompilerFigures(text, programs);
    const ListingProgram* program = nullptr;
    for (const ListingProgram& p : programs) {
      if (p.name == row.kernel) program = &p;
    }
    const std::string where = std::string(row.file) + " " + row.kernel;
    ASSERT_TRUE(program) << where;

    const ProgramAttributes& facts = program->attributes;
    OccupancyInputs inputs;
    inputs.generation = static_cast<int>(set->GetVersion() >> 16);
    inputs.waveSize = facts.waveSize.value_or(64);
    inputs.allocation = CountAllocatedRegisters(program->invocations);
    inputs.reservesXnackMask = facts.reservesXnackMask.value_or(false);
    inputs.ldsBytes = facts.ldsBytes;
    inputs.workgroupSize = facts.workgroupSize;
    ASSERT_TRUE(inputs.ldsBytes && inputs.workgroupSize) << where;
    const Occupancy occupancy = ComputeOccupancy(inputs);

    // Vesk against the table.
    EXPECT_EQ(inputs.generation, row.generation) << where;
    EXPECT_EQ(inputs.waveSize, row.waveSize) << where;
    EXPECT_EQ(inputs.allocation.vgprs, row.vgprs) << where;
    EXPECT_EQ(inputs.allocation.sgprs, row.sgprs) << where;
    EXPECT_EQ(occupancy.sgprsCounted, row.counted) << where;
    EXPECT_EQ(occupancy.wavesPerSimd, row.waves) << where;
    EXPECT_EQ(OccupancyLimitName(occupancy.limitedBy), std::string(OccupancyLimitName(row.limit)))
        << where;
    EXPECT_EQ(occupancy.fewerForNextWave, row.fewer) << where;
    // The table against the compiler.
    const CompilerFigures& figures = compiler.at(row.kernel);
    EXPECT_EQ(row.vgprs, figures.numVgprs) << where;
    EXPECT_EQ(row.counted, figures.numSgprs) << where;
    EXPECT_EQ(row.waves, figures.occupancy) << where;
  }
}

}  // namespace
}  // namespace vesk
