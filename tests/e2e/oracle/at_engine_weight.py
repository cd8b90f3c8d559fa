#!/usr/bin/env python3
"""Second look at the oracle cases: runs qvt on simple_one and linear_one,
takes the weights the engine estimated from OUTEST=, recomputes every OUTFOR=
row with the oracle at those weights and prints the largest difference. The
case files compare against the oracle's own minimiser with a tolerance for
the estimator's stopping rule; this shows that the stopping rule is the only
source of the difference (expect differences near 1e-12).

    at_engine_weight.py PATH-TO-QVT
"""
import csv
import os
import shutil
import subprocess
import sys
import tempfile

import esm

HERE = os.path.dirname(os.path.abspath(__file__))
RUN = os.path.join(HERE, "..", "run")
COLS = ["PREDICT", "LOWER", "UPPER", "ERROR", "STD"]


def run(qvt, case):
    work = tempfile.mkdtemp(prefix="qvt-oracle-")
    for f in os.listdir(os.path.join(RUN, case)):
        src = os.path.join(RUN, case, f)
        if os.path.isfile(src):
            shutil.copy(src, work)
    subprocess.run([qvt, "run", "program.qvt", "--log", "log.txt"], cwd=work, check=True)
    return work


def rows_of(path):
    with open(path, newline="", encoding="utf-8") as f:
        return list(csv.DictReader(f))


def largest_diff(got, want):
    worst = 0.0
    for g, w in zip(got, want):
        for k, col in enumerate(COLS, start=1):
            a, b = g[col], w[k]
            if a == "" or b is None:
                if (a == "") != (b is None):
                    return float("inf")
                continue
            worst = max(worst, abs(float(a) - b) / max(1.0, abs(b)))
    return worst


def main():
    qvt = os.path.abspath(sys.argv[1])
    work = run(qvt, "simple_one")
    x = [float(r["sales"]) for r in rows_of(os.path.join(work, "series.csv"))]
    w = float(rows_of(os.path.join(work, "outest.csv"))[0]["_EST_"])
    _, want = esm.ses_rows(x, 6, w=w)
    print(f"simple_one: engine weight {w!r}, oracle minimiser {esm.fit_ses(x)!r}, "
          f"largest relative row difference at the engine's weight {largest_diff(rows_of(os.path.join(work, 'outfor.csv')), want):.2e}")
    shutil.rmtree(work)

    work = run(qvt, "linear_one")
    x = [float(r["units"]) for r in rows_of(os.path.join(work, "series.csv"))]
    est = rows_of(os.path.join(work, "outest.csv"))
    wg = (float(est[0]["_EST_"]), float(est[1]["_EST_"]))
    _, want = esm.holt_rows(x, 4, wg=wg)
    print(f"linear_one: engine weights {wg!r}, oracle minimiser {esm.fit_holt(x)!r}, "
          f"largest relative row difference at the engine's weights {largest_diff(rows_of(os.path.join(work, 'outfor.csv')), want):.2e}")
    shutil.rmtree(work)


if __name__ == "__main__":
    main()
