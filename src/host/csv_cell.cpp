#include "host/csv_cell.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

#include "host/hostdate.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

constexpr double kTwo53 = 9007199254740992.0;

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

std::string_view trim(std::string_view s) noexcept {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

// Reads exactly n digits at s[i..]; false when any is not a digit.
bool digits(std::string_view s, std::size_t i, std::size_t n, long long* out) noexcept {
  if (i + n > s.size()) return false;
  long long v = 0;
  for (std::size_t k = 0; k < n; ++k) {
    if (!isDigit(s[i + k])) return false;
    v = v * 10 + (s[i + k] - '0');
  }
  *out = v;
  return true;
}

bool parseNumber(std::string_view s, double* value) noexcept {
  if (!s.empty() && s.front() == '+') s.remove_prefix(1);
  if (s.empty()) return false;
  // from_chars takes "nan", "inf" and "infinity" in any case; keep only the infinities.
  const std::size_t first = s.front() == '-' ? 1 : 0;
  if (first >= s.size() || s[first] == 'n' || s[first] == 'N') return false;
  double v = 0;
  const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
  if (r.ptr != s.data() + s.size()) return false;
  if (r.ec == std::errc::result_out_of_range) {
    // A number beyond the range of doubles reads as the nearest double, as
    // strtod rounds it: 1e-400 as 0, 1e400 as infinity (an extreme value,
    // which the series treat as missing). The syntax is from_chars' own,
    // so strtod reads exactly these characters.
    v = std::strtod(std::string(s).c_str(), nullptr);
  } else if (r.ec != std::errc()) {
    return false;
  }
  *value = v;
  return true;
}

// Seconds and fraction "SS" or "SS.ddd": whole seconds in *whole, the
// fraction (read as the double nearest 0.ddd) in *frac.
bool parseSeconds(std::string_view s, long long* whole, double* frac) noexcept {
  if (!digits(s, 0, 2, whole) || *whole > 59) return false;
  *frac = 0.0;
  if (s.size() == 2) return true;
  if (s[2] != '.' || s.size() == 3) return false;
  const std::string_view f = s.substr(3);
  std::array<char, 128> buf{};
  if (f.size() + 2 > buf.size()) return false;
  buf[0] = '0';
  buf[1] = '.';
  for (std::size_t k = 0; k < f.size(); ++k) {
    if (!isDigit(f[k])) return false;
    buf[k + 2] = f[k];
  }
  const auto r = std::from_chars(buf.data(), buf.data() + f.size() + 2, *frac);
  return r.ec == std::errc() && r.ptr == buf.data() + f.size() + 2;
}

// "HH:MM", "HH:MM:SS", "HH:MM:SS.ddd" with hours of minDigits..maxDigits
// digits, below maxHours; seconds since midnight in whole + frac.
bool parseClock(std::string_view s, std::size_t minDigits, std::size_t maxDigits, long long maxHours,
                long long* whole, double* frac) noexcept {
  std::size_t h = 0;
  while (h < s.size() && isDigit(s[h])) ++h;
  if (h < minDigits || h > maxDigits || h + 3 > s.size() || s[h] != ':') return false;
  long long hh = 0, mm = 0, ss = 0;
  digits(s, 0, h, &hh);
  if (hh >= maxHours) return false;
  if (!digits(s, h + 1, 2, &mm) || mm > 59) return false;
  *frac = 0.0;
  if (s.size() == h + 3) {
    *whole = hh * 3600 + mm * 60;
    return true;
  }
  if (s[h + 3] != ':' || !parseSeconds(s.substr(h + 4), &ss, frac)) return false;
  *whole = hh * 3600 + mm * 60 + ss;
  return true;
}

// A date "YYYY-MM-DD" (or a five-digit year) at the start of s; the length read.
std::size_t parseDatePart(std::string_view s, double* day) noexcept {
  std::size_t y = 0;
  while (y < s.size() && isDigit(s[y])) ++y;
  if (y < 4 || y > 5 || y + 6 > s.size() || s[y] != '-' || s[y + 3] != '-') return 0;
  long long yy = 0, mm = 0, dd = 0;
  digits(s, 0, y, &yy);
  if (!digits(s, y + 1, 2, &mm) || !digits(s, y + 4, 2, &dd)) return 0;
  const double d = hostMdyToDate(static_cast<int>(mm), static_cast<int>(dd), static_cast<int>(yy));
  if (wzmis(d)) return 0;
  *day = d;
  return y + 6;
}

CellKind classifyIso(std::string_view s, double* value) noexcept {
  double day = 0;
  if (const std::size_t n = parseDatePart(s, &day)) {
    if (n == s.size()) {
      *value = day;
      return CellKind::Date;
    }
    if (s[n] != 'T' && s[n] != ' ') return CellKind::Text;
    long long whole = 0;
    double frac = 0;
    if (!parseClock(s.substr(n + 1), 2, 2, 24, &whole, &frac)) return CellKind::Text;
    // Exact: day * 86400 + whole is a whole number far below 2^53, and adding
    // the fraction rounds once.
    *value = (day * 86400.0 + static_cast<double>(whole)) + frac;
    return CellKind::DateTime;
  }
  long long whole = 0;
  double frac = 0;
  if (parseClock(s, 1, 12, 2501999792983LL, &whole, &frac)) {
    *value = static_cast<double>(whole) + frac;
    return CellKind::Time;
  }
  return CellKind::Text;
}

}  // namespace

