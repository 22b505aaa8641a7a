#!/usr/bin/env python3
"""Writes a synthetic raw GFX10 ISA listing for timing the analyses.

The listing has exactly --instructions instruction lines split into about
--blocks labelled basic blocks. Blocks end in backward conditional branches
(loops, nested up to a few levels), forward conditional branches, forward
jumps or plain fall-through; the body mixes VALU arithmetic on v0..v63,
scalar ALU work, global/buffer/scalar memory loads and s_waitcnt. The last
instruction is s_endpgm, and every loop is left by its branch's
fall-through, so the end of the program is reachable from every block.
The output depends only on the arguments.

usage: gen_listing.py [--instructions N] [--blocks B] [--seed S] [-o FILE]
"""
import argparse
import random
import sys

VGPRS = 64
SCALAR_BRANCHES = ["s_cbranch_scc0", "s_cbranch_scc1", "s_cbranch_vccz", "s_cbranch_vccnz",
                   "s_cbranch_execz"]


def v(rng):
    return f"v{rng.randrange(VGPRS)}"


def body_instruction(rng):
    """One non-control instruction as (opcode, operand text)."""
    roll = rng.random()
    if roll < 0.22:
        return "v_add_f32", f"{v(rng)}, {v(rng)}, {v(rng)}"
    if roll < 0.38:
        return "v_mul_f32", f"{v(rng)}, {v(rng)}, {v(rng)}"
    if roll < 0.50:
        return "v_fma_f32", f"{v(rng)}, {v(rng)}, {v(rng)}, {v(rng)}"
    if roll < 0.58:
        return "v_mov_b32", f"{v(rng)}, {v(rng)}"
    if roll < 0.63:
        return "v_cndmask_b32", f"{v(rng)}, {v(rng)}, {v(rng)}, vcc"
    if roll < 0.70:
        base = rng.randrange(VGPRS - 1)
        return "global_load_dword", f"{v(rng)}, v[{base}:{base + 1}], off"
    if roll < 0.74:
        return "buffer_load_dword", f"{v(rng)}, {v(rng)}, s[4:7], 0 offen"
    if roll < 0.78:
        return "s_load_dword", f"s{rng.randrange(8, 40)}, s[0:1], 0x{4 * rng.randrange(64):x}"
    if roll < 0.88:
        return "s_waitcnt", rng.choice(["vmcnt(0)", "lgkmcnt(0)", "vmcnt(0) lgkmcnt(0)"])
    if roll < 0.95:
        return "s_add_u32", f"s{rng.randrange(8, 40)}, s{rng.randrange(8, 40)}, {rng.randrange(16)}"
    return "s_mov_b32", f"s{rng.randrange(8, 40)}, s{rng.randrange(8, 40)}"


def block_sizes(rng, instructions, blocks):
    """At least one instruction per block, the rest spread at random."""
    blocks = max(1, min(blocks, instructions))
    sizes = [1] * blocks
    for _ in range(instructions - blocks):
        sizes[rng.randrange(blocks)] += 1
    return sizes


def generate(instructions, blocks, seed):
    rng = random.Random(seed)
    sizes = block_sizes(rng, instructions, blocks)
    blocks = len(sizes)

    lines = []
    address = 0

    def emit(opcode, operands=""):
        nonlocal address
        text = f"  {opcode:<18} {operands}".rstrip()
        lines.append(f"{text:<60} // {address:012x}")
        address += 8 if opcode.startswith(("v_fma", "global_", "buffer_", "s_load")) else 4

    for index, size in enumerate(sizes):
        lines.append(f"label_{index:05d}:")
        last = index == blocks - 1
        # The block's final instruction: a control instruction or more body.
        ending = None
        if last:
            ending = ("s_endpgm", "")
        elif size >= 2:
            roll = rng.random()
            if roll < 0.30 and index > 0:
                target = rng.randrange(max(0, index - 6), index + 1)
                ending = (rng.choice(SCALAR_BRANCHES), f"label_{target:05d}")
            elif roll < 0.45:
                target = rng.randrange(index + 1, min(blocks, index + 8))
                ending = (rng.choice(SCALAR_BRANCHES), f"label_{target:05d}")
            elif roll < 0.52:
                target = rng.randrange(index + 1, min(blocks, index + 4))
                ending = ("s_branch", f"label_{target:05d}")
        body = size - (1 if ending else 0)
        for _ in range(body):
            emit(*body_instruction(rng))
        if ending:
            emit(*ending)
    return "\n".join(lines) + "\n"


def run(generate_listing, description):
    """Command line shared by the listing generators: sizes, seed and output file."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--instructions", type=int, default=100000)
    parser.add_argument("--blocks", type=int, default=None,
                        help="number of blocks (default: instructions / 20)")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("-o", "--output", default="-")
    args = parser.parse_args()
    blocks = args.blocks if args.blocks is not None else max(1, args.instructions // 20)
    text = generate_listing(args.instructions, blocks, args.seed)
    if args.output == "-":
        sys.stdout.write(text)
    else:
        with open(args.output, "w") as f:
            f.write(text)


def main():
    run(generate, __doc__.splitlines()[0])


if __name__ == "__main__":
    main()
