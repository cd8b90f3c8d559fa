#!/usr/bin/env python3
"""Line coverage of src/ from a build made with the `coverage` preset.

  coverage.py run BUILD OUT.json -- COMMAND...   zero the counters, run COMMAND, collect
  coverage.py collect BUILD OUT.json             collect what the counters hold now
  coverage.py diff BEFORE.json AFTER.json [PREFIX]
                                                 lines covered before and not after

A line counts as covered when any translation unit executed it, so code in
headers is covered once any test reaches it. `diff` is how a change to the
tests shows it lost nothing: it prints every source line that the old tests
ran and the new ones no longer run, with its text, and exits 1 if there is any.
"""
import gzip
import json
import os
import subprocess
import sys
import tempfile
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def gcda_files(build):
    return sorted(Path(build).rglob("*.gcda"))


def zero(build):
    for f in gcda_files(build):
        f.unlink()


def collect(build):
    """Returns {relative source path: {"lines": set, "covered": set}} for src/."""
    result = defaultdict(lambda: {"lines": set(), "covered": set()})
    files = gcda_files(build)
    if not files:
        sys.exit(f"coverage: no counters under {build}; build with the coverage preset and run a test")
    with tempfile.TemporaryDirectory() as tmp:
        # gcov writes one .gcov.json.gz per object into the working directory.
        for chunk in range(0, len(files), 50):
            batch = [str(f.resolve()) for f in files[chunk:chunk + 50]]
            subprocess.run(["gcov", "--json-format", "--preserve-paths", *batch],
                           cwd=tmp, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            for out in Path(tmp).glob("*.gcov.json.gz"):
                with gzip.open(out, "rt") as fh:
                    data = json.load(fh)
                out.unlink()
                for f in data.get("files", []):
                    path = Path(f["file"])
                    if not path.is_absolute():
                        path = (Path(data.get("current_working_directory", ".")) / path)
                    try:
                        rel = path.resolve().relative_to(ROOT)
                    except ValueError:
                        continue
                    if rel.parts[0] != "src":
                        continue
                    entry = result[str(rel)]
                    for line in f["lines"]:
                        entry["lines"].add(line["line_number"])
                        if line["count"] > 0:
                            entry["covered"].add(line["line_number"])
    return result


def save(result, out):
    data = {k: {"lines": sorted(v["lines"]), "covered": sorted(v["covered"])}
            for k, v in sorted(result.items())}
    Path(out).write_text(json.dumps(data, indent=0))
    summary(data)


def summary(data):
    folders = defaultdict(lambda: [0, 0])
    for path, v in data.items():
        folder = "/".join(path.split("/")[:2])
        folders[folder][0] += len(v["covered"])
        folders[folder][1] += len(v["lines"])
    total = [0, 0]
    for folder, (c, n) in sorted(folders.items()):
        print(f"{folder:20s} {c:6d} / {n:6d} lines  {100.0 * c / max(n, 1):5.1f}%")
        total[0] += c
        total[1] += n
    print(f"{'total':20s} {total[0]:6d} / {total[1]:6d} lines  {100.0 * total[0] / max(total[1], 1):5.1f}%")


def diff(before, after, prefix):
    a = json.loads(Path(before).read_text())
    b = json.loads(Path(after).read_text())
    lost = 0
    for path, v in sorted(a.items()):
        if prefix and not path.startswith(prefix):
            continue
        now = set(b.get(path, {}).get("covered", []))
        gone = [n for n in v["covered"] if n not in now]
        if not gone:
            continue
        text = (ROOT / path).read_text().splitlines()
        print(f"{path}: {len(gone)} line(s) no longer run")
        for n in gone:
            print(f"  {n:5d}  {text[n - 1].strip() if n <= len(text) else ''}")
        lost += len(gone)
    print(f"lost: {lost} line(s)")
    return 1 if lost else 0


def main(argv):
    if len(argv) >= 3 and argv[0] == "run":
        build, out = argv[1], argv[2]
        cmd = argv[4:] if len(argv) > 3 and argv[3] == "--" else argv[3:]
        zero(build)
        rc = subprocess.run(cmd).returncode
        if rc != 0:
            print(f"coverage: the command exited {rc}; counters collected anyway", file=sys.stderr)
        save(collect(build), out)
        return rc
    if len(argv) == 3 and argv[0] == "collect":
        save(collect(argv[1]), argv[2])
        return 0
    if len(argv) in (3, 4) and argv[0] == "diff":
        return diff(argv[1], argv[2], argv[3] if len(argv) == 4 else "")
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
