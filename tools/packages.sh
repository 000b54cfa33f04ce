#!/bin/bash
# Installs what the named sections of packaging/packages.txt list and the machine lacks:
#
#   tools/packages.sh build run        install
#   tools/packages.sh --missing test   only say what is missing, one package a line
#
# Touches nothing, and asks for no rights, when nothing is missing. Without the rights to install
# it prints the command that somebody with them has to run, and fails.
set -euo pipefail
cd "$(dirname "$0")/.."

only_say=no
if [[ ${1-} == --missing ]]; then
    only_say=yes
    shift
fi
if (($# == 0)); then
    echo "usage: tools/packages.sh [--missing] SECTION..." >&2
    exit 2
fi

declare -A wanted=()
for section in "$@"; do
    lines=$(sed -n "s/^$section://p" packaging/packages.txt)
    if [[ -z $lines ]]; then
        echo "packaging/packages.txt has no section \"$section\"" >&2
        exit 2
    fi
    for package in $lines; do
        wanted[$package]=1
    done
done

if ! command -v dpkg-query >/dev/null; then
    echo "Not a Debian: packages like these must be there already: ${!wanted[*]}" >&2
    exit 0
fi

missing=()
for package in "${!wanted[@]}"; do
    state=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
    if [[ $state != *installed || $state == *not-installed ]]; then
        missing+=("$package")
    fi
done
if ((${#missing[@]} == 0)); then
    exit 0
fi
mapfile -t missing < <(printf '%s\n' "${missing[@]}" | sort)
if [[ $only_say == yes ]]; then
    printf '%s\n' "${missing[@]}"
    exit 0
fi

install=(apt-get install --yes --no-install-recommends "${missing[@]}")
as_root=()
if ((EUID != 0)); then
    if ! command -v sudo >/dev/null || ! { [[ -t 0 ]] || sudo -n true 2>/dev/null; }; then
        echo "These packages are missing, and installing them needs root. Run:" >&2
        echo "    sudo sh -c 'apt-get update && ${install[*]}'" >&2
        exit 1
    fi
    as_root=(sudo)
fi

echo "Installing ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# Other installations under way are waited for. Nothing may ask anything.
quietly() {
    if ! "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive "$@" -qq \
        -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 </dev/null >"$log" 2>&1; then
        cat "$log" >&2
        exit 1
    fi
}
quietly apt-get update
quietly "${install[@]}"
