#!/usr/bin/env python3
"""Derive the per-generation opcode tables data/isa/gfx{7,8,9,10}.tsv.

Input: the public assembler-derived opcode lists in data/isa/public/gfxN.tsv
(one row per mnemonic, with an example operand list already split the way the
listing reader splits an instruction line: at ", ", a piece with blanks
contributing only its first word).

For every generation the script
  1. takes the public rows, drops the rows listed in ROW_DROPS and adds the
     rows listed in ROW_ADDS (both with their evidence, see data/isa/README.md);
  2. assigns operand roles by encoding family and operand position
     (destinations written, sources read, in-place operands read-written);
  3. overlays the fixed rows (FIXED_ROWS) and the per-generation role
     decisions (ROLE_DECISIONS) verbatim;
  4. assigns the control kind (branch, jump, end, immediate-only);
  5. checks the result against the expected family, suffix, kind and
     readWritten counts and the allowed masks (EXPECTED), and writes the table.

Standard library only. Usage:
  tools/isa/derive_tables.py            write data/isa/gfxN.tsv
  tools/isa/derive_tables.py --check    only verify that the written files are
                                        what the derivation produces
  tools/isa/derive_tables.py --out DIR  write the tables to DIR instead

To add a generation: put its public list into data/isa/public/, add its
entries to GENERATIONS, EXPECTED and the decision tables below, and rerun.
"""

import argparse
import csv
import os
import sys

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", ".."))
PUBLIC_DIR = os.path.join(ROOT, "data", "isa", "public")
DATA_DIR = os.path.join(ROOT, "data", "isa")

GENERATIONS = ["gfx7", "gfx8", "gfx9", "gfx10"]
HEADER = ["name", "written", "read", "readWritten", "kind"]

KIND_ORDINARY, KIND_BRANCH, KIND_JUMP, KIND_END, KIND_IMMEDIATE = 0, 1, 2, 4, 8
KIND_BARRIER = 16

# ---------------------------------------------------------------------------
# Row-set decisions. Every entry carries its reason; data/isa/README.md lists
# them with the evidence.
# ---------------------------------------------------------------------------

ROW_DROPS = {
    "gfx7": {
        "image_atomic_fcmpswap": "GFX7 image_ rows equal the GFX8 set (89); the three float image atomics are the only GFX7-only image rows",
        "image_atomic_fmax": "see image_atomic_fcmpswap",
        "image_atomic_fmin": "see image_atomic_fcmpswap",
    },
    "gfx8": {
        "v_nop_dpp": "no-operand DPP form; without it _dpp is 102",
        "v_nop_sdwa": "no-operand SDWA form; without it _sdwa is 234",
    },
    "gfx9": {
        "v_nop_dpp": "no-operand DPP form; without it _dpp is 109",
        "v_nop_sdwa": "no-operand SDWA form; without it _sdwa is 239",
        "image_gather4h": "not accepted by LLVM 13/14 for gfx900, not in Mesa ACO; without it image_ is 89",
    },
    "gfx10": {
        "buffer_load_format_d16_hi_x": "not accepted by LLVM 13/14 for gfx1010; without the pair buffer_ is 72 and all 32 buffer atomics stay",
        "buffer_store_format_d16_hi_x": "see buffer_load_format_d16_hi_x",
        "image_gather4h": "not accepted by LLVM 13/14 for gfx1010, in neither Mesa ACO nor CLRX",
        "image_sample_c_cd_cl_o_g16": "image_ needs one more row out; the 16 image atomics must stay for readWritten 105; of the g16 rows the cd forms are in neither ACO nor CLRX, and this is the highest MIMG opcode (0xef) of them",
        "global_atomic_fmin_x2": "global_ is 52 against flat_ 54; the f64 float min/max atomics are the global rows with the least support (dropped from later RDNA global sets)",
        "global_atomic_fmax_x2": "see global_atomic_fmin_x2",
        "s_wait_idle": "s_ is 281 against 282 (280 plus s_barrier, see the README); not among the SOPP opcodes of the RDNA1 ISA reference",
    },
}

