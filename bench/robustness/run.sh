#!/usr/bin/env bash
# Robustness figures in one run: peak memory of analysing one long file (a
# 30-minute 48 kHz stereo WAV, the same as MP3, Ogg Vorbis and FLAC, a 4 GB
# sparse WAV, a FLAC whose metadata blocks hold 176 MB) with tesk-scan beside
# bs1770gain and loudgain on the same file; the
# hostile-folder test's summary; and fuzz executions per target.
#
# Usage: bench/robustness/run.sh [FUZZ_SECONDS]   (default 600 per target; 0 skips)
#
# Builds tesk-scan, tesk-signalgen and the hostile-folder test in Release under
# build/bench; makes the long files once in build/bench/robustness (the MP3,
# Ogg and FLAC encodes take a few minutes). Needs the bench packages: scripts/deps.sh bench.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
fuzz_seconds=${1:-600}
"$root/scripts/deps.sh" bench
build="$root/build/bench"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DTESK_GUI=OFF -DTESK_BUILD_TESTS=ON >/dev/null
cmake --build "$build" -j2 --target tesk-scan tesk-signalgen tst_hostilefolder >"$build/robustness-build.log" 2>&1 ||
    { echo "build failed, see $build/robustness-build.log" >&2; exit 1; }
scan="$build/tools/tesk-scan/tesk-scan"
gen="$build/tests/fixtures/tesk-signalgen"
work="$build/robustness"
mkdir -p "$work"/{empty,wav,mp3,ogg,flac,big,flacmeta}
export XDG_CACHE_HOME="$work/cache"

[ -f "$work/wav/30min.wav" ] || "$gen" "$work/wav/30min.wav" 48000 2 1800 16 music 5
[ -f "$work/mp3/30min.mp3" ] || lame --quiet -V 2 "$work/wav/30min.wav" "$work/mp3/30min.mp3"
[ -f "$work/ogg/30min.ogg" ] || oggenc --quiet -q 5 -o "$work/ogg/30min.ogg" "$work/wav/30min.wav"
[ -f "$work/flac/30min.flac" ] || flac --silent -o "$work/flac/30min.flac" "$work/wav/30min.wav"
if [ ! -f "$work/flacmeta/blocks.flac" ]; then
    # A short FLAC behind a seek table of 16 MB (libFLAC always loads one) and
    # ten 16 MB APPLICATION blocks (TagLib loads every block).
    "$gen" "$work/flacmeta/short.wav" 48000 2 2 16 music 3
    flac --silent --no-padding -o "$work/flacmeta/short.flac" "$work/flacmeta/short.wav"
    python3 - "$work/flacmeta/short.flac" "$work/flacmeta/blocks.flac" <<'PY'
import sys
d = open(sys.argv[1], 'rb').read()
n = 0xFFFFFF // 18 * 18
blocks = bytes([3]) + n.to_bytes(3, 'big') + (b'\xff' * 8 + b'\0' * 10) * (n // 18)
for _ in range(10):
    blocks += bytes([2]) + (0xFFFFF0).to_bytes(3, 'big') + b'TEST' + b'\0' * (0xFFFFF0 - 4)
open(sys.argv[2], 'wb').write(d[:42] + blocks + d[42:])
PY
    rm "$work/flacmeta/short.wav" "$work/flacmeta/short.flac"
fi
if [ ! -f "$work/big/4gb.wav" ]; then
    python3 - "$work/big/4gb.wav" <<'PY'
import struct, sys
size = 4_000_000_000
fmt = struct.pack('<HHIIHH', 1, 2, 48000, 192000, 4, 16)
head = (b'RIFF' + struct.pack('<I', size - 8) + b'WAVE' + b'fmt ' + struct.pack('<I', 16) + fmt
        + b'data' + struct.pack('<I', size - 44))
with open(sys.argv[1], 'wb') as f:
    f.write(head)
    f.truncate(size)
PY
fi
cat "$work"/wav/* "$work"/mp3/* "$work"/ogg/* "$work"/flac/* >/dev/null # warm cache

# "seconds peakMB" of a command.
measure() {
    /usr/bin/time -f "%e %M" -o "$work/time.txt" "$@" >/dev/null 2>&1 || true
    awk '{ printf "%7.1f s %7.1f MB", $1, $2 / 1024 }' "$work/time.txt"
}

echo "== Peak memory of one file's analysis (resident set, whole process)"
printf '%-36s %s\n' "tesk-scan, empty folder (baseline)" "$(measure "$scan" --loudness "$work/empty")"
for kind in wav mp3 ogg flac; do
    file=$(ls "$work/$kind"/30min.*)
    printf '%-36s %s\n' "tesk-scan --loudness 30-min $kind" \
        "$(measure "$scan" --loudness --multi-plot "$work/$kind")"
    if command -v bs1770gain >/dev/null; then
        printf '%-36s %s\n' "  bs1770gain 30-min $kind" "$(measure bs1770gain -i -f "$work/bs.log" "$file")"
    fi
    if command -v loudgain >/dev/null; then
        printf '%-36s %s\n' "  loudgain 30-min $kind" "$(measure loudgain -q -O "$file")"
    fi
done
printf '%-36s %s\n' "tesk-scan 4 GB sparse WAV" "$(measure "$scan" --multi-plot "$work/big")"
printf '%-36s %s\n' "tesk-scan FLAC, 176 MB of metadata" \
    "$(measure "$scan" --no-library --loudness --multi-plot "$work/flacmeta")"
printf '%-36s %s\n' "  flac -t on it" "$(measure flac -t -s "$work/flacmeta/blocks.flac")"
printf '%-36s %s\n' "  ffmpeg on it" \
    "$(measure ffmpeg -v error -nostdin -i "$work/flacmeta/blocks.flac" -f null -)"
printf '%-36s %s\n' "tesk-scan --loudness 4 GB sparse WAV" \
    "$(measure "$scan" --loudness --multi-plot "$work/big")"

echo "== Hostile folder (tesk-scan and the detail worker)"
"$build/tests/tools/tst_hostilefolder" 2>&1 | grep -E "hostile folder|Totals" || true

if [ "$fuzz_seconds" -gt 0 ]; then
    echo "== Fuzz executions per target in ${fuzz_seconds} s"
    "$root/scripts/fuzz.sh" "$fuzz_seconds" 2>&1 | grep -E "^== Fuzzing|number_of_executed_units|peak_rss|crash-" || true
fi
