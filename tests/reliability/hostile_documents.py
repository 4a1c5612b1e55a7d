#!/usr/bin/env python3
"""Hands hostile documents to every command of dlpctl that reads a file: refused or taken, in time, and nothing else is touched."""

from __future__ import annotations

import argparse
import itertools
import random
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))

from hostile import EITHER, Hostile, cuts, doctypes, encodings, flips, large  # noqa: E402
from launcher import Launcher  # noqa: E402
from opened_files import STRACE, Places, strange_calls  # noqa: E402

ROOT = Path(__file__).resolve().parent.parent.parent
MEBIBYTE = 1 << 20
# What 15 MB may cost. A smaller document may take as much time as they, and of the memory what the program takes for
# itself (its code, the store's pages) and its share of the rest.
UNIT = 15 * MEBIBYTE
SECONDS = 2.0
PEAK = 256 * MEBIBYTE
OWN = 40 * MEBIBYTE
PATIENCE = 600
# Commands and the exit codes that they may have; None: those of the document.
COMMANDS: dict[str, tuple[tuple[str, ...], tuple[int, ...] | None]] = {
    "import": (("import", "{in}"), None),
    "assets import": (("assets", "import", "{in}"), EITHER),
    "check": (("check", "{in}"), EITHER),
    "diff": (("diff", "{in}", "store"), EITHER),
    "refs": (("refs", "{in}"), EITHER),
    "fmt": (("fmt", "{in}"), EITHER),
    "convert": (("convert", "{in}"), EITHER),
    "store load": (("store", "load", "{in}"), (2,)),
}
EFFECTLESS = ("check", "diff", "refs", "fmt", "convert")


class Tool:
    """dlpctl with a home and an empty store."""

    def __init__(self, path: str, folder: Path) -> None:
        self._path = str(Path(path).resolve())
        self._launcher = Launcher()
        self.folder = folder
        self.home = folder / "home"
        self.file = folder / "in"
        (self.home / "config").mkdir(parents=True)
        for name in ("PredefinedDLPPolicy.xml", "cfg_dlp_da_map.txt"):
            shutil.copy(ROOT / "config" / name, self.home / "config" / name)
        self.clear()
        self.empty = self.dump()

    def _start(self, words: tuple[str, ...]) -> list[str]:
        return [self._path, "-q", "--home", str(self.home), "--store", f"sqlite:{self.folder}/store.db",
                *(word.format(**{"in": self.file}) for word in words)]

    def dump(self) -> bytes:
        """The whole store."""
        return subprocess.run(self._start(("store", "dump")), capture_output=True, check=True).stdout

    def knows(self, name: str) -> bool:
        """Whether there is such a command."""
        told = subprocess.run([self._path, "--help"], capture_output=True, check=True, text=True).stdout
        return f"\n  {name} " in told

    def clear(self) -> None:
        """An empty store is left."""
        for path in self.folder.glob("store.db*"):
            path.unlink()
        (self.folder / "store.db").touch(0o600)

    def run(self, words: tuple[str, ...], before: tuple[str, ...] = ()) -> tuple[int, float, int, str]:
        """Exit code, seconds of the processor, peak of memory in bytes, errors."""
        errors = self.folder / "err"
        measured = self._launcher.run([*before, *self._start(words)], str(errors), PATIENCE)
        with errors.open("rb") as err:
            return *measured, err.read(300).decode(errors="replace")

    def close(self) -> None:
        """Nothing is run any more."""
        self._launcher.close()