# name -> (format, base_format, args, reason). The args are the example operand
# list of the sibling row with the same operands (v_add_i32 for the carry-op
# aliases, v_mqsad_pk_u16_u8 for the SAD names, v_mov_b32 for v_mov_fed_b32).
ROW_ADDS = {
    "gfx7": {
        "v_add_u32": ("VOP2", "VOP2", "v0, vcc, v2, v4", "assembler alias of v_add_i32 (the GFX8 name), listed for GFX7 by CLRX; base name only"),
        "v_sub_u32": ("VOP2", "VOP2", "v0, vcc, v2, v4", "assembler alias of v_sub_i32, listed for GFX7 by CLRX; base name only"),
        "v_subrev_u32": ("VOP2", "VOP2", "v0, vcc, v2, v4", "assembler alias of v_subrev_i32, listed for GFX7 by CLRX; base name only"),
        "v_add_co_ci_u32": ("VOP2", "VOP2", "v0, vcc, v2, v4, vcc", "the add-with-carry row that the fixed-role rows require in every generation (written 0x3, read 0x1C); base name only"),
    },
    "gfx8": {
        "v_add_i32": ("VOP2", "VOP2", "v0, vcc, v2, v4", "GFX7 name of v_add_u32, accepted for GFX8 by CLRX; base name only"),
        "v_sub_i32": ("VOP2", "VOP2", "v0, vcc, v2, v4", "GFX7 name of v_sub_u32, accepted for GFX8 by CLRX; base name only"),
        "v_subrev_i32": ("VOP2", "VOP2", "v0, vcc, v2, v4", "GFX7 name of v_subrev_u32, accepted for GFX8 by CLRX; base name only"),
        "v_mov_fed_b32": ("VOP1", "VOP1", "v0, v2", "VOP1 opcode 9 in the GFX8 ISA reference, an llvm-mc opcode hole; listed by CLRX"),
        "v_mqsad_u8": ("VOP3", "VOP3", "v[0:1], v[2:3], v4, v[6:7]", "older name of v_mqsad_pk_u16_u8, listed for GFX8 by CLRX"),
        "v_add_co_ci_u32": ("VOP2", "VOP2", "v0, vcc, v2, v4, vcc", "the add-with-carry row that the fixed-role rows require in every generation (written 0x3, read 0x1C); base name only"),
    },
    "gfx9": {
        "v_mov_fed_b32": ("VOP1", "VOP1", "v0, v2", "VOP1 opcode 9, an llvm-mc opcode hole in GFX9 as in GFX8; listed by CLRX"),
        "v_mqsad_u8": ("VOP3", "VOP3", "v[0:1], v[2:3], v4, v[6:7]", "older name of v_mqsad_pk_u16_u8, listed for GFX9 by CLRX"),
        "v_add_co_ci_u32": ("VOP2", "VOP2", "v0, vcc, v2, v4, vcc", "the add-with-carry row that the fixed-role rows require in every generation (written 0x3, read 0x1C); base name only"),
    },
    "gfx10": {},
}

# ---------------------------------------------------------------------------
# Role rule by encoding family and operand position.
# ---------------------------------------------------------------------------

VALU_FORMATS = {"VOP1", "VOP2", "VOPC", "VOP3", "VOP3P", "VINTRP",
                "VOP1_SDWA", "VOP2_SDWA", "VOPC_SDWA", "VOP1_DPP", "VOP2_DPP"}

# Accumulators whose destination is also the third source (D = S0 * S1 + D).
# Only the VOP2 encoding (and its DPP/SDWA forms) is marked read-written; the
# VOP3 (_e64) form takes an explicit third source and is an ordinary row.
ACCUMULATORS = {"v_mac_f32", "v_mac_f16", "v_mac_legacy_f32", "v_fmac_f32", "v_fmac_f16",
                "v_pk_fmac_f16"}

