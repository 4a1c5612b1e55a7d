"""Runs programs in turn and keeps what each run took."""
import os
import re
import statistics
import subprocess
import time

LAP = re.compile(r"^(\S+) +([0-9.]+) ms$", re.MULTILINE)


class Job:
    """A program that is run once a round. prepare(), if any, is called before and is not measured."""

    def __init__(self, name, command, prepare=None, laps=None):
        self.name = name
        self.command = command
        self.prepare = prepare
        self.laps = laps  # names of lines "NAME 1.2 ms" on standard error that count instead of the whole process
        self.seconds = []
        self.cpu_seconds = []
        self.peaks = []

    def run(self):
        if self.prepare:
            self.prepare()
        start = time.perf_counter()
        process = subprocess.Popen(self.command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        messages = process.stderr.read().decode(errors="replace")
        _, status, usage = os.wait4(process.pid, 0)
        seconds = time.perf_counter() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            raise RuntimeError(f"{self.name}: {' '.join(self.command)} ended with {process.returncode}\n{messages}")
        if self.laps:
            seconds = sum(float(lap) for name, lap in LAP.findall(messages) if name in self.laps) / 1000
        self.seconds.append(seconds)
        self.cpu_seconds.append(usage.ru_utime + usage.ru_stime)
        self.peaks.append(usage.ru_maxrss * 1024)

    def median(self, figures="seconds"):
        return statistics.median(getattr(self, figures))


def run_in_turn(jobs, rounds):
    for _ in range(rounds):
        for job in jobs:
            job.run()


def remove_store(path):
    for suffix in ("", "-wal", "-shm", "-journal", "-writer"):
        if os.path.exists(path + suffix):
            os.remove(path + suffix)
