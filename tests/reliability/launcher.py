"""Starts programs from a process that stays small: a program begins with the peak of memory of the one that started it."""

import json
import os
import signal
import subprocess
import sys


def measure(words: list[str], errors: str, patience: int) -> tuple[int, float, int]:
    """Exit code, seconds of the processor, peak of memory in bytes."""
    with open(errors, "wb") as err:
        process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=err)
        signal.signal(signal.SIGALRM, lambda *_: process.kill())
        signal.alarm(patience)
        _, status, usage = os.wait4(process.pid, 0)
        signal.alarm(0)
    process.returncode = os.waitstatus_to_exitcode(status)
    return process.returncode, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


class Launcher:
    """This file as a process of its own, which lives as long as the one that uses it."""

    def __init__(self) -> None:
        self._process = subprocess.Popen([sys.executable, "-I", "-S", __file__], stdin=subprocess.PIPE,
                                         stdout=subprocess.PIPE, text=True)

    def run(self, words: list[str], errors: str, patience: int) -> tuple[int, float, int]:
        """As measure."""
        print(json.dumps([words, errors, patience]), file=self._process.stdin, flush=True)
        code, seconds, peak = json.loads(self._process.stdout.readline())
        return code, seconds, peak

    def close(self) -> None:
        """It ends with what it reads."""
        self._process.stdin.close()
        self._process.wait()


if __name__ == "__main__":
    for line in sys.stdin:
        print(json.dumps(measure(*json.loads(line))), flush=True)
