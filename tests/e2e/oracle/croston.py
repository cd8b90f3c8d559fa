"""Independent oracle of Croston's method (Croston 1972) for the expected rows
of the intermittent end-to-end cases, with SIMPLE smoothing of both demand
components (the weights estimated by the SES oracle of esm.py) and no
transformation.

Conventions the engine documents and this oracle reproduces:
  * A demand is a period whose value departs from the base (0 here). With
    demands at periods o_0 < o_1 < ... < o_{n-1} of a series of T periods:
    sizes s_i = y[o_i]; intervals q_0 = o_0 + 1, q_i = o_i - o_{i-1},
    q_n = T - o_{n-1} (the time since the last demand, plus 1).
  * The sizes s_0..s_{n-1} and the complete intervals q_1..q_{n-1} are
    smoothed apart, each by SES with backcasting (esm.ses_pass). The
    interval prediction of demand 0 is the backcast start level, raised to
    q_0 when q_0 is larger; the raised level also starts the forward pass.
  * The interval forecast beyond the data is the last level, at least 1 and
    at least the time already elapsed, q_n. The demand rate is size over
    interval; its variance is the first-order variance of a ratio,
    (ss/I)^2 + (S si / I^2)^2, with si, ss the one-step standard errors
    sqrt(SSE / (m - 1)) of the two SES fits.
  * On the time grid, the rate predicted for demand i holds for the periods
    that lead up to it (q_i of them), and the last one for every period
    behind the last demand and the leads. The "stock" runs along: it adds
    the rate each period and gives back the demand where one occurs.
"""
import math

import esm


def split(y):
    T = len(y)
    obs = [t for t, v in enumerate(y) if v is not None and v != 0]
    sizes = [y[t] for t in obs]
    q = [obs[0] + 1] + [obs[i] - obs[i - 1] for i in range(1, len(obs))] + [T - obs[-1]]
    return obs, sizes, q


def ses_fixed_start(x, w, level):
    """One-step predictions of x from a given start level, and the last level."""
    preds = []
    for v in x:
        preds.append(level)
        level = w * v + (1 - w) * level
    return preds, level


def backcast_level(x, w):
    """The level at the beginning of x after the backward pass from the last value."""
    level = x[-1]
    for v in reversed(x):
        level = w * v + (1 - w) * level
    return level


def croston(y, lead, alpha=0.05, by_demand=None):
    """Rows (predict, std, lower, upper, stock) for the T + lead periods, the
    two weights, and the demand-rate forecast. by_demand, a list, receives a
    row for each demand and the next; see make_run_cases.py for its columns."""
    T = len(y)
    obs, sizes, q = split(y)
    n = len(sizes)
    qi = q[1:n]
    wi, ws = esm.fit_ses(qi), esm.fit_ses(sizes)
    # Interval predictions by demand: entry 0 from the (raised) start level.
    li = backcast_level(qi, wi)
    li = max(li, q[0])
    pi, last_i = ses_fixed_start(qi, wi, li)
    I = [li] + pi  # demands 0 .. n-1
    I.append(max(last_i, 1.0, q[n]))
    ls = backcast_level(sizes, ws)
    S, last_s = ses_fixed_start(sizes, ws, ls)
    S = S + [last_s]
    # One-step standard errors of the two fits (SSE from the backcast passes).
    mse_i, _, _, m_i = esm.ses_pass(qi, wi)
    mse_s, _, _, m_s = esm.ses_pass(sizes, ws)
    si = math.sqrt(mse_i * m_i / (m_i - 1))
    ss = math.sqrt(mse_s * m_s / (m_s - 1))
    z = esm.z_value(alpha)
    rate, sd = [], []
    for t in range(n + 1):
        rate.append(S[t] / I[t])
        # Demand 0 lies before the smoothing starts; it takes the one-step
        # standard errors of the fits like every other demand.
        sd.append(math.sqrt((ss / I[t]) ** 2 + (S[t] * si / I[t] ** 2) ** 2))
    for i in range(n + 1 if by_demand is not None else 0):
        s_i = sizes[i] if i < n else None
        act, stk = (None, None) if s_i is None else (s_i / q[i], rate[i] * q[i] - s_i)
        by_demand.append((i + 1, q[i], I[i], si, s_i, S[i], ss, act, rate[i], sd[i], rate[i] - z * sd[i],
                          rate[i] + z * sd[i], stk))
    rows, stock, pos = [], None, 0
    nper = T + lead
    for i in range(n + 1):
        span = nper - pos if i == n else q[i]
        for j in range(span):
            t = pos + j
            stock = (stock or 0.0) + rate[i]
            if j == span - 1 and i < n:
                stock -= sizes[i]
            p, s = rate[i], sd[i]
            rows.append((p, s, p - z * s, p + z * s, stock if t < T else None))
        pos += span
    return rows, (wi, ws), rate[n]
