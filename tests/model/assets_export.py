"""Stored expressions and keyword lists as elements of a document."""
from __future__ import annotations

from collections.abc import Callable

import log
from errors import CommonError
from log import Log
from records import Asset, Expression, KeywordList, Store
from subkeywords import KEYWORDS_PATH, incompatible, keyword_nodes
from texts import flag, same_ignoring_case
from xmltree import Document, Element, empty_element

Attributes = list[tuple[str, str]]

GENERATE = "CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()"
TYPE_NUMBERS = {
    "Generic": (),
    "Type 1": (("minLength", "min_length"), ("maxLength", "max_length")),
    "Type 2": (("minLength", "min_length"), ("maxLength", "max_length"),
               ("suffixLength", "suffix_length")),
    "Type 3": (("minLeftRadius", "min_left_radius"), ("maxLeftRadius", "max_left_radius"),
               ("maxRightRadius", "max_right_radius")),
}
CONDITION_NUMBERS = {
    "All": (),
    "Any": (),
    "Threshold": (("threshold", "threshold"),),
    "Distance": (("number", "number"),),
}
SUB_ELEMENTS = (("regularExpression", "pattern"), ("alphabetCharset", "alphabet_charset"),
                ("patternForDisplay", "display_format"), ("examples", "example"))


def digital_assets_xml(store: Store, lines: Log, expressions: list[str],
                       keywords: list[str]) -> str | None:
    """The `digitalAssets` element: the expressions, then the lists, each as asked for."""
    lines.add(log.ENTER, log.ASSETS, GENERATE)
    try:
        document = Document()
        document.load_xml(empty_element("digitalAssets"))
        assets = document.select_single("/digitalAssets")
        assets.set_attribute("command", "overwrite")
        if not (append_all(store, lines, assets, expressions, Expression, "entity", entity_xml)
                and append_all(store, lines, assets, keywords, KeywordList, "dictionary",
                               dictionary_xml)):
            return None
        text = document.save_xml()
    except CommonError as error:
        message = "Fail to generate digital access xml, Error: %s"
        lines.add(log.CAUGHT, log.ASSETS, message, error.message)
        return None
    lines.add(log.LEAVE, log.ASSETS, GENERATE)
    return text


def append_all(store: Store, lines: Log, assets: Element, subjects: list[str], kind: type,
               tag: str, generate: Callable[[Log, Asset], str | None]) -> bool:
    """Appends the element of each record; False at the first that has none."""
    for subject in subjects:
        text = generate(lines, store.get(kind, subject))
        if text is None:
            lines.add(log.FAILED, log.ASSETS, f"Fail to generate {tag} node.")
            return False
        document = Document()
        document.load_xml(text)
        node = document.select_single("/" + tag)
        if node is None:
            lines.add(log.FAILED, log.ASSETS, "Fail to find node %s", tag)
            return False
        assets.append_child(node)
    return True


def entity_xml(lines: Log, record: Expression) -> str | None:
    try:
        document, element = start("entity", entity_attributes(lines, record))
        for name, member in SUB_ELEMENTS:
            node = document.create_node(name)
            node.set_text(getattr(record, member))
            element.append_child(node)
        return document.save_xml()
    except CommonError as error:
        lines.add(log.CAUGHT, log.ASSETS, "Fail to generate entity xml, Error: %s", error.message)
        return None


def dictionary_xml(lines: Log, record: KeywordList) -> str | None:
    try:
        document, element = start("dictionary", dictionary_attributes(lines, record))
        nodes = keyword_nodes(record.text)
        if nodes is None:
            message = "CDLPDigitalAssetsParser::GenerateDictionaryXml()" + incompatible()
            lines.add(log.FAILED, log.ASSETS, message, KEYWORDS_PATH)
            return None
        for node in nodes:
            element.append_child(node)
        return document.save_xml()
    except CommonError as error:
        message = "Fail to generate dictionary xml, Error: %s"
        lines.add(log.CAUGHT, log.ASSETS, message, error.message)
        return None


def start(tag: str, attributes: Attributes) -> tuple[Document, Element]:
    """A new document with the element and its attributes."""
    document = Document()
    document.load_xml(empty_element(tag))
    element = document.select_single("/" + tag)
    for name, value in attributes:
        element.set_attribute(name, value)
    return document, element


def entity_attributes(lines: Log, record: Expression) -> Attributes:
    first = [("name", record.name), ("type", record.type),
             ("caseSensitive", flag(record.case_sensitive)), ("validator", record.validator)]
    known = next((name for name in TYPE_NUMBERS if same_ignoring_case(name, record.type)), None)
    if known is None:
        lines.add(log.INVALID, log.ASSETS, "Unknow expression type")
    return first + numbers(record, TYPE_NUMBERS.get(known, ())) + last_attributes(record)


def dictionary_attributes(lines: Log, record: KeywordList) -> Attributes:
    """Unlike an expression's type, the condition is known in its exact spelling only."""
    if record.condition not in CONDITION_NUMBERS:
        lines.add(log.INVALID, log.ASSETS, "Unknow dictionary type")
    return ([("name", record.name), ("type", record.condition)]
            + numbers(record, CONDITION_NUMBERS.get(record.condition, ()))
            + last_attributes(record))


def numbers(record: Asset, columns: tuple[tuple[str, str], ...]) -> Attributes:
    return [(name, str(getattr(record, member))) for name, member in columns]


def last_attributes(record: Asset) -> Attributes:
    return [("display_name", record.display_name), ("description", record.description),
            ("pre-defined", flag(record.pre_defined))]
