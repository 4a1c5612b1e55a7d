#!/usr/bin/env python3
"""Lets many processes come at once upon a store of an older version, which the first that writes brings up.

They list, dump, check, import items of their own, and in every second round restore a backup of an older version; one
that imports may be killed (-9). Each dump must show one state of the store: what it held at first, or what the backup
holds, with whole imports. Every import that has ended must be in the store in the end, or in what the restore has put
aside; every check finds the store whole, and the backup stays as it is.
"""
import argparse
import collections
import json
import pathlib
import random
import shutil
import subprocess
import sys
import time

import stores

IMPORTS = 3
READERS = (("store", "dump"), ("store", "check"), ("list", "templates"))
KINDS = ("expressions", "keyword_lists", "templates")
BEFORE_RESTORE = ".before-restore"
LATEST_KILL = 0.15  # seconds
ENOUGH = 20  # rounds, in some of which a process must have been killed before it ended


def records(dump):
    """All records of a dump, by kind and subject."""
    read = json.loads(dump)
    return {(kind, record["subject"]): record for kind in KINDS for record in read[kind]}


class Round:
    """One store of an older version, the processes that came upon it, and what they have shown and left."""

    def __init__(self, trial, seed):
        self.trial = trial
        self.dice = random.Random(seed)
        self.store = trial.folder / "round" / "store.db"
        shutil.rmtree(self.store.parent, ignore_errors=True)
        self.store.parent.mkdir()
        self.store.write_bytes(self.dice.choice(trial.older))
        self.restores = self.dice.random() < 0.5
        self.killed = self.dice.choice((None, *range(IMPORTS)))
        self.at_once = self.dice.random() < 0.25  # before it may have ended, however quick the machine
        self.kept, self.maybe = set(), set()  # imports that have ended, and the one that may have
        self.figures = collections.Counter()
        self.faults = []

    def run(self):
        """Starts them all, waits for their ends, and judges what they leave."""
        lines = [(("-q", "import", self.trial.documents[i]), i) for i in range(IMPORTS)]
        lines += [(self.dice.choice(READERS), None) for _ in range(4)]
        lines += [(("store", "restore", self.trial.backup), None)] if self.restores else []
        self.dice.shuffle(lines)
        begun = [(line, number, self.start(line, number)) for line, number in lines]
        self.kill_late([process for _, number, process in begun if number is not None and number == self.killed])
        for line, number, process in begun:
            out, err = process.communicate(timeout=stores.SECONDS)
            self.judge(line, number, process.returncode, out, err)
        try:
            self.judge_end()
        except RuntimeError as error:  # of a command that must succeed
            self.faults.append(str(error))

    def start(self, line, number):
        process = self.trial.tool.start(self.store, *line)
        if self.at_once and number is not None and number == self.killed:
            process.kill()
        return process

    def kill_late(self, processes):
        for process in processes:
            time.sleep(self.dice.uniform(0, LATEST_KILL))
            process.kill()

    def judge(self, line, number, code, out, err):
        self.figures["killed" if code == -9 else "ended"] += 1
        if code == -9:
            self.maybe.add(number)
        elif code != 0:
            self.faults.append(f"{' '.join(map(str, line))} ended with {code}: {(out + err).decode()[:300]}")
        elif number is not None:
            self.kept.add(number)
        elif line[-1] == "dump":
            self.find_imports("a dump", out, least=set())

    def find_imports(self, what, dump, least):
        """The imports that a dump shows; it must show what it began with, or the backup, and nothing else."""
        found = records(dump)
        shown = {number for number, content in enumerate(self.trial.imported) if content.items() <= found.items()}
        rest = {key: record for key, record in found.items()
                if not any(key in self.trial.imported[number] for number in shown)}
        if rest not in ((self.trial.start, self.trial.restored) if self.restores else (self.trial.start,)):
            self.faults.append(f"{what} is of no state: {sorted(key[1] for key in rest)}")
        if not least <= shown:
            self.faults.append(f"{what} lacks the imports {sorted(least - shown)}")
        return shown

    def judge_end(self):
        """Nothing is lost, and nothing is left but by who was killed."""
        tool = self.trial.tool
        check = tool.run(self.store, "store", "check")
        if check.returncode != 0:
            self.faults.append(f"check in the end: {(check.stdout + check.stderr).decode()[:300]}")
            return
        former = pathlib.Path(f"{self.store}{BEFORE_RESTORE}")
        saved = self.find_imports("what was put aside", tool.get(former, "store", "dump"), set()) if self.restores else set()
        self.find_imports("the store", tool.get(self.store, "store", "dump"), self.kept - saved)
        if self.trial.backup.read_bytes() != self.trial.backup_bytes:
            self.faults.append("the backup is changed")
        left = self.find_left()
        self.figures["left files of killed ones"] += bool(left)
        if left and self.maybe:
            left = self.find_left_after_all()
        if left:
            self.faults.append(f"left: {sorted(left)}")

    def find_left(self):
        return {path.name for path in self.store.parent.iterdir()
                if path.name not in (self.store.name, f"{self.store.name}{BEFORE_RESTORE}")}

    def find_left_after_all(self):
        """One more writer, and one more that makes a file for the store, take all that is known for a killed one's."""
        self.trial.tool.get(self.store, "-q", "import", self.trial.documents[0])
        self.trial.tool.get(self.trial.backup, "store", "backup", self.store)
        new = f"{self.store.name}.new-"
        return {name for name in self.find_left() if not name.startswith(new) or self.has_note(name[:len(new) + 6])}

    def has_note(self, name):
        note = self.store.with_name(f"{name}-maker")
        return note.exists() and note.stat().st_size > 0


