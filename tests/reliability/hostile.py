"""Documents that an attacker might send, each with what becomes of it."""

from __future__ import annotations

import functools
import itertools
import random
from collections.abc import Iterator
from dataclasses import dataclass

HEAD = '<?xml version="1.0" encoding="UTF-8"?>'
REFUSED = (2,)
TAKEN = (0, 1)
EITHER = (0, 1, 2)

SMALL = (HEAD + """<SAPolicy template_version="3.0.1000"><digitalAssets>
<entity name="e" type="Generic" display_name="E &amp; &#x45;"><regularExpression><![CDATA[\\d{4}]]></regularExpression></entity>
<dictionary name="d" type="Any" display_name="D"><keyword description="" score="1" caseSensitive="false">wörd</keyword></dictionary>
</digitalAssets><!-- a comment --><complianceTemplates><template name="t" display_name="T" description="" pre-defined="false">
<matchRule><buildingBlock sourceType="ENTITY" entityHits="1" sourceName="e"/></matchRule></template></complianceTemplates>
<industries><industry name="i"><template_id>t</template_id></industry></industries></SAPolicy>
""").encode()


@dataclass(frozen=True)
class Hostile:
    """A document, the exit codes that an import of it may have, and how many times the bound of memory it takes."""

    name: str
    data: bytes
    codes: tuple[int, ...] = REFUSED
    memory: float = 1.0


def policy(assets: str = "", templates: str = '<template name="t" display_name="t"/>', rest: str = "", attributes: str = "") -> bytes:
    """A document of the present layout."""
    return (f'{HEAD}<SAPolicy template_version="3.0.1000"{attributes}><digitalAssets>{assets}</digitalAssets>'
            f"<complianceTemplates>{templates}</complianceTemplates>{rest}</SAPolicy>").encode()


def entity(name: str, expression: str = "a", attributes: str = "") -> str:
    """An expression."""
    return (f'<entity name="{name}" type="Generic" display_name="{name}"{attributes}>'
            f"<regularExpression>{expression}</regularExpression></entity>")


def template(name: str, rules: str) -> str:
    """A template around its rules."""
    return f'<template name="{name}" display_name="{name}" description="" pre-defined="false">{rules}</template>'


def keyword(text: str) -> str:
    """A keyword."""
    return f'<keyword description="" score="1" caseSensitive="false">{text}</keyword>'


def dictionary(keywords: str) -> str:
    """A keyword list."""
    return f'<dictionary name="d" type="Any" display_name="d">{keywords}</dictionary>'


def block(name: str) -> str:
    """A building block that refers to an expression."""
    return f'<buildingBlock sourceType="ENTITY" entityHits="1" sourceName="{name}" operation="AND"/>'


BLOCK = block("e")


FACTOR, SEED, WORD = 0xC6A4A7935BD1E995, 0xC70F6907, (1 << 64) - 1  # of the standard library's hash of texts
INVERSE = pow(FACTOR, -1, 1 << 64)
PLAIN = bytes(set(range(0x21, 0x7F)) - set(b"<>&\"',"))
PARTS = 4


@functools.cache
def parts_of_one_hash(choices: int) -> tuple[tuple[str, ...], ...]:
    """For each part of a text so many of 16 characters, whichever of which leaves the hash in the same state."""
    chance = random.Random(1)
    state = SEED ^ (PARTS * 16 * FACTOR & WORD)
    parts = []
    for _ in range(PARTS):
        found: set[str] = set()
        after = chance.getrandbits(64)
        wanted = after * INVERSE & WORD
        while len(found) < choices:
            first = bytes(chance.choices(PLAIN, k=8))
            mixed = int.from_bytes(first, "little") * FACTOR & WORD
            between = (state ^ ((mixed ^ mixed >> 47) * FACTOR & WORD)) * FACTOR & WORD
            mixed = (between ^ wanted) * INVERSE & WORD
            second = ((mixed ^ mixed >> 47) * INVERSE & WORD).to_bytes(8, "little")
            if not second.translate(None, PLAIN):
                found.add((first + second).decode())
        parts.append(tuple(sorted(found)))
        state = after
    return tuple(parts)


def of_one_hash(count: int) -> Iterator[str]:
    """Texts of 64 characters that are all in one place of a table whose hash has no secret."""
    choices = next(choices for choices in itertools.count(1) if choices ** PARTS >= count)
    return itertools.islice(map("".join, itertools.product(*parts_of_one_hash(choices))), count)


