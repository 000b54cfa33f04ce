#!/bin/bash
# Checks the subjects of commits: "folder: Imperative summary", 72 columns, no full stop.
#
#   tools/lint_commit.sh main..HEAD        the commits of a range (the last one without)
#   tools/lint_commit.sh --message FILE    a message about to be committed, for a commit-msg hook
set -euo pipefail
cd "$(dirname "$0")/.."

failed=no
complain() {
    echo "$1: \"$2\"" >&2
    failed=yes
}

check() {
    local subject=$1
    if [[ $subject == "Merge "* ]]; then
        return
    fi
    if ((${#subject} > 72)); then
        complain "longer than 72 columns" "$subject"
    fi
    # A folder or several, or a file of the top one, as in "platform/linux", ".ci" or "ui, README".
    if [[ ! $subject =~ ^[A-Za-z.][A-Za-z0-9_/.-]*(,\ [A-Za-z0-9_/.-]+)*:\ [A-Z] ]]; then
        complain "not \"folder: Summary\"" "$subject"
    elif [[ $subject =~ ^[^:]*:\ [A-Za-z]+(ed|ing)\  && ! $subject =~ :\ (Embed|Feed|Need|Bring|Speed|Seed|String)\  ]]; then
        complain "not in the imperative" "$subject"
    fi
    if [[ $subject == *. ]]; then
        complain "ends with a full stop" "$subject"
    fi
}

if [[ ${1-} == --message ]]; then
    check "$(grep -v '^#' "$2" | head -n 1)"
else
    range=(--max-count=1)
    if (($# > 0)); then
        range=("$@")
    fi
    subjects=$(git log --format=%s "${range[@]}")
    while IFS= read -r subject; do
        check "$subject"
    done <<<"$subjects"
fi
[[ $failed == no ]]
