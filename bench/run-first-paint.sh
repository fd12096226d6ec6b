#!/usr/bin/env bash
# parley-share --url from exec to its sheet's first pixels on an X server, against a bare Qt raster
# window of the same size painting the same two colours, in interleaved pairs (target <= 1.15x).
#   bench/run-first-paint.sh [build-dir] [pairs] [text]
# With "text" the baseline also draws the sheet's three titles, and so pays for the font system.
# Runs on its own Xvfb and session bus, in a private home (measure.sh).
set -euo pipefail
build="${1:-build/default}"
pairs="${2:-41}"
baseline=("$build/bench/bare_window")
if [ "${3:-}" = text ]; then baseline+=(--text); fi
if [ -z "${DBUS_SESSION_BUS_ADDRESS:-}" ]; then
    exec dbus-run-session -- "$0" "$@"
fi
source "$(dirname "$0")/measure.sh"
unset QT_QPA_PLATFORM WAYLAND_DISPLAY
export PARLEY_APPLICATIONS_DIR="$work/apps"
mkdir -p "$PARLEY_APPLICATIONS_DIR"

exec 3<> "$work/display"
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 & xvfb=$!
trap 'kill $xvfb 2>/dev/null; rm -rf "$work"' EXIT
for _ in $(seq 100); do [ -s "$work/display" ] && break; sleep 0.05; done
export DISPLAY=":$(head -n 1 "$work/display")"

"$build/bench/first_paint_bench" "$pairs" "$(realpath "$build/bin/parley-share")" \
    --url https://example.org/ -- "${baseline[@]}"
