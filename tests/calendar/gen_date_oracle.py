#!/usr/bin/env python3
"""Writes date_oracle.csv: Gregorian dates with their weekday, ISO week date,
Sunday- and Monday-first week numbers and month arithmetic, all computed by
Python's datetime module, as an oracle for the calendar code.

Run from anywhere:  python3 tests/calendar/gen_date_oracle.py
The output is deterministic (fixed seed), so a rerun reproduces the table.

Columns:
  day      date value: days from 1960-01-01
  y m d    Gregorian year, month, day
  wday     day of the week, 1 Sunday .. 7 Saturday
  yday     day of the year from 0
  isoy isow isod   ISO 8601 week date (isod 1 Monday .. 7 Sunday)
  wu ww    strftime %U and %W: week of the year, Sunday- and Monday-first
  k        a month count between -40 and 40
  mstart   date value of the first day of the month k months on
  msame    date value of the same day of the month k months on, clipped to
           that month's last day
"""
import calendar
import csv
import datetime as dt
import os
import random

EPOCH = dt.date(1960, 1, 1)
FIRST, LAST = dt.date(1582, 1, 1), dt.date(9999, 12, 31)


def add_months(y, m, k):
    t = (y * 12 + (m - 1)) + k
    return t // 12, t % 12 + 1


def dates():
    out = set()
    # Dense around year ends, month ends and leap days of chosen years:
    # the first years, century years of both leap kinds, the epoch, years
    # with ISO week 53, and the last years Python holds.
    years = [1582, 1583, 1584, 1600, 1700, 1752, 1800, 1899, 1900, 1901, 1959, 1960, 1961,
             1968, 1976, 1992, 1999, 2000, 2001, 2003, 2004, 2008, 2009, 2010, 2015, 2016,
             2020, 2021, 2026, 2032, 2100, 2400, 2800, 3000, 4000, 5000, 9998, 9999]
    rng = random.Random(19600101)
    years += rng.sample(range(1585, 9990), 15)
    for y in years:
        for m in range(1, 13):
            last = calendar.monthrange(y, m)[1]
            # Tenday and semimonth edges in a few months, month ends in all.
            inner = (10, 11, 15, 16, 20, 21) if m in (1, 2, 6) else ()
            for d in (1, last - 1, last) + inner:
                out.add(dt.date(y, m, d))
        for d in range(1, 8):
            out.add(dt.date(y, 1, d))
        for d in range(25, 32):
            out.add(dt.date(y, 12, d))
    # Spread over the whole range.
    span = (LAST - FIRST).days
    for _ in range(500):
        out.add(FIRST + dt.timedelta(days=rng.randrange(span + 1)))
    return sorted(x for x in out if FIRST <= x <= LAST), rng


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    path = os.path.join(here, "date_oracle.csv")
    ds, rng = dates()
    with open(path, "w", newline="") as f:
        w = csv.writer(f, lineterminator="\n")
        w.writerow(["day", "y", "m", "d", "wday", "yday", "isoy", "isow", "isod", "wu", "ww",
                    "k", "mstart", "msame"])
        for x in ds:
            iso = x.isocalendar()
            wday = x.isoweekday() % 7 + 1
            k = rng.randint(-40, 40)
            ty, tm = add_months(x.year, x.month, k)
            if 1582 <= ty <= 9999:
                first = dt.date(ty, tm, 1)
                same = dt.date(ty, tm, min(x.day, calendar.monthrange(ty, tm)[1]))
                mstart, msame = (first - EPOCH).days, (same - EPOCH).days
            else:
                k, mstart, msame = 0, (dt.date(x.year, x.month, 1) - EPOCH).days, (x - EPOCH).days
            w.writerow([(x - EPOCH).days, x.year, x.month, x.day, wday,
                        x.timetuple().tm_yday - 1, iso[0], iso[1], iso[2],
                        int(x.strftime("%U")), int(x.strftime("%W")), k, mstart, msame])
    print(f"{len(ds)} rows -> {path}")


if __name__ == "__main__":
    main()
