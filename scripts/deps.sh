#!/usr/bin/env bash
# Installs the Debian packages Tesk needs that are not installed yet.
# Usage: scripts/deps.sh build|test|bench   (each set includes the ones before it)
# Idempotent: installs nothing when everything is present; uses sudo only when not root.
set -euo pipefail

set_name=${1:-build}

build_pkgs=(
    cmake g++ make pkg-config ccache
    qtbase5-dev qttools5-dev qttools5-dev-tools libqt5sql5-sqlite libqt5sql5-psql
    libmpg123-dev libvorbis-dev libflac-dev libsdl2-dev libsamplerate0-dev libtag1-dev
)
test_pkgs=(
    clang libclang-rt-14-dev
    lame vorbis-tools flac
    xvfb xauth dbus-daemon
    desktop-file-utils appstream man-db
    postgresql
)
bench_pkgs=(
    libebur128-dev bs1770gain loudgain ffmpeg
)

wanted=("${build_pkgs[@]}")
case "$set_name" in
    build) ;;
    test) wanted+=("${test_pkgs[@]}") ;;
    bench) wanted+=("${test_pkgs[@]}" "${bench_pkgs[@]}") ;;
    *) echo "usage: $0 build|test|bench" >&2; exit 2 ;;
esac

missing=()
for p in "${wanted[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

echo "Installing missing packages: ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
    sudo_cmd=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
