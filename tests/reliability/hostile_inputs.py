#!/usr/bin/env python3
"""Hands hostile tables, dumps, rules and settings to dlpctl, and hostile documents to the commands that write files.

Each has the exit codes that it may lead to. What is refused is said, and leaves store and file as they were; what is
written is taken again: a file that was formatted or repaired stays as it is the next time, one that was converted or
formatted is imported as before.
"""

from __future__ import annotations

import argparse
import itertools
import json
import os
import random
import shutil
import sys
import tempfile
import time
from collections.abc import Iterator
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))

from hostile import EITHER, Hostile, cuts, doctypes, encodings, flips, large, of_one_hash  # noqa: E402
from hostile_documents import MEBIBYTE, OWN, PEAK, ROOT, SECONDS, UNIT, Tool  # noqa: E402

LIST = "payment-card-words"
USAGE = (0, 3)
RULES = (0, 1, 2, 3)
TABLE = b"keyword,score,case_sensitive,description\napollo,3,true,a rocket\n\"one, two\",1,false,\"said \"\"so\"\"\"\n=1+1,2,false,\n"
SETTINGS = b'language = "English"\n[check]\nstrict = true\nallow = ["unused-asset"]\n[import]\ndry-run = true\n'
RULE_LINES = b"P:bic(1) AND K:payment-card-words\nOR P:iban(2)\n"


# What takes more than its bound of seconds and of memory, and how many times at most; docs/reliability.md tells why.
OVER: dict[tuple[str, str], tuple[float, float]] = {
    ("keywords import", "zeros"): (1.5, 1.7),
    ("keywords import", "lines"): (7, 4),
    ("expression set", "ends of lines"): (1.5, 2.5),
    ("expression set", "carriage returns"): (2, 3),
    ("template set", "rule without end"): (1.5, 2),
    ("template edit", "rule without end"): (1.5, 2),
    ("template set", "one rule of many blocks"): (8, 4.5),
    ("template edit", "one rule of many blocks"): (8, 4.5),
    ("template set", "rules"): (14, 7.5),
    ("template edit", "rules"): (14, 7.5),
    ("template set", "long name"): (1.5, 3),
    ("template edit", "long name"): (1.5, 3),
    ("template set", "huge number"): (1.5, 3),
    ("template edit", "huge number"): (1.5, 3),
    ("check --fix", "empty elements in a template"): (2, 1.4),
    ("check --fix", "empty elements in an expression"): (1, 1.2),
    ("convert -o", "empty elements in a template"): (1, 1.3),
    ("convert -o", "empty elements in an expression"): (1, 1.3),
    ("convert -o", "older layout, many templates"): (1.5, 1.3),
    ("import --report", "empty elements in a template"): (1, 1.4),
    ("import --report", "empty elements in an expression"): (1, 1.2),
    ("import --report", "templates of one name"): (2, 1),
    ("store load", "ends of lines"): (1.2, 1.2),
    ("store load", "carriage returns"): (1.2, 1.2),
    ("import --report", "older layout, many templates"): (2, 1.1),
}


