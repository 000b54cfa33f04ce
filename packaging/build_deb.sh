#!/bin/bash
# Builds the Debian packages, of the program and of the extension of GNOME Shell, and looks them over:
#
#   packaging/build_deb.sh
#
# They end up in build/deb/; the path of the program's is the last line. Installs the packages that are missing
# for it. Built from the files of the tree as they are, in a folder of its own; the same tree gives
# the same package.
set -euo pipefail
umask 022
cd "$(dirname "$0")/.."

tools/packages.sh build package

deb=$PWD/build/deb
source=$deb/source
rm -rf "$source"
rm -f "$deb"/*tavolauncher_*
mkdir -p "$source"
tar --create --exclude=./build --exclude=./.git --exclude=./.cache --exclude=__pycache__ . |
    tar --extract --directory "$source"
mv "$source/packaging/debian" "$source/debian"

# The package alone: nobody asked for the one with the debug symbols. The compiler's cache has to be
# told where it is, because the build has a home of its own.
if command -v ccache >/dev/null; then
    CCACHE_DIR=$(ccache --get-config cache_dir)
    export CCACHE_DIR
fi
export DEB_BUILD_OPTIONS="noautodbgsym ${DEB_BUILD_OPTIONS-}" DEB_CXXFLAGS_STRIP=-g
log=$deb/build.log
echo "Building the packages"
(cd "$source" && dpkg-buildpackage --build=binary --no-sign) >"$log" 2>&1 || {
    tail -n 40 "$log" >&2
    echo "All of it in $log" >&2
    exit 1
}
rm -rf "$source"

package=$(ls "$deb"/tavolauncher_*.deb)
# On Debian 13 it warns that the metainfo names no home page. There is none; a test looks at the rest.
without=()
if lintian-explain-tags --list-tags | grep -x appstream-metadata-validation-failed >/dev/null; then
    without=(--suppress-tags appstream-metadata-validation-failed)
fi
lintian --allow-root --fail-on error,warning --display-info "${without[@]}" "$deb"/tavolauncher_*.changes
echo "$package"
