#!/usr/bin/env python3
"""Properties of imports and exports, tried on made-up documents through the library and through dlpctl."""

from __future__ import annotations

import argparse
import json
import subprocess
import sys
import tempfile
import time
from collections import Counter
from collections.abc import Callable, Iterator
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "model"))

import generator  # noqa: E402
import spellings  # noqa: E402
from documents_read import elements, misordered, names, repeated, replaces_itself  # noqa: E402
from generator import EXPRESSION_PREFIX, KEYWORD_PREFIX, TEMPLATE_PREFIX, Operation  # noqa: E402
from runners import Result, Sequence, home_bytes, run_driver  # noqa: E402

BATCH = 25
KINDS = ("expressions", "keyword_lists", "templates")
IMPORTS = ("import", "import_file", "assets_import")
LISTS = ("result", "returned", "imported", "skipped", "skipped_assets")
SET_LANGUAGE = {"op": "set_language", "value": "English"}
SET_OTHER_LANGUAGE = {"op": "set_language", "value": "German"}
SET_VERSION = {"op": "set_version", "value": "3.0.1000"}

Dump = dict[str, list[dict[str, object]]]
Item = dict[str, object]
EMPTY: Dump = {kind: [] for kind in KINDS}


class Trial:
    """What a property needs: the library, the tool, and counts of what it met."""

    def __init__(self, arguments: argparse.Namespace) -> None:
        self._arguments = arguments
        self.tool = arguments.tool
        self.met: Counter[str] = Counter()

    def run(self, sequences: list[Sequence]) -> list[list[Result]]:
        """The results of each sequence, as many as it has operations."""
        given = run_driver(self._arguments.driver, self._arguments.store, sequences)
        for sequence, results in zip(sequences, given, strict=True):
            if len(results) != len(sequence["operations"]):
                raise SystemExit(f"seed {sequence['seed']}: the driver ended early: {results[-1:]}")
        return given


def made(seed: int) -> Sequence:
    """The imports of a made-up sequence, in a language that most of its documents have."""
    sequence = generator.make(seed)
    imports = [operation for operation in sequence["operations"] if operation["op"] in IMPORTS]
    return {**sequence, "operations": [SET_LANGUAGE, *imports]}


def with_operations(sequence: Sequence, operations: list[Operation]) -> Sequence:
    """The sequence with other operations."""
    return {**sequence, "operations": operations}


def file_bytes(operation: Operation) -> bytes:
    """The document as a file."""
    if operation["op"] == "import_file":
        return bytes.fromhex(operation["bytes"] or "")
    return operation["text"].encode(errors="surrogatepass")


def file_text(data: bytes) -> str:
    """The text that is read of a file: what stands before the markup is passed over."""
    return data[max(data.find(b"<"), 0):].decode(errors="replace")


def document(operation: Operation) -> str:
    """The text that an import reads."""
    return file_text(file_bytes(operation)) if operation["op"] == "import_file" else operation["text"]


def subjects(dump: Dump, kind: str) -> list[str]:
    """The subjects of a kind."""
    return [record["subject"] for record in dump[kind]]


# -- what was exported comes back ------------------------------------------------------------------------------------

def comes_back(template: dict[str, object]) -> bool:
    """Whether an import takes the template once it was exported: named_cases.py shows what it does not take."""
    paths = [element.path for element in elements(template["element"])]
    known = ("template", "matchRule", "buildingBlock")
    return all(path == known[:len(path)] for path in paths if len(path) <= len(known))


def carried(kind: str, record: Item) -> Item:
    """What a document says of a record, whatever else the store holds."""
    kept = {key: value for key, value in record.items() if key not in ("scope", "modified", "element", "text")}
    if kind == "templates":
        kept["industries"], kept["regions"] = sorted(record["industries"]), sorted(record["regions"])
        blocks = [block for rule in record["match_rules"] for block in rule["blocks"]]
        kept["match_rules"] = [(rule["operation"], len(rule["blocks"])) for rule in record["match_rules"]]
        kept["blocks"] = [{**b, "entity_hits": b["entity_hits"] if b["source_type"] == "ENTITY" else 0} for b in blocks]
    return kept


def changed(before: Dump, after: Dump) -> list[str]:
    """The records that came back as other ones."""
    known = {(kind, record["subject"]): carried(kind, record) for kind in KINDS for record in before[kind]}
    return [record["subject"] for kind in KINDS for record in after[kind]
            if carried(kind, record) != known.get((kind, record["subject"]))]


