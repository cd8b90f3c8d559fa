// Informats: ISO 8601 text and the date, time and datetime literals of the
// statement language, read into date, time and datetime values; and the
// ISO text that reads back to the same value.
#include "host/format_read.hpp"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <system_error>

#include "host/format_detail.hpp"
#include "host/hostdate.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

constexpr double kSecondsPerDay = 86400.0;

std::string_view trim(std::string_view t) {
  while (!t.empty() && (t.front() == ' ' || t.front() == '\t')) t.remove_prefix(1);
  while (!t.empty() && (t.back() == ' ' || t.back() == '\t')) t.remove_suffix(1);
  return t;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Reads between minDigits and maxDigits digits at t[i]; the run of digits
// there must not be longer. Advances i.
bool digits(std::string_view t, std::size_t& i, int minDigits, int maxDigits, int* value) {
  std::size_t j = i;
  int v = 0;
  while (j < t.size() && isDigit(t[j])) {
    if (static_cast<int>(j - i) >= maxDigits) return false;
    v = v * 10 + (t[j] - '0');
    ++j;
  }
  if (static_cast<int>(j - i) < minDigits) return false;
  *value = v;
  i = j;
  return true;
}

bool expect(std::string_view t, std::size_t& i, char c) {
  if (i >= t.size() || t[i] != c) return false;
  ++i;
  return true;
}

constexpr bool isLeap(int y) { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); }

constexpr int monthDays(int y, int m) {
  constexpr int len[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return m == 2 && isLeap(y) ? 29 : len[m - 1];
}

// The date value of a checked Gregorian day.
int dateValue(int y, int m, int d, double* value) {
  if (m < 1 || m > 12 || d < 1 || d > monthDays(y, m)) return kReadField;
  if (y < 1582) return kReadRange;
  const double v = hostMdyToDate(m, d, y);
  if (wzmis(v)) return kReadRange;
  *value = v;
  return kReadOk;
}

// A clock "H:MM[:SS[.fff]]" at t[i..]; hours of hourMin..2 digits, 0-23.
// The whole seconds of the day go to *whole, the fraction (0 when none) to *frac.
int clock(std::string_view t, std::size_t& i, int hourMin, long long* whole, double* frac) {
  int h = 0, m = 0, s = 0;
  if (!digits(t, i, hourMin, 2, &h) || !expect(t, i, ':') || !digits(t, i, 2, 2, &m)) return kReadSyntax;
  *frac = 0.0;
  if (i < t.size() && t[i] == ':') {
    ++i;
    if (!digits(t, i, 2, 2, &s)) return kReadSyntax;
    if (i < t.size() && t[i] == '.') {
      const std::size_t start = i;
      ++i;
      while (i < t.size() && isDigit(t[i])) ++i;
      if (i == start + 1) return kReadSyntax;
      // ".fff" read as one correctly rounded double.
      const auto r = std::from_chars(t.data() + start, t.data() + i, *frac);
      if (r.ec != std::errc() || r.ptr != t.data() + i) return kReadSyntax;
    }
  }
  if (h > 23 || m > 59 || s > 59) return kReadField;
  *whole = h * 3600LL + m * 60LL + s;
  return kReadOk;
}

int isoDate(std::string_view t, double* value) {
  std::size_t i = 0;
  int y = 0, m = 0, d = 0;
  if (!digits(t, i, 4, 5, &y) || !expect(t, i, '-') || !digits(t, i, 2, 2, &m) || !expect(t, i, '-') ||
      !digits(t, i, 2, 2, &d) || i != t.size())
    return kReadSyntax;
  return dateValue(y, m, d, value);
}

int isoTime(std::string_view t, long long* whole, double* frac) {
  std::size_t i = 0;
  const int rc = clock(t, i, 2, whole, frac);
  if (rc == kReadSyntax || i != t.size()) return kReadSyntax;
  return rc;
}

constexpr const char* kMonths = "JANFEBMARAPRMAYJUNJULAUGSEPOCTNOVDEC";

int upper(char c) { return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c; }

// DDMONYY or DDMONYYYY at the whole of t.
int dateLiteral(std::string_view t, int cutoff, double* value) {
  std::size_t i = 0;
  int d = 0;
  if (!digits(t, i, 1, 2, &d) || i + 3 > t.size()) return kReadSyntax;
  int m = 0;
  for (int k = 0; k < 12; ++k) {
    if (upper(t[i]) == kMonths[3 * k] && upper(t[i + 1]) == kMonths[3 * k + 1] &&
        upper(t[i + 2]) == kMonths[3 * k + 2]) {
      m = k + 1;
      break;
    }
  }
  if (m == 0) return kReadSyntax;
  i += 3;
  const std::size_t ys = i;
  int y = 0;
  if (!digits(t, i, 2, 5, &y) || i != t.size()) return kReadSyntax;
  const std::size_t ylen = i - ys;
  if (ylen == 3) return kReadSyntax;
  if (ylen == 2) {
    // The hundred years that start at the cutoff: 1940 makes 40..99 the
    // 1900s and 00..39 the 2000s.
    y += cutoff - cutoff % 100;
    if (y < cutoff) y += 100;
  }
  return dateValue(y, m, d, value);
}

// Date and time joined: datetime value from the day and the clock.
double joinDatetime(double day, long long whole, double frac) {
  // day * 86400 + whole is a whole number well inside 2^53: exact.
  return day * kSecondsPerDay + static_cast<double>(whole) + frac;
}

int splitDatetime(std::string_view t, bool iso, std::size_t* at) {
  for (std::size_t i = 0; i < t.size(); ++i) {
    const char c = t[i];
    if (c == ' ' || (iso && (c == 'T' || c == 't')) || (!iso && c == ':')) {
      *at = i;
      return kReadOk;
    }
  }
  return kReadSyntax;
}

}  // namespace

