"""Documents as the library sees them: strict parsing, a plain tree, the few XPaths, writing.

Text that does not parse leaves a document empty. Nothing here recurses over a document.
"""
from __future__ import annotations

import re
from collections.abc import Iterator
from xml.parsers import expat

from errors import UNSTATED, XmlError

MAX_DEPTH = 256
DECLARATION = '<?xml version="1.0" encoding="UTF-8"?>'
BLANKS = " \t\r\n"
_BYTE_ORDER_MARK = "\ufeff"
_ESCAPES = {"&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;", "\r": "&#13;"}
_NO_ELEMENTS = expat.errors.codes[expat.errors.XML_ERROR_NO_ELEMENTS]
_NO_XML_CHARACTER = re.compile("[^\t\n\r\x20-\ud7ff\ue000-\ufffd\U00010000-\U0010ffff]")
_TEXT_ESCAPES = str.maketrans(_ESCAPES)
_ATTRIBUTE_ESCAPES = str.maketrans(_ESCAPES | {"\t": "&#9;", "\n": "&#10;"})


class Node:
    """Anything that stands in an element or beside the root."""

    def __init__(self) -> None:
        self.parent: Element | None = None


class Text(Node):
    """Character data; a CDATA section when `cdata` is set."""

    def __init__(self, data: str, cdata: bool = False) -> None:
        super().__init__()
        self.data = data
        self.cdata = cdata

    def markup(self) -> str:
        if self.cdata:
            return f"<![CDATA[{self.data}]]>"
        return self.data.translate(_TEXT_ESCAPES)


class Raw(Node):
    """A comment or a processing instruction, kept as it is written."""

    def __init__(self, text: str) -> None:
        super().__init__()
        self.text = text

    def markup(self) -> str:
        return self.text


class Element(Node):
    """An element; every operation that callers of the library see walks element children only."""

    def __init__(self, name: str) -> None:
        super().__init__()
        self.name = name
        self.attributes: dict[str, str] = {}
        self.nodes: list[Node] = []

    def children(self) -> list[Element]:
        """The element children in document order (a snapshot)."""
        return [node for node in self.nodes if isinstance(node, Element)]

    def get_text(self) -> str:
        """All text and CDATA at any depth, as it stands."""
        return "".join(node.data for node in walk(self) if isinstance(node, Text))

    def set_text(self, text: str) -> None:
        """Replaces all content; raises XmlError for a character that XML cannot carry."""
        check_characters(text)
        for node in self.nodes:
            node.parent = None
        self.nodes = []
        if text:
            self._adopt(Text(text))

    def get_attribute(self, name: str) -> str:
        """The value, empty when there is no such attribute."""
        return self.attributes.get(name, "")

    def set_attribute(self, name: str, value: str) -> None:
        """Adds at the end or replaces in place; raises XmlError as set_text does."""
        check_characters(value)
        self.attributes[name] = value

    def remove_attribute(self, name: str) -> None:
        """Removes the attribute; nothing happens when there is none."""
        self.attributes.pop(name, None)

    def append_child(self, node: Element) -> Element:
        """Moves a node of the same tree or a loose one, copies one of another document.

        Gives the node at its new place, which is what an owning pointer would be bound to.
        """
        if node is self or node in ancestors(self):
            raise XmlError(UNSTATED)
        if top(node) is node and not isinstance(node, Root) or top(node) is top(self):
            if node.parent is not None:
                node.parent.nodes.remove(node)
        else:
            node = detached_copy(node)
        self._adopt(node)
        return node

    def select_single(self, xpath: str) -> Element | None:
        """First match of "./a/b" from here or of "/a/b" from the top of the tree, else None."""
        found = self.select_nodes(xpath)
        return found[0] if found else None

    def select_nodes(self, xpath: str) -> list[Element]:
        """All matches in document order."""
        if xpath.startswith("./"):
            return descend([self], xpath[2:].split("/"))
        return descend([top(self)], xpath[1:].split("/"))

    def get_xml(self) -> str:
        """The markup without a declaration, with every namespace declaration in scope."""
        return write(self, self.attributes | inherited_declarations(self))

    def _adopt(self, node: Node) -> None:
        node.parent = self
        self.nodes.append(node)


class Root(Element):
    """The invisible top of a document: the root element and what stands beside it."""

    def __init__(self) -> None:
        super().__init__("")


