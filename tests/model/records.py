"""The stored records and their store. A record in hand is a copy: only saving changes the store."""
from __future__ import annotations

import copy
import re
from collections.abc import Callable, Iterable
from dataclasses import dataclass, field

from errors import CommonError, UNSTATED
from subkeywords import read_keywords
from texts import same_ignoring_case, wtoi
from xmltree import Document

EXPRESSION_PREFIX = "ORVAL_SUB_CFG_DLP_EXPRESSION"
KEYWORD_PREFIX = "ORVAL_SUB_CFG_DLP_KEYWORD"
TEMPLATE_PREFIX = "ORVAL_SUB_CFG_DLP_TEMPLATE"

_UNSTORABLE = re.compile("[\0\ud800-\udfff]")

MatchRulesOf = Callable[[str], list[dict]]
"""Gives the rules of a template's element as the dump shows them."""


@dataclass
class Asset:
    """What expressions and keyword lists have in common; `name` is the internal name."""

    subject: str
    name: str = ""
    display_name: str = ""
    description: str = ""
    pre_defined: bool = False
    modified: bool = False
    scope: str = ""

    def set_unique_name(self, scope: str, display_name: str) -> None:
        self.scope, self.display_name = scope, display_name


@dataclass
class Expression(Asset):
    type: str = ""
    validator: str = ""
    case_sensitive: bool = False
    min_length: int = 0
    max_length: int = 0
    suffix_length: int = 0
    min_left_radius: int = 0
    max_left_radius: int = 0
    max_right_radius: int = 0
    pattern: str = ""
    alphabet_charset: str = ""
    display_format: str = ""
    example: str = ""


@dataclass
class KeywordList(Asset):
    """`text` is the sub-keyword text as stored."""

    condition: str = ""
    threshold: int = 0
    number: int = 0
    text: str = ""


@dataclass
class Template:
    """A compliance template; its internal name stands in its element."""

    subject: str
    display_name: str = ""
    description: str = ""
    pre_defined: bool = False
    scope: str = ""
    industries: list[str] = field(default_factory=list)
    regions: list[str] = field(default_factory=list)
    element: str = ""

    def set_unique_name(self, scope: str, display_name: str) -> None:
        self.scope, self.display_name = scope, display_name

    def element_name(self) -> str | None:
        """The `name` of the element; None when the text holds no `template`."""
        node = template_node(self.element)
        return None if node is None else node.get_attribute("name")


Record = Expression | KeywordList | Template
KINDS: dict[str, type] = {"expression": Expression, "keyword": KeywordList, "template": Template}


class Store:
    """All records by kind and subject identifier; every reading gives fresh copies."""

    def __init__(self) -> None:
        self._records: dict[type, dict[str, Record]] = {kind: {} for kind in KINDS.values()}

    def save(self, record: Record) -> None:
        """Writes the record whole under its subject; CommonError for text that no store keeps."""
        check_storable(record)
        self._records[type(record)][record.subject] = copy.deepcopy(record)

    def remove(self, kind: type, subject: str) -> None:
        """Deletes the record; nothing happens when there is none."""
        self._records[kind].pop(subject, None)

    def get(self, kind: type, subject: str) -> Record:
        """The record of that subject; CommonError when there is none."""
        if subject not in self._records[kind]:
            raise CommonError(f"record not found: {subject}")
        return copy.deepcopy(self._records[kind][subject])

    def all(self, kind: type) -> list[Record]:
        """Every record of the kind, ascending by subject."""
        records = self._records[kind]
        return [copy.deepcopy(records[subject]) for subject in sorted(records)]

    def internal_names(self, kind: type) -> list[str]:
        """The names of expressions or keyword lists, in the order of `all`."""
        return [record.name for record in self.all(kind)]

    def find_asset(self, kind: type, name: str) -> Asset | None:
        """The first expression or keyword list of exactly that internal name."""
        return next((record for record in self.all(kind) if record.name == name), None)

    def replace_templates(self, templates: Iterable[Template]) -> None:
        """The stored templates become the given ones; nothing changes when one is refused."""
        templates = list(templates)
        for template in templates:
            check_storable(template)
        self._records[Template] = {one.subject: copy.deepcopy(one) for one in templates}

    def dump(self, match_rules: MatchRulesOf) -> dict[str, list[dict]]:
        """The whole store as plain data, each list ascending by subject."""
        return {
            "expressions": [dict(vars(record)) for record in self.all(Expression)],
            "keyword_lists": [keyword_list_entry(record) for record in self.all(KeywordList)],
            "templates": [template_entry(record, match_rules) for record in self.all(Template)],
        }


def record_from_entry(kind: str, entry: dict) -> Record:
    """The record that an entry of the dump describes; what is derived there is passed over."""
    record = KINDS[kind](entry["subject"])
    derived = {"keywords", "match_rules"} | ({"name"} if kind == "template" else set())
    for name, value in entry.items():
        if name not in derived:
            setattr(record, name, copy.deepcopy(value))
    return record


def template_node(element: str):
    """The `template` that a stored element's text holds, None when it holds none."""
    document = Document()
    document.load_xml(element)
    return document.select_single("/template")


def check_storable(record: Record) -> None:
    """Raises CommonError for a zero character or a code point that is none."""
    for value in vars(record).values():
        texts = value if isinstance(value, list) else [value]
        if any(isinstance(text, str) and _UNSTORABLE.search(text) for text in texts):
            raise CommonError(UNSTATED)


def keyword_list_entry(record: KeywordList) -> dict:
    keywords = [{"keyword": keyword, "description": description, "score": wtoi(score),
                 "case_sensitive": same_ignoring_case(case, "true")}
                for keyword, description, score, case in read_keywords(record.text) or []]
    return dict(vars(record)) | {"keywords": keywords}


def template_entry(record: Template, match_rules: MatchRulesOf) -> dict:
    entry = dict(vars(record)) | {"name": record.element_name() or ""}
    return entry | {"match_rules": match_rules(record.element)}