def exports(dump: Dump) -> list[Operation]:
    """The export of the templates that come back, and of all assets."""
    return [SET_VERSION, {"op": "export", "names": [t["name"] for t in dump["templates"] if comes_back(t)]},
            SET_VERSION, {"op": "assets_export", "which": "document", "expressions": subjects(dump, "expressions"),
                          "keywords": subjects(dump, "keyword_lists")}]


def back(sequence: Sequence, export: Operation, text: str) -> Sequence:
    """The import of what was exported into an empty store, and the same export of that one."""
    door = {"op": "import", "scope": "", "text": text or ""}
    if export["op"] == "assets_export":
        door = {"op": "assets_import", "which": "all", "scope": "", "text": text or ""}
    return with_operations(sequence, [SET_LANGUAGE, door, SET_VERSION, export])


def all_there(export: Operation, dump: Dump) -> bool:
    """Whether the store holds all that was exported: the templates, and the assets where they were asked for."""
    asked = [("names", "templates"), ("expressions", "expressions"), ("keywords", "keyword_lists")]
    return all(len(export[argument]) == len(dump[kind]) for argument, kind in asked if argument in export)


def exported_comes_back(trial: Trial, seeds: range) -> Iterator[str]:
    """Export, import and export again gives the same bytes; attributes stand in their order."""
    first = [made(seed) for seed in seeds]
    dumps = [results[-1]["dump"] for results in trial.run(first)]
    second = [with_operations(s, s["operations"] + exports(dump)) for s, dump in zip(first, dumps)]
    texts = [(sequence, operation, result["text"], result["dump"])
             for sequence, results in zip(second, trial.run(second))
             for operation, result in zip(sequence["operations"][-4:], results[-4:]) if "text" in result]
    third = [back(*exported[:3]) for exported in texts]
    for (sequence, operation, text, dump), (_, taken, _, again) in zip(texts, trial.run(third)):
        where = f"seed {sequence['seed']}, {operation['op']}"
        trial.met.update({kind: len(taken["dump"][kind]) for kind in KINDS})
        yield from (f"{where}: {problem}" for problem in misordered(text or ""))
        yield from (f"{where}: {subject!r} came back as another one" for subject in changed(dump, taken["dump"]))
        if [taken["skipped"], taken.get("skipped_assets", [])] != [[], []] or not all_there(operation, taken["dump"]):
            yield f"{where}: import of the export gave {[taken.get(key) for key in LISTS]}"
        elif text != again["text"]:
            yield f"{where}: {text!r}\n  then {again['text']!r}"


# -- once is as good as twice ----------------------------------------------------------------------------------------

def twice_is_once(trial: Trial, seeds: range) -> Iterator[str]:
    """The same import again gives the same result and changes nothing."""
    once = [made(seed) for seed in seeds]
    twice = [with_operations(s, [o for operation in s["operations"] for o in (operation, operation)]) for s in once]
    for sequence, results in zip(twice, trial.run(twice)):
        for operation, first, second in zip(sequence["operations"][::2], results[::2], results[1::2]):
            where = f"seed {sequence['seed']}, {operation['op']}"
            if first["dump"] != second["dump"] or first["version"] != second["version"]:
                yield f"{where}: the second import changed the store"
            if operation == SET_LANGUAGE:
                continue
            trial.met["imports"] += 1
            if replaces_itself(document(operation)):
                trial.met["replacing in itself"] += 1
            elif [first.get(key) for key in LISTS] != [second.get(key) for key in LISTS]:
                yield f"{where}: first {[first.get(key) for key in LISTS]}, then {[second.get(key) for key in LISTS]}"


# -- a refused import ------------------------------------------------------------------------------------------------

def often_refused(sequence: Sequence) -> Sequence:
    """The sequence without scopes, every third operation while another language is set."""
    operations: list[Operation] = []
    for index, operation in enumerate(sequence["operations"]):
        operation = {**operation, "scope": ""} if "scope" in operation else operation
        operations += [SET_OTHER_LANGUAGE, operation, SET_LANGUAGE] if index % 3 == 2 else [operation]
    return with_operations(sequence, operations)


