#!/usr/bin/env bash
# Installs what is missing, configures, builds and runs the tests.
# Usage: scripts/test.sh [default|asan|tsan] [extra ctest arguments]
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-default}"
shift || true

scripts/install-deps.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" -j "$(nproc)"
ctest --preset "$preset" -j "$(nproc)" "$@"
