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

# Makes ifupdown's programs available under build/ifupdown for the tests. The package is unpacked and
# never installed: that would make a stranger the keeper of this machine's network.
unpack_ifupdown() {
    [ ! -x build/ifupdown/sbin/ifquery ] || return 0
    local download
    download=$(mktemp -d)
    chmod 755 "$download"
    (
        cd "$download" || exit
        apt-get download -q ifupdown || { as_root apt-get update -q && apt-get download -q ifupdown; }
    )
    mkdir -p build
    dpkg-deb -x "$download"/ifupdown_*.deb build/ifupdown
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
