"""Commands of dlpctl to be disturbed, each with the files it starts from, and what a disturbed run may leave behind."""

from __future__ import annotations

import contextlib
import hashlib
import json
import os
import re
import shutil
import subprocess
from dataclasses import dataclass, field, replace
from pathlib import Path
from typing import TypeVar

import stores  # noqa: E402

ROOT = Path(__file__).resolve().parent.parent.parent
EXAMPLES = ROOT / "examples"
SECONDS = 60
DONE = (0, 1)
REFUSED = (2, 3, 4)  # 3: the home cannot be looked at
STORE = "store.db"
LEFT = re.compile("-(wal|shm|journal|writer|maker)$")
SIDE_FILES = ("-wal", "-shm", "-journal", "-writer")
OUTPUT = "out"
ANSWER = "answer"
OLD_OUTPUT = b"what stood there before\n"
TOO_LATE = "after the store was changed"
UNSURE = "a power cut may undo that"  # what is done
OUT_OF_MEMORY = "dlpctl: memory ran out\n"
# What a check says of a file that it cannot read, in each format.
UNREADABLE = (b": error: ", b'"code":"DLP001"', b'"ruleId": "DLP001"', b'name="DLP001 ', b"title=DLP001 ")
EMPTY_STORE = json.dumps({"format": "dlpctl-dump/1", "expressions": [], "keyword_lists": [], "templates": []}) + "\n"

POLICY = """<?xml version="1.0" encoding="UTF-8"?><SAPolicy template_version="3.0.1000"><digitalAssets>
<entity name="card" type="Generic" display_name="Changed" description="new"><regularExpression>\\d{4}</regularExpression></entity>
<entity name="fresh" type="Generic" display_name="Fresh"><regularExpression>a+</regularExpression></entity>
<dictionary name="fresh-words" type="Any" display_name="Fresh words"><keyword description="" score="1" caseSensitive="false">one</keyword></dictionary>
</digitalAssets><complianceTemplates><template name="fresh-template" display_name="Fresh template" description=""
pre-defined="false"><matchRule><buildingBlock sourceType="ENTITY" entityHits="1" sourceName="fresh"/></matchRule></template>%s
</complianceTemplates></SAPolicy>"""
FIXABLE = (POLICY % "").replace('caseSensitive="false">one', 'caseSensitive="no">one')
SKIPPED = """<template name="broken" display_name="Broken" description="" pre-defined="false"><matchRule>
<buildingBlock sourceType="ENTITY" entityHits="1" sourceName="nowhere"/></matchRule></template>"""

Command = TypeVar("Command")
BACKUP = b"a backup"  # stands for the bytes of one
OLDER_BACKUP = b"an older backup"  # for those of one of the first version
LONG = (POLICY % ("""<template name="long" display_name="Long" description="" pre-defined="false"><matchRule>"""
                  + "".join(f"""<buildingBlock sourceType="ENTITY" sourceName="long {i}" entityHits="1"/>""" for i in range(10))
                  + "</matchRule></template>")).replace(
    "</digitalAssets>",
    "".join(f"""<entity name="long {i}" type="Generic" display_name="Long {i}"><regularExpression>{"a" * 130000}</regularExpression>
</entity>""" for i in range(10)) + "</digitalAssets>")
MANY = """<entity name="many %d" type="Generic" display_name="Many %d"><regularExpression>a+</regularExpression></entity>"""


@dataclass(frozen=True)
class Scenario:
    """A command; {in} and {out} stand for its input and output file."""

    name: str
    words: tuple[str, ...]
    document: bytes = b""
    store: bool = True  # it holds the starter policy; else there is none
    damaged: bool = False  # that store
    older: bool = False  # that store is of the first version
    long: bool = False  # that store holds expressions of 1.3 MB too
    standard_input: bool = False
    old_output: bytes | None = None
    once: bool = False  # done, it cannot be done again
    in_place: bool = False  # its output file may be done with when the last word cannot be said
    reports: bool = False  # the output file tells what became of the run
    answer_file: bool = False  # standard output is a file beside the store
    editor: str = ""  # what changes a text that the command hands out


@dataclass
class Result:
    """What a run has shown and left."""

    code: int
    out: bytes
    err: str
    output: bytes | None
    dump: str = ""
    files: list[str] = field(default_factory=list)


