#!/usr/bin/env python3
"""Runs one qvt command in FOLDER and prints its wall and CPU time, the series per
second for NSERIES series and the peak resident memory of the child.

    measure.py LABEL NSERIES FOLDER QVT ARGS...
"""
import resource
import subprocess
import sys
import time


def main():
    label, nseries, folder, cmd = sys.argv[1], int(sys.argv[2]), sys.argv[3], sys.argv[4:]
    t0 = time.perf_counter()
    proc = subprocess.run(cmd, cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    dt = time.perf_counter() - t0
    ru = resource.getrusage(resource.RUSAGE_CHILDREN)
    peak_kb = ru.ru_maxrss  # kilobytes on Linux
    cpu = ru.ru_utime + ru.ru_stime
    if proc.returncode != 0:
        print(f"{label}: exit {proc.returncode}: {proc.stderr[-500:]}")
        sys.exit(1)
    print(f"{label}: {nseries} series in {dt:.2f} s wall ({cpu:.2f} s CPU) = {nseries / dt:,.0f} series/s, "
          f"peak memory {peak_kb / 1024:.1f} MB")


if __name__ == "__main__":
    main()
