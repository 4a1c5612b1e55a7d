"""The predefined policy file as five lists of names with display names."""
from __future__ import annotations

import log
from errors import UNSTATED, CommonError, XmlError
from log import Log
from texts import escape_special
from xmltree import Document, Element

SECTIONS = ("validators", "entity_types", "dictionary_types", "industries", "regions")
LISTS = {"validators": "validators", "expression_types": "entity_types",
         "keyword_conditions": "dictionary_types", "industries": "industries",
         "regions": "regions"}
LOADER = "DLPMetaDataLoaderImpl::"

NameLists = tuple[bool, list[str], list[str]]


class MetaData:
    """Loads at once, never again; `policy` is the file's content, None when it is missing."""

    def __init__(self, policy: bytes | None, lines: Log) -> None:
        self._sections = dict.fromkeys(SECTIONS, "")
        self._loaded = False
        self._lines = lines
        self._load(policy)

    def get(self, which: str) -> NameLists:
        """Success, names and display names of one of LISTS; validators ascend by display name."""
        section = LISTS[which]
        result, names, display_names = self._name_list("/" + section, self._sections[section])
        if result and section == "validators":
            pairs = sorted(zip(display_names, names), key=lambda pair: pair[0])
            names = [name for _, name in pairs]
            display_names = [display_name for display_name, _ in pairs]
        return result, names, display_names

    def _log(self, level: int, message: str, *arguments: object) -> None:
        self._lines.add(level, log.PARSE, LOADER + message, *arguments)

    def _load(self, policy: bytes | None) -> None:
        self._log(log.ENTER, "Load()")
        try:
            self._read_sections(policy)
        except CommonError as error:
            self._log(log.CAUGHT, "Load() failed: %s", error.message)
            return
        self._loaded = True
        self._log(log.LEAVE, "Load(), loaded = %d", self._loaded)

    def _read_sections(self, policy: bytes | None) -> None:
        if policy is None:
            raise XmlError(UNSTATED)
        document = Document()
        document.load_bytes(policy)
        root = document.root()
        for section in SECTIONS if root is not None else ():
            node = root.select_single("/SAPolicy/" + section)
            if node is not None:
                self._sections[section] = node.get_xml()

    def _make_dom_node(self, xml: str, path: str) -> Element | None:
        message = "MakeDOMNode(xmllength=%d, rootNodeName='%s')"
        self._log(log.ENTER, message, len(xml), path)
        document = Document()
        if not self._loaded or not xml or not document.load_xml(xml):
            return None
        node = document.root().select_single(path)
        self._log(log.LEAVE, "MakeDOMNode() return %s", log.POINTER)
        return node

    def _name_list(self, path: str, xml: str) -> NameLists:
        node = self._make_dom_node(xml, path)
        if node is None:
            return False, [], []
        items = node.children()
        return (True, [escape_special(item.get_attribute("name")) for item in items],
                [escape_special(item.get_attribute("display_name")) for item in items])
