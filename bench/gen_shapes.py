#!/usr/bin/env python3
"""Writes raw GFX10 listings of the program shapes that stress one part of the analyses.

Shapes (each has about --instructions instruction lines and ends in s_endpgm):
  back-chain     two-instruction blocks, each ending in a conditional branch back to the
                 block before it: every block is a loop header, nested as deep as the program
                 is long; one register read in the first block only is live around all of them
                 and unwaited loads stay in flight around them, which makes round-robin
                 fixpoints quadratic or worse
  tiny-inflight  three-instruction blocks that each start a load and leave it in flight into
                 the next block, with forward branches that merge two paths at every block:
                 block-boundary states always carry memory operations
  one-block-loads one block whose loads (half the program) are each waited for 24 loads later
  straight       straight-line arithmetic, memory and waits, written in the subset that both
                 this tool's raw reader and LLVM's AMDGPU assembler accept (for llvm-mca)

usage: gen_shapes.py SHAPE [--instructions N] [-o FILE]
"""
import argparse
import sys


def back_chain(n):
    lines = []
    blocks = max(2, n // 2)
    for b in range(blocks):
        lines.append(f"label_{b:06d}:")
        if b == 0:
            # v40 is read here only and written nowhere: it is live around every back edge.
            lines.append("  v_add_f32 v1, v40, v1")
        elif b % 2:
            # Loads that nothing waits for stay in flight around the back edges.
            lines.append(f"  buffer_load_dword v{64 + b % 16}, v0, s[4:7], 0 offen")
        else:
            lines.append(f"  v_add_f32 v{b % 32}, v{(b + 1) % 32}, v{(b + 2) % 32}")
        if b == blocks - 1:
            lines.append("  s_endpgm")
        elif b == 0:
            lines.append("  s_add_u32 s8, s8, 1")
        else:
            lines.append(f"  s_cbranch_scc0 label_{b - 1:06d}")
    return lines


def tiny_inflight(n):
    lines = []
    blocks = max(3, n // 3)
    for b in range(blocks):
        lines.append(f"label_{b:06d}:")
        # Waiting down to one leaves the previous block's load in flight into this one.
        lines.append("  s_waitcnt vmcnt(1)")
        lines.append(f"  buffer_load_dword v{64 + b % 16}, v0, s[4:7], 0 offen")
        if b == blocks - 1:
            lines.append("  s_endpgm")
        elif b + 2 < blocks and b % 2 == 0:
            lines.append(f"  s_cbranch_scc0 label_{b + 2:06d}")
        else:
            lines.append(f"  v_add_f32 v{b % 32}, v{(b + 3) % 32}, v{(b + 1) % 32}")
    return lines


def one_block_loads(n):
    lines = ["label_000000:"]
    loads = 0
    while len(lines) < n:
        lines.append(f"  buffer_load_dword v{64 + loads % 32}, v0, s[4:7], 0 offen")
        loads += 1
        if loads > 24:
            lines.append("  s_waitcnt vmcnt(24)")
            lines.append(f"  v_add_f32 v1, v{64 + (loads - 25) % 32}, v1")
    lines.append("  s_endpgm")
    return lines


STRAIGHT = [
    "v_add_f32 v1, v2, v3",
    "v_mul_f32 v4, v1, v3",
    "s_add_u32 s8, s9, 4",
    "global_load_dword v5, v[2:3], off",
    "v_fma_f32 v6, v4, v4, v1",
    "s_load_dword s10, s[0:1], 0x10",
    "ds_read_b32 v9, v1",
    "v_mov_b32 v10, v6",
    "s_waitcnt vmcnt(0)",
    "s_waitcnt lgkmcnt(0)",
    "v_exp_f32 v8, v5",
    "v_add_f32 v11, v9, v8",
    "global_load_dword v7, v[4:5], off",
    "s_mul_i32 s11, s10, s8",
    "s_waitcnt vmcnt(0)",
    "v_mul_f32 v12, v7, v11",
]


def straight(n):
    lines = [STRAIGHT[i % len(STRAIGHT)] for i in range(n - 1)]
    return lines + ["s_endpgm"]


SHAPES = {"back-chain": back_chain, "tiny-inflight": tiny_inflight,
          "one-block-loads": one_block_loads, "straight": straight}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("shape", choices=sorted(SHAPES))
    parser.add_argument("--instructions", type=int, default=100000)
    parser.add_argument("-o", "--output", default="-")
    args = parser.parse_args()
    text = "\n".join(SHAPES[args.shape](args.instructions)) + "\n"
    if args.output == "-":
        sys.stdout.write(text)
    else:
        with open(args.output, "w") as f:
            f.write(text)


if __name__ == "__main__":
    main()
