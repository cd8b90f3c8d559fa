// Date, time and datetime formats.
//
// Each format has a list of forms, most informative first; the first form
// that fits the width is written, right-aligned, and stars when none fits.
// Examples are for Wednesday 2020-01-01 13:30:45.
//
// | Format | Forms (width) |
// |---|---|
// | DATE | 01-JAN-2020 (11), 01JAN2020 (9), 01JAN20 (7), 01JAN (5) |
// | MONYY | JAN2020 (7), JAN20 (5) |
// | YYQ, YYQC | 2020Q1 / 2020:1 (6), 20Q1 / 20:1 (4) |
// | YEAR | 2020 (4), 20 (2) |
// | WEEKDATE | Wednesday, January 1, 2020 / Wed, Jan 1, 2020 / Wed, Jan 1, 20 / Wed |
// | WEEKDATX | Wednesday, 1 January 2020 / Wed, 1 Jan 2020 / Wed, 1 Jan 20 / Wed |
// | WEEKV, WEEKU, WEEKW | 2020-W01-03 (11), 2020W0103 (9), 20W0103 (7), 20W01 (5), W01 (3) |
// | YYMMDD | 2020-01-01 (10), 20-01-01 (8), 200101 (6), 20-01 (5), 2001 (4), 20 (2) |
// | YYMMDDx | separator x: B blank, C ':', D '-', P '.', S '/': 2020x01x01, 20x01x01, 20x01, 20 |
// | YYMMDDN | 20200101 (8), 200101 (6), 2001 (4), 20 (2) |
// | MMDDYY, DDMMYY | as YYMMDD in their field order, '/' for the plain name; the |
// |                | short forms drop the last field: 01/01/2020, 01/01/20, 010120, 01/01, 0101, 01 |
// | E8601DA | 2020-01-01 (10) |
// | DATETIME | 01JAN2020:13:30:45.5 (with d), 01JAN2020:13:30:45 (18), 01JAN20:13:30:45 (16), |
// |          | 01JAN20:13:31 (13), 01JAN20:14 (10), 01JAN20 (7) |
// | DTDATE, DTMONYY, DTYYQC, DTYEAR, DTWKDATX, DTWEEKV | the date form of the day the datetime falls in |
// | E8601DT | 2020-01-01T13:30:45.5 (with d), 2020-01-01T13:30:45 (19), 2020-01-01T13:31 (16) |
// | TIME | 13:30:45.5 (with d), 13:30:45, 13:31, 14; hours not padded, may pass 24 |
// | HHMM | 13:30.8 (with d, minutes with decimals), 13:31, 14 |
// | MMSS | 810:45.5 (with d), 810:45, 810 (total minutes) |
// | HOUR | 13.5 (with d), 14 |
// | TOD | 13:30:45.5 (with d), 13:30:45, 13:31, 14; time of day, two-digit hours |
// | E8601TM | 13:30:45.5 (with d), 13:30:45; two-digit hours |
//
// Week numbers. WEEKV is the ISO 8601 week date: weeks start on Monday and
// week 1 is the week that holds the year's first Thursday, so a day belongs
// to the week-numbering year of the Thursday of its week (2010-01-03 is
// 2009-W53-07). WEEKU counts Sunday-based weeks of the calendar year, days
// before the first Sunday being week 00, day 1 = Sunday (C's %U); WEEKW
// counts Monday-based weeks the same way, day 1 = Monday (C's %W).
//
// Clock readings are cut, not rounded. A datetime or time shown to the
// second, minute or hour (or to d decimals of them) shows the unit it falls
// in, as a clock does: 13:30:45 to the minute is 13:30, and 23:59:59, the
// end of an hourly period, is hour 23 of its own day, never 00 of the next.
// A date alone likewise shows the day the value falls in. Only HOUR, a
// number of hours with decimals, rounds (half away from zero). Values are
// first taken to the nanosecond, so binary noise below it changes nothing;
// a duration below zero is cut toward zero (-0.5 s to the second is 0:00:00).
#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "host/format_detail.hpp"
#include "host/hostdate.hpp"

