#!/usr/bin/env python3
"""Writes a long-form input: GROUPS monthly series of NOBS observations, one
record per series and month, sorted by the BY variable `series`.

    gen_long.py OUT.csv [GROUPS=10000] [NOBS=144]
"""
import datetime
import random
import sys


def months(n, y=2010, m=1):
    out = []
    for _ in range(n):
        out.append(datetime.date(y, m, 1).isoformat())
        m += 1
        if m > 12:
            y, m = y + 1, 1
    return out


def main():
    path = sys.argv[1]
    groups = int(sys.argv[2]) if len(sys.argv) > 2 else 10000
    nobs = int(sys.argv[3]) if len(sys.argv) > 3 else 144
    dates = months(nobs)
    rnd = random.Random(1)
    with open(path, "w", encoding="utf-8") as f:
        f.write("series,date,sales\n")
        for g in range(groups):
            level = 100 + 50 * rnd.random()
            rows = []
            for d in dates:
                level += rnd.random() - 0.5
                rows.append(f"{g + 1},{d},{level + 4 * (rnd.random() - 0.5):.2f}\n")
            f.write("".join(rows))


if __name__ == "__main__":
    main()
