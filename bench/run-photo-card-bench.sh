#!/usr/bin/env bash
# parley-share --snapshot for one 8000 x 6000 JPEG against the same run for a text file, run
# alternately from exec to exit: wall time and peak RSS. The JPEG is made here by make_photo.
# Usage: bench/run-photo-card-bench.sh [build-dir] [runs] [scale]
set -euo pipefail
build="${1:-build/default}"
runs="${2:-15}"
scale="${3:-2}"
source "$(dirname "$0")/measure.sh"

"$build/bench/make_photo" "$work/photo.jpg" 8000 6000
echo "A few lines of notes." >"$work/notes.txt"

: >"$work/photo"; : >"$work/text"
for _ in $(seq "$runs"); do
    measure "$build/bin/parley-share" --snapshot "$work/p.png" --scale "$scale" "$work/photo.jpg" >>"$work/photo"
    measure "$build/bin/parley-share" --snapshot "$work/t.png" --scale "$scale" "$work/notes.txt" >>"$work/text"
done
photo_t=$(cut -d' ' -f1 "$work/photo" | median); text_t=$(cut -d' ' -f1 "$work/text" | median)
photo_m=$(cut -d' ' -f2 "$work/photo" | median); text_m=$(cut -d' ' -f2 "$work/text" | median)
echo "card snapshot at scale $scale, 8000 x 6000 JPEG ($(du -k "$work/photo.jpg" | cut -f1) KiB) vs text file, $runs runs each, medians"
printf 'wall:     photo %.4f s   text %.4f s   ratio %.2fx (target <= 1.5x)\n' \
    "$photo_t" "$text_t" "$(echo "$photo_t / $text_t" | bc -l)"
printf 'peak RSS: photo %d KiB   text %d KiB   ratio %.2fx (target <= 1.3x)\n' \
    "$photo_m" "$text_m" "$(echo "$photo_m / $text_m" | bc -l)"
