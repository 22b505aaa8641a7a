// Occupancy at the allocation boundaries of each generation and wave size,
// the SGPRs hardware reserves, the waves the LDS and workgroup slots allow,
// and the registers a program allocates, read from its operands.
#include "isa/occupancy.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vesk {
namespace {

OccupancyInputs Inputs(int generation, int waveSize, int vgprs, int sgprs) {
  OccupancyInputs inputs;
  inputs.generation = generation;
  inputs.waveSize = waveSize;
  inputs.allocation.vgprs = vgprs;
  inputs.allocation.sgprs = sgprs;
  return inputs;
}

TEST(Occupancy, VgprGranulesOfEachGenerationAndWaveSize) {
  struct Case {
    int generation;
    int waveSize;
    int vgprs;
    int rounded;
    int waves;
    int fewer;  // for one wave more
  };
  const Case cases[] = {
      // gfx7-gfx9: 256 in granules of 4, at most 10 waves.
      {7, 64, 0, 4, 10, 0},
      {7, 64, 24, 24, 10, 0},
      {8, 64, 25, 28, 9, 1},
      {9, 64, 28, 28, 9, 4},
      {9, 64, 29, 32, 8, 1},
      {9, 64, 85, 88, 2, 1},
      {9, 64, 90, 92, 2, 6},
      {9, 64, 129, 132, 1, 1},
      {9, 64, 256, 256, 1, 128},
      // gfx10 wave32: 1024 in granules of 8, at most 20 waves. 49 VGPRs make
      // 18 waves; dropping one gives 20.
      {10, 32, 48, 48, 20, 0},
      {10, 32, 49, 56, 18, 1},
      {10, 32, 64, 64, 16, 8},
      {10, 32, 256, 256, 4, 56},
      // gfx10 wave64: 512 in granules of 4.
      {10, 64, 24, 24, 20, 0},
      {10, 64, 25, 28, 18, 1},
      {10, 64, 129, 132, 3, 1},
      {10, 64, 256, 256, 2, 88},
  };
  for (const Case& c : cases) {
    const Occupancy o = ComputeOccupancy(Inputs(c.generation, c.waveSize, c.vgprs, 0));
    const std::string where = "gfx" + std::to_string(c.generation) + " wave" +
                              std::to_string(c.waveSize) + " vgprs " + std::to_string(c.vgprs);
    EXPECT_EQ(o.vgprsRounded, c.rounded) << where;
    EXPECT_EQ(o.vgprWaves, c.waves) << where;
    EXPECT_EQ(o.wavesPerSimd, c.waves) << where;
    EXPECT_EQ(o.limitedBy, c.waves < o.maxWaves ? OccupancyLimit::Vgpr : OccupancyLimit::Waves)
        << where;
    EXPECT_EQ(o.fewerForNextWave, c.fewer) << where;
  }
}

TEST(Occupancy, SgprsWithTheReservedOnes) {
  struct Case {
    const char* what;
    int generation;
    int sgprs;
    bool vcc, flatScratch, xnack;
    int counted;
    int waves;
    int fewer;
  };
  const Case cases[] = {
      {"gfx7 vcc", 7, 46, true, false, false, 48, 10, 0},
      {"gfx7 vcc, one over", 7, 47, true, false, false, 49, 9, 1},
      {"gfx7 flat_scratch takes 4 with vcc", 7, 76, true, true, false, 80, 6, 8},
      {"gfx7 xnack is no gfx7 feature", 7, 79, false, false, true, 79, 6, 7},
      {"gfx7 more than 80", 7, 81, false, false, false, 81, 5, 1},
      {"gfx7 at the top", 7, 102, true, false, false, 104, 5, 24},
      {"gfx8 no specials", 8, 80, false, false, false, 80, 10, 0},
      {"gfx8 vcc", 8, 80, true, false, false, 82, 9, 2},
      {"gfx8 xnack takes 4 with vcc", 8, 84, false, false, true, 88, 9, 8},
      {"gfx9 flat_scratch takes 6 in all", 9, 83, false, true, true, 89, 8, 1},
      {"gfx9 100 still 8", 9, 96, true, false, true, 100, 8, 12},
      {"gfx9 101", 9, 97, true, false, true, 101, 7, 1},
      {"gfx10 only vcc counts; SGPRs never limit", 10, 104, true, true, true, 106, 20, 0},
  };
  for (const Case& c : cases) {
    OccupancyInputs inputs = Inputs(c.generation, 64, 1, c.sgprs);
    inputs.allocation.usesVcc = c.vcc;
    inputs.allocation.usesFlatScratch = c.flatScratch;
    inputs.reservesXnackMask = c.xnack;
    const Occupancy o = ComputeOccupancy(inputs);
    EXPECT_EQ(o.sgprsCounted, c.counted) << c.what;
    EXPECT_EQ(o.sgprWaves, c.waves) << c.what;
    EXPECT_EQ(o.wavesPerSimd, c.waves) << c.what;
    EXPECT_EQ(o.fewerForNextWave, c.fewer) << c.what;
  }
}

TEST(Occupancy, LdsAndWorkgroupSlots) {
  struct Case {
    const char* what;
    int generation;
    int waveSize;
    std::optional<uint32_t> lds;
    std::optional<uint32_t> workgroup;
    std::optional<int> ldsWaves;
    int waves;
    OccupancyLimit limit;
  };
  const OccupancyLimit L = OccupancyLimit::Lds, W = OccupancyLimit::Waves;
  const Case cases[] = {
      {"LDS unknown", 9, 64, std::nullopt, 256u, std::nullopt, 10, W},
      {"workgroup unknown", 9, 64, 65536u, std::nullopt, std::nullopt, 10, W},
      {"one-wave groups need no barrier", 9, 64, 0u, 64u, 10, 10, W},
      {"4 groups of 4 waves on 4 SIMDs", 9, 64, 16384u, 256u, 4, 4, L},
      {"2 groups of 4 waves", 7, 64, 32768u, 256u, 2, 2, L},
      {"a 65-item group is 2 waves", 8, 64, 32768u, 65u, 1, 1, L},
      {"16 barriers bound the groups", 9, 64, 64u, 128u, 8, 8, L},
      {"groups of 1024 without LDS", 9, 64, 0u, 1024u, 8, 8, L},
      {"more LDS than a CU has: no group fits", 9, 64, 65537u, 64u, 0, 0, L},
      {"gfx10 WGP: 128 KiB, 8 groups of 8 waves", 10, 32, 16384u, 256u, 16, 16, L},
      {"gfx10 WGP: 2 groups of 8 waves", 10, 32, 65536u, 256u, 4, 4, L},
      {"gfx10 wave64: 8 groups of 4 waves", 10, 64, 16384u, 256u, 8, 8, L},
      {"gfx10 32 barriers", 10, 32, 0u, 64u, 16, 16, L},
      {"gfx10 wave64 groups of 1024 fill the slots", 10, 64, 0u, 1024u, 20, 20, W},
  };
  for (const Case& c : cases) {
    OccupancyInputs inputs = Inputs(c.generation, c.waveSize, 1, 1);
    inputs.ldsBytes = c.lds;
    inputs.workgroupSize = c.workgroup;
    const Occupancy o = ComputeOccupancy(inputs);
    EXPECT_EQ(o.ldsWaves, c.ldsWaves) << c.what;
    EXPECT_EQ(o.wavesPerSimd, c.waves) << c.what;
    EXPECT_EQ(o.limitedBy, c.limit) << c.what;
    EXPECT_EQ(o.fewerForNextWave, 0) << c.what;
  }
}

TEST(Occupancy, FewerRegistersGainNothingWhileAnotherLimitHolds) {
  // 32 VGPRs and 100 SGPRs both give 8 waves on gfx9: VGPRs are named first,
  // and dropping VGPRs alone would not gain a wave.
  OccupancyInputs tie = Inputs(9, 64, 32, 100);
  Occupancy o = ComputeOccupancy(tie);
  EXPECT_EQ(o.wavesPerSimd, 8);
  EXPECT_EQ(o.limitedBy, OccupancyLimit::Vgpr);
  EXPECT_EQ(o.fewerForNextWave, 0);
  // 90 VGPRs give 2 waves; LDS for 2 waves keeps it there.
  OccupancyInputs lds = Inputs(9, 64, 90, 10);
  lds.ldsBytes = 32768;
  lds.workgroupSize = 256;
  o = ComputeOccupancy(lds);
  EXPECT_EQ(o.wavesPerSimd, 2);
  EXPECT_EQ(o.limitedBy, OccupancyLimit::Vgpr);
  EXPECT_EQ(o.fewerForNextWave, 0);
}

TEST(RegisterAllocation, HighestIndexAndSpecialRegisters) {
  const GFX10InstructionSet gfx10;
  const GFX8InstructionSet gfx8;
  struct Case {
    const char* what;
    const InstructionSet& set;
    std::vector<std::vector<std::string>> lines;  // opcode, operands...
    int vgprs;
    int sgprs;
    std::vector<std::string> specials;
  };
  const Case cases[] = {
      {"empty program", gfx10, {}, 0, 0, {}},
      {"ranges count their last register; ttmp is no s-register",
       gfx10,
       {{"s_load_dwordx4", "s[8:11]", "s[0:1]", "0x0"},
        {"global_load_dwordx2", "v[6:7]", "v0", "off"},
        {"s_mov_b32", "s2", "ttmp11"}},
       8,
       12,
       {}},
      {"named special registers, through modifiers",
       gfx10,
       {{"v_cmp_eq_u32", "vcc_lo", "0", "v1"},
        {"s_mov_b32", "m0", "-1"},
        {"s_mov_b32", "exec_hi", "0"},
        {"v_fma_f32", "v0", "-abs(v2)", "1.0", "v1"}},
       3,
       0,
       {"vcc", "exec", "m0"}},
      {"implied by the opcode: vcc branch, exec moves, scalar compare",
       gfx10,
       {{"s_cmp_eq_u32", "s4", "0"},
        {"s_and_saveexec_b32", "s5", "s6"},
        {"s_cbranch_vccz", "L"},
        {"s_endpgm"}},
       0,
       7,
       {"vcc", "exec", "scc"}},
      {"short encodings without their vcc; v_cmpx sets exec; flat_scratch and xnack_mask",
       gfx8,
       {{"v_cmp_gt_f32", "v0", "v1"},
        {"v_cmpx_gt_f32", "s[0:1]", "v0", "v1"},
        {"s_add_u32", "flat_scratch_lo", "s6", "s9"},
        {"s_mov_b64", "s[2:3]", "xnack_mask"}},
       2,
       10,
       {"vcc", "exec", "flat_scratch", "xnack_mask"}},
  };
  for (const Case& c : cases) {
    std::vector<Invocation> program;
    for (const auto& line : c.lines) {
      // A branch goes to its first operand as written.
      std::vector<std::string> args(line.begin() + 1, line.end());
      std::string target = args.empty() ? "" : args[0];
      program.emplace_back(c.set, line[0], std::move(args), std::vector<std::string>{},
                           std::vector<std::string>{}, std::move(target));
    }
    const RegisterAllocation a = CountAllocatedRegisters(program);
    EXPECT_EQ(a.vgprs, c.vgprs) << c.what;
    EXPECT_EQ(a.sgprs, c.sgprs) << c.what;
    EXPECT_EQ(a.SpecialRegisterNames(), c.specials) << c.what;
  }
}

}  // namespace
}  // namespace vesk