def doctypes() -> Iterator[Hostile]:
    """Whatever stands in a DOCTYPE, the document is refused."""
    laughs = '<!ENTITY a0 "ha">' + "".join(f'<!ENTITY a{i} "{f"&a{i - 1};" * 10}">' for i in range(1, 20))
    for name, declaration, text in (
            ("empty DOCTYPE", "<!DOCTYPE SAPolicy>", ""),
            ("entities that multiply", f"<!DOCTYPE SAPolicy [{laughs}]>", "&a19;"),
            ("long entity, often", f'<!DOCTYPE SAPolicy [<!ENTITY x "{"x" * 100000}">]>', "&x;" * 10000),
            ("entity in itself", '<!DOCTYPE SAPolicy [<!ENTITY a "&b;"><!ENTITY b "&a;">]>', "&a;"),
            ("file as entity", '<!DOCTYPE SAPolicy [<!ENTITY x SYSTEM "file:///etc/passwd">]>', "&x;"),
            ("device as entity", '<!DOCTYPE SAPolicy [<!ENTITY x SYSTEM "file:///dev/zero">]>', "&x;"),
            ("network as entity", '<!DOCTYPE SAPolicy [<!ENTITY x SYSTEM "http://127.0.0.1:9/x">]>', "&x;"),
            ("parameter entity", '<!DOCTYPE SAPolicy [<!ENTITY % p SYSTEM "file:///etc/hostname"> %p;]>', ""),
            ("external subset", '<!DOCTYPE SAPolicy SYSTEM "file:///etc/hostname">', ""),
            ("public subset", '<!DOCTYPE SAPolicy PUBLIC "-//X//Y" "http://127.0.0.1:9/dtd">', ""),
            ("attribute defaults", '<!DOCTYPE SAPolicy [<!ATTLIST entity pre-defined CDATA "true">]>', "")):
        body = policy(entity("e", text)).decode().removeprefix(HEAD)
        yield Hostile(name, (HEAD + declaration + body).encode())
    yield Hostile("undeclared entity", policy(entity("e", "&nbsp;")))
    yield Hostile("inclusion is no more than an element",
                  policy(rest='<xi:include xmlns:xi="http://www.w3.org/2001/XInclude" href="file:///etc/passwd"/>'), TAKEN)
    yield Hostile("style sheet is no more than an instruction",
                  SMALL.replace(b"?>", b'?><?xml-stylesheet type="text/xsl" href="http://127.0.0.1:9/x.xsl"?>', 1), TAKEN)
    yield Hostile("place of a schema is no more than an attribute",
                  policy(attributes=' xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" '
                                    'xsi:noNamespaceSchemaLocation="http://127.0.0.1:9/x.xsd"'), TAKEN)


def encodings() -> Iterator[Hostile]:
    """UTF-8 is taken, with a mark or without; of the declaration's name nothing depends."""
    text = SMALL.decode()
    yield Hostile("byte order mark", b"\xef\xbb\xbf" + SMALL, TAKEN)
    yield Hostile("utf-7, which reads as ASCII", text.encode("utf-7"), TAKEN)
    for name in ("utf-16", "utf-16-le", "utf-16-be", "utf-32", "cp037"):
        yield Hostile(name, text.encode(name), REFUSED)
    yield Hostile("latin-1", text.encode("latin-1"))
    for name, wrong in (("overlong", b"\xc0\xaf"), ("surrogate", b"\xed\xa0\x80"), ("beyond Unicode", b"\xf4\x90\x80\x80"),
                        ("cut sequence", b"\xe2\x82"), ("lone continuation", b"\x80"), ("zero byte", b"\0"), ("control", b"\x01"),
                        ("U+FFFE", b"\xef\xbf\xbe"), ("zero as a reference", b"&#0;"), ("surrogate as a reference", b"&#xD800;"),
                        ("reference beyond Unicode", b"&#x110000;"), ("reference of many digits", b"&#" + b"9" * 100000 + b";")):
        yield Hostile(name, SMALL.replace(b"<![CDATA[", wrong + b"<![CDATA["))
        yield Hostile(name + " in an attribute", SMALL.replace(b"E &amp;", b"E " + wrong))
    yield Hostile("another version", SMALL.replace(b'version="1.0"', b'version="9.9"', 1))
    yield Hostile("version of many digits", SMALL.replace(b'version="1.0"', b'version="1.' + b"9" * 100000 + b'"', 1), TAKEN)
    yield Hostile("zero bytes after the end", SMALL + b"\0" * 1000)
    yield Hostile("zero bytes alone", b"\0" * 100000)
    yield Hostile("nothing", b"")
    yield Hostile("blanks alone", b" \n" * 1000)
    yield Hostile("two roots", SMALL + SMALL.split(b"?>", 1)[1])


