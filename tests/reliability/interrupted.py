#!/usr/bin/env python3
"""Interrupts commands at random moments and takes their output away: the exit code tells, nothing is between."""

from __future__ import annotations

import argparse
import random
import signal
import subprocess
import sys
import tempfile
import time
from collections import Counter
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))

from hostile import entity, policy  # noqa: E402
from scenarios import BACKUP, DONE, EMPTY_STORE, Scenario, World, scenarios  # noqa: E402

LARGE = policy("".join(entity(f"e{i}") for i in range(3000)))
OTHER = policy("".join(entity(f"o{i}") for i in range(3000)))
SIGNALS = {signal.SIGHUP: 129, signal.SIGINT: 130, signal.SIGTERM: 143}
OUTPUT_FAILED = 4


FLAWED = LARGE.replace(b'<entity ', b'<entity caseSensitive="no" ')
WORDS = b"keyword,score\n" + b"".join(b"word %d,1\n" % number for number in range(20000))
INTERRUPTED = (
    Scenario("import", ("import", "{in}"), LARGE),
    Scenario("import --report", ("import", "--report", "{out}", "{in}"), LARGE, old_output=b"old", reports=True),
    Scenario("keywords import", ("keywords", "import", "payment-card-words", "{in}"), WORDS),
    Scenario("keywords export -o", ("keywords", "export", "payment-card-words", "-o", "{out}"), old_output=b"old"),
    Scenario("rename", ("rename", "expression", "bic", "bank-code")),
    Scenario("delete", ("delete", "expression", "bic", "--force")),
    Scenario("template set", ("template", "set", "bank-accounts", "P:bic(7)")),
    Scenario("store load", ("store", "load", "{in}"), EMPTY_STORE.encode()),
    Scenario("store restore", ("store", "restore", "{in}"), BACKUP),
    Scenario("store restore, damaged store", ("store", "restore", "{in}"), BACKUP, damaged=True, long=True),
    Scenario("store backup", ("store", "backup", "{out}"), long=True),
    Scenario("import, store of the first version", ("import", "{in}"), LARGE, older=True),
    Scenario("check --fix of two files", ("check", "--fix", "{in}", "{out}"), FLAWED, old_output=FLAWED),
    Scenario("import of two files", ("import", "{in}", "{out}"), LARGE, old_output=OTHER),
)
# What stays of a command that is undone: what it had finished.
FINISHED = {"import of two files": Scenario("import", ("import", "{in}"), LARGE, old_output=OTHER)}


def between(world: World, before: dict[str, bytes], whole: dict[str, bytes], reports: bool) -> list[str]:
    """The files that are neither as before nor as the whole command leaves them."""
    return [name for name, data in world.files().items()
            if data not in (before.get(name), whole.get(name)) and not (reports and data.endswith(b"}\n"))]


def watches(process: int, kind: signal.Signals) -> bool:
    """Whether the program has said what is to become of such a signal."""
    try:
        status = Path(f"/proc/{process}/status").read_text(encoding="ascii", errors="replace")
    except OSError:
        return False
    caught = [line.split()[1] for line in status.splitlines() if line.startswith("SigCgt:")]
    return bool(caught) and bool(int(caught[0], 16) >> (kind - 1) & 1)


def interrupted(world: World, scenario: Scenario, chance: random.Random, count: int, codes: Counter[str]) -> list[str]:
    """What is wrong after a command that a signal ended, or came too late for."""
    kept = {world.before(scenario)}
    if scenario.name in FINISHED:
        kept.add(world.run(FINISHED[scenario.name], {}).dump)
        world.start(scenario)
    files, names = world.files(), world.store_names()
    begun = time.monotonic()
    done = subprocess.run(world.line(scenario.words), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    duration = time.monotonic() - begun
    if done.returncode not in DONE:
        return [f"{scenario.name}: exit {done.returncode} undisturbed"]
    whole, after, names_after = world.dump(), world.files(), world.store_names()
    found = []
    for number in range(count):
        kind = chance.choice(list(SIGNALS))
        delay = chance.uniform(0, duration) if number else 0
        world.start(scenario)
        process = subprocess.Popen(world.line(scenario.words), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(delay)
        # The first signal comes as soon as it is watched for, so that even a few runs interrupt something.
        while not number and process.poll() is None and not watches(process.pid, kind):
            time.sleep(0.001)
        watched = watches(process.pid, kind)
        process.send_signal(kind)
        code = process.wait(60)
        codes[str(code)] += 1
        said = f"{scenario.name}: {kind.name} after {delay:.3f} s: exit {code}"
        # Before the program watches for signals it has done nothing.
        undone = code == SIGNALS[kind] or (code == -kind and not watched)
        if not undone and code not in DONE:
            found.append(said)
        elif world.dump() not in (kept if undone else {whole}):
            found.append(f"{said}, and the store is between")
        elif (left := world.store_names()) != (names if undone else names_after):
            found.append(f"{said}, and beside the store are {left}")
        elif cut := between(world, files, after, scenario.reports):
            found.append(f"{said}, and files are between: {cut}")
    return found


def unread(world: World, codes: Counter[str]) -> list[str]:
    """What is wrong with commands whose output nobody takes."""
    found = []
    for scenario in scenarios():
        words = scenario.words
        if scenario.standard_input or scenario.editor or "-o" in words:
            continue
        late = words[:2] == ("store", "restore")  # it answers when it is done
        before = world.before(scenario)
        for name, tail in (("/dev/full", ">/dev/full"), ("a closed pipe", "| :; exit ${PIPESTATUS[0]}")):
            world.start(scenario)
            # The reader is gone before the first word when the writer waits for it.
            shell = f'"$@" {tail}' if tail[0] == ">" else f'{{ sleep 0.1; "$@"; }} {tail}'
            loud = [word for word in world.line(words) if word != "-q"]
            done = subprocess.run(["bash", "-c", shell, "bash", *loud], stdin=subprocess.DEVNULL,
                                  stderr=subprocess.PIPE, check=False)
            codes[str(done.returncode)] += 1
            if done.returncode != OUTPUT_FAILED:
                found.append(f"{scenario.name} to {name}: exit {done.returncode}: {done.stderr.decode()}")
            if name == "a closed pipe" and done.stderr:
                found.append(f"{scenario.name} to {name}: {done.stderr.decode()}")
            if world.dump() != before and not late:
                found.append(f"{scenario.name} to {name}: the store has changed")
    return found


def main() -> int:
    """The command line; 1 when something is wrong."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    parser.add_argument("--seed", type=int, default=1, help="what draws signals and moments")
    parser.add_argument("--count", type=int, default=300, help="how many commands are interrupted, as many of each kind")
    arguments = parser.parse_args()
    for kind in SIGNALS:
        if signal.getsignal(kind) == signal.SIG_IGN:  # what a shell's background job hands on to the commands
            signal.signal(kind, signal.SIG_DFL)
    codes: Counter[str] = Counter()
    with tempfile.TemporaryDirectory() as name:
        world = World(arguments.tool, Path(name))
        chance = random.Random(arguments.seed)
        found = unread(world, codes)
        for scenario in INTERRUPTED:
            found += interrupted(world, scenario, chance, -(-arguments.count // len(INTERRUPTED)), codes)
    print("\n".join(found + [f"{sum(codes.values())} runs, {len(found)} wrong; exit codes "
                             + ", ".join(f"{code}: {count}" for code, count in sorted(codes.items()))]))
    return 1 if found or not sum(codes[str(code)] for code in SIGNALS.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