def refused_changes_nothing(trial: Trial, seeds: range) -> Iterator[str]:
    """Codes 1 and 2 leave the store as it was; 3 leaves what was saved before: nothing, or the assets."""
    refused = [often_refused(made(seed)) for seed in seeds]
    assets: list[tuple[Sequence, dict[str, Dump]]] = []
    for sequence, results in zip(refused, trial.run(refused)):
        before = EMPTY
        for index, (operation, result) in enumerate(zip(sequence["operations"], results)):
            code = result.get("result")
            if code is not None:
                trial.met[f"{operation['op']} {code}"] += 1
            where = f"seed {sequence['seed']}, operation {index}"
            if code in (1, 2) and result["dump"] != before:
                yield f"{where}: refused with {code}, and changed the store"
            if operation["op"] == "import" and code == 3 and result["dump"] != before:
                alone = {"op": "assets_import", "which": "all", "scope": "", "text": operation["text"]}
                assets.append((with_operations(sequence, sequence["operations"][:index] + [alone]), result["dump"]))
            before = result["dump"]
    trial.met["code 3 with assets"] += len(assets)
    for (sequence, dump), results in zip(assets, trial.run([sequence for sequence, _ in assets])):
        if results[-1]["dump"] != dump:
            yield f"seed {sequence['seed']}: the import that ended with 3 left other records than its assets"


# -- what a document does not name -----------------------------------------------------------------------------------

def witnesses(seed: int) -> list[Operation]:
    """A record of each kind that no document names, with something in every field."""
    texts = spellings.AWKWARD_TEXTS + spellings.NEVER_IN_XML
    number = (2147483647, -2147483648, 0, 1)[seed % 4]

    def text(field: int) -> str:
        return texts[(seed + 7 * field) % len(texts)]

    shown = {"display_name": text(0), "description": text(1), "pre_defined": seed % 2 == 0, "scope": text(2)}
    asset = {**shown, "name": "witness", "modified": seed % 3 == 0}
    numbers = ("min_length", "max_length", "suffix_length", "min_left_radius", "max_left_radius", "max_right_radius")
    expression = {**asset, "type": text(3), "validator": text(4), "case_sensitive": seed % 3 == 0, "pattern": text(5),
                  "alphabet_charset": text(6), "display_format": text(7), "example": text(8),
                  **dict.fromkeys(numbers, number)}
    keyword = {**asset, "condition": text(9), "threshold": number, "number": number, "text": text(10)}
    template = {**shown, "industries": [text(11), "finance"], "regions": [text(12), text(12)],
                "element": "<template name='witness'/>" + (text(13) if seed % 5 == 0 else "")}
    kinds = (("expression", EXPRESSION_PREFIX, expression), ("keyword", KEYWORD_PREFIX, keyword),
             ("template", TEMPLATE_PREFIX, template))
    return [{"op": "put", "kind": kind, "record": {"subject": prefix + "witness", **fields}}
            for kind, prefix, fields in kinds]


def untouched_kinds(operation: Operation) -> tuple[str, ...]:
    """The kinds that an import of that sort leaves alone."""
    left = {"all": ("templates",), "expressions": ("keyword_lists", "templates"),
            "keywords": ("expressions", "templates")}
    return left[operation["which"]] if operation["op"] == "assets_import" else ()


def unknown_stays(trial: Trial, seeds: range) -> Iterator[str]:
    """Records that a document does not name stay as they are, in every field."""
    sequences = [with_operations(s, witnesses(s["seed"]) + s["operations"]) for s in map(made, seeds)]
    for sequence, results in zip(sequences, trial.run(sequences)):
        for index in range(len(witnesses(0)), len(results)):
            operation, before, after = sequence["operations"][index], results[index - 1]["dump"], results[index]["dump"]
            named = names(document(operation)) if operation != SET_LANGUAGE else dict.fromkeys(KINDS, [])
            for kind in KINDS:
                left = [r for r in before[kind] if r["name"] not in named[kind] or kind in untouched_kinds(operation)]
                trial.met[f"{kind} left"] += len(left)
                trial.met[f"{kind} named"] += len(before[kind]) - len(left)
                yield from (f"seed {sequence['seed']}, operation {index}: {record['subject']!r} changed"
                            for record in left if record not in after[kind])


# -- the tool --------------------------------------------------------------------------------------------------------