# ALU forms with a second, scalar destination (carry-out, division scale flag,
# 64-bit multiply-add carry) in their VOP3 encoding.
TWO_DEST_VOP3 = {
    "v_add_i32", "v_sub_i32", "v_subrev_i32", "v_addc_u32", "v_subb_u32", "v_subbrev_u32",
    "v_add_u32", "v_sub_u32", "v_subrev_u32",
    "v_add_co_u32", "v_sub_co_u32", "v_subrev_co_u32",
    "v_addc_co_u32", "v_subb_co_u32", "v_subbrev_co_u32",
    "v_add_co_ci_u32", "v_sub_co_ci_u32", "v_subrev_co_ci_u32",
    "v_div_scale_f32", "v_div_scale_f64", "v_mad_u64_u32", "v_mad_i64_i32",
}
# GFX10 VOP2 carry-in forms keep the carry-out as a destination also in the
# short encoding (v_add_co_ci_u32: written 0x3).
TWO_DEST_VOP2_GFX10 = {"v_add_co_ci_u32", "v_sub_co_ci_u32", "v_subrev_co_ci_u32"}

# Scalar ALU rows without a destination operand: everything they name is read.
SALU_NO_DEST = {
    "s_setpc_b64", "s_rfe_b64", "s_rfe_restore_b64", "s_cbranch_join", "s_cbranch_g_fork",
    "s_cbranch_i_fork", "s_set_gpr_idx_idx", "s_setreg_b32", "s_setreg_imm32_b32", "s_version",
    "s_waitcnt_vmcnt", "s_waitcnt_expcnt", "s_waitcnt_lgkmcnt", "s_waitcnt_vscnt",
}

SMEM_DEST_NAMES = {"s_memtime", "s_memrealtime", "s_get_waveid_in_workgroup"}
DS_DEST_NAMES = {"ds_append", "ds_consume", "ds_ordered_count", "ds_swizzle_b32",
                 "ds_permute_b32", "ds_bpermute_b32"}

SUFFIXES = ("_e64", "_sdwa", "_dpp")


def base_name(name):
    for suffix in SUFFIXES:
        if name.endswith(suffix):
            return name[: -len(suffix)]
    return name


def all_bits(count):
    return (1 << count) - 1


def is_scalar_operand(arg):
    return arg.startswith("s") or arg.startswith("vcc")


def valu_roles(gen, name, fmt, args):
    """(written, read, readWritten) of a vector ALU row."""
    n = len(args)
    if n == 0:
        return 0, 0, 0
    base = base_name(name)
    everything = all_bits(n)
    is_vop3 = fmt in ("VOP3", "VOP3P") or name.endswith("_e64")
    is_sdwa = fmt.endswith("_SDWA")

    if base.startswith("v_cmpx_") or base.startswith("v_cmpsx_"):
        # Compares that write EXEC. GFX10 prints no destination at all; the
        # GFX7-9 short form names vcc but the row lists it as read.
        if gen == "gfx10" or (not is_vop3 and not is_sdwa):
            w, r = 0, everything
        else:
            w, r = 0x1, everything & ~0x1
    elif base in ACCUMULATORS and not is_vop3:
        w, r = 0x1, everything
    elif (base in TWO_DEST_VOP3 and n > 2 and is_scalar_operand(args[1])
          and (is_vop3 or (gen == "gfx10" and base in TWO_DEST_VOP2_GFX10))):
        w, r = 0x3, everything & ~0x3
    else:
        w, r = 0x1, everything & ~0x1

    rw = 0x1 if (base in ACCUMULATORS and not is_vop3) else 0

    if is_sdwa:
        # SDWA rows carry their last operand position as written and not read
        # (v_add_f32_sdwa: written 0x5, read 0x2).
        last = 1 << (n - 1)
        w = (w | 0x1 | last)
        r = r & ~last
        if not rw:
            r &= ~0x1
    return w, r, rw


