// Whole-program counts for a summary: instructions, basic blocks, branches,
// loops (back edges of the block graph), memory instructions by kind and
// waits. One linear pass over the instructions and one over the block graph.
#pragma once

#include <vector>

#include "cfg/basic_block.h"
#include "isa/invocation.h"

namespace vesk {

// Instructions of one memory family by what they do to memory. Image samples
// and gathers are loads; cache control, resource queries and LDS lane
// shuffles (swizzle, permute) are "other".
struct MemoryAccessCounts {
  int loads = 0;
  int stores = 0;
  int atomics = 0;
  int other = 0;
  int Total() const { return loads + stores + atomics + other; }
  bool operator==(const MemoryAccessCounts&) const = default;
};

// Memory instructions by opcode family (the opcode's name prefix).
struct MemoryStatistics {
  // Vector memory.
  MemoryAccessCounts buffer;   // buffer_, tbuffer_
  MemoryAccessCounts global;   // global_
  MemoryAccessCounts flat;     // flat_
  MemoryAccessCounts scratch;  // scratch_
  MemoryAccessCounts image;    // image_
  // Scalar memory: s_load, s_buffer_load, s_store, s_atomic, s_dcache, s_memtime ...
  MemoryAccessCounts scalar;
  // ds_ instructions that go to the LDS.
  MemoryAccessCounts lds;
  // ds_ instructions with the "gds" operand, GWS and ordered-count ones.
  int gds = 0;
  int exports = 0;  // exp
  int VectorTotal() const {
    return buffer.Total() + global.Total() + flat.Total() + scratch.Total() + image.Total();
  }
  bool operator==(const MemoryStatistics&) const = default;
};

// Wait instructions. A plain s_waitcnt counts once in `total` and once for
// every counter it names; one with a numeric operand (the encoded counter
// fields) counts in `encoded` instead.
struct WaitStatistics {
  int total = 0;  // s_waitcnt and its per-counter forms
  int vmcnt = 0;
  int expcnt = 0;
  int lgkmcnt = 0;
  int vscnt = 0;
  int encoded = 0;
  int depctr = 0;  // s_waitcnt_depctr, not in `total`
  bool operator==(const WaitStatistics&) const = default;
};

struct ProgramStatistics {
  int instructions = 0;
  // Instructions whose opcode is not in the generation's table (a listing
  // for another generation, or text that is no instruction); their registers
  // and timing are unknown.
  int unknownOpcodes = 0;
  // Blocks holding at least one instruction: the empty "entry" and "exit"
  // blocks that every block graph has are not counted.
  int basicBlocks = 0;
  int conditionalBranches = 0;  // s_cbranch_*
  int jumps = 0;                // s_branch
  // Loops: edges of the block graph that go back to a block still on the
  // path of a depth-first walk from the entry (each source-target pair
  // once), and the distinct blocks they go to. Blocks that cannot be reached
  // from the entry add none.
  int backEdges = 0;
  int loopHeaders = 0;
  MemoryStatistics memory;
  WaitStatistics waits;
};

// Counts over a program and its block graph (as CreateBasicBlocksFromInvocations
// builds it from the same invocations).
ProgramStatistics ComputeProgramStatistics(const std::vector<Invocation>& invocations,
                                           const BasicBlockList& blocks);

// The back edges of a block graph, found by an iterative depth-first walk
// from blocks[0] (no recursion: graphs can hold 100k blocks).
struct BackEdgeCount {
  int backEdges = 0;
  int loopHeaders = 0;
};
BackEdgeCount CountBackEdges(const BasicBlockList& blocks);

// Adds one instruction to the memory and wait counts.
void CountMemoryAndWaits(const Invocation& invocation, MemoryStatistics& memory,
                         WaitStatistics& waits);

}  // namespace vesk
