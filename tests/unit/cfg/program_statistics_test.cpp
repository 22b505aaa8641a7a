// Program counts: loops as back edges (nested, shared headers, unreachable
// code, very long chains), blocks and branches, and the memory and wait
// classification of opcodes of each family.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../app/isa_test_program.h"
#include "cfg/program_statistics.h"

namespace vesk {
namespace {

ProgramStatistics Compute(const std::string& generation, const std::vector<std::string>& lines) {
  const std::vector<Invocation> program = test::MakeIsaProgram(generation, lines);
  const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
  return ComputeProgramStatistics(program, blocks);
}

struct ShapeCase {
  const char* name;
  std::vector<std::string> program;
  int blocks;
  int branches;
  int jumps;
  int backEdges;
  int loopHeaders;
};

const ShapeCase kShapeCases[] = {
    {"straight line", {"s_mov_b32 s0, 0", "v_mov_b32 v0, s0", "s_endpgm"}, 1, 0, 0, 0, 0},
    {"if-else has no loop",
     {"s_cbranch_scc0 label_ELSE", "v_mov_b32 v0, 1", "s_branch label_END", "ELSE: v_mov_b32 v0, 2",
      "END: s_endpgm"},
     4,
     1,
     1,
     0,
     0},
    {"self loop",
     {"s_mov_b32 s0, 8", "L: s_sub_u32 s0, s0, 1", "s_cmp_eq_u32 s0, 0", "s_cbranch_scc0 label_L",
      "s_endpgm"},
     3,
     1,
     0,
     1,
     1},
    {"nested loops",
     {"OUTER: s_mov_b32 s1, 4", "INNER: s_sub_u32 s1, s1, 1", "s_cbranch_scc0 label_INNER",
      "s_sub_u32 s0, s0, 1", "s_cbranch_scc0 label_OUTER", "s_endpgm"},
     4,
     2,
     0,
     2,
     2},
    {"continue and latch share one header",
     {"H: s_sub_u32 s0, s0, 1", "s_cbranch_scc1 label_H", "v_add_f32 v0, v0, v1",
      "s_cbranch_scc0 label_H", "s_endpgm"},
     3,
     2,
     0,
     2,
     1},
    {"loop entered in the middle counts once",
     {"s_branch label_MID", "TOP: v_mov_b32 v0, v1", "MID: s_sub_u32 s0, s0, 1",
      "s_cbranch_scc0 label_TOP", "s_endpgm"},
     4,
     1,
     1,
     1,
     1},
    {"loop after the end of program is unreachable",
     {"s_endpgm", "DEAD: s_sub_u32 s0, s0, 1", "s_cbranch_scc0 label_DEAD"},
     2,
     1,
     0,
     0,
     0},
};

TEST(ProgramStatisticsTest, BlocksBranchesAndBackEdges) {
  for (const ShapeCase& c : kShapeCases) {
    SCOPED_TRACE(c.name);
    const ProgramStatistics stats = Compute("gfx10", c.program);
    EXPECT_EQ(stats.instructions, static_cast<int>(c.program.size()));
    EXPECT_EQ(stats.basicBlocks, c.blocks);
    EXPECT_EQ(stats.conditionalBranches, c.branches);
    EXPECT_EQ(stats.jumps, c.jumps);
    EXPECT_EQ(stats.backEdges, c.backEdges);
    EXPECT_EQ(stats.loopHeaders, c.loopHeaders);
  }
}

// A chain of 100000 blocks, each branching to the next (target and
// fall-through are the same block), closed by one branch back to the first:
// the walk is as deep as the chain.
TEST(ProgramStatisticsTest, LongChainWalksWithoutRecursion) {
  constexpr int kBlocks = 100000;
  std::vector<std::string> lines;
  lines.reserve(kBlocks + 2);
  for (int i = 0; i < kBlocks; ++i) {
    lines.push_back("B" + std::to_string(i) + ": s_cbranch_scc0 label_B" + std::to_string(i + 1));
  }
  lines.push_back("B" + std::to_string(kBlocks) + ": s_cbranch_scc1 label_B0");
  lines.push_back("s_endpgm");
  const ProgramStatistics stats = Compute("gfx10", lines);
  EXPECT_EQ(stats.basicBlocks, kBlocks + 2);
  EXPECT_EQ(stats.backEdges, 1);
  EXPECT_EQ(stats.loopHeaders, 1);
}

// The non-zero counters, as "family.kind=N" words.
std::string Describe(const ProgramStatistics& stats) {
  std::string text;
  auto add = [&](const char* name, int value) {
    if (value) text += (text.empty() ? "" : " ") + std::string(name) + "=" + std::to_string(value);
  };
  auto addFamily = [&](const std::string& family, const MemoryAccessCounts& counts) {
    const std::string loads = family + ".loads", stores = family + ".stores";
    const std::string atomics = family + ".atomics", other = family + ".other";
    add(loads.c_str(), counts.loads);
    add(stores.c_str(), counts.stores);
    add(atomics.c_str(), counts.atomics);
    add(other.c_str(), counts.other);
  };
  const MemoryStatistics& m = stats.memory;
  addFamily("buffer", m.buffer);
  addFamily("global", m.global);
  addFamily("flat", m.flat);
  addFamily("scratch", m.scratch);
  addFamily("image", m.image);
  addFamily("scalar", m.scalar);
  addFamily("lds", m.lds);
  add("gds", m.gds);
  add("exports", m.exports);
  const WaitStatistics& w = stats.waits;
  add("waits", w.total);
  add("vmcnt", w.vmcnt);
  add("expcnt", w.expcnt);
  add("lgkmcnt", w.lgkmcnt);
  add("vscnt", w.vscnt);
  add("encoded", w.encoded);
  add("depctr", w.depctr);
  return text;
}

struct ClassCase {
  const char* generation;
  const char* line;
  const char* expected;
};

const ClassCase kClassCases[] = {
    {"gfx10", "buffer_load_dword v0, v1, s[0:3], 0 offen", "buffer.loads=1"},
    {"gfx10", "tbuffer_store_format_x v0, v1, s[0:3], 0", "buffer.stores=1"},
    {"gfx10", "buffer_atomic_add v0, v1, s[0:3], 0", "buffer.atomics=1"},
    {"gfx10", "buffer_gl0_inv", "buffer.other=1"},
    {"gfx10", "global_load_dwordx2 v[0:1], v[2:3], off", "global.loads=1"},
    {"gfx10", "global_atomic_add v0, v[2:3], off", "global.atomics=1"},
    {"gfx9", "flat_store_dword v[0:1], v2", "flat.stores=1"},
    {"gfx10", "scratch_load_dword v0, off, s0", "scratch.loads=1"},
    {"gfx10", "image_sample v[0:3], v[4:5], s[0:7], s[8:11]", "image.loads=1"},
    {"gfx10", "image_store v[0:3], v[4:5], s[0:7]", "image.stores=1"},
    {"gfx10", "image_get_resinfo v[0:3], v4, s[0:7]", "image.other=1"},
    {"gfx10", "s_load_dwordx4 s[4:7], s[0:1], 0x0", "scalar.loads=1"},
    {"gfx8", "s_buffer_load_dword s4, s[0:3], 0x10", "scalar.loads=1"},
    {"gfx9", "s_store_dword s4, s[0:1], 0x0", "scalar.stores=1"},
    {"gfx9", "s_atomic_add s4, s[0:1], 0x0", "scalar.atomics=1"},
    {"gfx10", "s_memtime s[0:1]", "scalar.other=1"},
    {"gfx10", "s_getpc_b64 s[0:1]", ""},
    {"gfx10", "ds_read2_b32 v[0:1], v2 offset1:1", "lds.loads=1"},
    {"gfx10", "ds_write_b32 v0, v1", "lds.stores=1"},
    {"gfx10", "ds_wrxchg_rtn_b32 v0, v1, v2", "lds.atomics=1"},
    {"gfx10", "ds_swizzle_b32 v0, v1 offset:swizzle(SWAP,16)", "lds.other=1"},
    {"gfx10", "ds_add_u32 v0, gds, v1", "gds=1"},
    {"gfx10", "ds_gws_init v0 gds", "gds=1"},
    {"gfx9", "ds_ordered_count v0, v1", "gds=1"},
    {"gfx10", "exp mrt0 v0, v1, v2, v3 done vm", "exports=1"},
    {"gfx10", "s_waitcnt vmcnt(0) lgkmcnt(0)", "waits=1 vmcnt=1 lgkmcnt=1"},
    {"gfx10", "s_waitcnt vmcnt(0)&expcnt(0)&lgkmcnt(0)", "waits=1 vmcnt=1 expcnt=1 lgkmcnt=1"},
    {"gfx9", "s_waitcnt 0", "waits=1 encoded=1"},
    {"gfx10", "s_waitcnt_vscnt null, 0x0", "waits=1 vscnt=1"},
    {"gfx10", "s_waitcnt_depctr 0xffe3", "depctr=1"},
};

TEST(ProgramStatisticsTest, MemoryAndWaitClassification) {
  for (const ClassCase& c : kClassCases) {
    SCOPED_TRACE(std::string(c.generation) + ": " + c.line);
    EXPECT_EQ(Describe(Compute(c.generation, {c.line})), c.expected);
  }
}

}  // namespace
}  // namespace vesk
