#!/usr/bin/env python3
"""Lets every call to the system fail in commands of dlpctl, once or from then on: the whole effect or none."""

from __future__ import annotations

import argparse
import errno
import random
import subprocess
import sys
import tempfile
import time
from collections import Counter
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))

from scenarios import Judge, World, of_name, scenarios  # noqa: E402

SHORT = "short"
OPENING = (errno.EACCES, errno.EMFILE, errno.ENOSPC, errno.EINTR, errno.EIO)
LOOKING = (errno.EACCES, errno.EIO)
CHANGING = (errno.EACCES, errno.ENOSPC, errno.EIO)
WRITING = (errno.ENOSPC, errno.EIO, errno.EINTR, SHORT)
READING = (errno.EIO, errno.EINTR, SHORT)
SYNCING = (errno.EIO, errno.ENOSPC, errno.EINTR)
LOCKING = (errno.EACCES, errno.ENOLCK, errno.EINTR, errno.EIO)
MAPPING = (errno.ENOMEM, errno.EACCES)
ERRORS = {
    "open": OPENING, "open64": OPENING, "openat": OPENING, "__open_2": OPENING, "fopen": OPENING, "fopen64": OPENING,
    "mkostemp": OPENING, "mkdtemp": OPENING, "opendir": OPENING, "fdopendir": OPENING,
    "read": READING, "pread": READING, "pread64": READING, "fread": (errno.EIO,),
    "write": WRITING, "writev": WRITING, "pwrite": WRITING, "pwrite64": WRITING, "fwrite": (errno.ENOSPC,),
    "fflush": (errno.ENOSPC,), "fsync": SYNCING, "fdatasync": SYNCING, "sync_file_range": SYNCING,
    "ftruncate": SYNCING, "ftruncate64": SYNCING,
    "fallocate": SYNCING, "close": SYNCING,
    "fcntl": LOCKING, "fcntl64": LOCKING, "mmap": MAPPING, "mmap64": MAPPING, "munmap": (errno.ENOMEM,),
    "flock": (errno.EWOULDBLOCK, errno.ENOLCK, errno.EINTR), "ioctl": (errno.ENOTTY,), "isatty": (errno.ENOTTY,),
    "rename": CHANGING, "renameat2": CHANGING, "link": CHANGING, "mkdir": CHANGING, "rmdir": CHANGING,
    "unlink": CHANGING, "remove": CHANGING, "unlinkat": CHANGING, "chmod": CHANGING, "chown": CHANGING, "fchmod": CHANGING, "fchown": CHANGING,
}
# At the start of the program, by the C++ library, before there is anything to lose.
UNIMPORTANT = ("fflush",)


def calls(world: World, scenario, library: str, folder: Path) -> list[str]:
    """What the undisturbed command calls, in order."""
    trace = folder / "trace"
    trace.unlink(missing_ok=True)
    world.run(scenario, {"LD_PRELOAD": library, "DLP_FAULT_TRACE": str(trace)})
    return trace.read_text(encoding="utf-8", errors="replace").splitlines()


def faults_of(lines: list[str]) -> list[dict[str, str]]:
    """Every way in which one of them can fail."""
    found = []
    for number, line in enumerate(lines, 1):
        function = line.partition("\t")[0]
        for error in () if function in UNIMPORTANT else ERRORS.get(function, LOOKING):
            once = {"DLP_FAULT_CALL": str(number), "DLP_FAULT_ERROR": str(error)}
            found.append(once)
            if error not in (errno.EINTR, SHORT):
                found.append(once | {"DLP_FAULT_LASTING": "1"})
    return found


def describe(line: str, fault: dict[str, str]) -> str:
    """For people."""
    error = fault["DLP_FAULT_ERROR"]
    name = error if error == SHORT else errno.errorcode[int(error)]
    function, _, detail = line.partition("\t")
    lasting = " from then on" if "DLP_FAULT_LASTING" in fault else ""
    return f"call {fault['DLP_FAULT_CALL']}, {function}({detail}): {name}{lasting}"


def main() -> int:
    """The command line; 1 when a run leaves something between."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    parser.add_argument("--library", required=True, type=Path, help="path of what is loaded before the system's libraries")
    parser.add_argument("--seed", type=int, default=1, help="what draws the sample")
    parser.add_argument("--sample", type=int, default=0, help="how many faults of each command; 0: every one")
    parser.add_argument("--only", default="", help="one command, by its name here")
    arguments = parser.parse_args()
    chosen = of_name(arguments.only, [(scenario.name, scenario) for scenario in scenarios()])
    library = str(arguments.library.resolve())
    chance = random.Random(arguments.seed)
    begun = time.monotonic()
    codes: Counter[int] = Counter()
    sites = wrong = 0
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        world = World(arguments.tool, folder)
        for scenario in chosen:
            judge = Judge(world, scenario)
            lines = calls(world, scenario, library, folder)
            sites += len(lines)
            faults = faults_of(lines)
            if arguments.sample:
                faults = chance.sample(faults, min(arguments.sample, len(faults)))
            for fault in faults:
                line = lines[int(fault["DLP_FAULT_CALL"]) - 1]
                try:
                    run = world.run(scenario, fault | {"LD_PRELOAD": library})
                    codes[run.code] += 1
                    mute = line.startswith("write\t") and "DLP_FAULT_LASTING" in fault
                    found = judge.fault(run, mute)
                except subprocess.TimeoutExpired:
                    found = "no end"
                if found:
                    wrong += 1
                    print(f"{scenario.name}: {describe(line, fault)}: {found.rstrip()}", flush=True)
    runs = sum(codes.values())
    print(f"{runs} runs with a failing call ({sites} call sites), {wrong} wrong; exit codes "
          + ", ".join(f"{code}: {count}" for code, count in sorted(codes.items()))
          + f"; {time.monotonic() - begun:.0f} s")
    return 1 if wrong or runs == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
