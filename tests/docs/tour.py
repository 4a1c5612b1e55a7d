#!/usr/bin/env python3
"""Runs what docs/tour.md tells its reader to run, in an empty folder, and compares what it shows with what comes.

A block marked "console" holds commands, each after "$ ", with further lines of it after "> ", and what they print. All
commands of the page run in one shell. --write puts what came into the page.
"""

from __future__ import annotations

import argparse
import difflib
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
PAGE = ROOT / "docs" / "tour.md"
BLOCK = re.compile(r"(?<=^```console\n).*?(?=^```$)", re.MULTILINE | re.DOTALL)
COMMAND = re.compile(r"^\$ .*\n(?:> .*\n)*", re.MULTILINE)
MARK = "\x1e"


def run(tool: Path, commands: list[str]) -> list[str]:
    """What each command prints. The exit code of one is there for the next to ask for."""
    script = "".join(f"{command}\ncode=$?; printf '{MARK}'; (exit $code)\n" for command in commands)
    with tempfile.TemporaryDirectory() as folder:
        environment = {
            "HOME": folder,
            "PATH": f"{tool.parent}:{os.environ['PATH']}",
            "DLP_INSTALL_PATH": str(ROOT),
            "LC_ALL": "C.UTF-8",
        }
        shell = subprocess.run(["bash", "-c", script], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120, check=False)
    return shell.stdout.decode().split(MARK)[:-1]


def as_typed(lines: str) -> str:
    """The lines of a command without their prompts."""
    return "".join(line[2:] for line in lines.splitlines(keepends=True))


def as_run(tool: Path, page: str) -> str:
    """The page with what its commands print now."""
    shown = [command for block in BLOCK.findall(page) for command in COMMAND.findall(block)]
    printed = run(tool, [as_typed(command) for command in shown])
    if len(printed) != len(shown):
        sys.exit(f"the shell ended after {len(printed)} of {len(shown)} commands")
    answers = iter(printed)
    return BLOCK.sub(lambda block: "".join(command + next(answers) for command in COMMAND.findall(block[0])), page)


def main() -> int:
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument("--tool", type=Path, required=True)
    options.add_argument("--write", action="store_true")
    arguments = options.parse_args()
    page = PAGE.read_text()
    came = as_run(arguments.tool.resolve(), page)
    if arguments.write:
        PAGE.write_text(came)
        return 0
    sys.stdout.writelines(difflib.unified_diff(page.splitlines(True), came.splitlines(True), "shown", "came"))
    return int(page != came or "$ dlpctl" not in page)


if __name__ == "__main__":
    sys.exit(main())