int readIsoDate(std::string_view text, double* value) noexcept { return isoDate(trim(text), value); }

int readIsoTime(std::string_view text, double* value) noexcept {
  long long whole = 0;
  double frac = 0;
  const int rc = isoTime(trim(text), &whole, &frac);
  if (rc == kReadOk) *value = static_cast<double>(whole) + frac;
  return rc;
}

int readIsoDatetime(std::string_view text, double* value) noexcept {
  const std::string_view t = trim(text);
  std::size_t at = 0;
  if (splitDatetime(t, true, &at) != kReadOk) return kReadSyntax;
  double day = 0;
  long long whole = 0;
  double frac = 0;
  const int rcTime = isoTime(t.substr(at + 1), &whole, &frac);
  const int rcDate = isoDate(t.substr(0, at), &day);
  if (rcDate == kReadSyntax || rcTime == kReadSyntax) return kReadSyntax;
  if (rcDate != kReadOk) return rcDate;
  if (rcTime != kReadOk) return rcTime;
  *value = joinDatetime(day, whole, frac);
  return kReadOk;
}

int readDateLiteral(std::string_view text, double* value, int yearCutoff) noexcept {
  return dateLiteral(trim(text), yearCutoff, value);
}

int readTimeLiteral(std::string_view text, double* value) noexcept {
  const std::string_view t = trim(text);
  std::size_t i = 0;
  long long whole = 0;
  double frac = 0;
  const int rc = clock(t, i, 1, &whole, &frac);
  if (rc == kReadSyntax || i != t.size()) return kReadSyntax;
  if (rc == kReadOk) *value = static_cast<double>(whole) + frac;
  return rc;
}

int readDatetimeLiteral(std::string_view text, double* value, int yearCutoff) noexcept {
  const std::string_view t = trim(text);
  std::size_t at = 0;
  if (splitDatetime(t, false, &at) != kReadOk) return kReadSyntax;
  const std::string_view timeText = t.substr(at + 1);
  std::size_t i = 0;
  long long whole = 0;
  double frac = 0;
  double day = 0;
  int rcTime = clock(timeText, i, 1, &whole, &frac);
  if (i != timeText.size()) rcTime = kReadSyntax;
  const int rcDate = dateLiteral(t.substr(0, at), yearCutoff, &day);
  if (rcDate == kReadSyntax || rcTime == kReadSyntax) return kReadSyntax;
  if (rcDate != kReadOk) return rcDate;
  if (rcTime != kReadOk) return rcTime;
  *value = joinDatetime(day, whole, frac);
  return kReadOk;
}

