#!/usr/bin/env python3
"""Sequences of operations made up from seeds; --statistics N tells what N of them give."""

from __future__ import annotations

import argparse
import random
from collections import Counter

import spellings as s
from documents import Policies
from homes import Homes
from spellings import Taste

Operation = dict[str, object]

AT_MOST = 12

EXPRESSION_PREFIX = "ORVAL_SUB_CFG_DLP_EXPRESSION"
KEYWORD_PREFIX = "ORVAL_SUB_CFG_DLP_KEYWORD"
TEMPLATE_PREFIX = "ORVAL_SUB_CFG_DLP_TEMPLATE"
KINDS = {"expression": (EXPRESSION_PREFIX, "entity", s.EXPRESSION_NAMES),
         "keyword": (KEYWORD_PREFIX, "dictionary", s.KEYWORD_NAMES),
         "template": (TEMPLATE_PREFIX, "template", s.TEMPLATE_NAMES)}
RULE_PARTS = [
    "P:card(1)", "K:words", "P:iban(2)", " AND ", " OR ", " EXCEPT ", "\tAND\t", "AND", "OR",
    "EXCEPT", " and ", "P:", "K:", "p:", "k:",
    "(1)", "()", "((2))", "P:a(b)(2)", "K:BRAND", "P:FORD(3)", "K:x P:n(1)", "P:n(-1)",
    "P:n(99999999999)", "P:n(007)", "K:Top:x(1)",
    "P:Brick:layer", " ", "\n", "\t", "\u00a0", "\u3000", "X", "xx K:abc ", "K: abc ", "P: n (2)",
    "P:(3)", "xK:", "ANDAND", "ORAND", "EXCEPTION",
    "P:x(1)(2)", "P:x(\u0663)", "P:\U0001f600(1)", "K:\u540d", "SKIP", "\r\n", "P:x\n(1)", "<&>\"'",
    "P:n( 1)",
]
OPERATOR_TEXTS = ["AND", "OR", "EXCEPT", "SKIP", "", "and", " or ", "x", "\tEXCEPT\n", "AND OR",
                  "UNKNOWN"]