class Trial:
    """Counts what was tried and what was wrong."""

    def __init__(self, tool: Tool, commands: list[str], *, measures_time: bool, measures_memory: bool) -> None:
        self._tool = tool
        self._measures_time = measures_time
        self._measures_memory = measures_memory
        self._commands = [name for name in commands if tool.knows(name)]
        self.runs = self.wrong = 0
        self.slowest = (0.0, "")
        self.largest = (0.0, "")

    def _complain(self, what: str, wrong: str) -> None:
        self.wrong += 1
        print(f"{what}: {wrong.rstrip()}", flush=True)

    def _measure(self, what: str, document: Hostile, seconds: float, peak: int) -> None:
        size = len(document.data)
        share = max(1.0, size / UNIT)
        self.slowest = max(self.slowest, (seconds / share, what))
        allowed = (OWN + (PEAK - OWN) * size / UNIT) * document.memory
        self.largest = max(self.largest, (peak / allowed * document.memory * PEAK / MEBIBYTE, what))
        if self._measures_time and seconds > SECONDS * share:
            self._complain(what, f"{seconds:.1f} s for {size / MEBIBYTE:.0f} MiB")
        if self._measures_memory and peak > allowed:
            self._complain(what, f"{peak / MEBIBYTE:.0f} MiB of memory for {size / MEBIBYTE:.0f} MiB")

    def one(self, document: Hostile, commands: list[str] | None = None) -> None:
        """One document through all commands."""
        self._tool.file.write_bytes(document.data)
        for name in self._commands if commands is None else commands:
            words, codes = COMMANDS[name]
            self._tool.clear()
            what = f"{document.name}, {name}"
            code, seconds, peak, err = self._tool.run(words)
            self.runs += 1
            if code not in (document.codes if codes is None else codes):
                self._complain(what, f"exit {code}: {err}")
            if code == 2 and name != "check" and not err.startswith("dlpctl: "):
                self._complain(what, f"exit 2 without a word: {err}")
            if (code == 2 or name in EFFECTLESS) and not self._is_empty():
                self._complain(what, "the store has changed")
            if name in EFFECTLESS and self._tool.file.read_bytes() != document.data:
                self._complain(what, "the document has changed")
            self._measure(what, document, seconds, peak)

    def _is_empty(self) -> bool:
        dump = self._tool.dump()
        return b'"subject"' not in dump

    def traced(self, document: Hostile) -> None:
        """Nothing but what is named is opened, connected to or started."""
        self._tool.file.write_bytes(document.data)
        places = Places(self._tool.folder, self._tool.home, Path(tempfile.gettempdir()), store="store.db", read="in", written="out")
        for name in self._commands:
            self._tool.clear()
            trace = self._tool.folder / "trace"
            self._tool.run(COMMANDS[name][0], (*STRACE, str(trace)))
            self.runs += 1
            for line in strange_calls(trace.read_text(errors="replace"), places):
                self._complain(f"{document.name}, {name}", line)


def main() -> int:
    """The command line; 1 when a document does what it should not, 77 when --trace finds no strace."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    parser.add_argument("--seed", type=int, default=1, help="what draws the sample")
    parser.add_argument("--sample", type=int, default=0, help="how many cuts and flipped bits; 0: every one")
    parser.add_argument("--size", type=float, default=15, help="MiB of the large documents")
    parser.add_argument("--measure", action="store_true", help="hold time and memory against their bounds")
    parser.add_argument("--measure-memory", action="store_true", help="memory alone, and the large documents alone")
    parser.add_argument("--commands", default=",".join(COMMANDS), help="those to try, separated by commas")
    parser.add_argument("--trace", action="store_true", help="look at the calls to the system instead")
    arguments = parser.parse_args()
    if arguments.trace and shutil.which("strace") is None:
        print("strace is not installed")
        return 77
    chance = random.Random(arguments.seed)
    begun = time.monotonic()
    with tempfile.TemporaryDirectory() as name:
        tool = Tool(arguments.tool, Path(name))
        trial = Trial(tool, arguments.commands.split(","), measures_time=arguments.measure,
                      measures_memory=arguments.measure or arguments.measure_memory)
        documents = itertools.chain(doctypes(), encodings())
        for document in itertools.chain(() if arguments.measure_memory else documents,
                                        large(int(arguments.size * MEBIBYTE))):
            if arguments.trace:
                trial.traced(document)
            else:
                trial.one(document)
        if arguments.trace:
            for document in (*cuts(chance, arguments.sample), *flips(chance, arguments.sample)):
                trial.traced(document)
        elif not arguments.measure_memory:
            for document in (*cuts(chance, arguments.sample), *flips(chance, arguments.sample)):
                trial.one(document, ["import"] if arguments.sample else None)
        tool.close()
    costs = "" if arguments.trace else (f"; dearest per 15 MiB: {trial.slowest[0]:.2f} s ({trial.slowest[1]}), "
                                        f"{trial.largest[0]:.0f} MiB ({trial.largest[1]})")
    print(f"{trial.runs} runs, {trial.wrong} wrong{costs}; {time.monotonic() - begun:.0f} s")
    return 1 if trial.wrong or trial.runs == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