def memory_roles(gen, name, fmt, n):
    everything = all_bits(n)
    if n == 0:
        return 0, 0, 0
    if fmt in ("SMEM", "SMRD"):
        if name.startswith("s_atomic_") or name.startswith("s_buffer_atomic_"):
            return 0x1, everything, 0x1
        if (name.startswith("s_load_") or name.startswith("s_buffer_load_")
                or name.startswith("s_scratch_load_") or name in SMEM_DEST_NAMES):
            return 0x1, everything & ~0x1, 0
        return 0, everything, 0
    if fmt == "DS":
        if "_rtn_" in name or name.startswith("ds_read") or name in DS_DEST_NAMES:
            return 0x1, everything & ~0x1, 0
        return 0, everything, 0
    if fmt in ("MUBUF", "MTBUF", "MIMG"):
        if "_atomic_" in name:
            # The data operand receives the pre-op value in place.
            return 0x1, everything, 0x1
        if ("_load" in name or name.startswith("image_sample") or name.startswith("image_gather")
                or name.startswith("image_get_")):
            return 0x1, everything & ~0x1, 0
        return 0, everything, 0
    if fmt in ("FLAT", "GLOBAL", "SCRATCH"):
        if "_load_" in name:
            return 0x1, everything & ~0x1, 0
        # Stores, and atomics in the no-return form of the example: all read.
        return 0, everything, 0
    raise ValueError(f"{gen}: no memory rule for {name} ({fmt})")


def rule_roles(gen, name, fmt, args):
    n = len(args)
    everything = all_bits(n)
    if fmt in VALU_FORMATS:
        return valu_roles(gen, name, fmt, args)
    if fmt in ("SOP1", "SOP2", "SOPK"):
        if n == 0:
            return 0, 0, 0
        if name.startswith("s_cmpk_") or name in SALU_NO_DEST:
            return 0, everything, 0
        return 0x1, everything & ~0x1, 0
    if fmt in ("SOPC", "SOPP"):
        return 0, everything, 0
    if fmt == "EXP":
        return 0, everything, 0
    return memory_roles(gen, name, fmt, n)


# ---------------------------------------------------------------------------
# Rows fixed verbatim: (generations, written, read, readWritten, kind or None).
# None keeps the kind from the kind rule.
# ---------------------------------------------------------------------------

