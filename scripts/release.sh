# Functions that run programs in another release of Debian, for the other scripts. They need those of
# packages.sh, and the variable top, the folder of the sources.

# need_release NAME: sets the variables release and root. Downloads the release to /var/tmp/neb-root-NAME
# or, if it is set, to the folder NEB_ROOT, unless it is there. Exits with a message without root.
need_release() {
    release=$1
    root=${NEB_ROOT:-/var/tmp/neb-root-$release}
    [ "$(id -u)" -eq 0 ] || { echo "$0: needs root" >&2; exit 1; }
    need_packages debootstrap
    [ -e "$root/etc/debian_version" ] || debootstrap --variant=minbase "$release" "$root"
}

# run_in_release PACKAGES SCRIPT: installs the packages in the release, and runs the Bash script, which
# has the exported variables, release, root, top, and a function: in_release PROGRAM ARGUMENT... runs
# a program that sees the release as /, with devices of its own and top at its own path. The mounts
# end with the script.
run_in_release() {
    export release root top
    packages=$1 script=$2 unshare --mount --propagation private bash -euo pipefail -c '
        mount -t proc proc "$root/proc"
        mount -t tmpfs -o mode=755 dev "$root/dev"
        cp -a /dev/null /dev/zero /dev/full /dev/random /dev/urandom /dev/tty "$root/dev"
        chmod 666 "$root"/dev/*
        mkdir "$root/dev/pts" "$root/dev/shm"
        mount -t devpts -o newinstance,ptmxmode=666,mode=620 devpts "$root/dev/pts"
        mount -t tmpfs -o mode=1777 shm "$root/dev/shm"
        ln -s pts/ptmx "$root/dev/ptmx"
        ln -s /proc/self/fd "$root/dev/fd"
        cp -L /etc/resolv.conf "$root/etc/"
        mkdir -p "$root$top"
        mount --bind "$top" "$root$top"
        in_release() {
            chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 \
                DEBIAN_FRONTEND=noninteractive "$@"
        }
        install_packages() {
            in_release apt-get install -y -qq --no-install-recommends $packages >/dev/null
        }
        install_packages 2>/dev/null || { in_release apt-get update -qq && install_packages; }
        eval "$script"
    '
}
