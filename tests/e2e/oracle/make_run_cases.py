#!/usr/bin/env python3
"""Writes the inputs and the expected outputs of the forecasting cases under
tests/e2e/run from the oracle in esm.py (never from qvt's output).

    python3 tests/e2e/oracle/make_run_cases.py

Programs and case.json files are kept by hand beside what this writes; the
script only (re)writes the CSV files named below.
"""
import csv
import datetime
import math
import os
import random
import statistics

import croston
import esm

HERE = os.path.dirname(os.path.abspath(__file__))
RUN = os.path.normpath(os.path.join(HERE, "..", "run"))


def months(start_year, start_month, n):
    out = []
    y, m = start_year, start_month
    for _ in range(n):
        out.append(datetime.date(y, m, 1).isoformat())
        m += 1
        if m > 12:
            y, m = y + 1, 1
    return out


def write(path, header, rows):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", newline="", encoding="utf-8") as f:
        w = csv.writer(f, lineterminator="\n")
        w.writerow(header)
        for r in rows:
            w.writerow(["" if v is None else v for v in r])


def cell(v):
    return esm.fmt(v) if (v is None or isinstance(v, float)) else v


def noisy_walk(seed, n, start, step=1.0, noise=2.0):
    """A local level observed with noise, rounded to one decimal: SES has an
    interior optimum on such data."""
    rnd = random.Random(seed)
    level, xs = start, []
    for _ in range(n):
        level += step * (rnd.random() - 0.5)
        xs.append(round(level + noise * (rnd.random() - 0.5), 1))
    return xs


def noisy_trend(seed, n, a, b, noise=3.0):
    rnd = random.Random(seed)
    slope, level, xs = b, a, []
    for _ in range(n):
        slope += 0.3 * (rnd.random() - 0.5)
        level += slope
        xs.append(round(level + noise * (rnd.random() - 0.5), 1))
    return xs


def outfor_rows(name, dates, rows, byval=None):
    out = []
    for d, (a, p, lo, up, e, sd) in zip(dates, rows):
        r = [name, d, cell(a), cell(p), cell(lo), cell(up), cell(e), cell(sd)]
        out.append(([byval] if byval is not None else []) + r)
    return out


OUTFOR_HEAD = ["_NAME_", "date", "ACTUAL", "PREDICT", "LOWER", "UPPER", "ERROR", "STD"]


def describe(xs):
    """NOBS, N, NMISS, MIN, MAX, MEAN, STDDEV (sample) of a used range."""
    v = [x for x in xs if x is not None]
    m = sum(v) / len(v) if v else None
    sd = math.sqrt(sum((x - m) ** 2 for x in v) / (len(v) - 1)) if len(v) > 1 else None
    return [len(xs), len(v), len(xs) - len(v), min(v, default=None), max(v, default=None), m, sd]


SUM_HEAD = "_NAME_ _STATUS_ NOBS N NMISS MIN MAX MEAN STDDEV PREDICT LOWER UPPER STD".split()


def ses_summary(x, lead):
    """PREDICT, LOWER, UPPER, STD of the sum of the leads 1..lead of SES, then
    the leads: the sum of lead flat forecasts, whose error is the sum over the
    shocks m = 1..lead of (1 + w (lead - m)) times the shock, as the
    MA(infinity) form of SES (psi_j = w) gives; sigma^2 = SSE / (nobs - 1)."""
    w = esm.fit_ses(x)
    mse, _, level, nobs = esm.ses_pass(x, w)
    sd = math.sqrt(mse * nobs / (nobs - 1) * sum((1 + w * (lead - m)) ** 2 for m in range(1, lead + 1)))
    s, z = lead * level, esm.z_value(0.05)
    return [s, s - z * sd, s + z * sd, sd] + [level] * lead


FIT_HEAD = "_NAME_ _REGION_ DFE N NPARMS SST SSE MSE RMSE UMSE MAPE MAE ME RSQUARE AIC SBC AICC MRAE".split()


