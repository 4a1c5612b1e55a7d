#!/usr/bin/env python3
"""Cuts the power in commands of dlpctl: after each change that one makes to files, several disks that may be left.

On each of them a fresh process must find the store as it was before the command or as it is after, and sound; every
other file is the whole old or the whole new one; and the command must then succeed. What a command did that has ended
stays: the last disks must have all of it. So does what it has reported before, where it reports each file by itself.

Of some disks the recovery is cut too: what a dump, a check or the command again changes there. All that holds for the
disks that this leaves, and what the first cut has left of the command's work is not lost by the second.
"""

from __future__ import annotations

import argparse
import contextlib
import random
import sys
import tempfile
import time
from collections import Counter
from collections.abc import Iterator
from dataclasses import dataclass, replace
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))

from disks import (DROPPED, KEPT, MAPPED, TORN, ZEROS, Change, Disk, Names, Pick, Record, State,  # noqa: E402
                   Synchronised, Told, Write, clear, grow)
from scenarios import (BACKUP, DONE, EXAMPLES, FIXABLE, OUTPUT, POLICY, SIDE_FILES, STORE, Scenario,  # noqa: E402
                       World, of_name, scenarios)
from stores import reading  # noqa: E402

# One of each kind.
SAMPLED = ("import, no store", "import", "store load", "rename", "export -o, replacing", "import --report",
           "store backup, replacing", "store restore", "fmt --write", "import, store of the first version")
# A log and standard output are promised by nobody; an editor has files of its own.
LEFT_OUT = ("import --log", "import --json, into a file", "template edit")
MUCH = (POLICY % "").replace("</digitalAssets>", "".join(
    f'<entity name="much {i}" type="Generic" display_name="Much {i}"><regularExpression>{"a" * 130000}</regularExpression>'
    "</entity>" for i in range(80)) + "</digitalAssets>").encode()
LOG = "-wal"
WRITER = "-writer"
PAGE = 8192
LOG_HEADER = 32
FRAME_HEADER = 24
SUM = 8  # at the end of a page
DAMAGED = "exit 4: "
EVERYTHING = "all"
CERTAIN = "what was synchronised"
LAST, ALL_BUT_LAST, BYTES = "the last change", "all but the last change", "bytes"
TELLING = (LAST, ALL_BUT_LAST, BYTES)  # ways in which it shows that something was not synchronised in time
NOTHING, FIRST, WHOLE = range(3)  # of what a command does
MOST_TOLD = 5  # of a command
AGAIN = ()  # the command itself
RECOVERIES = (("store", "dump"), ("store", "check"), AGAIN)


@dataclass(frozen=True)
class Cut:
    """A command, and what its start has beyond that of its scenario."""

    scenario: Scenario
    logged: bool = False  # another import is in the log alone
    beginning: bool = False  # it is damaged where it begins, so that nobody takes what is in the log
    read: bool = False  # another process reads the store all the time, so that the log stays
    store: str = STORE
    first: Scenario | None = None  # what is done for certain at its first report; None: it has but the last one
    points: int = 0  # how many moments are drawn; 0: every one


def cuts(sampled: bool) -> list[Cut]:
    """The commands, also where a process before has lost its power; sampled: one of each kind."""
    plain = (POLICY % "").encode()
    other = plain.replace(b"fresh", b"other")
    made = ("--store", "sqlite:{folder}/made/here/" + STORE)
    found = [Cut(scenario) for scenario in scenarios()
             if (scenario.name in SAMPLED if sampled else scenario.name not in LEFT_OUT)]
    return found + [
        Cut(Scenario("import, no folder", (*made, "import", "{in}"), plain, store=False), store="made/here/" + STORE),
        Cut(Scenario("assets import --only", ("assets", "import", "--only", "iban", "{in}"),
                     (EXAMPLES / "digital-assets.xml").read_bytes())),
        Cut(Scenario("check --fix, two files", ("check", "--no-store", "--fix", "{out}", "{in}"), FIXABLE.encode(),
                     old_output=FIXABLE.encode(), in_place=True)),
        Cut(Scenario("import --json, two files", ("--json", "import", "{in}", "{out}"), plain, old_output=other),
            first=Scenario("import", ("import", "{in}"), plain, old_output=other)),
        Cut(Scenario("import, a log", ("import", "{in}"), other), logged=True),
        Cut(Scenario("import, a reader", ("import", "{in}"), plain), read=True),
        Cut(Scenario("export -o, a log", ("export", "--all", "-o", "{out}")), logged=True),
        Cut(Scenario("store restore, a log", ("store", "restore", "{in}"), BACKUP), logged=True),
        Cut(Scenario("store restore, damaged store, a log", ("store", "restore", "{in}"), BACKUP, damaged=True),
            logged=True),
        Cut(Scenario("store restore, damaged beginning, a log", ("store", "restore", "{in}"), BACKUP, damaged=True),
            logged=True, beginning=True),
    ] + ([] if sampled else [Cut(Scenario("import, much", ("import", "{in}"), MUCH), points=30)])