class Document:
    """A whole document; empty until a text was loaded with success."""

    def __init__(self) -> None:
        self.declaration = ""
        self._top = Root()

    def load_xml(self, text: str) -> bool:
        """Loads wide text, whatever encoding it declares; False leaves the document empty."""
        self.declaration, self._top = "", Root()
        try:
            self._take(Reader(), text)
        except (expat.ExpatError, UnicodeError, XmlError):
            return False
        return True

    def load_bytes(self, data: bytes) -> None:
        """Loads a file's content; raises XmlError. A file without any element has no root."""
        self.declaration, self._top = "", Root()
        reader = Reader()
        try:
            self._take(reader, decode_file(data))
        except (expat.ExpatError, UnicodeError, XmlError) as error:
            if getattr(error, "code", None) != _NO_ELEMENTS or reader.top.children():
                raise XmlError(UNSTATED) from error

    def save_xml(self) -> str:
        """The declaration as it was loaded, if any, and all that stands beside and in the root."""
        return self.declaration + "".join(write_node(node) for node in self._top.nodes)

    def root(self) -> Element | None:
        """The root element, None for an empty document."""
        return next(iter(self._top.children()), None)

    def create_node(self, name: str) -> Element:
        """A new, loose element."""
        return Element(name)

    def select_single(self, xpath: str) -> Element | None:
        """First match of "/a/b" in the document, else None."""
        found = self.select_nodes(xpath)
        return found[0] if found else None

    def select_nodes(self, xpath: str) -> list[Element] | None:
        """All matches; None when there is no root."""
        return None if self.root() is None else self._top.select_nodes(xpath)

    def _take(self, reader: Reader, text: str) -> None:
        reader.read(text.removeprefix(_BYTE_ORDER_MARK))
        drop_blanks_between_elements(reader.top)
        self.declaration, self._top = reader.declaration, reader.top


class Reader:
    """Builds the tree from the parser's events; refuses what the formats do not take."""

    def __init__(self) -> None:
        self.top = Root()
        self.declaration = ""
        self._here: Element = self.top
        self._depth = 0
        self._cdata: list[str] | None = None

    def read(self, text: str) -> None:
        if text.startswith(_BYTE_ORDER_MARK) or "\0" in text:
            raise XmlError(UNSTATED)
        self._parser().Parse(text.encode("utf-8"), True)
        if text.startswith("<?xml") and text[5:6] in tuple(BLANKS):
            self.declaration = text[: text.index("?>") + 2]

    def _parser(self) -> expat.XMLParserType:
        parser = expat.ParserCreate("UTF-8")
        parser.ordered_attributes = True
        parser.buffer_text = True
        parser.StartElementHandler = self._start
        parser.EndElementHandler = self._end
        parser.CharacterDataHandler = self._characters
        parser.StartCdataSectionHandler = self._start_cdata
        parser.EndCdataSectionHandler = self._end_cdata
        parser.CommentHandler = lambda data: self._add(Raw(f"<!--{data}-->"))
        parser.ProcessingInstructionHandler = self._instruction
        parser.StartDoctypeDeclHandler = self._refuse_doctype
        return parser

    def _add(self, node: Node) -> None:
        node.parent = self._here
        self._here.nodes.append(node)

    def _start(self, name: str, attributes: list[str]) -> None:
        self._depth += 1
        if self._depth > MAX_DEPTH:
            raise XmlError(UNSTATED)
        element = Element(name)
        element.attributes = dict(zip(attributes[::2], attributes[1::2]))
        self._add(element)
        self._here = element

    def _end(self, _name: str) -> None:
        self._depth -= 1
        self._here = self._here.parent

    def _characters(self, data: str) -> None:
        if self._cdata is not None:
            self._cdata.append(data)
        else:
            self._add_text(data)

    def _add_text(self, data: str) -> None:
        """Long text arrives in pieces; one run is one node."""
        last = self._here.nodes[-1] if self._here.nodes else None
        if isinstance(last, Text) and not last.cdata:
            last.data += data
        else:
            self._add(Text(data))

    def _start_cdata(self) -> None:
        self._cdata = []

    def _end_cdata(self) -> None:
        self._add(Text("".join(self._cdata), cdata=True))
        self._cdata = None

    def _instruction(self, target: str, data: str) -> None:
        self._add(Raw(f"<?{target} {data}?>" if data else f"<?{target}?>"))

    def _refuse_doctype(self, *_arguments: object) -> None:
        raise XmlError(UNSTATED)