namespace qvt::fmtdetail {
namespace {

constexpr std::array<const char*, 12> kMonthAbbr{"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                                 "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};
constexpr std::array<const char*, 12> kMonthName{"January", "February", "March",     "April",
                                                 "May",     "June",     "July",      "August",
                                                 "September", "October", "November", "December"};
constexpr std::array<const char*, 7> kDayName{"Sunday",   "Monday", "Tuesday", "Wednesday",
                                              "Thursday", "Friday", "Saturday"};

constexpr double kSecondsPerDay = 86400.0;

long long floorDiv(long long a, long long b) {
  long long q = a / b;
  if ((a % b != 0) && ((a < 0) != (b < 0))) --q;
  return q;
}

std::string pad(long long v, int digits) {
  std::string s = std::to_string(v < 0 ? -v : v);
  if (static_cast<int>(s.size()) < digits) s.insert(0, static_cast<std::size_t>(digits) - s.size(), '0');
  return v < 0 ? "-" + s : s;
}

// The first form that fits, right-aligned; stars when none does.
std::string pick(const std::vector<std::string>& forms, int width) {
  for (const auto& f : forms)
    if (static_cast<int>(f.size()) <= width) return fitRight(f, width);
  return stars(width);
}

// One calendar day, with what the formats show of it.
struct Day {
  double value = 0;  // whole days from 1960-01-01
  int y = 0, m = 0, d = 0;
  int wd = 0;  // 1 Sunday .. 7 Saturday
};

bool toDay(double dayValue, Day* out) {
  if (!std::isfinite(dayValue)) return false;
  const double v = std::floor(dayValue);
  if (v < kFirstDate || v > kLastDate) return false;
  out->value = v;
  if (hostDateToMdy(v, &out->m, &out->d, &out->y) != 0) return false;
  out->wd = static_cast<int>(hostWeekday(v));
  return true;
}

// January 1 of a year; 1581 lies before the calendar but is needed for the
// ISO week of 1582-01-01 (a Friday of week 1581-W52).
double januaryFirst(int y) {
  if (y == 1581) return kFirstDate - 365.0;
  return hostMdyToDate(1, 1, y);
}

int yearOf(double day) {
  if (day < kFirstDate) return 1581;
  if (day > kLastDate) return static_cast<int>(hostYear(kLastDate));  // the last day is 20000-12-26
  return static_cast<int>(hostYear(day));
}

// The day a datetime falls in: the one whose midnight is not after x.
// x / 86400 may round up to the next whole day for the last fraction of a
// second, hence the check on the product, which is exact.
bool datetimeDay(double x, Day* out) {
  if (!std::isfinite(x) || std::fabs(x) > 1e13) return false;
  double day = std::floor(x / kSecondsPerDay);
  if (day * kSecondsPerDay > x) day -= 1.0;
  return toDay(day, out);
}

struct Week {
  int year = 0, week = 0, day = 0;
};

// ISO 8601: the week-numbering year is that of the week's Thursday, and the
// week number counts whole weeks from that year's first Thursday.
Week isoWeek(const Day& t) {
  const int isoDay = t.wd == 1 ? 7 : t.wd - 1;  // Monday 1 .. Sunday 7
  const double thursday = t.value - isoDay + 4;
  Week w;
  w.year = yearOf(thursday);
  w.week = static_cast<int>((thursday - januaryFirst(w.year)) / 7.0) + 1;
  w.day = isoDay;
  return w;
}

// Sunday-based (C's %U) and Monday-based (C's %W) weeks of the calendar year.
Week sundayWeek(const Day& t) {
  const int yday = static_cast<int>(t.value - januaryFirst(t.y));
  return {t.y, (yday + 7 - (t.wd - 1)) / 7, t.wd};
}
Week mondayWeek(const Day& t) {
  const int yday = static_cast<int>(t.value - januaryFirst(t.y));
  return {t.y, (yday + 7 - (t.wd + 5) % 7) / 7, t.wd == 1 ? 7 : t.wd - 1};
}

std::string yy(int y) { return pad(y % 100, 2); }
std::string yyyy(int y) { return pad(y, 4); }

std::vector<std::string> dateForms(const Day& t) {
  const std::string dd = pad(t.d, 2), mon = kMonthAbbr[t.m - 1];
  return {dd + "-" + mon + "-" + yyyy(t.y), dd + mon + yyyy(t.y), dd + mon + yy(t.y), dd + mon};
}

std::vector<std::string> weekForms(const Week& w) {
  const std::string ww = "W" + pad(w.week, 2), dd = pad(w.day, 2);
  return {yyyy(w.year) + "-" + ww + "-" + dd, yyyy(w.year) + ww + dd, yy(w.year) + ww + dd,
          yy(w.year) + ww, ww};
}

std::vector<std::string> weekdateForms(const Day& t, bool dayFirst) {
  const std::string day = kDayName[t.wd - 1], mon = kMonthName[t.m - 1];
  const std::string dayA = day.substr(0, 3), monA = mon.substr(0, 3), d = std::to_string(t.d);
  if (dayFirst)
    return {day + ", " + d + " " + mon + " " + yyyy(t.y), dayA + ", " + d + " " + monA + " " + yyyy(t.y),
            dayA + ", " + d + " " + monA + " " + yy(t.y), dayA};
  return {day + ", " + mon + " " + d + ", " + yyyy(t.y), dayA + ", " + monA + " " + d + ", " + yyyy(t.y),
          dayA + ", " + monA + " " + d + ", " + yy(t.y), dayA};
}

// YYMMDD, MMDDYY and DDMMYY: `order` names the fields ('y', 'm', 'd').
std::vector<std::string> numericDateForms(const Day& t, const char* order, char variant) {
  auto field = [&](char f, bool longYear) {
    if (f == 'y') return longYear ? yyyy(t.y) : yy(t.y);
    return pad(f == 'm' ? t.m : t.d, 2);
  };
  auto join = [&](int nfields, bool longYear, const std::string& sep) {
    std::string s;
    for (int i = 0; i < nfields; ++i) {
      if (i > 0) s += sep;
      s += field(order[i], longYear);
    }
    return s;
  };
  if (variant == 0) {
    const std::string sep = order[0] == 'y' ? "-" : "/";
    return {join(3, true, sep), join(3, false, sep), join(3, false, ""),
            join(2, false, sep), join(2, false, ""), join(1, false, "")};
  }
  if (variant == 'N') return {join(3, true, ""), join(3, false, ""), join(2, false, ""), join(1, false, "")};
  std::string sep(1, '-');
  switch (variant) {
    case 'B': sep = " "; break;
    case 'C': sep = ":"; break;
    case 'P': sep = "."; break;
    case 'S': sep = "/"; break;
    default: break;
  }
  return {join(3, true, sep), join(3, false, sep), join(2, false, sep), join(1, false, "")};
}

std::string renderDateFamily(const Day& t, Family f, char variant, int width) {
  switch (f) {
    case Family::Date:
    case Family::Dtdate: return pick(dateForms(t), width);
    case Family::Monyy:
    case Family::Dtmonyy: return pick({kMonthAbbr[t.m - 1] + yyyy(t.y), kMonthAbbr[t.m - 1] + yy(t.y)}, width);
    case Family::Yyq: {
      const std::string q = "Q" + std::to_string((t.m - 1) / 3 + 1);
      return pick({yyyy(t.y) + q, yy(t.y) + q}, width);
    }
    case Family::Yyqc:
    case Family::Dtyyqc: {
      const std::string q = ":" + std::to_string((t.m - 1) / 3 + 1);
      return pick({yyyy(t.y) + q, yy(t.y) + q}, width);
    }
    case Family::Year:
    case Family::Dtyear: return pick({yyyy(t.y), yy(t.y)}, width);
    case Family::Weekdate: return pick(weekdateForms(t, false), width);
    case Family::Weekdatx:
    case Family::Dtwkdatx: return pick(weekdateForms(t, true), width);
    case Family::Weekv:
    case Family::Dtweekv: return pick(weekForms(isoWeek(t)), width);
    case Family::Weeku: return pick(weekForms(sundayWeek(t)), width);
    case Family::Weekw: return pick(weekForms(mondayWeek(t)), width);
    case Family::Ymd: return pick(numericDateForms(t, "ymd", variant), width);
    case Family::Mdy: return pick(numericDateForms(t, "mdy", variant), width);
    case Family::Dmy: return pick(numericDateForms(t, "dmy", variant), width);
    case Family::E8601da: return pick({yyyy(t.y) + "-" + pad(t.m, 2) + "-" + pad(t.d, 2)}, width);
    default: return stars(width);
  }
}

// A time value in units of `unit` seconds with `nd` decimals of that unit,
// cut (or, with `round`, rounded): whole units and the fraction digits.
// False when too large.
struct Rounded {
  bool neg = false;
  long long whole = 0;  // whole units, magnitude
  std::string frac;     // nd digits
};

bool roundTo(double x, double unit, int nd, Rounded* out, bool round = false) {
  if (!std::isfinite(x) || std::fabs(x) / unit > 1e15) return false;
  long long n = 0;
  const double units = std::fabs(x) / unit;
  if (!(round ? roundScaled(units, nd, &n) : floorScaled(units, nd, &n))) return false;
  long long scale = 1;
  for (int i = 0; i < nd; ++i) scale *= 10;
  out->neg = x < 0 && n != 0;
  out->whole = n / scale;
  out->frac = nd > 0 ? pad(n % scale, nd) : "";
  return true;
}

// A datetime cut to `unit` seconds (1, 60 or 3600) with `nd` decimals of a
// second: the day it falls in and the time of that day.
struct Clock {
  Day day;
  int h = 0, m = 0, s = 0;
  std::string frac;
};

bool toClock(double x, double unit, int nd, Clock* out) {
  if (!std::isfinite(x) || std::fabs(x) > 1e13) return false;
  long long n = 0;
  if (!floorScaled(x / unit, unit == 1.0 ? nd : 0, &n)) return false;
  long long scale = 1;
  if (unit == 1.0)
    for (int i = 0; i < nd; ++i) scale *= 10;
  const long long wholeUnits = floorDiv(n, scale);
  const long long fracUnits = n - wholeUnits * scale;
  const long long seconds = wholeUnits * static_cast<long long>(unit);
  const long long days = floorDiv(seconds, 86400);
  const long long sod = seconds - days * 86400;
  if (!toDay(static_cast<double>(days), &out->day)) return false;
  out->h = static_cast<int>(sod / 3600);
  out->m = static_cast<int>(sod / 60 % 60);
  out->s = static_cast<int>(sod % 60);
  out->frac = (unit == 1.0 && nd > 0) ? pad(fracUnits, nd) : "";
  return true;
}

std::string hms(const Clock& c, int parts) {
  std::string t = pad(c.h, 2);
  if (parts >= 2) t += ":" + pad(c.m, 2);
  if (parts >= 3) t += ":" + pad(c.s, 2);
  if (!c.frac.empty()) t += "." + c.frac;
  return t;
}

std::string renderDatetime(double x, Family f, int width, int decimals) {
  Clock c;
  const bool iso = f == Family::E8601dt;
  auto datePart = [&](bool longYear) {
    if (iso) return yyyy(c.day.y) + "-" + pad(c.day.m, 2) + "-" + pad(c.day.d, 2) + "T";
    return pad(c.day.d, 2) + kMonthAbbr[c.day.m - 1] + (longYear ? yyyy(c.day.y) : yy(c.day.y)) + ":";
  };
  // The forms in order of preference; the first that fits is the result.
  std::string out;
  auto fits = [&](const std::string& form) {
    if (static_cast<int>(form.size()) > width) return false;
    out = fitRight(form, width);
    return true;
  };
  for (int nd = std::max(decimals, 0); nd >= 0; --nd) {
    if (!toClock(x, 1.0, nd, &c)) return stars(width);
    if (fits(datePart(true) + hms(c, 3))) return out;
    if (!iso && fits(datePart(false) + hms(c, 3))) return out;
  }
  if (!toClock(x, 60.0, 0, &c)) return stars(width);
  if (fits(datePart(iso) + hms(c, 2))) return out;
  if (iso) return stars(width);
  if (!toClock(x, 3600.0, 0, &c)) return stars(width);
  if (fits(datePart(false) + hms(c, 1))) return out;
  Day t;
  if (!datetimeDay(x, &t)) return stars(width);
  if (fits(pad(t.d, 2) + kMonthAbbr[t.m - 1] + yy(t.y))) return out;
  return stars(width);
}

// TIME, HHMM, MMSS, HOUR, TOD, E8601TM.
std::string renderTime(double x, Family f, int width, int decimals) {
  std::vector<std::string> forms;
  const bool tod = f == Family::Tod;
  if (tod) {
    if (!std::isfinite(x) || std::fabs(x) > 1e13) return stars(width);
    x -= std::floor(x / kSecondsPerDay) * kSecondsPerDay;  // time of day of a datetime or time
  }
  const int hourDigits = (tod || f == Family::E8601tm) ? 2 : 1;
  // Clock text of `r` (in units of `unit` seconds) with `parts` fields.
  auto clock = [&](const Rounded& r, double unit, int parts) {
    const long long secs = r.whole * static_cast<long long>(unit);
    long long h = secs / 3600;
    if (tod) h %= 24;
    std::string t = (r.neg ? "-" : "") + pad(h, hourDigits);
    if (parts >= 2) t += ":" + pad(secs / 60 % 60, 2);
    if (parts >= 3) t += ":" + pad(secs % 60, 2);
    if (!r.frac.empty()) t += "." + r.frac;
    return t;
  };
  Rounded r;
  switch (f) {
    case Family::Time:
    case Family::Tod:
    case Family::E8601tm:
      for (int nd = decimals; nd >= 1; --nd) {
        if (!roundTo(x, 1.0, nd, &r)) return stars(width);
        forms.push_back(clock(r, 1.0, 3));
      }
      if (!roundTo(x, 1.0, 0, &r)) return stars(width);
      forms.push_back(clock(r, 1.0, 3));
      if (f != Family::E8601tm) {
        if (!roundTo(x, 60.0, 0, &r)) return stars(width);
        forms.push_back(clock(r, 60.0, 2));
        if (!roundTo(x, 3600.0, 0, &r)) return stars(width);
        forms.push_back(clock(r, 3600.0, 1));
      }
      break;
    case Family::Hhmm:
      for (int nd = std::max(decimals, 0); nd >= 0; --nd) {
        if (!roundTo(x, 60.0, nd, &r)) return stars(width);
        forms.push_back((r.neg ? "-" : "") + std::to_string(r.whole / 60) + ":" + pad(r.whole % 60, 2) +
                        (nd > 0 ? "." + r.frac : ""));
      }
      if (!roundTo(x, 3600.0, 0, &r)) return stars(width);
      forms.push_back((r.neg ? "-" : "") + std::to_string(r.whole));
      break;
    case Family::Mmss:
      for (int nd = std::max(decimals, 0); nd >= 0; --nd) {
        if (!roundTo(x, 1.0, nd, &r)) return stars(width);
        forms.push_back((r.neg ? "-" : "") + std::to_string(r.whole / 60) + ":" + pad(r.whole % 60, 2) +
                        (nd > 0 ? "." + r.frac : ""));
      }
      if (!roundTo(x, 60.0, 0, &r)) return stars(width);
      forms.push_back((r.neg ? "-" : "") + std::to_string(r.whole));
      break;
    case Family::Hour:
      for (int nd = std::max(decimals, 0); nd >= 0; --nd) {
        if (!roundTo(x, 3600.0, nd, &r, true)) return stars(width);
        forms.push_back((r.neg ? "-" : "") + std::to_string(r.whole) + (nd > 0 ? "." + r.frac : ""));
      }
      break;
    default: return stars(width);
  }
  return pick(forms, width);
}

}  // namespace

std::string renderTemporal(double x, Family family, char variant, int width, int decimals) {
  if (decimals > 9) decimals = 9;  // beyond nanoseconds a double carries nothing
  switch (family) {
    case Family::Datetime:
    case Family::E8601dt: return renderDatetime(x, family, width, decimals);
    case Family::Time:
    case Family::Hhmm:
    case Family::Mmss:
    case Family::Hour:
    case Family::Tod:
    case Family::E8601tm: return renderTime(x, family, width, decimals);
    case Family::Dtdate:
    case Family::Dtmonyy:
    case Family::Dtyyqc:
    case Family::Dtyear:
    case Family::Dtwkdatx:
    case Family::Dtweekv: {
      Day t;
      if (!datetimeDay(x, &t)) return stars(width);
      return renderDateFamily(t, family, variant, width);
    }
    default: {
      Day t;
      if (!toDay(x, &t)) return stars(width);
      return renderDateFamily(t, family, variant, width);
    }
  }
}

}  // namespace qvt::fmtdetail
