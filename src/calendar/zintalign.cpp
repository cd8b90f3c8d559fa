// Aligned stepping (zintnx3), the shift interval of an interval (zintshft)
// and the count of whole intervals (zintck3).
#include <algorithm>
#include <cmath>
#include <string_view>

#include "calendar/interval.hpp"
#include "calendar/zcust.hpp"
#include "host/hostdate.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

constexpr bool isReserved(int code) noexcept {
  switch (code) {
    case 28: case 29: case 38: case 43: case 49: case 54: case 58: return true;
    default: return false;
  }
}

// The earlier of two step results, either of which may be missing.
double earlier(double a, double b) noexcept {
  if (wzmis(a)) return b;
  if (wzmis(b)) return a;
  return std::min(a, b);
}

// The same place in the target interval as inptDate has in its own: the
// offset of inptDate from the start of its own interval, counted in whole
// shift units plus the rest, applied from the target's start and clipped to
// the target's last day (January 31 moved to February gives its last day).
double sameAlign(const INTERVAL& istr, double inptDate, double n, double r,
                 INTERVAL* sub_intrvl) noexcept {
  INTERVAL local;
  const INTERVAL* sub = sub_intrvl;
  if (sub_intrvl == nullptr) {
    zintshft(istr, &local);
    sub = &local;
  } else if (sub_intrvl->intcode == 0) {
    zintshft(istr, sub_intrvl);
  }

  const double b = zintnx2(istr, inptDate, 0);
  const double k = zintck2(*sub, b, inptDate);
  if (wzmis(k)) return kMissing;
  const double own = zintnx2(*sub, b, k);
  const double at = zintnx2(*sub, r, k);
  if (wzmis(own) || wzmis(at)) return kMissing;
  const double delta = inptDate - own;

  const double limit = earlier(zintnx2(istr, inptDate, n + 1), zintnx2(*sub, r, k + 1));
  if (wzmis(limit)) return kMissing;
  const double v = at + delta;
  if (v < limit) return v;

  if (sub->intcode < kIntDay) return limit - 1;
  // The last day of the target interval: one day (or one working day of the
  // sub-interval's week) back from the next interval's start.
  INTERVAL step;
  if (sub->intcode == kIntWeekday) {
    step = *sub;
  } else {
    step.intcode = static_cast<char>(kIntDay);
  }
  step.units = istr.units;
  step.intper = 1;
  step.shiftper = 0;
  const double last = zintnx2(step, limit, -1);
  if (wzmis(last)) return kMissing;
  return istr.units == 's' ? last + hostTimePart(inptDate) : last;
}

}  // namespace

double zintnx3(const INTERVAL& istr, double inptDate, double n, const tchar* align,
               INTERVAL* sub_intrvl) noexcept {
  if (wzmis(n)) return kMissing;
  const char a = align ? align[0] : 'B';
  const bool custom = istr.intcode == kIntCustom;
  const double r = zintnx2(istr, inptDate, n);
  if (wzmis(r)) {
    if (custom && missCode(inptDate) == 'M') {
      if (a == 'M') return kMissing;
    } else if (a != 'E') {
      return r;
    }
  }

  switch (a) {
    case 'E': {
      if (custom) return customINTNXE(zintwiden(istr), inptDate, n);
      const double t = zintnx2(istr, inptDate, n + 1);
      return wzmis(t) ? kMissing : t - 1;
    }
    case 'M': {
      if (wzmis(r)) return kMissing;
      if (custom) {
        const double e = customINTNXE(zintwiden(istr), inptDate, n);
        return wzmis(e) ? kMissing : std::floor((e + r) * 0.5);
      }
      const double next = zintnx2(istr, r, 1);
      return wzmis(next) ? kMissing : std::floor((next + r - 1) * 0.5);
    }
    case 'S':
      if (custom || isReserved(istr.intcode) || wzmis(r)) return r;
      return sameAlign(istr, inptDate, n, r, sub_intrvl);
    default:
      return r;
  }
}

int zintshft(const INTERVAL& istr, INTERVAL* sistr) noexcept {
  if (!sistr) return 2;
  const bool dt = istr.units == 's';
  char buf[kIntTokenSize + 2] = {};
  int n = 0;
  auto put = [&](std::string_view s) {
    for (char c : s)
      if (n < kIntTokenMax) buf[n++] = c;
  };
  auto putName = [&](std::string_view name) {
    if (dt) put("DT");
    put(name);
  };
  switch (istr.intcode) {
    case kIntNone: put("NONE"); break;
    case kIntObs: put("OBS"); break;
    case kIntSecond: putName("SECOND"); break;
    case kIntMinute: putName("MINUTE"); break;
    case kIntHour: putName("HOUR"); break;
    case kIntDay: case kIntWeek: case kIntWeekV: putName("DAY"); break;
    case kIntWeekday: {
      putName("WEEKDAY");
      bool standard = istr.nweekday == 5 && istr.weekend[0] && istr.weekend[6];
      if (!standard) {
        for (int i = 0; i < 7; ++i)
          if (istr.weekend[i]) buf[n++] = static_cast<char>('1' + i);
        buf[n++] = 'W';
      }
      break;
    }
    case kIntTenday: putName("TENDAY"); break;
    case kIntSemimonth: putName("SEMIMONTH"); break;
    case kIntMonth: case kIntQtr: case kIntSemiyear: case kIntYear: putName("MONTH"); break;
    case kIntR445Mon: case kIntR445Qtr: case kIntR445Yr: putName("R445MON"); break;
    case kIntR454Mon: case kIntR454Qtr: case kIntR454Yr: putName("R454MON"); break;
    case kIntR544Mon: case kIntR544Qtr: case kIntR544Yr: putName("R544MON"); break;
    case kIntYearV: putName("WEEKV"); break;
    case kIntCustom: {
      // The calendar's own name: the token less its multiplier and shift.
      const int len = std::clamp<int>(istr.tokenlen, 0, kIntTokenMax);
      const bool plain = istr.intper <= 1 && istr.shiftper == 0;
      int end = len;
      while (end > 0 && (plain ? (istr.token[end - 1] == '1' || istr.token[end - 1] == '.')
                               : ((istr.token[end - 1] >= '0' && istr.token[end - 1] <= '9') ||
                                  istr.token[end - 1] == '.')))
        --end;
      if (end > 0 && zintstr(istr.token, end, sistr, istr.custom) == 0) return 0;
      zintstr(istr.token, len, sistr, istr.custom);
      return 0;
    }
    default:
      *sistr = INTERVAL{};
      return 2;
  }
  if (zintstr(buf, n, sistr) != 0) {
    *sistr = INTERVAL{};
    return 2;
  }
  return 0;
}

double zintck3(const INTERVALX& intervalx, double date0, double date1) noexcept {
  double c = zintck2(intervalx, date0, date1);
  if (wzmis(c)) return kMissing;
  INTERVAL sub;  // shared by the two steps, so the shift interval is found once
  const char same = 'S';
  const double s = zintnx3(intervalx, date0, c, &same, &sub);
  if (wzmis(s)) return kMissing;
  if (date1 < s) {
    c -= 1;
    const double s2 = zintnx3(intervalx, date0, c, &same, &sub);
    if (wzmis(s2) || date1 < s2) return kMissing;
  }
  return c;
}

}  // namespace qvt
