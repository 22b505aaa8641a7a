#!/usr/bin/env python3
"""Writes a synthetic raw GFX10 listing for timing "stall-cycles".

Unlike gen_listing.py, every loaded register is waited for (s_waitcnt) before
anything reads it, so the stall simulation runs through the whole program
instead of stopping at an unresolvable memory dependency. Loads write
v64..v95 and s40..s63, which the arithmetic reads only after a wait; many
loads stay in flight across block boundaries and around loops. Blocks end in
backward conditional branches (loops), forward branches, jumps or
fall-through; the last instruction is s_endpgm.

usage: gen_stall_listing.py [--instructions N] [--blocks B] [--seed S] [-o FILE]
"""
import os
import random
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from gen_listing import block_sizes, run  # noqa: E402

BRANCHES = ["s_cbranch_scc0", "s_cbranch_scc1", "s_cbranch_vccz", "s_cbranch_vccnz",
            "s_cbranch_execz"]


def body(rng, waited):
    """One non-control instruction; `waited` says whether loaded registers may be read."""
    v = lambda: f"v{rng.randrange(64)}"
    s = lambda: f"s{rng.randrange(8, 40)}"
    src = (lambda: f"v{rng.randrange(64, 96)}") if waited else v
    roll = rng.random()
    if roll < 0.20:
        return f"v_add_f32 {v()}, {src()}, {v()}"
    if roll < 0.34:
        return f"v_mul_f32 {v()}, {v()}, {v()}"
    if roll < 0.44:
        return f"v_fma_f32 {v()}, {v()}, {src()}, {v()}"
    if roll < 0.50:
        return f"v_mov_b32 {v()}, {s()}"
    if roll < 0.54:
        return f"v_cmp_gt_f32 vcc, {v()}, {v()}"
    if roll < 0.57:
        return f"v_cndmask_b32 {v()}, {v()}, {v()}, vcc"
    if roll < 0.60:
        return f"v_exp_f32 {v()}, {v()}"
    if roll < 0.63:
        return f"v_sqrt_f32 {v()}, {v()}"
    if roll < 0.70:
        return f"buffer_load_dword v{rng.randrange(64, 96)}, {v()}, s[4:7], 0 offen"
    if roll < 0.74:
        return f"ds_read_b32 v{rng.randrange(64, 96)}, {v()}"
    if roll < 0.79:
        return f"s_load_dword s{rng.randrange(40, 64)}, s[0:1], 0x{4 * rng.randrange(64):x}"
    if roll < 0.84:
        return f"buffer_store_dword {v()}, {v()}, s[4:7], 0 offen"
    if roll < 0.92:
        return f"s_add_u32 {s()}, {s()}, {rng.randrange(16)}"
    if roll < 0.96:
        return f"s_cmp_lt_u32 {s()}, {s()}"
    return f"s_mov_b32 {s()}, {s()}"


def generate(instructions, blocks, seed):
    rng = random.Random(seed)
    sizes = block_sizes(rng, instructions, blocks)
    blocks = len(sizes)
    lines = []
    for index, size in enumerate(sizes):
        lines.append(f"label_{index:05d}:")
        ending = None
        if index == blocks - 1:
            ending = "s_endpgm"
        elif size >= 2:
            roll = rng.random()
            if roll < 0.30 and index > 0:
                ending = f"{rng.choice(BRANCHES)} label_{rng.randrange(max(0, index - 4), index + 1):05d}"
            elif roll < 0.45:
                ending = f"{rng.choice(BRANCHES)} label_{rng.randrange(index + 1, min(blocks, index + 8)):05d}"
            elif roll < 0.52:
                ending = f"s_branch label_{rng.randrange(index + 1, min(blocks, index + 4)):05d}"
        count = size - (1 if ending else 0)
        waited = False
        for i in range(count):
            # Now and then wait for all memory, after which loaded values may be read.
            if i + 3 <= count and rng.random() < 0.06:
                lines.append("  s_waitcnt vmcnt(0)")
                lines.append("  s_waitcnt lgkmcnt(0)")
                lines.append("  s_waitcnt_vscnt null, 0x0")
                waited = True
                continue
            if waited and lines[-1].startswith("  s_waitcnt_vscnt"):
                pass
            text = body(rng, waited)
            if waited and ("_load" in text or text.startswith("ds_read")):
                # A new load ends the window in which loaded registers are safe.
                waited = False
            lines.append("  " + text)
        if ending:
            lines.append("  " + ending)
    return "\n".join(lines) + "\n"


def main():
    run(generate, __doc__.splitlines()[0])


if __name__ == "__main__":
    main()
