#!/usr/bin/env python3
"""Damages a store in seeded ways and sees what dlpctl makes of it: right, or refused with what to do.

Each damaged store is dumped, exported, checked, imported into and restored. A run must give exactly what it gives on the
whole store, or end with 4 and one line that says what to do; never crash, never give anything else. A check that calls
the store sound must be right, and after a restore the store holds what the backup holds.

A store whose last unit of work is in the log alone may also be as before that unit when the log is damaged. A store of the
first version has no checksums: damage that leaves the file's structure whole may change its content before it is brought up,
which nothing can tell; from then on it is held as all others. One of the second version has checksums of records, and is
held as all others at once.

A page that is put back to what an earlier unit of work left there fits its place and its checksum. What commands answer then
is counted apart.
"""
import argparse
import collections
import pathlib
import random
import re
import shutil
import sqlite3
import sys

import earlier_pages
import stores
from stores import PAGE

ADVICE = re.compile(rb"store restore|use that version|copy it to where|name another path")


def flip(data, dice):
    for _ in range(dice.choice((1, 1, 2, 8, 64))):
        place = dice.randrange(len(data))
        data[place] ^= 1 << dice.randrange(8)


def flip_in_page(data, dice):
    """Where the engine keeps what it finds records by: the beginning of a page."""
    place = dice.randrange(len(data) // PAGE) * PAGE + dice.randrange(64)
    data[place] ^= 1 << dice.randrange(8)


def flip_in_header(data, dice):
    data[dice.randrange(100)] ^= 1 << dice.randrange(8)


def cut(data, dice):
    """To one byte at least: a file of none is a store that is still to be made."""
    del data[dice.randrange(1, len(data)):]


def cut_pages(data, dice):
    del data[dice.randrange(1, len(data) // PAGE) * PAGE:]


def swap_pages(data, dice):
    one, other = (page * PAGE for page in dice.sample(range(len(data) // PAGE), 2))
    data[one:one + PAGE], data[other:other + PAGE] = data[other:other + PAGE], data[one:one + PAGE]


def copy_page(data, dice):
    one, other = (page * PAGE for page in dice.sample(range(len(data) // PAGE), 2))
    data[one:one + PAGE] = data[other:other + PAGE]


def zeros(data, dice):
    start = dice.randrange(len(data))
    count = min(dice.choice((16, 512, 4096, PAGE, 65536)), len(data) - start)
    data[start:start + count] = bytes(count)


def noise(data, dice):
    start = dice.randrange(len(data))
    count = min(dice.choice((4, 512, PAGE)), len(data) - start)
    data[start:start + count] = dice.randbytes(count)


def append(data, dice):
    data += dice.choice((b"\0", b"x" * PAGE, dice.randbytes(dice.randrange(1, 3 * PAGE))))


def foreign(data, dice):
    data[:] = dice.choice((b"x", b"<?xml version='1.0'?><SAPolicy/>", b"\0" * 100, b"SQLite format 3\0" + b"\xff" * 5000,
                           dice.randbytes(dice.randrange(1, 3 * PAGE))))


def exchanged_name(data, dice):
    """One record's text for another's of the same length, everywhere or once."""
    data[:] = bytes(data).replace(b"number 1", b"number 2", dice.choice((-1, 1, 2)))


BYTES = (flip, flip, flip, flip_in_page, flip_in_header, cut, cut_pages, swap_pages, copy_page, zeros, noise, append,
         foreign, exchanged_name)


def foreign_database(path, dice):
    path.unlink()
    with sqlite3.connect(path) as database:
        database.execute("CREATE TABLE expressions (subject TEXT)")
        if dice.random() < 0.5:
            database.execute("PRAGMA user_version = 2")
    database.close()


def other_version(path, dice):
    """As another version would have left it, without what only this one knows."""
    with sqlite3.connect(path) as database:
        database.execute(f"PRAGMA user_version = {dice.choice((0, 1, 2, 4, 5, 1000, -1))}")
    database.close()


def newer_version(path, dice):
    """To be refused as such, and to be kept by whatever restores."""
    stores.make_newer_version(path, stores.VERSION + dice.choice((1, 2, 1000)))


def changed_by_sql(path, dice):
    """By a program that writes databases but knows nothing of checksums."""
    table = dice.choice(("expressions", "keyword_lists", "templates"))
    statement = dice.choice((f"DELETE FROM {table} WHERE rowid = 3", f"DELETE FROM {table}", f"DROP TABLE {table}",
                             f"UPDATE {table} SET scope = 'x' WHERE rowid = 2", "DELETE FROM totals",
                             f"UPDATE {table} SET description = NULL || 'x', scope = x'ff' WHERE rowid = 1",
                             "UPDATE totals SET records = records + 1"))
    with sqlite3.connect(path) as database:
        try:
            database.execute(statement)
        except sqlite3.Error:
            database.execute("UPDATE totals SET checksum = 1")
    database.close()


def first_version(path, _):
    """To be brought up and read right."""
    stores.make_first_version(path)


FILES = (foreign_database, other_version, newer_version, changed_by_sql, first_version)
NEWER = b"newer version"
JOURNAL = (flip, flip, cut, zeros, noise, append)  # of the log that holds a unit of work, whose frames are chained
LOGGED, UNSUMMED, RENEWED = 0.15, 0.15, 0.1  # how often it is that log, a store of the first version, or one brought up
SECOND = 0.1  # how often one of the second version
SECOND_VERSION = "second version, "
EARLIER = 0.1  # how often a page of it is an earlier one
EARLIER_PAGE = "earlier page, "
REFUSED, RIGHT, UNTOLD = "refused", "read right", "changed, with nothing to tell by"
PARTLY = "read as it was by a command"
WRONG = "wrong"
PLAIN = (flip, flip_in_page, cut, cut_pages, swap_pages, copy_page, zeros, noise, append)


class Trial:
    """What the whole store gives, and whether a damaged one gives that or is refused."""

    def __init__(self, tool, folder):
        self.tool = tool
        self.whole = folder / "whole.db"
        self.backup = folder / "backup.db"
        self.more = folder / "more.xml"
        (folder / "policy.xml").write_text(stores.policy(40))
        self.more.write_text(stores.policy(3, "other"))
        tool.get(self.whole, "-q", "import", folder / "policy.xml")
        tool.get(self.whole, "store", "backup", self.backup)
        self.bytes = self.whole.read_bytes()
        self.commands = {
            ("store", "dump"): None, ("--json", "list", "templates"): None, ("export", "--all"): None,
            ("--json", "show", "expression", "number 17"): None, ("--json", "refs"): None, ("store", "check"): None,
        }
        for command in self.commands:
            self.commands[command] = self.tool.answer(self.whole, command)
        after = folder / "after.db"
        shutil.copy(self.whole, after)
        tool.get(after, "-q", "import", self.more)
        self.after = tool.get(after, "store", "dump")
        self.dump = self.commands[("store", "dump")][1]
        self.make_logged(folder)
        unsummed = folder / "unsummed.db"
        shutil.copy(self.whole, unsummed)
        stores.make_first_version(unsummed)
        self.unsummed = unsummed.read_bytes()
        second = folder / "second.db"
        shutil.copy(self.whole, second)
        stores.make_second_version(second)
        self.second = second.read_bytes()
        tool.get(unsummed, "store", "load", "-", data=self.dump.decode())
        self.renewed = unsummed.read_bytes()
        self.earlier = earlier_pages.EarlierPages(tool, folder, self.bytes, ADVICE.search)

    def make_logged(self, folder):
        """A store whose last import is in its log alone, because somebody had it open."""
        store = folder / "logged.db"
        shutil.copy(self.whole, store)
        with stores.reading(store):
            self.tool.get(store, "-q", "import", self.more)
            self.logged = store.read_bytes(), pathlib.Path(f"{store}-wal").read_bytes()
        self.after_commands = {command: self.tool.answer(store, command) for command in self.commands}

    def try_logged(self, store, seed):
        """As before the unit in the log, as after it, or refused."""
        dice = random.Random(seed)
        how = dice.choice(JOURNAL)
        data = bytearray(self.logged[1])
        how(data, dice)
        faults, refused = [], False
        for command in self.commands:
            stores.remove(store)
            store.write_bytes(self.logged[0])
            pathlib.Path(f"{store}-wal").write_bytes(data)
            code, out, err = self.tool.answer(store, command)
            refused |= code not in (0, 1)
            fault = None if (code, out) == self.after_commands[command][:2] else self.wrong(store, command, code, out, err)
            faults += [fault] if fault else []
        return f"log, {how.__name__}", REFUSED if refused else RIGHT, faults

    def try_unsummed(self, store, seed):
        """Right, refused or, where the structure is whole, brought up as something else that is sound from then on."""
        dice = random.Random(seed)
        how = dice.choice(PLAIN)
        data = bytearray(self.unsummed)
        how(data, dice)
        faults, verdicts = [], set()
        for command in self.commands:
            stores.remove(store)
            store.write_bytes(data)
            code, out, err = self.tool.answer(store, command)
            refused = self.wrong(store, command, code, out, err)
            if (code, out) == self.commands[command][:2]:
                verdicts.add(RIGHT)
            elif refused is None:
                verdicts.add(REFUSED)
            elif code not in (0, 1, 2):  # 2: no export of it
                faults.append(refused)
            else:
                verdicts.add(UNTOLD)
                faults += self.try_renewed(store)
        faults += self.try_restore(store)
        verdict = next(verdict for verdict in (UNTOLD, REFUSED, RIGHT) if verdict in verdicts or faults)
        return f"first version, {how.__name__}", verdict, faults

    def try_renewed(self, store):
        """By what writes it, it has checksums of pages, and nothing that contradicts itself."""
        self.tool.run(store, "-q", "import", self.more)
        check, dump = self.tool.run(store, "store", "check"), self.tool.run(store, "store", "dump")
        whole = check.returncode in (0, 1) and b"damaged: " not in check.stdout  # what it lacks is not damage
        sound = store.read_bytes()[20] == 8 and whole and dump.returncode == 0
        return [] if sound else [f"brought up, and not sound: {check.stdout[:300]!r} {dump.stderr[:300]!r}"]

    def try_earlier(self, seed):
        """One page of one change."""
        dice = random.Random(seed)
        name = dice.choice(list(earlier_pages.CHANGES))
        verdicts = self.earlier.try_one(name, dice.choice(self.earlier.change(name).pages)).values()
        return EARLIER_PAGE + name, next(word for verdict, word in (
            (earlier_pages.WRONG, PARTLY), (earlier_pages.TOLD, PARTLY), (earlier_pages.REFUSED, REFUSED), (earlier_pages.RIGHT, RIGHT))
            if verdict in verdicts), []

    def damage(self, store, seed, whole):
        """Returns what was done, in a word."""
        dice = random.Random(seed)
        store.write_bytes(whole)
        how = dice.choice(BYTES * 2 + FILES)
        if how in FILES:
            how(store, dice)
        else:
            data = bytearray(whole)
            how(data, dice)
            store.write_bytes(data)
        return how.__name__

    def wrong(self, store, command, code, out, err):
        """What is wrong in an answer; None when nothing is. A refusal is (4, one line with what to do)."""
        if (code, out) == self.commands[command][:2]:
            return None
        if command == ("store", "check") and code == 1:
            return None if b"damaged: " in out else "found something without saying what"
        if code != 4:
            return f"{' '.join(command)} ended with {code}: {out[:200]!r} {err[:300]!r}"
        return None if ADVICE.search(err) or ADVICE.search(out) else f"{' '.join(command)}: no advice in {err[:300]!r}"

    def try_one(self, store, seed, second=False):
        """Returns (how, verdict, list of what is wrong); second: it is a store of the second version."""
        stores.remove(store)
        kind = 1 if second else random.Random(f"kind {seed}").random()
        if kind < LOGGED:
            return self.try_logged(store, seed)
        if kind < LOGGED + UNSUMMED:
            return self.try_unsummed(store, seed)
        name, whole = "", self.bytes
        if kind < LOGGED + UNSUMMED + RENEWED:
            name, whole = "brought up, ", self.renewed
        elif kind >= 1 - SECOND:
            name, whole = SECOND_VERSION, self.second
        elif kind >= 1 - SECOND - EARLIER:
            return self.try_earlier(seed)
        how = name + self.damage(store, seed, whole)
        if how.endswith(newer_version.__name__) and whole is not self.second:
            return how, REFUSED, self.try_newer(store)
        faults, refused = [], False
        for command in self.commands:
            code, out, err = self.tool.answer(store, command)
            refused |= code != self.commands[command][0]
            fault = self.wrong(store, command, code, out, err)
            faults += [fault] if fault else []
        faults += self.try_import(store)
        faults += self.try_restore(store)
        return how, REFUSED if refused else RIGHT, faults

    def try_newer(self, store):
        """Every command says that it is one, and leaves it as it is."""
        before, faults = store.read_bytes(), []
        for command in (*self.commands, ("-q", "import", self.more), ("store", "restore", self.backup),
                        ("store", "backup", store.with_suffix(".backup"))):
            code, out, err = self.tool.answer(store, command)
            told = code == 4 and NEWER in err and (not out or NEWER in out)  # in JSON too
            if not told or store.read_bytes() != before:
                faults.append(f"{' '.join(map(str, command))} ended with {code}: {out[:200]!r} {err[:300]!r}")
        return faults

    def try_import(self, store):
        copy = store.with_suffix(".import")
        stores.remove(copy)
        shutil.copy(store, copy)
        run = self.tool.run(copy, "-q", "import", self.more)
        if run.returncode == 4:
            return [] if ADVICE.search(run.stderr) else [f"import: no advice in {run.stderr[:300]!r}"]
        if run.returncode != 0:
            return [f"import ended with {run.returncode}: {run.stderr[:300]!r}"]
        dump = self.tool.run(copy, "store", "dump")
        right = dump.returncode == 4 or dump.stdout == self.after
        return [] if right else [f"import into it gave another store: {dump.stdout[:200]!r}"]

    def try_restore(self, store):
        run = self.tool.run(store, "store", "restore", self.backup)
        if run.returncode != 0:
            kept = (b"newer version", b"another program's")
            return [] if any(word in run.stderr for word in kept) else [f"restore ended with {run.returncode}: {run.stderr!r}"]
        dump = self.tool.run(store, "store", "dump")
        for former in store.parent.glob(store.name + ".*"):
            former.unlink()
        return [] if dump.stdout == self.dump else [f"restore gave another store: {dump.stdout[:200]!r}"]


def tell_of_earlier(counts):
    """Of each command, how often which became of it."""
    for command, of in counts.items():
        print(f"{command}: " + ", ".join(f"{of[verdict]} {verdict}" for verdict in earlier_pages.VERDICTS))
    return 0 if counts else 1


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tool", required=True)
    parser.add_argument("--count", type=int, default=100)
    parser.add_argument("--seed", type=int, default=1, help="the first one")
    parser.add_argument("--second", action="store_true", help="stores of the second version alone")
    parser.add_argument("--earlier", action="store_true", help="every page of some changes put back, alone")
    arguments = parser.parse_args()
    verdicts = {kind: collections.Counter() for kind in ("", "first version, ", SECOND_VERSION, "brought up, ", EARLIER_PAGE)}
    with stores.scratch() as folder:
        folder = pathlib.Path(folder)
        trial = Trial(stores.Tool(arguments.tool), folder)
        if arguments.earlier:
            return tell_of_earlier(trial.earlier.try_all())
        for seed in range(arguments.seed, arguments.seed + arguments.count):
            how, verdict, faults = trial.try_one(folder / "damaged.db", seed, arguments.second)
            kind = next(kind for kind in reversed(verdicts) if how.startswith(kind))
            verdicts[kind][WRONG if faults else verdict] += 1
            for fault in faults:
                print(f"seed {seed} ({how}): {fault}")
    for kind, counts in ((kind, counts) for kind, counts in verdicts.items() if counts):
        print(f"{kind}{counts.total()} damaged stores: " + ", ".join(f"{counts[verdict]} {verdict}" for verdict in (
            REFUSED, RIGHT, UNTOLD, PARTLY, WRONG) if counts[verdict] or verdict == WRONG))
    return 1 if any(counts[WRONG] for counts in verdicts.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
