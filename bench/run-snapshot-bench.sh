#!/usr/bin/env bash
# parley-share --snapshot from exec to exit (wall time and peak RSS) against a minimal Qt program
# that paints a similar picture and saves it as PNG, run alternately. Usage:
#   bench/run-snapshot-bench.sh [build-dir] [runs] [scale]
set -euo pipefail
build="${1:-build/default}"
runs="${2:-20}"
scale="${3:-1}"
source "$(dirname "$0")/measure.sh"

: >"$work/ours"; : >"$work/base"
for _ in $(seq "$runs"); do
    measure "$build/bin/parley-share" --snapshot "$work/sheet.png" --scale "$scale" \
        --url https://example.org/ >>"$work/ours"
    measure "$build/bench/sheet_snapshot_baseline" "$work/base.png" "$scale" >>"$work/base"
done
ours_t=$(cut -d' ' -f1 "$work/ours" | median); base_t=$(cut -d' ' -f1 "$work/base" | median)
ours_m=$(cut -d' ' -f2 "$work/ours" | median); base_m=$(cut -d' ' -f2 "$work/base" | median)
echo "snapshot at scale $scale, $runs runs each, medians"
printf 'wall:     parley-share %.4f s   baseline %.4f s   ratio %.2fx (target <= 1.25x)\n' \
    "$ours_t" "$base_t" "$(echo "$ours_t / $base_t" | bc -l)"
printf 'peak RSS: parley-share %d KiB   baseline %d KiB   ratio %.2fx (target <= 1.25x)\n' \
    "$ours_m" "$base_m" "$(echo "$ours_m / $base_m" | bc -l)"
