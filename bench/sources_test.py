"""The sources of a commit are whole: what stands in its root is there."""
import os
import subprocess
import sys
import tempfile

from sources import ROOT, take_sources

NO_REPOSITORY = 77  # the sources were not cloned: counts as skipped

listing = subprocess.run(["git", "-C", ROOT, "ls-tree", "--name-only", "HEAD"], capture_output=True, text=True)
if listing.returncode != 0:
    sys.exit(NO_REPOSITORY)
with tempfile.TemporaryDirectory() as scratch:
    folder = os.path.join(scratch, "sources")
    take_sources("HEAD", folder)
    if sorted(os.listdir(folder)) != sorted(listing.stdout.split()):
        sys.exit(f"taken out: {sorted(os.listdir(folder))}")
