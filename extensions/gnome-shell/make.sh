#!/bin/bash
# Makes the extension for one version of GNOME Shell:
#
#   extensions/gnome-shell/make.sh 43|48 FOLDER
#
# FOLDER is what GNOME Shell looks for extensions in: ~/.local/share/gnome-shell/extensions for one
# user, /usr/share/gnome-shell/extensions for all. The extension itself is the same for both
# versions; what it imports, and how the shell begins with it, differs.
set -euo pipefail
source=$(dirname "$(realpath "$0")")

if (($# != 2)) || [[ ! -f $source/imports-$1.js ]]; then
    sed -n '2,/^set /{/^#/s/^# \{0,1\}//p}' "$0" >&2
    exit 2
fi
folder=$2/tavolauncher@tavolauncher.org
mkdir -p "$folder"
cat "$source/imports-$1.js" "$source/windows.js" >"$folder/extension.js"
sed "s/@VERSION@/$1/" "$source/metadata.json.in" >"$folder/metadata.json"
chmod 644 "$folder"/*
