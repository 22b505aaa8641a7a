// The per-instruction graph: lowering order, links, depth-first orders and
// liveness sets against the plain recursive and node-by-node formulations.
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
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

// The recursive lowering and the node-by-node liveness fixpoint written out
// plainly; the graph's explicit-stack lowering and block-level solve must
// give exactly these nodes, links, orders and sets.
struct ReferenceGraph {
  struct Node {
    const BasicBlock* block;
    int order;
    const Invocation* invocation;
    std::vector<int> successors;
    std::vector<int> predecessors;
    Set in;
    Set out;
  };
  std::vector<Node> nodes;
  std::unordered_map<const BasicBlock*, std::pair<int, int>> byBlock;  // first, last

  void Link(int from, int to) {
    nodes[from].successors.push_back(to);
    nodes[to].predecessors.push_back(from);
  }

  void Lower(const BasicBlock* block) {
    if (byBlock.count(block)) return;
    const int first = static_cast<int>(nodes.size());
    const auto& invocations = block->GetInvocations();
    const int count = std::max<int>(1, static_cast<int>(invocations.size()));
    for (int i = 0; i < count; ++i) {
      nodes.push_back({block, i, invocations.empty() ? nullptr : invocations[i], {}, {}, {}, {}});
      if (i > 0) Link(static_cast<int>(nodes.size()) - 2, static_cast<int>(nodes.size()) - 1);
    }
    byBlock[block] = {first, static_cast<int>(nodes.size()) - 1};
    for (const BasicBlock* successor : block->GetSuccessors()) {
      Lower(successor);
      Link(byBlock[block].second, byBlock[successor].first);
    }
  }

  int Exit() const {
    for (int i = 0; i < static_cast<int>(nodes.size()); ++i)
      if (nodes[i].successors.empty()) return i;
    return -1;
  }

  std::vector<int> Backward(int start) const {
    std::vector<int> result;
    std::vector<int> stack{start};
    std::vector<bool> visited(nodes.size());
    while (!stack.empty()) {
      const int node = stack.back();
      stack.pop_back();
      if (visited[node]) continue;
      visited[node] = true;
      result.push_back(node);
      for (int predecessor : nodes[node].predecessors) stack.push_back(predecessor);
    }
    return result;
  }

  // Round-robin passes over the nodes that reach the exit until nothing
  // changes: out = union of the successors' in, in = use | (out - def).
  void Solve(RegisterType type) {
    const std::vector<int> order = Backward(Exit());
    for (bool changed = true; changed;) {
      changed = false;
      for (int i : order) {
        Node& node = nodes[i];
        Set out = node.out;
        for (int successor : node.successors) out |= nodes[successor].in;
        Set in = out;
        if (node.invocation) {
          in = node.invocation->GetUsedOperands(type).GetRead() |
               (out - node.invocation->GetUsedOperands(type).GetWritten());
        }
        changed = changed || in != node.in || out != node.out;
        node.in = in;
        node.out = out;
      }
    }
  }
};

std::string Links(const CfgNodeLinks& links) {
  std::string text;
  for (CfgNodeId node : links) text += std::to_string(node) + ",";
  return text;
}

std::string Links(const std::vector<int>& links) {
  std::string text;
  for (int node : links) text += std::to_string(node) + ",";
  return text;
}

// Node list as (block order, node order, successor numbers).
std::vector<std::string> Describe(const PerInvocationCfg& cfg) {
  std::vector<std::string> lines;
  for (CfgNodeId node = 0; node < cfg.Size(); ++node) {
    lines.push_back(std::to_string(cfg.GetBasicBlock(node)->GetOrder()) + "." +
                    std::to_string(cfg.GetOrder(node)) + "->" + Links(cfg.GetSuccessors(node)));
  }
  return lines;
}

