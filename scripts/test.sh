#!/usr/bin/env bash
# Installs what is missing, builds everything with warnings as errors and runs
# the whole test suite: the full build, then the GUI-free tests again under
# AddressSanitizer and UndefinedBehaviorSanitizer.
#
# scripts/test.sh --tsan instead builds the GUI-free part with ThreadSanitizer
# and runs its tests (workers, registry, engine, the Nuendo link, the settings
# writer...) with tests/tsan/tsan.supp; any report fails the run. It is kept
# out of the default run, which CI's time limit could not hold with it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
# ccache (when installed) then reuses objects across clones of the repository.
export CCACHE_BASEDIR="$root"
"$root/scripts/deps.sh" test
jobs=$(nproc)

if [ "${1:-}" = "--tsan" ]; then
    tsan="$root/build/tsan"
    cmake -S "$root" -B "$tsan" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTESK_WERROR=ON \
        -DTESK_GUI=OFF -DTESK_TSAN=ON >/dev/null
    cmake --build "$tsan" -j"$jobs"
    echo "== GUI-free tests under ThreadSanitizer"
    ctest --test-dir "$tsan" -L core --output-on-failure -j"$jobs"
    exit 0
fi

main="$root/build/test"
cmake -S "$root" -B "$main" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTESK_WERROR=ON \
    -DTESK_ASSERTIONS=ON >/dev/null
cmake --build "$main" -j"$jobs"

asan="$root/build/asan"
cmake -S "$root" -B "$asan" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTESK_WERROR=ON \
    -DTESK_GUI=OFF -DTESK_SANITIZE=ON >/dev/null
cmake --build "$asan" -j"$jobs"
echo "== GUI-free tests under AddressSanitizer and UndefinedBehaviorSanitizer"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
    LSAN_OPTIONS=suppressions="$root/tests/fuzz/lsan.supp" \
    ctest --test-dir "$asan" -L core --output-on-failure -j"$jobs"

echo "== Short fuzzing run of every parser that reads file bytes"
"$root/scripts/fuzz.sh" 5

echo "== Full test suite"
ctest --test-dir "$main" --output-on-failure -j"$jobs"
