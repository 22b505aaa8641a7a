// The per-instruction graph: lowering order against the recursive
// formulation, depth-first orders, and the liveness solve.
#include <gtest/gtest.h>
#include <pthread.h>

#include <map>
#include <random>
#include <unordered_map>

#include "cfg/basic_block.h"
#include "cfg/per_instruction_cfg.h"
#include "test_program.h"
#include "util/analysis_error.h"

namespace vesk {
namespace {

using Set = SmallIntSet<256>;

// The recursive lowering written out plainly; the graph's explicit-stack
// version must create nodes and links in exactly this order.
struct ReferenceGraph {
  struct Node {
    const BasicBlock* block;
    int order;
    std::vector<int> successors;
  };
  std::vector<Node> nodes;
  std::unordered_map<const BasicBlock*, std::pair<int, int>> byBlock;  // first, last

  void Lower(const BasicBlock* block) {
    if (byBlock.count(block)) return;
    const int first = static_cast<int>(nodes.size());
    const int count = std::max<int>(1, static_cast<int>(block->GetInvocations().size()));
    for (int i = 0; i < count; ++i) {
      nodes.push_back({block, i, {}});
      if (i > 0) nodes[nodes.size() - 2].successors.push_back(static_cast<int>(nodes.size()) - 1);
    }
    byBlock[block] = {first, static_cast<int>(nodes.size()) - 1};
    for (const BasicBlock* successor : block->GetSuccessors()) {
      Lower(successor);
      nodes[byBlock[block].second].successors.push_back(byBlock[successor].first);
    }
  }
};

// Node list as (block order, node order, successor indices), indices into
// the node vector.
std::vector<std::string> Describe(const PerInvocationCfg& cfg) {
  std::map<const PerInvocationCfgNode*, int> index;
  for (const auto& node : cfg.GetNodes()) index.emplace(node.get(), static_cast<int>(index.size()));
  std::vector<std::string> lines;
  for (const auto& node : cfg.GetNodes()) {
    std::string line = std::to_string(node->GetBasicBlock()->GetOrder()) + "." +
                       std::to_string(node->GetOrder()) + "->";
    for (const PerInvocationCfgNode* successor : node->GetSuccessors()) {
      line += std::to_string(index.at(successor)) + ",";
    }
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> Describe(const ReferenceGraph& graph) {
  std::vector<std::string> lines;
  for (const auto& node : graph.nodes) {
    std::string line =
        std::to_string(node.block->GetOrder()) + "." + std::to_string(node.order) + "->";
    for (int successor : node.successors) line += std::to_string(successor) + ",";
    lines.push_back(line);
  }
  return lines;
}

bool ExitReachable(const ReferenceGraph& graph) {
  for (const auto& node : graph.nodes)
    if (node.block->IsExit()) return true;
  return false;
}

// Random programs with labels, forward and backward branches, jumps and
// ends of program in the middle.
std::vector<std::string> RandomProgram(std::mt19937& rng, int length) {
  std::vector<std::string> lines;
  const int labelCount = 1 + length / 4;
  std::vector<int> labelAt(labelCount);
  for (int& position : labelAt) position = std::uniform_int_distribution<int>(0, length - 1)(rng);
  auto pick = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng); };
  for (int i = 0; i < length; ++i) {
    std::string prefix;
    for (int l = 0; l < labelCount; ++l)
      if (labelAt[l] == i) prefix += "L" + std::to_string(l) + " ";
    if (!prefix.empty()) prefix.back() = ':', prefix += ' ';
    // Jumps only to labels that stand first on their line.
    auto firstLabel = [&](int l) {
      for (int k = 0; k < labelCount; ++k)
        if (labelAt[k] == labelAt[l]) return k;
      return l;
    };
    std::string text;
    switch (pick(6)) {
      case 0:
        text = "s_cbranch_scc0 label_L" + std::to_string(pick(labelCount));
        break;
      case 1:
        text = "s_branch label_L" + std::to_string(firstLabel(pick(labelCount)));
        break;
      case 2:
        text = pick(3) == 0 ? "s_endpgm"
                            : "v_add_f32 v" + std::to_string(pick(8)) + ", v" +
                                  std::to_string(pick(8)) + ", v" + std::to_string(pick(8));
        break;
      default:
        text = "v_mov_b32 v" + std::to_string(pick(8)) + ", v" + std::to_string(pick(8));
    }
    lines.push_back(prefix + text);
  }
  lines.push_back("s_endpgm");
  return lines;
}

TEST(PerInvocationCfgTest, LoweringMatchesRecursiveOrderOnRandomPrograms) {
  std::mt19937 rng(12345);
  int checked = 0;
  for (int round = 0; round < 400; ++round) {
    const std::vector<std::string> lines = RandomProgram(rng, 1 + round % 40);
    const std::vector<Invocation> program = test::MakeProgram(lines);
    const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
    ReferenceGraph reference;
    reference.Lower(blocks.front().get());
    if (!ExitReachable(reference)) {
      EXPECT_THROW(PerInvocationCfg(blocks.front().get(), VGPR), AnalysisError);
      continue;
    }
    const PerInvocationCfg cfg(blocks.front().get(), VGPR);
    ASSERT_EQ(Describe(cfg), Describe(reference)) << "round " << round;
    // Predecessor lists are the mirror of the successor links, in link order.
    for (const auto& node : cfg.GetNodes()) {
      for (const PerInvocationCfgNode* predecessor : node->GetPredecessors()) {
        const auto& successors = predecessor->GetSuccessors();
        EXPECT_NE(std::find(successors.begin(), successors.end(), node.get()), successors.end());
      }
    }
    ++checked;
  }
  EXPECT_GT(checked, 100);
}

TEST(PerInvocationCfgTest, ChainsNodesAndLinksBlocks) {
  const std::vector<Invocation> program = test::MakeProgram(
      {"v_mov_b32 v0, v1", "LOOP: v_add_f32 v0, v0, v1", "s_cbranch_scc0 label_LOOP", "s_endpgm"});
  const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
  const PerInvocationCfg cfg(blocks.front().get(), VGPR);
  // entry, v_mov, v_add, s_cbranch, s_endpgm, exit; the loop's back edge
  // goes from the branch to the first node of LOOP.
  EXPECT_EQ(Describe(cfg), (std::vector<std::string>{"0.0->1,", "1.0->2,", "2.0->3,", "2.1->2,4,",
                                                     "3.0->5,", "4.0->"}));
  const PerInvocationCfgNode* entry = cfg.GetNodes().front().get();
  EXPECT_EQ(cfg.GetRoot(), entry);
  EXPECT_EQ(entry->GetInvocation(), nullptr);
  EXPECT_TRUE(entry->Def().IsEmpty() && entry->Use().IsEmpty());
  EXPECT_TRUE(cfg.GetExit()->GetBasicBlock()->IsExit());
  EXPECT_EQ(cfg.GetExit()->GetInvocation(), nullptr);
}

TEST(PerInvocationCfgTest, EndlessLoopIsReported) {
  const std::vector<Invocation> program =
      test::MakeProgram({"v_mov_b32 v0, v1", "L: s_branch label_L", "s_endpgm"});
  const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
  try {
    PerInvocationCfg cfg(blocks.front().get(), VGPR);
    FAIL() << "no error for an endless loop";
  } catch (const AnalysisError& error) {
    EXPECT_NE(std::string(error.what()).find("unreachable"), std::string::npos);
  }
}

TEST(PerInvocationCfgTest, GatherDepthFirstExploresLastNeighbourFirst) {
  // Diamond: entry -> A(branch) -> {C, B}; B -> C; C -> exit.
  const std::vector<Invocation> program =
      test::MakeProgram({"A: s_cbranch_scc0 label_C", "B: v_mov_b32 v0, v1", "C: s_endpgm"});
  const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
  const PerInvocationCfg cfg(blocks.front().get(), VGPR);
  auto labels = [](const std::vector<PerInvocationCfgNode*>& nodes) {
    std::string text;
    for (const PerInvocationCfgNode* node : nodes) text += node->GetBasicBlock()->GetLabel() + " ";
    return text;
  };
  EXPECT_EQ(labels(GatherDepthFirst(cfg.GetRoot(), GatherOrder::Forward)), "entry A B C exit ");
  // C's predecessors are A (branch edge) then B (fall-through): B first.
  EXPECT_EQ(labels(GatherDepthFirst(cfg.GetExit(), GatherOrder::Backward)), "exit C B A entry ");
  const PerInvocationCfgNode* constExit = cfg.GetExit();
  EXPECT_EQ(GatherDepthFirst(constExit, GatherOrder::Backward).size(), 5u);
}

TEST(PerInvocationCfgTest, NodeIndexFindsPositions) {
  std::vector<std::unique_ptr<PerInvocationCfgNode>> owned;
  std::vector<const PerInvocationCfgNode*> listed;
  for (int i = 0; i < 5000; ++i) {
    owned.push_back(PerInvocationCfgNode::Create(nullptr, nullptr, i, VGPR));
    if (i % 2 == 0) listed.push_back(owned.back().get());
  }
  const PerInvocationCfgNodeIndex index(listed);
  EXPECT_EQ(index.Size(), 2500);
  for (int i = 0; i < 5000; ++i) {
    EXPECT_EQ(index.Find(owned[i].get()), i % 2 == 0 ? i / 2 : -1) << i;
  }
  EXPECT_EQ(PerInvocationCfgNodeIndex({}).Find(owned[0].get()), -1);
}

struct LivenessCase {
  const char* name;
  std::vector<std::string> program;
  // Live-in set of each instruction node, in program order.
  std::vector<Set> in;
};

const LivenessCase kLivenessCases[] = {
    {"read-modify-write operand is used and defined",
     {"v_mac_f32 v0, v1, v2", "s_endpgm"},
     {{0, 1, 2}, {}}},
    {"a write ends liveness above it",
     {"v_mov_b32 v0, v1", "v_add_f32 v2, v0, v3", "s_endpgm"},
     {{1, 3}, {0, 3}, {}}},
    {"both branch arms contribute",
     {"s_cbranch_scc0 label_ELSE", "v_mov_b32 v2, v0", "s_branch label_END",
      "ELSE: v_mov_b32 v2, v1", "END: v_mov_b32 v3, v2", "s_endpgm"},
     {{0, 1}, {0}, {2}, {1}, {2}, {}}},
    {"a value used across the back edge stays live in the loop",
     {"v_mov_b32 v0, v5", "LOOP: v_add_f32 v1, v0, v1", "s_cbranch_scc0 label_LOOP",
      "v_mov_b32 v2, v1", "s_endpgm"},
     {{1, 5}, {0, 1}, {0, 1}, {1}, {}}},
};

TEST(PerInvocationCfgTest, SolvesBackwardLiveness) {
  for (const LivenessCase& c : kLivenessCases) {
    SCOPED_TRACE(c.name);
    const std::vector<Invocation> program = test::MakeProgram(c.program);
    const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
    const PerInvocationCfg cfg(blocks.front().get(), VGPR);
    std::map<const Invocation*, const PerInvocationCfgNode*> byInvocation;
    for (const auto& node : cfg.GetNodes())
      if (node->GetInvocation()) byInvocation[node->GetInvocation()] = node.get();
    ASSERT_EQ(byInvocation.size(), c.in.size());
    for (size_t i = 0; i < program.size(); ++i) {
      const PerInvocationCfgNode* node = byInvocation.at(&program[i]);
      EXPECT_EQ(node->In(), c.in[i]) << "line " << i;
      // out = union of the successors' in.
      Set out;
      for (const PerInvocationCfgNode* successor : node->GetSuccessors()) out |= successor->In();
      EXPECT_EQ(node->Out(), out) << "line " << i;
    }
  }
}

TEST(PerInvocationCfgTest, ScalarClassTracksOnlyScalarRegisters) {
  const std::vector<Invocation> program = test::MakeProgram({"v_add_f32 v1, s4, v2", "s_endpgm"});
  const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
  const PerInvocationCfg scalar(blocks.front().get(), SGPR);
  EXPECT_EQ(scalar.GetRoot()->Out(), (Set{4}));
  const PerInvocationCfg vector(blocks.front().get(), VGPR);
  EXPECT_EQ(vector.GetRoot()->Out(), (Set{2}));
}

// Runs `work` on a thread with a deliberately small stack, so that lowering
// or walking the graph by recursion over blocks would overflow it.
template <typename Work>
void RunOnSmallStack(Work work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 256 * 1024);
  pthread_t thread;
  auto trampoline = [](void* argument) -> void* {
    (*static_cast<Work*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, trampoline, &work), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(PerInvocationCfgTest, LongBlockChainDoesNotExhaustTheStack) {
  // Every line labelled: 100 000 blocks falling through one into the next,
  // each reading the register the previous one wrote.
  std::vector<std::string> lines;
  const int count = 100000;
  for (int i = 0; i < count; ++i) {
    lines.push_back("B" + std::to_string(i) + ": v_mov_b32 v" + std::to_string((i + 1) % 200) +
                    ", v" + std::to_string(i % 200));
  }
  lines.push_back("s_endpgm");
  const std::vector<Invocation> program = test::MakeProgram(lines);
  const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
  size_t nodeCount = 0;
  size_t gathered = 0;
  Set rootOut;
  RunOnSmallStack([&] {
    const PerInvocationCfg cfg(blocks.front().get(), VGPR);
    nodeCount = cfg.GetNodes().size();
    gathered = GatherDepthFirst(cfg.GetRoot(), GatherOrder::Forward).size();
    rootOut = cfg.GetRoot()->Out();
  });
  EXPECT_EQ(nodeCount, static_cast<size_t>(count) + 3);
  EXPECT_EQ(gathered, nodeCount);
  EXPECT_EQ(rootOut, (Set{0}));
}

}  // namespace
}  // namespace vesk
