"""The keywords of a list, between their stored text and a list of entries."""
from __future__ import annotations

import log
from errors import CommonError
from log import Log
from xmltree import Document, empty_element

Keyword = tuple[str, str, str, str]
"""Keyword, description, score, case sensitivity; all of them text."""

ATTRIBUTES = ("description", "score", "caseSensitive")
KEYWORDS_PATH = "/dictionary/keyword"
TO_XML = "CDLPSubKeywordFormater::ToXmlFormat()"
TO_UI = "CDLPSubKeywordFormater::ToUIFormat()"


def to_xml_format(lines: Log, keywords: list[Keyword]) -> str:
    """The text of the entries in their order, empty when one cannot be written."""
    lines.add(log.ENTER, log.ASSETS, TO_XML)
    try:
        text = write_keywords(keywords)
    except CommonError as error:
        message = "Fail to convert subkeyword to xml format, Error: %s"
        lines.add(log.FAILED, log.ASSETS, message, error.message)
        return ""
    lines.add(log.LEAVE, log.ASSETS, TO_XML + " xml =\n %s", text)
    return text


def to_ui_format(lines: Log, text: str, keywords: list[Keyword]) -> None:
    """Appends the entries of the text and sorts all by keyword; equal ones in any order."""
    lines.add(log.ENTER, log.ASSETS, TO_UI)
    found = read_keywords(text)
    if found is None:
        lines.add(log.FAILED, log.ASSETS, TO_UI + incompatible(), KEYWORDS_PATH)
        return
    keywords.extend(found)
    keywords.sort(key=lambda keyword: keyword[0])


def incompatible() -> str:
    """The end of the messages about a path that a document does not have."""
    return " Unable to find node %s." + " " * 20 + "The xml file format is incompatible."


def write_keywords(keywords: list[Keyword]) -> str:
    document = Document()
    document.load_xml(empty_element("dictionary"))
    dictionary = document.select_single("/dictionary")
    for keyword, *values in keywords:
        node = document.create_node("keyword")
        node.set_text(keyword)
        for name, value in zip(ATTRIBUTES, values):
            node.set_attribute(name, value)
        dictionary.append_child(node)
    return document.save_xml()


def read_keywords(text: str) -> list[Keyword] | None:
    """The entries in document order; None when the text is no `dictionary` document."""
    nodes = keyword_nodes(text)
    if nodes is None:
        return None
    return [(node.get_text(), *map(node.get_attribute, ATTRIBUTES)) for node in nodes]


def keyword_nodes(text: str):
    """The `keyword` elements; None when the text is no `dictionary` document."""
    document = Document()
    document.load_xml(text)
    if document.select_single("/dictionary") is None:
        return None
    return document.select_nodes(KEYWORDS_PATH)
