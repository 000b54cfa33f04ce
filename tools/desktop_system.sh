#!/bin/bash
# A whole Debian in a folder, with every desktop that the program is tried on. By hand or from
# `./test desktops`, as root:
#
#   tools/desktop_system.sh RELEASE                 makes it, or brings it up to date
#   tools/desktop_system.sh RELEASE build           and builds the program inside, and installs it there
#   tools/desktop_system.sh RELEASE run COMMAND...  runs a command inside, as a user without rights
#
# RELEASE is bookworm or trixie. The command sees this tree in /tree, what was built in /source, the
# installed program in /opt/tavolauncher, and in /results build/desktops/RELEASE of this tree, the one
# place that it can leave something in. It has processes, a network and temporary folders of its own,
# all of which end with it. TAVO_TREE names another tree to build, TAVO_RESULTS another folder than
# build/desktops.
#
# The systems are kept in /var/tmp/tavo-desktops (TAVO_DESKTOPS names another folder), 5 GB each, and
# used again. The packages come from the mirror that apt uses here. Nothing else of this machine is
# changed.
set -euo pipefail
umask 022
cd "$(dirname "$0")/.."

release=${1-}
case $release in
    bookworm | trixie) ;;
    *)
        sed -n '2,/^set /{/^#/s/^# \{0,1\}//p}' "$0" >&2
        exit 2
        ;;
esac
shift
if ((EUID != 0)); then
    echo "Only root can make a system in a folder. Run: sudo $0 $release" >&2
    exit 1
fi

folder=${TAVO_DESKTOPS:-/var/tmp/tavo-desktops}/$release
root=$folder/root
tree=$PWD
source=$(realpath "${TAVO_TREE:-$tree}")
# Each tree has its build; what they have in common ccache remembers.
built=$folder/builds/$(printf %s "$source" | sha256sum | cut -c1-12)
results=${TAVO_RESULTS:-$tree/build/desktops}/$release
uid=1000
jobs=${TAVO_JOBS:-2}

# A command with a root folder of its own. First come pairs of a folder here and where it is seen
# inside, each with "ro:" or "rw:" before it, then "--".
inside() {
    local shown=()
    while [[ $1 != -- ]]; do
        shown+=("$1")
        shift
    done
    shift
    # shellcheck disable=SC2016  # read by the inner shell
    unshare --mount --pid --fork --kill-child --ipc --uts "${private[@]}" \
        bash -euc '
            root=$1 shown=$2
            shift 2
            mount --make-rprivate /
            mount -t proc proc "$root/proc"
            mount --rbind /sys "$root/sys"
            for name in tmp run dev; do mount -t tmpfs -o mode=755 tmpfs "$root/$name"; done
            chmod 1777 "$root/tmp"
            mkdir -m 1777 "$root/tmp/.X11-unix" "$root/tmp/.ICE-unix" "$root/dev/shm"
            mkdir "$root/dev/pts"
            for name in null zero full random urandom tty; do
                touch "$root/dev/$name"
                mount --bind "/dev/$name" "$root/dev/$name"
            done
            mount -t devpts -o newinstance,ptmxmode=0666,mode=620 devpts "$root/dev/pts"
            ln -s pts/ptmx "$root/dev/ptmx"
            ln -s /proc/self/fd "$root/dev/fd"
            for number in 0 1 2; do
                name=(stdin stdout stderr)
                ln -s "/proc/self/fd/$number" "$root/dev/${name[number]}"
            done
            for pair in $shown; do
                IFS=: read -r how from to <<<"$pair"
                mkdir -p "$root$to"
                mount --bind "$from" "$root$to"
                mount -o "remount,bind,$how" "$root$to"
            done
            ip link set lo up 2>/dev/null || true
            # Nothing that the command leaves behind outlives this shell, the first process there.
            chroot "$root" "$@"
        ' bash "$root" "${shown[*]}" \
        /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 TERM=dumb "$@"
}

quietly() {
    local log=$folder/log
    "$@" </dev/null >"$log" 2>&1 || {
        tail -n 40 "$log" >&2
        echo "FAILED: $release: $*; all of it is in $log" >&2
        exit 1
    }
}

