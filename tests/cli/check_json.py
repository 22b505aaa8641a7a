#!/usr/bin/env python3
"""The JSON reports state the same facts as the text reports.

Usage: check_json.py PROGRAM SOURCE_DIR

Runs analyse-liveness (plain, -r, -s), opcode-histogram (plain, -g operand-size),
stall-cycles (wave32, wave64; GFX10 only) and summary (default wave size and -w 64 on
GFX10) on the golden inputs, the corpus listings, the LLVM fixtures and a generated
listing of several functions whose document is far longer than one written piece, once with
--format text and once with --format json. Both runs must end with the same status and
error text; on success the JSON must parse and agree with the text: every row, count,
register set, cycle figure and summary number. The summary is also checked against the
other reports of the same input: its stall totals against the stall rows, its VGPR peak
against the liveness report.
"""
import json
import math
import os
import re
import subprocess
import sys
import tempfile

CORPUS = {"gfx10": "gfx10", "gfx9": "gfx9", "gfx8": "gfx8", "gfx6": "gfx7"}
FUNCTION = re.compile(r"^Function (.*)$")


class Mismatch(Exception):
    pass


def expect(condition, message):
    if not condition:
        raise Mismatch(message)


def run(program, isa, args, listing, form):
    command = [program] + (["--isa", isa] if isa else []) + ["--format", form] + args + [listing, "-"]
    proc = subprocess.run(command, capture_output=True, timeout=120)
    return proc.returncode, proc.stdout.decode(errors="replace"), proc.stderr.decode(errors="replace")


def split_programs(text):
    """[(function name or None, lines)] as the text report heads each function."""
    programs, name, lines = [], None, []
    for line in text.split("\n")[:-1]:
        match = FUNCTION.match(line)
        if match:
            if lines or name is not None:
                programs.append((name, lines))
            name, lines = match.group(1), []
        else:
            lines.append(line)
    programs.append((name, lines))
    return programs


def check_programs(text, document, check_one):
    programs = split_programs(text)
    expect(len(programs) == len(document["programs"]), "number of programs")
    named = programs[0][0] is not None
    for (name, lines), program in zip(programs, document["programs"]):
        if named:
            expect(program["function"] == name, f"function {program['function']} vs {name}")
        check_one(lines, program)


def check_liveness(text, document, summary_only):
    def one(lines, program):
        tail = lines[-1]
        match = re.match(r"^Maximum # VGPR used +(\d+), # VGPR allocated: +(\d+)$", tail)
        expect(match, f"summary line {tail!r}")
        expect(program["max_live"] == int(match.group(1)), "max_live")
        expect(program["allocated"] == int(match.group(2)), "allocated")
        if summary_only:
            expect(len(lines) == 1 and "rows" not in program, "summary only")
            return
        body = lines[lines.index("-" * 80) + 1:-1]
        rows = program["rows"]
        expect(len(body) == len(rows), f"{len(body)} rows vs {len(rows)}")
        for line, row in zip(body, rows):
            number, live, columns, instruction = line.split(" | ", 3)
            expect(int(number) == row["line"], f"row number {number}")
            expect(int(live) == row["live"] == len(row["live_registers"]), f"live count, row {number}")
            expect(instruction.rstrip() == row["instruction"], f"instruction, row {number}")
            width = len(columns)
            shown = lambda regs: {r for r in regs if r < width}
            read = {i for i, c in enumerate(columns) if c in "xv"}
            written = {i for i, c in enumerate(columns) if c in "x^"}
            kept = {i for i, c in enumerate(columns) if c == ":"}
            marked = {i for i, c in enumerate(columns) if c != " "}
            expect(shown(row["read"]) == read, f"read registers, row {number}")
            expect(shown(row["written"]) == written, f"written registers, row {number}")
            live = set(row["live_registers"])
            expect(kept <= live <= marked, f"live registers, row {number}")

    check_programs(text, document, one)