def picks(change: Change, seed: str) -> list[tuple[str, Pick]]:
    """Ways in which a disk may have kept what was not synchronised when the power was cut after the change."""
    found: list[tuple[str, Pick]] = [
        (EVERYTHING, lambda _: KEPT),
        (CERTAIN, lambda _: DROPPED),
        ("names", lambda other: KEPT if isinstance(other, Names) else DROPPED),
        ("names and zeros", lambda other: KEPT if isinstance(other, Names) else ZEROS),
        (BYTES, lambda other: DROPPED if isinstance(other, Names) else KEPT),
        (LAST, lambda other: KEPT if other is change else DROPPED),
        (ALL_BUT_LAST, lambda other: DROPPED if other is change else KEPT),
    ]
    for number, share in enumerate((0.2, 0.5, 0.8)):
        found.append((f"{share:.0%} of it", drawn(random.Random(f"{seed} {number}"), share)))
    return found


def drawn(chance: random.Random, share: float) -> Pick:
    """Keeps that share, change by change or file by file."""
    by_file = chance.random() < 0.5
    known: dict[object, int] = {}

    def pick(change: Change) -> int:
        key = change.file if by_file and not isinstance(change, Names) else change
        if key not in known:
            broken = DROPPED if isinstance(change, Names) else chance.choice((DROPPED, ZEROS, TORN))
            known[key] = KEPT if chance.random() < share else broken
        return known[key]

    return pick


def numbered(files: dict[str, bytes]) -> State:
    """Each a file of its own."""
    return State({path: number for number, path in enumerate(files)}, dict(enumerate(files.values())))


def pages(file: bytes, log: bytes = b"") -> list[bytes]:
    """Those of the file, or of its log, which holds none that was given up; without the checksums, which it lacks."""
    content = bytearray(file)
    for frame in range(LOG_HEADER, len(log), FRAME_HEADER + PAGE):
        place = (int.from_bytes(log[frame:frame + 4], "big") - 1) * PAGE
        grow(content, place + PAGE)
        content[place:place + PAGE] = log[frame + FRAME_HEADER:frame + FRAME_HEADER + PAGE]
    return [bytes(content[place:place + PAGE - SUM]) for place in range(0, len(content), PAGE)]


