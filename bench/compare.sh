#!/usr/bin/env bash
# Whole programs side by side on the same generated grooves of 100, 1,000 and 10,000 bars:
# `tamberlyne fill` (load the plug-in, read and clean the whole file, fill the demo score's 16
# measures, report) against MuseScore 3's MIDI import of the same file to MusicXML. Prints the
# median wall time of each and their ratio. Run by hand:
#
#   bench/compare.sh [BUILD_DIR]      (default: build-release, then build)
#
# RUNS (default 3) sets the runs per program and size, BARS (default "100 1000 10000") the
# sizes. MuseScore takes minutes on 10,000 bars.
#
# Needs python3 (to write the grooves) and mscore3 (Debian package "musescore3").
set -euo pipefail

here="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-}"
if [[ -z "$build" ]]; then
    for candidate in "$here/build-release" "$here/build"; do
        if [[ -x "$candidate/bin/tamberlyne" ]]; then
            build="$candidate"
            break
        fi
    done
fi
tamberlyne="${build:-$here/build}/bin/tamberlyne"
if [[ ! -x "$tamberlyne" ]]; then
    echo "compare.sh: no tamberlyne program in ${build:-$here/build}/bin; build it first (make demo)" >&2
    exit 1
fi
if ! command -v mscore3 >/dev/null; then
    echo "compare.sh: mscore3 is missing; install the Debian package: sudo apt-get install musescore3" >&2
    exit 1
fi
if ! command -v python3 >/dev/null; then
    echo "compare.sh: python3 is missing; install the Debian package: sudo apt-get install python3" >&2
    exit 1
fi

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/Tamberlyne" "$work/config" "$work/data"
runs="${RUNS:-3}"

# A format 0 groove of N bars of 4/4: eighth hi-hats, kick on 1 and 3, snare on 2 and 4.
write_groove() {
    python3 - "$1" "$2" <<'PY'
import sys
bars, path = int(sys.argv[1]), sys.argv[2]
def number(value):
    out = [value & 0x7F]
    while value > 0x7F:
        value >>= 7
        out.insert(0, 0x80 | (value & 0x7F))
    return bytes(out)
hits = []
for bar in range(bars):
    for eighth in range(8):
        tick = (bar * 8 + eighth) * 240
        hits.append((tick, 42))
        if eighth % 2 == 0:
            hits.append((tick, 36 if eighth % 4 == 0 else 38))
events = []
for tick, key in hits:
    events.append((tick, bytes([0x99, key, 100])))
    events.append((tick + 120, bytes([0x89, key, 0])))
events.sort(key=lambda e: e[0])
body = bytearray(b"\x00\xff\x58\x04\x04\x02\x18\x08")
now = 0
for tick, message in events:
    body += number(tick - now) + message
    now = tick
body += b"\x00\xff\x2f\x00"
with open(path, "wb") as out:
    out.write(b"MThd" + bytes([0, 0, 0, 6, 0, 0, 0, 1, 0x01, 0xE0]))
    out.write(b"MTrk" + len(body).to_bytes(4, "big") + body)
PY
}

# The median wall time in milliseconds of `runs` runs of the command.
median_ms() {
    local times=()
    for ((i = 0; i < runs; i++)); do
        local start end
        start=$(date +%s%N)
        "$@" >/dev/null 2>&1 || { echo "compare.sh: failed: $*" >&2; exit 1; }
        end=$(date +%s%N)
        times+=($(((end - start) / 1000)))
    done
    printf '%s\n' "${times[@]}" | sort -n | awk '{ t[NR] = $1 } END { printf "%.1f", t[int((NR + 1) / 2)] / 1000 }'
}

printf '%8s %12s %12s %8s\n' "bars" "tamberlyne" "mscore3" "ratio"
for bars in ${BARS:-100 1000 10000}; do
    groove="$work/Tamberlyne/Groove $bars.mid"
    write_groove "$bars" "$groove"
    ours=$(median_ms env XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" "$tamberlyne" fill \
        --measures 1-16 --groove "Groove $bars" --staff Drums --style drums --yes --library "$work/Tamberlyne")
    theirs=$(median_ms env QT_QPA_PLATFORM=offscreen mscore3 -o "$work/out.musicxml" "$groove")
    ratio=$(awk -v a="$ours" -v b="$theirs" 'BEGIN { printf "%.1f", b / a }')
    printf '%8d %10s ms %10s ms %7sx\n' "$bars" "$ours" "$theirs" "$ratio"
done
echo "(median of $runs runs each; tamberlyne fills the demo score's 16 measures from the whole file)"
