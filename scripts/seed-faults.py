#!/usr/bin/env python3
"""Seeds one small fault at a time into the sources, rebuilds, runs the suite and reports which
faults no test notices. Each fault is an exact text replacement listed in a JSON file:
  [{"file": "share/X.cpp", "old": "a > b", "new": "a >= b"}, ...]
Usage: scripts/seed-faults.py FAULTS.json [build-preset]
The tree must be clean where the faults apply; every file is restored after its run."""
import json
import pathlib
import subprocess
import sys

root = pathlib.Path(__file__).resolve().parent.parent
faults = json.loads(pathlib.Path(sys.argv[1]).read_text())
preset = sys.argv[2] if len(sys.argv) > 2 else "default"


def run(command):
    return subprocess.run(command, cwd=root, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL).returncode


survivors = []
for number, fault in enumerate(faults, 1):
    path = root / fault["file"]
    original = path.read_text()
    if original.count(fault["old"]) != 1:
        print(f"{number:3} SKIP  {fault['file']}: the text to change is not there exactly once")
        continue
    path.write_text(original.replace(fault["old"], fault["new"]))
    try:
        if run(["cmake", "--build", "--preset", preset, "-j2"]) != 0:
            verdict = "build"
        else:
            failed = run(["ctest", "--preset", preset, "-j2", "--stop-on-failure",
                          "--timeout", "120"])
            verdict = "killed" if failed else "SURVIVED"
    finally:
        path.write_text(original)
    label = f"{fault['file']}: {fault['old']!r} -> {fault['new']!r}"
    print(f"{number:3} {verdict:8} {label}", flush=True)
    if verdict == "SURVIVED":
        survivors.append(label)

run(["cmake", "--build", "--preset", preset, "-j2"])
print(f"\n{len(survivors)} of {len(faults)} faults went unnoticed")
for label in survivors:
    print("  " + label)
