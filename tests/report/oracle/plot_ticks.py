"""Oracle for tests/report/plots_test.cpp, TEST(PlotTicks, PeriodList) (and the
value and label lists of TEST(PlotTicks, FrequencyList)).

Applies the periodogram's period-axis tick rules to math.pi step by step in
floats: evenly spaced frequencies by repeated addition, the seasonal
frequency 2 pi / s moved into the list, "%5.3f" values and period labels
2 pi / w ("%d" within 0.1 above a whole number, else "%.1f", infinity at 0).

Run: python3 tests/report/oracle/plot_ticks.py   (well under a second)
Prints each case's value list and label list as the test's strings.
"""
import math

INF = "(*ESC*){unicode '221e'x}"
PI_SYM = "(*ESC*){unicode pi}"


def period_ticks(n, seasonality, maxfreq):
    pi = math.pi
    if maxfreq is None or not maxfreq > 0 or maxfreq >= pi:
        maxfreq = pi
    seas = 2 * pi / seasonality if seasonality >= 1 else None
    J = min(12, max(n, 4) // 2)
    delx = maxfreq / (J - 1) if J >= 2 else maxfreq
    w, v = [], 0.0
    for _ in range(J):
        w.append(v)
        v += delx
    if seas is not None and seas <= maxfreq and J > 1:
        i = next((i for i in range(1, J) if w[i] > seas), None)
        if i is None:
            pass
        elif i == 1:
            if seasonality < 53:
                w[1] = seas
        elif seas - w[i - 1] < 0.1:
            w[i - 1] = seas
        elif i == J - 1:          # the last tick: the one before takes it, the last goes
            w[i - 1] = seas
            del w[i]
        elif w[i] - seas >= 0.1:  # far from both: the lower takes it, the upper goes
            w[i - 1] = seas
            del w[i]
        else:
            w[i] = seas
    labels = []
    for x in w:
        if x <= 0:
            labels.append(INF)
            continue
        T = 2 * pi / x
        labels.append("%d" % int(T) if abs(math.floor(T) - T) < 0.1 else "%.1f" % T)
    # Each list holds at most 256 units; these lists stay far below that.
    return " ".join("%5.3f" % x for x in w), " ".join('"%s"' % s for s in labels), seas


def frequency_ticks(maxfreq):
    f = maxfreq / math.pi
    top, bot = math.floor(f + 0.5), 1
    while abs(top / bot - f) >= maxfreq * 0.1:
        bot *= 2
        top = math.floor(f * bot + 0.5)
    vals = "".join(" %5.3f" % ((k * top / bot) * 3.141492653589793) for k in (0, 0.25, 0.5, 0.75, 1))
    labels = ['"0"']
    for j in range(1, 5):
        num, den = j * top, 4 * bot
        g = math.gcd(num, den) if num > 0 and den > 0 else 0
        num, den = (num // g, den // g) if g else (num, den)
        s = PI_SYM if num == 1 and den == 1 else \
            PI_SYM + "/%d" % den if num == 1 else "%d" % num + PI_SYM + "/%d" % den
        labels.append('"%s"' % s)
    return vals, " ".join(labels)


pi = math.pi
print("PeriodList: {n, seasonality, maxfreq} -> values | labels | seasFreqOut")
for n, s, mf in [(2, 0, pi), (100, 12, pi), (100, 0, 7.0), (100, 4, pi), (10, 7, pi),
                 (100, 60, pi), (30, 3, pi), (6, 3, pi), (100, 12, pi / 2)]:
    vals, labels, seas = period_ticks(n, s, mf)
    print(f"{{{n}, {s}, {mf!r}}}\n  {vals}\n  {labels}\n  {seas!r}")
print("FrequencyList: maxfreq -> values | labels")
for mf in (pi, pi / 2, 0.35 * pi):
    vals, labels = frequency_ticks(mf)
    print(f"{mf!r}\n  [{vals}]\n  {labels}")