class Sequences:
    """Makes one sequence."""

    def __init__(self, seed: int) -> None:
        self._seed = seed
        self._chance = random.Random(seed)
        self._taste = Taste(self._chance)
        self._policies = Policies(self._taste)
        self._seen: list[str] = []

    def sequence(self) -> dict[str, object]:
        """Files, then operations: most are imports, the last is often an export."""
        count = self._chance.randint(3, AT_MOST)
        operations: list[Operation] = []
        while len(operations) < count:
            operations += [self._import()] if self._chance.random() < 0.65 else self._other()
        operations = operations[:AT_MOST]
        if self._chance.random() < 0.7:
            operations[-1] = self._export()
        return {"seed": self._seed, "home": Homes(self._taste).home(), "operations": operations}

    # -- documents

    def _document(self) -> str:
        draw = self._chance.random()
        if self._seen and draw < 0.15:
            return self._chance.choice(self._seen)
        if self._seen and draw < 0.4:
            text = self._policies.edited(self._chance.choice(self._seen))
        else:
            text = self._policies.policy()
        self._seen.append(text)
        return text

    def _scope(self) -> str:
        """A scope; very seldom one that no store keeps."""
        if self._chance.random() < 0.01:
            return "no text" + self._chance.choice(s.NEVER_STORED)
        return self._chance.choice(["", "", "company", self._taste.text()])

    def _import(self) -> Operation:
        draw = self._chance.random()
        text = self._document()
        if draw < 0.75:
            return {"op": "import", "scope": self._scope(), "text": text}
        if draw < 0.87:
            return {"op": "import_file", "bytes": self._file(text)}
        which = self._chance.choice(["all", "expressions", "keywords"])
        return {"op": "assets_import", "which": which, "scope": self._scope(), "text": text}

    def _file(self, text: str) -> str | None:
        data = text.encode(errors="surrogatepass")
        middle = self._chance.randint(0, len(data))
        odd = [data[:middle] + b"\xff" + data[middle:],
               text.encode("utf-16", errors="surrogatepass"), b"", b"no markup",
               data[:middle] + b"\0" + data[middle:],
               data[:middle] + b"\xc0\xbc" + data[middle:], data[:-1], b"\xff\xfe" + data,
               b"\0" + data, data[:middle] + b"\xed\xa0\x80" + data[middle:]]
        draw = self._chance.random()
        if draw < 0.02:
            return None
        if draw < 0.15:
            return self._chance.choice(odd).hex()
        return (self._chance.choice([b"", b"", b"\xef\xbb\xbf", b"bytes before ",
                                     b"\x80\x81"]) + data).hex()

    # -- the other operations

    def _names(self, pool: list[str], prefix: str = "") -> list[str]:
        names = [prefix + self._taste.name(pool) for _ in range(self._chance.randint(0, 5))]
        if self._chance.random() < 0.2:
            names.append(self._chance.choice(["", prefix, prefix + "nothing", "card",
                                              prefix + "\ud800"]))
        return names

    def _met(self, tag: str, pool: list[str], prefix: str = "") -> list[str]:
        """Names of elements in the documents so far, which are probably stored; seldom any name."""
        met = self._policies.met[tag][-6:]
        if not met or self._chance.random() < 0.2:
            return self._names(pool, prefix)
        some = self._chance.randint(0, min(2, len(met)))
        return [prefix + name for name in self._chance.sample(met, some)]

    def _export(self) -> Operation:
        if self._chance.random() < 0.7:
            return {"op": "export", "names": self._met("template", s.TEMPLATE_NAMES)}
        return {"op": "assets_export", "which": self._chance.choice(["document", "assets"]),
                "expressions": self._met("entity", s.EXPRESSION_NAMES, EXPRESSION_PREFIX),
                "keywords": self._met("dictionary", s.KEYWORD_NAMES, KEYWORD_PREFIX)}

    def _other(self) -> list[Operation]:
        draw = self._chance.random()
        if draw < 0.25:
            return self._put()
        if draw < 0.33:
            return [self._remove(), {"op": "export", "names": self._policies.met["template"][-6:]}]
        makers = [(self._export, 5), (self._text_operation, 4), (self._rules, 4),
                  (self._keywords, 3), (self._setting, 2), (self._find, 2),
                  (self._metadata, 1), (lambda: {"op": "root"}, 1)]
        make = self._chance.choices([maker for maker, _ in makers],
                                    [weight for _, weight in makers])[0]
        return [make()]

    def _setting(self) -> Operation:
        if self._chance.random() < 0.6:
            value = self._taste.pick(s.LANGUAGES + [""], s.ODD_LANGUAGES, "odd languages")
            return {"op": "set_language", "value": value + self._bad(0.05)}
        value = self._taste.pick(s.VERSIONS, s.ODD_VERSIONS + ["", "3&4"], "odd versions")
        return {"op": "set_version", "value": value + self._bad(0.2)}

    def _text_operation(self) -> Operation:
        name = self._chance.choice(["check", "format", "normalize", "categories"])
        operation: Operation = {"op": name, "text": self._document()}
        if name == "categories":
            pairs = [("industries", "industry"), ("regions", "region"), ("industries", "region"),
                     ("complianceTemplates", "template")]
            operation["container"], operation["item"] = self._chance.choice(pairs)
        return operation

    def _rule_text(self) -> str:
        parts = self._chance.randint(0, 6)
        return "".join(self._chance.choice(RULE_PARTS) for _ in range(parts))

    def _rules(self) -> Operation:
        rules = [self._rule_text() for _ in range(self._chance.randint(0, 4))]
        operators = [self._chance.choice(OPERATOR_TEXTS) for _ in range(self._chance.randint(0, 4))]
        if self._chance.random() < 0.5:
            return {"op": "template_to_rules", "text": self._policies.template_text(),
                    "rules": rules[:1], "operators": operators[:1]}
        bad = self._bad(0.2)
        return {"op": "rules_to_template", "before": self._policies.template_text(), "rules": rules,
                "operators": operators,
                "name": self._taste.name(s.TEMPLATE_NAMES), "display_name": self._taste.text(),
                "description": self._taste.text() + bad}

    def _bad(self, probability: float) -> str:
        """Seldom a character that XML cannot carry."""
        if self._chance.random() < probability:
            return self._chance.choice(s.NEVER_IN_XML + s.NEVER_STORED)
        return ""

    def _keyword(self) -> list[str]:
        keyword = self._chance.choice(["b", "A", "a", "aa", "", "\u00e9", "\U0001f600", "\ue000",
                                       self._taste.text()])
        bad = self._bad(0.03)
        return [keyword + bad, self._taste.text(), self._chance.choice(s.NUMBERS + s.ODD_NUMBERS),
                self._chance.choice(s.FLAGS + s.ODD_FLAGS)]

    def _keywords(self) -> Operation:
        keywords = [self._keyword() for _ in range(self._chance.randint(0, 6))]
        if self._chance.random() < 0.3:
            return {"op": "keywords_to_xml", "keywords": keywords}
        return {"op": "keywords_from_xml", "text": self._policies.dictionary_text(),
                "keywords": keywords}

    def _find(self) -> Operation:
        field = self._chance.choice([0, 0, 1, 1, 2, 2, 2, 3, -1])
        name = self._chance.choice(self._policies.met["template"][-5:] + [""])
        by_field = {0: TEMPLATE_PREFIX + name,
                    1: self._chance.choice([name, name.upper(), "The " + name])}
        return {"op": "find", "field": field, "value": by_field.get(field, name)}

    def _metadata(self) -> Operation:
        lists = ["validators", "expression_types", "keyword_conditions", "industries", "regions"]
        return {"op": "metadata", "list": self._chance.choice(lists)}

    def _remove(self) -> Operation:
        kind = self._chance.choice(list(KINDS))
        prefix, tag, pool = KINDS[kind]
        subject = self._chance.choice([*self._met(tag, pool, prefix), prefix])
        return {"op": "remove", "kind": kind, "subject": subject}

    # -- records that no import would make

    def _put(self) -> list[Operation]:
        """A record, and often an export that meets it."""
        kind = self._chance.choice(list(KINDS))
        prefix, _, pool = KINDS[kind]
        name = self._taste.name(pool)
        makers = {"expression": self._expression, "keyword": self._keyword_list,
                  "template": self._template}
        record = {"subject": prefix + name, "name": name if self._chance.random() < 0.9 else "card",
                  "display_name": self._value(name), "description": self._value(""),
                  "pre_defined": self._chance.random() < 0.4, "scope": self._taste.text(),
                  **makers[kind]()}
        put: Operation = {"op": "put", "kind": kind, "record": record}
        return [put, self._export_of(kind, prefix + name)] if self._chance.random() < 0.6 else [put]

    def _export_of(self, kind: str, subject: str) -> Operation:
        if kind == "template":
            return {"op": "export", "names": self._policies.met["template"][-2:]}
        subjects = {"expression": [], "keyword": [], kind: [subject]}
        return {"op": "assets_export", "which": self._chance.choice(["document", "assets"]),
                "expressions": subjects["expression"], "keywords": subjects["keyword"]}

    def _value(self, text: str) -> str:
        """A field's text; seldom one that XML cannot carry."""
        if self._chance.random() < 0.03:
            return text + self._chance.choice(s.NEVER_IN_XML)
        return text or self._taste.text()

    def _int(self) -> int:
        return self._chance.choice([0, 1, 7, -1, 2147483647, -2147483648])

    def _expression(self) -> dict[str, object]:
        return {"type": self._taste.pick(s.TYPES, s.ODD_TYPES, "odd types"),
                "validator": self._value(""),
                "case_sensitive": self._chance.random() < 0.5, "min_length": self._int(),
                "max_length": self._int(),
                "suffix_length": self._int(), "min_left_radius": self._int(),
                "max_left_radius": self._int(),
                "max_right_radius": self._int(), "pattern": self._value(""),
                "alphabet_charset": self._value(""),
                "display_format": self._value(""), "example": self._value("")}

    def _keyword_list(self) -> dict[str, object]:
        return {"condition": self._taste.pick(s.CONDITIONS, s.ODD_CONDITIONS, "odd types"),
                "threshold": self._int(),
                "number": self._int(), "text": _storable(self._policies.dictionary_text()),
                "modified": self._chance.random() < 0.2}

    def _categories(self) -> list[str]:
        return [self._taste.name(s.CATEGORY_NAMES) for _ in range(self._chance.randint(0, 4))]

    def _template(self) -> dict[str, object]:
        return {"industries": self._categories(), "regions": self._categories(),
                "element": _storable(self._policies.template_text())}


