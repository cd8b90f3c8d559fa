// The smoothing weight estimator for one to three weights. See esmest.hpp.
#include "smoothing/esmest.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include "run/missing.hpp"
#include "smoothing/esmdivide.hpp"
#include "stats/numeric.hpp"
#include "stats/sweep.hpp"

namespace qvt {

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();
constexpr long kNoPass = 9007199254740992L;  // nmiss of a point whose pass has not finished

int& pos(PTBNDS& b, EsmWeight w) noexcept {
  switch (w) {
    case EsmWeight::Level: return b.wlevflg;
    case EsmWeight::Trend: return b.wtreflg;
    case EsmWeight::Season: return b.wseaflg;
    case EsmWeight::Damp: break;
  }
  return b.wdamflg;
}

char& blk(PTBNDS& b, EsmWeight w) noexcept {
  switch (w) {
    case EsmWeight::Level: return b.wlevchn;
    case EsmWeight::Trend: return b.wtrechn;
    case EsmWeight::Season: return b.wseachn;
    case EsmWeight::Damp: break;
  }
  return b.wdamchn;
}

int posc(const PTBNDS& b, EsmWeight w) noexcept { return pos(const_cast<PTBNDS&>(b), w); }

void getw(const POINT& p, const ESMKSET& ks, double* w) noexcept {
  for (int i = 0; i < ks.k; ++i) w[i] = esmpw(p, ks.coord[i]);
}

double norm(const double* v, int k) noexcept {
  double s = 0.0;
  for (int i = 0; i < k; ++i) s += v[i] * v[i];
  return std::sqrt(s);
}

// Limits a direction to length 1, keeping its orientation; returns the
// length so limited.
double limitNorm(double* v, int k) noexcept {
  const double nv = norm(v, k);
  if (nv > 1.0) {
    for (int i = 0; i < k; ++i) v[i] /= nv;
    return 1.0;
  }
  return nv;
}

// |num/den| limited to the overflow limit where the quotient would overflow,
// 0 when num is 0.
double limitedRatio(double num, double den) noexcept {
  if (num == 0.0) return 0.0;
  double q = 0.0;
  if (divide(num, den, &q) != 0) q = (num > 0) == (den > 0) ? kEsmOverflow : -kEsmOverflow;
  return q;
}

double& A(double* a, int i, int j) noexcept { return a[zisub(i, j)]; }
double Ac(const double* a, int i, int j) noexcept { return a[zisub(i, j)]; }

void copyState(const SMOOTHVALS& from, SMOOTHVALS& to) noexcept {
  to.level = from.level;
  to.trend = from.trend;
  to.xhat = from.xhat;
  std::copy(from.sfactor.begin(), from.sfactor.end(), to.sfactor.begin());
}

void zeroDer(WINT_DER& d) noexcept {
  std::fill(std::begin(d.level), std::end(d.level), 0.0);
  std::fill(std::begin(d.trend), std::end(d.trend), 0.0);
  std::fill(d.season.wlevel.begin(), d.season.wlevel.end(), 0.0);
  std::fill(d.season.wtrend.begin(), d.season.wtrend.end(), 0.0);
  std::fill(d.season.wseason.begin(), d.season.wseason.end(), 0.0);
}

int seasonAt(const FITCON& fc, long t) noexcept { return fc.scodes != nullptr ? fc.scodes[t] : 0; }

// The reduced Gauss-Newton directions used when a step must keep some
// coordinates on their bounds: delta2 over two free coordinates (k = 3) and
// delta1 over one (k = 2, 3).
void reducedDirections(const ESMKSET& ks, FITCON& fc, POINT& p, const double* a, double sse) {
  const int k = ks.k;
  const double ridge = fc.lambda > 0 ? 1.0 + fc.lambda : 1.0;
  const int dim = p.wbnds.dim;
  const int nextdim = p.wbnds.nextdim;
  const double* xpx = p.xpxdiag;  // the raw diagonal here

  if (k == 3 && (nextdim == 2 || dim == 2)) {
    const bool byPos = nextdim == 2 && dim != 2;
    auto isfree = [&](int i) {
      return byPos ? posc(p.wbnds, ks.coord[i]) == 0 : blk(p.wbnds, ks.coord[i]) == 0;
    };
    int ia = 0, ib = 1, ic = 2;
    if (!isfree(0)) { ia = 1; ib = 2; ic = 0; }
    else if (!isfree(1)) { ia = 0; ib = 2; ic = 1; }
    p.delta2[ic] = 0.0;
    double b[6];
    auto build = [&](double f) {
      b[0] = Ac(a, ia, ia) * f;
      b[1] = Ac(a, ib, ia);
      b[2] = Ac(a, ib, ib) * f;
      b[3] = Ac(a, k, ia);
      b[4] = Ac(a, k, ib);
      b[5] = Ac(a, k, k);
    };
    char cc[3] = {'0', '0', '0'};
    double wrk[3];
    build(1.0);
    hostSweep((xpx[ia] + kEsmC) * 1e-12, b, 0, 3, cc, wrk);
    hostSweep((xpx[ib] + kEsmC) * 1e-12, b, 1, 3, cc, wrk);
    if (fc.lambda > 0 && (cc[0] != '1' || cc[1] != '1')) {
      build(ridge);
      cc[0] = cc[1] = '0';
      hostSweep((xpx[ia] + kEsmC) * 1e-12, b, 0, 3, cc, wrk);
      hostSweep((xpx[ib] + kEsmC) * 1e-12, b, 1, 3, cc, wrk);
    }
    p.rr[1] = esmoffset(sse, b[5], fc.xscale);
    p.delta2[ia] = cc[0] == '1' ? -b[3] : 0.0;
    p.delta2[ib] = cc[1] == '1' ? -b[4] : 0.0;
    double pair[2] = {p.delta2[ia], p.delta2[ib]};
    p.delta_norm2 = limitNorm(pair, 2);
    p.delta2[ia] = pair[0];
    p.delta2[ib] = pair[1];
  }

  if (nextdim < 2) {
    int i = 0;
    if (k == 2) {
      i = posc(p.wbnds, ks.coord[0]) == 0 ? 0 : 1;
    } else {
      i = posc(p.wbnds, ks.coord[0]) == 0 ? 0 : (posc(p.wbnds, ks.coord[1]) == 0 ? 1 : 2);
    }
    for (int j = 0; j < 3; ++j) p.delta1[j] = 0.0;
    double m[3] = {Ac(a, i, i), Ac(a, k, i),
                   Ac(a, k, k)};
    char cc[2] = {'0', '0'};
    double wrk[2];
    hostSweep((xpx[i] + kEsmC) * 1e-18, m, 0, 2, cc, wrk);
    p.rr[0] = esmoffset(sse, m[2], fc.xscale);
    p.delta1[i] = cc[0] == '1' ? -m[1] : 0.0;
    if (std::fabs(p.delta1[i]) > 1.0) p.delta1[i] = p.delta1[i] > 0 ? 1.0 : -1.0;
    p.delta_norm1 = std::fabs(p.delta1[i]);
  }
}

// The derivative check: the analytic gradient beside the numeric one.
void numericCheck(WINMODEL* model, const ESMKSET& ks, const FITCON& fc, const POINT& p,
                  const double* w) {
  if (ks.npd == nullptr) return;
  ESMDERCHECK& chk = model->dercheck;
  chk.done = 1;
  chk.mse = p.mse;
  double num[3] = {kMissing, kMissing, kMissing};
  ks.npd(fc, w, model->ts.nseasons, model->svi, 1e-06, model->opt.relative == 1 ? 1 : 0, num);
  for (int i = 0; i < ks.k; ++i) {
    chk.weights[i] = w[i];
    chk.derived[i] = p.grad[i];
    chk.numerical[i] = num[i];
  }
}

}  // namespace

