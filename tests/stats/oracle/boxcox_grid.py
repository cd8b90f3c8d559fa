"""Oracle for tests/stats/transform_test.cpp: the mean Box-Cox back-transform
ztstbe(0.25, 1.0, c = 1.0, kTrnsGridK, kTrnsGridB) (expected y and sy).

The mean of g(X), X ~ N(x, sd^2), is a weighted sum over the grid x +- i sd/b,
i = 0 .. k, with weights w[i] = exp(-bb^2 / 2) / (b sqrt(2 pi)), bb = i/b;
both bb and the offset d grow by repeated addition, as the tested code does.
The inverse Box-Cox g(u) = (c u + 1)^(1/c) is defined only for c u + 1 > 0,
so a lower point at or below 0 adds nothing (here c = 1: g(u) = u + 1; for
x = 0.25 only the lower points 0.15 and 0.05 count). sy = sqrt(E g^2 - (E g)^2).

The routine stops once both new terms fall below S/k of the running sum
(here at i = 66, 6.6 sd out); the sum over the whole grid is printed too,
since the two differ by about 1e-10, inside the test's 1e-9.

Run: python3 tests/stats/oracle/boxcox_grid.py   (well under a second)
"""
import math

K, B = 100, 10                      # kTrnsGridK, kTrnsGridB
S = 1.053671212772351e-08           # sqrt(2^-53), the relative size that ends the sum early
H = 8.988465674311578e+307          # overflow bound of the sums


def weights(k, b):
    ib = 1.0 / b
    w = [ib * 0.3989422804014327]   # 1/sqrt(2 pi), times the step
    bb = 0.0
    for _ in range(k):
        bb += ib
        w.append(math.exp(-0.5 * bb * bb) * w[0])
    return w


def g(u, c):  # inverse Box-Cox for c = 1 and the general power; c u + 1 must be > 0 here
    return u * c + 1 if c == 1 else (u * c + 1) ** (1 / c)


def mean_backtransform(x, sd, c, k, b, early_stop=True):
    w = weights(k, b)
    z0 = g(x, c)
    sum1 = w[0] * z0
    sum2 = z0 * sum1
    h = sd / b
    d = h
    for i in range(1, k + 1):
        u = g(x + d, c)
        a = w[i] * u
        sum2 += u * a
        lo = g(x - d, c) if x - d > 0 else 0.0   # points at or below 0 are left out
        bb = w[i] * lo
        if sum2 > H or bb > H:
            raise OverflowError(i)
        sum2 += lo * bb
        sum1 += a + bb
        if early_stop and abs(a) < (S / k) * sum1 and abs(bb) < (S / k) * sum1:
            break
        d += h
    var = sum2 - sum1 * sum1
    return sum1, math.sqrt(var) if var > 0 else 0.0


for stop in (True, False):
    y, sy = mean_backtransform(0.25, 1.0, 1.0, K, B, stop)
    print("with the early stop:" if stop else "over the whole grid:")
    print("  y  =", repr(y), "  test: 1.1352525804292821 (+- 1e-9)")
    print("  sy =", repr(sy), "  test: 1.0562918776985504 (+- 1e-9)")
