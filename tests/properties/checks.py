#!/usr/bin/env python3
"""What dlpctl check says of made-up documents, held against what dlpctl import makes of them."""

from __future__ import annotations

import argparse
import json
import random
import re
import subprocess
import sys
import tempfile
from collections import Counter
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "model"))

import generator  # noqa: E402
from runners import home_bytes  # noqa: E402

ROOT = Path(__file__).resolve().parent.parent.parent
POLICY = (ROOT / "examples" / "starter-policy.xml").read_text(encoding="utf-8")
ATTRIBUTE = re.compile(r' ([\w-]+)="([^"]*)"')
VALUES = ("", " ", "x", "0", "-1", "12abc", "99999999999", "true", "FALSE", "yes", "AND", "or", "EXCEPT", "ENTITY", "keyword",
          "Type 2", "generic", "Any", "Threshold", "iban", "payment-card-words", "card")
# Lines that hold whole elements without children.
LINE = re.compile(r"^ *<(?:keyword|buildingBlock|alphabetCharset|regularExpression|template_id|examples)\b.*\n", re.MULTILINE)

# What a fix may change: elements, and the lists' texts.
MARKUP = {"keyword_lists": "text", "templates": "element"}


class Tool:
    """dlpctl with a home, a language and stores of its own."""

    def __init__(self, path: str, folder: Path, home: dict[str, object]) -> None:
        self._folder = folder
        self.file = folder / "policy.xml"
        (folder / "config").mkdir()
        for name, content in home_bytes(home).items():
            if content is not None:
                (folder / "config" / name).write_bytes(content)
        self._start = [path, "--home", str(folder), "--language", "English", "--json"]

    def run(self, store: str, *words: str) -> tuple[int, dict[str, object]]:
        """The exit code and the answer."""
        done = subprocess.run([*self._start, "--store", f"sqlite:{self._folder}/{store}", *words],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        return done.returncode, json.loads(done.stdout)

    def meaning(self, store: str) -> dict[str, object]:
        """The store without markup; one that was not made holds nothing."""
        if not (self._folder / store).exists():
            return {}
        _, dump = self.run(store, "store", "dump")
        for kind, column in MARKUP.items():
            for record in dump[kind]:
                del record[column]
        return dump


def documents(operations: list[dict[str, object]]) -> list[bytes]:
    """The documents of a sequence that can be files."""
    found = []
    for operation in operations:
        if operation["op"] == "import":
            found.append(str(operation["text"]).encode(errors="surrogatepass"))
        elif operation["op"] == "import_file" and operation["bytes"] is not None:
            found.append(bytes.fromhex(str(operation["bytes"])))
    return found


def mutated(seed: int) -> bytes:
    """The policy that comes with the tool, with none to three small changes."""
    chance = random.Random(seed)
    text = POLICY
    for _ in range(chance.randrange(4)):
        place = chance.choice(list((ATTRIBUTE if chance.random() < 0.7 else LINE).finditer(text)))
        if place.re is LINE:
            change = chance.choice(("", place[0] * 2))
        else:
            change = chance.choice(("", f' {place[1]}="{chance.choice(VALUES)}"', f' {place[1]}="{chance.choice(VALUES)}"'))
        text = text[:place.start()] + change + text[place.end():]
    return text.encode()


def faults(tool: Tool, data: bytes, met: Counter[str]) -> list[str]:
    """What check and import disagree on, the store being what the documents before have left."""
    tool.file.write_bytes(data)
    _, before = tool.run("policy.db", "store", "dump")
    checked, report = tool.run("policy.db", "check", str(tool.file))
    _, after = tool.run("policy.db", "store", "dump")
    wrong = [] if before == after else ["check has changed the store"]
    fixed = tool.file.with_name("fixed.xml")
    fixed.write_bytes(data)
    tool.run("policy.db", "check", "--fix", str(fixed))
    taken, _ = tool.run("policy.db", "import", str(tool.file))
    met[f"check {checked}, import {taken}"] += 1
    if checked == 0 and taken != 0:
        wrong.append(f"check finds no error, import ends with {taken}")
    if checked == 2 and taken != 2:
        wrong.append(f"check says it is no XML, import ends with {taken}")
    if fixed.read_bytes() != data:
        met["fixed"] += 1
        codes = [tool.run(store, "import", str(file))[0] for store, file in
                 (("one.db", tool.file), ("two.db", fixed))]
        if codes[0] != codes[1] or tool.meaning("one.db") != tool.meaning("two.db"):
            wrong.append("a fix has changed the meaning")
        for store in ("one.db", "two.db"):
            for file in tool.file.parent.glob(store + "*"):
                file.unlink()
    if checked == 2 and not any(found["code"] <= "DLP003" for found in report["files"][0]["diagnostics"]):
        wrong.append("exit code 2 without a code for it")
    return wrong


def main() -> int:
    """The command line; 1 when the two disagree."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--seed", type=int, default=1, help="the first seed")
    parser.add_argument("--count", type=int, default=20, help="how many sequences of documents")
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    arguments = parser.parse_args()
    met: Counter[str] = Counter()
    failed = 0
    for seed in range(arguments.seed, arguments.seed + arguments.count):
        sequence = generator.make(seed)
        for data in ([mutated(seed)], documents(sequence["operations"])):
            with tempfile.TemporaryDirectory() as folder:
                tool = Tool(arguments.tool, Path(folder), sequence["home"])
                for index, document in enumerate(data):
                    for wrong in faults(tool, document, met):
                        print(f"seed {seed}, document {index} of {len(data)}: {wrong}")
                        failed += 1
    print(", ".join(f"{what}: {count}" for what, count in sorted(met.items())))
    if met["check 0, import 0"] == 0 or met["fixed"] == 0:
        print("the documents say nothing about it")
        failed += 1
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
