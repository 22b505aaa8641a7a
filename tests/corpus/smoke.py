#!/usr/bin/env python3
"""Smoke run over real listings: every analysis ends by itself with a defined status.

Usage: smoke.py PROGRAM CORPUS_DIR
Statuses the tool defines: 0 success, 1 failed analysis (for example an endless loop or no
instructions), 255 fatal listing conditions. A signal, a sanitizer report, a hang or any
other status fails the run.
"""
import os
import subprocess
import sys

GENERATIONS = {"gfx10": "gfx10", "gfx9": "gfx9", "gfx8": "gfx8", "gfx6": "gfx7", "other": "gfx10"}
ANALYSES = [["opcode-histogram"], ["opcode-histogram", "-g", "operand-size"], ["analyse-liveness"],
            ["analyse-liveness", "-r"], ["dump-bb-cfg"], ["dump-pi-cfg"]]
DEFINED = {0, 1, 255}


def main() -> int:
    program, corpus = sys.argv[1], sys.argv[2]
    failures, runs, statuses = [], 0, {}
    for folder, isa in sorted(GENERATIONS.items()):
        directory = os.path.join(corpus, folder)
        if not os.path.isdir(directory):
            continue
        for name in sorted(os.listdir(directory)):
            listing = os.path.join(directory, name)
            analyses = ANALYSES + ([["stall-cycles"]] if isa == "gfx10" else [])
            for analysis in analyses:
                command = [program, "--isa", isa, analysis[0], *analysis[1:], listing, "-"]
                try:
                    proc = subprocess.run(command, capture_output=True, timeout=120)
                except subprocess.TimeoutExpired:
                    failures.append(f"timeout: {' '.join(command)}")
                    continue
                runs += 1
                statuses[proc.returncode] = statuses.get(proc.returncode, 0) + 1
                sanitizer = b"Sanitizer" in proc.stderr or b"runtime error:" in proc.stderr
                if proc.returncode not in DEFINED or sanitizer:
                    failures.append(f"status {proc.returncode}: {' '.join(command)}\n"
                                    f"{proc.stderr.decode(errors='replace')[-2000:]}")
    print(f"{runs} runs, statuses {dict(sorted(statuses.items()))}")
    for failure in failures:
        print(failure)
    print(f"{runs - len(failures)} passed, {len(failures)} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
