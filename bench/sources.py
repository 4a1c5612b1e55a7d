"""Takes the sources of a commit out of the repository; not even a worktree is made."""
import os
import subprocess

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def find_commit():
    """Names the commit that is checked out, and says whether the sources differ from it; None without a repository."""
    described = subprocess.run(["git", "-C", ROOT, "describe", "--always", "--dirty", "--abbrev=12"],
                               capture_output=True, text=True)
    return described.stdout.strip() if described.returncode == 0 else None


def take_sources(commit, folder):
    os.makedirs(folder)
    # In a folder below the root git would pack that folder alone.
    archive = subprocess.run(["git", "-C", ROOT, "archive", "--format=tar", commit], check=True,
                             stdout=subprocess.PIPE).stdout
    subprocess.run(["tar", "x", "-C", folder], input=archive, check=True)
