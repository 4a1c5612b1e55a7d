"""Takes the sources of a commit out of the repository; not even a worktree is made."""
import os
import subprocess

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def take_sources(commit, folder):
    os.makedirs(folder)
    # In a folder below the root git would pack that folder alone.
    archive = subprocess.run(["git", "-C", ROOT, "archive", "--format=tar", commit], check=True,
                             stdout=subprocess.PIPE).stdout
    subprocess.run(["tar", "x", "-C", folder], input=archive, check=True)
