#!/usr/bin/env python3
"""Sets the clock back at each look that commands of dlpctl take at it: they must do exactly what they do otherwise."""

from __future__ import annotations

import argparse
import sys
import tempfile
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))

from scenarios import DONE, Judge, World, scenarios  # noqa: E402

STEPS = (1, 3600, 10**9)


def main() -> int:
    """The command line; 1 when a command does anything else."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    parser.add_argument("--library", required=True, type=Path, help="path of what is loaded before the system's libraries")
    arguments = parser.parse_args()
    library = str(arguments.library.resolve())
    runs = wrong = 0
    with tempfile.TemporaryDirectory() as name:
        world = World(arguments.tool, Path(name))
        for scenario in scenarios():
            judge = Judge(world, scenario)
            for seconds in STEPS:
                run = world.run(scenario, {"LD_PRELOAD": library, "DLP_FAULT_CLOCK": str(seconds)})
                found = judge.fault(run) or ("" if run.code in DONE else f"exit {run.code}: {run.err}")
                runs += 1
                wrong += bool(found)
                if found:
                    print(f"{scenario.name}, {seconds} s back: {found.rstrip()}", flush=True)
    print(f"{runs} runs with a clock that is set back, {wrong} wrong")
    return 1 if wrong or runs == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