ALL = ("gfx7", "gfx8", "gfx9", "gfx10")
FIXED_ROWS = [
    ("v_add_co_u32", ("gfx9",), 0x1, 0xE, 0, None),
    ("v_add_co_u32", ("gfx10",), 0x3, 0xC, 0, None),
    ("v_add_co_u32_e64", ("gfx9",), 0x3, 0xC, 0, None),
    ("v_add_co_u32_sdwa", ("gfx9",), 0x9, 0x6, 0, None),
    ("v_add_f32_sdwa", ("gfx8", "gfx9"), 0x5, 0x2, 0, None),
    ("v_add_co_ci_u32", ALL, 0x3, 0x1C, 0, None),
    ("v_addc_co_u32", ("gfx9",), 0x1, 0x1E, 0, None),
    ("v_add_u32", ("gfx8",), 0x1, 0xE, 0, None),
    ("v_add_u32", ("gfx9",), 0x1, 0x6, 0, None),
    ("v_cndmask_b32", ALL, 0x1, 0xE, 0, None),
    ("v_mac_f32_e64", ALL, 0x1, 0x6, 0, None),
    ("v_swap_b32", ("gfx9", "gfx10"), 0x1, 0x2, 0, None),
    ("v_readlane_b32", ALL, 0x1, 0x6, 0, None),
    ("v_writelane_b32", ALL, 0x1, 0x6, 0, None),
    ("s_and_saveexec_b64", ALL, 0x1, 0x2, 0, None),
    ("ds_append", ALL, 0x1, 0, 0, None),
    ("ds_add_u32", ALL, 0, 0x3, 0, None),
    ("ds_add_rtn_u32", ALL, 0x1, 0x6, 0, None),
    ("ds_gws_barrier", ("gfx10",), 0, 0x1, 0, KIND_IMMEDIATE | KIND_BARRIER),
    ("s_barrier", ("gfx10",), 0, 0, 0, KIND_IMMEDIATE | KIND_BARRIER),
    ("s_setpc_b64", ALL, 0, 0x1, 0, None),
    ("v_nop", ALL, 0, 0, 0, None),
    ("s_dcache_wb", ALL, 0, 0, 0, None),
    # Reference rows.
    ("image_sample", ALL, 0x1, 0xE, 0, None),
    ("image_store", ALL, 0, 0x7, 0, None),
    ("v_interp_p1_f32", ALL, 0x1, 0x6, 0, None),
    ("s_sendmsg", ALL, 0, 0x1, 0, None),
    ("s_setreg_b32", ALL, 0, 0x3, 0, None),
    ("s_getreg_b32", ALL, 0x1, 0x2, 0, None),
    ("v_readfirstlane_b32", ALL, 0x1, 0x2, 0, None),
    ("tbuffer_load_format_x", ALL, 0x1, 0xE, 0, None),
    ("flat_load_dword", ALL, 0x1, 0x2, 0, None),
    ("buffer_load_dword", ALL, 0x1, 0xE, 0, None),
    ("buffer_store_dword", ALL, 0, 0xF, 0, None),
    ("buffer_atomic_add", ALL, 0x1, 0xF, 0x1, None),
    ("image_atomic_add", ALL, 0x1, 0x7, 0x1, None),
    ("global_load_dword", ALL, 0x1, 0x6, 0, None),
    ("global_store_dword", ALL, 0, 0x7, 0, None),
    ("ds_read_b32", ALL, 0x1, 0x2, 0, None),
    ("ds_write_b32", ALL, 0, 0x3, 0, None),
    ("s_load_dword", ALL, 0x1, 0x6, 0, None),
    # exp names a target and four sources; the example line prints the target
    # and the first source without a comma between them.
    ("exp", ALL, 0, 0x1F, 0, None),
    ("s_endpgm", ALL, 0, 0, 0, None),
    ("s_endpgm_saved", ALL, 0, 0, 0, None),
    ("s_endpgm_ordered_ps_done", ALL, 0, 0, 0, None),
    ("s_swappc_b64", ALL, 0x1, 0x2, 0, None),
    ("s_getpc_b64", ALL, 0x1, 0, 0, None),
    ("s_icache_inv", ALL, 0, 0, 0, None),
]

# Per-generation role decisions where the public data leaves a choice; they
# settle the readWritten counts. name -> (written, read, readWritten, reason).
ROLE_DECISIONS = {
    "gfx7": {
        "v_cvt_pkaccum_u8_f32": (0x1, 0x7, 0x1, "packs one byte into the destination and keeps its other bytes (VOP2 in GFX7 only)"),
        "v_cvt_pkaccum_u8_f32_e64": (0x1, 0x7, 0x1, "VOP3 form of the GFX7 VOP2 v_cvt_pkaccum_u8_f32"),
        "v_interp_p2_f32": (0x1, 0x7, 0x1, "adds the second interpolation term to the destination (D = P20 * J + D)"),
        "v_mac_legacy_f32_e64": (0x1, 0x7, 0x1, "VOP3 form of a GFX7 accumulator; the destination is the addend"),
    },
    "gfx8": {},
    "gfx9": {
        "v_mad_mixlo_f16": (0x1, 0xF, 0x1, "writes the low 16 bits of the destination and keeps the high half"),
        "v_mad_mixhi_f16": (0x1, 0xF, 0x1, "writes the high 16 bits of the destination and keeps the low half"),
    },
    "gfx10": {},
}

# ---------------------------------------------------------------------------
# Control kinds.
# ---------------------------------------------------------------------------

BRANCHES = {"s_cbranch_scc0", "s_cbranch_scc1", "s_cbranch_vccz", "s_cbranch_vccnz",
            "s_cbranch_execz", "s_cbranch_execnz", "s_cbranch_cdbgsys", "s_cbranch_cdbguser",
            "s_cbranch_cdbgsys_or_user", "s_cbranch_cdbgsys_and_user", "s_cbranch_g_fork",
            "s_cbranch_i_fork", "s_cbranch_join"}