class Tool:
    """dlpctl on a store of its own, with an installation's files."""

    def __init__(self, path: str, folder: Path, home: dict[str, object]) -> None:
        (folder / "config").mkdir()
        for name, content in home_bytes(home).items():
            if content is not None:
                (folder / "config" / name).write_bytes(content)
        self._file = folder / "policy.xml"
        self._start = [path, "--store", f"sqlite:{folder}/settings.db", "--home", str(folder), "--language", "English"]
        (folder / "settings.db").touch(0o600)  # an empty store

    def _run(self, *words: str) -> subprocess.CompletedProcess[bytes]:
        return subprocess.run([*self._start, *words], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)

    def dump(self) -> bytes:
        """The whole store."""
        done = self._run("store", "dump")
        if done.returncode != 0:
            raise SystemExit(f"store dump ended with {done.returncode}")
        return done.stdout

    def load(self, data: bytes) -> tuple[int, list[Item]]:
        """Imports a document: the exit code, and the items without their places."""
        self._file.write_bytes(data)
        done = self._run("--json", "import", str(self._file))
        return done.returncode, json.loads(done.stdout)["items"]


def single(items: list[Item], text: str) -> list[Item]:
    """The items whose name stands once in the document: of the others each replaces the one before, every time."""
    twice = {name for _, name in repeated(text)}
    return [item for item in items if item["name"] not in twice]


def settled(item: Item) -> Item:
    """An item as it is to be told the second time."""
    if item["disposition"] == "skipped":
        return item
    return {**item, "disposition": "unchanged", "reason": "", "detail": ""}


def tool_keeps_its_word(trial: Trial, seeds: range) -> Iterator[str]:
    """Through dlpctl, a refused document changes nothing, and one imported again is unchanged or skipped as before."""
    for seed in seeds:
        sequence = made(seed)
        with tempfile.TemporaryDirectory() as folder:
            tool = Tool(trial.tool, Path(folder), sequence["home"])
            before = tool.dump()
            for index, operation in enumerate(sequence["operations"][1:]):
                data = file_bytes(operation)
                code, items = tool.load(data)
                after = tool.dump()
                trial.met[f"exit code {code}"] += 1
                where = f"seed {seed}, document {index}"
                if code not in (0, 1) and after != before:
                    yield f"{where}: refused with {code}, and changed the store"
                before = after
                if code not in (0, 1):
                    continue
                _, again = tool.load(data)
                once = single(items, file_text(data))
                trial.met["items"] += len(once)
                if [settled(item) for item in once] != single(again, file_text(data)):
                    yield f"{where}: told otherwise the second time"
                if tool.dump() != after:
                    yield f"{where}: the second import changed the store"


PROPERTIES: dict[str, Callable[[Trial, range], Iterator[str]]] = {
    "exported-comes-back": exported_comes_back,
    "twice-is-once": twice_is_once,
    "refused-changes-nothing": refused_changes_nothing,
    "unknown-stays": unknown_stays,
    "tool-keeps-its-word": tool_keeps_its_word,
}

# What a property must meet in that many sequences, for otherwise it holds for want of trying.
ENOUGH = 50
MUST_MEET: dict[str, tuple[str, ...]] = {
    "exported-comes-back": KINDS,
    "twice-is-once": ("imports",),
    "refused-changes-nothing": ("import 1", "import 2", "import 3", "assets_import 2"),
    "unknown-stays": tuple(f"{kind} {fate}" for kind in KINDS for fate in ("left", "named")),
    "tool-keeps-its-word": ("items",),
}


def main() -> int:
    """The command line; 1 when a property does not hold, or was not put to the test."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("property", nargs="*", choices=[*PROPERTIES, []], help="all without")
    parser.add_argument("--seed", type=int, default=1, help="the first seed")
    parser.add_argument("--count", type=int, default=50, help="how many sequences of documents")
    parser.add_argument("--driver", required=True, help="path of dlp_model_driver")
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    parser.add_argument("--store", choices=["memory:", "sqlite"], default="memory:")
    arguments = parser.parse_args()
    failed = 0
    for name in arguments.property or PROPERTIES:
        trial, started = Trial(arguments), time.monotonic()
        end = arguments.seed + arguments.count
        for first in range(arguments.seed, end, BATCH):
            for problem in PROPERTIES[name](trial, range(first, min(first + BATCH, end))):
                failed += 1
                print(f"{name}: {problem}", flush=True)
        for what in MUST_MEET[name]:
            if arguments.count >= ENOUGH and not trial.met[what]:
                failed += 1
                print(f"{name}: met none: {what}", flush=True)
        met = ", ".join(f"{what}: {number}" for what, number in sorted(trial.met.items()))
        print(f"{name}: {arguments.count} sequences in {time.monotonic() - started:.1f} s; {met}", flush=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
