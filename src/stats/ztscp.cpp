// Cross-series performance collector: creation, clearing, the errors of one
// series, and the closing of each level.
#include "stats/ztscp.hpp"

#include "run/missing.hpp"
#include "stats/fitstats.hpp"

#include <algorithm>
#include <cmath>
#include <new>

namespace qvt {
namespace {

// One error type of the collector: its code in ztssfe, its flag, its record
// in a ZTS_CP_JSTATS and its two vectors.
struct Type {
  int code;
  bool on;
  ZTS_CP_STATS ZTS_CP_JSTATS::*rec;
  std::vector<double>* err;
  std::vector<double>* abs;  // null when the absolute vector isn't kept
};

// The three types in the order pct, sym, rel; `on` from the collector's flags.
struct Types {
  Type t[3];
  explicit Types(ZTS_CP& cp)
      : t{{kCpPct, cp.spec.pct != 0, &ZTS_CP_JSTATS::pct, &cp.pe, cp.ape.empty() ? nullptr : &cp.ape},
          {kCpSym, cp.spec.sym != 0, &ZTS_CP_JSTATS::sym, &cp.se, cp.ase.empty() ? nullptr : &cp.ase},
          {kCpRel, cp.spec.rel != 0, &ZTS_CP_JSTATS::rel, &cp.re, cp.are.empty() ? nullptr : &cp.are}} {}
  const Type* begin() const { return t; }
  const Type* end() const { return t + 3; }
};

void clearRecord(ZTS_CP_JSTATS& j) {
  j = ZTS_CP_JSTATS{};
  ztscpei(&j.pct);
  ztscpei(&j.sym);
  ztscpei(&j.rel);
}

void clearLevel(std::vector<ZTS_CP_JSTATS>& level) {
  for (ZTS_CP_JSTATS& j : level) clearRecord(j);
}

// Counts element t of a series into one horizon record's coverage; the
// series' own count says that limits were given at all.
void cover(const ZTS_CP& cp, double a, double lo, double up, ZTS_CP_CL& cl) {
  if (cp.indiv.cl.n < 1 || wzmis(a) || wzmis(lo) || wzmis(up)) return;
  if (a < lo) ++cl.lower;
  if (a > up) ++cl.upper;
  ++cl.n;
}

// Adds element t of every type on, and its coverage, into one record.
void addElement(ZTS_CP& cp, const Types& types, long t, ZTS_CP_JSTATS& rec, bool coverage, double a,
                double lo, double up) {
  for (const Type& ty : types) {
    if (!ty.on) continue;
    ztscpea((*ty.err)[t], ty.abs != nullptr ? (*ty.abs)[t] : kMissing, &(rec.*ty.rec));
  }
  if (coverage) cover(cp, a, lo, up, rec.cl);
}

// Steps 2 and 3 of a level's close: each horizon's results, and the record
// `lead` as the merge of all horizons. An empty horizon (rc 2) or an
// overflowing geometric mean (rc 3) leaves its results missing and the walk
// goes on.
int closeLevel(ZTS_CP& cp, std::vector<ZTS_CP_JSTATS>& level) {
  const Types types(cp);
  const long lead = cp.lead;
  ZTS_CP_JSTATS& all = level[lead];
  for (long t = 0; t < lead; ++t) {
    ZTS_CP_JSTATS& r = level[t];
    for (const Type& ty : types) {
      if (!ty.on) continue;
      ztscpem(&(r.*ty.rec), &(all.*ty.rec));
      if (ztscpes(&(r.*ty.rec)) < 0) return -99;
    }
    all.cl.n += r.cl.n;
    all.cl.lower += r.cl.lower;
    all.cl.upper += r.cl.upper;
    r.cl.total = r.cl.lower + r.cl.upper;
  }
  for (const Type& ty : types)
    if (ty.on && ztscpes(&(all.*ty.rec)) < 0) return -99;
  all.cl.total = all.cl.lower + all.cl.upper;
  return 0;
}

}  // namespace

int ztscpi(long nvars, long lead, const CPSPEC* spec, ZTS_CP** cp) noexcept {
  if (cp == nullptr) return -99;
  *cp = nullptr;
  if (nvars < 1) return -2;
  if (lead < 1) return -3;
  ZTS_CP* c = new (std::nothrow) ZTS_CP;
  if (c == nullptr) return -1;
  if (spec != nullptr && spec->specified != 0) {
    c->spec = *spec;
  } else {
    CPSPEC& s = c->spec;
    s.leads = s.indiv = s.local = s.global = s.univ = s.pct = s.sym = s.rel = s.cl = 1;
    s.min = s.max = s.mean = s.amean = 1;
  }
  c->nvars = nvars;
  c->lead = lead;
  try {
    const CPSPEC& s = c->spec;
    const auto n = static_cast<std::size_t>(lead);
    // Every caller passes index -1 today, so `local` stays empty; it is built
    // all the same so that index >= 0 has a place to go.
    if (s.local) c->local.assign(static_cast<std::size_t>(nvars), std::vector<ZTS_CP_JSTATS>(n + 1));
    if (s.global) c->global.resize(n + 1);
    if (s.univ) c->univ.resize(n + 1);
    const auto vectors = [&](char on, std::vector<double>& e, std::vector<double>& a) {
      if (!on) return;
      e.assign(n, kMissing);
      if (s.amean) a.assign(n, kMissing);
    };
    vectors(s.pct, c->pe, c->ape);
    vectors(s.sym, c->se, c->ase);
    vectors(s.rel, c->re, c->are);
    c->work.assign(n, 0.0);
  } catch (const std::bad_alloc&) {
    ztscpt(&c);
    return -1;
  }
  clearRecord(c->indiv);
  for (auto& v : c->local) clearLevel(v);
  clearLevel(c->global);
  clearLevel(c->univ);
  *cp = c;
  return 0;
}

void ztscpt(ZTS_CP** cp) noexcept {
  if (cp == nullptr) return;
  delete *cp;
  *cp = nullptr;
}

int ztscpr(ZTS_CP* cp, int local, int global, int univ) noexcept {
  if (cp == nullptr) return -99;
  clearRecord(cp->indiv);
  if (local != 0)
    for (auto& v : cp->local) clearLevel(v);
  if (global != 0) clearLevel(cp->global);
  if (univ != 0) clearLevel(cp->univ);
  return 0;
}

int ztscpa(ZTS_CP* cp, double holdout, const double* actual, const double* predict,
           const double* lower, const double* upper, long T, long index) noexcept {
  if (cp == nullptr || actual == nullptr || predict == nullptr || index < -1 || index >= cp->nvars ||
      T < 1)
    return -99;
  // Only the last `lead` elements are forecasts of the BACK= range.
  if (T > cp->lead) {
    const long skip = T - cp->lead;
    actual += skip;
    predict += skip;
    if (lower != nullptr) lower += skip;
    if (upper != nullptr) upper += skip;
    T = cp->lead;
  }
  const Types types(*cp);
  // A series shorter than `lead` leaves the tail of each vector missing, so
  // the median of the close, which reads all `lead` cells, sees only this
  // series' errors.
  int rc = 0;
  for (const Type& ty : types) {
    if (!ty.on) continue;
    std::fill(ty.err->begin(), ty.err->end(), kMissing);
    if (ty.abs != nullptr) std::fill(ty.abs->begin(), ty.abs->end(), kMissing);
    rc = ztssfe(holdout, actual, predict, T, ty.code, ty.err->data(),
                ty.abs != nullptr ? ty.abs->data() : nullptr);
    if (rc < 0) return rc;
  }
  // Without limits there is nothing to cover: decided here rather than
  // failing the whole series, since the errors themselves are sound.
  ZTS_CP_CL& icl = cp->indiv.cl;
  if (cp->spec.cl && lower != nullptr && upper != nullptr) {
    const int r = ztssfcl(actual, lower, upper, T, &icl.lower, &icl.upper, &icl.n);
    if (r < 0) return r;
  }
  const bool coverage = cp->spec.cl != 0;
  for (long t = 0; t < T; ++t) {
    const double a = actual[t];
    const double lo = lower != nullptr ? lower[t] : kMissing;
    const double up = upper != nullptr ? upper[t] : kMissing;
    if (cp->spec.indiv) addElement(*cp, types, t, cp->indiv, false, a, lo, up);
    if (cp->spec.local && index >= 0 && !cp->local.empty())
      addElement(*cp, types, t, cp->local[index][t], coverage, a, lo, up);
    if (cp->spec.global && !cp->global.empty())
      addElement(*cp, types, t, cp->global[t], coverage, a, lo, up);
  }
  return rc;
}

int ztscpci(ZTS_CP* cp) noexcept {
  if (cp == nullptr) return -99;
  const Types types(*cp);
  for (const Type& ty : types) {
    if (!ty.on) continue;
    ZTS_CP_STATS& s = cp->indiv.*ty.rec;
    ztscpes(&s);
    // Only this level keeps the errors themselves, so only it has a median;
    // without the absolute vector (the amean flag off) there is none.
    if (s.n < 1 || ty.abs == nullptr) continue;
    long count = 0;
    const int r = ztssfa(ty.abs->data(), cp->lead, kSfMedian, cp->work.data(), &s.median, &count);
    if (r < 0) return r;
  }
  cp->indiv.cl.total = cp->indiv.cl.lower + cp->indiv.cl.upper;
  return 0;
}

int ztscpcg(ZTS_CP* cp) noexcept {
  if (cp == nullptr) return -99;
  if (cp->global.empty()) return 0;
  const Types types(*cp);
  if (!cp->univ.empty()) {
    for (long t = 0; t < cp->lead; ++t) {
      ZTS_CP_JSTATS& g = cp->global[t];
      ZTS_CP_JSTATS& u = cp->univ[t];
      for (const Type& ty : types)
        if (ty.on) ztscpem(&(g.*ty.rec), &(u.*ty.rec));
      u.cl.n += g.cl.n;
      u.cl.lower += g.cl.lower;
      u.cl.upper += g.cl.upper;
    }
  }
  return closeLevel(*cp, cp->global);
}

int ztscpcu(ZTS_CP* cp) noexcept {
  if (cp == nullptr) return -99;
  if (cp->univ.empty()) return 0;
  return closeLevel(*cp, cp->univ);
}

}  // namespace qvt
