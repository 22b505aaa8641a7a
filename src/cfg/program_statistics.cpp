// Whole-program counts: memory and wait instructions classified by opcode
// name prefix, blocks and branches from the block graph, and back edges from
// an iterative depth-first walk.
#include "cfg/program_statistics.h"

#include <cstdint>
#include <string_view>
#include <unordered_map>

namespace vesk {

namespace {

using std::string_view;

bool HasOperand(const Invocation& invocation, string_view word) {
  for (const std::string& arg : invocation.GetArgs())
    if (arg == word) return true;
  for (const std::string& modifier : invocation.GetModifiers())
    if (modifier == word) return true;
  return false;
}

// Vector memory: what follows the family prefix says load, store or atomic;
// cache invalidation and write-back are "other".
void CountVectorMemory(string_view rest, MemoryAccessCounts& counts) {
  if (rest.starts_with("load")) {
    ++counts.loads;
  } else if (rest.starts_with("store")) {
    ++counts.stores;
  } else if (rest.starts_with("atomic")) {
    ++counts.atomics;
  } else {
    ++counts.other;
  }
}

// Image instructions: samples, gathers and loads read memory; resource and
// level-of-detail queries read no memory.
void CountImage(string_view rest, MemoryAccessCounts& counts) {
  if (rest.starts_with("store")) {
    ++counts.stores;
  } else if (rest.starts_with("atomic")) {
    ++counts.atomics;
  } else if (rest.starts_with("get_")) {
    ++counts.other;
  } else {
    ++counts.loads;
  }
}

// Scalar memory instructions; the name after "s_". False when it is not one.
bool CountScalarMemory(string_view rest, MemoryAccessCounts& counts) {
  if (rest.starts_with("buffer_")) rest.remove_prefix(7);
  if (rest.starts_with("scratch_")) rest.remove_prefix(8);
  if (rest.starts_with("load_")) {
    ++counts.loads;
  } else if (rest.starts_with("store_")) {
    ++counts.stores;
  } else if (rest.starts_with("atomic_")) {
    ++counts.atomics;
  } else if (rest.starts_with("dcache_") || rest == "memtime" || rest == "memrealtime" ||
             rest.starts_with("atc_probe") || rest == "gl1_inv" ||
             rest == "get_waveid_in_workgroup") {
    ++counts.other;
  } else {
    return false;
  }
  return true;
}

// LDS instructions (the name after "ds_"). Everything that neither only
// reads nor only writes is a read-modify-write of LDS memory, except the
// lane shuffles, which go through the LDS hardware without touching memory.
void CountLds(string_view rest, MemoryAccessCounts& counts) {
  if (rest.starts_with("read")) {
    ++counts.loads;
  } else if (rest.starts_with("write")) {
    ++counts.stores;
  } else if (rest.starts_with("swizzle") || rest.starts_with("permute") ||
             rest.starts_with("bpermute") || rest == "nop") {
    ++counts.other;
  } else {
    ++counts.atomics;
  }
}

// The counters a plain s_waitcnt names in its operands ("vmcnt(0)",
// "vmcnt(0)&lgkmcnt(0)", "vmcnt(1) lgkmcnt(1)").
void CountWaitOperands(const Invocation& invocation, WaitStatistics& waits) {
  bool vm = false, exp = false, lgkm = false, vs = false;
  auto scan = [&](const std::vector<std::string>& words) {
    for (const std::string& word : words) {
      const string_view text = word;
      vm = vm || text.find("vmcnt(") != string_view::npos;
      exp = exp || text.find("expcnt(") != string_view::npos;
      lgkm = lgkm || text.find("lgkmcnt(") != string_view::npos;
      vs = vs || text.find("vscnt(") != string_view::npos;
    }
  };
  scan(invocation.GetArgs());
  scan(invocation.GetModifiers());
  waits.vmcnt += vm;
  waits.expcnt += exp;
  waits.lgkmcnt += lgkm;
  waits.vscnt += vs;
  if (!vm && !exp && !lgkm && !vs) ++waits.encoded;
}

}  // namespace

void CountMemoryAndWaits(const Invocation& invocation, MemoryStatistics& memory,
                         WaitStatistics& waits) {
  const char* raw = invocation.GetInstruction()->GetName();
  const string_view name = raw ? string_view(raw) : string_view();
  if (name.starts_with("s_")) {
    const string_view rest = name.substr(2);
    if (rest.starts_with("waitcnt")) {
      const string_view form = rest.substr(7);
      if (form == "_depctr") {
        ++waits.depctr;
        return;
      }
      ++waits.total;
      if (form.empty()) {
        CountWaitOperands(invocation, waits);
      } else if (form == "_vmcnt") {
        ++waits.vmcnt;
      } else if (form == "_expcnt") {
        ++waits.expcnt;
      } else if (form == "_lgkmcnt") {
        ++waits.lgkmcnt;
      } else if (form == "_vscnt") {
        ++waits.vscnt;
      }
      return;
    }
    CountScalarMemory(rest, memory.scalar);
  } else if (name.starts_with("ds_")) {
    const string_view rest = name.substr(3);
    if (rest.starts_with("gws_") || rest == "ordered_count" || HasOperand(invocation, "gds")) {
      ++memory.gds;
    } else {
      CountLds(rest, memory.lds);
    }
  } else if (name.starts_with("buffer_")) {
    CountVectorMemory(name.substr(7), memory.buffer);
  } else if (name.starts_with("tbuffer_")) {
    CountVectorMemory(name.substr(8), memory.buffer);
  } else if (name.starts_with("global_")) {
    CountVectorMemory(name.substr(7), memory.global);
  } else if (name.starts_with("flat_")) {
    CountVectorMemory(name.substr(5), memory.flat);
  } else if (name.starts_with("scratch_")) {
    CountVectorMemory(name.substr(8), memory.scratch);
  } else if (name.starts_with("image_")) {
    CountImage(name.substr(6), memory.image);
  } else if (name == "exp" || name.starts_with("exp_")) {
    ++memory.exports;
  }
}

BackEdgeCount CountBackEdges(const BasicBlockList& blocks) {
  BackEdgeCount result;
  if (blocks.empty()) return result;
  // Blocks are indexed by their order in the list; links only join blocks
  // of the same list.
  std::unordered_map<const BasicBlock*, uint32_t> index;
  index.reserve(blocks.size());
  for (uint32_t i = 0; i < blocks.size(); ++i) index.emplace(blocks[i].get(), i);

  enum : uint8_t { kUnvisited = 0, kOnPath = 1, kDone = 2 };
  std::vector<uint8_t> state(blocks.size(), kUnvisited);
  std::vector<uint8_t> isHeader(blocks.size(), 0);
  // (block, next successor to look at): the explicit depth-first path.
  std::vector<std::pair<uint32_t, uint32_t>> path;
  path.emplace_back(0, 0);
  state[0] = kOnPath;
  while (!path.empty()) {
    auto& [block, next] = path.back();
    const std::vector<BasicBlock*>& successors = blocks[block]->GetSuccessors();
    if (next == successors.size()) {
      state[block] = kDone;
      path.pop_back();
      continue;
    }
    const BasicBlock* successor = successors[next];
    // A target linked twice (a branch to the fall-through block) is one edge.
    bool repeated = false;
    for (uint32_t k = 0; k < next && !repeated; ++k) repeated = successors[k] == successor;
    ++next;
    if (repeated) continue;
    const auto found = index.find(successor);
    if (found == index.end()) continue;
    const uint32_t target = found->second;
    if (state[target] == kOnPath) {
      ++result.backEdges;
      if (!isHeader[target]) {
        isHeader[target] = 1;
        ++result.loopHeaders;
      }
    } else if (state[target] == kUnvisited) {
      state[target] = kOnPath;
      path.emplace_back(target, 0);  // invalidates `block` and `next`
    }
  }
  return result;
}

ProgramStatistics ComputeProgramStatistics(const std::vector<Invocation>& invocations,
                                           const BasicBlockList& blocks) {
  ProgramStatistics stats;
  stats.instructions = static_cast<int>(invocations.size());
  for (const Invocation& invocation : invocations) {
    if (invocation.GetInstruction() == &unknownInstruction_) ++stats.unknownOpcodes;
  }
  for (const auto& block : blocks)
    if (!block->IsEmpty()) ++stats.basicBlocks;
  for (const Invocation& invocation : invocations) {
    if (invocation.IsBranch()) ++stats.conditionalBranches;
    if (invocation.IsJump()) ++stats.jumps;
    CountMemoryAndWaits(invocation, stats.memory, stats.waits);
  }
  const BackEdgeCount loops = CountBackEdges(blocks);
  stats.backEdges = loops.backEdges;
  stats.loopHeaders = loops.loopHeaders;
  return stats;
}

}  // namespace vesk
