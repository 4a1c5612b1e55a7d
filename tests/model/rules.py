"""Match rules: their two enumerations, and the reading and writing of rule texts."""

from __future__ import annotations

import re
from dataclasses import dataclass, field

from texts import trim, upper, wtoi

ENTITY, KEYWORD, UNKNOWN_TYPE = 0, 1, 2
AND, OR, EXCEPT, UNKNOWN_OPERATOR = 0, 1, 2, 3

TYPE_TEXTS = {"ENTITY": ENTITY, "KEYWORD": KEYWORD}
OPERATOR_TEXTS = {"AND": AND, "OR": OR, "EXCEPT": EXCEPT}

# The pattern dialect's `|` joins single units only: "P|p:" is one of two letters, then a colon.
FIND_OPERATOR = re.compile("(AND|OR|EXCEPT)")
FIND_EXPRESSION = re.compile(r"(?:P|p):(.*?)\(([0-9]+)\)", re.DOTALL)
FIND_KEYWORD = re.compile(r"(?:K|k):(.*)", re.DOTALL)


@dataclass
class RuleElement:
    """One asset of a rule; `operator` joins it to the element before it."""

    name: str = ""
    count: int = 0
    operator: int = UNKNOWN_OPERATOR
    type: int = UNKNOWN_TYPE


@dataclass
class MatchRule:
    """Elements in text order, and how the rule combines with the other rules."""

    elements: list[RuleElement] = field(default_factory=list)
    operator: int = UNKNOWN_OPERATOR


def type_from_text(text: str) -> int:
    return TYPE_TEXTS.get(upper(trim(text)), UNKNOWN_TYPE)


def operator_from_text(text: str) -> int:
    return OPERATOR_TEXTS.get(upper(trim(text)), UNKNOWN_OPERATOR)


def type_to_text(value: int) -> str:
    return {ENTITY: "ENTITY", KEYWORD: "KEYWORD"}.get(value, "UNKNOWN")


def operator_to_text(value: int) -> str:
    return {AND: "AND", OR: "OR", EXCEPT: "EXCEPT"}.get(value, "UNKNOWN")


def parse_rule_element(text: str, operator: int) -> RuleElement:
    """Reads one element; an expression found anywhere goes before a keyword list."""
    if len(text) < 3:
        return RuleElement(operator=operator)
    found = FIND_EXPRESSION.search(text)
    if found:
        return RuleElement(found.group(1), wtoi(found.group(2)), operator, ENTITY)
    found = FIND_KEYWORD.search(text)
    if found:
        return RuleElement(found.group(1), 0, operator, KEYWORD)
    return RuleElement(operator=operator)


def parse_match_rule(rule_text: str, operator_text: str) -> MatchRule:
    """Splits a rule at its operator words; always gives at least one element."""
    rule = MatchRule(operator=operator_from_text(operator_text))
    pending = UNKNOWN_OPERATOR
    position = 0
    while found := FIND_OPERATOR.search(rule_text, position):
        element_text = trim(rule_text[position : found.start(1)])
        rule.elements.append(parse_rule_element(element_text, pending))
        pending = operator_from_text(found.group(1))
        position = found.end()
    rule.elements.append(parse_rule_element(trim(rule_text[position:]), pending))
    return rule


def format_element(number: int, element: RuleElement) -> str:
    text = ""
    if number > 0 and element.operator != UNKNOWN_OPERATOR:
        text = "\t" + operator_to_text(element.operator) + "\t"
    if element.type == ENTITY:
        return f"{text}P:{element.name}({element.count})"
    return f"{text}K:{element.name}"


def format_match_rules(rules: list[MatchRule], texts: list[str], operators: list[str]) -> None:
    """Appends one rule text and one operator text per rule."""
    for rule in rules:
        texts.append("".join(format_element(i, e) for i, e in enumerate(rule.elements)))
        unknown = rule.operator == UNKNOWN_OPERATOR
        operators.append("SKIP" if unknown else operator_to_text(rule.operator))
