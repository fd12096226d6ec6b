# Sourced by the exec-to-exit benchmarks: an offscreen, private environment under $work and the
# two helpers that time a run and take medians.
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
