#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (AddressSanitizer and
# UndefinedBehaviorSanitizer) and runs each for SECONDS (default 20).
# Usage: scripts/fuzz.sh [SECONDS] [TARGET...]   targets: wave mp3 ogg flac csv metadata (default all)
# Each corpus grows in build/fuzz/corpus/TARGET and is kept between runs; the
# committed regression inputs (tests/fuzz/regressions/TARGET) seed every run.
# A crash leaves build/fuzz/crash-TARGET-*; add it to the regression folder.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-20}
shift || true
targets=("$@")
[ ${#targets[@]} -eq 0 ] && targets=(wave mp3 ogg flac csv metadata)
out="$root/build/fuzz"
mkdir -p "$out/obj"

cxx=(clang++)
command -v ccache >/dev/null && cxx=(ccache clang++)
qt_cflags=$(pkg-config --cflags Qt5Core)
qt_libs=$(pkg-config --libs Qt5Core)
flags=(-std=c++17 -O1 -g -fPIC -I"$root/analysis" -I"$root/sortspec" $qt_cflags)
sanitize=(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined)

analysis=(WaveByteSource WaveChunkSupport RiffChunkParser FormChunkParser WaveHeaderReader
          LoudnessMeter LoudnessFileDriver WaveformPlot WaveFileAnalysis PlotBuilder
          WaveSoundSource Mp3FrameScanner Mp3SoundSource OggSoundSource CompressedFileAnalysis
          FlacLayout FlacSoundSource FlacFileAnalysis IntegerFrameAnalysis SoundSource CommentLoop
          AnalysisStop SharedText AudioFileInfo SamplePeak)
# An object older than any header is built again: a class whose layout changed
# would otherwise meet code compiled against the old one.
newest_header=$(ls -t "$root"/analysis/*.h | head -n 1)
stale() { [ ! -f "$1" ] || [ "$2" -nt "$1" ] || [ "$newest_header" -nt "$1" ]; }
objects=()
for s in "${analysis[@]}"; do
    o="$out/obj/$s.o"
    if stale "$o" "$root/analysis/$s.cpp"; then
        "${cxx[@]}" "${flags[@]}" "${sanitize[@]}" -c "$root/analysis/$s.cpp" -o "$o"
    fi
    objects+=("$o")
done
# The metadata readers: chunk payloads, iXML, TagLib tags, UCS names and lists.
taglib_cflags=$(pkg-config --cflags taglib)
taglib_libs=$(pkg-config --libs taglib)
metadata=(FileMetadata MetadataText WaveMetadataChunks IxmlChunkParser WaveMetadataReader
          TagMetadataReader UcsName UcsCatalog MetadataColumns)
metadata_objects=()
for s in "${metadata[@]}"; do
    o="$out/obj/$s.o"
    if stale "$o" "$root/analysis/$s.cpp"; then
        "${cxx[@]}" "${flags[@]}" $taglib_cflags "${sanitize[@]}" -c "$root/analysis/$s.cpp" -o "$o"
    fi
    metadata_objects+=("$o")
done
csv_o="$out/obj/SortCsvReader.o"
"${cxx[@]}" "${flags[@]}" "${sanitize[@]}" -c "$root/sortspec/SortCsvReader.cpp" -o "$csv_o"

link() { # name source objects... libs...
    local name=$1 source=$2
    shift 2
    "${cxx[@]}" "${flags[@]}" -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
        "$source" "$@" $qt_libs -o "$out/${name}_fuzzer"
}
decoders=(-lmpg123 -lvorbisfile -lFLAC)
link wave "$root/analysis/fuzz/WaveHeaderFuzzer.cpp" "${objects[@]}" "${decoders[@]}"
link mp3 "$root/analysis/fuzz/Mp3Fuzzer.cpp" "${objects[@]}" "${decoders[@]}"
link ogg "$root/analysis/fuzz/OggFuzzer.cpp" "${objects[@]}" "${decoders[@]}"
link flac "$root/analysis/fuzz/FlacFuzzer.cpp" "${objects[@]}" "${decoders[@]}"
link csv "$root/sortspec/fuzz/SortCsvFuzzer.cpp" "$csv_o"
link metadata "$root/analysis/fuzz/MetadataFuzzer.cpp" "${metadata_objects[@]}" \
    "$out/obj/WaveByteSource.o" "$out/obj/FlacLayout.o" "$out/obj/CommentLoop.o" $taglib_libs

# Seeds: files the tests' builders write, and MP3/Ogg encoded from one of them.
clang++ -std=c++17 -O1 -fPIC -I"$root/testkit" $qt_cflags \
    "$root/analysis/fuzz/MakeFuzzSeeds.cpp" "$root/testkit/WaveBuilder.cpp" \
    $qt_libs -o "$out/make_fuzz_seeds"
clang++ -std=c++17 -O1 -fPIC -I"$root/testkit" $qt_cflags \
    "$root/analysis/fuzz/MakeMetadataSeeds.cpp" "$root/testkit/WaveBuilder.cpp" \
    $qt_libs -o "$out/make_metadata_seeds"
seeds="$out/seeds"
rm -rf "$seeds"
mkdir -p "$seeds"/{wave,mp3,ogg,flac,csv,metadata}
"$out/make_fuzz_seeds" "$seeds"
"$out/make_metadata_seeds" "$seeds/metadata"
if command -v lame >/dev/null && command -v oggenc >/dev/null; then
    lame --quiet --cbr -b 32 "$seeds/wave/short-tone.wav" "$seeds/mp3/cbr.mp3"
    lame --quiet -V 7 -m m "$seeds/wave/short-tone.wav" "$seeds/mp3/vbr-mono.mp3"
    lame --quiet -t -b 8 --resample 8 "$seeds/wave/short-tone.wav" "$seeds/mp3/mpeg25-notag.mp3"
    oggenc --quiet -q 0 -o "$seeds/ogg/q0.ogg" "$seeds/wave/short-tone.wav"
    oggenc --quiet -q 0 --resample 8000 -o "$seeds/ogg/8k.ogg" "$seeds/wave/short-tone.wav"
fi
if command -v flac >/dev/null; then
    # Small blocks keep several frames inside the fuzzer's length limit; one
    # seed goes through a pipe (no length in STREAMINFO); 8, 16 and 24 bits.
    tone="$seeds/wave/short-tone.wav"
    flac -s -f -b 192 --no-padding -o "$seeds/flac/tone.flac" "$tone"
    flac -s -f -b 576 --no-padding -c "$tone" > "$seeds/flac/piped.flac" 2>/dev/null
    flac -s -f -b 192 --no-padding --no-seektable -o "$seeds/flac/mono8.flac" \
        "$seeds/wave/mono8.wav"
    flac -s -f -b 1152 --no-padding -o "$seeds/flac/ext24.flac" "$seeds/wave/ext24.wav"
    flac -s -f -b 192 --no-padding -o "$seeds/flac/stereo16.flac" "$seeds/wave/stereo16.wav" \
        2>/dev/null
fi

status=0
for t in "${targets[@]}"; do
    corpus="$out/corpus/$t"
    mkdir -p "$corpus"
    echo "== Fuzzing $t for ${seconds} s"
    ( cd "$out" && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
        LSAN_OPTIONS=suppressions="$root/tests/fuzz/lsan.supp":print_suppressions=0 \
        "./${t}_fuzzer" -max_total_time="$seconds" -max_len=65536 -timeout=10 \
        -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="crash-$t-" \
        "$corpus" "$seeds/$t" $(ls -d "$root/tests/fuzz/regressions/$t" 2>/dev/null) ) 2>&1 |
        grep -E "^(stat::number_of_executed_units|stat::peak_rss_mb|==|SUMMARY|#[0-9]+ *DONE)|ERROR|crash-" || status=1
done
exit $status