std::vector<std::string> Describe(const ReferenceGraph& graph) {
  std::vector<std::string> lines;
  for (const auto& node : graph.nodes) {
    lines.push_back(std::to_string(node.block->GetOrder()) + "." + std::to_string(node.order) +
                    "->" + Links(node.successors));
  }
  return lines;
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

TEST(PerInvocationCfgTest, MatchesPlainLoweringAndSolveOnRandomPrograms) {
  std::mt19937 rng(12345);
  int checked = 0;
  for (int round = 0; round < 600; ++round) {
    const std::vector<std::string> lines = RandomProgram(rng, 1 + round % 60);
    const std::vector<Invocation> program = test::MakeProgram(lines);
    const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
    ReferenceGraph reference;
    reference.Lower(blocks.front().get());
    if (reference.Exit() < 0) {
      EXPECT_THROW(PerInvocationCfg(blocks.front().get(), VGPR), AnalysisError);
      continue;
    }
    reference.Solve(VGPR);
    const PerInvocationCfg cfg(blocks.front().get(), VGPR);
    SCOPED_TRACE("round " + std::to_string(round));
    ASSERT_EQ(Describe(cfg), Describe(reference));
    EXPECT_EQ(static_cast<int>(cfg.GetExit()), reference.Exit());
    const std::vector<int> backward = reference.Backward(reference.Exit());
    EXPECT_EQ(std::vector<int>(cfg.GetBackwardOrder().begin(), cfg.GetBackwardOrder().end()),
              backward);
    EXPECT_EQ(GatherDepthFirst(cfg, cfg.GetExit(), GatherOrder::Backward), cfg.GetBackwardOrder());
    for (CfgNodeId node = 0; node < cfg.Size(); ++node) {
      const ReferenceGraph::Node& expected = reference.nodes[node];
      EXPECT_EQ(Links(cfg.GetPredecessors(node)), Links(expected.predecessors)) << node;
      EXPECT_EQ(cfg.GetInvocation(node), expected.invocation) << node;
      EXPECT_EQ(cfg.In(node), expected.in) << node;
      EXPECT_EQ(cfg.Out(node), expected.out) << node;
      EXPECT_EQ(cfg.ReachesExit(node), std::find(backward.begin(), backward.end(),
                                                 static_cast<int>(node)) != backward.end())
          << node;
    }
    ++checked;
  }
  EXPECT_GT(checked, 150);
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
  // The back edge is linked while LOOP is being lowered, before the edge
  // into LOOP, which is linked when the recursion returns.
  EXPECT_EQ(Links(cfg.GetPredecessors(2)), "3,1,");
  EXPECT_EQ(cfg.GetRoot(), 0u);
  EXPECT_EQ(cfg.GetInvocation(0), nullptr);
  EXPECT_TRUE(cfg.Def(0).IsEmpty() && cfg.Use(0).IsEmpty());
  EXPECT_TRUE(cfg.GetBasicBlock(cfg.GetExit())->IsExit());
  EXPECT_EQ(cfg.GetInvocation(cfg.GetExit()), nullptr);
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
  auto labels = [&cfg](const std::vector<CfgNodeId>& nodes) {
    std::string text;
    for (CfgNodeId node : nodes) text += cfg.GetBasicBlock(node)->GetLabel() + " ";
    return text;
  };
  EXPECT_EQ(labels(GatherDepthFirst(cfg, cfg.GetRoot(), GatherOrder::Forward)),
            "entry A B C exit ");
  // C's predecessors are A (branch edge) then B (fall-through): B first.
  EXPECT_EQ(labels(GatherDepthFirst(cfg, cfg.GetExit(), GatherOrder::Backward)),
            "exit C B A entry ");
  EXPECT_TRUE(
      GatherDepthFirst(cfg, static_cast<CfgNodeId>(cfg.Size()), GatherOrder::Forward).empty());
}

// Blocks made by hand need not carry distinct orders; the graph must keep
// them apart all the same.
TEST(PerInvocationCfgTest, HandMadeBlocksWithAnyOrders) {
  const std::vector<Invocation> program =
      test::MakeProgram({"v_mov_b32 v0, v1", "v_mov_b32 v2, v0", "s_endpgm"});
  const struct {
    const char* name;
    int orders[4];  // entry, two instruction blocks, exit
  } cases[] = {
      {"distinct", {0, 1, 2, 3}},
      {"all equal", {0, 0, 0, 0}},
      {"negative and huge", {-1, 1 << 30, -1, 7}},
      {"reused out of sequence", {5, 2, 5, 2}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    BasicBlockList blocks;
    blocks.push_back(BasicBlock::CreateBasicBlock("entry", {}, c.orders[0]));
    blocks.push_back(BasicBlock::CreateBasicBlock("a", {&program[0]}, c.orders[1]));
    blocks.push_back(BasicBlock::CreateBasicBlock("b", {&program[1], &program[2]}, c.orders[2]));
    blocks.push_back(BasicBlock::CreateBasicBlock("exit", {}, c.orders[3]));
    for (size_t i = 0; i + 1 < blocks.size(); ++i)
      BasicBlock::Link(blocks[i].get(), blocks[i + 1].get());
    BasicBlock::Link(blocks[2].get(), blocks[1].get());  // b loops back to a
    const PerInvocationCfg cfg(blocks.front().get(), VGPR);
    ASSERT_EQ(cfg.Size(), 5u);
    std::string labels;
    for (CfgNodeId node = 0; node < cfg.Size(); ++node)
      labels += cfg.GetBasicBlock(node)->GetLabel() + ":" + Links(cfg.GetSuccessors(node)) + " ";
    EXPECT_EQ(labels, "entry:1, a:2, b:3, b:4,1, exit: ");
    EXPECT_EQ(cfg.In(1), (Set{1}));
    EXPECT_EQ(cfg.Out(3), (Set{1}));
  }
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
    std::map<const Invocation*, CfgNodeId> byInvocation;
    for (CfgNodeId node = 0; node < cfg.Size(); ++node)
      if (cfg.GetInvocation(node)) byInvocation[cfg.GetInvocation(node)] = node;
    ASSERT_EQ(byInvocation.size(), c.in.size());
    for (size_t i = 0; i < program.size(); ++i) {
      const CfgNodeId node = byInvocation.at(&program[i]);
      EXPECT_EQ(cfg.In(node), c.in[i]) << "line " << i;
      // out = union of the successors' in.
      Set out;
      for (CfgNodeId successor : cfg.GetSuccessors(node)) out |= cfg.In(successor);
      EXPECT_EQ(cfg.Out(node), out) << "line " << i;
    }
  }
}

TEST(PerInvocationCfgTest, ScalarClassTracksOnlyScalarRegisters) {
  const std::vector<Invocation> program = test::MakeProgram({"v_add_f32 v1, s4, v2", "s_endpgm"});
  const BasicBlockList blocks = CreateBasicBlocksFromInvocations(program);
  const PerInvocationCfg scalar(blocks.front().get(), SGPR);
  EXPECT_EQ(scalar.Out(scalar.GetRoot()), (Set{4}));
  const PerInvocationCfg vector(blocks.front().get(), VGPR);
  EXPECT_EQ(vector.Out(vector.GetRoot()), (Set{2}));
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
    nodeCount = cfg.Size();
    gathered = GatherDepthFirst(cfg, cfg.GetRoot(), GatherOrder::Forward).size();
    rootOut = cfg.Out(cfg.GetRoot());
  });
  EXPECT_EQ(nodeCount, static_cast<size_t>(count) + 3);
  EXPECT_EQ(gathered, nodeCount);
  EXPECT_EQ(rootOut, (Set{0}));
}

}  // namespace
}  // namespace vesk
