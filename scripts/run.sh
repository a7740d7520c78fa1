#!/usr/bin/env bash
# Installs what is missing, builds Tesk in Release and launches it,
# optionally on the folder (or audio file) given as the first argument.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
# ccache (when installed) then reuses objects across clones of the repository.
export CCACHE_BASEDIR="$root"
"$root/scripts/deps.sh" build
build="$root/build/release"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DTESK_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" --target tesk -j"$(nproc)"
exec "$build/app/tesk" "$@"