def _storable(text: str) -> str:
    """A text that a record may hold."""
    return "".join(character for character in text if character not in s.NEVER_STORED)


def make(seed: int) -> dict[str, object]:
    """The sequence of a seed."""
    return Sequences(seed).sequence()


def outcome(operation: Operation, result: dict[str, object]) -> str:
    """What an operation gave, in a word or two."""
    if result.get("threw") is not None:
        return "threw"
    for key in ("result", "returned"):
        if key in result:
            return f"{key} {result[key]}"
    if operation["op"] == "export":
        text = str(result["text"])
        return "empty" if not text else "templates" if "<template " in text else "no templates"
    return "done"


def statistics(count: int, first: int) -> None:
    """Prints how often each kind of operation gave each outcome, by the second implementation."""
    from runners import run_model  # the sequences themselves do not need it

    outcomes: Counter[tuple[str, str]] = Counter()
    partly = 0
    for seed in range(first, first + count):
        sequence = make(seed)
        for operation, result in zip(sequence["operations"], run_model(sequence), strict=True):
            outcomes[operation["op"], outcome(operation, result)] += 1
            partly += bool(result.get("imported")
                           and (result.get("skipped") or result.get("skipped_assets")))
    for (name, what), number in sorted(outcomes.items()):
        print(f"{name:20} {what:16} {number:7}")
    print(f"{count} sequences, {sum(outcomes.values())} operations,",
          f"{partly} imports that took some and skipped some")


def main() -> None:
    """The command line."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--statistics", type=int, metavar="N", required=True,
                        help="how many sequences to run")
    parser.add_argument("--seed", type=int, default=1, help="the first seed")
    arguments = parser.parse_args()
    statistics(arguments.statistics, arguments.seed)


if __name__ == "__main__":
    main()
