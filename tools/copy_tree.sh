#!/bin/bash
# Copies the tree, without what is built and ignored, to a place that every user can read, and
# prints where. The copy is kept, so that the next one finds its build folders.
set -euo pipefail
umask 022
cd "$(dirname "$0")/.."

copy=/var/tmp/tavolauncher-$(pwd -P | sha256sum | cut -c1-12)
mkdir "$copy" 2>/dev/null || true
if [[ -L $copy || ! -O $copy ]]; then
    echo "$copy belongs to somebody else" >&2
    exit 1
fi
chmod 755 "$copy"

files() {
    if git -c safe.directory='*' rev-parse --is-inside-work-tree >/dev/null 2>&1; then
        # A file deleted but not yet committed is listed, and is not there.
        git -c safe.directory='*' ls-files -z --cached --others --exclude-standard |
            while IFS= read -r -d '' file; do
                if [[ -e $file || -L $file ]]; then printf '%s\0' "$file"; fi
            done
    else
        find . \( -name build -o -name .git -o -name .cache -o -name __pycache__ \) -prune \
            -o \( -type f -o -type l \) -printf '%P\0'
    fi
}
list=$(mktemp)
trap 'rm -f "$list"' EXIT
files | sort -z -u >"$list"

# What has gone from the tree goes from the copy.
find "$copy" -path "$copy/build" -prune -o \( -type f -o -type l \) -printf '%P\0' | sort -z |
    comm -z -23 - "$list" | (cd "$copy" && xargs -0 --no-run-if-empty rm -f --)
tar --create --null --no-recursion --files-from "$list" |
    tar --extract --directory "$copy" --no-same-owner
chmod -R a+rX "$copy"
echo "$copy"
