// Time IDs to grid positions (zinttip), the message for a failed
// positioning (zinttipErr) and the classification of grid cells (zinttic).
#include <algorithm>
#include <cmath>
#include <string>

#include "calendar/interval.hpp"
#include "calendar/zcust.hpp"
#include "calendar/zintti.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

// Calendar limits: day -138061 is 1582-01-01, day 6589335 the last day the
// date code covers; the datetime limits are the same days in seconds.
constexpr double kFirstDay = -138061.0;
constexpr double kPastLastDay = 6589336.0;
constexpr double kFirstSecond = -11928470400.0;
constexpr double kPastLastSecond = 569318630400.0;

// A position must fit a long, and, to survive the round trip through a
// double output column, 2^53.
constexpr double kLongLimit = 9.223372036854776e+18;
constexpr double kExactLimit = 9007199254740992.0;

constexpr int kGroup = 882;

// Order of positions already known to fit: 1 ascending, 2 with ties, 3 a fall.
int orderOf(const long* pos, long n) noexcept {
  int rc = 1;
  for (long i = 1; i < n; ++i) {
    if (pos[i] < pos[i - 1]) return 3;
    if (pos[i] == pos[i - 1]) rc = 2;
  }
  return rc;
}

// The custom-calendar branch: zintctidL places the time IDs, and its
// answers become those of zinttip. A calendar that can't be used for this
// data (it can't be loaded, or a time ID lies in a hole) is -5; a missing
// time ID -1; an interval open at either end -2; the overflow limits pass.
int customPositions(const INTERVAL& intv, const tchar* align, const double* tid, long ntid,
                    double base, int sort, long* pos, long* maxpos, double* first,
                    double* last) noexcept {
  if (ntid < 1) return 1;
  ZTS_OBSDATES dates;
  dates.start = wzmis(base) ? kMissing : base;
  dates.interval = zintwiden(intv);
  dates.dateVar = tid;
  dates.nobs = ntid;
  int infinity = 0, order = 0;
  ZTS_CTIDOUT out;
  out.TSIndex = pos;
  out.Infinity = &infinity;
  out.Order = &order;
  out.first = first;
  out.last = last;
  switch (zintctidL(&dates, nullptr, align, &out)) {
    case 0: break;
    case -1: return -5;
    case -3: return -3;
    case -4: return -4;
    default: return -1;  // 128 missing time IDs, 32768 none, and anything else
  }
  if (infinity != 0) return -2;
  // Without a base the positions count from the first time ID; as for the
  // built-in intervals they count from the least one.
  long least = pos[0], most = pos[0];
  for (long i = 1; i < ntid; ++i) {
    least = std::min(least, pos[i]);
    most = std::max(most, pos[i]);
  }
  if (wzmis(base) && least != 0) {
    for (long i = 0; i < ntid; ++i) pos[i] -= least;
    most -= least;
  }
  if (maxpos) *maxpos = std::max(most, 0L);
  if (ntid < 2) return 1;
  if (sort != 0) return sort;
  return (order & 2) ? 3 : (order & 1) ? 2 : 1;
}

}  // namespace

