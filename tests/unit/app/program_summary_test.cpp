// The summary record: the launch facts and wave size reaching the occupancy,
// and the stall part (GFX10 only, worst stalls ordered and capped). Compiled
// kernels are checked end to end by the summary goldens.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/program_summary.h"
#include "isa/instruction_set.h"
#include "isa_test_program.h"
#include "readers/isa_reader.h"

namespace vesk {
namespace {

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

// 65 VGPRs allocated (v64 named), one live. The occupancy model has tables of
// its own; here the wave size and the launch facts must reach it.
const OccupancyCase kOccupancyCases[] = {
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
