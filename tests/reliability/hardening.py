#!/usr/bin/env python3
"""Reads from the built program and libraries whether they are hardened as cmake/Hardening.cmake says."""

from __future__ import annotations

import argparse
import functools
import json
import platform
import re
import shlex
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
ROOMS = ("api", "cli", "digital_assets", "metadata", "platform", "settings", "templates", "xml")
COMPILER = re.compile(r"(g\+\+|clang\+\+|c\+\+)(-\d+)?")
INTEL = platform.machine() == "x86_64"
MARK = r"x86 feature:.*\bIBT, SHSTK\b"
STARTS = ("Scrt1.o", "crti.o", "crtbeginS.o", "crtendS.o", "crtn.o")


def readelf(option: str, file: Path) -> str:
    """What readelf says of a file."""
    return subprocess.run(["readelf", "-W", option, str(file)], capture_output=True, check=True, text=True).stdout


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
    return found


def last(words: list[str], *beginnings: str) -> str:
    """The last of the words that begin so, which is the one that counts; "" when there is none."""
    return next((word for word in reversed(words) if word.startswith(beginnings)), "")


@functools.cache
def fortified(compiler: str) -> str:
    """What copies are checked with: GCC before 12 knows less."""
    macros = subprocess.run([compiler, "-dM", "-E", "-x", "c++", "/dev/null"], capture_output=True, check=True, text=True).stdout
    version = re.search(r"^#define __GNUC__ (\d+)$", macros, re.MULTILINE)
    return "2" if "__clang__" not in macros and version is not None and int(version[1]) < 12 else "3"


def unflagged(words: list[str]) -> list[str]:
    """What leaves nothing to be read back, and is missing in a compilation."""
    compiler = next(word for word in words if COMPILER.fullmatch(Path(word).name))
    wanted = {("-fstack-protector", "-fno-stack-protector"): "-fstack-protector-strong",
              ("-fstack-clash-protection", "-fno-stack-clash-protection"): "-fstack-clash-protection",
              ("-D_FORTIFY_SOURCE", "-U_FORTIFY_SOURCE"): "-D_FORTIFY_SOURCE=" + fortified(compiler)}
    if INTEL:
        wanted[("-fcf-protection",)] = "-fcf-protection"
    return [f"compiled with {last(words, *beginnings) or 'nothing'} instead of {flag}" for beginnings, flag in wanted.items()
            if last(words, *beginnings) != flag]


def find_compilations(commands: Path) -> list[tuple[str, list[str], Path]]:
    """(source, words, object) of what the program and the libraries are made of."""
    found = []
    for command in json.loads(commands.read_text(encoding="utf-8")):
        source = Path(command["file"])
        if source.is_relative_to(ROOT) and source.relative_to(ROOT).parts[0] in ROOMS:
            words = shlex.split(command["command"])
            found.append((str(source), words, Path(command["directory"]) / words[words.index("-o") + 1]))
    return found


def marked(files: list[Path]) -> list[bool]:
    """Whether each says that jumps in it lead to where they should, and returns to where they came from."""
    return [bool(re.search(MARK, readelf("-n", file))) for file in files]


def unmarked(compilations: list[tuple[str, list[str], Path]], linked: list[Path]) -> list[str]:
    """What does not say so: every object must, and what is linked where the files that the system starts it with do."""
    objects = [made for _, _, made in compilations if made.exists()]
    found = [f"{file}: jumps and returns are not checked" for file, mark in zip(objects, marked(objects)) if not mark]
    compiler = next(word for word in compilations[0][1] if COMPILER.fullmatch(Path(word).name))
    starts = [Path(subprocess.run([compiler, f"-print-file-name={name}"], capture_output=True, check=True, text=True).stdout.strip())
              for name in STARTS]
    if all(marked(starts)):
        found += [f"{file}: jumps and returns are not checked" for file, mark in zip(linked, marked(linked)) if not mark]
    return found if objects else ["no object of a source is there"]


def main() -> int:
    """The command line; 1 when something is missing, 77 without what reads files."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", required=True, type=Path, help="path of dlpctl")
    parser.add_argument("--library", required=True, type=Path, action="append", help="path of a library")
    parser.add_argument("--commands", required=True, type=Path, help="compile_commands.json of the build")
    arguments = parser.parse_args()
    if shutil.which("readelf") is None:
        print("binutils are not installed")
        return 77
    compilations = find_compilations(arguments.commands)
    wrong = [f"{source}: {fault}" for source, words, _ in compilations for fault in unflagged(words)]
    wrong += [] if compilations else [f"{arguments.commands} names no source of {ROOT}"]
    if INTEL and compilations:
        wrong += unmarked(compilations, [arguments.tool, *arguments.library])
    for file in (arguments.tool, *arguments.library):
        wrong += [f"{file}: {fault}" for fault in faults(file, file == arguments.tool)]
    print("\n".join(wrong) or f"{1 + len(arguments.library)} files of {len(compilations)} sources are hardened")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
