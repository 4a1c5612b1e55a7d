"""Installation files made up from a taste: the name map, the policy lists and the texts."""

from __future__ import annotations

import spellings as s
from spellings import Taste

Content = str | dict[str, str] | None

MAP_LINES = [
    "Old Card\tcard", "Old Words\twords", "IBAN\tiban", "old card\tssn", "Old Card\tiban",
    "# a comment\tcard",
    "#Old Words\tmarks", " # no comment\tcard", "Old Words  \t marks ", "\tcard", "Old Card",
    "Old Card\t", "Old Card\t\tcard",
    "IBAN\tcard\tiban", "IBAN\tcard\tiban\tssn", "", "   ", "  \tcard", "card\tCard",
    "words\tnothing", "\ufeffIBAN\tssn", "IBAN\u00a0\tiban\u00a0",
    "a&b\tcard", "\u00e9\tiban", "IBAN\t#card", "[section]", "IBAN=card", "; IBAN\tcard",
    "IBAN\x0b\tcard\x0c",
]
POLICY_TEXTS: list[Content] = [
    "", "   \n", "<!-- nothing -->", "<?xml version='1.0'?>", "<SAPolicy/>", "<SAPolicy>", "text",
    "<sapolicy/>", "\ufeff<SAPolicy/>",
    "<!DOCTYPE SAPolicy><SAPolicy/>", "<SAPolicy/><SAPolicy/>",
    "<Other><industries><i name='finance'/></industries></Other>",
    "<!-- a --><!-- b", "<?xml version='1.0' encoding='ISO-8859-1'?><SAPolicy/>",
    {"hex": "fffe" + "<SAPolicy><regions/></SAPolicy>".encode("utf-16-le").hex()},
    {"hex": "feff" + "<SAPolicy><regions/></SAPolicy>".encode("utf-16-be").hex()},
    {"hex": "fffe" + "<a".encode("utf-16-le").hex() + "3d"}, {"hex": "fffe"}, {"hex": "3c61ff2f3e"},
    {"hex": "efbbbf"}, {"hex": "00"},
    {"hex": "3c612f3e00"},
]
SECTIONS = [("validators", "validator"), ("entity_types", "type"), ("dictionary_types", "type"),
            ("industries", "industry"), ("regions", "region")]


class Homes:
    """Makes the files of an installation."""

    def __init__(self, taste: Taste) -> None:
        self._taste = taste
        self._chance = taste.chance

    def home(self) -> dict[str, Content]:
        """All three files."""
        return {"PredefinedDLPPolicy.xml": self._policy(), "cfg_dlp_da_map.txt": self._map(),
                "strings.txt": self._strings()}

    def _map(self) -> Content:
        if self._chance.random() < 0.15:
            return None
        ends = self._chance.choice(["\n", "\n", "\n", "\r\n"])
        lines = [self._chance.choice(MAP_LINES) for _ in range(self._chance.randint(0, 8))]
        text = ends.join(lines) + self._chance.choice(["", ends])
        if self._chance.random() < 0.1:
            bad = self._chance.choice([b"\xff\tcard\n", b"IBAN\t\xc0\xaf\n", b"\xed\xa0\x80\tx\n",
                                       b"IBAN\0\tiban\n"])
            return {"hex": (bad + text.encode()).hex()}
        return text

    def _policy(self) -> Content:
        draw = self._chance.random()
        if draw < 0.1:
            return None
        if draw < 0.2:
            return self._chance.choice(POLICY_TEXTS)
        sections = [self._section(*names) for names in SECTIONS if self._chance.random() < 0.9]
        self._chance.shuffle(sections)
        if self._chance.random() < 0.1:
            sections.append(self._section(*self._chance.choice(SECTIONS)))
        between = self._chance.choice(["", "\n  ", "<!-- c -->", "<other name='o'/>"])
        start = self._chance.choice(["<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n", "", "\ufeff"])
        return start + "<SAPolicy>" + between.join(sections) + "</SAPolicy>"

    def _section(self, section: str, item: str) -> str:
        items = "".join(self._item(item) for _ in range(self._chance.randint(0, 5)))
        return f"<{section}>{items}</{section}>"

    def _item(self, item: str) -> str:
        name = self._taste.name(s.CATEGORY_NAMES)
        shown = self._chance.choice(["b", "A", "a", "<x", "R & D", "\u00e9", "1",
                                     self._taste.text()])
        attributes = [("name", name), ("display_name", shown)]
        kept = [pair for pair in attributes if not self._taste.has("missing attributes")]
        written = "".join(f' {key}="{_escaped(value)}"' for key, value in kept)
        return f"<{item}{written}/>" + self._chance.choice(["", "", "text", "<!-- c -->", "\n"])

    def _strings(self) -> Content:
        texts: list[Content] = ["1009\tEnglish\n", "# 1009\tGerman\n1009\tEnglish", "", "1009\t\n",
                                "1009\tEnglish\n1009\tGerman\n",
                                "1009 English\n", " 1009\tEnglish\n", "1009\tEnglish\r\n",
                                "\ufeff1009\tEnglish\n", "1010\tEnglish\n"]
        draw = self._chance.random()
        return texts[0] if draw < 0.6 else self._chance.choice(texts) if draw < 0.8 else None


def _escaped(text: str) -> str:
    """An attribute's value; a tab or line break is written as a reference or raw, as it comes."""
    for character, reference in (("&", "&amp;"), ("<", "&lt;"), ('"', "&quot;"), ("\r", "&#13;")):
        text = text.replace(character, reference)
    return text
