// Block splitting, naming and link order.
#include <gtest/gtest.h>

#include "cfg/basic_block.h"
#include "test_program.h"
#include "util/analysis_error.h"

namespace vesk {
namespace {

// "label[instruction count]->successor,successor" per block, in block order.
std::vector<std::string> Describe(const BasicBlockList& blocks) {
  std::vector<std::string> lines;
  for (size_t i = 0; i < blocks.size(); ++i) {
    const BasicBlock& block = *blocks[i];
    EXPECT_EQ(block.GetOrder(), static_cast<int>(i));
    std::string line =
        block.GetLabel() + "[" + std::to_string(block.GetInvocations().size()) + "]->";
    for (size_t s = 0; s < block.GetSuccessors().size(); ++s) {
      line += (s ? "," : "") + block.GetSuccessors()[s]->GetLabel();
    }
    lines.push_back(line);
  }
  return lines;
}

struct SplitCase {
  const char* name;
  std::vector<std::string> program;
  std::vector<std::string> blocks;
};

const SplitCase kSplitCases[] = {
    {"empty program", {}, {"entry[0]->exit", "exit[0]->"}},
    {"straight line",
     {"v_mov_b32 v0, v1", "s_endpgm"},
     {"entry[0]->basic_block_1", "basic_block_1[2]->exit", "exit[0]->"}},
    {"labelled first instruction",
     {"START: v_mov_b32 v0, v1", "s_endpgm"},
     {"entry[0]->START", "START[2]->exit", "exit[0]->"}},
    {"falls through into exit",
     {"v_mov_b32 v0, v1"},
     {"entry[0]->basic_block_1", "basic_block_1[1]->exit", "exit[0]->"}},
    {"branch target before fall-through, numbering skips labelled blocks",
     {"v_mov_b32 v0, v1", "s_cbranch_scc0 label_ELSE", "v_mov_b32 v2, v0", "s_branch label_END",
      "ELSE: v_mov_b32 v2, v1", "END: s_endpgm"},
     {"entry[0]->basic_block_1", "basic_block_1[2]->ELSE,basic_block_2", "basic_block_2[2]->END",
      "ELSE[1]->END", "END[1]->exit", "exit[0]->"}},
    {"branch to next block links it twice",
     {"s_cbranch_scc0 label_NEXT", "NEXT: s_endpgm"},
     {"entry[0]->basic_block_1", "basic_block_1[1]->NEXT,NEXT", "NEXT[1]->exit", "exit[0]->"}},
    {"second label of a line resolves for a branch",
     {"s_cbranch_scc0 label_B", "v_mov_b32 v0, v1", "A B: s_endpgm"},
     {"entry[0]->basic_block_1", "basic_block_1[1]->A,basic_block_2", "basic_block_2[1]->A",
      "A[1]->exit", "exit[0]->"}},
    {"unknown branch target keeps only the fall-through",
     {"s_cbranch_scc0 label_NOWHERE", "s_endpgm"},
     {"entry[0]->basic_block_1", "basic_block_1[1]->basic_block_2", "basic_block_2[1]->exit",
      "exit[0]->"}},
    {"code after the end of program starts an unreached block",
     {"s_endpgm", "s_nop 0", "s_endpgm"},
     {"entry[0]->basic_block_1", "basic_block_1[1]->exit", "basic_block_2[2]->exit", "exit[0]->"}},
    {"backward branch forms a loop",
     {"v_mov_b32 v0, 0", "LOOP: v_add_f32 v0, v0, v1", "s_cbranch_scc0 label_LOOP", "s_endpgm"},
     {"entry[0]->basic_block_1", "basic_block_1[1]->LOOP", "LOOP[2]->LOOP,basic_block_3",
      "basic_block_3[1]->exit", "exit[0]->"}},
    {"the later of two blocks with one label is the target",
     {"L: v_mov_b32 v0, v1", "s_branch label_L", "L: s_endpgm"},
     {"entry[0]->L", "L[2]->L", "L[1]->exit", "exit[0]->"}},
};

TEST(BasicBlockTest, SplitsNamesAndLinks) {
  for (const SplitCase& c : kSplitCases) {
    SCOPED_TRACE(c.name);
    const std::vector<Invocation> program = test::MakeProgram(c.program);
    const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
    EXPECT_EQ(Describe(blocks), c.blocks);
  }
}

TEST(BasicBlockTest, DuplicateLabelLinksToTheLaterBlock) {
  const std::vector<Invocation> program =
      test::MakeProgram({"L: v_mov_b32 v0, v1", "s_branch label_L", "L: s_endpgm"});
  const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
  ASSERT_EQ(blocks.size(), 4u);
  EXPECT_EQ(blocks[1]->GetSuccessors().front(), blocks[2].get());
  // Reached by the jump only; the earlier "L" is not linked to itself.
  EXPECT_EQ(blocks[2]->GetPredecessors(), (std::vector<BasicBlock*>{blocks[1].get()}));
  EXPECT_EQ(blocks[1]->GetPredecessors(), (std::vector<BasicBlock*>{blocks[0].get()}));
}

TEST(BasicBlockTest, PredecessorsFollowLinkOrder) {
  const std::vector<Invocation> program =
      test::MakeProgram({"s_cbranch_scc0 label_END", "v_mov_b32 v0, v1", "END: s_endpgm"});
  const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
  ASSERT_EQ(blocks.size(), 5u);
  EXPECT_EQ(blocks[3]->GetPredecessors(),
            (std::vector<BasicBlock*>{blocks[1].get(), blocks[2].get()}));
  EXPECT_TRUE(blocks[4]->IsExit());
  EXPECT_TRUE(blocks[0]->IsEntry() && blocks[0]->IsEmpty());
}

TEST(BasicBlockTest, JumpsToUnknownNamesAreRejected) {
  // A jump does not consult the second labels of a line.
  for (const auto& lines : std::vector<std::vector<std::string>>{
           {"s_branch label_NOWHERE", "s_endpgm"}, {"s_branch label_B", "A B: s_endpgm"}}) {
    const std::vector<Invocation> program = test::MakeProgram(lines);
    EXPECT_THROW(CreateBasicBlocksFromInvocations(program), AnalysisError) << lines[0];
  }
}

}  // namespace
}  // namespace vesk