DateFlaw csvDateFlaw(std::string_view cell) noexcept {
  const std::string_view s = trim(cell);
  std::size_t y = 0;
  while (y < s.size() && isDigit(s[y])) ++y;
  if (y < 4 || y > 5 || y + 6 > s.size() || s[y] != '-' || s[y + 3] != '-') return DateFlaw::None;
  for (const std::size_t k : {y + 1, y + 2, y + 4, y + 5})
    if (!isDigit(s[k])) return DateFlaw::None;
  if (s.size() > y + 6 && s[y + 6] != 'T' && s[y + 6] != ' ') return DateFlaw::None;
  double day = 0;
  return parseDatePart(s, &day) == 0 ? DateFlaw::Day : DateFlaw::Time;
}

CellKind csvClassify(std::string_view cell, double* value) noexcept {
  const std::string_view s = trim(cell);
  double v = 0;
  if (s.empty()) {
    v = kMissing;
  } else if (s[0] == '.' && s.size() <= 2) {
    if (s.size() == 1) {
      v = kMissing;
    } else {
      const char c = s[1];
      if (!((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_')) {
        if (!parseNumber(s, &v)) return CellKind::Text;  // ".5"
        *value = v;
        return CellKind::Number;
      }
      v = skMissVal(c);
    }
  } else if (parseNumber(s, &v)) {
    *value = v;
    return CellKind::Number;
  } else if (isDigit(s[0])) {
    return classifyIso(s, value);
  } else {
    return CellKind::Text;
  }
  *value = v;
  return CellKind::Missing;
}

bool csvParseAs(std::string_view cell, CellKind kind, double* value) noexcept {
  double v = 0;
  const CellKind k = csvClassify(cell, &v);
  if (k == CellKind::Missing || k == kind || k == CellKind::Number) {
    *value = v;
    return kind != CellKind::Text;
  }
  return false;
}

CellKind csvFormatKind(std::string_view format) noexcept {
  // The name is what stands before the width: "E8601DA10." -> "E8601DA".
  std::string_view f = format;
  if (const auto dot = f.find('.'); dot != std::string_view::npos) f = f.substr(0, dot);
  while (!f.empty() && isDigit(f.back())) f.remove_suffix(1);
  char name[24];
  if (f.empty() || f.size() >= sizeof name) return CellKind::Number;
  for (std::size_t i = 0; i < f.size(); ++i) {
    const char c = f[i];
    name[i] = (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
  }
  const std::string_view n(name, f.size());
  static constexpr std::string_view kDate[] = {
      "DATE", "DAY", "DDMMYY", "DDMMYYB", "DDMMYYC", "DDMMYYD", "DDMMYYN", "DDMMYYP", "DDMMYYS",
      "DOWNAME", "E8601DA", "JULDAY", "JULIAN", "MMDDYY", "MMDDYYB", "MMDDYYC", "MMDDYYD", "MMDDYYN",
      "MMDDYYP", "MMDDYYS", "MMYY", "MMYYC", "MMYYD", "MMYYN", "MMYYP", "MMYYS", "MONNAME", "MONTH",
      "MONYY", "QTR", "WEEKDATE", "WEEKDATX", "WEEKDAY", "WEEKU", "WEEKV", "WEEKW", "WORDDATE",
      "WORDDATX", "YEAR", "YYMM", "YYMMC", "YYMMD", "YYMMDD", "YYMMDDB", "YYMMDDC", "YYMMDDD",
      "YYMMDDN", "YYMMDDP", "YYMMDDS", "YYMMN", "YYMMP", "YYMMS", "YYMON", "YYQ", "YYQC", "YYQD",
      "YYQN", "YYQP", "YYQR", "YYQRC", "YYQRD", "YYQRN", "YYQRP", "YYQRS", "YYQS"};
  static constexpr std::string_view kDateTime[] = {
      "DATEAMPM", "DATETIME", "DTDATE", "DTMONYY", "DTWKDATX", "DTWEEKV", "DTYEAR", "DTYYQC",
      "E8601DT", "E8601DZ", "MDYAMPM"};
  static constexpr std::string_view kTime[] = {"E8601TM", "HHMM", "HOUR", "MMSS", "TIME",
                                               "TIMEAMPM", "TOD"};
  for (auto x : kDate)
    if (x == n) return CellKind::Date;
  for (auto x : kDateTime)
    if (x == n) return CellKind::DateTime;
  for (auto x : kTime)
    if (x == n) return CellKind::Time;
  return CellKind::Number;
}

namespace {

void appendPlain(std::string& out, double v) {
  if (wzmis(v)) {
    const char c = missCode(v);
    if (c == '_' || (c >= 'A' && c <= 'Z')) {
      out += '.';
      out += c;
    }
    return;  // the ordinary missing value (and any unnamed pattern) is an empty cell
  }
  if (std::isnan(v)) return;  // a processor NaN is no value: written as missing
  char buf[32];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  out.append(buf, r.ptr);
}

void append2(std::string& out, long long v) {
  out += static_cast<char>('0' + v / 10);
  out += static_cast<char>('0' + v % 10);
}

bool appendDate(std::string& out, double day) {
  int m = 0, d = 0, y = 0;
  if (hostDateToMdy(day, &m, &d, &y) != 0 || y < 0) return false;
  char buf[16];
  const auto r = std::to_chars(buf, buf + sizeof buf, y);
  for (auto n = r.ptr - buf; n < 4; ++n) out += '0';
  out.append(buf, r.ptr);
  out += '-';
  append2(out, m);
  out += '-';
  append2(out, d);
  return true;
}

// The fraction of a second as ".ddd", the shortest decimal that reads back to
// frac; false when that would be absurdly long (a subnormal fraction).
bool appendFraction(std::string& out, double frac) {
  if (frac == 0.0) return true;
  char buf[64];
  const auto r = std::to_chars(buf, buf + sizeof buf, frac, std::chars_format::fixed);
  if (r.ec != std::errc() || buf[0] != '0' || buf[1] != '.') return false;
  out.append(buf + 1, r.ptr);
  return true;
}

bool appendClock(std::string& out, long long secs, double frac) {
  append2(out, (secs / 3600) % 24);
  out += ':';
  append2(out, secs / 60 % 60);
  out += ':';
  append2(out, secs % 60);
  return appendFraction(out, frac);
}

bool appendIso(std::string& out, double v, CellKind kind) {
  if (wzmis(v) || !std::isfinite(v) || (v == 0.0 && std::signbit(v))) return false;
  if (kind == CellKind::Date) return v == std::floor(v) && appendDate(out, v);
  if (std::fabs(v) >= kTwo53) return false;
  const double w = std::floor(v);
  const double frac = v - w;  // exact: v and w share the binary exponent range
  const auto secs = static_cast<long long>(w);
  if (kind == CellKind::Time) {
    if (v < 0) return false;
    const long long hours = secs / 3600;
    char buf[24];
    const auto r = std::to_chars(buf, buf + sizeof buf, hours);
    if (r.ptr - buf < 2) out += '0';
    out.append(buf, r.ptr);
    out += ':';
    append2(out, secs / 60 % 60);
    out += ':';
    append2(out, secs % 60);
    return appendFraction(out, frac);
  }
  long long days = secs / 86400;
  long long sod = secs % 86400;
  if (sod < 0) {
    sod += 86400;
    --days;
  }
  if (!appendDate(out, static_cast<double>(days))) return false;
  out += 'T';
  return appendClock(out, sod, frac);
}

}  // namespace

void csvAppendNumber(std::string& out, double v, CellKind kind) {
  if (kind == CellKind::Date || kind == CellKind::DateTime || kind == CellKind::Time) {
    const std::size_t mark = out.size();
    if (appendIso(out, v, kind)) return;
    out.resize(mark);
  }
  appendPlain(out, v);
}

void csvAppendText(std::string& out, std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
    out += text;
    return;
  }
  out += '"';
  for (const char c : text) {
    if (c == '"') out += '"';
    out += c;
  }
  out += '"';
}

std::size_t utf8ValidPrefix(std::string_view s) noexcept {
  const auto* p = reinterpret_cast<const unsigned char*>(s.data());
  const std::size_t n = s.size();
  std::size_t i = 0;
  while (i < n) {
    // ASCII runs, eight bytes at a time.
    while (i + 8 <= n) {
      std::uint64_t w;
      std::memcpy(&w, p + i, 8);
      if (w & 0x8080808080808080ULL) break;
      i += 8;
    }
    if (i >= n) break;
    const unsigned c = p[i];
    if (c < 0x80) {
      ++i;
      continue;
    }
    std::size_t len = 0;
    unsigned lo = 0x80, hi = 0xBF;  // allowed range of the second byte
    if (c >= 0xC2 && c <= 0xDF) {
      len = 2;
    } else if (c >= 0xE0 && c <= 0xEF) {
      len = 3;
      if (c == 0xE0) lo = 0xA0;        // no overlong forms
      else if (c == 0xED) hi = 0x9F;   // no surrogates
    } else if (c >= 0xF0 && c <= 0xF4) {
      len = 4;
      if (c == 0xF0) lo = 0x90;
      else if (c == 0xF4) hi = 0x8F;   // nothing above U+10FFFF
    } else {
      return i;
    }
    if (i + len > n || p[i + 1] < lo || p[i + 1] > hi) return i;
    for (std::size_t k = 2; k < len; ++k)
      if ((p[i + k] & 0xC0) != 0x80) return i;
    i += len;
  }
  return n;
}

}  // namespace qvt
