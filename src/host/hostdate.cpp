#include "host/hostdate.hpp"

#include <cmath>
#include <initializer_list>

#include "run/missing.hpp"

namespace qvt {
namespace {

// Days from 1970-01-01 to 1960-01-01 is -3653; the algorithms below count
// from 1970-01-01 (H. Hinnant, "chrono-Compatible Low-Level Date Algorithms").
constexpr long kEpochShift = 3653;

constexpr long daysFromCivil(long y, unsigned m, unsigned d) noexcept {
  y -= m <= 2;
  const long era = (y >= 0 ? y : y - 399) / 400;
  const auto yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<long>(doe) - 719468;
}

struct Civil {
  long y;
  unsigned m, d;
};

constexpr Civil civilFromDays(long z) noexcept {
  z += 719468;
  const long era = (z >= 0 ? z : z - 146096) / 146097;
  const auto doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const long y = static_cast<long>(yoe) + era * 400;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  const unsigned d = doy - (153 * mp + 2) / 5 + 1;
  const unsigned m = mp < 10 ? mp + 3 : mp - 9;
  return {y + (m <= 2), m, d};
}

static_assert(daysFromCivil(1960, 1, 1) == -kEpochShift);
static_assert(daysFromCivil(1582, 1, 1) + kEpochShift == -138061);
static_assert(daysFromCivil(20000, 12, 26) + kEpochShift == 6589335);

constexpr bool leap(long y) noexcept { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); }

constexpr int monthLength(long y, int m) noexcept {
  constexpr int len[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return m == 2 && leap(y) ? 29 : len[m - 1];
}

bool convertible(double date) noexcept {
  return !wzmis(date) && std::isfinite(date) && date >= kFirstDate && date < kLastDate + 1.0;
}

}  // namespace

double hostMdyToDate(int month, int day, int year) noexcept {
  if (month < 1 || month > 12 || year < 1582 || year > 20000) return kMissing;
  if (day < 1 || day > monthLength(year, month)) return kMissing;
  const auto v = static_cast<double>(
      daysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) + kEpochShift);
  return v > kLastDate ? kMissing : v;
}

int hostDateToMdy(double date, int* month, int* day, int* year) noexcept {
  if (!convertible(date)) return 1;
  const Civil c = civilFromDays(static_cast<long>(std::floor(date)) - kEpochShift);
  if (month) *month = static_cast<int>(c.m);
  if (day) *day = static_cast<int>(c.d);
  if (year) *year = static_cast<int>(c.y);
  return 0;
}

double hostMdy(double month, double day, double year) noexcept {
  for (double v : {month, day, year})
    if (wzmis(v) || !std::isfinite(v) || v != std::floor(v) || std::fabs(v) > 1e6) return kMissing;
  return hostMdyToDate(static_cast<int>(month), static_cast<int>(day), static_cast<int>(year));
}

double hostYear(double date) noexcept {
  int y = 0;
  if (hostDateToMdy(date, nullptr, nullptr, &y) != 0) return kMissing;
  return y;
}

double hostWeekday(double date) noexcept {
  if (!convertible(date)) return kMissing;
  // 1960-01-01 was a Friday (6 when Sunday is 1).
  const long d = static_cast<long>(std::floor(date));
  long w = (d + 5) % 7;
  if (w < 0) w += 7;
  return static_cast<double>(w + 1);
}

double hostTimePart(double datetime) noexcept {
  if (wzmis(datetime) || !std::isfinite(datetime)) return kMissing;
  double t = std::fmod(datetime, 86400.0);
  if (t < 0) t += 86400.0;
  // A tiny negative remainder rounds up to a whole day when 86400 is added;
  // the time of day must stay below midnight.
  if (t >= 86400.0) t = std::nextafter(86400.0, 0.0);
  return t;
}

}  // namespace qvt
