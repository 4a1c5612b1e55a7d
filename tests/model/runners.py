"""Runs sequences: through the model here, through the library in the driver's processes."""

from __future__ import annotations

import json
import re
import subprocess
import tempfile

from model import Model

Sequence = dict[str, object]
Result = dict[str, object]

SURROGATE = re.compile("[\ud800-\udfff]")
SURROGATE_MARK = "\uf8ff"


def home_bytes(home: dict[str, object]) -> dict[str, bytes | None]:
    """The files of a sequence's home as bytes."""
    def content(value: object) -> bytes | None:
        if isinstance(value, dict):
            return bytes.fromhex(value["hex"])
        return None if value is None else str(value).encode()
    return {name: content(value) for name, value in home.items()}


def run_model(sequence: Sequence) -> list[Result]:
    """What the model gives for each operation, as JSON would carry it."""
    model = Model(home_bytes(sequence["home"]))
    results = [model.run(operation) for operation in sequence["operations"]]
    return json.loads(SURROGATE.sub("\ufffd", json.dumps(results, ensure_ascii=False)))


def run_driver(driver: str, store: str, sequences: list[Sequence]) -> list[list[Result]]:
    """What the library gives. A sequence that did not end well has a last result that says so."""
    with tempfile.NamedTemporaryFile("w", suffix=".jsonl", encoding="utf-8") as file:
        for sequence in sequences:
            file.write(_marked(json.dumps(sequence, ensure_ascii=False)) + "\n")
        file.flush()
        done = subprocess.run([driver, store, file.name], stdout=subprocess.PIPE, check=True)
    return _by_sequence(done.stdout.decode())


def _marked(text: str) -> str:
    """Lone surrogates as the driver reads them."""
    return SURROGATE.sub(lambda found: f"{SURROGATE_MARK}{ord(found[0]):04x}", text)


def _by_sequence(output: str) -> list[list[Result]]:
    results: list[list[Result]] = [[]]
    for line in filter(None, output.split("\n")):
        try:
            result = json.loads(line)
        except ValueError:
            result = {"cut": line[-200:]}
        if "end" not in result:
            results[-1].append(result)
            continue
        if result["end"] != 0:
            results[-1].append({"ended": result["end"]})
        results.append([])
    return results[:-1]