ENDS = {"s_endpgm", "s_endpgm_saved", "s_endpgm_ordered_ps_done"}
IMMEDIATES = {"s_waitcnt", "s_nop", "s_sleep", "s_setprio", "s_sethalt", "s_setkill",
              "s_icache_inv"}
IMMEDIATES_BY_GEN = {"gfx7": {"s_barrier"}, "gfx8": {"s_barrier"}, "gfx9": set(),
                     "gfx10": {"s_clause", "s_inst_prefetch", "s_version"}}


def kind_of(gen, name):
    if name in BRANCHES:
        return KIND_BRANCH
    if name == "s_branch":
        return KIND_JUMP
    if name in ENDS:
        return KIND_END
    if name in IMMEDIATES or name in IMMEDIATES_BY_GEN[gen]:
        return KIND_IMMEDIATE
    return KIND_ORDINARY


# ---------------------------------------------------------------------------
# Expected shape of each table.
# ---------------------------------------------------------------------------

FAMILIES = ["buffer_", "ds_", "exp", "flat_", "global_", "image_", "s_", "scratch_", "tbuffer_", "v_"]
EXPECTED = {
    "gfx7": {"total": 1188, "families": [56, 139, 1, 46, 0, 89, 167, 0, 8, 682],
             "e64": 307, "sdwa": 0, "dpp": 0, "kinds": {1: 13, 2: 1, 4: 1, 8: 8, 24: 0},
             "readWritten": 51, "written": {0x0, 0x1, 0x3}},
    "gfx8": {"total": 1607, "families": [59, 144, 1, 40, 0, 89, 187, 0, 16, 1071],
             "e64": 324, "sdwa": 234, "dpp": 102, "kinds": {1: 13, 2: 1, 4: 2, 8: 8, 24: 0},
             "readWritten": 45, "written": {0x0, 0x1, 0x3, 0x5, 0x9, 0x11}},
    "gfx9": {"total": 1852, "families": [69, 154, 1, 48, 48, 89, 263, 22, 16, 1142],
             "e64": 328, "sdwa": 239, "dpp": 109, "kinds": {1: 13, 2: 1, 4: 3, 8: 7, 24: 0},
             "readWritten": 97, "written": {0x0, 0x1, 0x3, 0x5, 0x9, 0x11}},
    "gfx10": {"total": 1541, "families": [72, 153, 1, 54, 52, 107, 280, 22, 16, 782],
              "e64": 312, "sdwa": 0, "dpp": 0, "kinds": {1: 10, 2: 1, 4: 3, 8: 10, 24: 2},
              "readWritten": 105, "written": {0x0, 0x1, 0x3}},
}
READ_MASKS = {0x0, 0x1, 0x2, 0x3, 0x6, 0x7, 0xC, 0xE, 0xF, 0x1C, 0x1E, 0x1F}


def split_args(text):
    """Operand items of an example: split at ", ", a piece with blanks counts
    with its first word only. A parenthesised field such as
    hwreg(HW_REG_MODE, 0, 1) is one hardware operand and stays one item."""
    if not text.strip():
        return []
    items, depth = [], 0
    for piece in text.split(", "):
        if depth > 0:
            items[-1] += ", " + piece
        else:
            items.append(piece)
        depth += piece.count("(") - piece.count(")")
    return [item.split(" ")[0] if "(" not in item else item for item in items]


def load_public(gen):
    path = os.path.join(PUBLIC_DIR, f"{gen}.tsv")
    with open(path, newline="", encoding="utf-8") as handle:
        return list(csv.DictReader(handle, delimiter="\t"))


