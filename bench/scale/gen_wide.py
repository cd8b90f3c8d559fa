#!/usr/bin/env python3
"""Writes a wide input: NSERIES monthly series of NOBS observations side by
side (columns s1 .. sN), one record per month, and the step that forecasts
them all in one FORECAST statement.

    gen_wide.py OUT.csv PROGRAM.qvt [NSERIES=200] [NOBS=144]
"""
import random
import sys

from gen_long import months


def main():
    path, prog = sys.argv[1], sys.argv[2]
    nser = int(sys.argv[3]) if len(sys.argv) > 3 else 200
    nobs = int(sys.argv[4]) if len(sys.argv) > 4 else 144
    rnd = random.Random(2)
    levels = [100 + 50 * rnd.random() for _ in range(nser)]
    with open(path, "w", encoding="utf-8") as f:
        f.write("date," + ",".join(f"s{i + 1}" for i in range(nser)) + "\n")
        for d in months(nobs):
            cells = []
            for i in range(nser):
                levels[i] += rnd.random() - 0.5
                cells.append(f"{levels[i] + 4 * (rnd.random() - 0.5):.2f}")
            f.write(d + "," + ",".join(cells) + "\n")
    with open(prog, "w", encoding="utf-8") as f:
        f.write(f"qvt data=wide out=out outfor=outfor outest=outest outcomponent=outcomp lead=12;\n"
                f"  id date interval=month;\n"
                f"  forecast s1-s{nser} / model=simple;\n"
                f"run;\n")


if __name__ == "__main__":
    main()