def canonical(dump: str | bytes) -> str:
    """Without the spacing that a dump has for people."""
    return json.dumps(json.loads(dump))


def scenarios() -> list[Scenario]:
    """All of them; an import into no store comes first, since it makes one."""
    plain = (POLICY % "").encode()
    many = (POLICY % "").replace("</digitalAssets>", "".join(MANY % (i, i) for i in range(200)) + "</digitalAssets>").encode()
    skipping = (POLICY % SKIPPED).encode()
    older = (EXAMPLES / "older-layout.xml").read_bytes()
    assets = (EXAMPLES / "digital-assets.xml").read_bytes()
    return [
        Scenario("import, no store", ("import", "{in}"), plain, store=False),
        Scenario("import", ("import", "{in}"), plain),
        Scenario("import --json", ("--json", "import", "{in}"), plain),
        Scenario("import --json, into a file", ("--json", "import", "{in}"), many, answer_file=True),
        Scenario("import, skipping", ("import", "{in}"), skipping),
        Scenario("import -", ("import", "-"), plain, standard_input=True),
        Scenario("import, older layout", ("import", "{in}"), older),
        Scenario("import --log", ("--log", "{folder}/log", "import", "{in}"), plain),
        Scenario("assets import", ("assets", "import", "{in}"), assets),
        Scenario("export", ("export", "--all")),
        Scenario("export -o", ("export", "--all", "-o", "{out}")),
        Scenario("export -o, replacing", ("export", "--all", "-o", "{out}"), old_output=OLD_OUTPUT),
        Scenario("export -o, long", ("export", "--all", "-o", "{out}"), long=True, old_output=OLD_OUTPUT),
        Scenario("assets export -o, long", ("assets", "export", "--all", "-o", "{out}"), long=True),
        Scenario("assets export -o", ("assets", "export", "--all", "-o", "{out}")),
        Scenario("store dump -o", ("store", "dump", "-o", "{out}"), old_output=OLD_OUTPUT),
        Scenario("store load", ("store", "load", "{in}"), EMPTY_STORE.encode()),
        Scenario("rename", ("rename", "expression", "bic", "bank-code"), once=True),
        Scenario("delete", ("delete", "expression", "bic", "--force"), once=True),
        Scenario("template new", ("template", "new", "codes", "P:bic(1)"), once=True),
        Scenario("template set", ("template", "set", "bank-accounts", "P:bic(7)")),
        Scenario("expression new", ("expression", "new", "fresh", "--pattern", "a+"), once=True),
        Scenario("expression set", ("expression", "set", "bic", "--pattern", "a+")),
        Scenario("keywords new", ("keywords", "new", "fresh-words", "one"), once=True),
        Scenario("keywords set", ("keywords", "set", "payment-card-words", "--type", "All")),
        Scenario("keywords add", ("keywords", "add", "payment-card-words", "fresh")),
        Scenario("keywords import", ("keywords", "import", "payment-card-words", "{in}"), b"keyword,score\nfresh,3\n"),
        Scenario("keywords export -o", ("keywords", "export", "payment-card-words", "-o", "{out}"),
                 old_output=OLD_OUTPUT),
        Scenario("import --report", ("import", "--report", "{out}", "{in}"), skipping, old_output=OLD_OUTPUT,
                 reports=True),
        Scenario("check --fix", ("check", "--no-store", "--fix", "{out}"), old_output=FIXABLE.encode(),
                 in_place=True),
        Scenario("fmt -o", ("fmt", "{in}", "-o", "{out}"), plain, old_output=OLD_OUTPUT),
        Scenario("fmt --write", ("fmt", "--write", "{out}"), old_output=plain, in_place=True),
        Scenario("convert -o", ("convert", "{in}", "-o", "{out}"), older, old_output=OLD_OUTPUT),
        Scenario("list", ("list", "templates")),
        Scenario("list, store of the first version", ("list", "templates"), older=True),
        Scenario("import, store of the first version", ("import", "{in}"), plain, older=True),
        Scenario("show", ("show", "expression", "bic")),
        Scenario("refs", ("refs",)),
        Scenario("check", ("check", "{in}"), plain),
        Scenario("check --json", ("--json", "check", "{in}", "{policies}"), skipping),
        Scenario("check --format sarif", ("check", "--format", "sarif", "{in}", "{policies}"), skipping),
        Scenario("check --format junit", ("check", "--format", "junit", "{in}", "{policies}"), skipping),
        Scenario("check --format github", ("check", "--format", "github", "{in}", "{policies}"), skipping),
        Scenario("diff", ("diff", "{in}", "store"), plain),
        Scenario("metadata", ("metadata",)),
        Scenario("check, a folder", ("check", "--no-store", "{policies}")),
        Scenario("template edit", ("template", "edit", "bank-accounts"), editor="sed -i 's/P:bic(1)/P:bic(3)/'", once=True),
        Scenario("store check", ("store", "check")),
        Scenario("store backup", ("store", "backup", "{out}"), in_place=True),
        Scenario("store backup, replacing", ("store", "backup", "{out}"), old_output=BACKUP, in_place=True),
        Scenario("store restore", ("store", "restore", "{in}"), BACKUP),
        Scenario("store restore, backup of the first version", ("store", "restore", "{in}"), OLDER_BACKUP),
        Scenario("store restore, no store", ("store", "restore", "{in}"), BACKUP, store=False),
        Scenario("store restore, damaged store", ("store", "restore", "{in}"), BACKUP, damaged=True),
        Scenario("store restore --dry-run", ("store", "restore", "--dry-run", "{in}"), BACKUP),
    ]


