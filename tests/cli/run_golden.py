#!/usr/bin/env python3
"""Runs one golden command-line case and compares it byte for byte.

A case is a directory holding:
  args              the command line after the program name (split like a shell would)
  stdin             optional: fed to standard input (otherwise standard input is empty)
  expected_stdout   what the program writes to standard output
  expected_stderr   optional: what it writes to standard error
  expected_status   the exit status
  expected_files/   optional: files the program writes (compared by name, relative to the case)
  expected_absent   optional: names of files (one a line) the program must not write
  normalize         optional: per-instruction dot node names carry a memory address;
                    when present, "n_pi_<label>_<digits>" is rewritten to "n_pi_<label>_ADDR"
The program runs with the case directory as its working directory; its path is written as
"vesk" in what it prints (help texts name the program as called).
"""
import difflib
import os
import re
import shlex
import subprocess
import sys

ADDRESS = re.compile(rb'(n_pi_[^"]*_)\d+"')


def normalize(data: bytes, case: str, program: str = "") -> bytes:
    # Help texts name the program as it was called.
    if program:
        data = data.replace(program.encode(), b"vesk")
    if os.path.exists(os.path.join(case, "normalize")):
        return ADDRESS.sub(rb'\1ADDR"', data)
    return data


def run(program: str, case: str):
    with open(os.path.join(case, "args")) as f:
        args = shlex.split(f.read())
    stdin_path = os.path.join(case, "stdin")
    stdin = open(stdin_path, "rb").read() if os.path.exists(stdin_path) else b""
    proc = subprocess.run([program] + args, cwd=case, input=stdin, capture_output=True, timeout=120)
    return proc


def expected_files(case: str):
    root = os.path.join(case, "expected_files")
    if not os.path.isdir(root):
        return []
    return sorted(os.listdir(root))


def absent_files(case: str):
    path = os.path.join(case, "expected_absent")
    if not os.path.exists(path):
        return []
    return [line.strip() for line in open(path) if line.strip()]


def main() -> int:
    program, case = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    for name in expected_files(case) + absent_files(case):
        path = os.path.join(case, name)
        if os.path.exists(path):
            os.remove(path)
    proc = run(program, case)
    failures = []

    def compare(what: str, actual: bytes, expected: bytes):
        actual, expected = normalize(actual, case, program), normalize(expected, case)
        if actual != expected:
            diff = difflib.unified_diff(expected.decode(errors="replace").splitlines(True),
                                        actual.decode(errors="replace").splitlines(True),
                                        "expected " + what, "actual " + what)
            failures.append("".join(diff) or f"{what} differs (line ends or bytes)\n")

    compare("stdout", proc.stdout, open(os.path.join(case, "expected_stdout"), "rb").read())
    stderr_path = os.path.join(case, "expected_stderr")
    if os.path.exists(stderr_path):
        compare("stderr", proc.stderr, open(stderr_path, "rb").read())
    for name in expected_files(case):
        produced = os.path.join(case, name)
        actual = open(produced, "rb").read() if os.path.exists(produced) else b"<missing>\n"
        compare(name, actual, open(os.path.join(case, "expected_files", name), "rb").read())
        if os.path.exists(produced):
            os.remove(produced)
    for name in absent_files(case):
        produced = os.path.join(case, name)
        if os.path.exists(produced):
            failures.append(f"{name} was written, expected no such file\n")
            os.remove(produced)
    expected_status = int(open(os.path.join(case, "expected_status")).read().strip())
    if proc.returncode != expected_status:
        failures.append(f"exit status {proc.returncode}, expected {expected_status}\n"
                        f"stderr:\n{proc.stderr.decode(errors='replace')}")
    for failure in failures:
        sys.stdout.write(failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
