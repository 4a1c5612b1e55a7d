#!/usr/bin/env python3
"""Lets requests for memory fail in commands of dlpctl, once or from then on: the whole effect or none, no crash."""

from __future__ import annotations

import argparse
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

END = 100  # requests


def requests(world: World, scenario, library: str, folder: Path) -> int:
    """How often the undisturbed command asks for memory."""
    count = folder / "count"
    world.run(scenario, {"LD_PRELOAD": library, "DLP_FAULT_MEMORY_COUNT": str(count)})
    return int(count.read_text(encoding="ascii"))


def main() -> int:
    """The command line; 1 when a run crashes or leaves something between."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    parser.add_argument("--library", required=True, type=Path, help="path of what is loaded before the system's libraries")
    parser.add_argument("--seed", type=int, default=1, help="what draws the sample")
    parser.add_argument("--sample", type=int, default=0, help="how many requests of each command; 0: every one")
    parser.add_argument("--only", default="", help="one command, by its name here")
    arguments = parser.parse_args()
    chosen = of_name(arguments.only, [(scenario.name, scenario) for scenario in scenarios()])
    library = str(arguments.library.resolve())
    chance = random.Random(arguments.seed)
    begun = time.monotonic()
    codes: Counter[int] = Counter()
    total = wrong = 0
    with tempfile.TemporaryDirectory() as name:
        world = World(arguments.tool, Path(name))
        for scenario in chosen:
            judge = Judge(world, scenario)
            count = requests(world, scenario, library, Path(name))
            total += count
            numbers = range(1, count + 1)
            if arguments.sample:
                # Half of them at the end, where something may be done already.
                late = chance.sample(numbers[-END:], min(arguments.sample // 2, END, count))
                numbers = sorted({*late, *chance.sample(numbers, min(arguments.sample - len(late), count))})
            for number in numbers:
                fault = {"LD_PRELOAD": library, "DLP_FAULT_MEMORY": str(number)}
                if chance.random() < 0.2:
                    fault["DLP_FAULT_LASTING"] = "1"
                try:
                    run = world.run(scenario, fault)
                    codes[run.code] += 1
                    found = judge.fault(run)
                except subprocess.TimeoutExpired:
                    found = "no end"
                if found:
                    wrong += 1
                    lasting = " and later" if "DLP_FAULT_LASTING" in fault else ""
                    print(f"{scenario.name}: request {number}{lasting}: {found.rstrip()}", flush=True)
    runs = sum(codes.values())
    print(f"{runs} runs with a failing request ({total} requests), {wrong} wrong; exit codes "
          + ", ".join(f"{code}: {count}" for code, count in sorted(codes.items()))
          + f"; {time.monotonic() - begun:.0f} s")
    return 1 if wrong or runs == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
