#!/usr/bin/env python3
"""Times the analyses on generated large listings: median wall time and peak memory.

usage: run_bench.py PROGRAM [--runs N] [--instructions N] [--blocks B] [--workdir DIR]
Each analysis runs N times on the same listing; the report gives the median and the range of
the wall times and the largest peak resident set size of the runs. Figures are measured, never
asserted: this is not a test.
"""
import argparse
import os
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))

# (name, subcommand words, generator). The stall simulation needs a listing that waits for
# every load before reading its result; the others take the general one.
ANALYSES = [
    ("opcode-histogram", ["opcode-histogram"], "gen_listing.py"),
    ("analyse-liveness", ["analyse-liveness"], "gen_listing.py"),
    ("dump-bb-cfg", ["dump-bb-cfg"], "gen_listing.py"),
    ("dump-pi-cfg", ["dump-pi-cfg"], "gen_listing.py"),
    ("stall-cycles", ["stall-cycles"], "gen_stall_listing.py"),
]


def run_once(command):
    """Wall seconds and peak RSS in MiB of one run, its output discarded."""
    start = time.perf_counter()
    with open(os.devnull, "wb") as devnull:
        proc = subprocess.Popen(command, stdout=devnull, stderr=subprocess.PIPE)
        _, status, usage = os.wait4(proc.pid, 0)
    elapsed = time.perf_counter() - start
    code = os.waitstatus_to_exitcode(status)
    if code != 0:
        sys.exit(f"failed with status {code}: {' '.join(command)}\n{proc.stderr.read().decode()}")
    return elapsed, usage.ru_maxrss / 1024.0


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--instructions", type=int, default=100000)
    parser.add_argument("--blocks", type=int, default=5000)
    parser.add_argument("--workdir", default=os.path.join(tempfile.gettempdir(), "vesk-bench"))
    parser.add_argument("--only", action="append", help="run only these analyses")
    args = parser.parse_args()

    os.makedirs(args.workdir, exist_ok=True)
    listings = {}

    def listing_for(generator):
        if generator not in listings:
            path = os.path.join(args.workdir, f"{generator[:-3]}-{args.instructions}-{args.blocks}.isa")
            subprocess.run([sys.executable, os.path.join(HERE, generator),
                            "--instructions", str(args.instructions), "--blocks", str(args.blocks),
                            "--seed", "1", "-o", path], check=True)
            listings[generator] = path
        return listings[generator]

    print(f"generated listings: {args.instructions} instructions, ~{args.blocks} blocks, "
          f"{args.runs} runs each")
    print(f"{'analysis':<18} {'median s':>9} {'min s':>8} {'max s':>8} {'peak MiB':>9}")
    for name, words, generator in ANALYSES:
        if args.only and name not in args.only:
            continue
        listing = listing_for(generator)
        command = [args.program, "--isa", "gfx10", *words, listing, "-"]
        runs = [run_once(command) for _ in range(args.runs)]
        times = [t for t, _ in runs]
        peak = max(m for _, m in runs)
        print(f"{name:<18} {statistics.median(times):9.3f} {min(times):8.3f} {max(times):8.3f} "
              f"{peak:9.1f}", flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
