// The summary record: a compiled kernel read from its listing (counts,
// pressure peaks at their listing lines, allocation against the compiler's
// own figures), the launch facts and wave size reaching the occupancy, and
// the stall part (GFX10 only, worst stalls ordered and capped).
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "app/program_summary.h"
#include "isa/instruction_set.h"
#include "isa_test_program.h"
#include "readers/isa_reader.h"

namespace vesk {
namespace {

// clamp_or_square from tests/fixtures/llvm/divergent.cl, as clang-19 wrote
// it for gfx1010 (wave32). The listing says NumVgprs: 6, NumSgprs: 9 (s0..s6
// plus the two of vcc), Occupancy: 20.
TEST(ProgramSummaryTest, CompiledKernelFromItsListing) {
  std::ifstream file(std::string(VESK_SOURCE_DIR) + "/tests/fixtures/llvm/divergent.gfx1010.s");
  ASSERT_TRUE(file);
  std::stringstream text;
  text << file.rdbuf();
  const auto set = CreateInstructionSet("gfx10");
  AutoIsaReader reader;
  const std::vector<ListingProgram> programs = reader.ReadPrograms(text, *set);
  ASSERT_EQ(programs.size(), 1u);
  const ListingProgram& program = programs[0];

  SummaryOptions options;
  options.generation = 10;
  options.waveSize = program.attributes.waveSize.value_or(32);
  options.attributes = program.attributes;
  const ProgramSummary summary = SummarizeProgram(program.invocations, options);

  const ProgramStatistics& stats = summary.statistics;
  EXPECT_EQ(stats.instructions, 27);
  EXPECT_EQ(stats.basicBlocks, 3);  // up to the execz branch, the then-side, from .LBB0_2
  EXPECT_EQ(stats.conditionalBranches, 1);
  EXPECT_EQ(stats.jumps, 0);
  EXPECT_EQ(stats.backEdges, 0);
  EXPECT_EQ(stats.memory.scalar, (MemoryAccessCounts{2, 0, 0, 0}));
  EXPECT_EQ(stats.memory.global, (MemoryAccessCounts{2, 1, 0, 0}));
  EXPECT_EQ(stats.memory.VectorTotal(), 3);
  EXPECT_EQ(stats.waits.total, 3);
  EXPECT_EQ(stats.waits.vmcnt, 2);
  EXPECT_EQ(stats.waits.lgkmcnt, 1);

  // v0, v1 (address), v4 (x) and v2, v3 (second address) are live when the
  // then-side loads v5 at line 31.
  EXPECT_EQ(summary.vgpr.maxLive, 6);
  EXPECT_EQ(summary.vgpr.peakLine, 31u);
  ASSERT_NE(summary.vgpr.peakInstruction, nullptr);
  EXPECT_EQ(summary.vgpr.peakInstruction->GetSourceLine(), 31u);
  EXPECT_EQ(summary.vgpr.allocated, 6);
  // s[4:5] (kernel arguments), s6 (group id), s[0:1] and s2 being loaded at
  // line 12; vcc and exec are not counted.
  EXPECT_EQ(summary.sgpr.maxLive, 6);
  EXPECT_EQ(summary.sgpr.peakLine, 12u);
  EXPECT_EQ(summary.sgpr.allocated, 7);
  // vcc and exec are named; whether SALU results count as uses of scc is the
  // allocation's business.
  ASSERT_GE(summary.specialRegisters.size(), 2u);
  EXPECT_EQ(summary.specialRegisters[0], "vcc");
  EXPECT_EQ(summary.specialRegisters[1], "exec");

  EXPECT_EQ(summary.waveSize, 32);
  EXPECT_EQ(summary.occupancy.wavesPerSimd, 20);

  ASSERT_TRUE(summary.stall.has_value());
  const StallSummary& stall = *summary.stall;
  EXPECT_LE(stall.worst.size(), kWorstStallCount);
  int64_t listed = 0;
  for (size_t i = 0; i < stall.worst.size(); ++i) {
    const StallEntry& entry = stall.worst[i];
    ASSERT_NE(entry.invocation, nullptr);
    EXPECT_EQ(entry.line, entry.invocation->GetSourceLine());
    EXPECT_GT(entry.cycles, 0);
    if (i > 0) {
      const StallEntry& before = stall.worst[i - 1];
      EXPECT_TRUE(before.cycles > entry.cycles ||
                  (before.cycles == entry.cycles && before.line < entry.line));
    }
    listed += entry.cycles;
  }
  EXPECT_GE(stall.totalCycles, listed);
}

ProgramAttributes Launch(std::optional<uint32_t> ldsBytes, std::optional<uint32_t> workgroupSize) {
  ProgramAttributes attributes;
  attributes.ldsBytes = ldsBytes;
  attributes.workgroupSize = workgroupSize;
  return attributes;
}

struct OccupancyCase {
  const char* name;
  const char* generation;
  int waveSize;
  ProgramAttributes attributes;
  int wavesPerSimd;
  OccupancyLimit limitedBy;
};

// 65 VGPRs allocated (v64 named), one live: the register files of each
// generation and wave size decide; LDS only when both launch facts are known.
const OccupancyCase kOccupancyCases[] = {
    {"gfx7: 68 of 256 VGPRs", "gfx7", 64, {}, 3, OccupancyLimit::Vgpr},
    {"gfx8", "gfx8", 64, {}, 3, OccupancyLimit::Vgpr},
    {"gfx9", "gfx9", 64, {}, 3, OccupancyLimit::Vgpr},
    {"gfx10 wave32: 72 of 1024 VGPRs", "gfx10", 32, {}, 14, OccupancyLimit::Vgpr},
    {"gfx10 wave64: 68 of 512 VGPRs", "gfx10", 64, {}, 7, OccupancyLimit::Vgpr},
    {"gfx9: two 32 KiB workgroups of four waves per CU", "gfx9", 64, Launch(32768u, 256u), 2,
     OccupancyLimit::Lds},
    {"gfx9: LDS size without workgroup size does not limit", "gfx9", 64,
     Launch(32768u, std::nullopt), 3, OccupancyLimit::Vgpr},
};

TEST(ProgramSummaryTest, OccupancyFollowsGenerationWaveSizeAndLaunchFacts) {
  for (const OccupancyCase& c : kOccupancyCases) {
    SCOPED_TRACE(c.name);
    const std::vector<Invocation> program =
        test::MakeIsaProgram(c.generation, {"v_mov_b32 v64, v0", "s_endpgm"});
    SummaryOptions options;
    options.generation = std::stoi(std::string(c.generation).substr(3));
    options.waveSize = c.waveSize;
    options.attributes = c.attributes;
    const ProgramSummary summary = SummarizeProgram(program, options);
    EXPECT_EQ(summary.vgpr.allocated, 65);
    EXPECT_EQ(summary.vgpr.maxLive, 1);
    EXPECT_EQ(summary.vgpr.peakLine, 1u);
    EXPECT_EQ(summary.occupancy.wavesPerSimd, c.wavesPerSimd);
    EXPECT_EQ(summary.occupancy.limitedBy, c.limitedBy);
    EXPECT_EQ(summary.stall.has_value(), options.generation == 10);
  }
}

// A load, then a chain of twelve dependent additions: each waits the same
// few cycles for the one before, so the ten listed are the first ten in
// program order; the wait for the load has no bound and is counted apart.
TEST(ProgramSummaryTest, WorstStallsAreCappedAndTiesKeepProgramOrder) {
  std::vector<std::string> lines = {"global_load_dword v30, v[40:41], off", "v_mov_b32 v0, s0"};
  for (int i = 0; i < 12; ++i) {
    const std::string from = "v" + std::to_string(i);
    lines.push_back("v_add_f32 v" + std::to_string(i + 1) + ", " + from + ", " + from);
  }
  lines.push_back("s_waitcnt vmcnt(0)");
  lines.push_back("s_endpgm");
  const std::vector<Invocation> program = test::MakeIsaProgram("gfx10", lines);
  for (int waveSize : {32, 64}) {
    SCOPED_TRACE(waveSize);
    SummaryOptions options;
    options.generation = 10;
    options.waveSize = waveSize;
    const ProgramSummary summary = SummarizeProgram(program, options);
    ASSERT_TRUE(summary.stall.has_value());
    const StallSummary& stall = *summary.stall;
    EXPECT_EQ(stall.unboundedWaits, 1);
    ASSERT_EQ(stall.worst.size(), kWorstStallCount);
    const int chained = stall.worst[0].cycles;
    int64_t total = 0;
    for (size_t i = 0; i < stall.worst.size(); ++i) {
      // Lines 3..14 are the additions; each waits for the previous line.
      EXPECT_EQ(stall.worst[i].line, i + 3);
      EXPECT_EQ(stall.worst[i].cycles, chained);
      EXPECT_EQ(stall.worst[i].cause.culprit, &program[i + 1]);
      total += stall.worst[i].cycles;
    }
    EXPECT_GE(stall.totalCycles, total + 2 * chained);
  }
}

TEST(ProgramSummaryTest, EmptyProgram) {
  SummaryOptions options;
  options.generation = 10;
  options.waveSize = 32;
  const ProgramSummary summary = SummarizeProgram({}, options);
  EXPECT_EQ(summary.statistics.instructions, 0);
  EXPECT_EQ(summary.statistics.basicBlocks, 0);
  EXPECT_EQ(summary.vgpr.peakInstruction, nullptr);
  EXPECT_EQ(summary.sgpr.maxLive, 0);
  ASSERT_TRUE(summary.stall.has_value());
  EXPECT_TRUE(summary.stall->worst.empty());
}

}  // namespace
}  // namespace vesk
