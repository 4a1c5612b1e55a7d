"""One compliance template: its element, its rules, and the list of templates that export writes."""

from __future__ import annotations

from dataclasses import dataclass, field

import log
import rules
from errors import CommonError
from log import Log
from rules import MatchRule, RuleElement
from texts import flag, wtoi
from xmltree import Document, Element, empty_element

CONSTRUCT_FAILED = "Fail to construct CComplianceTemplates, Error: %s"


@dataclass
class Template:
    """A template in memory."""

    name: str = ""
    display_name: str = ""
    description: str = ""
    pre_defined: bool = False
    rules: list[MatchRule] = field(default_factory=list)


def read_element(node: Element) -> RuleElement:
    return RuleElement(
        name=node.get_attribute("sourceName"),
        count=wtoi(node.get_attribute("entityHits")),
        operator=rules.operator_from_text(node.get_attribute("operation")),
        type=rules.type_from_text(node.get_attribute("sourceType")),
    )


def read_rule(node: Element) -> MatchRule:
    """Every child element is a block, whatever its name."""
    blocks = [read_element(child) for child in node.children()]
    return MatchRule(blocks, rules.operator_from_text(node.get_attribute("operation")))


def read_template(node: Element) -> Template:
    """Every child element is a rule, whatever its name."""
    return Template(
        name=node.get_attribute("name"),
        display_name=node.get_attribute("display_name"),
        description=node.get_attribute("description"),
        pre_defined=node.get_attribute("pre-defined") == "true",
        rules=[read_rule(child) for child in node.children()],
    )


def template_from_text(text: str) -> Template:
    """A text that is no `template` document gives an empty template."""
    document = Document()
    document.load_xml(text)
    node = document.select_single("/template")
    return Template() if node is None else read_template(node)


def template_from_rules(
    name: str, display_name: str, description: str, texts: list[str], operators: list[str]
) -> Template:
    """The rules of a user's template; the shorter list ends them."""
    found = [rules.parse_match_rule(text, operator) for text, operator in zip(texts, operators)]
    return Template(name, display_name, description, False, found)


def write_operation(node: Element, operator: int) -> None:
    if operator != rules.UNKNOWN_OPERATOR:
        node.set_attribute("operation", rules.operator_to_text(operator))


def write_rule(document: Document, parent: Element, rule: MatchRule) -> None:
    rule_node = parent.append_child(document.create_node("matchRule"))
    write_operation(rule_node, rule.operator)
    for block in rule.elements:
        node = rule_node.append_child(document.create_node("buildingBlock"))
        node.set_attribute("sourceType", rules.type_to_text(block.type))
        if block.type == rules.ENTITY:
            node.set_attribute("entityHits", str(block.count))
        node.set_attribute("sourceName", block.name)
        write_operation(node, block.operator)


def write_template(template: Template) -> str:
    """The `template` element as text; raises XmlError for what XML cannot carry."""
    document = Document()
    document.load_xml(empty_element("template"))
    node = document.select_single("/template")
    node.set_attribute("name", template.name)
    node.set_attribute("display_name", template.display_name)
    node.set_attribute("description", template.description)
    node.set_attribute("pre-defined", flag(template.pre_defined))
    for rule in template.rules:
        write_rule(document, node, rule)
    return document.save_xml()


def to_xml_string(lines: Log, template: Template) -> str:
    """The same; a failure is logged and gives an empty text."""
    try:
        return write_template(template)
    except CommonError as error:
        lines.add(log.CAUGHT, log.TEMPLATE, CONSTRUCT_FAILED, error.message)
        return ""


def write_templates(templates: list[Template]) -> str:
    document = Document()
    document.load_xml(empty_element("complianceTemplates"))
    parent = document.select_single("/complianceTemplates")
    parent.set_attribute("command", "overwrite")
    for template in templates:
        one = Document()
        one.load_xml(write_template(template))
        node = one.select_single("/template")
        if node is not None:
            parent.append_child(node)
    return document.save_xml()


def make_compliance_templates_xml(lines: Log, templates: list[Template]) -> str:
    """The `complianceTemplates` document; a failure is logged once and gives an empty text."""
    try:
        return write_templates(templates)
    except CommonError as error:
        lines.add(log.CAUGHT, log.TEMPLATE, CONSTRUCT_FAILED, error.message)
        return ""


def dump_operator(operator: int) -> str:
    return "" if operator == rules.UNKNOWN_OPERATOR else rules.operator_to_text(operator)


def dump_rules(element: str) -> list[dict]:
    """The rules of a stored element as the dump shows them."""
    return [
        {
            "operation": dump_operator(rule.operator),
            "blocks": [
                {
                    "source_type": rules.type_to_text(block.type),
                    "entity_hits": block.count,
                    "source_name": block.name,
                    "operation": dump_operator(block.operator),
                }
                for block in rule.elements
            ],
        }
        for rule in template_from_text(element).rules
    ]
