// Time IDs to positions on a custom calendar: the interval number of each
// time ID, its place counted from the series start, what is open at either
// end of its interval, and the order the numbers come in.
#include <cmath>

#include "calendar/zcust.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

// A number must fit a long, and, to survive the trip through a double
// output column, 2^53.
constexpr double kLongLimit = 9.223372036854776e+18;
constexpr double kExactLimit = 9007199254740992.0;

// InfinityByObs of a time ID that is missing or lies in no interval.
constexpr int kInfFailed = 10;

// Where a time ID is taken: its interval's number, begin and end. .I is the
// interval behind the last row, as a step from .I by 0 finds it; .M and the
// other values go to findIndexC. 0, or findIndexC's failure code.
int locate(const INTERVALX& x, double t, double* k, double* b, double* e) noexcept {
  double s;
  if (missCode(t) == 'I') {
    double lb, le;
    if (const int rc = customGetObsC(x, skMissVal('L'), &lb, &le, &s); rc != 0) return rc;
    t = wzmis(le) ? lb : le + 1;
  }
  return findIndexC(x, t, k, b, e, &s);
}

// The infinity code of an interval: 1 a begin of .M, 2 another missing
// begin, 4 an end of .I, 8 another missing end.
int infinityOf(double b, double e) noexcept {
  int code = 0;
  if (wzmis(b)) code |= missCode(b) == 'M' ? 1 : 2;
  if (wzmis(e)) code |= missCode(e) == 'I' ? 4 : 8;
  return code;
}

// The time ID moved within its interval by the alignment letter.
double aligned(char a, double t, double b, double e) noexcept {
  switch (a) {
    case 'S': return t;
    case 'E': return e;
    case 'M': return wzmis(b) || wzmis(e) ? kMissing : std::floor((b + e) * 0.5);
    default: return b;
  }
}

}  // namespace

int zintctidL(ZTS_OBSDATES* dateinfo, double* dates, const tchar* align, ZTS_CTIDOUT* out) noexcept {
  if (dateinfo == nullptr) return -1;
  if (dateinfo->nobs < 1) return 32768;
  if (dateinfo->dateVar == nullptr || dateinfo->interval.intcode != kIntCustom) return -1;
  ZTS_CTIDOUT none;
  const ZTS_CTIDOUT& o = out != nullptr ? *out : none;
  if (o.Infinity) *o.Infinity = 0;
  if (o.Order) *o.Order = 0;
  if (o.MaxBack) *o.MaxBack = kMissing;
  if (o.MaxLead) *o.MaxLead = kMissing;
  if (o.first) *o.first = kMissing;
  if (o.last) *o.last = kMissing;

  // One reference for the whole list instead of one a call.
  INTERVALX x = dateinfo->interval;
  CINTC_INFO* taken = nullptr;
  if (x.cinfo == nullptr) {
    if (zcustLoad(x, &taken) < 0 || taken == nullptr) return -1;
    x.cinfo = taken;
  }
  struct Release {
    CINTC_INFO* p;
    ~Release() { zcintcReleaseRef(p); }
  } release{taken};

  const char a = align != nullptr ? align[0] : 'B';
  double b, e, startNo = kMissing;
  if (!wzmis(dateinfo->start) || missCode(dateinfo->start) == 'M' || missCode(dateinfo->start) == 'I') {
    if (locate(x, dateinfo->start, &startNo, &b, &e) != 0) return -1;
  }

  long failed = 0, missing = 0, overLong = 0, overExact = 0;
  double prev = kMissing, least = kMissing, most = kMissing;
  for (long i = 0; i < dateinfo->nobs; ++i) {
    const double t = dateinfo->dateVar[i];
    const char code = missCode(t);
    double k = kMissing;
    const bool usable = (!wzmis(t) || code == 'M' || code == 'I') && locate(x, t, &k, &b, &e) == 0;
    if (!usable) {
      if (wzmis(t) && code != 'M' && code != 'I') ++missing;
      else ++failed;
      if (o.InfinityByObs) o.InfinityByObs[i] = kInfFailed;
      if (o.Infinity) *o.Infinity |= kInfFailed;
      if (o.CDSIndex) o.CDSIndex[i] = kMissing;
      if (o.MaxFail != 0 && failed >= o.MaxFail) break;
      continue;
    }
    if (std::fabs(k) > kExactLimit) {
      ++(std::fabs(k) > kLongLimit ? overLong : overExact);
      if (o.CDSIndex) o.CDSIndex[i] = -1;
      continue;
    }
    if (o.CDSIndex) o.CDSIndex[i] = k;
    if (!wzmis(prev) && o.Order) *o.Order |= k == prev ? 1 : k < prev ? 2 : 0;
    prev = k;
    const int inf = infinityOf(b, e);
    if (o.InfinityByObs) o.InfinityByObs[i] = inf;
    if (o.Infinity) *o.Infinity |= inf;
    const double at = aligned(a, t, b, e);
    if (dates) dates[i] = at;
    if (wzmis(startNo)) startNo = k;
    if (o.TSIndex) o.TSIndex[i] = static_cast<long>(k - startNo);
    if (wzmis(least) || k < least) {
      least = k;
      if (o.first) *o.first = at;
    }
    if (wzmis(most) || k > most) {
      most = k;
      if (o.last) *o.last = at;
    }
  }

  if (!wzmis(least)) {
    double firstNo, lastNo;
    if (o.MaxBack && findIndexC(x, skMissVal('F'), &firstNo, &b, &e, nullptr) == 0)
      *o.MaxBack = firstNo - least;
    if (o.MaxLead && findIndexC(x, skMissVal('L'), &lastNo, &b, &e, nullptr) == 0)
      *o.MaxLead = most - lastNo;
  }
  if (failed > 0) return -1;
  if (missing > 0) return 128;
  if (overLong > 0) return -3;
  if (overExact > 0) return -4;
  return 0;
}

int zintctid(ZTS_OBSDATES* dateinfo, double* dates, const tchar* align, ZTS_CTIDOUT* out) noexcept {
  return zintctidL(dateinfo, dates, align, out);
}

}  // namespace qvt
