#!/usr/bin/env bash
# Integrated loudness of a whole library: tesk-scan --loudness against the
# packaged peers bs1770gain and loudgain, on the same warm files, in one run.
#
# Usage (by hand, from anywhere):
#   bench/scan-vs-peers/run.sh [CORPUS_DIR]
#
# Builds tesk-scan and tesk-signalgen in Release under build/scan-vs-peers, makes the
# corpus once in CORPUS_DIR (default build/scan-vs-peers/corpus): 400 files in five
# folders, WAV 16-bit, WAV 24-bit, AIFF, MP3 (LAME -V 2) and Ogg Vorbis
# (oggenc -q 5), 1.5 to 20 s each, mono and stereo, about 50 minutes of audio.
# Then it reads every file once so all three tools see a warm cache, times
# each tool per folder and prints the times, the ratios and the largest
# integrated-loudness difference per format, counting only files longer than
# 3 s. tesk-scan runs on every core (and again on one, "1 thr"), the peers on
# one, as they can; it never reads the analysis library (--no-library), which
# would answer a second run from the last. Goals: at least 12x faster than
# bs1770gain on WAV, at least 6x faster than loudgain on MP3, within 0.2 LU of
# loudgain.
#
# Needs the bench packages: scripts/deps.sh bench.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
"$root/scripts/deps.sh" bench
# A build of its own: the signal generator comes with the test fixtures.
build="$root/build/scan-vs-peers"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DTESK_GUI=OFF \
    -DTESK_BUILD_TESTS=ON >/dev/null
cmake --build "$build" -j2 --target tesk-scan tesk-signalgen >/dev/null
scan="$build/tools/tesk-scan/tesk-scan"
gen="$build/tests/fixtures/tesk-signalgen"
corpus=${1:-"$build/corpus"}
formats=(wav16 wav24 aiff mp3 ogg)

make_corpus() {
    local lengths=(1.5 4 8 12 20 6 10)
    local i fmt seconds channels rate name out make
    for fmt in "${formats[@]}"; do mkdir -p "$corpus/$fmt"; done
    for i in $(seq 1 400); do
        seconds=${lengths[$((i % ${#lengths[@]}))]}
        channels=$((i % 5 == 0 ? 1 : 2))
        rate=$((i % 3 == 0 ? 44100 : 48000))
        name=$(printf 'take_%03d' "$i")
        if ((i <= 120)); then
            out="$corpus/wav16/$name.wav"
            make="\"$gen\" \"$out\" $rate $channels $seconds 16 music $i"
        elif ((i <= 180)); then
            out="$corpus/wav24/$name.wav"
            make="\"$gen\" \"$out\" $rate $channels $seconds 24 music $i"
        elif ((i <= 240)); then
            out="$corpus/aiff/$name.aif"
            make="\"$gen\" \"$out\" $rate $channels $seconds 16 music $i"
        elif ((i <= 340)); then
            out="$corpus/mp3/$name.mp3"
            make="\"$gen\" \"$out.wav\" 44100 $channels $seconds 16 music $i && lame --quiet -V 2 \"$out.wav\" \"$out\" && rm \"$out.wav\""
        else
            out="$corpus/ogg/$name.ogg"
            make="\"$gen\" \"$out.wav\" $rate $channels $seconds 16 music $i && oggenc --quiet -q 5 -o \"$out\" \"$out.wav\" && rm \"$out.wav\""
        fi
        # Files already made are kept, so an interrupted run resumes.
        [ -f "$out" ] || echo "$make"
    done | xargs -P 2 -d '\n' -I{} sh -c '{}'
    touch "$corpus/.complete"
}

if [ ! -f "$corpus/.complete" ]; then
    echo "Making the corpus in $corpus ..."
    make_corpus
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
now() { date +%s.%N; }
elapsed() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", b - a }'; }

# Warm the page cache for everybody.
cat "$corpus"/*/* >/dev/null

echo "tesk-scan on $(nproc) threads; load average before the run: $(cut -d' ' -f1-3 /proc/loadavg)"
printf '%-6s %5s %7s | %8s %8s %10s %6s | %8s %6s | %9s %9s\n' format files minutes \
    tesk-scan '1 thr' bs1770gain ratio loudgain ratio 'max dLU' 'max dLU'
printf '%-6s %5s %7s | %8s %8s %10s %6s | %8s %6s | %9s %9s\n' '' '' '' '(s)' '(s)' '(s)' '' '(s)' '' \
    'loudgain' 'bs1770'
for fmt in "${formats[@]}"; do
    files=("$corpus/$fmt"/*)
    t0=$(now)
    "$scan" --no-library --loudness "$corpus/$fmt" >"$work/$fmt.tesk.csv"
    t0b=$(now)
    tesk=$(elapsed "$t0" "$t0b")
    "$scan" --no-library --threads 1 --loudness "$corpus/$fmt" >/dev/null
    t1=$(now)
    one=$(elapsed "$t0b" "$t1")
    bs1770gain -i -f "$work/$fmt.bs.log" "${files[@]}" >/dev/null 2>&1 || true
    t2=$(now)
    loudgain -q -O "${files[@]}" >"$work/$fmt.lg.tsv" 2>/dev/null || true
    t3=$(now)
    bs=$(elapsed "$t1" "$t2")
    lg=$(elapsed "$t2" "$t3")

    # name <TAB> LUFS <TAB> seconds
    awk -F, 'NR > 1 { split($10, d, ":"); print $1 "\t" $12 "\t" d[1] * 60 + d[2] }' \
        "$work/$fmt.tesk.csv" >"$work/$fmt.tesk"
    awk '/^\[[0-9]+\/[0-9]+\]/ { name = $2; sub(".*/", "", name) }
         /integrated/ && name != "" { print name "\t" $4; name = "" }' \
        "$work/$fmt.bs.log" >"$work/$fmt.bs"
    awk -F'\t' 'NR > 1 { n = $1; sub(".*/", "", n); split($2, l, " "); print n "\t" l[1] }' \
        "$work/$fmt.lg.tsv" >"$work/$fmt.lg"
    maxdiff() {
        awk -F'\t' 'FNR == NR { lufs[$1] = $2; secs[$1] = $3; next }
            ($1 in lufs) && secs[$1] > 3 { d = lufs[$1] - $2; if (d < 0) d = -d;
                                           if (d > m) m = d; n++ }
            END { if (n) printf "%.3f", m; else printf "n/a" }' "$work/$fmt.tesk" "$1"
    }
    minutes=$(awk -F'\t' '{ s += $3 } END { printf "%.1f", s / 60 }' "$work/$fmt.tesk")
    printf '%-6s %5d %7s | %8s %8s %10s %5sx | %8s %5sx | %9s %9s\n' "$fmt" "${#files[@]}" \
        "$minutes" "$tesk" "$one" "$bs" "$(awk -v a="$bs" -v b="$tesk" 'BEGIN { printf "%.1f", a / b }')" \
        "$lg" "$(awk -v a="$lg" -v b="$tesk" 'BEGIN { printf "%.1f", a / b }')" \
        "$(maxdiff "$work/$fmt.lg")" "$(maxdiff "$work/$fmt.bs")"
    echo "$fmt $tesk $bs $lg" >>"$work/times"
done
awk '$1 ~ /^wav/ { t += $2; b += $3; l += $4 }
     END { printf "WAV (16 and 24-bit together): tesk-scan %.2f s, bs1770gain %.2f s (%.1fx), loudgain %.2f s (%.1fx)\n",
                  t, b, b / t, l, l / t }' "$work/times"
echo "max dLU: largest |tesk-scan - peer| integrated loudness over files longer than 3 s."
