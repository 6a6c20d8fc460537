#!/usr/bin/env bash
# Whole programs side by side on the same generated MusicXML score (2,000 measures, 8 parts,
# about 12 MB): `tamberlyne fill` (load the plug-in, open the score, fill every measure of the
# drum part with "Rock 8ths", save it as a new file) against MuseScore 3 opening the score and
# saving it as MusicXML. Prints the median wall time of each and their ratio. Run by hand:
#
#   bench/compare_scores.sh [BUILD_DIR]   (default: build-bench, build-release, then build)
#
# RUNS (default 3) sets the runs per program, MEASURES and PARTS (default 2000 and 8) the score.
# MuseScore takes about a minute per run on the default score.
#
# Needs make_big_score from a build with -DTAMBERLYNE_BENCH=ON, and mscore3 (Debian package
# "musescore3").
set -euo pipefail

here="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-}"
if [[ -z "$build" ]]; then
    for candidate in "$here/build-bench" "$here/build-release" "$here/build"; do
        if [[ -x "$candidate/bin/tamberlyne" && -x "$candidate/bin/make_big_score" ]]; then
            build="$candidate"
            break
        fi
    done
fi
build="${build:-$here/build-bench}"
tamberlyne="$build/bin/tamberlyne"
make_big_score="$build/bin/make_big_score"
for program in "$tamberlyne" "$make_big_score"; do
    if [[ ! -x "$program" ]]; then
        echo "compare_scores.sh: no $(basename "$program") program in $build/bin; build it first:" >&2
        echo "  cmake -S . -B build-bench -DTAMBERLYNE_BENCH=ON -DCMAKE_BUILD_TYPE=Release" >&2
        echo "  cmake --build build-bench --target tamberlyne_cli tamberlyne_module groove_files make_big_score" >&2
        exit 1
    fi
done
if ! command -v mscore3 >/dev/null; then
    echo "compare_scores.sh: mscore3 is missing; install the Debian package: sudo apt-get install musescore3" >&2
    exit 1
fi

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/config" "$work/data"
runs="${RUNS:-3}"
measures="${MEASURES:-2000}"
parts="${PARTS:-8}"
score="$work/big.musicxml"
"$make_big_score" "$score" "$measures" "$parts" >/dev/null

# The median wall time in milliseconds of `runs` runs of the command.
median_ms() {
    local times=()
    for ((i = 0; i < runs; i++)); do
        local start end
        start=$(date +%s%N)
        "$@" >"$work/log" 2>&1 || { echo "compare_scores.sh: failed: $*" >&2; cat "$work/log" >&2; exit 1; }
        end=$(date +%s%N)
        times+=($(((end - start) / 1000)))
    done
    printf '%s\n' "${times[@]}" | sort -n | awk '{ t[NR] = $1 } END { printf "%.1f", t[int((NR + 1) / 2)] / 1000 }'
}

ours=$(median_ms env XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" "$tamberlyne" fill "$score" \
    --measures "1-$measures" --groove "Rock 8ths" --staff "Drum Set" --yes -o "$work/ours.musicxml" --force)
theirs=$(median_ms env XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" QT_QPA_PLATFORM=offscreen \
    mscore3 -o "$work/theirs.musicxml" "$score")
for output in "$work/ours.musicxml" "$work/theirs.musicxml"; do
    if [[ ! -s "$output" ]]; then
        echo "compare_scores.sh: $(basename "$output") was not written" >&2
        exit 1
    fi
done
ratio=$(awk -v a="$ours" -v b="$theirs" 'BEGIN { printf "%.1f", b / a }')
size=$(stat -c %s "$score")

printf 'score: %d measures, %d parts, %d bytes (%.1f MB)\n' "$measures" "$parts" "$size" \
    "$(awk -v s="$size" 'BEGIN { print s / 1048576 }')"
printf '%-44s %12s ms\n' "tamberlyne fill (open + fill + save)" "$ours"
printf '%-44s %12s ms\n' "mscore3 (open + save as MusicXML)" "$theirs"
printf '%-44s %12sx\n' "ratio (mscore3 / tamberlyne)" "$ratio"
echo "(median of $runs runs each, wall time of the whole command; load: $(uptime | sed 's/.*load average: //'))"
