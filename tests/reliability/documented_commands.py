#!/usr/bin/env python3
"""Holds the commands that a page names against the programs: they are there, and have and get the options they need."""

from __future__ import annotations

import argparse
import functools
import os
import re
import shlex
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
COMMAND = re.compile(r"`(tests/reliability/\w+\.py)( [^`]*)?`")
OPTION = re.compile(r"--[\w-]+")


@functools.cache
def usage(program: str) -> str:
    """What it says about its options; those that it needs are not in brackets."""
    said = subprocess.run([sys.executable, ROOT / program, "--help"], capture_output=True, text=True, check=True).stdout
    return said.partition("\n\n")[0].replace("[-h]", "")


def faults(program: str, words: str) -> list[str]:
    """What is wrong with a command."""
    if not os.access(ROOT / program, os.X_OK):
        return ["is no program"]
    given = {word for word in shlex.split(words) if OPTION.fullmatch(word)}
    known = set(OPTION.findall(usage(program)))
    needed = set(OPTION.findall(re.sub(r"\[[^]]*\]", "", usage(program))))
    return ([f"has no {option}" for option in sorted(given - known)]
            + [f"needs {option}" for option in sorted(needed - given)])


def main() -> int:
    """The command line; 1 when a command cannot be run as it is written."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("pages", nargs="+", type=Path)
    arguments = parser.parse_args()
    commands = [(page, *found) for page in arguments.pages for found in COMMAND.findall(page.read_text(encoding="utf-8"))]
    named = [(page, program, words) for page, program, words in commands if words]  # without words it is the program's name
    wrong = [f"{page}: {program}{words} {fault}" for page, program, words in named for fault in faults(program, words)]
    print("\n".join([*wrong, f"{len(named)} commands, {len(wrong)} wrong"]))
    return 1 if wrong or not named else 0


if __name__ == "__main__":
    sys.exit(main())
