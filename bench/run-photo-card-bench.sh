#!/usr/bin/env bash
# parley-share --snapshot for one 8000 x 6000 JPEG against the same run for a text file, run
# alternately from exec to exit: wall time and peak RSS. The JPEGs are made here by make_photo:
# one that a file manager has shown (it keeps a thumbnail), and one never shown (its whole
# entropy-coded data must be read).
# Usage: bench/run-photo-card-bench.sh [build-dir] [runs] [scale]
set -euo pipefail
build="${1:-build/default}"
runs="${2:-15}"
scale="${3:-2}"
source "$(dirname "$0")/measure.sh"

export XDG_CACHE_HOME="$work/cache"
"$build/bench/make_photo" --shown "$work/shown.jpg" 8000 6000
"$build/bench/make_photo" "$work/bare.jpg" 8000 6000
echo "A few lines of notes." >"$work/notes.txt"

for kind in shown bare text; do : >"$work/$kind"; done
for _ in $(seq "$runs"); do
    for kind in shown bare; do
        measure "$build/bin/parley-share" --snapshot "$work/p.png" --scale "$scale" "$work/$kind.jpg" >>"$work/$kind"
    done
    measure "$build/bin/parley-share" --snapshot "$work/t.png" --scale "$scale" "$work/notes.txt" >>"$work/text"
done
text_t=$(cut -d' ' -f1 "$work/text" | median); text_m=$(cut -d' ' -f2 "$work/text" | median)
echo "card snapshot at scale $scale, 8000 x 6000 JPEG ($(du -k "$work/bare.jpg" | cut -f1) KiB) vs text file, $runs runs each, medians"
for kind in shown bare; do
    photo_t=$(cut -d' ' -f1 "$work/$kind" | median); photo_m=$(cut -d' ' -f2 "$work/$kind" | median)
    printf '%-7s wall:     photo %.4f s   text %.4f s   ratio %.2fx (target <= 1.5x)\n' \
        "$kind" "$photo_t" "$text_t" "$(echo "$photo_t / $text_t" | bc -l)"
    printf '%-7s peak RSS: photo %d KiB   text %d KiB   ratio %.2fx (target <= 1.3x)\n' \
        "$kind" "$photo_m" "$text_m" "$(echo "$photo_m / $text_m" | bc -l)"
done