def decode_file(data: bytes) -> str:
    """UTF-16 of either order when its mark says so, else UTF-8 whatever is declared."""
    for mark, encoding in ((b"\xff\xfe", "utf-16-le"), (b"\xfe\xff", "utf-16-be")):
        if data.startswith(mark):
            return data.decode(encoding)
    return data.decode("utf-8")


def check_characters(text: str) -> None:
    """Raises XmlError for a character that no document can carry, however it is written."""
    if _NO_XML_CHARACTER.search(text):
        raise XmlError(UNSTATED)


def walk(top_node: Element) -> Iterator[Node]:
    """The node and all below it, in document order."""
    waiting: list[Node] = [top_node]
    while waiting:
        node = waiting.pop()
        yield node
        if isinstance(node, Element):
            waiting.extend(reversed(node.nodes))


def ancestors(node: Node) -> list[Element]:
    """All elements above, nearest first."""
    found = []
    while node.parent is not None:
        node = node.parent
        found.append(node)
    return found


def top(node: Node) -> Element:
    """The top of the tree that the node stands in; a loose node is its own."""
    return ([node] + ancestors(node))[-1]


def descend(context: list[Element], names: list[str]) -> list[Element]:
    """The elements reached from the context by unprefixed child names."""
    for name in names:
        context = [child for element in context for child in element.children()
                   if child.name == name]
    return context


def detached_copy(element: Element) -> Element:
    """A loose copy of the subtree, with the namespace declarations in scope written on it."""
    clone = shallow_copy(element)
    clone.attributes |= inherited_declarations(element)
    waiting = [(element, clone)]
    while waiting:
        source, target = waiting.pop()
        for node in source.nodes:
            child = shallow_copy(node)
            child.parent = target
            target.nodes.append(child)
            if isinstance(node, Element):
                waiting.append((node, child))
    return clone


def shallow_copy(node: Node) -> Node:
    """The node alone: no parent, no content."""
    if isinstance(node, Element):
        clone = Element(node.name)
        clone.attributes = dict(node.attributes)
        return clone
    return Text(node.data, node.cdata) if isinstance(node, Text) else Raw(node.text)


def inherited_declarations(element: Element) -> dict[str, str]:
    """Namespace declarations of the elements above, the nearest of each; xmlns="" is none."""
    found: dict[str, str] = {}
    for above in ancestors(element):
        for name, value in above.attributes.items():
            if is_declaration(name) and name not in element.attributes:
                found.setdefault(name, value)
    return {name: value for name, value in found.items() if value}


def is_declaration(name: str) -> bool:
    return name == "xmlns" or name.startswith("xmlns:")


def drop_blanks_between_elements(top_node: Element) -> None:
    """Forgets blank text where elements stand without any other text, as in indented files."""
    for node in list(walk(top_node)):
        if isinstance(node, Element) and node.children() and all(map(is_blank, texts_of(node))):
            node.nodes = [child for child in node.nodes
                          if not isinstance(child, Text) or child.cdata]


def texts_of(element: Element) -> list[Text]:
    return [node for node in element.nodes if isinstance(node, Text)]


def is_blank(text: Text) -> bool:
    return not text.data.strip(BLANKS)


def write_node(node: Node) -> str:
    return write(node, node.attributes) if isinstance(node, Element) else node.markup()


def write(element: Element, attributes: dict[str, str]) -> str:
    """The markup of a subtree; `attributes` are those to write on its top."""
    parts: list[str] = []
    waiting: list[Node | str] = [element]
    while waiting:
        node = waiting.pop()
        if isinstance(node, str):
            parts.append(node)
        elif isinstance(node, Element):
            tag = start_tag(node.name, attributes if node is element else node.attributes)
            parts.append(tag + (">" if node.nodes else "/>"))
            waiting.extend([f"</{node.name}>"] if node.nodes else [])
            waiting.extend(reversed(node.nodes))
        else:
            parts.append(node.markup())
    return "".join(parts)


def start_tag(name: str, attributes: dict[str, str]) -> str:
    written = (f' {key}="{value.translate(_ATTRIBUTE_ESCAPES)}"'
               for key, value in attributes.items())
    return f"<{name}" + "".join(written)


def empty_element(name: str) -> str:
    """The text of an element with an opening and a closing tag and nothing between."""
    return f"<{name}></{name}>"