class Trial:
    """A command that was recorded, and what the disks must hold that a power cut leaves of it."""

    def __init__(self, world: World, cut: Cut, library: str, logged: State | None) -> None:
        self._world = world
        self._scenario = world.filled_in(cut.scenario)
        self._store = cut.store
        self._trace = world.work.parent / "trace"
        self._recording = {"LD_PRELOAD": library, "DLP_RECORD_FILE": str(self._trace)}
        start = self._start(cut, logged)
        self._before = self._dump(start)
        start.put(world.work)
        self._trace.unlink(missing_ok=True)
        with reading(world.work / cut.store) if cut.read else contextlib.nullcontext():
            self.start = State.of(world.work)
            self._whole = world.again(self._scenario, self._recording)
            self._end = State.of(world.work)
        if self._whole.code not in DONE:
            raise RuntimeError(f"{cut.scenario.name}: exit {self._whole.code} undisturbed: {self._whole.err}")
        self._after = self._dump(self._end)
        self._reports = cut.first is not None
        self._first = self._start_next(cut.first) if cut.first else self._end
        self._after_first = self._dump(self._first)
        self._record = Record(world.work, self.start, self._trace.read_bytes())
        self.changes = self._record.changes
        self._require_all()
        if self._scenario.damaged and not self._is_kept(self._end):
            raise RuntimeError(f"{self._scenario.name}: what was damaged is lost: {sorted(self._end.paths)}")
        self._checks: dict[str, tuple[int, bytes, str]] = {}
        self.judged: dict[str, tuple[str, int]] = {}

    def _start(self, cut: Cut, logged: State | None) -> State:
        clear(self._world.work)
        self._world.start(cut.scenario)
        start = State.of(self._world.work)
        if not cut.logged or logged is None:
            return start
        files = {path: start.get(path) or b"" for path in start.paths} | {STORE + LOG: logged.get(STORE + LOG) or b""}
        sound = logged.get(STORE) or b""
        found = numbered(files | {STORE: sound})
        place = 0 if cut.beginning else PAGE // 2
        while cut.scenario.damaged and not self._dump(found).startswith(DAMAGED):  # the log may have that page anew
            found = numbered(files | {STORE: sound[:place] + b"damaged" + sound[place + 7:]})
            place += PAGE
        return found

    def _start_next(self, scenario: Scenario) -> State:
        """What it leaves of the start of the command."""
        self.start.put(self._world.work)
        self._world.again(scenario, {})
        return State.of(self._world.work)

    def _dump(self, state: State) -> str:
        state.put(self._world.work)
        return self._world.dump(Path(self._store))

    def _require_all(self) -> None:
        """All that was recorded makes all that is there: nothing was changed past the recording library."""
        disk = Disk(self.start)
        for change in self.changes:
            disk.change(change)
        made = disk.state(lambda _: KEPT, random.Random())
        shown = {path for path in made.paths if not path.endswith(MAPPED)}
        if shown != set(self._end.paths) or any(made.get(path) != self._end.get(path) for path in shown):
            raise RuntimeError(f"{self._scenario.name}: the record does not lead to the files that are there")

    def turns(self) -> list[int]:
        """The moments at which the store's own file has got something, and at which files of the store lose a name."""
        found = []
        for moment, (change, following) in enumerate(zip(self.changes, [*self.changes[1:], None]), 1):
            if isinstance(change, Write) and self._record.called[change.file] == self._store:
                if not isinstance(following, Write) or following.file != change.file:
                    found.append(moment)
            elif isinstance(change, Names):
                gone = {path for path, file in change.files.items() if file is None}
                if any(not path.endswith((WRITER, MAPPED)) for path in gone):
                    found.append(moment)
        return found

    def disks(self, chosen: set[tuple[int, int]] | None, seed: int) -> Iterator[tuple[int, str, State]]:
        """After each change, in each way; or those that are chosen."""
        return disks(self.start, self.changes, chosen, seed)

    def describe(self, moment: int) -> str:
        """The change before it, for people."""
        change = self.changes[moment - 1]
        kind = type(change).__name__.lower()
        if isinstance(change, Names):
            return f"{kind} {', '.join(path if file is not None else f'{path} goes' for path, file in change.files.items())}"
        if isinstance(change, Told):
            return "a report"
        if isinstance(change, Synchronised) and change.file is None:
            return f"{kind} folder {change.folder}"
        return f"{kind} {self._record.called[change.file]}"

    def fault(self, state: State, moment: int) -> str:
        """What is wrong with a disk of that moment; empty when nothing is."""
        mark = state.mark()
        if mark not in self.judged:
            self.judged[mark] = self._find_fault(state)
        found, done = self.judged[mark]
        return found or ("" if done >= self._required(moment) else "what the command has said to be done is lost")

    def second_fault(self, chance: random.Random, seed: str) -> tuple[str, str]:
        """Where the power was cut twice, and what is wrong with the disk; no place when the recovery changes nothing."""
        moment, name, first = draw(self.start, self.changes, chance, seed)
        found = self.fault(first, moment)
        # A report of the next run is another one.
        words = chance.choice([words for words in RECOVERIES if words != AGAIN or not self._scenario.reports])
        scenario = replace(self._scenario, words=self._on_store(*words)) if words else self._scenario
        first.put(self._world.work)
        start = State.of(self._world.work)
        self._trace.unlink(missing_ok=True)
        recovery = self._world.again(scenario, self._recording)
        changes = Record(self._world.work, start, self._trace.read_bytes()).changes if self._trace.exists() else []
        if not changes or found:
            return "", ""
        second_moment, second_name, second = draw(start, changes, chance, seed)
        place = (f"change {moment} of {len(self.changes)} ({self.describe(moment)}), {name}, then change {second_moment} of "
                 f"{len(changes)} of {' '.join(words) or 'the command'}, {second_name}")
        found = self.fault(second, moment)
        done, done_before = self.judged[second.mark()][1], self.judged[first.mark()][1]
        ended = words == AGAIN and recovery.code in DONE and second_moment == len(changes)
        if not found and done < (WHOLE if ended else done_before):
            found = "what was done is lost by the second cut"
        return place, found

    def _on_store(self, *words: str) -> tuple[str, ...]:
        return "--store", f"sqlite:{self._world.work}/{self._store}", *words

    def _required(self, moment: int) -> int:
        """How much must be there then."""
        if moment == len(self.changes):
            return WHOLE
        return FIRST if self._reports and any(isinstance(change, Told) for change in self.changes[:moment]) else NOTHING

    def _find_fault(self, state: State) -> tuple[str, int]:
        """And how much it has of what the command did."""
        dump = self._dump(state)
        if dump not in (self._after_first, self._after) and not self._is_before(dump):
            return f"the store is neither as before nor as after: {dump[:300]}", NOTHING
        found = self._find_fault_of_check(state, dump) or self._find_fault_of_files(state, dump)
        whole = dump == self._after and all(state.get(path) == self._end.get(path) for path in self._others(state))
        done = WHOLE if whole else FIRST if dump in (self._after_first, self._after) else NOTHING
        return found or self._find_fault_of_next(state, dump), done

    def has_effect(self, state: State) -> bool:
        """Whether the store is as after."""
        return self._dump(state) == self._after

    def _is_before(self, dump: str) -> bool:
        return dump == self._before or self._scenario.damaged and dump.startswith(DAMAGED)

    def _check(self) -> tuple[int, bytes, str]:
        check = self._world.again(replace(self._scenario, words=self._on_store("store", "check")), {})
        return check.code, check.out, check.err

    def _find_fault_of_check(self, state: State, dump: str) -> str:
        made = (self._world.work / self._store).stat().st_size if state.get(self._store) else 0
        given_up = self._scenario.damaged and dump != self._after
        if made == 0 or given_up or not dump.startswith("{"):  # nobody has finished making it, or it is to be replaced
            return ""
        found = self._check()
        if dump not in self._checks:
            before = dump == self._before and self.start.get(self._store)
            self._dump(self.start if before else self._first if dump == self._after_first else self._end)
            self._checks[dump] = self._check()
        return "" if found == self._checks[dump] else f"store check: {found}"

    def _others(self, state: State) -> list[str]:
        """What the command finds and makes but for the store."""
        of_store = {self._store + side for side in ("", *SIDE_FILES)}
        return sorted({*self.start.paths, *self._end.paths} - of_store)

    def _find_fault_of_files(self, state: State, dump: str) -> str:
        for path in self._others(state):
            if state.get(path) not in (self.start.get(path), self._end.get(path)):
                return f"{path} is neither as before nor as after"
            former = path.startswith(self._store)  # which the new content has replaced
            if former and dump == self._after and state.get(path) != self._end.get(path):
                return f"{path} is not there, and the store is as after"
        return ""

    def _find_fault_of_next(self, state: State, dump: str) -> str:
        if self._scenario.once and dump == self._after:
            return ""
        following = self._world.again(self._scenario, {})
        made = State.of(self._world.work)
        if following.code not in DONE or self._dump(made) != self._after:
            return f"the next run ends with {following.code}: {following.err}"
        left = {f"{path}{side}" for path in (self._store, "in", OUTPUT) for side in SIDE_FILES} & set(made.paths)
        left -= {self._store + WRITER} if self._before == self._after else set()  # that goes with the next writer
        if left:
            return f"the next run leaves {left}"
        if not self._scenario.reports and following.output != self._whole.output:
            return "the next run writes something else"
        if self._scenario.damaged and not self._is_kept(made):
            return f"the next run loses what was damaged: {sorted(made.paths)}"
        return ""

    def _is_kept(self, made: State) -> bool:
        """The damaged file and its log: as they were, or with the log in the file. It may have got a log."""
        file, log = self.start.get(self._store) or b"", self.start.get(self._store + LOG) or b""
        return any(made.get(path) == file and log in (b"", made.get(path + LOG))
                   or pages(made.get(path) or b"") == pages(file, log)
                   for path in made.paths if path != self._store)


