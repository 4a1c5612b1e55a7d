#!/usr/bin/env python3
"""Runs commands of dlpctl where the system denies them something: on full disks, on a file system that may only be read
and in folders and on files without permission. The whole effect or none, said in words; the next run works.

Full disks and file systems that may only be read are mounted in a name space of their own, where that is permitted.
"""

from __future__ import annotations

import argparse
import contextlib
import os
import random
import subprocess
import sys
import tempfile
from collections import Counter
from collections.abc import Iterator
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))

from scenarios import STORE, TOO_LATE, Judge, World, scenarios  # noqa: E402

NOBODY = 65534
DISK = 4 << 20
ROOMS = (0, 4096, 8192, 16384, 32768, 65536, 131072, 262144)
NAME_SPACES = (("unshare", "-m"), ("unshare", "-Urm"))
# What is denied to whom: (words, path below the folder, its mode meanwhile).
PERMISSIONS = (("a folder that may not be entered", ".", 0), ("a folder that may not be changed", ".", 0o555),
               ("a store that may not be changed", STORE, 0o444), ("a store that may not be read", STORE, 0o200))


@contextlib.contextmanager
def mode(path: Path, bits: int) -> Iterator[None]:
    """Another mode for a while."""
    if not path.exists():
        yield
        return
    before = path.stat().st_mode & 0o7777
    path.chmod(bits)
    yield
    path.chmod(before)


@contextlib.contextmanager
def full(folder: Path, room: int) -> Iterator[None]:
    """A disk on which that much is left."""
    filler = folder / ".filler"
    with filler.open("wb") as file:
        status = os.statvfs(folder)
        os.posix_fallocate(file.fileno(), 0, max(status.f_bavail * status.f_bsize - room, 1))
    yield
    filler.unlink()


@contextlib.contextmanager
def read_only(folder: Path) -> Iterator[None]:
    """A file system on which nothing can be written."""
    subprocess.run(["mount", "-o", "remount,ro", str(folder)], check=True)
    yield
    subprocess.run(["mount", "-o", "remount,rw", str(folder)], check=True)


class Trials:
    """Runs and what came of them."""

    def __init__(self, world: World) -> None:
        self._world = world
        self.plans: list[tuple] = []
        self.codes: Counter[int] = Counter()
        self.wrong = 0

    def plan(self, name: str, make, answer_files: bool = True) -> None:
        """Every command, while the context that make() returns holds."""
        self.plans += [(name, make, scenario) for scenario in scenarios() if answer_files or not scenario.answer_file]

    def run(self, sample: int, chance: random.Random) -> None:
        """That many of them; 0: every one."""
        judges: dict[str, Judge] = {}
        for name, make, scenario in chance.sample(self.plans, min(sample, len(self.plans))) if sample else self.plans:
            if scenario.name not in judges:
                judges[scenario.name] = Judge(self._world, scenario)
            run = self._world.run(scenario, {}, make())
            self.codes[run.code] += 1
            found = judges[scenario.name].fault(run)
            if not found and TOO_LATE in run.err:
                found = "the store was changed for an answer that could not be written"
            if found:
                self.wrong += 1
                print(f"{scenario.name}, {name}: {found.rstrip()}", flush=True)


def plan_permissions(trials: Trials, world: World) -> None:
    """As somebody else than root, who may do anything."""
    if os.geteuid() == 0:
        world.user = NOBODY
    for name, path, bits in PERMISSIONS:
        trials.plan(name, lambda path=path, bits=bits: mode(world.work / path, bits))


def plan_mounts(trials: Trials, world: World) -> None:
    """On a small disk in memory."""
    subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={DISK}", "tmpfs", str(world.work)], check=True)
    trials.plan("a file system that may only be read", lambda: read_only(world.work), answer_files=False)
    for room in ROOMS:
        trials.plan(f"a disk with {room} bytes left", lambda room=room: full(world.work, room))


def can_mount(name_space: tuple[str, ...]) -> bool:
    """Whether the system lets us."""
    try:
        with tempfile.TemporaryDirectory() as folder:
            return subprocess.run([*name_space, "mount", "-t", "tmpfs", "tmpfs", folder], capture_output=True,
                                  check=False).returncode == 0
    except OSError:
        return False


def try_mounts() -> int:
    """The same program in a name space of its own."""
    for name_space in NAME_SPACES:
        if can_mount(name_space):
            return subprocess.run([*name_space, sys.executable, *sys.argv, "--mounts"], check=False).returncode
    print("nothing may be mounted here: no full disk and no file system that may only be read was tried")
    return 0


def main() -> int:
    """The command line; 1 when a run leaves something between."""
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    parser.add_argument("--seed", type=int, default=1, help="what draws the sample")
    parser.add_argument("--sample", type=int, default=0, help="how many runs of each part; 0: every one")
    parser.add_argument("--mounts", action="store_true", help="the part that needs a name space, in this one")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as name:
        Path(name).chmod(0o755)
        world = World(arguments.tool, Path(name))
        trials = Trials(world)
        (plan_mounts if arguments.mounts else plan_permissions)(trials, world)
        trials.run(arguments.sample, random.Random(arguments.seed))
        if arguments.mounts:
            subprocess.run(["umount", str(world.work)], check=True)
    runs = sum(trials.codes.values())
    print(f"{runs} runs {'on full and read-only disks' if arguments.mounts else 'without permission'}, "
          f"{trials.wrong} wrong; exit codes "
          + ", ".join(f"{code}: {count}" for code, count in sorted(trials.codes.items())), flush=True)
    failed = trials.wrong != 0 or runs == 0
    return 1 if failed or (not arguments.mounts and try_mounts() != 0) else 0


if __name__ == "__main__":
    sys.exit(main())
