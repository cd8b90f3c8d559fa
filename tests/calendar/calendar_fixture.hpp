// What every calendar test uses: the calendar routines, an interval read from
// its text (a text the test relies on must parse), a date from year, month
// and day, and the table of values worked by hand kept next to the tests.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "../common/shared.hpp"
#include "calendar/interval.hpp"
#include "calendar/zfmt.hpp"
#include "calendar/zidate.hpp"
#include "calendar/zintcycle.hpp"
#include "calendar/zintti.hpp"
#include "host/hostdate.hpp"

namespace qvt::testing {

inline constexpr double kDay = 86400.0;

inline INTERVAL iv(const std::string& text) {
  INTERVAL i;
  EXPECT_EQ(zintstr(text.c_str(), -1, &i), 0) << text;
  return i;
}
inline INTERVALX ivx(const std::string& text) { return zintwiden(iv(text)); }

inline double ymd(int y, int m, int d) { return hostMdyToDate(m, d, y); }
inline int weekday0(double d) { return static_cast<int>(hostWeekday(d)) - 1; }  // 0 Sunday

// Week years: the first week of year y starts on the weekday `first` (0
// Sunday, 1 Monday) on or before January 4. The week year of a date, and the
// place (from 0) in it of the week that holds d.
inline double firstWeek(int y, int first) {
  const double jan4 = ymd(y, 1, 4);
  return jan4 - ((weekday0(jan4) - first + 7) % 7);
}
inline int weekYear(double d, int first) {
  const int y = static_cast<int>(hostYear(d));
  return d < firstWeek(y, first) ? y - 1 : d >= firstWeek(y + 1, first) ? y + 1 : y;
}
inline int weekPos(double d, int first) {
  return static_cast<int>(std::floor((d - firstWeek(weekYear(d, first), first)) / 7));
}

// The values joined by blanks, to compare several fields at once.
template <class... T>
std::string str(const T&... v) {
  std::ostringstream o;
  ((o << v << ' '), ...);
  const std::string s = o.str();
  return s.substr(0, s.size() - 1);
}

// The canonical text of an interval, and the token it carries.
inline std::string name(const INTERVAL& i) {
  char buf[64];
  int len = sizeof buf;
  if (zinti2s(buf, &len, &i) != 0) return "<bad>";
  return std::string(buf, static_cast<std::size_t>(len));
}
inline std::string tokenOf(const INTERVAL& i) {
  return std::string(i.token, static_cast<std::size_t>(std::max<short>(i.tokenlen, 0)));
}

// A custom interval whose calendar is not registered.
inline INTERVAL customInterval() {
  INTERVAL c{};
  c.units = 'd';
  c.intcode = static_cast<char>(kIntCustom);
  c.intper = 1;
  std::memcpy(c.token, "FISCAL", 6);
  c.tokenlen = 6;
  return c;
}

// Season codes of n intervals; one guard cell past the end must stay.
inline std::vector<int> codes(const INTERVAL& i, double start, int scode, long n, int* ns, int* rc) {
  std::vector<int> v(static_cast<std::size_t>(n) + 1, -99);
  *rc = zintscd(i, start, scode, n, v.data(), ns);
  EXPECT_EQ(v.back(), -99) << "wrote past n";
  v.pop_back();
  return v;
}

// A value field of hand_cases.csv: a date when it looks like 2000-01-31, a
// datetime value when like 2000-01-31T13:05:00, the missing value when "."
// (".A" and so on for the special ones), else a number.
inline double value(const std::string& t) { return caseValue(t); }

// Both missing, or the same number.
inline bool same(double got, double want) {
  if (wzmis(got) || wzmis(want)) return std::bit_cast<std::uint64_t>(got) == std::bit_cast<std::uint64_t>(want);
  return std::fabs(got - want) <= 1e-9 * std::max(1.0, std::fabs(want));
}

struct Case {
  std::vector<std::string> f;
  int line = 0;

  const std::string& s(std::size_t k) const { return f.at(k); }
  int i(std::size_t k) const { return std::stoi(f.at(k)); }
  double x(std::size_t k) const { return value(f.at(k)); }
  // A blank-separated list of values.
  std::vector<double> xs(std::size_t k) const {
    std::vector<double> v;
    std::istringstream in(f.at(k));
    for (std::string t; in >> t;) v.push_back(value(t));
    return v;
  }
  // A missing expected value takes any missing value.
  bool same(double got, std::size_t k) const { return wzmis(x(k)) ? wzmis(got) != 0 : got == x(k); }
  // Fields k to l joined by blanks.
  std::string join(std::size_t k, std::size_t l) const {
    std::string s = f.at(k);
    while (++k <= l) s += " " + f.at(k);
    return s;
  }
  std::string where() const { return "hand_cases.csv line " + std::to_string(line); }
};

// hand_cases.csv: values worked by hand from a calendar, one case a line,
// "operation,field,...".
inline std::vector<Case> handCases(const std::string& op) {
  std::vector<Case> out;
  for (auto& r : readRows("calendar/hand_cases.csv", ','))
    if (r.f[0] == op) out.push_back(Case{std::move(r.f), r.line});
  EXPECT_FALSE(out.empty()) << "no cases for " << op;
  return out;
}


}  // namespace qvt::testing