// ---------------------------------------------------------------- accessors

double& esmpw(POINT& p, EsmWeight w) noexcept {
  switch (w) {
    case EsmWeight::Level: return p.wlevel;
    case EsmWeight::Trend: return p.wtrend;
    case EsmWeight::Season: return p.wseason;
    case EsmWeight::Damp: break;
  }
  return p.wdamp;
}

double esmpw(const POINT& p, EsmWeight w) noexcept { return esmpw(const_cast<POINT&>(p), w); }

double* esmbnd(WGTBNDS& b, EsmWeight w) noexcept {
  switch (w) {
    case EsmWeight::Level: return b.wlevel;
    case EsmWeight::Trend: return b.wtrend;
    case EsmWeight::Season: return b.wseason;
    case EsmWeight::Damp: break;
  }
  return b.wdamp;
}

const double* esmbnd(const WGTBNDS& b, EsmWeight w) noexcept {
  return esmbnd(const_cast<WGTBNDS&>(b), w);
}

char esmheld(const WGTBNDS& b, EsmWeight w) noexcept {
  switch (w) {
    case EsmWeight::Level: return b.wlevflg;
    case EsmWeight::Trend: return b.wtreflg;
    case EsmWeight::Season: return b.wseaflg;
    case EsmWeight::Damp: break;
  }
  return b.wdamflg;
}

