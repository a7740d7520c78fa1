#!/usr/bin/env bash
# Builds the wave header fuzzer with clang (libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer) and runs it for SECONDS (default 20).
# The corpus grows in build/fuzz/corpus and is kept between runs.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-20}
out="$root/build/fuzz"
mkdir -p "$out/corpus" "$out/seeds"

sources=(WaveByteSource WaveChunkSupport RiffChunkParser FormChunkParser WaveHeaderReader LoudnessMeter LoudnessFileDriver
         WaveformPlot WaveFileAnalysis)
flags=(-std=c++17 -O1 -g -I"$root/analysis")
clang++ "${flags[@]}" -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    $(printf "$root/analysis/%s.cpp " "${sources[@]}") \
    "$root/analysis/fuzz/WaveHeaderFuzzer.cpp" -o "$out/wave_header_fuzzer"
# The seeds come from the tests' file builder, which speaks Qt.
clang++ "${flags[@]}" -fPIC -I"$root/testkit" $(pkg-config --cflags Qt5Core) \
    "$root/analysis/fuzz/MakeFuzzSeeds.cpp" "$root/testkit/WaveBuilder.cpp" \
    $(pkg-config --libs Qt5Core) -o "$out/make_fuzz_seeds"
"$out/make_fuzz_seeds" "$out/seeds"

echo "== Fuzzing the wave header reader for ${seconds} s"
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    "$out/wave_header_fuzzer" -max_total_time="$seconds" -max_len=65536 -timeout=10 \
    -rss_limit_mb=4096 -print_final_stats=1 "$out/corpus" "$out/seeds"

# The metadata readers: chunk payloads, iXML, TagLib tags, UCS names and lists.
meta_sources=(FileMetadata MetadataText WaveMetadataChunks IxmlChunkParser WaveMetadataReader
              WaveByteSource TagMetadataReader UcsName UcsCatalog MetadataColumns)
mkdir -p "$out/metadata-corpus" "$out/metadata-seeds"
clang++ "${flags[@]}" -fPIC -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    $(pkg-config --cflags Qt5Core taglib) $(printf "$root/analysis/%s.cpp " "${meta_sources[@]}") \
    "$root/analysis/fuzz/MetadataFuzzer.cpp" $(pkg-config --libs Qt5Core taglib) \
    -o "$out/metadata_fuzzer"
clang++ "${flags[@]}" -fPIC -I"$root/tests/support" $(pkg-config --cflags Qt5Core) \
    "$root/analysis/fuzz/MakeMetadataSeeds.cpp" "$root/tests/support/WaveBuilder.cpp" \
    $(pkg-config --libs Qt5Core) -o "$out/make_metadata_seeds"
"$out/make_metadata_seeds" "$out/metadata-seeds"

echo "== Fuzzing the metadata readers for ${seconds} s"
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    "$out/metadata_fuzzer" -max_total_time="$seconds" -max_len=65536 -timeout=10 \
    -rss_limit_mb=4096 -print_final_stats=1 "$out/metadata-corpus" "$out/metadata-seeds"