def check_histogram(text, document):
    def one(lines, program):
        counts = program["counts"]
        expect(len(lines) == len(counts), "number of keys")
        for line, entry in zip(lines, counts):
            match = re.match(r"^ *(\S+) : +(\d+) \( *([0-9.e+]+) %\)$", line)
            expect(match, f"histogram line {line!r}")
            expect(match.group(1) == entry["key"] and int(match.group(2)) == entry["count"],
                   f"key or count of {entry['key']}")
            # The text shows two significant digits of the share.
            share = float(match.group(3))
            unit = 10 ** (math.floor(math.log10(share)) - 1)
            expect(abs(share - entry["percent"]) <= unit / 2 + 0.01, f"share of {entry['key']}")
        if counts:
            expect(sum(e["count"] for e in counts) == program["total"], "total")

    check_programs(text, document, one)


def check_stalls(text, document):
    def one(lines, program):
        body = lines[lines.index("-" * 80) + 1:]
        rows = program["rows"]
        expect(len(body) == len(rows), "number of rows")
        for line, row in zip(body, rows):
            number, cycles, instruction = line.split(" | ", 2)
            expect(int(number) == row["line"], f"row number {number}")
            if cycles.strip() == "Inf":
                expect(row["cycles"] is None and row["unbounded"], f"Inf, row {number}")
            else:
                expect(row["cycles"] == int(cycles) and not row["unbounded"], f"cycles, row {number}")
            expect(instruction.rstrip() == row["instruction"], f"instruction, row {number}")

    check_programs(text, document, one)


def check_register_line(value, facts, what):
    match = re.match(r"^(\d+) live at most, first at line (\d+) \((.*)\); (\d+) allocated$", value)
    if match:
        expect(facts["max_live"] == int(match.group(1)) and facts["line"] == int(match.group(2)),
               f"{what} peak")
        shown = match.group(3)
        full = facts["instruction"]
        expect(shown == full or (shown.endswith("...") and full.startswith(shown[:-3])),
               f"{what} instruction")
        expect(facts["allocated"] == int(match.group(4)), f"{what} allocated")
        return
    match = re.match(r"^none live; (\d+) allocated$", value)
    expect(match, f"{what} line {value!r}")
    expect(facts["max_live"] == 0 and facts["allocated"] == int(match.group(1)), f"{what}")


def check_summary(text, document):
    def one(lines, program):
        fields, table = {}, []
        for line in lines:
            if not line:
                continue
            if line.startswith("  ") and not line.startswith("   " * 4):
                table.append(line)
            elif line.startswith(" "):
                continue  # an occupancy detail line
            else:
                fields[line[:14].strip()] = line[14:]
        generation, wave = re.match(r"^(gfx\d+), wave(\d+)$", fields["Target"]).groups()
        expect(document["isa"] == generation and program["wave_size"] == int(wave), "target")
        count, blocks = re.match(r"^(\d+) in (\d+) basic blocks?$", fields["Instructions"]).groups()
        expect(program["instructions"] == int(count) and program["blocks"] == int(blocks), "counts")
        branches = re.match(r"^(\d+) conditional, (\d+) jumps?; (\d+) loops? \((\d+) back edges?\)$",
                            fields["Branches"]).groups()
        expect([program["branches"]["conditional"], program["branches"]["jumps"],
                program["loops"]["headers"], program["loops"]["back_edges"]] == list(map(int, branches)),
               "branches")
        check_register_line(fields["VGPRs"], program["vgpr"], "VGPR")
        check_register_line(fields["SGPRs"], program["sgpr"], "SGPR")
        special = fields["Special regs"]
        expect(program["special_registers"] == ([] if special == "none" else special.split(", ")),
               "special registers")
        waves, most, limit = re.match(r"^(\d+) waves? per SIMD of (\d+), limited by ([^:]+):$",
                                      fields["Occupancy"]).groups()
        occupancy = program["occupancy"]
        names = {"VGPRs": "vgpr", "SGPRs": "sgpr", "LDS and workgroup size": "lds",
                 "the workgroup size": "lds",
                 "the wave slots": "waves"}
        expect(occupancy["waves_per_simd"] == int(waves) and occupancy["max_waves"] == int(most)
               and occupancy["limited_by"] == names[limit], "occupancy")
        unknown = re.match(r"^(\d+) instructions? not in ", fields.get("Unknown", "0 instructions not in "))
        expect(program["unknown_opcodes"] == int(unknown.group(1)), "unknown opcodes")
        stall = program["stall"]
        if "Stalls" not in fields:
            expect(stall is None and not table and "stall_error" not in program, "no stall part")
            return
        if fields["Stalls"].startswith("not simulated: "):
            expect(stall is None and not table
                   and program.get("stall_error") == fields["Stalls"][len("not simulated: "):],
                   "stall part not simulated")
            return
        expect("stall_error" not in program, "stall error without its text line")
        total, unbounded = re.match(r"^(\d+) cycles? in finite stalls; (\d+) waits? ",
                                    fields["Stalls"]).groups()
        expect(stall["total_cycles"] == int(total) and stall["unbounded_waits"] == int(unbounded),
               "stall totals")
        rows = table[1:] if table else []
        expect(len(rows) == len(stall["worst"]), "number of worst stalls")
        for row, entry in zip(rows, stall["worst"]):
            line, cycles, rest = row.split(None, 2)
            expect(int(line) == entry["line"] and int(cycles) == entry["cycles"], f"stall at {line}")
            shown = rest[:34].rstrip()
            full = entry["instruction"]
            expect(shown == full or (shown.endswith("...") and full.startswith(shown[:-3])),
                   f"instruction of the stall at {line}")
            source = entry["cause"]["source_line"]
            expect(source is None or f"(line {source})" in rest[34:], f"cause of the stall at {line}")

    check_programs(text, document, one)


