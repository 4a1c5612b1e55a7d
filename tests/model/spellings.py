"""Texts that a policy may hold: plain spellings, and odd ones that are easily misread."""

from __future__ import annotations

import random

EXPRESSION_NAMES = ["card", "iban", "Card", "ssn"]
KEYWORD_NAMES = ["words", "marks", "Words", "card"]
TEMPLATE_NAMES = ["pay", "health", "Pay", "code"]
CATEGORY_NAMES = ["finance", "health", "Finance", "eu"]
OLD_NAMES = ["Old Card", "Old Words", "old card", "IBAN"]
AWKWARD_NAMES = [
    "a&b", "x<y", "it's", 'say "so"', " card", "card ", "BRAND", "a AND b", "a(b)", "P:x(1)", "K:x",
    "\u00e9", "e\u0301", "\U0001d518ni", "\u05e9\u05dc\u05d5\u05dd", "\u540d\u524d", "\U0001f600",
    "line\u0085end", "\ufffd", "tab\there", "two\nlines", "cr\rhere", "crlf\r\nend", "\u2028",
    "\ufeffbom",
    "a" * 300, "--", "]]>", "%s%d%n", "../x", "{0}", "\u00a0", "\ue000", "\U0010ffff",
]
PLAIN_TEXTS = ["", "text", "A longer text, with commas.", "\\d{4}[ -]?\\d{4}", "one\ntwo"]
AWKWARD_TEXTS = AWKWARD_NAMES + [" ", "\n", "\t\t", "  both  ", "<b>&amp;</b>", "\r\n",
                                 "\u3000x\u3000"]

FLAGS = ["true", "false"]
ODD_FLAGS = ["TRUE", "False", "FALSE", " true", "false ", "yes", "1", "0", "", "tRuE", "fal\u017fe",
             "true\n"]
NUMBERS = ["0", "1", "5", "16", "255"]
ODD_NUMBERS = [
    " 5", "+5", "-5", "- 5", "0x10", "12abc", "99999999999", "-99999999999", "2147483647",
    "2147483648",
    "-2147483648", "-2147483649", "", "\uff15", "\t7", "\n8", "\u00a07", "1e3", "3.7", "007", "--1",
    "+-2",
    "\u0663", "\u00b2", "18446744073709551617", "abc", "+", "\r9", "\u00857",
]
TYPES = ["Generic", "Type 1", "Type 2", "Type 3"]
ODD_TYPES = [
    "type 1", "TYPE 2", "tYPE 3", "Type  1", "Type 4", "generic", "Generic ", "", "Type\t1",
    "Type\u00a03",
    "T\u0443pe 1", "Type1", " Type 2",
]
CONDITIONS = ["All", "Any", "Threshold", "Distance"]
ODD_CONDITIONS = ["any", "THRESHOLD", "all ", " Distance", "", "Distanse", "D\u0131stance",
                  "thre\u017fhold", "dISTANCE"]
OPERATIONS = ["AND", "OR"]
ODD_OPERATIONS = [
    "and", " or ", "EXCEPT", "except", "", "UNKNOWN", "SKIP", "AND OR", "\u00a0AND",
    "\uff21\uff2e\uff24",
    "AND\u3000", "\tAND\n", "\u0085OR", "XOR", "oR", " ", "AND\r", "7",
]
SOURCE_TYPES = ["ENTITY", "KEYWORD"]
ODD_SOURCE_TYPES = ["entity", "Keyword", " ENTITY ", "UNKNOWN", "", "ENT\u0131TY", "DICTIONARY",
                    "\u212aEYWORD", "KEYWORD\n"]
VERSIONS = ["3.0.1000"]
ODD_VERSIONS = ["x", " ", "1", "\u0663", "3.0.1001", "\n"]
LANGUAGES = ["English"]
ODD_LANGUAGES = ["english", "ENGLISH", "Engl\u0131sh", "German", " English", "\u05e9",
                 "Engli\u017fh"]
BUILTINS = ["0"]
ODD_BUILTINS = ["1", "01", " 1", "true", "\uff11", "", "1 "]

NEVER_IN_XML = ["\x01", "\x0b", "\x1f", "\ufffe", "\uffff"]
NEVER_STORED = ["\x00", "\ud800", "\udfff"]


class Taste:
    """Which oddities a sequence is given to, each with a probability of its own, mostly none."""

    FEATURES = (
        "awkward names", "awkward texts", "odd flags", "odd numbers", "odd types", "odd operations",
        "odd source types", "odd versions", "odd languages", "odd builtins", "missing attributes",
        "doubled attributes", "foreign attributes", "references to nothing", "duplicate names",
        "older layout",
        "empty sections", "missing sections", "doubled sections", "shuffled sections",
        "misplaced sections",
        "comments", "cdata", "indentation", "namespaces", "foreign elements",
        "character references",
        "wrong root", "broken text", "built-in", "bad characters", "languages", "nested",
    )
    # What stops a whole document stays rare, or the rest of the sequence would see an empty store.
    CEILINGS = {"wrong root": 0.06, "broken text": 0.1, "bad characters": 0.0004,
                "odd languages": 0.3,
                "doubled attributes": 0.002, "missing sections": 0.08, "empty sections": 0.15,
                "namespaces": 0.05, "missing attributes": 0.15,
                "misplaced sections": 0.15, "older layout": 0.5, "odd source types": 0.12,
                "odd operations": 0.15,
                "references to nothing": 0.15, "nested": 0.01}

    def __init__(self, chance: random.Random) -> None:
        self.chance = chance
        self._probabilities = {feature: self._draw(feature) for feature in self.FEATURES}

    def _draw(self, feature: str) -> float:
        if self.chance.random() < 0.5:
            return 0.0
        return min(self.chance.choice([0.03, 0.1, 0.3, 0.6]), self.CEILINGS.get(feature, 1.0))

    def has(self, feature: str) -> bool:
        """Whether the oddity happens here."""
        return self.chance.random() < self._probabilities[feature]

    def pick(self, plain: list[str], odd: list[str], feature: str) -> str:
        """A plain spelling, or an odd one where the taste is for it."""
        return self.chance.choice(odd if self.has(feature) else plain)

    def name(self, pool: list[str]) -> str:
        """A name of the pool, so that names meet; seldom an awkward one."""
        return self.pick(pool, AWKWARD_NAMES, "awkward names")

    def text(self) -> str:
        """Any text."""
        return self.pick(PLAIN_TEXTS, AWKWARD_TEXTS, "awkward texts")
