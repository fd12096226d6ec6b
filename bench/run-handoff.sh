#!/usr/bin/env bash
# Runs the hand-off benchmark on a private session bus.
#   bench/run-handoff.sh [build-dir] [large|small|link|overlap|all] [runs] [link-shares]
# The extension's log lines go to build-dir/bench/handoff.log; the figures to stdout.
set -euo pipefail
build="${1:-build/default}"
mode="${2:-all}"
runs="${3:-7}"
shares="${4:-300}"
exec dbus-run-session -- "$build/bench/handoff_bench" "$mode" "$runs" "$shares" \
    2>"$build/bench/handoff.log"