def of_name(name: str, known: list[tuple[str, Command]]) -> list[Command]:
    """Those of that name; "": all of them. A name that none has ends the program."""
    found = [command for known_name, command in known if name in ("", known_name)]
    if not found:
        raise SystemExit("\n".join([f'No command is named "{name}" here; these are:', *(known_name for known_name, _ in known)]))
    return found


class World:
    """A folder in which commands run, each time from the same start."""

    def __init__(self, tool: str, folder: Path) -> None:
        self._tool = str(Path(tool).resolve())
        self._folder = folder
        self._home = folder / "home"
        self._work = folder / "work"
        self.user: int | None = None  # who runs commands, when it is not the caller
        (self._home / "config").mkdir(parents=True)
        for name in ("PredefinedDLPPolicy.xml", "cfg_dlp_da_map.txt"):
            shutil.copy(ROOT / "config" / name, self._home / "config" / name)
        self._work.mkdir()
        self._backup = self._older_backup = b""
        self.start(Scenario("", (), store=False))
        self._command(("import", str(EXAMPLES / "starter-policy.xml")), {})
        self._filled = (self._work / STORE).read_bytes()
        (self._work / "in").write_text(LONG)
        self._command(("import", f"{self._work}/in"), {})
        self._long = (self._work / STORE).read_bytes()
        self.start(Scenario("", ()))
        stores.make_first_version(self._work / STORE)
        self._older = (self._work / STORE).read_bytes()
        self.start(Scenario("", (), (POLICY % "").encode(), store=False))
        self._command(("import", f"{self._work}/in"), {})
        self._backup = (self._work / STORE).read_bytes()
        stores.make_first_version(self._work / STORE)
        self._older_backup = (self._work / STORE).read_bytes()
        self._make_policies()
        (self._folder / "editing").mkdir()
        (self._folder / "editing").chmod(0o777)  # for whoever runs commands
        self._dumps: dict[str, str] = {}

    def _make_policies(self) -> None:
        """A folder of documents, with a folder in it."""
        (self._folder / "policies" / "more").mkdir(parents=True)
        for path, word in (("one.xml", "one"), ("more/two.xml", "two")):
            (self._folder / "policies" / path).write_text((POLICY % "").replace("fresh", word).replace("Fresh", word))

    def filled_in(self, scenario: Scenario) -> Scenario:
        """With the bytes that stand for a backup in place of its name."""
        backups = {BACKUP: self._backup, OLDER_BACKUP: self._older_backup}
        contents = {name: backups[getattr(scenario, name)] for name in ("document", "old_output")
                    if getattr(scenario, name) in backups}
        return replace(scenario, **contents)

    @property
    def work(self) -> Path:
        """Where the files of a command are."""
        return self._work

    def line(self, words: tuple[str, ...]) -> list[str]:
        """The command line of a command in this world."""
        places = {"in": f"{self._work}/in", "out": f"{self._work}/{OUTPUT}", "folder": str(self._work),
                  "policies": f"{self._folder}/policies"}
        return [self._tool, "-q", "--home", str(self._home), "--store", f"sqlite:{self._work}/{STORE}",
                *(word.format(**places) for word in words)]

    def _command(self, words: tuple[str, ...], environment: dict[str, str], data: bytes = b"",
                 answer: int = subprocess.PIPE, before: tuple[str, ...] = ()) -> subprocess.CompletedProcess[bytes]:
        clean = {name: value for name, value in os.environ.items() if not name.startswith(("DLP_", "XDG_"))}
        clean["HOME"] = str(self._home)
        return subprocess.run([*before, *self.line(words)], input=data, stdout=answer, stderr=subprocess.PIPE, check=False,
                              timeout=SECONDS, cwd=self._folder, env=clean | environment, user=self.user)

    def start(self, scenario: Scenario) -> None:
        """Brings back the files that a command starts from."""
        scenario = self.filled_in(scenario)
        for path in self._work.iterdir():
            path.unlink()
        if scenario.store:
            filled = self._long if scenario.long else self._older if scenario.older else self._filled
            middle = len(filled) // 2 if scenario.damaged else 0
            (self._work / STORE).write_bytes(filled[:middle] + b"damaged"[:middle] + filled[middle + 7 * scenario.damaged:])
            (self._work / STORE).chmod(0o600)
        (self._work / "in").write_bytes(scenario.document)
        if scenario.old_output is not None:
            (self._work / OUTPUT).write_bytes(scenario.old_output)
        if self.user is not None:
            for path in (self._work, *self._work.iterdir()):
                os.chown(path, self.user, -1)

    def dump(self, store: Path = Path(STORE)) -> str:
        """The store, or why it has no dump. A file that was seen before, and has nothing beside it, is not read again."""
        if not (self._work / store).exists():
            return canonical(EMPTY_STORE)
        alone = not any((self._work / f"{store}{beside}").exists() for beside in ("-wal", "-journal"))
        seen = self._fingerprint(self._work / store) if alone else ""
        if not alone or seen not in self._dumps:
            self._dumps[seen] = self._read_dump(store)
        return self._dumps[seen]

    def _fingerprint(self, *paths: Path) -> str:
        marks = hashlib.sha1()
        for path in paths:
            status = path.stat()
            marks.update(f"{path}\0{status.st_mode}\0{status.st_uid}\0{status.st_size}\0".encode() + path.read_bytes())
        return marks.hexdigest()

    def state(self) -> str:
        """A mark of all that a next run finds, but for what it only adds to."""
        return self._fingerprint(*sorted(path for path in self._work.iterdir() if path.name not in ("log", ANSWER)))

    def _read_dump(self, store: Path) -> str:
        done = self._command(("--store", f"sqlite:{self._work / store}", "store", "dump"), {})
        return canonical(done.stdout) if done.returncode == 0 else f"exit {done.returncode}: {done.stderr.decode()}"

    def files(self) -> dict[str, bytes]:
        """What stands in the folder but for the store."""
        return {path.name: path.read_bytes() for path in self._work.iterdir() if not path.name.startswith(STORE)}

    def store_names(self) -> set[str]:
        """The store and what has been put aside or made for it; the engine's files and notes go with the next process."""
        return {path.name for path in self._work.iterdir() if path.name.startswith(STORE) and not LEFT.search(path.name)}

    def before(self, scenario: Scenario) -> str:
        """The dump of the store that it starts from."""
        self.start(scenario)
        return self.dump()

    def again(self, scenario: Scenario, environment: dict[str, str],
              around: contextlib.AbstractContextManager = contextlib.nullcontext(), before: tuple[str, ...] = ()) -> Result:
        """Runs it on what the last run has left; around: what holds while it runs; before: words before its own."""
        data = scenario.document if scenario.standard_input else b""
        environment = environment | ({"EDITOR": scenario.editor, "TMPDIR": f"{self._folder}/editing"} if scenario.editor else {})
        answer = self._work / ANSWER
        with answer.open("wb") if scenario.answer_file else contextlib.nullcontext() as file:
            with around:
                done = self._command(scenario.words, environment, data, subprocess.PIPE if file is None else file.fileno(), before)
        output = self._work / OUTPUT
        result = Result(done.returncode, answer.read_bytes() if scenario.answer_file else done.stdout, done.stderr.decode(errors="replace"),
                        output.read_bytes() if output.exists() else None)
        result.files = sorted(path.name for path in self._work.iterdir() if not path.name.startswith(STORE + "-"))
        result.dump = self.dump()
        return result

    def run(self, scenario: Scenario, environment: dict[str, str],
            around: contextlib.AbstractContextManager = contextlib.nullcontext()) -> Result:
        """Runs it from its start."""
        self.start(scenario)
        return self.again(scenario, environment, around)