def both(program, isa, args, listing):
    """Text and parsed JSON output when both runs succeed; None when both fail alike."""
    text = run(program, isa, args, listing, "text")
    data = run(program, isa, args, listing, "json")
    for status, _, error in (text, data):
        expect(status in (0, 1, 255), f"status {status}: {error[-300:]!r}")
        expect("Sanitizer" not in error and "runtime error:" not in error, error[-300:])
    expect(text[0] == data[0], f"status {text[0]} vs {data[0]}")
    expect(text[2] == data[2], f"error text {text[2]!r} vs {data[2]!r}")
    if text[0] != 0:
        return None
    return text[1], json.loads(data[1])


def check_listing(program, isa, listing, gfx10):
    results = {}
    for args, summary_only in ((["analyse-liveness"], False), (["analyse-liveness", "-r"], False),
                               (["analyse-liveness", "-s"], True)):
        out = both(program, isa, args, listing)
        if out:
            check_liveness(*out, summary_only)
            results[tuple(args)] = out[1]
    for args in (["opcode-histogram"], ["opcode-histogram", "-g", "operand-size"]):
        out = both(program, isa, args, listing)
        if out:
            check_histogram(*out)
    waves = ([], ["-w", "64"]) if gfx10 else ()
    for wave in waves:
        out = both(program, isa, ["stall-cycles"] + wave, listing)
        if out:
            check_stalls(*out)
            results[("stall-cycles", *wave)] = out[1]
    for wave in ([], ["-w", "64"]) if gfx10 else ([],):
        out = both(program, isa, ["summary"] + wave, listing)
        if not out:
            continue
        check_summary(*out)
        check_summary_against_reports(out[1], results)


def check_summary_against_reports(summary, results):
    liveness = results.get(("analyse-liveness",))
    if liveness:
        for mine, theirs in zip(summary["programs"], liveness["programs"]):
            expect(mine["vgpr"]["max_live"] == theirs["max_live"], "VGPR peak vs analyse-liveness")
    for index, mine in enumerate(summary["programs"]):
        # The stall rows of the wave size this program was summarised for.
        stalls = results.get(("stall-cycles",) + (("-w", "64") if mine["wave_size"] == 64 else ()))
        if mine["stall"] is None or not stalls:
            continue
        theirs = stalls["programs"][index]
        cycles = [row["cycles"] for row in theirs["rows"]]
        finite = sorted((c for c in cycles if c), reverse=True)
        expect(mine["stall"]["total_cycles"] == sum(finite), "stall total vs stall-cycles")
        expect(mine["stall"]["unbounded_waits"] == cycles.count(None), "Inf count vs stall-cycles")
        expect([e["cycles"] for e in mine["stall"]["worst"]] == finite[:10],
               "worst stalls vs stall-cycles")


