"""What a command may open, as SECURITY.md lists it, and what in a trace of its calls to the system is none of it."""

from __future__ import annotations

import codecs
import os
import re
from pathlib import Path

TRACED = "open,openat,openat2,creat,socket,connect,bind,execve,execveat,fork,vfork,clone,clone3"
STRACE = ("strace", "-f", "-y", "-qq", "-e", f"trace={TRACED}", "-o")  # and where to
CALL = re.compile(r'(?:(\d+) +)?(\w+)\((?:(?:AT_FDCWD|\d+)<([^>]*)>, )?(?:"((?:[^"\\]|\\.)*)")?')
GOES_ON = re.compile(r"(?:\d+ +)?(?:<\.\.\. \w+ resumed>|--- SIG)")
STARTS = ("fork", "vfork", "clone", "clone3")
SYSTEM = ("/lib/", "/lib64/", "/usr/lib/", "/etc/ld.so.", "/usr/share/locale/", "/usr/share/zoneinfo/")
SINGLE = ("/dev/urandom", "/etc/localtime", "/proc/self/exe")
SIDE_FILE = "(-(journal|wal|shm|writer))?"
NEW_FILE = rf"\.new-\w{{6}}(-maker|{SIDE_FILE})"


class Places:
    """Those of a command whose files are in one folder: the store, what it reads, what it writes, and a log."""

    def __init__(self, folder: Path, home: Path, temporary: Path, *, store: str, read: str, written: str, log: str = "log",
                 more: str = "") -> None:
        """more: a folder of documents"""
        put_aside = rf"{re.escape(store)}\.(before-restore|damaged)(-\d+)?"
        stores = f"({re.escape(store)}|{put_aside}|{read}|{written})"  # what is read or written may be a backup
        patterns = (
            "", f"/{stores}({SIDE_FILE}|{NEW_FILE})", rf"/\.{re.escape(written)}\.\w{{6}}", f"/{log}",
        )
        self._patterns = [re.escape(str(folder)) + pattern for pattern in patterns] + [
            re.escape(str(home)) + rf"/(config/\w[\w.]*|\.config/dlpctl/config\.toml)",
            re.escape(str(temporary)) + r"/(etilqs_\w+|dlpctl-\w{6}(/(template\.rules|\.template\.rules\.\w{6}))?)",
            *([re.escape(more) + r"(/[\w.]+)*"] if more else []),
        ]

    def hold(self, path: str) -> bool:
        """Whether the command may open it; the path is absolute and has no way back in it."""
        return path in SINGLE or path.startswith(SYSTEM) or any(re.fullmatch(one, path) for one in self._patterns)


def path_of(folder: str | None, name: str) -> str:
    """Without a way back; texts in a trace have escapes."""
    return os.path.normpath(os.path.join(folder or "", codecs.escape_decode(name.encode())[0].decode(errors="replace")))


def strange_calls(trace: str, places: Places, edits: bool = False) -> list[str]:
    """Lines that open, connect or start anything else; edits: the program may start a shell for an editor, whose calls are its own."""
    found = []
    own = started = None
    for line in trace.splitlines():
        call = CALL.match(line)
        if call is None:
            found += [] if GOES_ON.match(line) else [line]
            continue
        process, function, folder, name = call.groups()
        if own is None and function == "execve":
            own = process
        elif process != own:
            found += [] if started else [line]
        elif edits and not started and function in STARTS:
            started = True
        elif name is None or function not in ("open", "openat") or not places.hold(path_of(folder, name)):
            found.append(line)
    return found if own is not None else ["nothing was traced"]