// ---------------------------------------------------------------- helpers

double esmoffset(double sse, double res, double xscale) noexcept {
  if (!(sse > xscale * 1e-12)) return 0.0;
  double q = 0.0;
  if (res != 0.0) {
    if (divide(res, sse, &q) != 0) q = (res > 0) == (sse > 0) ? kEsmOverflow : -kEsmOverflow;
  }
  const double v = 1.0 - q;
  if (v > 1.0) return 1.0;
  if (v > 0.0) return std::sqrt(v);
  return 0.0;
}

int zscp(const double* data, int nv, double weight, double* sscp) noexcept {
  if (wzmis(weight) || weight == 0.0) return 0;
  for (int i = 0; i < nv; ++i)
    if (wzmis(data[i])) return 0;
  for (int i = 0; i < nv; ++i) {
    if (data[i] == 0.0) continue;
    // Row i of the lower triangle: z = alpha x + y over i + 1 entries.
    const double alpha = weight * data[i];
    double* row = sscp + zisub(i, 0);
    for (int j = 0; j <= i; ++j) row[j] += alpha * data[j];
  }
  return 0;
}

void esmfitcon(const WINMODEL* model, FITCON& fc) noexcept {
  fc = FITCON{};
  const long start = model->fitrange.start;
  fc.x = model->ts.x + start;
  fc.misflg = model->ts.misflg.data() + start;
  fc.n = model->fitrange.nobs;
  fc.scodes = model->ts.scodes.empty() ? nullptr : model->ts.scodes.data() + start;
  fc.xscale = 0.0;
  fc.kscale = model->ts.descstats.norm;
  fc.stepstart = 1.0;
  fc.lambda = 0.01;
  fc.min_nmiss = 9007199254740992.0;
  fc.min_mse = kLargest;
}

// ---------------------------------------------------------------- nextstep

