// Writes the basic-block or per-instruction control-flow graph as a Graphviz
// dot digraph. Labels and instruction texts are written as they are.
#include "app/cfg_dumper.h"

#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using vesk::BasicBlock;

CFGDumper::CFGDumper(std::stringstream& input, std::ostream* output, CFGStyle style_)
    : BaseVeskAppTask(input, output), style(style_) {}

std::ostream& CFGDumper::WriteBlockContent(const BasicBlock* block) {
  return WriteBlockContent(block, style == CompactBasicBlocks);
}

std::ostream& CFGDumper::WriteBlockContent(const BasicBlock* block, bool compact) {
  std::ostream& out = *output;
  if (compact) {
    out << block->GetInvocations().size() << " instructions\\l";
    return out;
  }
  // "\l" ends a left-justified line inside a dot label.
  for (const vesk::Invocation* invocation : block->GetInvocations()) {
    out << invocation->ToString(false, false) << "\\l";
  }
  return out;
}

bool CFGDumper::InvokeImpl() {
  // The blocks are built before anything is written, so that a listing the
  // block builder rejects leaves no partial graph behind.
  const vesk::BasicBlockList blocks = vesk::CreateBasicBlocksFromInvocations(invocations);
  // The graph is written to memory and handed to the report stream in large
  // pieces; WriteBlockContent writes through `output`, so it points at the
  // buffer meanwhile.
  std::ostream* const destination = output;
  std::ostringstream buffer;
  output = &buffer;
  const auto flushLarge = [&](bool last) {
    if (!last && buffer.tellp() < (std::streamoff{1} << 20)) return;
    const std::string text = std::move(buffer).str();
    destination->write(text.data(), static_cast<std::streamsize>(text.size()));
    buffer.str(std::string());
  };
  std::ostream& out = buffer;
  out << "digraph {\n";
  out << "node [shape=box]\n";

  // Edges between blocks are written after all nodes: (source node, target
  // block label). The target's node is "n_<label>" in every style, since a
  // block's first instruction node carries the block's own name.
  std::vector<std::pair<std::string, std::string>> pendingEdges;

  for (const auto& blockPointer : blocks) {
    const BasicBlock* block = blockPointer.get();
    std::string exitNode;
    if (!block->IsEntry() && !block->IsExit() && style == PerInstruction && !block->IsEmpty()) {
      const std::vector<const vesk::Invocation*>& blockInvocations = block->GetInvocations();
      std::string name = "n_" + block->GetLabel();
      std::string previous;
      for (size_t i = 0; i < blockInvocations.size(); ++i) {
        out << '"' << name << "\" [label=\"" << blockInvocations[i]->ToString() << "\"]\n";
        if (!previous.empty()) out << '"' << previous << "\":s -> \"" << name << "\";\n";
        previous = name;
        if (i + 1 < blockInvocations.size()) {
          // The record's address keeps the names unique within one run.
          name = "n_pi_" + block->GetLabel() + "_" +
                 std::to_string(reinterpret_cast<std::uintptr_t>(blockInvocations[i + 1]));
        }
      }
      exitNode = previous;
    } else {
      const std::string shape = block->IsEntry() || block->IsExit() ? "style=rounded" : "";
      exitNode = "n_" + block->GetLabel();
      out << '"' << exitNode << "\" [ label= \"" << block->GetLabel() << '\n';
      WriteBlockContent(block);
      out << "\" " << shape << "]\n";
    }
    for (const BasicBlock* successor : block->GetSuccessors()) {
      pendingEdges.emplace_back(exitNode, successor->GetLabel());
    }
    flushLarge(false);
  }

  for (const auto& [source, target] : pendingEdges) {
    out << '"' << source << "\":s -> \"n_" << target << "\";\n";
    flushLarge(false);
  }
  out << "}\n";
  flushLarge(true);
  output = destination;
  return true;
}
