#!/usr/bin/env bash
# Builds the project with gcc's coverage instrumentation in build/coverage, runs
# every test there and prints line and branch coverage per product folder.
# Not part of CI: it is a full build of its own, for judging the test suite.
#   scripts/coverage.sh            all tests
#   scripts/coverage.sh -R regex   only the tests whose names match
#   scripts/coverage.sh --report   the table again from the last run
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
export CCACHE_BASEDIR="$root"
"$root/scripts/deps.sh" test
command -v gcovr >/dev/null || { echo "gcovr is missing (Debian package gcovr)" >&2; exit 1; }
build="$root/build/coverage"
jobs=$(nproc)

report_only=false
[ "${1:-}" = "--report" ] && report_only=true
if ! $report_only; then
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS="--coverage -O0" -DCMAKE_C_FLAGS="--coverage -O0" \
    -DCMAKE_EXE_LINKER_FLAGS=--coverage -DCMAKE_SHARED_LINKER_FLAGS=--coverage >/dev/null
cmake --build "$build" -j"$jobs"
find "$build" -name '*.gcda' -delete
ctest --test-dir "$build" -j"$jobs" --timeout 900 "$@" >"$build/ctest.log" 2>&1 || {
    echo "some tests failed (see $build/ctest.log); coverage is printed anyway" >&2
}
fi

folders=(analysis app engine gac playback prefs sortspec tools views)
summary="$build/summary.json"
# Sources are compiled with paths relative to the target's build folder (ccache's
# base directory), two levels above each .gcda file. Throw-branches are the
# compiler's exception edges, not decisions of ours.
# Counters raced by worker threads can come out negative; gcov prints them
# and those lines are skipped.
# (gcovr runs gcov one file at a time: its parallel mode mixes up gcov outputs.)
gcovr --root "$root" --object-directory ../.. --exclude-throw-branches --gcov-ignore-parse-errors \
    --exclude-unreachable-branches $(printf -- "--filter $root/%s/ " "${folders[@]}") \
    --json "$summary" "$build" >/dev/null 2>"$build/gcovr.log"
python3 - "$summary" "$root" "${folders[@]}" <<'PY'
import json, os, sys
summary, root, folders = sys.argv[1], sys.argv[2], sys.argv[3:]
totals = {f: [0, 0, 0, 0] for f in folders}
for entry in json.load(open(summary))["files"]:
    folder = entry["file"].split(os.sep)[0]
    if folder not in totals:
        continue
    t = totals[folder]
    for line in entry["lines"]:
        if line.get("gcovr/noncode"):
            continue
        t[0] += 1
        t[1] += line["count"] > 0
        for branch in line.get("branches", []):
            t[2] += 1
            t[3] += branch["count"] > 0
pct = lambda hit, n: f"{100.0 * hit / n:6.1f}" if n else "     -"
print(f"{'folder':<10} {'lines':>7} {'line %':>7} {'branches':>9} {'branch %':>9}")
all_ = [0, 0, 0, 0]
for f in folders:
    t = totals[f]
    all_ = [a + b for a, b in zip(all_, t)]
    print(f"{f:<10} {t[0]:>7} {pct(t[1], t[0]):>7} {t[2]:>9} {pct(t[3], t[2]):>9}")
print(f"{'all':<10} {all_[0]:>7} {pct(all_[1], all_[0]):>7} {all_[2]:>9} {pct(all_[3], all_[2]):>9}")
PY
