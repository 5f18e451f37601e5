# shellcheck shell=bash
# Sourced by the scripts beside it: goes to the top of the tree, installs the Debian packages that
# are missing and turns ccache on where it is present.
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit
# shellcheck disable=SC2034 # for the scripts that source this
top=$PWD

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

install_packages() {
    local wanted missing=() name
    mapfile -t wanted < <(sed -e 's/#.*//' -e '/^[[:space:]]*$/d' packaging/debian-packages.txt)
    for name in "${wanted[@]}"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || missing+=("$name")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "Installing: ${missing[*]}"
    as_root apt-get update -q
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# Makes ifupdown, the DHCP client that it calls and a DHCP server for the other end of the cable
# available under build/ifupdown for the simulated terminal and the tests. The packages are unpacked
# and never installed: that would make strangers the keepers of this machine's network.
unpack_ifupdown() {
    local packages=(ifupdown isc-dhcp-client busybox) download package
    [ ! -x build/ifupdown/bin/busybox ] || return 0
    download=$(mktemp -d)
    chmod 755 "$download"
    (
        cd "$download" || exit
        apt-get download -q "${packages[@]}" || { as_root apt-get update -q && apt-get download -q "${packages[@]}"; }
    ) || return
    mkdir -p build
    for package in "${packages[@]}"; do # the one that is looked for above last
        dpkg-deb -x "$download/$package"_*.deb build/ifupdown || return
    done
    rm -r "$download"
}

# build PRESET [TARGET...]
build() {
    local preset=$1
    shift
    local launcher=()
    command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    cmake --preset "$preset" "${launcher[@]}" -Wno-dev
    cmake --build --preset "$preset" ${@:+--target "$@"}
}

# build_package [OPTION...]: the Debian packages of the source package in the working directory.
build_package() {
    # debhelper has a home of its own, which would be an empty cache. The cache must not make paths
    # relative: the compiler maps them, and what it has not mapped would be in the packages.
    PATH=/usr/lib/ccache:$PATH CCACHE_DIR=$(ccache -k cache_dir) dpkg-buildpackage --unsigned-source --unsigned-changes "$@"
}
