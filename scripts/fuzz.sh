#!/usr/bin/env bash
# Fuzzes with libFuzzer (clang from Debian): builds tests/fuzz with clang in build/fuzz and runs
# each target for SECONDS (default 600), two at a time at low priority, on a scratch copy of its
# kept corpus. Findings land in build/fuzz/findings/; the corpus to keep is merged (minimised)
# back into tests/fuzz/<target>/ with --merge.
# Usage: scripts/fuzz.sh [SECONDS] [TARGET...]      scripts/fuzz.sh --merge [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."
merge=0
if [[ "${1:-}" == "--merge" ]]; then merge=1; shift; fi
seconds=600
if [[ "${1:-}" =~ ^[0-9]+$ ]]; then seconds="$1"; shift; fi
targets=("$@")
[[ ${#targets[@]} -gt 0 ]] || targets=(url hex_color store_file bundle_files command_line photo_file)

scripts/install-deps.sh fuzz
cmake -S . -B build/fuzz -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DPARLEY_FUZZ=ON \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/fuzz --target "${targets[@]/#/fuzz_}"
mkdir -p build/fuzz/findings
for target in "${targets[@]}"; do
    work="build/fuzz/corpus/$target"
    mkdir -p "$work"
    if [[ $merge == 1 ]]; then
        mkdir -p "$work.min"
        "build/fuzz/tests/fuzz/fuzz_$target" -merge=1 "$work.min" "tests/fuzz/$target" "$work" \
            >/dev/null 2>&1
        rm -rf "tests/fuzz/$target" && mv "$work.min" "tests/fuzz/$target"
        continue
    fi
    cp -n "tests/fuzz/$target"/* "$work"/
    # A photo needs room for its headers, an EXIF block among them (its orientation is read).
    max_len=4096
    [[ $target != photo_file ]] || max_len=65536
    nice -n 19 "build/fuzz/tests/fuzz/fuzz_$target" -max_total_time="$seconds" -max_len="$max_len" \
        -artifact_prefix="build/fuzz/findings/$target-" "$work" >"build/fuzz/$target.log" 2>&1 &
    # At most two at a time.
    while [[ $(jobs -rp | wc -l) -ge 2 ]]; do wait -n || true; done
done
wait
for target in "${targets[@]}"; do
    [[ $merge == 1 ]] || echo "$target: $(grep -E '^Done|ERROR' "build/fuzz/$target.log" | head -1)"
done
