#!/usr/bin/env python3
"""Seeds one small fault at a time into the sources, rebuilds, runs tests and reports which
faults no test notices. Each fault is an exact text replacement listed in a JSON file:
  [{"file": "share/X.cpp", "old": "a > b", "new": "a >= b"}, ...]
Usage: scripts/fault-check.py FAULTS.json [--preset P] [--binaries a_tests,b_tests]
With --binaries only those test binaries are built and run (each on a private bus), which is
much faster than the whole ctest suite. Every file is restored after its run."""
import argparse
import json
import pathlib
import subprocess

root = pathlib.Path(__file__).resolve().parent.parent
parser = argparse.ArgumentParser()
parser.add_argument("faults")
parser.add_argument("--preset", default="default")
parser.add_argument("--binaries", default="")
args = parser.parse_args()
faults = json.loads(pathlib.Path(args.faults).read_text())
binaries = [b for b in args.binaries.split(",") if b]


def run(command, timeout=900):
    try:
        return subprocess.run(command, cwd=root, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=timeout).returncode
    except subprocess.TimeoutExpired:
        return 124


def build():
    targets = ["--target", *binaries] if binaries else []
    return run(["cmake", "--build", "--preset", args.preset, "-j2", *targets])


def suite_fails():
    if not binaries:
        return run(["ctest", "--preset", args.preset, "-j2", "--stop-on-failure",
                    "--timeout", "120"]) != 0
    return any(run(["dbus-run-session", "--", f"build/{args.preset}/tests/{b}",
                    "--gtest_brief=1"], 300) != 0 for b in binaries)


survivors = []
for number, fault in enumerate(faults, 1):
    path = root / fault["file"]
    original = path.read_text()
    if original.count(fault["old"]) != 1:
        print(f"{number:3} SKIP  {fault['file']}: the text to change is not there exactly once")
        continue
    path.write_text(original.replace(fault["old"], fault["new"]))
    try:
        verdict = "build" if build() != 0 else ("killed" if suite_fails() else "SURVIVED")
    finally:
        path.write_text(original)
    label = f"{fault['file']}: {fault['old']!r} -> {fault['new']!r}"
    print(f"{number:3} {verdict:8} {label}", flush=True)
    if verdict == "SURVIVED":
        survivors.append(label)

build()
print(f"\n{len(survivors)} of {len(faults)} faults went unnoticed")
for label in survivors:
    print("  " + label)
