#!/usr/bin/env python3
"""Times the analyses on every program shape, the 1M-instruction listing and against llvm-mca.

usage: run_shapes.py PROGRAM [--runs N] [--instructions N] [--timeout S] [--workdir DIR]
                     [--analyses A,B,...] [--reference PROGRAM]
One table: each case's median wall time and largest peak RSS over N runs, and its ratio to the
reference the goals name: the text floor (wc -l plus an awk pass splitting every line into
fields) for the ordinary listing, the ordinary listing's time for the other shapes, the 100k
time for the 1M listing, and llvm-mca-19 for the straight-line program. A run longer than the
time-out is shown as such and not repeated. Figures are measured, never asserted.

--analyses limits the table to some subcommands. --reference times a second build in the same
run, its runs alternating with PROGRAM's, and adds its time and memory and the ratio of the two,
which is what to compare on a busy machine.
"""
import argparse
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))


def run_once(command, timeout):
    """Wall seconds and peak RSS in MiB of one run, or None past the time-out."""
    start = time.perf_counter()
    with open(os.devnull, "wb") as devnull:
        proc = subprocess.Popen(command, stdout=devnull, stderr=devnull)
        while True:
            pid, status, usage = os.wait4(proc.pid, os.WNOHANG)
            if pid:
                break
            if time.perf_counter() - start > timeout:
                proc.kill()
                proc.wait()
                return None
            time.sleep(0.002)
    elapsed = time.perf_counter() - start
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"failed with status {os.waitstatus_to_exitcode(status)}: {' '.join(command)}")
    return elapsed, usage.ru_maxrss / 1024.0


def timed(command, runs, timeout):
    """(median seconds, peak MiB) over the runs, or None when a run exceeds the time-out."""
    return timed_pair(command, None, runs, timeout)[0]


def timed_pair(command, other, runs, timeout):
    """timed() of two commands, their runs alternating so both see the same load."""
    results = {0: [], 1: []}
    commands = [command] if other is None else [command, other]
    for _ in range(runs):
        for which, cmd in enumerate(commands):
            if results[which] is None:
                continue
            result = run_once(cmd, timeout)
            results[which] = None if result is None else results[which] + [result]
    summary = [None, None]
    for which in range(len(commands)):
        if results[which]:
            summary[which] = (statistics.median(t for t, _ in results[which]),
                              max(m for _, m in results[which]))
    return summary


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--instructions", type=int, default=100000)
    parser.add_argument("--timeout", type=float, default=120)
    parser.add_argument("--workdir", default=os.path.join(tempfile.gettempdir(), "vesk-shapes"))
    parser.add_argument("--analyses", default="opcode-histogram,analyse-liveness,dump-pi-cfg,"
                        "stall-cycles")
    parser.add_argument("--reference")
    args = parser.parse_args()
    chosen = args.analyses.split(",")
    os.makedirs(args.workdir, exist_ok=True)
    n, big = args.instructions, args.instructions * 10

    def listing(generator, *words, count=n):
        path = os.path.join(args.workdir, f"{'-'.join([generator[:-3], *words])}-{count}.isa")
        if not os.path.exists(path):
            subprocess.run([sys.executable, os.path.join(HERE, generator), *words,
                            "--instructions", str(count), "-o", path], check=True)
        return path

    references = {}

    def vesk(analysis, path):
        command = [args.program, "--isa", "gfx10", analysis, path, "-"]
        if not args.reference:
            return timed(command, args.runs, args.timeout)
        ours, theirs = timed_pair(command, [args.reference, *command[1:]], args.runs,
                                  args.timeout)
        references[(analysis, path)] = theirs
        return ours

    ordinary, ordinary_stall = listing("gen_listing.py"), listing("gen_stall_listing.py")
    floor = timed(["sh", "-c", f"wc -l {ordinary} >/dev/null && "
                   f"awk '{{n += NF}} END {{print n}}' {ordinary} >/dev/null"], args.runs, 60)
    rows = [("text floor", "wc -l + awk", floor, "")]

    def add(case, analysis, result, reference, reference_name, path=None):
        ratio = ""
        if result and reference:
            ratio = f"{result[0] / reference[0]:.1f}x {reference_name}"
        theirs = references.get((analysis, path))
        if theirs and result:
            ratio += f"; reference {theirs[0]:.3f} s {theirs[1]:.0f} MiB, " \
                     f"{result[0] / theirs[0]:.2f}x its time"
        elif args.reference and path:
            ratio += "; reference time-out"
        rows.append((case, analysis, result, ratio))
        return result

    base = {}
    all_analyses = ["opcode-histogram", "analyse-liveness", "dump-pi-cfg", "stall-cycles"]
    for analysis in [a for a in all_analyses if a in chosen]:
        path = ordinary_stall if analysis == "stall-cycles" else ordinary
        base[analysis] = add(f"ordinary {n}", analysis, vesk(analysis, path), floor, "floor",
                             path)
    for shape in ["back-chain", "tiny-inflight", "one-block-loads"]:
        path = listing("gen_shapes.py", shape)
        for analysis in [a for a in ["analyse-liveness", "stall-cycles"] if a in chosen]:
            add(f"{shape} {n}", analysis, vesk(analysis, path), base[analysis], "ordinary", path)
    for analysis in [a for a in all_analyses if a in chosen]:
        generator = "gen_stall_listing.py" if analysis == "stall-cycles" else "gen_listing.py"
        path = listing(generator, count=big)
        add(f"ordinary {big}", analysis, vesk(analysis, path), base[analysis], f"the {n} time",
            path)
    if "stall-cycles" not in chosen:
        return print_rows(rows, args.timeout)
    straight = listing("gen_shapes.py", "straight")
    mca_tool = shutil.which("llvm-mca-19")
    mca = None
    if mca_tool:
        mca = timed([mca_tool, "-mtriple=amdgcn", "-mcpu=gfx1010", "-iterations=1", straight],
                    args.runs, args.timeout)
        rows.append((f"straight {n}", "llvm-mca-19", mca, ""))
    result = vesk("stall-cycles", straight)
    ratio = f"{mca[0] / result[0]:.1f}x faster than llvm-mca" if mca and result else ""
    rows.append((f"straight {n}", "stall-cycles", result, ratio))
    return print_rows(rows, args.timeout)


def print_rows(rows, timeout):
    print(f"{'case':<22} {'analysis':<17} {'median s':>9} {'peak MiB':>9}  ratio")
    for case, analysis, result, ratio in rows:
        if result is None:
            print(f"{case:<22} {analysis:<17} {'>' + str(int(timeout)):>9} {'':>9}  time-out")
        else:
            print(f"{case:<22} {analysis:<17} {result[0]:9.3f} {result[1]:9.1f}  {ratio}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