int esmnextstep(WINMODEL* model, const ESMKSET& ks, FITCON& fc, POINT& p) noexcept {
  const int k = ks.k;
  const long n = fc.n;
  p.mse = kMissing;
  p.nobs = 0;
  p.nmiss = kNoPass;

  double w[3] = {0, 0, 0};
  getw(p, ks, w);
  if (ks.weightGuard && (std::fabs(w[0]) > kEsmStateLimit || std::fabs(w[0]) < kEsmTiny))
    return kEsmDiverged;

  SMOOTHVALS& s = model->smooth;
  copyState(model->svi, s);
  WINT_DER& d = fc.derwork;
  zeroDer(d);
  double a[10] = {};  // packed order k + 1 <= 4
  double dervec[3] = {};
  double e = 0.0;
  const int ns = model->ts.nseasons;

  // Backward half: from the start values at the end towards the beginning.
  // A flagged observation is replaced by the model's own prediction, so its
  // error is 0 and only the state moves.
  for (long t = n - 1; t >= 0; --t) {
    const int season = seasonAt(fc, t);
    const double xt = fc.misflg[t] ? ks.predict(w, s, season) : fc.x[t];
    if (const int rc = ks.step(xt, fc.kscale, w, season, s, d, dervec, &e); rc < 0) return rc;
  }
  // The turn. The derivatives go on through it, so that they include the
  // dependence of the start state on the weights.
  if (ks.turn != nullptr) ks.turn(w, ns, s, d);
  model->startvals.level = s.level;
  model->startvals.trend = s.trend;
  model->startvals.xhat = s.xhat;
  model->startvals.sfactor = s.sfactor;

  // Forward half: rows (derivatives of the prediction, error) into A.
  long nflag = 0;
  double row[4] = {};
  for (long t = 0; t < n; ++t) {
    const int season = seasonAt(fc, t);
    const bool flagged = fc.misflg[t] != 0;
    double xt = fc.x[t];
    if (flagged) {
      ++nflag;
      if (static_cast<double>(nflag) > fc.min_nmiss) return kEsmTooFew;
      xt = ks.predict(w, s, season);
    }
    if (const int rc = ks.step(xt, fc.kscale, w, season, s, d, dervec, &e); rc < 0) return rc;
    for (int i = 0; i < k; ++i) row[i] = dervec[i];
    row[k] = flagged ? 0.0 : e;
    zscp(row, k + 1, 1.0, a);
    for (int i = 0; i < (k + 1) * (k + 2) / 2; ++i)
      if (std::fabs(a[i]) > kEsmOverflow) return kEsmDiverged;
  }

  const long nobs = n - nflag;
  if (nobs < 1) return kEsmTooFew;
  p.nobs = nobs;
  p.nmiss = nflag;
  const double sse = A(a, k, k);
  p.mse = sse / static_cast<double>(nobs);

  const double gdiv = static_cast<double>(ks.gradByNobs ? nobs : n);
  for (int i = 0; i < k; ++i) {
    p.grad[i] = 2.0 * A(a, i, k) / gdiv;
    p.xpxdiag[i] = A(a, i, i);
  }
  const double ridge = fc.lambda > 0 ? 1.0 + fc.lambda : 1.0;

  if (model->wbnds.bounds && k >= 2) reducedDirections(ks, fc, p, a, sse);

  double a2[10] = {};
  const bool useRidge = fc.lambda > 0 && k >= 2;
  if (useRidge) std::copy(std::begin(a), std::end(a), std::begin(a2));

  // Full sweep. The tolerance loosens with k: a near-singular pivot of a
  // larger system is more often noise.
  const double f = k == 1 ? 1e-18 : (k == 2 ? 1e-12 : 1e-06);
  const double xpxraw[3] = {p.xpxdiag[0], p.xpxdiag[1], p.xpxdiag[2]};
  char cc[4] = {'0', '0', '0', '0'};
  double wrk[4];
  int rank = 0;
  for (int i = 0; i < k; ++i) {
    hostSweep((xpxraw[i] + kEsmC) * f, a, i, k + 1, cc, wrk);
    if (cc[i] == '1') ++rank;
  }
  p.rankxpx = rank;
  p.rr[k - 1] = esmoffset(sse, A(a, k, k), fc.xscale);
  if (k == 1) p.r = p.wbnds.dim == 0 ? 0.0 : p.rr[0];

  double* sm = a;
  if (useRidge) {
    for (int i = 0; i < k; ++i) A(a2, i, i) *= ridge;
    char cc2[4] = {'0', '0', '0', '0'};
    for (int i = 0; i < k; ++i)
      if (cc[i] == '1') hostSweep((xpxraw[i] + kEsmC) * f, a2, i, k + 1, cc2, wrk);
    sm = a2;
  }
  for (int i = 0; i < k; ++i) {
    p.delta[i] = cc[i] == '1' ? -A(sm, i, k) : 0.0;
    p.xpxdiag[i] = rank == k ? 0.5 * A(a, i, i) : 0.5 * A(sm, i, i);
  }
  p.delta_norm = limitNorm(p.delta, k);
  p.grad_norm = norm(p.grad, k);

  if (model->opt.numeric) numericCheck(model, ks, fc, p, w);
  return kEsmOk;
}