def fit_row(name, region, a, p, k, last=None):
    """Statistics of fit from their textbook definitions, e = actual - predict
    over m pairs with k parameters: MSE = SSE/m, UMSE = SSE/(m-k), AIC =
    m ln(SSE/m) + 2k, SBC = m ln(SSE/m) + k ln m, AICC = AIC + 2k(k+1)/(m-k-1),
    RSQUARE = 1 - SSE/SST. MRAE is the mean of |e / (a - r)|, r the random
    walk: the actual before each one, or `last` for every one when given; a
    ratio with a zero denominator is left out."""
    m, e = len(a), [x - y for x, y in zip(a, p)]
    sse, sst = sum(v * v for v in e), sum((x - sum(a) / m) ** 2 for x in a)
    rw = [last] * m if last is not None else [None] + a[:-1]
    rae = [abs(v / (x - r)) for v, x, r in zip(e, a, rw) if r is not None and x != r]
    aic, sbc = (m * math.log(sse / m) + k * c for c in (2, math.log(m)))
    return [name, region, m - k, m, k, sst, sse, sse / m, math.sqrt(sse / m), sse / (m - k),
            100 * sum(abs(v / x) for v, x in zip(e, a)) / m, sum(map(abs, e)) / m, sum(e) / m, 1 - sse / sst,
            aic, sbc, aic + 2 * k * (k + 1) / (m - k - 1), sum(rae) / len(rae)]


def case_dir(name):
    return os.path.join(RUN, name)


