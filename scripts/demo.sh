#!/usr/bin/env bash
# The demo: installs what is missing, builds the default preset, then on a private session bus
# with a throw-away home folder
#   1. starts the reference host (parley-host) and shares a link and some files with it, once
#      added to favourites and once sent to a friend (its records are printed as JSON lines);
#   2. stops the host and shares again: the share finds no host running and launches Parley.app
#      from the build folder, and the launched host prints the record it finds at start.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build/default"

if [ "${1:-}" != "--in-session" ]; then
    cd "$root"
    scripts/install-deps.sh
    cmake --preset default >/dev/null
    cmake --build --preset default -j "$(nproc)" --target parley-share parley-host
    work="$(mktemp -d)"
    trap 'rm -rf "$work"' EXIT
    export HOME="$work/home" XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data"
    export XDG_CACHE_HOME="$work/cache" QT_QPA_PLATFORM=offscreen DEMO_WORK="$work"
    mkdir -p "$HOME"
    dbus-run-session -- "$0" --in-session
    exit $?
fi

work="$DEMO_WORK"
share="$build/bin/parley-share"
host="$build/bin/parley-host"
records="$work/records.jsonl"
files="$work/files"
mkdir -p "$files"
printf 'Minutes of Monday\n' >"$files/minutes.txt"
printf '%%PDF-1.4 demo\n' >"$files/report.pdf"
truncate -s 150M "$files/holiday-video.mov"   # above the 100 MiB limit: listed, not copied

wait_for_lines() {  # file count
    for _ in $(seq 1 200); do
        [ -f "$1" ] && [ "$(wc -l <"$1")" -ge "$2" ] && return 0
        sleep 0.05
    done
    echo "timed out waiting for $1" >&2
    return 1
}

run_share() {  # arguments...
    echo "\$ parley-share $*"
    set +e
    "$share" "$@" 2>"$work/share.log"
    status=$?
    set -e
    sed -n 's/.*\(\[ShareViewController\].*\)/    \1/p' "$work/share.log"
    echo "    exit status $status"
}

echo "== 1. Parley running"
"$host" --record-file "$records" >/dev/null 2>"$work/host.log" &
host_pid=$!
wait_for_lines "$records" 1
run_share --action fav --url "https://example.org/articles/parley?lang=en"
wait_for_lines "$records" 2
run_share --action send "$files/minutes.txt" "$files/report.pdf" "$files/holiday-video.mov"
wait_for_lines "$records" 3
run_share --action cancel --url "https://example.org/never-handed-over"
kill "$host_pid"
wait "$host_pid" 2>/dev/null || true
echo
echo "Records printed by the running host:"
sed 's/^/    /' "$records"

echo
echo "== 2. Parley not running: the share launches it"
launched="$work/launched.jsonl"
# The launched host gets no arguments: the environment tells it where to report, and to exit.
export PARLEY_APPLICATIONS_DIR="$build" PARLEY_HOST_ONCE=1 PARLEY_HOST_RECORD_FILE="$launched"
run_share --action fav "$files/minutes.txt"
wait_for_lines "$launched" 1
echo
echo "Record printed by the launched host:"
sed 's/^/    /' "$launched"

echo
echo "Shared container:"
ls -la "$XDG_DATA_HOME"/group-containers/*/ | sed 's/^/    /'