def listings(source):
    """(isa or None, path, gfx10) for every input the check runs on."""
    corpus = os.path.join(source, "tests", "corpus")
    for folder, isa in sorted(CORPUS.items()):
        directory = os.path.join(corpus, folder)
        for name in sorted(os.listdir(directory)) if os.path.isdir(directory) else []:
            yield isa, os.path.join(directory, name), isa == "gfx10"
    for folder in ("llvm", "occupancy"):
        directory = os.path.join(source, "tests", "fixtures", folder)
        for name in sorted(os.listdir(directory)):
            if name.endswith(".s"):
                yield None, os.path.join(directory, name), "gfx10" in name
    cli = os.path.join(source, "tests", "cli")
    for command in ("analyse-liveness", "stall-cycles", "summary"):
        for case in sorted(os.listdir(os.path.join(cli, command))):
            folder = os.path.join(cli, command, case)
            for name in sorted(os.listdir(folder)) if os.path.isdir(folder) else []:
                if name.endswith(".isa") and not case.startswith("error"):
                    yield "gfx10", os.path.join(folder, name), True


def llvm_function(name, lines):
    return (f"\t.globl\t{name}\n\t.type\t{name},@function\n{name}:\n; %bb.0:\n" +
            "".join(f"\t{line}\n" for line in lines) +
            f".Lfunc_end_{name}:\n\t.size\t{name}, .Lfunc_end_{name}-{name}\n")


def check_long_documents(program, directory):
    """Documents of several megabytes, written while they are formed, agree with the
    text and hold every function; a function failing after a long one leaves its
    message alone in the output file, as a short document does."""
    body = [f"v_add_f32_e32 v{i % 40}, v{(i + 1) % 40}, v{(i + 7) % 40}" for i in range(25000)]
    functions = [("first", body + ["s_endpgm"]), ("second", ["v_mov_b32_e32 v0, 0", "s_endpgm"])]
    head = '\t.text\n\t.amdgcn_target "amdgcn-amd-amdhsa--gfx1010"\n'
    listing = os.path.join(directory, "long.s")
    with open(listing, "w") as out:
        out.write(head + "".join(llvm_function(n, lines) for n, lines in functions))
    for args, summary_only in ((["analyse-liveness"], False), (["analyse-liveness", "-s"], True)):
        out = both(program, None, args, listing)
        expect(out, f"{args} failed on the long listing")
        check_liveness(*out, summary_only)
        expect(len(out[1]["programs"]) == 2, "two programs")
    out = both(program, None, ["stall-cycles"], listing)
    expect(out, "stall-cycles failed on the long listing")
    check_stalls(*out)

    failing = os.path.join(directory, "failing.s")
    with open(failing, "w") as out:
        out.write(head + llvm_function("first", body + ["s_endpgm"]) + llvm_function("empty", []))
    report = os.path.join(directory, "report.json")
    command = [program, "--format", "json", "analyse-liveness", failing, report]
    proc = subprocess.run(command, capture_output=True, timeout=120)
    expect(proc.returncode == 1, f"status {proc.returncode} for a failing function")
    with open(report, "rb") as written:
        content = written.read()
    expect(content == b"Could not find any invocations.\n", f"output file {content[:80]!r}")


def main() -> int:
    program, source = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    failures, checked = [], 0
    for isa, listing, gfx10 in listings(source):
        try:
            check_listing(program, isa, listing, gfx10)
            checked += 1
        except (Mismatch, ValueError, KeyError, AttributeError, TypeError) as error:
            failures.append(f"{os.path.relpath(listing, source)} ({isa or 'stated'}): "
                            f"{type(error).__name__}: {error}")
    with tempfile.TemporaryDirectory() as directory:
        try:
            check_long_documents(program, directory)
            checked += 1
        except (Mismatch, ValueError, KeyError, AttributeError, TypeError) as error:
            failures.append(f"long documents: {type(error).__name__}: {error}")
    for failure in failures:
        print(failure)
    print(f"{checked} listings agree, {len(failures)} disagree")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
