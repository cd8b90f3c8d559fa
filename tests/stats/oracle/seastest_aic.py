"""Oracle for tests/stats/seastest_test.cpp, TEST(SeasonalityTest, Verdicts).

Regenerates each case's series with the same LCG and works the seasonality
test step by step: AR(1) by the lag-1 autocorrelation, seasonal means, GLS of
the seasonal means under AR(1) errors by dense X'TX and X'Tz' solved by
Gauss-Jordan, and the F upper tail as the regularized incomplete beta
I_v(ddf/2, ndf/2), v = ddf / (F ndf + ddf), integrated by Simpson's rule
with 800000 panels. Standard library only; None is a missing value.

Run: python3 tests/stats/oracle/seastest_aic.py   (about 2 s)
Prints per case the verdict and aic[0..2], -1 for "not written".
"""
import math

EPS, TINY, BIG = 1e-8, 1.491668147e-154, 1.3407807929943e+154

def unif(s):  # Knuth's MMIX LCG, top 53 bits
    s = (s * 6364136223846793005 + 1442695040888963407) % 2**64
    return s, (s >> 11) * 2.0**-53

def trim(z):
    i = [t for t, v in enumerate(z) if v is not None]
    return z[i[0]:i[-1] + 1] if i else []

def rho1(z, zbar):  # lag-1 autocorrelation, pairs with a missing value skipped
    n, ok = len(z), [v is not None for v in z]
    m = ok.count(False)
    ss = sum((v - zbar) ** 2 for v in z if v is not None)
    if ss / (n - m) < EPS: return None
    pairs = [t for t in range(n - 1) if ok[t] and ok[t + 1]]
    r = sum((z[t] - zbar) * (z[t + 1] - zbar) for t in pairs)
    return r / (ss / ((n - (n - 1 - len(pairs))) / (n - m)))

def mse_of(z, phi, p):  # one-step residual mean square of an AR(p) with constant
    n, c, s = len(z), p, 0.0
    for t in range(p, n):
        if z[t] is None or any(z[t - j] is None for j in range(1, p + 1)):
            c += 1
            continue
        s += (z[t] - phi[0] - sum(phi[j] * z[t - j] for j in range(1, p + 1))) ** 2
    if c >= n: return None
    k = n - c - 1
    return s / k if k > 0 else s

def solve(a, rhs):  # Gauss-Jordan with partial pivoting on [a | rhs]
    n = len(a)
    w = [list(a[i]) + list(rhs[i]) for i in range(n)]
    norm = max(abs(v) for row in a for v in row)
    for c in range(n):
        p = max(range(c, n), key=lambda r: abs(w[r][c]))
        w[c], w[p] = w[p], w[c]
        if abs(w[c][c]) < norm * EPS: return None  # singular to the pivot tolerance
        d = w[c][c]
        w[c] = [v / d for v in w[c]]
        for r in range(n):
            if r != c and w[r][c] != 0.0:
                f = w[r][c]
                w[r] = [x - f * y for x, y in zip(w[r], w[c])]
    return [row[n:] for row in w]

def divide(num, den):  # saturating quotient
    if abs(den) >= 1 or abs(num) < abs(den) * BIG: return num / den
    return 0.0 if num == 0 else (BIG if num * den > 0 else -BIG)

def gls_fstat(z, m, phi, S):
    """GLS of z[t] = B[t mod m] + u[t], u AR(1) with coefficient phi; Wald F of equal B."""
    n = len(z)
    if n <= m or m < 2: return None
    c, b = -phi, 1 + phi * phi
    zf = [S[t % m] if v is None else v for t, v in enumerate(z)]
    A, R = [[0.0] * m for _ in range(m)], [[0.0] for _ in range(m)]
    for t in range(n):  # T: b on the diagonal but 1 at both ends, c beside it
        for u in range(max(t - 1, 0), min(t + 2, n)):
            w = c if t != u else (1.0 if t in (0, n - 1) else b)
            A[t % m][u % m] += w
            R[t % m][0] += w * zf[u]
    sol = solve(A, [[float(i == j) for j in range(m)] + R[i] for i in range(m)])
    if sol is None: return None
    iA, B = [row[:m] for row in sol], [row[m] for row in sol]
    d = [[B[i] - B[i + 1]] for i in range(m - 1)]  # D B, D the adjacent differences
    V = [[iA[i][j] - iA[i][j + 1] - iA[i + 1][j] + iA[i + 1][j + 1] for j in range(m - 1)]
         for i in range(m - 1)]
    x = solve(V, d)
    if x is None: return None
    return B, divide(sum(d[i][0] * x[i][0] for i in range(m - 1)), 1 - phi * phi)