// ---------------------------------------------------------------- grid

int esmgrid(WINMODEL* model, const ESMKSET& ks, FITCON& fc, POINT& point) noexcept {
  const int k = ks.k;
  const WGTBNDS& wb = model->wbnds;
  double lo[3] = {0, 0, 0};
  double range[3] = {0, 0, 0};
  bool rescale = false;
  if (wb.bounds) {
    for (int i = 0; i < k; ++i) {
      const double* b = esmbnd(wb, ks.coord[i]);
      lo[i] = std::max(-100.0, b[0]);
      const double hi = std::min(100.0, b[1]);
      range[i] = hi - lo[i];
      // The grid values are laid out for these home ranges; other bounds
      // map them linearly onto the bounds' range.
      const bool damp = ks.coord[i] == EsmWeight::Damp;
      const double homeLo = damp ? 0.9 : 0.001;
      const double homeRange = damp ? 0.09899999999999998 : 0.998;
      if (lo[i] != homeLo || range[i] != homeRange) rescale = true;
    }
  }

  double best = kLargest;
  int bestIdx = -1;
  double bestw[3] = {0, 0, 0};
  double w[3] = {0, 0, 0};
  for (int g = 0; g < kEsmGridPoints; ++g) {
    for (int i = 0; i < k; ++i) {
      const double v = ks.grid[g][i];
      // A held weight starts, and stays, on its lower bound.
      if (wb.bounds && esmheld(wb, ks.coord[i])) {
        w[i] = esmbnd(wb, ks.coord[i])[0];
      } else {
        w[i] = rescale ? range[i] * v + lo[i] : v;
      }
    }
    if (wb.stability && ks.stb != nullptr && !ks.stb(w)) continue;
    copyState(model->svi, model->smooth);
    double mse = kMissing;
    const int rc = ks.smo(fc, w, model->ts.nseasons, model->smooth, &mse);
    ++fc.subiter;
    if (rc >= 0 && !wzmis(mse) && mse < best) {
      best = mse;
      bestIdx = g;
      std::copy(w, w + k, bestw);
    }
  }

  point = POINT{};
  for (int i = 0; i < k; ++i) {
    esmpw(point, ks.coord[i]) = bestw[i];
    const char held = esmheld(wb, ks.coord[i]);
    pos(point.wbnds, ks.coord[i]) = held ? -1 : 0;
    blk(point.wbnds, ks.coord[i]) = held ? 1 : 0;
    if (held) {
      point.wbnds.dim = static_cast<char>(point.wbnds.dim + 1);
    }
  }
  const char nheld = point.wbnds.dim;
  point.wbnds.dim = static_cast<char>(k - nheld);
  point.wbnds.nextdim = point.wbnds.dim;
  // No grid point passed: there is nothing to start from.
  if (bestIdx < 0) return kEsmNoStart;

  const int rc = esmnextstep(model, ks, fc, point);
  if (best < kEsmTiny) {
    point.mse = best;
    return kEsmOk;
  }
  if (rc != 0) return kEsmNoStart;
  if (k > 1) point.r = point.wbnds.dim == 0 ? 0.0 : point.rr[point.wbnds.dim - 1];
  return best >= kEsmOverflow ? kEsmNoStart : kEsmOk;
}