int zinttip(const INTERVAL& intv, const tchar* align, const double* tid, long ntid, double base,
            int sort, long* pos, long* maxpos, double* first, double* last) {
  if (first) *first = kMissing;
  if (last) *last = kMissing;
  if (maxpos) *maxpos = 0;
  if (ntid > 0 && (tid == nullptr || pos == nullptr)) return -99;

  if (intv.intcode == kIntCustom)
    return customPositions(intv, align, tid, ntid, base, sort, pos, maxpos, first, last);

  // First pass: every value present and inside the calendar; the extremes.
  double lo = 0, hi = 0;
  for (long i = 0; i < ntid; ++i) {
    const double t = tid[i];
    if (wzmis(t)) return -1;
    if (intv.units == 'd' && (t < kFirstDay || t >= kPastLastDay)) return -2;
    if (intv.units == 's' && (t < kFirstSecond || t >= kPastLastSecond)) return -2;
    if (i == 0 || t < lo) lo = t;
    if (i == 0 || t > hi) hi = t;
  }

  if (ntid > 0) {
    // The aligned dates of the first and last intervals; an end alignment
    // in the calendar's last week can step past its end.
    INTERVAL sub;  // shift interval cache of the "S" alignment
    const double f = zintnx3(intv, lo, 0, align, &sub);
    const double l = zintnx3(intv, hi, 0, align, &sub);
    if (first) *first = f;
    if (last) *last = l;
    if (wzmis(f) || wzmis(l)) return -2;
    if (wzmis(base)) base = f;

    // Second pass: positions counted from the base's interval.
    for (long i = 0; i < ntid; ++i) {
      const double a = zintnx3(intv, tid[i], 0, align, &sub);
      if (wzmis(a)) return -2;
      const double c = zintck2(intv, base, a);
      if (wzmis(c)) return -2;
      if (std::fabs(c) > kLongLimit) return -3;
      if (std::fabs(c) > kExactLimit) return -4;
      pos[i] = static_cast<long>(c);
      if (maxpos && pos[i] > *maxpos) *maxpos = pos[i];
    }
  }

  if (ntid < 2) return 1;
  if (sort != 0) return sort;
  return orderOf(pos, ntid);
}

int zinttipErr(Host& host, const u_sname* variable, const char* lib, const u_sname* mem,
               const INTERVAL& interval, int rc) {
  if (rc >= 0) return 0;
  const bool custom = interval.intcode == kIntCustom;
  // The long form names the variable, the data set and the interval; any of
  // them unknown (an empty token counts so) gives the short form.
  const bool full = variable != nullptr && lib != nullptr && mem != nullptr && interval.tokenlen > 0;

  int number = 0;
  switch (rc) {
    case -1: number = full ? 1012 : 1032; break;
    case -2: number = custom ? (full ? 1015 : 1035) : (full ? 1016 : 1036); break;
    case -3:
    case -4: hostMsgLog(host, kGroup, 1004); return 1020;
    case -5: number = custom ? (full ? 1022 : 1042) : (full ? 1020 : 1040); break;
    default: number = full ? 1017 : 1037; break;
  }
  if (full) {
    const auto tokenlen = static_cast<std::size_t>(std::min<int>(interval.tokenlen, kIntTokenMax));
    hostMsgLog(host, kGroup, number,
               {variable->str(), std::string(lib), mem->str(), std::string(interval.token, tokenlen)});
  } else {
    hostMsgLog(host, kGroup, number);
  }
  return 1020;
}

int zinttic(const long* pos, long ntid, long nobs, char* flags, long* ndups, long* ngaps) {
  if (ndups) *ndups = 0;
  if (ngaps) *ngaps = 0;
  if (ntid > 0 && pos == nullptr) return -99;
  if (nobs > 0 && flags == nullptr) return -99;
  if (ndups == nullptr || ngaps == nullptr) return -99;

  // With no observation every cell lies before the (absent) first one.
  long lo = nobs, hi = -1;
  for (long i = 0; i < ntid; ++i) {
    const long p = pos[i];
    if (p < 0 || p >= nobs) return -99;
    if (p < lo) lo = p;
    if (p > hi) hi = p;
    if (flags[p] == kCellGap) {
      flags[p] = kCellOne;
    } else {
      ++*ndups;  // the surplus observations of a cell
      flags[p] = kCellMany;
    }
  }
  for (long c = 0; c < nobs; ++c) {
    if (c < lo) flags[c] = kCellBefore;
    else if (c > hi) flags[c] = kCellAfter;
    else if (flags[c] == kCellGap) ++*ngaps;
  }
  if (*ndups > 0) return -1;
  return *ngaps > 0 ? 1 : 0;
}

}  // namespace qvt
