# Shared by scripts/run and scripts/test: the Debian packages Lutegrid needs, and the build.
# shellcheck shell=bash

LUTEGRID_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

LUTEGRID_PACKAGES=(
    cmake ninja-build ccache g++ pkg-config python3
    qt6-base-dev qt6-declarative-dev qt6-declarative-dev-tools
    qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtquick-controls
    qml6-module-qtquick-layouts qml6-module-qtquick-templates qml6-module-qtqml-workerscript
    qml6-module-qttest libgl-dev
    libplist-dev libsoundtouch-dev libsndfile1-dev libpulse-dev libzip-dev
    pulseaudio pulseaudio-utils
    unzip libqt6svg6 poppler-utils fonts-dejavu-core
    libxml2-utils python3-mido
    desktop-file-utils appstream shared-mime-info librsvg2-bin
)

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

# Installs only what is missing, so a machine that has everything pays nothing.
ensure_packages() {
    local missing=() pkg
    for pkg in "${LUTEGRID_PACKAGES[@]}" "$@"; do
        dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed' \
            || missing+=("$pkg")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
        "${missing[@]}" </dev/null
}

# build_tree DIR [cmake options...]
build_tree() {
    local dir=$1
    shift
    cmake -S "$LUTEGRID_ROOT" -B "$dir" -G Ninja "$@" >/dev/null
    cmake --build "$dir"
}
