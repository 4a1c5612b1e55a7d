#!/usr/bin/env python3
"""Reads from the built program and libraries whether they are hardened as cmake/Hardening.cmake says."""

from __future__ import annotations

import argparse
import json
import platform
import re
import shutil
import subprocess
import sys
from pathlib import Path

FLAGS = ("-fstack-protector-strong", "-fstack-clash-protection", "-D_FORTIFY_SOURCE=")
INTEL_FLAGS = ("-fcf-protection",)
INTEL = platform.machine() == "x86_64"
ENDBR = "endbr64"


def readelf(option: str, file: Path) -> str:
    """What readelf says of a file."""
    return subprocess.run(["readelf", "-W", option, str(file)], capture_output=True, check=True, text=True).stdout


def landing_pads(file: Path) -> bool:
    """Whether code begins with what an indirect jump may reach."""
    code = subprocess.run(["objdump", "-d", "-j", ".text", str(file)], capture_output=True, check=True, text=True).stdout
    return code.count(ENDBR) > 10


def faults(file: Path, program: bool) -> list[str]:
    """What is missing in one file."""
    found = []
    header, segments, dynamic, symbols = (readelf(option, file) for option in ("-h", "-l", "-d", "--dyn-syms"))
    if "DYN" not in header:
        found.append("its place in memory is fixed")
    if program and not re.search(r"FLAGS_1.*\bPIE\b", dynamic):
        found.append("it is no position independent program")
    if "GNU_RELRO" not in segments:
        found.append("no part is made read-only")
    if not re.search(r"\(FLAGS(_1)?\).*\bNOW\b", dynamic):
        found.append("its tables are filled late, so they stay writable")
    stack = re.search(r"GNU_STACK.*?(RW\w*) +0x", segments)
    if stack is None or "E" in stack[1]:
        found.append("the stack may be run")
    if "TEXTREL" in dynamic:
        found.append("its code is changed when it is loaded")
    if "__stack_chk_fail" not in symbols:
        found.append("no stack is guarded")
    if not re.search(r"__\w+_chk\b", symbols.replace("__stack_chk_fail", "")):
        found.append("no copy is checked")
    if "__cxa_thread_atexit" in symbols:
        found.append("a thread keeps what ends with it, and without memory to note that the system ends the program")
    if INTEL and not landing_pads(file):
        found.append("jumps are not checked")
    return found


def unflagged(commands: Path, sources: tuple[str, ...]) -> list[str]:
    """Sources that are compiled without a flag that leaves nothing to be read back."""
    found = []
    for command in json.loads(commands.read_text(encoding="utf-8")):
        if any(f"/{room}/" in command["file"] for room in sources):
            for flag in FLAGS + (INTEL_FLAGS if INTEL else ()):
                if flag not in command["command"]:
                    found.append(f"{command['file']}: compiled without {flag}")
    return found


def main() -> int:
    """The command line; 1 when something is missing, 77 without binutils."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", required=True, type=Path, help="path of dlpctl")
    parser.add_argument("--library", required=True, type=Path, action="append", help="path of a library")
    parser.add_argument("--commands", required=True, type=Path, help="compile_commands.json of the build")
    arguments = parser.parse_args()
    if shutil.which("readelf") is None or shutil.which("objdump") is None:
        print("binutils are not installed")
        return 77
    wrong = unflagged(arguments.commands, ("api", "cli", "digital_assets", "metadata", "platform", "settings", "templates", "xml"))
    for file in (arguments.tool, *arguments.library):
        wrong += [f"{file}: {fault}" for fault in faults(file, file == arguments.tool)]
    print("\n".join(wrong) or f"{1 + len(arguments.library)} files are hardened")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