def disks(start: State, changes: list[Change], chosen: set[tuple[int, int]] | None, seed: object) -> Iterator[tuple[int, str, State]]:
    """After each change, in each way; or those that are chosen."""
    disk = Disk(start)
    for number, change in enumerate(changes, 1):
        disk.change(change)
        for way, (name, pick) in enumerate(picks(change, f"{seed} {number}")):
            if chosen is None or (number, way) in chosen:
                yield number, name, disk.state(pick, random.Random(f"{seed} {number} {way}"))


def draw(start: State, changes: list[Change], chance: random.Random, seed: str) -> tuple[int, str, State]:
    """One of them."""
    chosen = {(chance.randint(1, len(changes)), chance.randrange(len(picks(changes[-1], ""))))}
    return next(disks(start, changes, chosen, seed))


def leave_log(world: World, library: str) -> State:
    """A store whose last import is in the log alone."""
    trial = Trial(world, Cut(Scenario("import, to leave a log", ("import", "{in}"), (POLICY % "").encode())), library, None)
    for _, name, state in trial.disks(None, 0):
        if name == EVERYTHING and trial.has_effect(state):
            return state
    raise RuntimeError("no import is in the log alone")


def choose(trial: Trial, cut: Cut, sample: int, chance: random.Random) -> set[tuple[int, int]] | None:
    """What is looked at: every moment in every way; of some every way; or some of some, and of the end."""
    moments = range(1, len(trial.changes) + 1)
    names = [name for name, _ in picks(trial.changes[-1], "")]
    ways = range(len(names))
    if sample:
        always = {(moments[-1], names.index(CERTAIN)), (moments[-1], chance.choice(ways))}
        drawn_ones = {(chance.choice(moments), chance.choice(ways)) for _ in range(sample - len(always))}
        return always | drawn_ones | {(moment, names.index(way)) for moment in trial.turns() for way in TELLING}
    if cut.points:
        return {(moment, way) for moment in (*chance.sample(moments, cut.points), moments[-1]) for way in ways}
    return None


