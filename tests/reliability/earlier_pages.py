"""Stores of which one page is as an earlier unit of work left it: it fits its place and its checksum, but not the others."""
import collections
import functools
import re

import stores
from stores import PAGE

RIGHT, REFUSED, TOLD, WRONG = "right", "refused", "told", "wrong"  # told: 1 or 2 with a reason, which is not the reason
VERDICTS = (RIGHT, REFUSED, TOLD, WRONG)
NUMBER = 17  # the item that changes
DUMP, CHECK = ("store", "dump"), ("store", "check")
BACKUP, IMPORT = ("store", "backup"), ("-q", "import")
WRITING = (
    IMPORT, ("keywords", "add", f"number list {NUMBER}", "fresh"), ("template", "set", f"number template {NUMBER}", "--description", "fresh"),
    ("expression", "set", f"number {NUMBER}", "--description", "fresh"), ("rename", "keyword", f"number list {NUMBER}", "fresh"),
)
COMMANDS = (
    DUMP, CHECK, ("export", "--all"), ("assets", "export", "--all"), ("--json", "refs"),
    ("--json", "list", "expressions"), ("--json", "list", "keywords"), ("--json", "list", "templates"),
    ("--json", "show", "expression", f"number {NUMBER}"), ("--json", "show", "keyword", f"number list {NUMBER}"),
    ("--json", "show", "template", f"number template {NUMBER}"), ("--json", "show", "expression", "other 1"),
    ("--json", "show", "template", "other template 1"), ("export", f"number template {NUMBER}"),
    ("assets", "export", "--expression", f"number {NUMBER}"), ("keywords", "export", f"number list {NUMBER}"),
)
END_OF_ASSETS = "</digitalAssets>"


def changed(former, latter):
    """A policy of one item that the store holds already, but for one text."""
    return stores.policy(1, "number", NUMBER).replace(former, latter)


def with_more_assets(text):
    """And some that the store does not hold."""
    more = stores.policy(3, "other").partition("<digitalAssets>")[2].partition(END_OF_ASSETS)[0]
    return text.replace(END_OF_ASSETS, more + END_OF_ASSETS)


CHANGES = {  # documents to be imported, or commands
    "a pattern": changed("number[0-9]", "numbed[0-9]"),
    "a keyword": changed(f">number {NUMBER} 3<", f">numbed {NUMBER} 3<"),
    "a rule": changed('entityHits="2"', 'entityHits="3"'),
    "new items": stores.policy(3, "other"),
    "a pattern and new items": with_more_assets(changed("number[0-9]", "numbed[0-9]")),
    "an item removed": ("delete", "template", f"number template {NUMBER}"),
    "a name": ("rename", "expression", f"number {NUMBER}", f"numbed {NUMBER}"),
}


def name_of(command):
    """For people."""
    return " ".join(word for word in command if word not in ("--json", "-q"))


def without_times(dump):
    """What is changed at another time is still the same."""
    return re.sub(rb'"modified": ?[^,}]*', b"", dump)


class Change:
    """A store before and after it has changed, and what each command answers then."""

    def __init__(self, tool, folder, whole, change):
        store, document, self.last = (folder / name for name in ("changed.db", "change.xml", "last.xml"))
        stores.remove(store)
        store.write_bytes(whole)
        if isinstance(change, str):
            document.write_text(change)
            change = (*IMPORT, document)
        tool.get(store, *change)
        self.before, self.after = whole, store.read_bytes()
        self.answers = {command: tool.answer(store, command)[:2] for command in COMMANDS}
        self.last.write_text(stores.policy(2, "last"))
        self.written = {command: self.write(tool, store, command) for command in WRITING}
        size = min(len(self.before), len(self.after))
        self.pages = [page for page in range(size // PAGE)
                      if self.before[page * PAGE:][:PAGE] != self.after[page * PAGE:][:PAGE]]

    def line(self, command):
        """With what it imports."""
        return (*command, self.last) if command == IMPORT else command

    def write(self, tool, store, command):
        """The exit code and what the store then holds, but for the time of a change."""
        stores.remove(store)
        store.write_bytes(self.after)
        return tool.answer(store, self.line(command))[0], without_times(tool.get(store, *DUMP))

    def put_back(self, store, page):
        """The store after the change, with that page as before."""
        stores.remove(store)
        start = page * PAGE
        store.write_bytes(self.after[:start] + self.before[start:start + PAGE] + self.after[start + PAGE:])


class EarlierPages:
    """Puts pages back under commands."""

    def __init__(self, tool, folder, whole, is_advice):
        self.tool, self.is_advice = tool, is_advice
        self.store, self.copy = folder / "earlier.db", folder / "copy.db"
        self.change = functools.cache(lambda name: Change(tool, folder, whole, CHANGES[name]))

    def try_one(self, name, page):
        """What becomes of each command when that page is as before the change."""
        change = self.change(name)
        verdicts = {}
        for command in COMMANDS:
            change.put_back(self.store, page)
            code, out, err = self.tool.answer(self.store, command)
            verdicts[command] = RIGHT if (code, out) == change.answers[command] else self.judge_other(command, code, out, err)
        change.put_back(self.store, page)
        stores.remove(self.copy)
        verdicts[BACKUP] = self.judge_result((*BACKUP, self.copy), self.copy, (0, without_times(change.answers[DUMP][1])))
        for command in WRITING:
            change.put_back(self.store, page)
            verdicts[command] = self.judge_result(change.line(command), self.store, change.written[command])
        return verdicts

    def judge_other(self, command, code, out, err):
        """An answer that is not the right one."""
        if command == CHECK and code == 1 and b"damaged: " in out or code == 4 and self.is_advice(out + err):
            return REFUSED
        return TOLD if code in (1, 2) and err else WRONG

    def judge_result(self, line, result, right):
        """What has been written is right, or it is refused by what writes or by what reads it."""
        code, out, err = self.tool.answer(self.store, line)
        if code != right[0]:
            return self.judge_other(line, code, out, err)
        code, out, err = self.tool.answer(result, DUMP)
        return RIGHT if (code, without_times(out)) == (0, right[1]) else self.judge_other(DUMP, code, out, err)

    def try_all(self):
        """Every page of every change; returns how often what became of each command."""
        counts = collections.defaultdict(collections.Counter)
        for name in CHANGES:
            for page in self.change(name).pages:
                verdicts = self.try_one(name, page)
                for command, verdict in verdicts.items():
                    counts[name_of(command)][verdict] += 1
                for wrong in (WRONG, TOLD):
                    names = [name_of(command) for command, verdict in verdicts.items() if verdict == wrong]
                    if names:
                        print(f"{name}, page {page + 1} as before: {wrong}: {', '.join(names)}", flush=True)
        return counts
