#!/bin/bash
# Tries the package on a bare Debian: run by hand, as root.
#
#   packaging/fresh_install.sh RELEASE build/deb/tavolauncher_VERSION_ARCH.deb [PICTURE.png]
#
# RELEASE is bookworm or trixie, the one that the package was built on.
#
# Makes a minimal system in a folder, installs the package there with the dependencies that it
# declares and nothing else, not even what it recommends, and starts the program inside. The screen
# (Xvfb, openbox, the buses) is this machine's, so that nothing of it can stand in for a dependency
# that was forgotten. packaging/see_installed.py looks at the window, opens an application and
# quits; then the package is removed, and whatever is left but the user's data fails the trial.
#
# Takes the packages from the mirror that apt uses here. Leaves the picture, build/fresh/installed.png
# unless another is named, and nothing else.
set -euo pipefail
umask 022
cd "$(dirname "$0")/.."

if ((EUID != 0)) || (($# < 2 || $# > 3)) || [[ $1 != bookworm && $1 != trixie ]] || [[ ! -f $2 ]]; then
    sed -n '2,/^set /{/^#/s/^# \{0,1\}//p}' "$0" >&2
    exit 2
fi
suite=$1
package=$(realpath "$2")
picture=$(realpath --canonicalize-missing "${3-build/fresh/installed.png}")
tools/packages.sh headless test fresh

# shellcheck disable=SC2016  # the fields are apt's
mirror=$(apt-get indextargets --format '$(ORIGIN) $(CODENAME) $(REPO_URI)' 'Created-By: Packages' |
    awk '$1 == "Debian" && $2 ~ /^[a-z]+$/ { print $3; exit }')
if [[ -z $mirror ]]; then
    echo "apt knows no mirror of Debian here" >&2
    exit 1
fi

work=$(mktemp -d /var/tmp/tavo-fresh.XXXXXX)
chmod 755 "$work"
root=$work/root
mounted=()
prover=
# shellcheck disable=SC2317  # called on the way out
clean_up() {
    if [[ -n $prover ]]; then
        kill "$prover" 2>/dev/null || true
        wait "$prover" 2>/dev/null || true
    fi
    for ((i = ${#mounted[@]} - 1; i >= 0; i--)); do
        umount "${mounted[i]}" || umount --lazy "${mounted[i]}"
    done
    # Never across a mount that would not go.
    rm -rf --one-file-system "$work"
}
trap clean_up EXIT
trap 'exit 130' INT TERM HUP

log=$work/log
quietly() {
    "$@" </dev/null >"$log" 2>&1 || {
        tail -n 40 "$log" >&2
        exit 1
    }
}
inside() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive "$@"
}
# Everything that is in the system but records and downloads of the package tools, and the users'.
everything() {
    (cd "$root" && find . -xdev \( -path ./proc -o -path ./tmp -o -path ./home -o -path ./var/cache \
        -o -path ./var/log -o -path ./var/lib/apt -o -path ./var/lib/dpkg \) -prune \
        -o -print | sort)
}

echo "Making a minimal $suite"
quietly debootstrap --variant=minbase "$suite" "$root" "$mirror"
# Nothing inside may start services of its own.
printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
chmod 755 "$root/usr/sbin/policy-rc.d"
mount -t proc proc "$root/proc"
mounted+=("$root/proc")

echo "Installing $(basename "$package") with what it depends on"
cp "$package" "$root/var/cache/package.deb"
quietly inside apt-get update
depends=$(dpkg-deb --field "$package" Depends)
# The dependencies first, so that what belongs to the package can be told from what is theirs.
quietly inside apt-get satisfy --yes --no-install-recommends "$depends"
everything >"$work/before"
quietly inside apt-get install --yes --no-install-recommends /var/cache/package.deb
everything >"$work/installed"
echo "It depends on: $depends"
echo "Files of its own: $(comm -13 "$work/before" "$work/installed" | wc -l), packages in all:" \
    "$(inside dpkg-query --show | wc -l)"
library=$(inside dpkg-query --listfiles tavolauncher | grep '/libtavolauncher\.so$')
if inside ldd /usr/bin/tavolauncher "$library" | grep 'not found'; then
    echo "FAILED: libraries are missing" >&2
    exit 1
fi
inside tavolauncher --version

# The user, who has an application of their own.
uid=$(id -u nobody)
gid=$(id -g nobody)
home=/home/prova
mkdir -p "$root$home/.local/share/applications"
cat >"$root$home/.local/share/applications/prova.desktop" <<ENTRY
[Desktop Entry]
Type=Application
Name=Prova
Exec=touch $home/opened
ENTRY
chown -R "$uid:$gid" "$root$home"

# Screen and bus are sockets below /tmp. The prover has them, as the user; only root may start a
# program inside, so each waits for the other: first for the environment, then for the process.
mount --bind /tmp "$root/tmp"
mounted+=("$root/tmp")
[[ -d /tmp/.X11-unix ]] || mkdir -m 1777 /tmp/.X11-unix
stage=$work/stage
mkdir "$stage"
chown "$uid:$gid" "$stage"
# The user may not be allowed to read this tree.
mkdir "$work/tree"
cp -r tools packaging "$work/tree"
echo "Starting it"
env -i PATH="$PATH" TMPDIR=/tmp LANG=C.UTF-8 \
    setpriv --reuid "$uid" --regid "$gid" --clear-groups \
    /usr/bin/python3 -W ignore -B "$work/tree/packaging/see_installed.py" "$stage" "$root$home" &
prover=$!
for ((i = 0; i < 600; ++i)); do
    [[ -e $stage/environment ]] && break
    kill -0 "$prover" || exit 1
    sleep 0.1
done
mapfile -d '' -t environment <"$stage/environment"
chroot --userspec "$uid:$gid" --groups= "$root" env -i "${environment[@]}" HOME=$home \
    PATH=/usr/bin:/bin tavolauncher >"$work/program.log" 2>&1 &
program=$!
echo "$program" >"$stage/process.new"
mv "$stage/process.new" "$stage/process"
seen=0
wait "$prover" || seen=$?
prover=
mkdir -p "$(dirname "$picture")"
[[ -e $stage/picture.png ]] && cp "$stage/picture.png" "$picture"
if ((seen != 0)); then
    echo "FAILED: the program said:" >&2
    cat "$work/program.log" >&2
    exit 1
fi
ended=0
wait "$program" || ended=$?
if ((ended != 0)); then
    echo "FAILED: it quit with status $ended" >&2
    exit 1
fi
echo "Picture in $picture"
umount "$root/tmp"
unset 'mounted[-1]'

status=0
left() {
    everything | comm -13 "$work/before" -
}
echo "Removing it"
quietly inside apt-get remove --yes tavolauncher
echo "Left when removed, to be kept should it be installed again:"
left
configuration=$(left | grep -v '^\./etc/' || true)
if [[ -n $configuration ]]; then
    echo "FAILED: more than settings is left" >&2
    status=1
fi
quietly inside apt-get purge --yes tavolauncher
if [[ -n $(left) ]]; then
    echo "FAILED: left when purged:" >&2
    left >&2
    status=1
fi
echo "Left when purged, the user's data:"
(cd "$root$home" && find . -type f ! -name prova.desktop ! -name opened | sort)
exit $status
