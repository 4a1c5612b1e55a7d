#!/usr/bin/env python3
"""Moves the store away under commands of dlpctl, before each of their calls to the system, or puts another one in its
place: the whole effect on one of the two, or a word and neither changed.
"""

from __future__ import annotations

import argparse
import contextlib
import random
import shutil
import sqlite3
import sys
import tempfile
from collections import Counter
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))

from failing_calls import calls  # noqa: E402
from scenarios import DONE, REFUSED, STORE, Result, Scenario, World, scenarios  # noqa: E402

COMMANDS = ("import", "import --json", "assets import", "export -o", "store dump -o", "store load", "rename", "delete",
            "store backup", "store restore", "store check", "template set", "expression set", "keywords add", "list", "show",
            "refs")
# What has been written before the store went is in the file that went.
ELSEWHERE = "what was written is in the file that stood there before"
LOG = "-wal"
UNKNOWN_NAME = 1
OTHER = b"""<SAPolicy template_version="3.0.1000"><digitalAssets><entity name="other" type="Generic" display_name="Other">
<regularExpression>b+</regularExpression></entity></digitalAssets></SAPolicy>"""
FILLING = Scenario("other", ("assets", "import", "{in}"), OTHER, store=False)


def logged(world: World) -> tuple[bytes, bytes]:
    """A store and its log, which holds a unit of work that the file lacks."""
    path = world.work / STORE
    world.run(FILLING, {})
    with contextlib.closing(sqlite3.connect(path, isolation_level=None)) as reader:
        reader.execute("BEGIN")
        reader.execute("SELECT count(*) FROM sqlite_master").fetchone()
        (world.work / "in").write_bytes(OTHER.replace(b"other", b"later"))
        world.again(FILLING, {})
        return path.read_bytes(), path.with_name(STORE + LOG).read_bytes()


class Trial:
    """One command, and what it does to the store, to the other one and where there is none."""

    def __init__(self, world: World, scenario, other: bytes | None, log: bytes | None = None) -> None:
        self._world = world
        self._scenario = scenario
        self._other = other
        self._log = log
        self._before = world.before(scenario)
        self._whole = world.run(scenario, {})
        self._aside = {name for name in self._whole.files if name.startswith(STORE + ".")}
        world.start(scenario)
        self._put_other(STORE)
        self._other_before = world.dump()
        self._other_whole = world.again(scenario, {})

    def _put_other(self, name: str) -> None:
        path = self._world.work / name
        path.unlink(missing_ok=True)
        if self._other is not None:
            path.write_bytes(self._other)
            path.chmod(0o600)
        if self._log is not None:
            log = path.with_name(name + LOG)
            log.write_bytes(self._log)
            log.chmod(0o600)

    def run(self, environment: dict[str, str]) -> tuple[Result, str]:
        """What it has shown, and what is wrong."""
        world = self._world
        world.start(self._scenario)
        self._put_other(STORE + ".other")
        run = world.again(self._scenario, environment | {"DLP_FAULT_MOVED": str(world.work / STORE)})
        moved = world.work / (STORE + ".moved")
        if not moved.exists():
            return run, "" if run.dump == self._whole.dump else "the store was not moved"
        # A file that goes without what stands beside it has what was kept before.
        (world.work / "moved").mkdir()
        shutil.move(moved, world.work / "moved" / STORE)
        log = world.work / (STORE + ".moved" + LOG)
        if log.exists():
            shutil.move(log, world.work / "moved" / (STORE + LOG))
        former = world.dump(Path("moved") / STORE)
        shutil.rmtree(world.work / "moved")
        return run, self._fault(run, former)

    def _fault(self, run: Result, former: str) -> str:
        kept = (former, run.dump)
        untouched = kept == (self._before, self._other_before)
        if run.code in DONE or run.code == self._other_whole.code:
            shown = (run.out, run.output)
            on_former = shown == (self._whole.out, self._whole.output) and kept == (self._whole.dump, self._other_before)
            on_other = (run.code, *shown) == (self._other_whole.code, self._other_whole.out, self._other_whole.output) \
                and kept == (self._before, self._other_whole.dump)
            if on_former or on_other:
                return ""
        # Where the store is gone it holds nothing, so that what a command names is not there.
        if self._other is None and run.code == UNKNOWN_NAME and untouched and run.err:
            return ""
        if run.code not in REFUSED or not run.err:
            return f"exit {run.code} with neither effect: {run.err}"
        late = ELSEWHERE in run.err and "nothing was written" not in run.err and kept == (self._whole.dump, self._other_before)
        if late and not self._aside <= set(run.files):
            return f"what was put aside is gone: {run.err}"
        return "" if untouched or late else f"exit {run.code}, and a store is not as before: {run.err}"


def main() -> int:
    """The command line; 1 when something is between."""
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    parser.add_argument("--library", required=True, type=Path, help="path of what is loaded before the system's libraries")
    parser.add_argument("--seed", type=int, default=1, help="what draws the sample")
    parser.add_argument("--sample", type=int, default=0, help="how many moments of each command; 0: every one")
    arguments = parser.parse_args()
    library = str(arguments.library.resolve())
    chance = random.Random(arguments.seed)
    codes: Counter[int] = Counter()
    wrong = 0
    with tempfile.TemporaryDirectory() as name:
        world = World(arguments.tool, Path(name))
        world.run(FILLING, {})
        other = (world.work / STORE).read_bytes()
        with_log = logged(world)
        for scenario in (found for found in scenarios() if found.name in COMMANDS):
            lines = calls(world, scenario, library, Path(name))
            count = len(lines)
            # One that is in use may only come before the file is open, as `store restore` takes care of.
            opening = next(number for number, line in enumerate(lines, 1) if line.startswith("open") and line.endswith(LOG))
            for what, *content in (("replaced", other), ("replaced with its log", *with_log), ("removed", None)):
                trial = Trial(world, scenario, *content)
                numbers = range(1, (count if len(content) == 1 else opening) + 1)
                drawn = chance.sample(numbers, min(arguments.sample, len(numbers))) if arguments.sample else numbers
                for number in sorted(drawn):
                    run, found = trial.run({"LD_PRELOAD": library, "DLP_FAULT_CALL": str(number)})
                    codes[run.code] += 1
                    wrong += bool(found)
                    if found:
                        print(f"{scenario.name}, {what} before call {number}: {found.rstrip()}", flush=True)
    runs = sum(codes.values())
    print(f"{runs} runs with a store that goes, {wrong} wrong; exit codes "
          + ", ".join(f"{code}: {count}" for code, count in sorted(codes.items())))
    return 1 if wrong or runs == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
