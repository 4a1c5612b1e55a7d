"""What a document holds, read by expat alone: element names as written and attributes in their order."""

from __future__ import annotations

from collections import Counter
from dataclasses import dataclass
from xml.parsers import expat

NAMED = {"entity": "expressions", "dictionary": "keyword_lists", "template": "templates"}


@dataclass(frozen=True)
class Element:
    """A start tag: the names on the way to it, its own the last, and its attributes."""

    path: tuple[str, ...]
    attributes: tuple[tuple[str, str], ...]

    @property
    def name(self) -> str:
        """The element's own name."""
        return self.path[-1]

    def get(self, name: str) -> str | None:
        """An attribute's value."""
        return dict(self.attributes).get(name)


def elements(text: str) -> list[Element]:
    """All elements in document order; none of a text that is not well-formed."""
    found: list[Element] = []
    path: list[str] = []

    def start(name: str, flat: list[str]) -> None:
        path.append(name)
        found.append(Element(tuple(path), tuple(zip(flat[::2], flat[1::2]))))

    parser = expat.ParserCreate("UTF-8")
    parser.ordered_attributes = True
    parser.StartElementHandler = start
    parser.EndElementHandler = lambda _: path.pop()
    try:
        parser.Parse(text.removeprefix("\ufeff").encode(errors="surrogatepass"), True)
    except expat.ExpatError:
        return []
    return found


def _folded(text: str | None) -> str:
    """With ASCII letters in lower case."""
    return "".join(c.lower() if c.isascii() else c for c in text or "")


def names(text: str) -> dict[str, list[str]]:
    """The names that a document gives its expressions, keyword lists and templates, by the store's lists."""
    found: dict[str, list[str]] = {kind: [] for kind in NAMED.values()}
    for element in elements(text):
        if element.name in NAMED and element.get("name") is not None:
            found[NAMED[element.name]].append(element.get("name"))
    return found


def repeated(text: str) -> set[tuple[str, str]]:
    """The kinds and names that more than one element has."""
    counted = Counter((kind, name) for kind, found in names(text).items() for name in found)
    return {pair for pair, number in counted.items() if number > 1}


def replaces_itself(text: str) -> bool:
    """Whether elements of one name may be told otherwise the next time: they are not all made by users."""
    free = {(NAMED.get(e.name), e.get("name")) for e in elements(text) if _folded(e.get("pre-defined")) != "false"}
    return bool(free & repeated(text))


# -- the order of attributes in what is exported ---------------------------------------------------------------------

TYPE_ATTRIBUTES = {"type 1": ["minLength", "maxLength"], "type 2": ["minLength", "maxLength", "suffixLength"],
                   "type 3": ["minLeftRadius", "maxLeftRadius", "maxRightRadius"]}
CONDITION_ATTRIBUTES = {"Threshold": ["threshold"], "Distance": ["number"]}  # in this spelling alone
SHOWN = ["display_name", "description", "pre-defined"]
FIXED = {
    "SAPolicy": ["template_version", "localization_language"],
    "digitalAssets": ["command"], "regularExpression": [], "alphabetCharset": [],
    "patternForDisplay": [], "examples": [],
    "complianceTemplates": ["command"], "template": ["name", *SHOWN],
    "industries": [], "industry": ["name", "display_name"],
    "regions": [], "region": ["name", "display_name"], "template_id": [],
}


def expected_attributes(element: Element) -> list[str]:
    """The attributes that an exported element has, in their order."""
    optional = ["operation"] if element.get("operation") is not None else []
    if element.name == "entity":
        own = TYPE_ATTRIBUTES.get(_folded(element.get("type")), [])
        return ["name", "type", "caseSensitive", "validator", *own, *SHOWN]
    if element.name == "dictionary":
        return ["name", "type", *CONDITION_ATTRIBUTES.get(element.get("type"), []), *SHOWN]
    if element.name == "matchRule":
        return optional
    if element.name == "buildingBlock":
        hits = ["entityHits"] if element.get("sourceType") == "ENTITY" else []
        return ["sourceType", *hits, "sourceName", *optional]
    return FIXED[element.name]


def misordered(text: str) -> list[str]:
    """The elements whose attributes are not the expected ones in their order; keywords stay as they were stored."""
    problems = []
    for element in elements(text):
        if "keyword" not in element.path:
            given = [name for name, _ in element.attributes]
            if given != expected_attributes(element):
                problems.append(f"{'/'.join(element.path)}: {given}, expected {expected_attributes(element)}")
    return problems
