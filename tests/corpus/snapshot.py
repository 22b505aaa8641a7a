#!/usr/bin/env python3
"""Writes every report of every analysis over the corpus (and any extra listings) into a folder,
so that two builds can be compared with `diff -r` before and after a change.

Usage: snapshot.py PROGRAM OUT_DIR [LISTING_DIR ...]
Each run leaves OUT_DIR/<listing path>/<analysis>.out holding the exit status, standard error
and the report. Listing folders default to the corpus next to this script and tests/cli.
"""
import concurrent.futures
import os
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
GENERATIONS = {"gfx10": "gfx10", "gfx9": "gfx9", "gfx8": "gfx8", "gfx6": "gfx7"}
ANALYSES = {
    "histogram": ["opcode-histogram"],
    "histogram-size": ["opcode-histogram", "-g", "operand-size"],
    "liveness": ["analyse-liveness"],
    "liveness-s": ["analyse-liveness", "-s"],
    "liveness-r": ["analyse-liveness", "-r"],
    "bb-cfg": ["dump-bb-cfg"],
    "bb-cfg-c": ["dump-bb-cfg", "-c"],
    "pi-cfg": ["dump-pi-cfg"],
    "stall": ["stall-cycles"],
    "stall-g": ["stall-cycles", "-g"],
    "stall-64": ["stall-cycles", "-w", "64"],
}


def listings(folders):
    for folder in folders:
        for root, _, names in os.walk(folder):
            for name in sorted(names):
                if name.endswith((".isa", ".s", ".txt", ".asm")) or name.startswith("input"):
                    yield os.path.join(root, name)


def generation(path):
    for part, isa in GENERATIONS.items():
        if f"/{part}/" in path:
            return isa
    return "gfx10"


def run(program, out_dir, listing):
    target = os.path.join(out_dir, os.path.relpath(listing, "/").replace(os.sep, "_"))
    os.makedirs(target, exist_ok=True)
    for name, analysis in ANALYSES.items():
        command = [program, "--isa", generation(listing), *analysis, listing, "-"]
        try:
            proc = subprocess.run(command, capture_output=True, timeout=120)
            text = b"status %d\n--- stderr\n%s--- report\n%s" % (proc.returncode, proc.stderr,
                                                                 proc.stdout)
        except subprocess.TimeoutExpired:
            text = b"timeout\n"
        with open(os.path.join(target, name + ".out"), "wb") as out:
            out.write(text)


def main() -> int:
    program, out_dir = os.path.abspath(sys.argv[1]), sys.argv[2]
    folders = sys.argv[3:] or [HERE, os.path.join(HERE, "..", "cli")]
    paths = sorted(set(os.path.abspath(p) for p in listings(folders)))
    with concurrent.futures.ThreadPoolExecutor(max_workers=os.cpu_count() or 2) as pool:
        list(pool.map(lambda p: run(program, out_dir, p), paths))
    print(f"{len(paths)} listings written to {out_dir}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
