#!/usr/bin/env bash
# Runs the hand-off benchmark on a private session bus.
#   bench/run-handoff.sh [build-dir] [large|small|many|link|overlap|all] [runs] [link-shares]
# The extension's log lines go to build-dir/bench/handoff.log; the figures to stdout. With many
# (or all), parley-share itself then shares the 10,000 one-line files, exec to exit, beside cp of
# the same files into an empty folder: wall time and peak RSS (target <= 64 MiB). The work folders
# are under $PARLEY_BENCH_DIR (default: the temporary folder), both sides on one file system.
set -euo pipefail
build="${1:-build/default}"
mode="${2:-all}"
runs="${3:-7}"
shares="${4:-300}"
if [ -z "${DBUS_SESSION_BUS_ADDRESS:-}" ]; then
    exec dbus-run-session -- "$0" "$@"
fi
"$build/bench/handoff_bench" "$mode" "$runs" "$shares" 2>"$build/bench/handoff.log"
[ "$mode" = many ] || [ "$mode" = all ] || exit 0

export TMPDIR="${PARLEY_BENCH_DIR:-${TMPDIR:-/tmp}}"
source "$(dirname "$0")/measure.sh"
# No host to launch: the wake-up finds none and launches nothing.
export PARLEY_APPLICATIONS_DIR="$work/apps"
mkdir -p "$work/notes" "$PARLEY_APPLICATIONS_DIR"
for i in $(seq 0 9999); do echo "note $i: one line of text" >"$work/notes/note-$i.txt"; done
cat "$work"/notes/* >/dev/null
: >"$work/ours"; : >"$work/base"
for _ in $(seq "$runs"); do
    rm -rf "$XDG_DATA_HOME" "$work/cp"; mkdir "$work/cp"; sync
    measure "$build/bin/parley-share" --action fav "$work"/notes/* >>"$work/ours"
    sync
    measure sh -c 'cp -- "$@" "$0"' "$work/cp" "$work"/notes/* >>"$work/base"
done
ours_t=$(cut -d' ' -f1 "$work/ours" | median); base_t=$(cut -d' ' -f1 "$work/base" | median)
ours_m=$(cut -d' ' -f2 "$work/ours" | median); base_m=$(cut -d' ' -f2 "$work/base" | median)
echo "parley-share --action fav with 10,000 one-line files, exec to exit, $runs runs each, medians"
printf 'wall:     parley-share %.3f s   cp %.3f s   ratio %.2fx\n' \
    "$ours_t" "$base_t" "$(echo "$ours_t / $base_t" | bc -l)"
printf 'peak RSS: parley-share %d KiB (%s)   cp %d KiB\n' "$ours_m" \
    "$([ "$ours_m" -le 65536 ] && echo "target <= 64 MiB MET" || echo "target <= 64 MiB MISSED")" \
    "$base_m"