packages() {
    local section
    for section in build run headless test desktops "desktops_$release"; do
        sed -n "s/^$section://p" packaging/packages.txt
    done | tr -s ' ' '\n' | sed '/^$/d' | sort -u
}

mirror() {
    # shellcheck disable=SC2016  # the fields are apt's
    apt-get indextargets --format '$(ORIGIN) $(CODENAME) $(REPO_URI)' 'Created-By: Packages' |
        awk '$1 == "Debian" && $2 ~ /^[a-z]+$/ { print $3; exit }'
}

make_system() {
    local wanted stamp=$folder/packages
    wanted=$(packages)
    if [[ -e $stamp && $(<"$stamp") == "$wanted" ]]; then
        return
    fi
    mkdir -p "$folder"
    if [[ ! -e $folder/base ]]; then
        tools/packages.sh fresh
        local from
        from=$(mirror)
        if [[ -z $from ]]; then
            echo "apt knows no mirror of Debian here" >&2
            exit 1
        fi
        echo "Making a minimal $release in $root"
        rm -rf --one-file-system "$root"
        quietly debootstrap --variant=minbase "$release" "$root" "$from"
        # Nothing inside may start services of its own.
        printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
        chmod 755 "$root/usr/sbin/policy-rc.d"
        # No pages for reading, and nothing is synchronised with the disk.
        printf 'path-exclude=/usr/share/%s/*\n' man doc locale help >"$root/etc/dpkg/dpkg.cfg.d/small"
        echo force-unsafe-io >>"$root/etc/dpkg/dpkg.cfg.d/small"
        quietly chroot "$root" useradd --create-home --uid $uid --shell /bin/bash user
        touch "$folder/base"
    fi
    echo "Installing the desktops of $release"
    local private=() apt=(apt-get -qq --yes -o Dpkg::Use-Pty=0 -o Acquire::Retries=3)
    cp --dereference /etc/resolv.conf "$root/etc/resolv.conf"
    quietly inside -- "${apt[@]}" update
    # shellcheck disable=SC2086  # one package a word
    quietly inside -- DEBIAN_FRONTEND=noninteractive "${apt[@]}" --no-install-recommends install $wanted
    quietly inside -- "${apt[@]}" clean
    # A file with a capability of its own cannot be run where that is not given.
    setcap -r "$root/usr/bin/kwin_wayland" 2>/dev/null || true
    [[ -s $root/etc/machine-id ]] || dbus-uuidgen >"$root/etc/machine-id"
    echo "$wanted" >"$stamp"
}

build() {
    local private=(--net)
    # A session that runs keeps the program that it began with.
    rm -rf "$built"/prefix.{new,old}
    mkdir -p "$built"/{build,prefix,prefix.new} "$folder/ccache"
    echo "Building $source on $release"
    quietly inside "ro:$source:/tree" "rw:$built/build:/build" "rw:$built/prefix.new:/opt/tavolauncher" \
        "rw:$folder/ccache:/ccache" -- CCACHE_DIR=/ccache HOME=/tmp sh -euc "
        cmake -S /tree -B /build -G Ninja -DCMAKE_BUILD_TYPE=Release -DTAVO_TESTS=OFF \
            -DTAVO_BENCHMARKS=OFF -DCMAKE_INSTALL_PREFIX=/opt/tavolauncher
        nice cmake --build /build -j$jobs
        cmake --install /build"
    mv "$built/prefix" "$built/prefix.old"
    mv "$built/prefix.new" "$built/prefix"
}

run() {
    local private=(--net)
    mkdir -p "$results" "$built/prefix"
    chown -R $uid:$uid "$results"
    inside "ro:$tree:/tree" "ro:$source:/source" "ro:$built/prefix:/opt/tavolauncher" "rw:$results:/results" -- \
        USER=user LOGNAME=user HOME=/home/user SHELL=/bin/bash RELEASE="$release" \
        setpriv --reuid $uid --regid $uid --clear-groups --inh-caps=-all -- "$@"
}

mkdir -p "$folder"
# Two at a time would install over one another.
exec 9>"$folder/lock"
if [[ ${1-} != run ]]; then
    flock 9
    make_system
fi
case ${1-} in
    "") ;;
    build) build ;;
    run)
        shift
        run "$@"
        ;;
    *)
        echo "unknown: $1" >&2
        exit 2
        ;;
esac
