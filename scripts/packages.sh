# Functions that install missing packages and build, for the other scripts.

# need_packages NAME...: installs the missing packages; exits with a message if it cannot.
need_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    if ! command -v apt-get >/dev/null; then
        command -v dpkg-query >/dev/null ||
            echo "Not a Debian system. Install the equivalents of these packages: $*" >&2
        return 0
    fi
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "Cannot install these missing packages without root: ${missing[*]}" >&2
            exit 1
        }
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]}" >&2
    export DEBIAN_FRONTEND=noninteractive
    "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null 2>&1 || {
        "${as_root[@]}" apt-get update -qq >&2
        "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
    }
}

# need_program PROGRAM PACKAGE: installs the package unless the program exists, from whatever source.
need_program() {
    command -v "$1" >/dev/null || need_packages "$2"
}

# need_node_packages FOLDER DESTINATION: installs the packages of FOLDER/package.json in
# DESTINATION/node_modules, unless they are there.
need_node_packages() {
    cmp -s "$1/package-lock.json" "$2/installed-lock.json" && return 0
    need_program node nodejs
    need_program npm npm
    mkdir -p "$2"
    cp "$1/package.json" "$1/package-lock.json" "$2"
    (cd "$2" && npm ci --ignore-scripts --no-audit --no-fund --loglevel=error >&2)
    cp "$1/package-lock.json" "$2/installed-lock.json"
}

# need_libcxx FOLDER: unpacks libc++ in FOLDER/include and FOLDER/lib, unless it is there. It is not
# installed, as Debian allows only one version of libc++, which is too old in some releases.
need_libcxx() {
    [ -e "$1/lib/libc++.so" ] && return 0
    local download
    download=$(mktemp -d)
    (
        cd "$download"
        apt-get download -qq "${libcxx_packages[@]}"
        for package in *.deb; do
            dpkg-deb --extract "$package" .
        done
    ) >&2
    mkdir -p "$1"
    cp -a "$download"/usr/lib/llvm-*/include "$download"/usr/lib/llvm-*/lib "$1"
    rm -rf "$download"
}

# build PRESET [TARGET]: configures and builds the preset in the current folder. Prints the last line
# of the build or, if it fails, every line but those about steps that succeeded.
build() {
    local log status=0
    log=$(mktemp)
    { cmake --preset "$1" && cmake --build --preset "$1" ${2:+--target "$2"}; } >"$log" 2>&1 ||
        status=$?
    if [ "$status" -eq 0 ]; then
        tail -n 1 "$log"
    else
        grep -v '^\[[0-9]*/[0-9]*\] ' "$log" >&2
    fi
    rm -f "$log"
    return "$status"
}

build_packages=(g++ cmake ninja-build git nlohmann-json3-dev libcpp-httplib-dev pkg-config)
package_packages=(debhelper dh-elpa devscripts dpkg-dev fakeroot file lintian)
test_packages=(libgtest-dev libgmock-dev mold procps util-linux git-svn subversion mercurial locales openssl
    openssh-client openssh-server libc++-dev libc++abi-dev neovim chromium python3 pkg-config binutils fakeroot zsh fish groff-base "${package_packages[@]}")
clang_packages=(clang libclang-rt-14-dev)
libcxx_packages=(libc++-16-dev libc++1-16 libc++abi-16-dev libc++abi1-16 libunwind-16 libunwind-16-dev)
lint_packages=(clang-format clang-tidy cppcheck codespell universal-ctags)
benchmark_packages=(libbenchmark-dev libcli11-dev libgit2-dev pkg-config gnuplot-nox)