// ---------------------------------------------------------------- trystep

int esmtrystep(WINMODEL* model, const ESMKSET& ks, FITCON& fc, const POINT& cur, double stepsize,
               POINT& nw) noexcept {
  const int k = ks.k;
  const WGTBNDS& wb = model->wbnds;
  nw = POINT{};
  double p[3] = {0, 0, 0};
  getw(cur, ks, p);

  if (!wb.bounds) {
    double d[3] = {0, 0, 0};
    for (int i = 0; i < k; ++i) {
      d[i] = stepsize * cur.delta[i];
      esmpw(nw, ks.coord[i]) = p[i] + d[i];
    }
    nw.change = norm(d, k);
    nw.wbnds.dim = static_cast<char>(k);
    nw.wbnds.nextdim = static_cast<char>(k);
    const int rc = esmnextstep(model, ks, fc, nw);
    if (rc == 0 && k > 1) nw.r = nw.rr[k - 1];
    ++fc.subiter;
    return rc;
  }

  double d[3] = {0, 0, 0};
  double dist[3] = {0, 0, 0};
  int posn[3] = {0, 0, 0};
  char blocked[3] = {0, 0, 0};
  int dim = 0;
  int nextdim = 0;
  // Classifies the proposed step against the bounds: where each coordinate
  // would land, how far it may go, and whether it is blocked (held, or on a
  // bound and pushed out again).
  auto classify = [&](const double* dir) {
    nextdim = 0;
    int nblk = 0;
    for (int i = 0; i < k; ++i) {
      const EsmWeight cw = ks.coord[i];
      const double* b = esmbnd(wb, cw);
      const bool held = esmheld(wb, cw) != 0;
      d[i] = stepsize * dir[i];
      const double target = p[i] + d[i];
      if (held) {
        // A held weight stays on its lower bound whatever the direction.
        posn[i] = -1;
        dist[i] = 0.0;
        blocked[i] = 1;
      } else if (target <= b[0]) {
        posn[i] = -1;
        dist[i] = p[i] - b[0];
        blocked[i] = posc(cur.wbnds, cw) == -1 ? 1 : 0;
      } else if (target >= b[1]) {
        posn[i] = 1;
        dist[i] = b[1] - p[i];
        blocked[i] = posc(cur.wbnds, cw) == 1 ? 1 : 0;
      } else {
        posn[i] = 0;
        dist[i] = d[i];
        blocked[i] = 0;
        ++nextdim;
      }
      nblk += blocked[i];
    }
    dim = k - nblk;
  };

  classify(cur.delta);
  if (k == 3 && dim < 3) {
    classify(cur.delta2);
    if (dim < 2) classify(cur.delta1);
  } else if (k == 2 && dim < 2) {
    classify(cur.delta1);
  }

  if ((k == 1 || k == 3) && dim == 0 && cur.rflag == 1) {
    // A corner of the bounds that no direction leaves: the estimation ends.
    nw = cur;
    nw.r = 0.0;
    return kEsmOk;
  }

  double step[3] = {0, 0, 0};
  if (k == 1) {
    const double* b = esmbnd(wb, ks.coord[0]);
    double v = p[0];
    if (!blocked[0]) v = posn[0] == -1 ? b[0] : (posn[0] == 1 ? b[1] : p[0] + d[0]);
    step[0] = v - p[0];
  } else {
    double ratio[3] = {0, 0, 0};
    for (int i = 0; i < k; ++i)
      ratio[i] = blocked[i] ? kEsmOverflow : std::fabs(limitedRatio(dist[i], d[i]));
    double sc = ratio[1];
    if (ratio[0] != 0.0 && ratio[0] <= sc) sc = ratio[0];
    if (k == 3 && ratio[2] != 0.0 && ratio[2] < sc) sc = ratio[2];
    if (sc >= kEsmOverflow) return kEsmDiverged;
    for (int i = 0; i < k; ++i) step[i] = blocked[i] ? 0.0 : d[i] * sc;
  }
  for (int i = 0; i < k; ++i) {
    const double* b = esmbnd(wb, ks.coord[i]);
    double v = p[i] + step[i];
    if (v - b[0] < b[2]) v = b[0];
    if (b[1] - v < b[2]) v = b[1];
    esmpw(nw, ks.coord[i]) = v;
    pos(nw.wbnds, ks.coord[i]) = posn[i];
    blk(nw.wbnds, ks.coord[i]) = blocked[i];
    step[i] = v - p[i];
  }
  nw.change = norm(step, k);
  nw.wbnds.dim = static_cast<char>(dim);
  if (k >= 2) {
    nextdim = 0;
    for (int i = 0; i < k; ++i) {
      const double* b = esmbnd(wb, ks.coord[i]);
      const double v = esmpw(nw, ks.coord[i]);
      if (v > b[0] && v < b[1]) {
        ++nextdim;
        pos(nw.wbnds, ks.coord[i]) = 0;
      }
    }
  }
  nw.wbnds.nextdim = static_cast<char>(nextdim);

  if (const int rc = esmnextstep(model, ks, fc, nw); rc < 0) return rc;
  if (k > 1) nw.r = dim == 0 ? 0.0 : nw.rr[dim - 1];

  if (nextdim == 0) {
    // Every coordinate is on a bound: can any move back inside?
    if (k == 1 || k == 3) {
      bool inward = false;
      for (int i = 0; i < k; ++i) {
        if (blk(nw.wbnds, ks.coord[i])) continue;
        const bool lower = posc(nw.wbnds, ks.coord[i]) == -1;
        const double v = k == 1 ? nw.delta[0] : nw.delta1[i];
        if ((lower && v > kEsmEps) || (!lower && v < -kEsmEps)) inward = true;
      }
      if (!inward) {
        nw.rflag = 1;
        nw.r = cur.rflag == 1 ? 0.0 : (k == 1 ? nw.r : nw.rr[0]);
      }
    } else {
      bool inward = false;
      for (int i = 0; i < k; ++i) {
        const bool lower = posc(nw.wbnds, ks.coord[i]) == -1;
        const double v = nw.delta1[i];
        if ((lower && v > 0) || (!lower && v < 0)) inward = true;
      }
      if (!inward) nw.r = 0.0;
    }
  }
  ++fc.subiter;
  return kEsmOk;
}

