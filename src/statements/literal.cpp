#include "statements/literal.hpp"

#include <array>
#include <cctype>

#include "host/hostdate.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

constexpr std::array<std::string_view, 12> kMonths = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                                      "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

std::string_view trim(std::string_view s) noexcept {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

// Reads 1..maxDigits digits at s[i]; advances i.
bool digits(std::string_view s, std::size_t& i, int maxDigits, int& value, int* count = nullptr) noexcept {
  int n = 0;
  value = 0;
  while (i < s.size() && isDigit(s[i]) && n < maxDigits) {
    value = value * 10 + (s[i] - '0');
    ++i;
    ++n;
  }
  if (count) *count = n;
  return n > 0;
}

// Date part at the front of s; i is left behind it.
std::optional<double> datePart(std::string_view s, std::size_t& i) noexcept {
  int day = 0, year = 0, ny = 0;
  if (!digits(s, i, 2, day)) return std::nullopt;
  if (i + 3 > s.size()) return std::nullopt;
  char mon[3];
  for (int k = 0; k < 3; ++k)
    mon[k] = static_cast<char>(std::toupper(static_cast<unsigned char>(s[i + static_cast<std::size_t>(k)])));
  i += 3;
  int month = 0;
  for (std::size_t m = 0; m < kMonths.size(); ++m)
    if (std::string_view(mon, 3) == kMonths[m]) month = static_cast<int>(m) + 1;
  if (month == 0) return std::nullopt;
  if (!digits(s, i, 4, year, &ny) || (ny != 2 && ny != 4)) return std::nullopt;
  if (ny == 2) year += year >= 40 ? 1900 : 2000;
  const double d = hostMdyToDate(month, day, year);
  if (wzmis(d)) return std::nullopt;
  return d;
}

std::optional<double> timePart(std::string_view s, std::size_t& i) noexcept {
  int h = 0, m = 0, sec = 0, nm = 0;
  if (!digits(s, i, 2, h) || h > 23) return std::nullopt;
  if (i >= s.size() || s[i] != ':') return std::nullopt;
  ++i;
  if (!digits(s, i, 2, m, &nm) || nm != 2 || m > 59) return std::nullopt;
  double frac = 0.0;
  if (i < s.size() && s[i] == ':') {
    ++i;
    int ns = 0;
    if (!digits(s, i, 2, sec, &ns) || ns != 2 || sec > 59) return std::nullopt;
    if (i < s.size() && s[i] == '.') {
      ++i;
      double scale = 0.1;
      if (i >= s.size() || !isDigit(s[i])) return std::nullopt;
      while (i < s.size() && isDigit(s[i])) {
        frac += scale * (s[i] - '0');
        scale /= 10.0;
        ++i;
      }
    }
  }
  return h * 3600.0 + m * 60.0 + sec + frac;
}

}  // namespace

std::optional<double> literalDate(std::string_view text) noexcept {
  const std::string_view s = trim(text);
  std::size_t i = 0;
  auto d = datePart(s, i);
  if (!d || i != s.size()) return std::nullopt;
  return d;
}

std::optional<double> literalTime(std::string_view text) noexcept {
  const std::string_view s = trim(text);
  std::size_t i = 0;
  auto t = timePart(s, i);
  if (!t || i != s.size()) return std::nullopt;
  return t;
}

std::optional<double> literalDateTime(std::string_view text) noexcept {
  const std::string_view s = trim(text);
  std::size_t i = 0;
  auto d = datePart(s, i);
  if (!d) return std::nullopt;
  const std::size_t sep = i;
  if (i < s.size() && s[i] == ':') {
    ++i;
  } else {
    while (i < s.size() && s[i] == ' ') ++i;
  }
  if (i == sep) return std::nullopt;
  auto t = timePart(s, i);
  if (!t || i != s.size()) return std::nullopt;
  return *d * 86400.0 + *t;
}

}  // namespace qvt
