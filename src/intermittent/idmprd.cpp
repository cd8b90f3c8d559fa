// Spreading the forecasts by demand over the time grid of the series. Each
// demand's forecast rate holds for the periods of the interval that ends at
// that demand; the stock runs along, growing by the rate each period and
// dropping by the demand when it comes. Predictions and limits are on the
// scale of the data (the base added back); the stock is not.
#include "intermittent/idmodel.hpp"

#include "calendar/interval.hpp"
#include "intermittent/idmdetail.hpp"

namespace qvt {

// out's vectors hold T + lead entries, like the caller's series with its
// horizon: the grid ends at T - back + lead, and the periods of the back
// range beyond it are written missing.
int idmprd(IDMODEL* idm, const double* /*y*/, long T, long back, double level, double stdate,
           long lead, double /*alpha*/, FOR_OUT* out) noexcept {
  if (idm == nullptr || out == nullptr || back < 0 || lead < 0 || T < 0) return kIdmBadArg;
  IDMODEL& m = *idm;
  if (m.ids == nullptr) return m.error = kIdmNoSeries;
  const IDSERIES& ids = *m.ids;
  const long nfit = m.nsample + m.nholdout;
  const long imax = (nfit + 1 > m.n ? nfit + 1 : m.n) - 1;
  const long nper = T - back + lead;
  const long cap = T + lead;
  const double base = ids.base;
  double s = level;  // the stock
  double p = kMissing, sd = kMissing, lo = kMissing, up = kMissing;
  long pos = 0;
  for (long i = 0; i <= imax; ++i) {
    const double a = ids.size.data[i];
    if (i <= nfit) {
      p = idm::add(m.results.predict[i], base);
      sd = m.results.std[i];
      lo = idm::add(m.results.lower[i], base);
      up = idm::add(m.results.upper[i], base);
    }
    long span = nper - pos;
    if (i < imax) {
      const double w = ids.intv.data[i];
      span = wzmis(w) || w < 0.0 ? 0 : static_cast<long>(w);
    }
    for (long j = 0; j < span; ++j) {
      const long t = pos + j;
      if (t >= cap) break;
      if (!wzmis(p)) s = (wzmis(s) ? 0.0 : s) + (p - base);
      // The demand closes its interval and leaves the stock.
      if (j == span - 1 && !wzmis(a) && !wzmis(s)) s -= a;
      if (t >= nper) p = sd = lo = up = s = kMissing;
      if (out->date) out->date[t] = zintnx3(ids.interval, stdate, static_cast<double>(t), &ids.align, nullptr);
      if (out->actual) out->actual[t] = t < T ? a : kMissing;
      if (out->predicted) out->predicted[t] = p;
      if (out->std) out->std[t] = sd;
      if (out->lower) out->lower[t] = lo;
      if (out->upper) out->upper[t] = up;
      if (out->residual) out->residual[t] = t < T ? s : kMissing;
      if (out->level) out->level[t] = s;
    }
    pos += span;
  }
  out->n = nper < 0 ? 0 : nper;
  return kIdmOk;
}

}  // namespace qvt