// ---------------------------------------------------------------- estimate

int esmestimate(WINMODEL* model, const ESMKSET& ks) noexcept {
  const int k = ks.k;
  // The record must have been made for a model with this many weights.
  const auto kk = static_cast<std::size_t>(k);
  if (model == nullptr || k < 1 || k > 3 || model->pest.parms.size() < kk ||
      model->pest.stderr_.size() < kk || model->pest.tvals.size() < kk ||
      model->ts.misflg.size() < static_cast<std::size_t>(model->fitrange.start + model->fitrange.nobs))
    return kEsmBadArg;
  FITCON fc;
  esmfitcon(model, fc);
  const int ns = model->ts.nseasons;
  try {
    if (ns > 1) {
      const auto nsz = static_cast<std::size_t>(ns);
      fc.derwork.season.size = static_cast<long>(nsz * sizeof(double));
      fc.derwork.season.wlevel.assign(nsz, 0.0);
      fc.derwork.season.wtrend.assign(nsz, 0.0);
      fc.derwork.season.wseason.assign(nsz, 0.0);
    }
    if (model->smooth.sfactor.size() != model->svi.sfactor.size())
      model->smooth.sfactor.assign(model->svi.sfactor.size(), 0.0);
    if (model->startvals.sfactor.size() != model->svi.sfactor.size())
      model->startvals.sfactor.assign(model->svi.sfactor.size(), 0.0);
  } catch (const std::bad_alloc&) {
    return kEsmNoMem;
  }

  POINT cur;
  POINT nw;
  if (esmgrid(model, ks, fc, cur) != 0) return kEsmNoStart;

  if (model->outest.xoparm.fileid != nullptr && model->outest.strptr != nullptr) {
    try {
      for (int i = 0; i < k; ++i) model->outest.strptr->push_back(esmpw(cur, ks.coord[i]));
      model->outest.strptr->push_back(cur.mse);
    } catch (const std::bad_alloc&) {
      return kEsmNoMem;
    }
  }

  int rc = 0;
  if (cur.r > kEsmConvR) {
    const double nrm = model->ts.descstats.norm;
    const double xnorm2 = nrm < kEsmOverflow ? nrm * nrm : kLargest;
    bool stop = false;
    for (fc.iter = 1; fc.iter <= kEsmMaxIter && !stop; ++fc.iter) {
      double before[3] = {0, 0, 0};
      getw(cur, ks, before);
      double stepsize = fc.stepstart;
      fc.subiter = 0;
      bool ok = false;
      for (;;) {
        const int trc = esmtrystep(model, ks, fc, cur, stepsize, nw);
        ok = trc == 0;
        if (ok && model->wbnds.stability && ks.stb != nullptr) {
          double w[3] = {0, 0, 0};
          getw(nw, ks, w);
          ok = ks.stb(w) != 0;
        }
        if (ok) break;
        if (stepsize <= kEsmConvR) break;
        ++fc.subiter;
        stepsize *= 0.5;
      }
      if (!ok) {
        rc = kEsmNotConverged;
        break;
      }
      const bool improves = nw.nmiss < cur.nmiss || (nw.nmiss == cur.nmiss && nw.mse <= cur.mse);
      bool raiseLambda = false;
      if (improves) {
        cur = nw;
        fc.stepstart = 1.0;
        if (stepsize == 1.0) {
          fc.lambda /= 10.0;
          if (fc.lambda < 0.0001) fc.lambda = 0.0;
        } else {
          raiseLambda = true;
        }
      } else {
        fc.stepstart *= 0.5;
        if (fc.stepstart <= kEsmConvR) {
          rc = kEsmNotConverged;
          break;
        }
        raiseLambda = true;
      }
      if (raiseLambda) {
        fc.lambda = fc.lambda == 0.0 ? 0.01 : fc.lambda * 10.0;
        if (fc.lambda > kEsmLambdaMax) fc.lambda = kEsmLambdaMax;
      }
      if (cur.r <= kEsmConvR) {
        stop = true;
        break;
      }
      double maxchange = 0.0;
      for (int i = 0; i < k; ++i)
        maxchange = std::max(maxchange, std::fabs(esmpw(cur, ks.coord[i]) - before[i]));
      if (cur.mse / xnorm2 <= kEsmC && maxchange <= kEsmEps && cur.grad_norm <= kEsmEps) {
        stop = true;
        break;
      }
    }
  }

  // Store the result.
  MODELPEST& pe = model->pest;
  double w[3] = {0, 0, 0};
  getw(cur, ks, w);
  for (int i = 0; i < k; ++i) pe.parms[i] = w[i];
  fc.min_mse = cur.mse;
  const long nobs = cur.nobs;
  pe.mse = nobs > ks.dfparms && !wzmis(cur.mse)
               ? cur.mse * static_cast<double>(nobs) / static_cast<double>(nobs - ks.dfparms)
               : cur.mse;
  ks.std(cur.xpxdiag, pe.mse, nobs, ns, w, pe.stderr_.data(), pe.tvals.data());

  if (rc == kEsmNotConverged || cur.r > kEsmConvR) return kEsmNotConverged;
  return kEsmOk;
}

}  // namespace qvt