def derive(gen):
    rows = {}
    for row in load_public(gen):
        name = row["mnemonic"]
        if name in ROW_DROPS[gen]:
            continue
        rows[name] = (row["format"], split_args(row["args"]))
    for name in ROW_DROPS[gen]:
        if not any(r["mnemonic"] == name for r in load_public(gen)):
            raise ValueError(f"{gen}: dropped row {name} is not in the public list")
    for name, (fmt, _base, args, _reason) in ROW_ADDS[gen].items():
        if name in rows:
            raise ValueError(f"{gen}: added row {name} is already in the public list")
        rows[name] = (fmt, split_args(args))

    fixed = {}
    for name, gens, w, r, rw, kind in FIXED_ROWS:
        if gen in gens:
            fixed[name] = (w, r, rw, kind)

    table = []
    for name, (fmt, args) in rows.items():
        w, r, rw = rule_roles(gen, name, fmt, args)
        kind = kind_of(gen, name)
        if name in fixed:
            w, r, rw, fixed_kind = fixed[name]
            if fixed_kind is not None:
                kind = fixed_kind
        if name in ROLE_DECISIONS[gen]:
            w, r, rw, _reason = ROLE_DECISIONS[gen][name]
        table.append((name, w, r, rw, kind))
    table.sort(key=lambda row: row[0].encode("utf-8"))
    return table


def verify(gen, table):
    """Returns a list of mismatches against the expected shape."""
    expected = EXPECTED[gen]
    problems = []
    names = [row[0] for row in table]

    def check(label, got, want):
        if got != want:
            problems.append(f"{gen}: {label}: got {got}, expected {want}")

    check("total", len(table), expected["total"])
    # The family counts leave out the two GFX10 immediate-barrier rows, which
    # the program completes at start-up (see data/isa/README.md).
    static_names = [row[0] for row in table if row[4] != KIND_IMMEDIATE | KIND_BARRIER]
    for family, want in zip(FAMILIES, expected["families"]):
        check(f"family {family}", sum(1 for n in static_names if n.startswith(family)), want)
    for suffix in ("e64", "sdwa", "dpp"):
        check(f"suffix _{suffix}", sum(1 for n in names if n.startswith("v_") and n.endswith("_" + suffix)),
              expected[suffix])
    check("_e32 rows", sum(1 for n in names if n.endswith("_e32")), 0)
    for kind, want in expected["kinds"].items():
        check(f"kind {kind}", sum(1 for row in table if row[4] == kind), want)
    check("readWritten rows", sum(1 for row in table if row[3] == 0x1), expected["readWritten"])
    check("readWritten masks", {row[3] for row in table} - {0, 0x1}, set())
    check("written masks", {row[1] for row in table}, expected["written"])
    bad_read = sorted({row[2] for row in table} - READ_MASKS)
    check("read masks outside the allowed set", [hex(m) for m in bad_read], [])
    check("sorted and unique", names == sorted(set(names), key=lambda n: n.encode("utf-8")), True)
    return problems


def render(table):
    lines = ["\t".join(HEADER)]
    for name, w, r, rw, kind in table:
        lines.append(f"{name}\t{w:#x}\t{r:#x}\t{rw:#x}\t{kind}")
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--check", action="store_true", help="verify data/isa/*.tsv instead of writing")
    parser.add_argument("--out", default=DATA_DIR, help="output directory (default data/isa)")
    args = parser.parse_args()

    status = 0
    for gen in GENERATIONS:
        table = derive(gen)
        problems = verify(gen, table)
        for problem in problems:
            print(problem, file=sys.stderr)
        if problems:
            status = 1
        text = render(table)
        path = os.path.join(DATA_DIR if args.check else args.out, f"{gen}.tsv")
        if args.check:
            with open(path, encoding="utf-8") as handle:
                if handle.read() != text:
                    print(f"{path} differs from the derivation", file=sys.stderr)
                    status = 1
        else:
            os.makedirs(args.out, exist_ok=True)
            with open(path, "w", encoding="utf-8", newline="\n") as handle:
                handle.write(text)
            print(f"{gen}: {len(table)} rows -> {os.path.relpath(path, ROOT)}")
    if args.check and status == 0:
        print("data tables are up to date")
    return status


if __name__ == "__main__":
    sys.exit(main())