def f_tail(f, ndf, ddf, panels=800000):  # P(F > f) = I_v(ddf/2, ndf/2) by Simpson
    if f < 0 or ndf <= 0 or ddf <= 0: return -4.0
    if f == 0: return 1.0
    v, a, b = ddf / (f * ndf + ddf), ddf / 2, ndf / 2
    h = v / panels
    g = lambda t: t ** (a - 1) * (1 - t) ** (b - 1)
    s = g(0.0) + g(v) + sum((4 if i % 2 else 2) * g(i * h) for i in range(1, panels))
    return s * h / 3 / math.exp(math.lgamma(a) + math.lgamma(b) - math.lgamma(a + b))

def seastest(x, lags, p, m, aic):
    pp = 0 if m >= 52 else p
    y, nmiss = list(x), 0
    for d in lags:  # differences; improper() arguments are valid in every case here
        y = [None if y[t] is None or y[t + d] is None else y[t + d] - y[t] for t in range(len(y) - d)]
        nmiss += y.count(None)
    z = trim(y)
    nz = len(z)
    if nz < nmiss + 6: return -11
    vals = [v for v in z if v is not None]
    ybar = sum(vals) / len(vals)
    r = 0.0
    if pp > 0:
        r = rho1(z, ybar)
        if r is None: return 0  # no variance: not seasonal
    phi = [(1 - r) * ybar, r] if pp else [ybar]
    mse = mse_of(z, phi, pp)
    if mse is None: return -11
    aic[0] = math.log(mse) * nz + 2 * (pp + 1) if mse > 0 else -1.7976931348623157e308
    S = []
    for s in range(m):
        sv = [z[t] for t in range(s, nz, m) if z[t] is not None]
        S.append(sum(sv) / len(sv) if sv else None)
    nmssn = S.count(None)
    S = [ybar if v is None else v for v in S]
    if nmssn == m - 1: return 0  # a single season has data
    res = lambda b: [None if v is None else v - b[t % m] for t, v in enumerate(z)]
    r = 0.0
    if pp > 0:
        r = rho1(trim(res(S)), 0.0)
        if r is None: return 1  # the seasonal means explain the series fully
    g = gls_fstat(z, m, r, S)  # the error model from here on: AR(1), coefficient r
    B, fstat = g if g else ([0.0] * m, None)
    e = res(B)
    nnmssg = len(e) - e.count(None)
    mse = mse_of(trim(e), [0.0, r], pp)
    df = nnmssg - pp - m + nmssn
    if mse is None or df < 1: return 0
    aic[1] = math.log(mse) * nz + 2 * (m + pp - nmssn) if mse > 0 else -1.7976931348623157e308
    mse = mse * (nnmssg - pp - 1) / df
    if fstat is None or mse <= TINY:
        aic[2] = 0.9999999
    elif abs(fstat) <= BIG:
        aic[2] = f_tail(fstat / ((m - nmssn - 1) * mse), m - 1 - nmssn, df)
    else:
        aic[2] = 0.9999999 if fstat > 0 else 1e-7
    return 0 if aic[0] <= aic[1] else int(aic[2] <= 0.05)

CASES = [("constant", 24, [], 1, 4), ("repeats each cycle", 25, [], 1, 5),
         ("one season only", 25, [], 1, 4), ("one season of one", 24, [], 1, 1),
         ("seasonal", 48, [], 1, 12), ("white noise", 60, [], 1, 12),
         ("52 seasons, no AR", 120, [], 5, 52), ("gaps", 20, [], 1, 5), ("gaps", 20, [1], 1, 5),
         ("empty season", 40, [], 1, 5), ("trend", 40, [1], 1, 5)]
pattern = [3, -1, 4, 1.5, -2]
for name, n, lags, p, m in CASES:
    seed, x = 99, []
    for t in range(n):
        seed, u = unif(seed)
        v = 5.0 if name == "constant" else pattern[t % 5] if name == "repeats each cycle" else u - 0.5
        if name == "one season only" and t % 4 != 0: v = None
        if name == "seasonal": v += 4 * math.sin(0.5236 * t)
        if name == "gaps": v = None if t % 3 == 1 else v + pattern[t % 5]
        if name == "empty season": v = None if t % 5 == 2 else v + pattern[t % 5]
        if name == "trend": v += pattern[t % 5] + 0.5 * t
        x.append(v)
    aic = [None] * 3
    want = seastest(x, lags, p, m, aic)
    print(f"{name!r:22} n {n:3} lags {lags} m {m:2}: {want:3}  aic",
          ", ".join("-1" if a is None else repr(a) for a in aic))
