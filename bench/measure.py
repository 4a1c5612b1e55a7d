"""Runs programs in turn and keeps what each run took."""
import contextlib
import mmap
import os
import re
import statistics
import subprocess
import sys
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
        self.room = 0

    def run(self):
        if self.prepare:
            self.prepare()
        use_memory(self.room)
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


def run_in_turn(jobs, rounds, room=0):
    """Runs each job once a round. room is what the largest may need of memory, in bytes."""
    for number in range(rounds):
        first = number % len(jobs)  # nobody follows the same one each time
        for job in [*jobs[first:], *jobs[:first]]:
            job.room = room
            job.run()


def use_memory(size):
    """Takes and gives back as much memory. A virtual machine may hand memory that was free for seconds to its host, and using
    that again takes ten times as long: whoever ran soon after somebody who had freed much would be ahead."""
    if size > 0:
        # A process of its own: what starts a program adds its own peak to that of the program.
        subprocess.run([sys.executable, os.path.abspath(__file__), str(size)], check=True)


def touch(size):
    with mmap.mmap(-1, size, flags=mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS) as memory:
        with contextlib.suppress(OSError):  # a system without large pages
            memory.madvise(mmap.MADV_HUGEPAGE)
        for place in range(0, size, mmap.PAGESIZE):
            memory[place] = 1


def remove_file(path):
    if os.path.exists(path):
        os.remove(path)


def remove_store(path):
    for suffix in ("", "-wal", "-shm", "-journal", "-writer"):
        remove_file(path + suffix)


if __name__ == "__main__":
    touch(int(sys.argv[1]))
