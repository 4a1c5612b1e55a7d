#!/usr/bin/env python3
"""Traces the calls of every command to the system: it opens what it is named, what belongs to that, and nothing else."""

from __future__ import annotations

import argparse
import shutil
import sys
import tempfile
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))

from opened_files import STRACE, Places, strange_calls  # noqa: E402
from scenarios import DONE, OUTPUT, STORE, World, of_name, scenarios  # noqa: E402


def main() -> int:
    """The command line; 1 when a command opens anything else, 77 without strace."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    parser.add_argument("--only", default="", help="one command, by its name here")
    arguments = parser.parse_args()
    chosen = of_name(arguments.only, [(scenario.name, scenario) for scenario in scenarios()])
    if shutil.which("strace") is None:
        print("strace is not installed")
        return 77
    wrong = 0
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name).resolve()
        world = World(arguments.tool, folder)
        trace = folder / "trace"
        settings = folder / "home" / ".config" / "dlpctl"
        settings.mkdir(parents=True)
        (settings / "config.toml").touch()
        places = Places(world.work, folder / "home", folder / "editing", store=STORE, read="in", written=OUTPUT,
                        more=f"{folder}/policies")
        for scenario in chosen:
            world.start(scenario)
            run = world.again(scenario, {"TMPDIR": f"{folder}/editing"}, before=(*STRACE, str(trace)))
            found = [] if run.code in DONE else [f"exit {run.code}: {run.err}"]
            found += strange_calls(trace.read_text(errors="replace"), places, bool(scenario.editor))
            wrong += len(found)
            for line in found:
                print(f"{scenario.name}: {line.rstrip()}", flush=True)
    print(f"{len(chosen)} commands traced, {wrong} calls that none of their files explains")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
