"""Small policies, stores made of them, and runs of dlpctl, for the programs that try to damage a store."""
import contextlib
import ctypes
import ctypes.util
import functools
import os
import pathlib
import sqlite3
import subprocess
import sys
import tempfile

PAGE = 8192
SUM = 8  # bytes at a page's end
RESERVED = 20  # where the header says how many bytes each page keeps free
VERSION = 3  # of the schema
ROOT = pathlib.Path(__file__).resolve().parents[2]
SECONDS = 120
READER = """import sqlite3, sys
store = sqlite3.connect(sys.argv[1], isolation_level=None)
store.execute("BEGIN")
print(store.execute("SELECT count(*) FROM sqlite_master").fetchone(), flush=True)
sys.stdin.read()
"""


def policy(count, words="number", first=0):
    """A policy of count expressions, keyword lists and templates; the same words give the same document."""
    numbers = range(first, first + count)
    entities = "".join(
        f'<entity name="{words} {i}" type="Generic" display_name="Expression {words} {i}" description="{words}" '
        f'pre-defined="false"><regularExpression>{words}[0-9]{{{i % 7 + 1},{i % 7 + 9}}}</regularExpression></entity>'
        for i in numbers)
    lists = "".join(
        f'<dictionary name="{words} list {i}" type="Any" display_name="List {words} {i}" pre-defined="false">'
        + "".join(f'<keyword description="" score="1" caseSensitive="false">{words} {i} {k}</keyword>' for k in range(9))
        + "</dictionary>" for i in numbers)
    templates = "".join(
        f'<template name="{words} template {i}" display_name="Template {words} {i}" description="{words}" '
        f'pre-defined="false"><matchRule><buildingBlock sourceType="ENTITY" entityHits="2" sourceName="{words} {i}"/>'
        f'<buildingBlock sourceType="KEYWORD" sourceName="{words} list {i}" operation="AND"/></matchRule></template>'
        for i in numbers)
    return ('<?xml version="1.0" encoding="UTF-8"?><SAPolicy template_version="3.0.1000"><digitalAssets>'
            f"{entities}{lists}</digitalAssets><complianceTemplates>{templates}</complianceTemplates></SAPolicy>")


@contextlib.contextmanager
def reading(store):
    """Somebody reads the store. A process of its own: whoever looks at the file in this one would take away its locks."""
    with subprocess.Popen([sys.executable, "-c", READER, store], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as reader:
        reader.stdout.readline()
        yield
        reader.kill()  # when it closes the store it writes pages without their checksums


class Tool:
    """dlpctl, each run in a process of its own."""

    def __init__(self, path):
        self.path = str(pathlib.Path(path).resolve())
        self.environment = dict(os.environ, DLP_INSTALL_PATH=str(ROOT), HOME="/nonexistent", DLP_STORE="")

    def arguments(self, store, *arguments):
        return [self.path, "--store", f"sqlite:{store}", *map(str, arguments)]

    def run(self, store, *arguments, data=""):
        """The finished process; texts are bytes read as UTF-8."""
        return subprocess.run(self.arguments(store, *arguments), env=self.environment, input=data.encode(),
                              capture_output=True, timeout=SECONDS)

    def answer(self, store, command):
        """Exit code, standard output without the store's path, and errors."""
        run = self.run(store, *command)
        return run.returncode, run.stdout.replace(str(store).encode(), b"STORE"), run.stderr

    def start(self, store, *arguments):
        return subprocess.Popen(self.arguments(store, *arguments), env=self.environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def get(self, store, *arguments, data=""):
        """Standard output of a run that must succeed."""
        run = self.run(store, *arguments, data=data)
        if run.returncode != 0:
            raise RuntimeError(f"{' '.join(map(str, arguments))} ended with {run.returncode}: {run.stderr.decode()}")
        return run.stdout


def scratch():
    return tempfile.TemporaryDirectory(prefix="dlp-reliability-")


SIDE_FILES = ("-wal", "-shm", "-journal", "-writer")


def remove(store):
    for suffix in ("", *SIDE_FILES):
        pathlib.Path(f"{store}{suffix}").unlink(missing_ok=True)


def make_first_version(path):
    """The same records as the first version of the schema kept them: without checksums."""
    with sqlite3.connect(path) as database:
        schema = [(name, sql.replace(", checksum INTEGER NOT NULL", "")) for name, sql in read_schema(database)
                  if name != "totals"]
        rows = {name: [row[:-1] for row in database.execute(f"SELECT * FROM {name}")]
                for name, sql in schema if sql.startswith("CREATE TABLE")}
    database.close()
    make_anew(path, 1, schema, rows)


def make_second_version(path):
    """The same records as the second version kept them: with checksums of records, but none of pages."""
    with sqlite3.connect(path) as database:
        schema = read_schema(database)
        rows = {name: list(database.execute(f"SELECT * FROM {name}"))
                for name, sql in schema if sql.startswith("CREATE TABLE")}
    database.close()
    make_anew(path, 2, schema, rows)


def make_newer_version(path, version):
    """The same records as a later version might keep them: under its number, with the checksums of pages if it has any."""
    with sqlite3.connect(path) as database:
        database.execute(f"PRAGMA user_version = {version}")
    database.close()
    data = bytearray(path.read_bytes())
    if data[RESERVED] == SUM:
        data[PAGE - SUM:PAGE] = page_sum(data[:PAGE], 1)
        path.write_bytes(data)


def page_sum(page, number):
    """What stands at the end of that page, which counts from 1."""
    return find_hash()(bytes(page[:PAGE - SUM]), PAGE - SUM, number).to_bytes(SUM, "big")


@functools.cache
def find_hash():
    """The hash of pages: (bytes, their number, a seed)."""
    hashes = ctypes.CDLL(ctypes.util.find_library("xxhash") or "libxxhash.so.0").XXH3_64bits_withSeed
    hashes.restype, hashes.argtypes = ctypes.c_uint64, (ctypes.c_char_p, ctypes.c_size_t, ctypes.c_uint64)
    return hashes


def read_schema(database):
    return [*database.execute("SELECT name, sql FROM sqlite_schema WHERE sql IS NOT NULL ORDER BY type DESC")]


def make_anew(path, version, schema, rows):
    path.unlink()
    with sqlite3.connect(path) as database:
        for pragma in (f"page_size = {PAGE}", "application_id = 0x444C5053", f"user_version = {version}"):
            database.execute(f"PRAGMA {pragma}")
        for name, sql in schema:
            database.execute(sql)
            for row in rows.get(name, ()):
                database.execute(f"INSERT INTO {name} VALUES ({', '.join('?' * len(row))})", row)
        database.commit()
        database.execute("PRAGMA journal_mode = WAL")
    database.close()
