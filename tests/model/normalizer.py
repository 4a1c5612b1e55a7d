"""Rewrites a document of the older layout; the map of old asset names to those of today."""

from __future__ import annotations

import log
from checking import TEMPLATES_PATH
from errors import UNSTATED, CommonError
from process import Process
from texts import trim_right
from xmltree import Document, Element, detached_copy


def map_fields(line: str) -> tuple[str, str] | None:
    """Source and destination name of a line of the map file; None when it gives no entry."""
    fields = line.split("\t")
    if fields[0].startswith("#") or len(fields) < 2:
        return None
    source, destination = trim_right(fields[0]), trim_right(fields[1])
    return (source, destination) if source and destination else None


class XmlNormalizer:
    """One rewriting; the name map belongs to the process."""

    def __init__(self, process: Process) -> None:
        self.log = process.log
        self.assets = process.assets
        self.names = process.asset_names
        self.map_file = process.home.get("cfg_dlp_da_map.txt")

    def init_mapping_table(self) -> None:
        """Reads the map file unless the map has entries already."""
        text = "CDLPXmlNormalizer::InitDigitalAssetsMappingTable()"
        self.log.add(log.ENTER, log.MANAGER, text)
        if self.names:
            return
        data = (self.map_file or b"").removeprefix(b"\xef\xbb\xbf")
        for line in data.split(b"\n"):
            self._read_line(line)
        self.log.add(log.LEAVE, log.MANAGER, text)

    def _read_line(self, line: bytes) -> None:
        try:
            entry = map_fields(line.decode("utf-8"))
        except UnicodeDecodeError:
            self.log.add(log.CAUGHT, log.MANAGER_HEADER, UNSTATED)
            return
        if entry is None:
            return
        source, destination = entry
        self.log.add(log.INFORMATION, log.MANAGER_HEADER, "srcName = %s", source)
        self.log.add(log.INFORMATION, log.MANAGER_HEADER, "dstName = %s", destination)
        self.names[source] = destination

    def normalize_xml(self, xml: str, before: str = "") -> tuple[bool, str]:
        """False only after an exception; without a template list the text is `before`."""
        text = "CDLPXmlNormalizer::NormailzeXml()"
        self.log.add(log.ENTER, log.MANAGER, text)
        try:
            result = before
            nodes = self.get_all_template_nodes(xml)
            if nodes is not None:
                markup = "".join([self.normalize_template(node) for node in nodes])
                result = self.wrap_template_list(markup)
            self.log.add(log.LEAVE, log.MANAGER, text)
            return True, result
        except CommonError as error:
            self.log.add(log.FAILED, log.MANAGER, text + ", Error: %s", error.message)
            return False, before

    def get_all_template_nodes(self, xml: str) -> list[Element] | None:
        text = "CDLPXmlNormalizer::GetAllTemplateNodes()"
        self.log.add(log.ENTER, log.MANAGER, text)
        document = Document()
        document.load_xml(xml)
        nodes = document.select_nodes(TEMPLATES_PATH)
        if nodes is None:
            missing = text + " Unable to find node %s. The xml file format is incompatible."
            self.log.add(log.FAILED, log.MANAGER, missing, TEMPLATES_PATH)
            return None
        self.log.add(log.LEAVE, log.MANAGER, text)
        # They outlive their document, so each carries the namespaces that it stood in from here on.
        return [detached_copy(node) for node in nodes]

    def normalize_template(self, node: Element) -> str:
        """The rewritten markup; a built-in template gives none."""
        text = "CDLPXmlNormalizer::NormalizeTemplate()"
        self.log.add(log.ENTER, log.MANAGER, text)
        if node.get_attribute("builtin") == "1":
            return ""
        node.set_attribute("display_name", node.get_attribute("displayName"))
        node.set_attribute("pre-defined", "false")
        node.set_attribute("severity", "medium")
        node.remove_attribute("displayName")
        node.remove_attribute("builtin")
        self.normalize_building_blocks(node)
        markup = node.get_xml()
        self.log.add(log.LEAVE, log.MANAGER, text)
        return markup

    def normalize_building_blocks(self, node: Element) -> None:
        text = "CDLPXmlNormalizer::NormalizeBuildingBlocks()"
        self.log.add(log.ENTER, log.MANAGER, text)
        for block in node.select_nodes("./matchRule/buildingBlock"):
            name = self.map_source_name(block.get_attribute("sourceName"))
            block.set_attribute("sourceName", name)
        self.log.add(log.LEAVE, log.MANAGER, text)

    def map_source_name(self, name: str) -> str:
        text = "CDLPXmlNormalizer::MapDigitalAssetsSourceName()"
        self.log.add(log.ENTER, log.MANAGER, text)
        if name not in self.names:
            missing = "can't map digital asset source name: %s"
            self.log.add(log.CAUGHT, log.MANAGER, missing, name)
        self.log.add(log.LEAVE, log.MANAGER, text)
        return self.names.get(name, name)

    def wrap_template_list(self, markup: str) -> str:
        """The whole document of today; raises CommonError without a message."""
        text = "CDLPXmlNormalizer::WrapTemplateList()"
        self.log.add(log.ENTER, log.MANAGER, text)
        templates = Document()
        wrapped = f"<complianceTemplates>{markup}</complianceTemplates>"
        list_node = self._load(templates, wrapped, "complianceTemplates")
        list_node.set_attribute("command", "overwrite")
        policy = Document()
        root_node = self._load(policy, self.assets.generate_root_xml() or "", "SAPolicy")
        root_node.append_child(list_node)
        result = policy.save_xml()
        self.log.add(log.LEAVE, log.MANAGER, text)
        return result

    def _load(self, document: Document, text: str, tag: str) -> Element:
        document.load_xml(text)
        node = document.select_single("/" + tag)
        if node is None:
            self.log.add(log.FAILED, log.MANAGER, "Fail to find node %s", tag)
            raise CommonError("")
        return node