int readIsoValue(std::string_view text, double* value, TemporalKind* kind) noexcept {
  const std::string_view t = trim(text);
  *kind = TemporalKind::None;
  const auto dash = t.find('-');
  const auto colon = t.find(':');
  const bool digitFirst = !t.empty() && isDigit(t[0]);
  if (!digitFirst) return kReadSyntax;
  int rc = kReadSyntax;
  TemporalKind k = TemporalKind::None;
  if (dash != std::string_view::npos && colon != std::string_view::npos) {
    rc = readIsoDatetime(t, value);
    k = TemporalKind::Datetime;
  } else if (dash != std::string_view::npos) {
    rc = readIsoDate(t, value);
    k = TemporalKind::Date;
  } else if (colon != std::string_view::npos) {
    rc = readIsoTime(t, value);
    k = TemporalKind::Time;
  }
  if (rc == kReadOk) *kind = k;
  return rc;
}

namespace {

// Appends to `base` the fewest fraction digits of `frac` (0 < frac < 1)
// with which `read` gives back exactly `target`.
template <class Reader>
std::string withFraction(const std::string& base, double frac, double target, Reader read) {
  const fmtdetail::Decimal d = fmtdetail::toDecimal(frac);
  std::string last = base;
  for (int n = 1; n <= 25; ++n) {
    std::string digitsText = fmtdetail::roundedDigits(d, n);
    if (static_cast<int>(digitsText.size()) > n) continue;  // rounds up to a whole second
    digitsText.insert(0, static_cast<std::size_t>(n) - digitsText.size(), '0');
    last = base + "." + digitsText;
    double back = 0;
    if (read(last, &back) == kReadOk && std::bit_cast<std::uint64_t>(back) == std::bit_cast<std::uint64_t>(target))
      return last;
  }
  return last;
}

std::string two(long long v) {
  std::string s = std::to_string(v);
  return s.size() < 2 ? "0" + s : s;
}

std::string dateText(double day) {
  int m = 0, d = 0, y = 0;
  if (hostDateToMdy(day, &m, &d, &y) != 0) return {};
  return std::to_string(y) + "-" + two(m) + "-" + two(d);
}

}  // namespace

std::string isoDateText(double date) {
  if (wzmis(date) || !std::isfinite(date)) return {};
  const double day = std::floor(date);
  if (day < kFirstDate || day > kLastDate) return {};
  return dateText(day);
}

std::string isoTimeText(double time) {
  if (wzmis(time) || !std::isfinite(time) || time < 0.0 || time >= kSecondsPerDay) return {};
  const double whole = std::floor(time);
  const auto s = static_cast<long long>(whole);
  const std::string base = two(s / 3600) + ":" + two(s / 60 % 60) + ":" + two(s % 60);
  if (whole == time) return base;
  return withFraction(base, time - whole, time, [](const std::string& t, double* v) { return readIsoTime(t, v); });
}

std::string isoDatetimeText(double datetime) {
  if (wzmis(datetime) || !std::isfinite(datetime)) return {};
  if (datetime < kFirstDate * kSecondsPerDay || datetime >= (kLastDate + 1.0) * kSecondsPerDay) return {};
  const double whole = std::floor(datetime);
  const auto s = static_cast<long long>(whole);
  long long day = s / 86400;
  if (s % 86400 < 0) --day;
  const long long sod = s - day * 86400;
  const std::string date = dateText(static_cast<double>(day));
  if (date.empty()) return {};
  const std::string base = date + "T" + two(sod / 3600) + ":" + two(sod / 60 % 60) + ":" + two(sod % 60);
  if (whole == datetime) return base;
  return withFraction(base, datetime - whole, datetime,
                      [](const std::string& t, double* v) { return readIsoDatetime(t, v); });
}

}  // namespace qvt
