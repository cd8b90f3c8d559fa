#!/usr/bin/env python3
"""Writes date_oracle.csv next to this file: dates with their weekday (1
Sunday), day of the year (from 0), ISO 8601 week date, strftime %U and %W, a
month count k, and the date values (days from 1960-01-01) of the first and of
the same (clipped) day of the month k months on, all by Python's datetime.
Deterministic: a rerun reproduces the table."""
import calendar
import csv
import datetime as dt
import os
import random

EPOCH, FIRST, LAST = dt.date(1960, 1, 1), dt.date(1582, 1, 1), dt.date(9999, 12, 31)


def main():
    # Dense around year ends, month ends and leap days of the first years,
    # century years of both kinds, the epoch, years with ISO week 53, and the
    # last years Python holds; then dates spread over the whole range.
    years = [1582, 1583, 1584, 1600, 1700, 1752, 1800, 1899, 1900, 1901, 1959, 1960, 1961,
             1968, 1976, 1992, 1999, 2000, 2001, 2003, 2004, 2008, 2009, 2010, 2015, 2016,
             2020, 2021, 2026, 2032, 2100, 2400, 2800, 3000, 4000, 5000, 9998, 9999]
    rng = random.Random(19600101)
    years += rng.sample(range(1585, 9990), 15)
    ds = set()
    for y in years:
        for m in range(1, 13):
            last = calendar.monthrange(y, m)[1]
            inner = (10, 11, 15, 16, 20, 21) if m in (1, 2, 6) else ()
            ds.update(dt.date(y, m, d) for d in (1, last - 1, last) + inner)
        ds.update(dt.date(y, 1, d) for d in range(1, 8))
        ds.update(dt.date(y, 12, d) for d in range(25, 32))
    span = (LAST - FIRST).days
    ds.update(FIRST + dt.timedelta(days=rng.randrange(span + 1)) for _ in range(500))
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "date_oracle.csv")
    with open(path, "w", newline="") as f:
        w = csv.writer(f, lineterminator="\n")
        w.writerow(["day", "y", "m", "d", "wday", "yday", "isoy", "isow", "isod", "wu", "ww",
                    "k", "mstart", "msame"])
        for x in sorted(ds):
            k = rng.randint(-40, 40)
            t = x.year * 12 + x.month - 1 + k
            ty, tm = t // 12, t % 12 + 1
            if not 1582 <= ty <= 9999:
                k, ty, tm = 0, x.year, x.month
            same = dt.date(ty, tm, min(x.day, calendar.monthrange(ty, tm)[1]))
            w.writerow([(x - EPOCH).days, x.year, x.month, x.day, x.isoweekday() % 7 + 1,
                        x.timetuple().tm_yday - 1, *x.isocalendar(), int(x.strftime("%U")),
                        int(x.strftime("%W")), k, (dt.date(ty, tm, 1) - EPOCH).days,
                        (same - EPOCH).days])


if __name__ == "__main__":
    main()