def large(size: int) -> Iterator[Hostile]:
    """About so many bytes each."""
    many = size // 20
    yield Hostile("attributes of one element", policy(attributes="".join(f' a{i}=""' for i in range(size // 12))), TAKEN)
    yield Hostile("one attribute twice, far apart", policy(attributes="".join(f' a{i}=""' for i in range(size // 12)) + ' a0=""'))
    yield Hostile("name spaces of one element", policy(attributes="".join(f' xmlns:n{i}="u"' for i in range(size // 20))), TAKEN)
    yield Hostile("nesting without end", policy(rest="<x>" * (size // 3)))
    yield Hostile("deep nesting", policy(rest="<x>" * (size // 7) + "</x>" * (size // 7)))
    yield Hostile("nesting at the limit", policy(rest="<x>" * 255 + "</x>" * 255), TAKEN)
    yield Hostile("nesting beyond the limit", policy(rest="<x>" * 256 + "</x>" * 256))
    yield Hostile("long name", policy(rest=f"<{'x' * size}/>"), TAKEN)
    yield Hostile("long attribute", policy(entity("e", attributes=f' description="{"x" * size}"')), TAKEN)
    yield Hostile("long text", policy(entity("e", "x" * size)), TAKEN)
    yield Hostile("open expression", policy(entity("e", "(" * size)), TAKEN)
    yield Hostile("ends of lines", policy(entity("e", "\r\n" * (size // 2))), TAKEN)
    yield Hostile("references", policy(entity("e", "&lt;" * (size // 4))), TAKEN)
    yield Hostile("comments", policy(rest="<!---->" * (size // 7)), TAKEN)
    yield Hostile("instructions", policy(rest="<?x?>" * (size // 5)), TAKEN)
    yield Hostile("sections of characters", policy(entity("e", "<![CDATA[]]>" * (size // 12))), TAKEN)
    yield Hostile("open comment", policy(rest="<!--" + "x" * size))
    yield Hostile("open section", policy(rest="<![CDATA[" + "]]" * (size // 2)))
    yield Hostile("empty elements", policy(rest="<x/>" * (size // 4)), TAKEN)
    yield Hostile("texts and empty elements by turns", policy(rest="<x>" + "a<b/>" * (size // 5) + "</x>"), TAKEN)
    yield Hostile("empty elements among templates",
                  policy(templates='<template name="t" display_name="t"/>' + "<x/>" * (size // 4)), TAKEN)
    yield Hostile("empty elements in a template",
                  policy(entity("e"), template("t", "<x/>" * (size // 4))), TAKEN, memory=1.4)  # each is read as a rule
    yield Hostile("empty elements in an expression", policy(entity("e", "<x/>" * (size // 4))), TAKEN, memory=1.2)
    yield Hostile("expressions of one name", policy(entity("e") * (size // 100)), TAKEN)
    yield Hostile("expressions", policy("".join(entity(f"e{i}") for i in range(size // 110))), TAKEN, memory=1.05)
    yield Hostile("keywords of one list", policy(dictionary(keyword("x") * (size // 66))), TAKEN)
    yield Hostile("building blocks of one rule",
                  policy(entity("e"), template("t", f"<matchRule>{BLOCK * (size // 83)}</matchRule>")), TAKEN)
    yield Hostile("rules of one template",
                  policy(entity("e"), template("t", f"<matchRule>{BLOCK}</matchRule>" * (size // 106))), TAKEN)
    yield Hostile("templates of one name", policy(templates='<template name="t" display_name="t"/>' * (size // 38)), TAKEN)
    yield Hostile("unknown references",
                  policy(templates="".join(template(f"t{i}", f'<matchRule><buildingBlock sourceType="ENTITY" entityHits="1" '
                                     f'sourceName="no{i}"/></matchRule>') for i in range(size // 170))), TAKEN)
    yield Hostile("one template in many industries",
                  policy(entity("e"), template("t", f"<matchRule>{BLOCK}</matchRule>"),
                         "<industries>" + '<industry name="i"><template_id>t</template_id></industry>' * (size // 62)
                         + "</industries>"), TAKEN)
    yield Hostile("keywords of one hash", policy(dictionary("".join(map(keyword, of_one_hash(size // 130))))), TAKEN)
    yield Hostile("expressions of one hash", policy("".join(map(entity, of_one_hash(size // 220)))), TAKEN)
    yield Hostile("templates of one hash",
                  policy(templates="".join(f'<template name="{name}" display_name="t"/>' for name in of_one_hash(size // 100))), TAKEN)
    yield Hostile("references of one hash",
                  policy(templates=template("t", "".join(f"<matchRule>{block(name)}</matchRule>" for name in of_one_hash(size // 170)))), TAKEN)
    yield Hostile("noise", random.Random(1).randbytes(size))
    yield Hostile("opening brackets", b"<" * size)
    yield Hostile("blanks before the document", b" " * size + SMALL, EITHER)
    yield Hostile("blanks after the document", SMALL + b" " * size, TAKEN)
    yield Hostile("older layout, many templates",
                  (HEAD + "<SAPolicy><complianceTemplates>" + '<template name="t" displayName="t"/>' * (many // 2)
                   + "</complianceTemplates></SAPolicy>").encode(), EITHER, memory=1.25)  # convert has two trees of them


def cuts(chance: random.Random, sample: int) -> Iterator[Hostile]:
    """Ends everywhere; without its last element the document is none."""
    end = SMALL.rindex(b">") + 1
    places = range(len(SMALL)) if sample == 0 else sorted(chance.sample(range(len(SMALL)), sample))
    for place in places:
        yield Hostile(f"cut at byte {place}", SMALL[:place], REFUSED if place < end else TAKEN)


def flips(chance: random.Random, sample: int) -> Iterator[Hostile]:
    """One bit is another everywhere."""
    places = range(len(SMALL) * 8) if sample == 0 else sorted(chance.sample(range(len(SMALL) * 8), sample))
    for place in places:
        data = bytearray(SMALL)
        data[place // 8] ^= 1 << place % 8
        yield Hostile(f"bit {place} flipped", bytes(data), EITHER)
