"""Documents made up from a taste: whole policies, their parts, and what is almost XML."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Callable

import spellings as s
from spellings import Taste

DECLARATIONS = ['<?xml version="1.0" encoding="UTF-8"?>', "<?xml version='1.0'?>", "",
                '<?xml version="1.0" encoding="UTF-8"?>\n',
                '<?xml version="1.0" encoding="UTF-16" standalone="yes"?>',
                '<?xml version="1.0" encoding="no-such"?>',
                "<?xml version='1.0' encoding='utf-8' standalone='no'?>",
                '<?xml version="1.1"?>', "<!-- first --><?first?>"]
REFERENCES = {"&": ["&amp;", "&#38;", "&#x26;"], "<": ["&lt;", "&#60;", "&#x3C;"],
              ">": ["&gt;", ">", "&#62;"],
              '"': ["&quot;", "&#34;"], "'": ["&apos;", "&#39;"], "\t": ["&#9;", "&#x9;"],
              "\n": ["&#10;", "&#xA;"],
              "\r": ["&#13;", "&#xd;"]}
BETWEEN = ["\n  ", "\n", " ", "\r\n\t", "&#32;", "&#10;"]
COMMENTS = ["<!-- a comment -->", "<!---->", "<!-- <entity name='no'/> -->",
            "<?instruction with data?>", "<?alone?>",
            "<?x >?>", "<?spaced   out  ?>", "<!--\r\n\u00e9\U0001f600]]>&amp;-->"]
MARKUP = ["<", ">", "/>", "</a>", "<a/>", "<a>", "]]>", "<![CDATA[", "<![CDATA[]]>",
          "<![CDATA[\r\n<]]>", "&#x20;", "&#13;", "&amp;", "&",
          '"', "'", " ", "=", " a='b'", " xmlns='u'", " xmlns:p='u'", "p:", "<!--", "-->",
          "<!-- \r -->", "<?", "?>", "<?p \r\n?>",
          "\t", "\r", "\r\n", "\n", "\ufeff", "\u0085", "\u2028", "&#x1F600;", "&lt", "&quot;", "x",
          "<keyword>", "</keyword>"]


@dataclass
class Tag:
    """An element; attributes may be doubled, children are elements and text to be escaped."""

    name: str
    attributes: list[tuple[str, str]] = field(default_factory=list)
    children: list["Tag | str"] = field(default_factory=list)


class Writer:
    """Writes tags as text, in the many ways that mean the same (and a few that do not)."""

    def __init__(self, taste: Taste) -> None:
        self._taste = taste
        self._chance = taste.chance

    def write(self, tag: Tag) -> str:
        """The markup of an element."""
        name, attributes = tag.name, list(tag.attributes)
        if self._taste.has("namespaces"):
            name = self._namespace(name, attributes)
        start = "<" + name + "".join(self._attribute(*pair) for pair in attributes)
        start += self._chance.choice(["", "", "", " "])
        if not tag.children and self._chance.random() < 0.7:
            return start + "/>"
        return f"{start}>{self._content(tag)}</{name}{self._chance.choice(['', '', ' '])}>"

    def _namespace(self, name: str, attributes: list[tuple[str, str]]) -> str:
        declare = [("xmlns", "urn:a"), ("xmlns:p", "urn:p"), ("xmlns:q", "urn:q&\"'"),
                   ("xmlns", ""), ("xmlns:p", "")]
        attributes.insert(self._chance.randint(0, len(attributes)), self._chance.choice(declare))
        if self._chance.random() < 0.2:
            attributes.append(("p:name", "prefixed"))
        if self._chance.random() < 0.15:
            return "p:" + name
        return name

    def _attribute(self, name: str, value: str) -> str:
        quote = self._chance.choice(["\"", "\"", "\"", "'"])
        equals = self._chance.choice(["=", "=", "=", " = "])
        before = self._chance.choice([" ", " ", " ", "\n  "])
        return before + name + equals + quote + self._escape(value, quote) + quote

    def _content(self, tag: Tag) -> str:
        parts = [""]
        indented = self._taste.has("indentation")
        for child in tag.children:
            if self._taste.has("comments"):
                parts.append(self._chance.choice(COMMENTS))
            if indented:
                parts.append(self._chance.choice(BETWEEN))
            parts.append(self._text(child) if isinstance(child, str) else self.write(child))
        if indented:
            parts.append(self._chance.choice(BETWEEN))
        return "".join(parts)

    def _text(self, text: str) -> str:
        if text and self._taste.has("comments"):
            middle = self._chance.randint(0, len(text))
            comment = self._chance.choice(COMMENTS)
            return self._plain(text[:middle]) + comment + self._plain(text[middle:])
        return self._plain(text)

    def _plain(self, text: str) -> str:
        if self._taste.has("cdata") and "]]>" not in text:
            half = self._chance.randint(0, len(text))
            return f"<![CDATA[{text[:half]}]]>" + self._escape(text[half:], "")
        return self._escape(text, "")

    def _escape(self, text: str, quote: str) -> str:
        if self._taste.has("bad characters"):
            text += self._chance.choice(s.NEVER_IN_XML + s.NEVER_STORED)
        return "".join(self._character(c, quote) for c in text)

    def _character(self, character: str, quote: str) -> str:
        must = character in "&<" or character == quote or (character == ">" and not quote)
        if must or (character in REFERENCES and self._chance.random() < 0.6):
            choices = REFERENCES[character]
            return self._chance.choice([c for c in choices if c != ">"])
        if self._taste.has("character references") and self._chance.random() < 0.2:
            return f"&#x{ord(character):X};"
        return character


class Policies:
    """Makes policies, their sections and what is near them."""

    def __init__(self, taste: Taste) -> None:
        self._taste = taste
        self._chance = taste.chance
        self._writer = Writer(taste)
        self.met: dict[str, list[str]] = {"entity": [], "dictionary": [], "template": []}

    # -- the parts

    def _tag(self, name: str, attributes: list[tuple[str, str]], children: list[Tag | str]) -> Tag:
        """An element with the oddities that any element may have."""
        kept = [pair for pair in attributes if not self._taste.has("missing attributes")]
        if kept and self._taste.has("doubled attributes"):
            kept.append((self._chance.choice(kept)[0], "again"))
        if self._taste.has("foreign attributes"):
            kept.insert(self._chance.randint(0, len(kept)),
                        (self._chance.choice(["Name", "extra", "severity", "xml:lang", "xml:space",
                                              "builtin", "displayName", "\u540d"]),
                         self._taste.text()))
        if self._taste.has("shuffled sections"):
            self._chance.shuffle(kept)
        if self._taste.has("foreign elements"):
            children = list(children)
            children.insert(self._chance.randint(0, len(children)),
                            Tag(self._chance.choice(["foreign", "Entity", "keyword", "matchRule",
                                                     "template_id", "\u00e9", "_x.y-z",
                                                     "buildingBlock"]),
                                [("name", "f"), ("operation", "OR")], [self._taste.text()]))
        return Tag(name, _unique(kept, self._taste), children)

    def _name(self, tag: str, pool: list[str]) -> str:
        """A name of the pool, remembered for what refers to it."""
        name = self._taste.name(pool)
        self.met[tag].append(name)
        return name

    def _display(self, name: str) -> str:
        """Display names: near the names, so that they meet."""
        return self._chance.choice([name, name.upper(), "The " + name, self._taste.text() or name])

    def _predefined(self) -> str:
        plain = ["true"] if self._taste.has("built-in") else ["false"]
        return self._taste.pick(plain, s.ODD_FLAGS + s.FLAGS, "odd flags")

    def _number(self) -> str:
        return self._taste.pick(s.NUMBERS, s.ODD_NUMBERS, "odd numbers")

    def entity(self) -> Tag:
        """An expression."""
        name = self._name("entity", s.EXPRESSION_NAMES)
        attributes = [("name", name), ("type", self._taste.pick(s.TYPES, s.ODD_TYPES, "odd types")),
                      ("caseSensitive", self._taste.pick(s.FLAGS, s.ODD_FLAGS, "odd flags")),
                      ("validator", self._chance.choice(["", "luhn"]))]
        for number in ("minLength", "maxLength", "suffixLength", "minLeftRadius", "maxLeftRadius",
                       "maxRightRadius"):
            if self._chance.random() < 0.6:
                attributes.append((number, self._number()))
        attributes += [("display_name", self._display(name)), ("description", self._taste.text()),
                       ("pre-defined", self._predefined())]
        children = []
        for tag in ("regularExpression", "alphabetCharset", "patternForDisplay", "examples"):
            if not self._taste.has("missing attributes"):
                children.append(self._asset_text(tag))
            if self._taste.has("doubled sections"):
                children.append(self._asset_text(tag))
        return self._tag("entity", attributes, children)

    def _asset_text(self, tag: str) -> Tag:
        """An element that holds a text, or with foreign elements two."""
        children: list[Tag | str] = [self._taste.text()] if self._chance.random() < 0.8 else []
        if self._taste.has("foreign elements"):
            children += [Tag("b", [], [self._taste.text()]), self._taste.text()]
        return Tag(tag, [], children)

    def _keyword(self) -> Tag:
        attributes = [("description", self._taste.text()), ("score", self._number()),
                      ("caseSensitive", self._taste.pick(s.FLAGS, s.ODD_FLAGS, "odd flags"))]
        return self._tag("keyword", attributes, [self._taste.text()])

    def dictionary(self) -> Tag:
        """A keyword list."""
        name = self._name("dictionary", s.KEYWORD_NAMES)
        condition = self._taste.pick(s.CONDITIONS, s.ODD_CONDITIONS, "odd types")
        attributes = [("name", name), ("type", condition),
                      ("threshold", self._number()), ("number", self._number()),
                      ("display_name", self._display(name)),
                      ("description", self._taste.text()), ("pre-defined", self._predefined())]
        return self._tag("dictionary", attributes,
                         [self._keyword() for _ in range(self._chance.randint(0, 3))])

    def _block(self, old: bool) -> Tag:
        kind = self._chance.choice(s.SOURCE_TYPES)
        met = self.met["entity" if kind == "ENTITY" else "dictionary"][-6:]
        if old:
            met = met + s.OLD_NAMES[:2]
        name = self._chance.choice(met) if met else "nothing"
        if self._taste.has("references to nothing") or self._chance.random() < 0.03:
            name = "nothing"
        kind = self._taste.pick([kind], s.ODD_SOURCE_TYPES, "odd source types")
        attributes = [("sourceType", kind), ("entityHits", self._number()),
                      ("sourceName", name)]
        if self._chance.random() < 0.6:
            attributes.append(("operation", self._operation()))
        return self._tag("buildingBlock", attributes, [])

    def _operation(self) -> str:
        return self._taste.pick(s.OPERATIONS, s.ODD_OPERATIONS, "odd operations")

    def _rule(self, old: bool) -> Tag:
        attributes = [("operation", self._operation())] if self._chance.random() < 0.6 else []
        return self._tag("matchRule", attributes,
                         [self._block(old) for _ in range(self._chance.randint(0, 3))])

    def template(self, old: bool = False) -> Tag:
        """A template, of today's or the older layout."""
        name = self._name("template", s.TEMPLATE_NAMES)
        rules: list[Tag | str] = [self._rule(old) for _ in range(self._chance.randint(0, 3))]
        if old:
            attributes = [("name", name), ("displayName", self._display(name)),
                          ("builtin", self._taste.pick(s.BUILTINS, s.ODD_BUILTINS, "odd builtins")),
                          ("description", self._taste.text()), ("severity", "high")]
            if self._chance.random() < 0.2:
                rules.append(Tag("industries", [], [Tag("industry", [("name", "finance")])]))
        else:
            attributes = [("name", name), ("display_name", self._display(name)),
                          ("description", self._taste.text()),
                          ("pre-defined", self._predefined()), ("severity", "low")]
        return self._tag("template", attributes, rules)

    def _category(self, tag: str) -> Tag:
        names = self.met["template"][-4:] + s.TEMPLATE_NAMES[:1]
        ids = [Tag("template_id", [], [self._chance.choice(names)])
               for _ in range(self._chance.randint(0, 3))]
        name = self._taste.name(s.CATEGORY_NAMES)
        return self._tag(tag, [("name", name), ("display_name", self._display(name))], list(ids))

    # -- the whole

    def _several(self, make: Callable[[], Tag], at_most: int) -> list[Tag]:
        made = [make() for _ in range(self._chance.randint(0, at_most))]
        if made and self._taste.has("duplicate names"):
            made.append(_renamed(make(), made[0]))
        return made

    def _sections(self, old: bool) -> list[Tag]:
        makers: list[tuple[str, Callable[[], list[Tag]]]] = [
            ("digitalAssets",
             lambda: self._several(self.entity, 5) + self._several(self.dictionary, 4)),
            ("complianceTemplates",
             lambda: [self.template(old)] + self._several(lambda: self.template(old), 3)),
            ("industries", lambda: self._several(lambda: self._category("industry"), 3)),
            ("regions", lambda: self._several(lambda: self._category("region"), 3)),
        ]
        sections = []
        for name, make in makers:
            for _ in range(2 if self._taste.has("doubled sections") else 1):
                if not self._taste.has("missing sections"):
                    children = [] if self._taste.has("empty sections") else make()
                    sections.append(self._tag(name, [("command", "overwrite")], list(children)))
        if self._taste.has("shuffled sections"):
            self._chance.shuffle(sections)
        if len(sections) > 1 and self._taste.has("misplaced sections"):
            moved = sections.pop(self._chance.randrange(len(sections)))
            self._chance.choice(sections).children.append(moved)
        return sections

    def _root(self, sections: list[Tag], old: bool) -> Tag:
        attributes = []
        if not old:
            attributes.append(("template_version",
                               self._taste.pick(s.VERSIONS, s.ODD_VERSIONS, "odd versions")))
        elif self._chance.random() < 0.2:
            attributes.append(("template_version", ""))
        if self._taste.has("languages"):
            attributes.append(("localization_language",
                               self._taste.pick(s.LANGUAGES, s.ODD_LANGUAGES, "odd languages")))
        if self._chance.random() < 0.1:
            self._chance.shuffle(attributes)
        name = "SAPolicy"
        if self._taste.has("wrong root"):
            name = self._chance.choice(["sapolicy", "SAPolicies", "p:SAPolicy", "policy",
                                        "template", "digitalAssets"])
        root = Tag(name, attributes, list(sections))
        if self._taste.has("nested"):
            root = Tag("SAPolicy", list(attributes), [root])
        return root

    def policy(self) -> str:
        """A whole policy."""
        old = self._taste.has("older layout")
        root = self._root(self._sections(old), old)
        text = self._chance.choice(DECLARATIONS) + self._writer.write(root)
        if self._taste.has("comments"):
            text += self._chance.choice(COMMENTS) + "\n"
        return self.broken(text) if self._taste.has("broken text") else text

    def broken(self, text: str) -> str:
        """The text with a fault that most readers notice."""
        middle = self._chance.randint(1, max(1, len(text) - 1))
        faults: list[Callable[[], str]] = [
            lambda: text[:middle], lambda: text + text, lambda: text + "<again/>",
            lambda: "<!DOCTYPE SAPolicy>" + text,
            lambda: text.replace(">", ">&undefined;", 2), lambda: text.replace(">", ">&", 2),
            lambda: " " + text, lambda: "\ufeff" + text, lambda: "junk" + text,
            lambda: text + "junk",
            lambda: text[:middle] + "<" + text[middle:],
            lambda: text[:middle] + "\x00" + text[middle:],
            lambda: text[:middle] + "&#0;" + text[middle:],
            lambda: text[:middle] + "&#xD800;" + text[middle:],
            lambda: text[:middle] + "]]>" + text[middle:],
            lambda: text[:middle] + "<!-- -- -->" + text[middle:],
            lambda: text.replace("</", "</ ", 1), lambda: "", lambda: "   ",
            lambda: "<?xml version='1.0'?>",
            lambda: text[:middle] + "\ufffe" + text[middle:],
            lambda: text[:middle] + "\ud800" + text[middle:],
            lambda: text[:middle] + "<?xml x?>" + text[middle:],
            lambda: text.replace('="', "=", 1), lambda: "<d>" * 257 + text,
            lambda: _deep(text, self._chance.choice([250, 252, 253, 254, 255])),
            lambda: text + "\n<!-- end -->\n",
        ]
        if self._chance.random() < 0.5:
            return self.scrambled(text)
        return self._chance.choice(faults)()

    def scrambled(self, text: str) -> str:
        """The text with a few pieces of markup put in, or short pieces taken out or doubled."""
        for _ in range(self._chance.randint(1, 3)):
            start = self._chance.randint(0, len(text))
            end = start + self._chance.choice([0, 0, 0, 1, 2, 5])
            piece = self._chance.choice([*MARKUP, text[start:end], ""])
            text = text[:start] + piece + text[end if self._chance.random() < 0.5 else start:]
        return text

    def edited(self, text: str) -> str:
        """A small change of a document seen before: a word becomes another one."""
        words = [("false", "true"), ("true", "false"), ("card", "Card"), ("pay", "health"),
                 ("words", "card"),
                 ("Type 1", "Type 2"), ("AND", "OR"), ("AND", "EXCEPT"),
                 ("display_name", "display"), ("ENTITY", "KEYWORD"),
                 ("template_version", "version"), ("The ", "A "), ("<entity", "<dictionary"),
                 ("<keyword", "<word"),
                 (" description=", " note="), ("industry", "region"), ("finance", "eu"),
                 ("pre-defined", "predefined")]
        old, new = self._chance.choice(words)
        return text.replace(old, new, self._chance.choice([1, 2, -1]))

    def dictionary_text(self) -> str:
        """A keyword list's stored text, or what is none."""
        odd = ["", "text", "<words><keyword>a</keyword></words>", "<dictionary/>", "<dictionary>",
               "<dictionary></dictionary>",
               "<?xml version='1.0'?><dictionary><keyword>a</keyword></dictionary>",
               "<Dictionary/>",
               "<dictionary><x><keyword>deep</keyword></x></dictionary>",
                "<dictionary><keyword score='1'>a<b>c</b>d</keyword></dictionary>",
               "<!-- c --><dictionary><!-- d --><keyword> <!--e--> </keyword>text</dictionary>",
               "<p:dictionary xmlns:p='urn:p'><keyword>a</keyword></p:dictionary>",
               "<dictionary xmlns:p='urn:p'><keyword p:x='1'>a</keyword></dictionary>",
                "<dictionary xmlns:p='urn:p'><p:keyword>b</p:keyword></dictionary>",
               "<dictionary xmlns='urn:d'><keyword>a</keyword></dictionary>",
               "<!DOCTYPE dictionary><dictionary/>"]
        return self._stored(odd, self.dictionary)

    def template_text(self) -> str:
        """A template element as it is stored, or what is none."""
        odd = ["", "<template/>", "<Template name='pay'/>", "<x><template name='pay'/></x>",
               "not xml", "<template name='pay'>",
               "<?xml version='1.0'?><template name='pay'><matchRule/></template>",
               "<p:template xmlns:p='urn:p' name='pay'/>",
               "<template xmlns='t' name='pay'><matchRule><buildingBlock/></matchRule></template>"]
        return self._stored(odd, self.template)

    def _stored(self, odd: list[str], make: Callable[[], Tag]) -> str:
        """A text as a record may hold it: an odd one, or an element, whole or scrambled."""
        draw = self._chance.random()
        if draw < 0.3:
            return self._chance.choice(odd)
        text = self._writer.write(make())
        return self.scrambled(text) if draw < 0.45 else text


def _unique(attributes: list[tuple[str, str]], taste: Taste) -> list[tuple[str, str]]:
    """Attributes without doubles, but where the taste is for them."""
    if taste.has("doubled attributes"):
        return attributes
    return list(dict(attributes).items())


def _renamed(tag: Tag, like: Tag) -> Tag:
    """The element under the name of another one."""
    name = dict(like.attributes).get("name", "")
    rest = [pair for pair in tag.attributes if pair[0] != "name"]
    return Tag(tag.name, [("name", name)] + rest, tag.children)


def _deep(text: str, levels: int) -> str:
    """The text with elements in elements before its end."""
    end = text.rfind("</")
    inner = "<d>" * levels + "</d>" * levels
    return text[:end] + inner + text[end:] if end > 0 else text
