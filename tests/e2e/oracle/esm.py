"""Independent oracle of simple exponential smoothing and Holt's linear method,
written from the published recursions, for the expected rows of the
end-to-end cases.

Conventions the engine documents and this oracle reproduces:
  * Start values come from the END of the series (the last usable value as
    level; for Holt the least-squares slope of the series on time, sign
    reversed, as trend); the recursion first runs backward over the series,
    then Holt's trend is turned (L += T, T = -T), then the forward pass gives
    the one-step errors.  (Backcasting: Box, Jenkins & Reinsel, Time Series
    Analysis, ch. 7; Holt 1957 / Gardner 1985 for the recursions.)
  * The objective is the mean squared one-step error of the forward pass;
    the weights lie in [0.001, 0.999].
  * The error variance of the limits is SSE / (nobs - p), p the number of
    weights; lead-k variance is sigma^2 * (1 + sum_{j<k} psi_j^2) with
    psi_j = w (SES) and psi_j = w + j*w*g (Holt), the MA(infinity) weights.

The weights are found by a grid of 999 (SES) or 199 x 199 (Holt) points and
then golden-section search (SES) or cyclic golden-section coordinate descent
(Holt) to |dw| < 1e-12, so the oracle's minimiser is exact to ~1e-9 in the
weights; the engine stops its Gauss-Newton iteration when the relative offset
falls below 1e-4, which moves forecasts by at most about 1e-4 * RMSE.
"""
import math
from statistics import NormalDist

LO, HI = 0.001, 0.999
GOLD = (math.sqrt(5) - 1) / 2


def is_missing(v):
    return v is None


def ses_pass(x, w):
    """Backcast then forward pass. Returns (mse, preds, final level, nobs)."""
    n = len(x)
    last = None
    for t in range(n - 1, 0, -1):
        if x[t] is not None:
            last = t
            break
    if last is None:
        raise ValueError("fewer than two usable values")
    L = x[last]
    for t in range(n - 1, -1, -1):
        if x[t] is not None:
            L = w * x[t] + (1 - w) * L
    preds, sse, nobs = [], 0.0, 0
    for t in range(n):
        preds.append(L)
        if x[t] is not None:
            e = L - x[t]
            sse += e * e
            nobs += 1
            L = w * x[t] + (1 - w) * L
    return sse / nobs, preds, L, nobs


def ols_slope(x):
    pts = [(t + 1, v) for t, v in enumerate(x) if v is not None]
    c = len(pts)
    tb = sum(t for t, _ in pts) / c
    yb = sum(v for _, v in pts) / c
    d = sum((t - tb) ** 2 for t, _ in pts)
    return sum((t - tb) * (v - yb) for t, v in pts) / d


def holt_pass(x, w, g):
    n = len(x)
    last = None
    for t in range(n - 1, 0, -1):
        if x[t] is not None:
            last = t
            break
    if last is None:
        raise ValueError("fewer than two usable values")
    L, T = x[last], -ols_slope(x)

    def step(L, T, v):
        xhat = L + T
        if v is None:
            return xhat, T  # a missing value extends the line
        L2 = (1 - w) * xhat + w * v
        return L2, (1 - g) * T + g * (L2 - L)

    for t in range(n - 1, -1, -1):
        L, T = step(L, T, x[t])
    L, T = L + T, -T  # the turn: one step back, trend pointing forward
    preds, sse, nobs = [], 0.0, 0
    for t in range(n):
        xhat = L + T
        preds.append(xhat)
        if x[t] is not None:
            sse += (xhat - x[t]) ** 2
            nobs += 1
        L, T = step(L, T, x[t])
    return sse / nobs, preds, L, T, nobs


def golden(f, a, b, tol=1e-12):
    c, d = b - GOLD * (b - a), a + GOLD * (b - a)
    fc, fd = f(c), f(d)
    while b - a > tol:
        if fc <= fd:
            b, d, fd = d, c, fc
            c = b - GOLD * (b - a)
            fc = f(c)
        else:
            a, c, fc = c, d, fd
            d = a + GOLD * (b - a)
            fd = f(d)
    return (a + b) / 2


def fit_ses(x):
    grid = [LO + i * (HI - LO) / 998 for i in range(999)]
    vals = [ses_pass(x, w)[0] for w in grid]
    i = min(range(len(grid)), key=lambda k: vals[k])
    a, b = grid[max(i - 1, 0)], grid[min(i + 1, len(grid) - 1)]
    return golden(lambda w: ses_pass(x, w)[0], a, b)


def fit_holt(x):
    m = 199
    grid = [LO + i * (HI - LO) / (m - 1) for i in range(m)]
    best = min(((holt_pass(x, w, g)[0], w, g) for w in grid for g in grid))
    _, w, g = best
    h = (HI - LO) / (m - 1)
    for _ in range(200):
        w0, g0 = w, g
        w = golden(lambda u: holt_pass(x, u, g)[0], max(LO, w - 2 * h), min(HI, w + 2 * h))
        g = golden(lambda u: holt_pass(x, w, u)[0], max(LO, g - 2 * h), min(HI, g + 2 * h))
        if abs(w - w0) < 1e-12 and abs(g - g0) < 1e-12:
            break
    return w, g


def z_value(alpha):
    return NormalDist().inv_cdf(1 - alpha / 2)


def ses_rows(x, lead, alpha=0.05, w=None):
    """Rows (actual, predict, lower, upper, error, std) of the fit range and the leads."""
    if w is None:
        w = fit_ses(x)
    mse, preds, L, nobs = ses_pass(x, w)
    se2 = mse * nobs / (nobs - 1) if nobs >= 2 else mse
    z = z_value(alpha)
    rows = []
    for v, p in zip(x, preds):
        sd = math.sqrt(se2)
        rows.append((v, p, p - z * sd, p + z * sd, None if v is None else v - p, sd))
    for k in range(1, lead + 1):
        sd = math.sqrt(se2 * ((k - 1) * w * w + 1))
        rows.append((None, L, L - z * sd, L + z * sd, None, sd))
    return w, rows


def holt_rows(x, lead, alpha=0.05, wg=None):
    w, g = fit_holt(x) if wg is None else wg
    mse, preds, L, T, nobs = holt_pass(x, w, g)
    se2 = mse * nobs / (nobs - 2) if nobs >= 3 else mse
    z = z_value(alpha)
    rows = []
    for v, p in zip(x, preds):
        sd = math.sqrt(se2)
        rows.append((v, p, p - z * sd, p + z * sd, None if v is None else v - p, sd))
    acc = 1.0
    for k in range(1, lead + 1):
        if k > 1:
            acc += (w + (k - 1) * w * g) ** 2
        sd = math.sqrt(se2 * acc)
        p = L + k * T
        rows.append((None, p, p - z * sd, p + z * sd, None, sd))
    return (w, g), rows


def fmt(v):
    return "" if v is None else repr(float(v))