def main():
    sales = noisy_walk(11, 24, 100.0)
    d24 = months(2020, 1, 24)

    # simple_one: one series, SIMPLE, LEAD=6, all of OUT=, OUTFOR=, OUTEST=.
    c = case_dir("simple_one")
    write(os.path.join(c, "series.csv"), ["date", "sales"], zip(d24, sales))
    w, rows = esm.ses_rows(sales, 6)
    dates = months(2020, 1, 30)
    write(os.path.join(c, "expect", "outfor.csv"), OUTFOR_HEAD, outfor_rows("sales", dates, rows))
    write(os.path.join(c, "expect", "out.csv"), ["date", "sales"],
          [(d, cell(v if i < 24 else r[1])) for i, (d, v, r) in enumerate(zip(dates, sales + [None] * 6, rows))])
    write(os.path.join(c, "expect", "outest.csv"), ["_NAME_", "_MODEL_", "_PARM_", "_EST_"],
          [("sales", "SIMPLE", "LEVEL", esm.fmt(w))])

    # lead0: no forecasts; OUTFOR= holds the fit range only.
    c = case_dir("lead0")
    write(os.path.join(c, "series.csv"), ["date", "sales"], zip(d24, sales))
    _, rows = esm.ses_rows(sales, 0)
    write(os.path.join(c, "expect", "outfor.csv"), OUTFOR_HEAD, outfor_rows("sales", d24, rows))
    write(os.path.join(c, "expect", "out.csv"), ["date", "sales"], [(d, cell(v)) for d, v in zip(d24, sales)])

    # back: BACK=4 fits the first 20 periods; the BACK= rows carry actuals and
    # errors of the data; OUT= keeps the actuals and adds LEAD-BACK forecasts.
    c = case_dir("back")
    write(os.path.join(c, "series.csv"), ["date", "sales"], zip(d24, sales))
    _, rows = esm.ses_rows(sales[:20], 6)
    rows = [(a, p, lo, up, (a - p) if a is not None else None, sd)
            for (_, p, lo, up, _, sd), a in zip(rows, sales + [None] * 2)]
    d26 = months(2020, 1, 26)
    write(os.path.join(c, "expect", "outfor.csv"), OUTFOR_HEAD, outfor_rows("sales", d26, rows))
    write(os.path.join(c, "expect", "out.csv"), ["date", "sales"],
          [(d, cell(sales[i] if i < 24 else rows[i][1])) for i, d in enumerate(d26)])

    # nooutall_lower: NOOUTALL keeps only the LEAD rows; USE=LOWER puts the
    # lower limits into OUT=.
    c = case_dir("nooutall_lower")
    write(os.path.join(c, "series.csv"), ["date", "sales"], zip(d24, sales))
    _, rows = esm.ses_rows(sales, 3)
    d27 = months(2020, 1, 27)
    write(os.path.join(c, "expect", "outfor.csv"), OUTFOR_HEAD, outfor_rows("sales", d27, rows)[24:])
    write(os.path.join(c, "expect", "out.csv"), ["date", "sales"], [(d27[i], cell(rows[i][2])) for i in range(24, 27)])

    # start_end: START= two months ahead of the data, END= two months behind
    # it; the forecast starts right behind the last value, so the horizon is
    # LEAD plus the two trailing missing months.
    c = case_dir("start_end")
    d20 = months(2020, 3, 20)
    x20 = sales[:20]
    write(os.path.join(c, "series.csv"), ["date", "sales"], zip(d20, x20))
    _, rows = esm.ses_rows(x20, 2 + 3)
    write(os.path.join(c, "expect", "outfor.csv"), OUTFOR_HEAD, outfor_rows("sales", months(2020, 3, 25), rows))
    frame = months(2020, 1, 27)
    outv = [None, None] + [r[1] if i >= 20 else x20[i] for i, r in enumerate(rows)]
    write(os.path.join(c, "expect", "out.csv"), ["date", "sales"], [(d, cell(v)) for d, v in zip(frame, outv)])

    # linear_one: Holt's method on a noisy trend.
    c = case_dir("linear_one")
    units = noisy_trend(5, 30, 50.0, 2.0)
    d30 = months(2019, 1, 30)
    write(os.path.join(c, "series.csv"), ["date", "units"], zip(d30, units))
    (w, g), rows = esm.holt_rows(units, 4)
    write(os.path.join(c, "expect", "outfor.csv"), OUTFOR_HEAD, outfor_rows("units", months(2019, 1, 34), rows))
    write(os.path.join(c, "expect", "outest.csv"), ["_NAME_", "_MODEL_", "_PARM_", "_EST_"],
          [("units", "LINEAR", "LEVEL", esm.fmt(w)), ("units", "LINEAR", "TREND", esm.fmt(g))])

    # by_groups: two BY groups in long form, each its own SIMPLE fit.
    c = case_dir("by_groups")
    ga = noisy_walk(21, 18, 40.0)
    gb = noisy_walk(22, 15, 250.0, step=4.0, noise=8.0)
    da, db = months(2021, 1, 18), months(2021, 4, 15)
    write(os.path.join(c, "long.csv"), ["region", "date", "sales"],
          [("east", d, v) for d, v in zip(da, ga)] + [("west", d, v) for d, v in zip(db, gb)])
    _, ra = esm.ses_rows(ga, 3)
    _, rb = esm.ses_rows(gb, 3)
    write(os.path.join(c, "expect", "outfor.csv"), ["region"] + OUTFOR_HEAD,
          outfor_rows("sales", months(2021, 1, 21), ra, "east") + outfor_rows("sales", months(2021, 4, 18), rb, "west"))

    # too_short: the second group has as many periods as BACK=, so it isn't
    # run (message 110); the first group is.
    c = case_dir("too_short")
    gs = [7.0, 9.0, 8.0]
    write(os.path.join(c, "long.csv"), ["store", "date", "sales"],
          [(1, d, v) for d, v in zip(da, ga)] + [(2, d, v) for d, v in zip(months(2021, 1, 3), gs)])
    _, ra = esm.ses_rows(ga[:15], 5)
    ra = [(a, p, lo, up, (a - p) if a is not None else None, sd)
          for (_, p, lo, up, _, sd), a in zip(ra, ga + [None] * 2)]
    write(os.path.join(c, "expect", "outfor.csv"), ["store"] + OUTFOR_HEAD,
          outfor_rows("sales", months(2021, 1, 20), ra, "1"))

    # spool_three: three series side by side, the third all missing: it fails
    # (status 3000, message 2001) and its OUT= column has no values; the
    # others are forecast as if alone.
    c = case_dir("spool_three")
    a = noisy_walk(31, 16, 10.0, step=0.5, noise=1.0)
    b = noisy_walk(32, 16, 1000.0, step=20.0, noise=30.0)
    d16 = months(2022, 1, 16)
    write(os.path.join(c, "wide.csv"), ["date", "a", "b", "c"], [(d, x, y, None) for d, x, y in zip(d16, a, b)])
    _, ra = esm.ses_rows(a, 4)
    _, rb = esm.ses_rows(b, 4)
    d20b = months(2022, 1, 20)
    write(os.path.join(c, "expect", "outfor.csv"), OUTFOR_HEAD,
          outfor_rows("a", d20b, ra) + outfor_rows("b", d20b, rb))
    write(os.path.join(c, "expect", "out.csv"), ["date", "a", "b", "c"],
          [(d, cell(a[i] if i < 16 else ra[i][1]), cell(b[i] if i < 16 else rb[i][1]), "")
           for i, d in enumerate(d20b)])

    # spool_by: two series side by side in two BY groups of different
    # lengths; the spool is reset per group and each series is fit alone.
    c = case_dir("spool_by")
    e1, e2 = noisy_walk(41, 14, 20.0), noisy_walk(42, 14, 70.0, step=2.0, noise=4.0)
    w1, w2 = noisy_walk(43, 12, 30.0), noisy_walk(44, 12, 5.0, step=0.3, noise=0.6)
    de, dw = months(2023, 1, 14), months(2023, 3, 12)
    write(os.path.join(c, "both.csv"), ["shop", "date", "u", "v"],
          [("east", d, p, q) for d, p, q in zip(de, e1, e2)] + [("west", d, p, q) for d, p, q in zip(dw, w1, w2)])
    rows = []
    for shop, dates, us, vs in (("east", months(2023, 1, 16), e1, e2), ("west", months(2023, 3, 14), w1, w2)):
        _, ru = esm.ses_rows(us, 2)
        _, rv = esm.ses_rows(vs, 2)
        rows += outfor_rows("u", dates, ru, shop) + outfor_rows("v", dates, rv, shop)
        out_rows = [(shop, d, cell(us[i] if i < len(us) else ru[i][1]), cell(vs[i] if i < len(vs) else rv[i][1]))
                    for i, d in enumerate(dates)]
        if shop == "east":
            all_out = out_rows
        else:
            all_out += out_rows
    write(os.path.join(c, "expect", "outfor.csv"), ["shop"] + OUTFOR_HEAD, rows)
    write(os.path.join(c, "expect", "out.csv"), ["shop", "date", "u", "v"], all_out)


    # transform: SIMPLE fitted to the log of a (mean back-transform) and to
    # the square root of b (median back-transform). The model's rows on the
    # transformed scale come from the oracle; the way back is the normal
    # theory of each inverse: for the log the lognormal mean exp(p + s^2/2)
    # with standard deviation mean*sqrt(exp(s^2) - 1); for the square root
    # the median p^2 with the spread of q = X^2, X ~ N(p, s), about it:
    # E q = p^2 + s^2, Var q = s^2 (2 s^2 + 4 p^2), so sqrt(Var q + s^4).
    # Limits are the plain inverses of the limits, errors are in the data.
    # c is a with one value 0: its log can't be taken, so it fails alone.
    c = case_dir("transform")
    ta = noisy_walk(51, 20, 60.0, step=2.0, noise=6.0)
    tb = noisy_walk(52, 20, 400.0, step=10.0, noise=30.0)
    d20t = months(2021, 1, 20)
    tc = [0.0 if i == 7 else v for i, v in enumerate(ta)]  # no log of 0: c fails and has no rows
    write(os.path.join(c, "three.csv"), ["date", "a", "b", "c"], zip(d20t, ta, tb, tc))

    def back(rows, xs, inverse, centre):
        out = []
        for (_, p, lo, up, _, sd), a in zip(rows, xs + [None] * (len(rows) - len(xs))):
            m, s = centre(p, sd)
            out.append((a, m, inverse(lo), inverse(up), None if a is None else a - m, s))
        return out

    def lognormal(p, s):
        m = math.exp(p + s * s / 2)
        return m, m * math.sqrt(math.expm1(s * s))

    def sqrt_median(p, s):
        return p * p, math.sqrt(s * s * (2 * s * s + 4 * p * p) + s ** 4)

    _, ra = esm.ses_rows([math.log(v) for v in ta], 3)
    _, rb = esm.ses_rows([math.sqrt(v) for v in tb], 3)
    ra = back(ra, ta, math.exp, lognormal)
    rb = back(rb, tb, lambda v: v * v, sqrt_median)
    d23t = months(2021, 1, 23)
    write(os.path.join(c, "expect", "outfor.csv"), OUTFOR_HEAD,
          outfor_rows("a", d23t, ra) + outfor_rows("b", d23t, rb))

    # transform_auto: SIMPLE with TRANSFORM=AUTO is fitted twice, to the data
    # and to their log (mean back-transform), and the fit with the smaller
    # RMSE of the one-step predictions over the whole series wins. g grows
    # by a steady rate with noise in proportion (the log wins); h holds a
    # level of 40 with deep dips to about 10 in one month of five, which the
    # log smooths as if they were as big as the level (the data win). The
    # script insists on a clear margin, so that the spread of the engine's
    # weight can't turn the choice.
    c = case_dir("transform_auto")
    rnd = random.Random(61)
    g = [round(20.0 * 1.08 ** t * math.exp(0.15 * (rnd.random() - 0.5)), 2) for t in range(24)]
    rnd = random.Random(101)
    h = [round(40.0 - (30.0 if rnd.random() < 0.2 else 0.0) + 4.0 * (rnd.random() - 0.5), 1) for _ in range(24)]
    write(os.path.join(c, "two.csv"), ["date", "g", "h"], zip(d24, g, h))

    def rmse(xs, rows):
        return math.sqrt(sum((a - r[1]) ** 2 for a, r in zip(xs, rows)) / len(xs))

    out_rows, est_rows = [], []
    for name, xs in (("g", g), ("h", h)):
        _, plain = esm.ses_rows(xs, 2)
        _, logr = esm.ses_rows([math.log(v) for v in xs], 2)
        logr = back(logr, xs, math.exp, lognormal)
        e0, e1 = rmse(xs, plain), rmse(xs, logr)
        assert abs(e0 - e1) > 0.02 * min(e0, e1), (name, e0, e1)
        rows, trns = (logr, "LOG") if e1 < e0 else (plain, "NONE")
        out_rows += outfor_rows(name, months(2020, 1, 26), rows)
        est_rows.append((name, trns, "SIMPLE", "LEVEL"))
    assert [r[1] for r in est_rows] == ["LOG", "NONE"], est_rows
    write(os.path.join(c, "expect", "outfor.csv"), OUTFOR_HEAD, out_rows)
    write(os.path.join(c, "expect", "outest.csv"), ["_NAME_", "_TRANSFORM_", "_MODEL_", "_PARM_"], est_rows)
    # summary_stat: OUTSUM= and OUTSTAT= of three series side by side with
    # BACK=4, in the order of the FORECAST statements. s is SIMPLE: its FIT
    # row over the first 20 periods, its FORECAST row over the 4 held back
    # (no parameters; the random walk of MRAE is the last fitted actual), its
    # summary the sum of the 6 leads. e has no value: status 3000, no
    # OUTSTAT= row. f has MODEL=NONE: described over its used range (the
    # leading missing month is outside it, the inner one counts), status 0,
    # no forecasts and no OUTSTAT= row.
    c = case_dir("summary_stat")
    fl = [None, 5.0, 6.5, None, 4.0, 8.0, 7.5] + [6.0 + (i % 3) for i in range(17)]
    write(os.path.join(c, "wide.csv"), ["date", "s", "f", "e"], [(*r, None) for r in zip(d24, sales, fl)])
    rows = [["s", 0] + describe(sales[:20]) + ses_summary(sales[:20], 6), ["e", 3000, 0, 0, 0] + [None] * 14,
            ["f", 0] + describe(fl[1:20]) + [None] * 10]
    write(os.path.join(c, "expect", "sum.csv"), SUM_HEAD + ["_LEAD%d_" % i for i in range(1, 7)],
          [[cell(v) for v in r] for r in rows])
    _, fit = esm.ses_rows(sales[:20], 6)
    write(os.path.join(c, "expect", "stat.csv"), FIT_HEAD,
          [[cell(v) for v in fit_row("s", "FIT", sales[:20], [r[1] for r in fit[:20]], 1)],
           [cell(v) for v in fit_row("s", "FORECAST", sales[20:], [fit[20][1]] * 4, 0, last=sales[19])]])

    # croston: Croston's method with SIMPLE smoothing of intervals and sizes
    # and no transformation (the IDM statement) on 44 months with 14 demands
    # whose sizes grow and whose intervals shorten, so both weights lie inside
    # their bounds; the last demand lies 10 months back, so the interval
    # forecast is the elapsed time. z has no demand at all: it fails alone (status 6000, message
    # 8111 with its name) and keeps its history in OUT=.
    c = case_dir("croston")
    d44 = months(2021, 1, 44)
    demand = [0.0] * 44
    for t, v in zip([1, 5, 9, 12, 16, 19, 21, 23, 24, 26, 28, 29, 31, 34], [3, 2, 4, 3, 5, 4, 6, 7, 6, 8, 7, 9, 8, 10]):
        demand[t] = float(v)
    write(os.path.join(c, "demand.csv"), ["date", "a", "z"], [(d, v, 0) for d, v in zip(d44, demand)])
    rows, (wi, ws), rate = croston.croston(demand, 4)
    d48 = months(2021, 1, 48)
    crow = [(a, p, lo, up, st, sd) for (p, sd, lo, up, st), a in zip(rows, demand + [None] * 4)]
    write(os.path.join(c, "expect", "outfor.csv"), OUTFOR_HEAD, outfor_rows("a", d48, crow))
    write(os.path.join(c, "expect", "out.csv"), ["date", "a", "z"],
          [(d, cell(demand[i] if i < 44 else rate), 0 if i < 44 else None) for i, d in enumerate(d48)])
    write(os.path.join(c, "expect", "outest.csv"), ["_NAME_", "_MODEL_", "_TRANSFORM_", "_PARM_", "_EST_"],
          [("a", "CROSTON", "NONE", "LEVEL", esm.fmt(wi)), ("a", "CROSTON", "NONE", "LEVEL", esm.fmt(ws))])
    write(os.path.join(c, "expect", "outsum.csv"), SUM_HEAD + ["_LEAD1_", "_LEAD4_"],
          [["a", 0] + [cell(v) for v in describe(demand)] + [cell(4 * rate), "", "", "", cell(rate), cell(rate)],
           ["z", 6000] + [cell(v) for v in describe([0.0] * 44)] + ["", "", "", "", "", ""]])

    # croston_tables: the series a of croston with PRINT=(SUMMARY ESTIMATES
    # FORECASTS). The Demands table has a row for each of the 14 demands and
    # one for the next, from the oracle's demand rows; DemandSummary the
    # statistics of the complete intervals q_1..q_13, of the 14 sizes and of
    # the average demands s_i / q_i, i >= 1 (statistics module: sample
    # standard deviation). A demand row: its number from 1, the interval,
    # its prediction and one-step standard error, the same of the size, and
    # the rate's actual, prediction, standard error, limits and stock (the
    # rate over the interval less the size).
    c = case_dir("croston_tables")
    write(os.path.join(c, "demand.csv"), ["date", "a"], zip(d44, demand))
    dem = []
    croston.croston(demand, 4, by_demand=dem)
    write(os.path.join(c, "expect", "demands.csv"), ["INDEX", "INTERVAL", "PINTERVAL", "SINTERVAL", "SIZE", "PSIZE",
          "SSIZE", "ACTUAL", "PREDICT", "STD", "LOWER", "UPPER", "STOCK"], [[cell(v) for v in r] for r in dem])
    comps = [[float(r[1]) for r in dem[1:-1]], [r[4] for r in dem[:-1]], [r[7] for r in dem[1:-1]]]
    write(os.path.join(c, "expect", "summary.csv"), ["TOTAL", "MIN", "MAX", "AVG", "STD", "RANGE"],
          [[cell(f(x)) for f in (sum, min, max, statistics.mean, statistics.stdev)] + [cell(max(x) - min(x))]
           for x in comps])
    # Its row of ForecastSummary: the flat rate in each of the 4 horizons,
    # their sum from STARTSUM=1 as the prediction, and no limits of a sum.
    write(os.path.join(c, "expect", "forsum.csv"), ["H1", "H2", "H3", "H4", "PREDICT", "STD", "LOWER", "UPPER"],
          [[cell(rate)] * 4 + [cell(4 * rate), "", "", ""]])

    # bestall: MODEL=BESTALL decides per series. a (above) has a median
    # demand interval of 2, at least INTERMITTENT=2: Croston's method as in
    # croston. b = 10 + 2t has a demand every month (median interval 1): the
    # smoothing path, where with SEASONALITY=1 BEST chooses among SIMPLE,
    # LINEAR and DAMPTREND, and LINEAR predicts the line exactly (best_line).
    c = case_dir("bestall")
    line = [10.0 + 2 * t for t in range(44)]
    write(os.path.join(c, "demand.csv"), ["date", "a", "b"], [(d, v, w) for d, v, w in zip(d44, demand, line)])
    brow = [(a, 10.0 + 2 * t, None, None, None if a is None else 0.0, None)
            for t, a in enumerate(line + [None] * 4)]
    write(os.path.join(c, "expect", "outfor.csv"), ["_NAME_", "date", "ACTUAL", "PREDICT"],
          [r[:4] for r in outfor_rows("a", d48, crow) + outfor_rows("b", d48, brow)])

    # trend_season: raw records summed by month (ACCUMULATE=TOTAL). OUTTREND=
    # has one row per month of the frame, the empty May included (NOBS 0,
    # its statistics missing), with the statistics of the records that fall
    # into it; OUTSEASON= the same by month of the year, where January joins
    # two years. A missing quantity counts in NOBS and NMISS only. The
    # statistics come from the statistics module: sample standard deviation,
    # CSS = sum of squared deviations, the median of an even count the mean
    # of the middle two. OUTPROCINFO= counts one series, requested, none
    # failed.
    c = case_dir("trend_season")
    rnd = random.Random(7)
    recs = []
    for k in range(13):
        y, m = 2022 + (k // 12), k % 12 + 1
        if (y, m) == (2022, 5):
            continue
        for day in sorted(rnd.sample(range(1, 28), 2 + k % 3)):
            recs.append((datetime.date(y, m, day).isoformat(), round(rnd.uniform(1, 20), 1)))
    recs[7] = (recs[7][0], None)
    write(os.path.join(c, "tx.csv"), ["date", "qty"], recs)

    def group_stats(vals):
        v = [x for x in vals if x is not None]
        if not v:
            return [len(vals), 0, len(vals)] + [None] * 9
        mean = sum(v) / len(v)
        css = sum((x - mean) ** 2 for x in v)
        sd = statistics.stdev(v) if len(v) > 1 else None
        return [len(vals), len(v), len(vals) - len(v), min(v), max(v), max(v) - min(v), sum(v), mean, sd,
                sum(x * x for x in v), css, statistics.median(v)]

    head = ["NOBS", "N", "NMISS", "MIN", "MAX", "RANGE", "SUM", "MEAN", "STDDEV", "USS", "CSS", "MEDIAN"]
    trows = []
    for k, d in enumerate(months(2022, 1, 13)):
        vals = [q for dd, q in recs if dd[:7] == d[:7]]
        trows.append(["qty", d, k % 12 + 1] + [cell(float(v)) if isinstance(v, float) else v
                                               for v in group_stats(vals)])
    write(os.path.join(c, "expect", "trend.csv"), ["_NAME_", "date", "_SEASON_"] + head, trows)
    srows = []
    for m in range(1, 13):
        vals = [q for dd, q in recs if int(dd[5:7]) == m]
        srows.append(["qty", m] + [cell(float(v)) if isinstance(v, float) else v for v in group_stats(vals)])
    write(os.path.join(c, "expect", "season.csv"), ["_NAME_", "_SEASON_"] + head, srows)
    write(os.path.join(c, "expect", "info.csv"), ["_SOURCE_", "_NAME_", "_STAGE_", "_VALUE_"],
          [("QVT", "SERIES", "ALL", 1), ("QVT", "REQUESTED", "ALL", 1), ("QVT", "FAILURES", "ALL", 0)])

    # print_tables: the first 8 values of simple_one's series, SIMPLE, LEAD=2,
    # with the printed Forecasts and FitStatistics tables in the HTML report.
    # The tables must carry the numbers of the OUTFOR= and OUTSTAT= rows,
    # which are the oracle's: its forecasts, and the fit over 8 predictions.
    c = case_dir("print_tables")
    write(os.path.join(c, "series.csv"), ["date", "sales"], zip(d24[:8], sales[:8]))
    _, rows = esm.ses_rows(sales[:8], 2)
    write(os.path.join(c, "expect", "outfor.csv"), OUTFOR_HEAD,
          outfor_rows("sales", months(2020, 1, 10), rows))
    write(os.path.join(c, "expect", "stat.csv"), FIT_HEAD,
          [[cell(v) for v in fit_row("sales", "FIT", sales[:8], [r[1] for r in rows[:8]], 1)]])

    # performance: BACK=3 on two series in two BY groups, SIMPLE fitted to
    # their first 5 months; the held-back months lie at chosen offsets from
    # the last fitted actual r, some outside the oracle's limits. The printed
    # Performance table of the first series and the Cumulative column of
    # PerformanceOverall, in percent, from the textbook errors e = a - p:
    # percent e / a, symmetric e / ((a + p) / 2), relative e / (a - r) (r is
    # the random walk's forecast); their minimum, maximum, mean, mean
    # absolute, median absolute, geometric mean absolute; the share of
    # actuals outside the limits.
    c = case_dir("performance")
    offsets = {"a": [0.4, -6.0, 7.5, 9.0, -1.1, -12.0], "b": [-0.8, 5.5, 0.2, 0.6, 4.4, -7.7]}
    wide, errs = [], []
    for g, (seed, d8) in enumerate([(34, months(2020, 1, 8)), (49, months(2021, 1, 8))]):
        full = {}
        for v, base in (("a", 100.0), ("b", 60.0)):
            x = noisy_walk(seed + (v == "b"), 5, base)
            full[v] = x = x + [round(x[-1] + o, 1) for o in offsets[v][3 * g:3 * g + 3]]
            for h, (_, p, lo, up, _, _) in enumerate(esm.ses_rows(x[:5], 3)[1][5:]):
                a, e = x[5 + h], x[5 + h] - p
                errs.append((e / a, e / ((a + p) / 2), e / (a - x[4]), a < lo or a > up))
        wide += [(g, d, full["a"][i], full["b"][i]) for i, d in enumerate(d8)]
    write(os.path.join(c, "wide.csv"), ["group", "date", "a", "b"], wide)

    def stats(es):
        ab = [abs(v) for v in es]
        return [min(es), max(es), statistics.fmean(es), statistics.fmean(ab), statistics.median(ab),
                statistics.geometric_mean(ab)]

    write(os.path.join(c, "expect", "performance.csv"), "H1 H2 H3 MIN MAX MEAN AMEAN MDAMEAN GMAMEAN".split(),
          [[cell(100 * v) for v in es + stats(es)] for es in ([r[k] for r in errs[:3]] for k in range(3))])
    cum = [stats([r[0] for r in errs])[2], stats([r[1] for r in errs])[5], stats([r[2] for r in errs])[3],
           statistics.fmean(r[3] for r in errs)]
    write(os.path.join(c, "expect", "overall.csv"), ["PCT_MEAN", "SYM_GMAMEAN", "REL_AMEAN", "OUTSIDE"],
          [[cell(100 * v) for v in cum]])

    # custom_interval: a 4-4-5 fiscal calendar of the user's (periods of 28,
    # 28 and 35 days), given by a data set with BEGIN and SEASON (the fiscal
    # period of the year, 1 to 12) and named FISCAL by the host option
    # INTERVALDS. The calendar starts with period 10 on Sunday 2021-10-03,
    # the data one row later, so the first season comes from the calendar,
    # not from its first row. Raw records on random days are summed by
    # fiscal period: OUTTREND= has a row per period, dated at its BEGIN and
    # with its SEASON; OUTSEASON= a row per fiscal period of the year (the
    # largest SEASON, 12, makes the cycle), periods of two years joined;
    # OUTFOR= is SES on the period totals, dated at the BEGIN of each period,
    # the leads at the periods behind the data. A second step sums by
    # FISCAL3, three rows from the calendar's first: its OUTFOR= rows are
    # dated at rows 0, 3, 6, ... and hold SES on those sums (the first holds
    # rows 1 and 2 only, row 0 having no records).
    c = case_dir("custom_interval")
    periods = [(p - 1) % 12 + 1 for p in range(10, 10 + 27)]
    begins, d = [], datetime.date(2021, 10, 3)
    for p in periods:
        begins.append(d)
        d += datetime.timedelta(days=35 if p % 3 == 0 else 28)
    write(os.path.join(c, "fiscal.csv"), ["BEGIN", "SEASON"],
          [(b.isoformat(), p) for b, p in zip(begins, periods)])
    rnd = random.Random(445)
    rows_used, recs, totals = range(1, 21), [], {}
    for k in rows_used:
        length = (begins[k + 1] - begins[k]).days
        days = sorted(rnd.sample(range(length), 3 + k % 3))
        vals = [round(rnd.uniform(20, 40) + 2 * k, 1) for _ in days]
        recs += [((begins[k] + datetime.timedelta(days=dd)).isoformat(), v) for dd, v in zip(days, vals)]
        totals[k] = vals
    write(os.path.join(c, "tx.csv"), ["date", "qty"], recs)
    head = ["NOBS", "N", "NMISS", "MIN", "MAX", "RANGE", "SUM", "MEAN", "STDDEV", "USS", "CSS", "MEDIAN"]

    def stats_cells(vals):
        return [cell(float(v)) if isinstance(v, float) else v for v in group_stats(vals)]

    write(os.path.join(c, "expect", "trend.csv"), ["_NAME_", "date", "_SEASON_"] + head,
          [["qty", begins[k].isoformat(), periods[k]] + stats_cells(totals[k]) for k in rows_used])
    write(os.path.join(c, "expect", "season.csv"), ["_NAME_", "_SEASON_"] + head,
          [["qty", q] + stats_cells([x for k in rows_used if periods[k] == q for x in totals[k]])
           for q in range(1, 13)])
    sums = [sum(totals[k]) for k in rows_used]
    _, rows = esm.ses_rows(sums, 3)
    write(os.path.join(c, "expect", "outfor.csv"), OUTFOR_HEAD,
          outfor_rows("qty", [begins[k].isoformat() for k in range(1, 24)], rows))
    qsums = [sum(sum(totals[k]) for k in rows_used if k // 3 == q) for q in range(7)]
    _, rows = esm.ses_rows(qsums, 2)
    write(os.path.join(c, "expect", "outforq.csv"), OUTFOR_HEAD,
          outfor_rows("qty", [begins[3 * q].isoformat() for q in range(9)], rows))

if __name__ == "__main__":
    main()
