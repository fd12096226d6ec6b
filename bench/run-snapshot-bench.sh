#!/usr/bin/env bash
# parley-share --snapshot from exec to exit (wall time and peak RSS) against a minimal Qt program
# that paints a similar picture and saves it as PNG, run alternately. Usage:
#   bench/run-snapshot-bench.sh [build-dir] [runs] [scale]
set -euo pipefail
build="${1:-build/default}"
runs="${2:-20}"
scale="${3:-1}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
export QT_QPA_PLATFORM=offscreen HOME="$work/home" XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data"
mkdir -p "$HOME"

measure() {  # prints "seconds kilobytes"; time(1) counts only centiseconds, so time it here
    local start end
    start=$(date +%s%N)
    /usr/bin/time -f "%M" -o "$work/t" "$@" >/dev/null 2>&1 || true
    end=$(date +%s%N)
    echo "$(echo "($end - $start) / 1000000000" | bc -l) $(cat "$work/t")"
}
median() { sort -n | awk '{a[NR]=$1} END {print (NR%2 ? a[(NR+1)/2] : (a[NR/2]+a[NR/2+1])/2)}'; }

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
