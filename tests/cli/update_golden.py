#!/usr/bin/env python3
"""Rewrites the expected files of golden cases from what the program does now.

Usage: update_golden.py PROGRAM CASE_DIR [CASE_DIR ...]
Run it, then read the diff (git diff tests/cli) before committing: a golden
file is only right when every line has been checked against the rules.
"""
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import run_golden  # noqa: E402


def main() -> int:
    program = os.path.abspath(sys.argv[1])
    for case in map(os.path.abspath, sys.argv[2:]):
        proc = run_golden.run(program, case)
        with open(os.path.join(case, "expected_stdout"), "wb") as f:
            f.write(proc.stdout)
        if os.path.exists(os.path.join(case, "expected_stderr")) or proc.stderr:
            with open(os.path.join(case, "expected_stderr"), "wb") as f:
                f.write(proc.stderr)
        with open(os.path.join(case, "expected_status"), "w") as f:
            f.write(f"{proc.returncode}\n")
        for name in run_golden.expected_files(case):
            produced = os.path.join(case, name)
            if os.path.exists(produced):
                os.replace(produced, os.path.join(case, "expected_files", name))
        print(f"updated {case}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