def main() -> int:
    """The command line; 1 when a disk is wrong."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    parser.add_argument("--library", required=True, type=Path, help="path of what records the changes")
    parser.add_argument("--seed", type=int, default=1, help="what draws")
    parser.add_argument("--sample", type=int, default=0, help="how many disks of each command; 0: every one")
    parser.add_argument("--again", type=int, default=0, help="how many recoveries of each command are cut too")
    parser.add_argument("--only", default="", help="one command, by its name here")
    arguments = parser.parse_args()
    commands = of_name(arguments.only, [(cut.scenario.name, cut) for cut in cuts(arguments.sample > 0)])
    library = str(arguments.library.resolve())
    begun = time.monotonic()
    figures: Counter[str] = Counter()
    with tempfile.TemporaryDirectory() as name:
        world = World(arguments.tool, Path(name).resolve())
        logged = leave_log(world, library)
        for cut in commands:
            trial = Trial(world, cut, library, logged)
            if not trial.changes:
                continue
            chosen = choose(trial, cut, arguments.sample, random.Random(f"{arguments.seed} {cut.scenario.name}"))
            wrong = 0
            for moment, way, state in trial.disks(chosen, arguments.seed):
                found = trial.fault(state, moment)
                figures["disks"] += 1
                wrong += bool(found)
                if found and wrong <= MOST_TOLD:
                    print(f"{cut.scenario.name}, change {moment} of {len(trial.changes)} "
                          f"({trial.describe(moment)}), {way}: {found.rstrip()}", flush=True)
            chance = random.Random(f"{arguments.seed} {cut.scenario.name} again")
            for number in range(arguments.again):
                place, found = trial.second_fault(chance, f"{arguments.seed} again {number}")
                figures["again"] += bool(place)
                wrong += bool(found)
                if found and wrong <= MOST_TOLD:
                    print(f"{cut.scenario.name}, {place}: {found.rstrip()}", flush=True)
            figures.update(wrong=wrong, changes=len(trial.changes), commands=1, different=len(trial.judged))
            if wrong > MOST_TOLD:
                print(f"{cut.scenario.name}: {wrong} wrong")
        clear(world.work)
    print(f"{figures['disks']} disks ({figures['different']} different) after {figures['changes']} changes of "
          f"{figures['commands']} commands, {figures['again']} after a recovery that was cut too, {figures['wrong']} wrong; {time.monotonic() - begun:.0f} s")
    return 1 if figures["wrong"] or not figures["disks"] else 0


if __name__ == "__main__":
    sys.exit(main())