class Trial:
    """What all rounds begin with."""

    def __init__(self, tool, folder):
        self.tool, self.folder = tool, folder
        self.documents, self.imported = [], []
        for number in range(IMPORTS):
            self.documents.append(folder / f"{number}.xml")
            self.imported.append(self.make_store(self.documents[-1], 4, f"import {number}")[1])
        start, self.start = self.make_store(folder / "start.xml", 40, "start")
        self.backup, self.restored = self.make_store(folder / "backup.xml", 5, "backup")
        stores.make_first_version(self.backup)
        self.backup_bytes = self.backup.read_bytes()
        self.older = []
        for make in (stores.make_first_version, stores.make_second_version):
            shutil.copy(start, folder / "older.db")
            make(folder / "older.db")
            self.older.append((folder / "older.db").read_bytes())

    def make_store(self, document, count, words):
        """A store of so many items, and its records."""
        document.write_text(stores.policy(count, words))
        store = document.with_suffix(".db")
        self.tool.get(store, "-q", "import", document)
        return store, records(self.tool.get(store, "store", "dump"))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tool", required=True)
    parser.add_argument("--count", type=int, default=10, help="how many rounds")
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    figures = collections.Counter()
    with stores.scratch() as folder:
        trial = Trial(stores.Tool(arguments.tool), pathlib.Path(folder))
        for seed in range(arguments.seed, arguments.seed + arguments.count):
            once = Round(trial, seed)
            once.run()
            figures.update(once.figures)
            figures.update(rounds=1, restores=once.restores, wrong=bool(once.faults))
            for fault in once.faults:
                print(f"seed {seed}: {fault}")
    print(f"{figures['rounds']} older stores, {figures['ended']} processes that ended, {figures['restores']} of them "
          f"restores, {figures['killed']} killed; {figures['left files of killed ones']} times files are left; "
          f"{figures['wrong']} wrong")
    too_quick = figures["rounds"] >= ENOUGH and not figures["killed"]
    return 1 if figures["wrong"] or too_quick else 0


if __name__ == "__main__":
    sys.exit(main())
