"""The command line that the checks of the sources share."""

import sys
from pathlib import Path


def run(read, faults, self_test):
    """With `--self` runs the self test; else prints the faults of the files under the first argument
    and exits with 1 where there are any, or no file at all."""
    if "--self" in sys.argv:
        sys.exit(0 if self_test() else "the check does not find what it should")
    files = read(Path(sys.argv[1]))
    found = list(faults(files))
    print("\n".join(found))
    print(f"{len(files)} files, {len(found)} faults")
    sys.exit(1 if found or not files else 0)