class Judge:
    """Holds disturbed runs of one scenario against one that nothing disturbs."""

    def __init__(self, world: World, scenario: Scenario) -> None:
        scenario = world.filled_in(scenario)
        self._world = world
        self._scenario = scenario
        self._following: dict[str, str] = {}
        self._beside_input = {f"in{side}" for side in SIDE_FILES} if scenario.document.startswith(b"SQLite") else set()
        self._before = world.before(scenario)
        self._whole = world.run(scenario, {})
        self._old = scenario.old_output
        if self._whole.code not in DONE:
            raise RuntimeError(f"{scenario.name}: exit {self._whole.code} undisturbed: {self._whole.err}")
        if scenario.once and self._whole.dump == self._before:
            raise RuntimeError(f"{scenario.name} changes nothing: {self._whole.err}")

    def fault(self, run: Result, mute: bool = False) -> str:
        """What is wrong with a run that was disturbed (mute: it could write to nobody); empty when nothing is."""
        found = self._done(run) if run.code in DONE else self._refused(run, mute)
        return found or ("" if self._scenario.once and run.dump == self._whole.dump else self._next())

    def _is_whole(self, output: bytes | None) -> bool:
        """Whether the output file is what the command makes; reports differ in what they tell."""
        if not self._scenario.reports:
            return output == self._whole.output
        try:
            return output is not None and output.endswith(b"}\n") and bool(json.loads(output)["verdict"])
        except ValueError:
            return False

    def _done(self, run: Result) -> str:
        whole = self._whole
        if (run.code, run.out, run.dump) != (whole.code, whole.out, whole.dump) or not self._is_whole(run.output):
            return f"exit {run.code} with less than the whole effect: {run.err}"
        return ""

    def _refused(self, run: Result, mute: bool) -> str:
        if run.code not in REFUSED:
            return f"exit {run.code}: {run.err}"
        # A check writes what it finds, an unreadable file too, to standard output.
        if not run.err.startswith("dlpctl: ") and not any(mark in run.out for mark in UNREADABLE) and not mute:
            return f"exit {run.code} without a word: {run.err}"
        late = run.code == 4 and (mute or TOO_LATE in run.err or UNSURE in run.err)
        if run.dump != self._before and not (late and run.dump == self._whole.dump):
            return f"exit {run.code}, and the store is not as before: {run.err}{run.dump[:200]}"
        # The last words may fail for memory when the file is whole already.
        done = self._scenario.in_place or self._scenario.reports or run.err == OUT_OF_MEMORY or UNSURE in run.err
        if run.output != self._old and not (done and self._is_whole(run.output)):
            return f"exit {run.code}, and the output file is not as before: {run.err}"
        # A program that ends where no memory is left to go back does not remove what it was writing.
        # What the engine could not remove beside a file that it read goes with the next run; the tool names its own.
        named = {name for name in run.files if f"{LEFT.sub('', name)} is left, and can be removed" in run.err}
        left = set(run.files) - named - self._beside_input - {STORE, "in", "log", OUTPUT, ANSWER} - (set(self._whole.files) if late else set())
        if left and not (OUT_OF_MEMORY.rstrip() in run.err and all(name.startswith(f".{OUTPUT}.") for name in left)):
            return f"exit {run.code}, and files are left behind: {run.files}"
        return ""

    def _next(self) -> str:
        """What is wrong with the next run; the same state leads to the same one."""
        state = self._world.state()
        if state not in self._following:
            self._following[state] = self._run_next()
        return self._following[state]

    def _run_next(self) -> str:
        following = self._world.again(self._scenario, {})
        if self._beside_input & set(following.files):
            return f"the next run leaves {following.files}"
        if following.code not in DONE or following.dump != self._whole.dump or not self._is_whole(following.output):
            return f"the next run ends with {following.code}: {following.err}"
        return ""