def texts(small: bytes, chance: random.Random, sample: int, size: int, codes: tuple[int, ...]) -> Iterator[Hostile]:
    """What may be wrong with any text: cuts, flipped bits, encodings, zeros, lines without end."""
    for place in sorted(chance.sample(range(len(small)), min(sample, len(small)))):
        yield Hostile(f"cut at byte {place}", small[:place], codes)
    for place in sorted(chance.sample(range(len(small) * 8), min(sample, len(small) * 8))):
        data = bytearray(small)
        data[place // 8] ^= 1 << place % 8
        yield Hostile(f"bit {place} flipped", bytes(data), codes)
    for encoding in ("utf-16", "utf-16-le", "utf-32", "cp037", "utf-8-sig"):
        yield Hostile(encoding, small.decode().encode(encoding, "replace"), codes)
    for name, wrong in (("zero byte", b"\0"), ("overlong", b"\xc0\xaf"), ("surrogate", b"\xed\xa0\x80"), ("control", b"\x01"),
                        ("lone continuation", b"\x80"), ("escape", b"\x1b[2J"), ("turned text", "\u202e".encode())):
        yield Hostile(name, small.replace(b"o", wrong, 1), codes)
    yield Hostile("zeros", bytes(size), codes)
    yield Hostile("noise", chance.randbytes(size), codes)
    yield Hostile("one line", b"x" * size, codes)
    yield Hostile("ends of lines", b"\n" * size, codes)
    yield Hostile("carriage returns", b"\r" * size, codes)
    yield Hostile("blanks", b" " * size, codes)


def tables(size: int) -> Iterator[Hostile]:
    """About so many bytes each."""
    head = b"keyword,score\n"
    yield Hostile("quotation mark without end", head + b'"' + b"x" * size, EITHER)
    yield Hostile("quotation marks", head + b'"' * size, EITHER)
    yield Hostile("doubled quotation marks", head + b'"' + b'""' * (size // 2) + b'",1\n', EITHER)
    yield Hostile("columns of the head", b"keyword" + b",c" * (size // 2) + b"\nx\n", EITHER)
    yield Hostile("one column often", b"keyword" + b",score" * (size // 6) + b"\nx\n", EITHER)
    yield Hostile("columns of a line", head + b"x" + b"," * size + b"\n", EITHER)
    yield Hostile("lines of one keyword", head + b"x,1\n" * (size // 4), EITHER)
    yield Hostile("lines", head + b"".join(b"k%d,1\n" % i for i in range(size // 9)), EITHER)
    yield Hostile("keywords of one hash", head + "".join(f"{text},1\n" for text in of_one_hash(size // 67)).encode(), EITHER)
    yield Hostile("wrong lines", head + b"k,x\n" * (size // 4), EITHER)
    yield Hostile("empty keywords", head + b",1\n" * (size // 3), EITHER)
    yield Hostile("long keyword", head + b"x" * size + b",1\n", EITHER)
    for number in (b"9" * (size // 2), b"-1", b"1e308", b"2147483648", b"99999999999999999999", b"0x10", b" 1", b"1.5", b"NaN"):
        yield Hostile(f"score {number[:20].decode()}", head + b"x," + number + b"\n", EITHER)
    yield Hostile("formulas", head + b"=cmd|' /C calc'!A0,1\n@SUM(1),1\n+1,1\n-1,1\n'=1,1\n", EITHER)


def dumps(dump: str, size: int) -> Iterator[Hostile]:
    """Around one that is right; about so many bytes each."""
    empty = b'{"format":"dlpctl-dump/1","expressions":[%s],"keyword_lists":[],"templates":[]}'
    record = json.dumps(json.loads(dump)["expressions"][0])
    refused = (2,)
    for name, opening, closing in (("lists", b"[", b"]"), ("objects", b'{"a":', b"}")):
        yield Hostile(f"nested {name}", opening * (size // 6) + b"1" + closing * (size // 6), refused)
        yield Hostile(f"nested {name} without end", opening * (size // 6), refused)
        yield Hostile(f"nested {name} for a record", empty % (opening * (size // 6) + b"1" + closing * (size // 6)), refused)
    yield Hostile("keys", b"{" + b",".join(b'"k%d":1' % i for i in range(size // 12)) + b"}", refused)
    yield Hostile("one key often", b"{" + b'"format":"dlpctl-dump/1",' * (size // 25) + b'"a":1}', refused)
    yield Hostile("keys of a record", empty % (record[:-1] + "".join(f',"k{i}":1' for i in range(size // 12)) + "}").encode(), EITHER)
    yield Hostile("key of a record twice", empty % record.replace("{", '{"name":"other",', 1).encode(), EITHER)
    yield Hostile("one record often", empty % b",".join([record.encode()] * (size // len(record))), refused)
    yield Hostile("records", empty % ",".join(record.replace('"subject": "', f'"subject": "{i}', 1)
                                               for i in range(size // len(record))).encode(), (0,))
    for number in ("9" * (size // 2), "-" + "9" * 400, "1e999", "-0", "2147483648", "1.5", "0" * 100, "1e-999", "NaN"):
        changed = record.replace('"min_length": ', f'"min_length": {number}, "x": ', 1)
        yield Hostile(f"number {number[:20]}", empty % changed.encode(), EITHER)
    for name, text in (("lone surrogate", "\\ud800"), ("surrogates turned", "\\udc00\\ud800"), ("zero", "\\u0000"), ("cut escape", "\\u12"),
                       ("no character", "\\uffff"), ("long text", "x" * size), ("escapes", "\\u0041" * (size // 6))):
        yield Hostile(f"text, {name}", empty % record.replace('"name": "', f'"name": "{text}', 1).encode(), EITHER)
    yield Hostile("text after the end", empty % b"" + b"x", refused)
    yield Hostile("two dumps", empty % b"" * 2, refused)
    yield Hostile("no list", (empty % b"").replace(b"[]", b"{}", 1), refused)
    yield Hostile("null", b"null", refused)
    yield Hostile("nothing", b"", refused)


def settings(size: int) -> Iterator[Hostile]:
    """About so many bytes each."""
    yield Hostile("nested lists", b"allow = " + b"[" * (size // 2) + b"]" * (size // 2), USAGE)
    yield Hostile("nested tables", b"a = " + b"{a=" * (size // 4) + b"1" + b"}" * (size // 4), USAGE)
    yield Hostile("dotted key", b"a" + b".a" * (size // 2) + b" = 1", USAGE)
    yield Hostile("keys", b"".join(b"k%d = 1\n" % i for i in range(size // 12)), USAGE)
    yield Hostile("tables", b"".join(b"[t%d]\n" % i for i in range(size // 10)), USAGE)
    yield Hostile("key twice", SETTINGS + b"strict = true\nstrict = false\n", USAGE)
    yield Hostile("open text", b'language = "' + b"x" * size, USAGE)
    yield Hostile("long text", b'language = "' + b"x" * size + b'"', USAGE)
    for value in (b"9" * 400, b"1e999", b"nan", b"1979-05-27", b"[]", b"{}", b'"\\u0000"', b'"\\ud800"', b'"/dev/zero"', b'"memory:"'):
        yield Hostile(f"store = {value[:20].decode()}", b"store = " + value, (0, 3, 4))


def rules(size: int) -> Iterator[Hostile]:
    """About so many bytes each."""
    yield Hostile("rule without end", b"P:bic(1) AND " * (size // 13), RULES)
    yield Hostile("one rule of many blocks", b" AND ".join([b"P:bic(1)"] * (size // 13)) + b"\n", RULES)
    yield Hostile("rules", b"P:bic(1)\n" * (size // 9), RULES)
    yield Hostile("brackets", b"(" * size, RULES)
    yield Hostile("long name", b"P:" + b"x" * size + b"(1)\n", RULES)
    yield Hostile("huge number", b"P:bic(" + b"9" * size + b")\n", RULES)


class Filled(Tool):
    """dlpctl with the starter policy in its store, and a file that it may write."""

    def __init__(self, path: str, folder: Path) -> None:
        self.out = folder / "out"
        self._filled: bytes | None = None
        self.settings: tuple[str, ...] = ()  # of the environment, for the commands that are tried
        super().__init__(path, folder)
        self.run(("import", str(ROOT / "examples" / "starter-policy.xml")))
        self._filled = (folder / "store.db").read_bytes()
        self.before = self.dump()

    def _start(self, words: tuple[str, ...]) -> list[str]:
        return super()._start(tuple(word.replace("{out}", str(self.out)) for word in words))

    def clear(self, *, filled: bool = True) -> None:
        super().clear()
        if filled and self._filled is not None:
            (self.folder / "store.db").write_bytes(self._filled)

    def imported(self, document: bytes) -> tuple[int, bytes]:
        """What an import into no store gives: exit code and dump."""
        self.clear(filled=False)
        self.file.write_bytes(document)
        code = self.run(("import", "{in}"))[0]
        return code, self.dump()


class Trial:
    """Counts what was tried and what was wrong."""

    def __init__(self, tool: Filled, *, measures: bool) -> None:
        self._tool = tool
        self._measures = measures
        self.runs = self.wrong = 0
        self.slowest = self.largest = (0.0, "")

    def _complain(self, what: str, wrong: str) -> None:
        self.wrong += 1
        print(f"{what}: {wrong.rstrip()}", flush=True)

    def _run(self, what: str, words: tuple[str, ...], document: Hostile, codes: tuple[int, ...]) -> int:
        code, seconds, peak, err = self._tool.run(words, ("env", *self._tool.settings))
        self.runs += 1
        if code not in codes:
            self._complain(what, f"exit {code}: {err}")
        if code in (2, 3, 4) and words[0] != "check" and "dlpctl: " not in err:
            self._complain(what, f"exit {code} without a word: {err}")
        size = len(document.data)
        share = max(1.0, size / UNIT)
        allowed = OWN + (PEAK - OWN) * size / UNIT
        self.slowest = max(self.slowest, (seconds / share, what))
        self.largest = max(self.largest, (peak / allowed * PEAK / MEBIBYTE, what))
        longer, larger = OVER.get((what.split(", ", 1)[0], document.name), (1, 1))
        if self._measures and (seconds > SECONDS * share * longer or peak > allowed * larger):
            self._complain(what, f"{seconds:.1f} s, {peak / MEBIBYTE:.0f} MiB for {size / MEBIBYTE:.1f} MiB")
        return code

    def read(self, name: str, words: tuple[str, ...], document: Hostile, codes: tuple[int, ...] | None = None,
             *, changes: bool = True) -> None:
        """A command that reads it and may change the store, unless it refuses."""
        tool, what = self._tool, f"{name}, {document.name}"
        tool.clear()
        tool.file.write_bytes(document.data)
        code = self._run(what, words, document, document.codes if codes is None else codes)
        if (code > 1 or not changes) and tool.dump() != tool.before:
            self._complain(what, f"exit {code}, and the store has changed")

    def rewrite(self, name: str, words: tuple[str, ...], document: Hostile, *, alike: bool) -> None:
        """A command that writes its input anew, in place; alike: which is imported as before."""
        tool, what = self._tool, f"{name}, {document.name}"
        tool.clear(filled=False)
        tool.out.write_bytes(document.data)
        code = self._run(what, words, document, EITHER)
        written = tool.out.read_bytes()
        if code == 2 and written != document.data:
            self._complain(what, "refused, and the file has changed")
        if code == 2 or written == document.data:
            return
        self._run(what, words, document, EITHER)
        if tool.out.read_bytes() != written:
            self._complain(what, "the next time the file changes again")
        before, after = tool.imported(document.data), tool.imported(written)
        if before != after if alike else before[0] != 2 and after[0] == 2:
            self._complain(what, f"is imported with {after[0]} where it was with {before[0]}")

    def convert(self, document: Hostile) -> None:
        """Into another file, which is imported as the first."""
        tool, what = self._tool, f"convert -o, {document.name}"
        tool.clear(filled=False)
        tool.file.write_bytes(document.data)
        tool.out.write_bytes(b"old")
        code = self._run(what, ("convert", "{in}", "-o", "{out}"), document, EITHER)
        written = tool.out.read_bytes()
        if tool.file.read_bytes() != document.data or (code == 2 and written != b"old"):
            self._complain(what, f"exit {code}, and a file has changed")
        if code != 2 and tool.imported(document.data) != tool.imported(written):
            self._complain(what, "is not imported as before")

    def report(self, document: Hostile) -> None:
        """An import of which a report is written."""
        tool, what = self._tool, f"import --report, {document.name}"
        tool.clear()
        tool.file.write_bytes(document.data)
        tool.out.unlink(missing_ok=True)
        code = self._run(what, ("import", "--report", "{out}", "{in}"), document, EITHER)
        if not tool.out.exists() or not tool.out.read_bytes().endswith(b"}\n"):
            self._complain(what, f"exit {code} without a report")
        if code == 2 and tool.dump() != tool.before:
            self._complain(what, "refused, and the store has changed")


def try_all(trial: Trial, tool: Filled, chance: random.Random, sample: int, size: int, names: list[str], step: int) -> None:
    """Every kind of input through what reads it; of each kind every step-th."""
    dump = tool.before.decode()

    def chain(*kinds: Iterator[Hostile]) -> Iterator[Hostile]:
        return itertools.islice(itertools.chain(*kinds), chance.randrange(step), None, step)

    if "tables" in names:
        for form in ("csv", "tsv"):
            words = ("keywords", "import", LIST, "{in}", "--format", form)
            for document in chain(texts(TABLE, chance, sample, size, EITHER), tables(size)):
                data = document.data.replace(b",", b"\t") if form == "tsv" else document.data
                trial.read(f"keywords import, {form}", words, Hostile(document.name, data, document.codes))
    if "dumps" in names:
        for document in chain(texts(dump.encode(), chance, sample, size, EITHER), dumps(dump, size)):
            trial.read("store load", ("store", "load", "{in}"), document)
    if "settings" in names:
        (tool.folder / "settings" / "dlpctl").mkdir(parents=True)
        (tool.folder / "settings" / "dlpctl" / "config.toml").symlink_to(tool.file)
        tool.settings = (f"XDG_CONFIG_HOME={tool.folder}/settings",)
        for document in chain(texts(SETTINGS, chance, sample, size, USAGE), settings(size)):
            for words in (("config",), ("list", "templates")):
                trial.read(" ".join(words), words, document, changes=False)
        tool.settings = ()
    if "rules" in names:
        tool.settings = (f"EDITOR=cp {tool.file}",)
        for document in chain(texts(RULE_LINES, chance, sample, size, RULES), rules(size)):
            trial.read("template set", ("template", "set", "bank-accounts", "--rules-from", "{in}"), document, RULES)
            trial.read("template edit", ("template", "edit", "bank-accounts"), document, RULES)
            trial.read("expression set", ("expression", "set", "bic", "--pattern-from", "{in}"), document, RULES)
        tool.settings = ()
    if "documents" in names:
        documents = chain(doctypes(), encodings(), cuts(chance, sample), flips(chance, sample), large(size))
        older = (ROOT / "examples" / "older-layout.xml").read_bytes()
        changed = texts(older, chance, sample, 1000, EITHER)
        for document in chain(documents, changed):
            trial.rewrite("fmt --write", ("fmt", "--write", "{out}"), document, alike=True)
            trial.rewrite("check --fix", ("check", "--no-store", "--fix", "{out}"), document, alike=False)
            trial.convert(document)
            trial.report(document)
    if "endless" in names:
        for words in (("check", "/dev/zero"), ("import", "/dev/zero"), ("store", "load", "/dev/zero"),
                      ("keywords", "import", LIST, "/dev/zero"))[::step]:
            trial.read(" ".join(words), words, Hostile("without end", bytes(512 * MEBIBYTE)), (2,), changes=False)


KINDS = "tables,dumps,settings,rules,documents,endless"


def main() -> int:
    """The command line; 1 when an input does what it should not."""
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    parser.add_argument("--seed", type=int, default=1, help="what draws the sample")
    parser.add_argument("--sample", type=int, default=200, help="how many cuts and flipped bits")
    parser.add_argument("--step", type=int, default=1, help="try one of so many")
    parser.add_argument("--size", type=float, default=15, help="MiB of the large ones")
    parser.add_argument("--measure", action="store_true", help="hold time and memory against their bounds")
    parser.add_argument("--kinds", default=KINDS, help="those to try, separated by commas")
    arguments = parser.parse_args()
    begun = time.monotonic()
    with tempfile.TemporaryDirectory() as name:
        (Path(name) / "editing").mkdir()
        os.environ["TMPDIR"] = f"{name}/editing"
        tool = Filled(arguments.tool, Path(name))
        trial = Trial(tool, measures=arguments.measure)
        try_all(trial, tool, random.Random(arguments.seed), arguments.sample, int(arguments.size * MEBIBYTE),
                arguments.kinds.split(","), arguments.step)
        tool.close()
    print(f"{trial.runs} runs, {trial.wrong} wrong; dearest per 15 MiB: {trial.slowest[0]:.2f} s ({trial.slowest[1]}), "
          f"{trial.largest[0]:.0f} MiB ({trial.largest[1]}); {time.monotonic() - begun:.0f} s")
    return 1 if trial.wrong or trial.runs == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
