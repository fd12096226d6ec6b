#!/usr/bin/env bash
# Long soak: 500 back-to-back shares (links and files, both actions) against a reading host on a
# private session bus. Usage: bench/run-soak.sh [build-dir] [shares]
set -euo pipefail
build="${1:-build/default}"
exec dbus-run-session -- "$build/bench/soak_bench" "$build/Parley.app" "${2:-500}"
