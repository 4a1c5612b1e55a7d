"""Runs test cases, each in a process of its own, and asks which of them notice a mutant."""

import os
import pathlib
import signal
import subprocess
import tempfile
import time

PATIENCE_FACTOR = 10
PATIENCE_SECONDS = 5


class Cases:
    def __init__(self, out, programs, scratch):
        self.out, self.programs, self.scratch = out, programs, scratch
        scratch.mkdir(parents=True, exist_ok=True)

    def list(self):
        """Names such as dlp_tests:Suite.Case."""
        found = []
        for program in self.programs:
            lines = subprocess.run([self.out / "bin" / program, "--gtest_list_tests"], check=True,
                                   capture_output=True, text=True).stdout.splitlines()
            suite = ""
            for line in (line.split("#")[0].rstrip() for line in lines):
                if line.endswith(".") and not line.startswith(" "):
                    suite = line
                elif line.startswith("  ") and "DISABLED_" not in suite + line:
                    found.append(f"{program}:{suite}{line.strip()}")
        return found

    def run(self, case, variables, limit=None):
        """Whether the case passes, and how long it took."""
        program, name = case.split(":", 1)
        folder = self.out / "tests"
        with tempfile.TemporaryDirectory(dir=self.scratch, ignore_cleanup_errors=True) as own:
            os.chmod(own, 0o755)  # some cases become another user
            environment = {**os.environ, **variables, "TMPDIR": own}
            start = time.monotonic()
            process = subprocess.Popen([self.out / "bin" / program, f"--gtest_filter={name}"], env=environment,
                                       cwd=folder if folder.is_dir() else self.out, stdin=subprocess.DEVNULL,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
            try:
                passed = process.wait(limit) == 0
            except subprocess.TimeoutExpired:
                passed = False
            finally:
                if process.poll() is None:
                    os.killpg(process.pid, signal.SIGKILL)
                    process.wait()
            return passed, time.monotonic() - start

    def trace(self, case):
        """Whether the case passes without a mutant, how long that took, and the mutants that it reached."""
        with tempfile.TemporaryDirectory(dir=self.scratch) as own:
            trace = pathlib.Path(own) / "reached"
            passed, seconds = self.run(case, {"DLP_MUTANT_TRACE": str(trace)})
            reached = sorted(set(map(int, trace.read_text().split()))) if trace.exists() else []
            return passed, seconds, reached

    def noticed_by(self, number, cases, seconds):
        """The first of the cases that fails over a mutant, crashes or takes far too long; None if none does."""
        for case in cases:
            limit = seconds[case] * PATIENCE_FACTOR + PATIENCE_SECONDS
            if not self.run(case, {"DLP_MUTANT": str(number)}, limit)[0]:
                return case
        return None
