"""The files of the tree: all but what .gitignore names and the version control's own."""

import fnmatch
import os
import pathlib


def files(root):
    """Paths relative to `root`, sorted."""
    ignore = root / ".gitignore"
    lines = ignore.read_text().splitlines() if ignore.is_file() else []
    patterns = [line.strip().strip("/") for line in lines if line.strip() and line[0] != "#"]
    patterns.append(".git")

    def ignored(name):
        return any(fnmatch.fnmatch(name, pattern) for pattern in patterns)

    found = []
    for folder, folders, names in os.walk(root):
        folders[:] = [name for name in folders if not ignored(name)]
        found += [(pathlib.Path(folder) / name).relative_to(root).as_posix()
                  for name in names if not ignored(name)]
    return sorted(found)
