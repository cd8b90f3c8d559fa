// Numeric formats: BEST, F (w.d), COMMA, PERCENT, PVALUE, E.
//
// All rounding goes through the shortest decimal text of the double
// (std::to_chars), rounded half away from zero as a string. Binary doubles
// such as 2.675 (really 2.67499999...) then show as a person who typed them
// expects, and scaling by 100 for PERCENT is exact.
//
// | Format | Default w | What it writes | When it does not fit |
// |---|---|---|---|
// | BESTw. | 12 | the form with the most significant digits (at most 15) that fits: | stars |
// |        |    | an integer, a decimal with trailing zeros dropped, or a compact |       |
// |        |    | E form "1.2345E-10"; on a tie decimal for 1e-4 <= |x| < 1e15 (as |       |
// |        |    | C's %g), else E; ".5" when no decimal fits beside a leading zero | |
// | Fw.d, w.d | 12 | d decimals, leading zero kept | without the leading zero (".123"), then |
// |           |    |                              | one decimal less, and so on; then E     |
// |           |    |                              | ("1E+06", trailing zeros dropped); stars |
// | COMMAw.d | 6 | as F with the integer digits grouped by commas | as F |
// | PERCENTw.d | 6 | 100x with d decimals and '%'; negatives in parentheses "(5.0%)" | fewer decimals, stars |
// | PVALUEw.d | 6 | as F with d decimals (default min(4, w-2)); below 10^-d "<.0001" | as F |
// | Ew.d | 12 | "1.235E+04" with a blank kept for the sign; d mantissa decimals, | stars |
// |      |    | by default as many as fit; the exponent has at least two digits |       |
#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

#include "host/format_detail.hpp"

namespace qvt::fmtdetail {
namespace {

// Adds one to a string of decimal digits.
void increment(std::string& s) {
  int i = static_cast<int>(s.size()) - 1;
  while (i >= 0 && s[i] == '9') {
    s[i] = '0';
    --i;
  }
  if (i < 0)
    s.insert(s.begin(), '1');
  else
    ++s[i];
}

std::string stripLeadingZeros(std::string s) {
  const auto p = s.find_first_not_of('0');
  if (p == std::string::npos) return "0";
  return s.substr(p);
}

bool allZero(const std::string& s) { return s.find_first_not_of("0.,") == std::string::npos; }

std::string groupThousands(const std::string& intPart) {
  std::string out;
  const int n = static_cast<int>(intPart.size());
  for (int i = 0; i < n; ++i) {
    if (i > 0 && (n - i) % 3 == 0) out += ',';
    out += intPart[i];
  }
  return out;
}

// Drops trailing zeros of a fraction, and the point when nothing is left.
std::string trimFraction(std::string s) {
  if (s.find('.') == std::string::npos) return s;
  while (!s.empty() && s.back() == '0') s.pop_back();
  if (!s.empty() && s.back() == '.') s.pop_back();
  if (s.empty() || s == "-") s += '0';
  return s;
}

// Significant digits a text shows: from the first to the last nonzero digit
// of the mantissa (the trailing zeros of "1000" say nothing about precision).
int significantShown(const std::string& s) {
  int first = -1, last = -1, pos = 0;
  for (char c : s) {
    if (c == 'E') break;
    if (c < '0' || c > '9') continue;
    if (c != '0') {
      if (first < 0) first = pos;
      last = pos;
    }
    ++pos;
  }
  return first < 0 ? 0 : last - first + 1;
}

std::string exponentText(int e, bool compact) {
  if (compact) return "E" + std::to_string(e);
  const int a = std::abs(e);
  return std::string("E") + (e < 0 ? '-' : '+') + (a < 10 ? "0" : "") + std::to_string(a);
}

// Scientific text "[-]d.dddE+dd" (compact: "d.dddE-5") with the most
// significant digits, up to maxSig, that fit `room` characters; trailing
// zeros of the mantissa are dropped. Empty when none fits.
std::string eText(const Decimal& d, int room, bool compact, int maxSig) {
  // Start from the most digits the room allows around the unrounded
  // exponent; rounding can lengthen the exponent by a digit (9.99E9 ->
  // 1E10), hence the loop.
  const int fixedChars = (d.neg ? 1 : 0) + static_cast<int>(exponentText(d.digits.empty() ? 0 : d.exp - 1, compact).size());
  const int mantissaRoom = room - fixedChars;
  int start = mantissaRoom >= 3 ? mantissaRoom - 1 : 1;
  start = std::min(start, maxSig);
  for (int sig = start; sig >= 1; --sig) {
    Scientific s = scientific(d, sig);
    s.mantissa = trimFraction(s.mantissa);
    const std::string t = (s.neg ? "-" : "") + s.mantissa + exponentText(s.exponent, compact);
    if (static_cast<int>(t.size()) <= room) return t;
  }
  return {};
}

}  // namespace

Decimal toDecimal(double x) {
  Decimal d;
  if (x == 0.0 || !std::isfinite(x)) return d;
  char buf[64];
  const auto r = std::to_chars(buf, buf + sizeof buf, x, std::chars_format::scientific);
  std::string_view t(buf, static_cast<std::size_t>(r.ptr - buf));
  if (!t.empty() && t[0] == '-') {
    d.neg = true;
    t.remove_prefix(1);
  }
  const auto epos = t.find('e');
  std::string mant(t.substr(0, epos));
  int e = 0;
  std::from_chars(t.data() + epos + 1 + (t[epos + 1] == '+' ? 1 : 0), t.data() + t.size(), e);
  mant.erase(std::remove(mant.begin(), mant.end(), '.'), mant.end());
  while (!mant.empty() && mant.back() == '0') mant.pop_back();
  d.digits = mant;
  d.exp = e + 1;  // d.ddd x 10^e == 0.dddd x 10^(e+1)
  return d;
}

std::string roundedDigits(const Decimal& d, int nd) {
  if (d.digits.empty()) return "0";
  const long long k = static_cast<long long>(d.exp) + nd;  // digits kept
  const auto len = static_cast<long long>(d.digits.size());
  if (k < 0) return "0";
  std::string kept = d.digits.substr(0, static_cast<std::size_t>(std::min(k, len)));
  if (k > len) kept.append(static_cast<std::size_t>(k - len), '0');
  if (k < len && d.digits[static_cast<std::size_t>(k)] >= '5') {
    if (kept.empty()) kept = "0";
    increment(kept);
  }
  return stripLeadingZeros(kept);
}

std::string fixedText(const Decimal& d, int nd, bool leadingZero, bool commas) {
  std::string n = roundedDigits(d, nd);
  if (nd < 0) {  // rounded to tens, hundreds, ...: the dropped places show as zeros
    if (n != "0") n.append(static_cast<std::size_t>(-nd), '0');
    nd = 0;
  }
  if (static_cast<int>(n.size()) <= nd) n.insert(0, static_cast<std::size_t>(nd + 1) - n.size(), '0');
  std::string ip = n.substr(0, n.size() - static_cast<std::size_t>(nd));
  const std::string fp = n.substr(n.size() - static_cast<std::size_t>(nd));
  const bool zero = allZero(n);
  if (commas) ip = groupThousands(ip);
  if (!leadingZero && ip == "0" && nd > 0) ip.clear();
  std::string out = (d.neg && !zero) ? "-" : "";
  out += ip;
  if (nd > 0) out += "." + fp;
  return out;
}

Scientific scientific(const Decimal& d, int sig) {
  Scientific s;
  s.neg = d.neg;
  if (sig < 1) sig = 1;
  std::string m;
  int exp10 = 0;
  if (d.digits.empty()) {
    m.assign(static_cast<std::size_t>(sig), '0');
  } else {
    const int len = static_cast<int>(d.digits.size());
    m = d.digits.substr(0, static_cast<std::size_t>(std::min(sig, len)));
    if (sig > len) m.append(static_cast<std::size_t>(sig - len), '0');
    exp10 = d.exp - 1;
    if (sig < len && d.digits[static_cast<std::size_t>(sig)] >= '5') {
      increment(m);
      if (static_cast<int>(m.size()) > sig) {  // 9.99 -> 10.0: one more digit, one more power
        m.pop_back();
        ++exp10;
      }
    }
  }
  s.mantissa = m.substr(0, 1);
  if (sig > 1) s.mantissa += "." + m.substr(1);
  s.exponent = exp10;
  return s;
}

bool roundScaled(double x, int nd, long long* out) {
  if (!std::isfinite(x)) return false;
  const Decimal d = toDecimal(x);
  const std::string n = roundedDigits(d, nd);
  if (n.size() > 18 || (n.size() == 18 && n[0] >= '9')) return false;
  long long v = 0;
  for (char c : n) v = v * 10 + (c - '0');
  *out = d.neg ? -v : v;
  return true;
}

bool floorScaled(double x, int nd, long long* out) {
  if (!std::isfinite(x) || nd < 0 || nd > 9) return false;
  const Decimal d = toDecimal(x);
  std::string n = roundedDigits(d, 9);
  const auto drop = static_cast<std::size_t>(9 - nd);
  bool cut = false;  // a nonzero digit was dropped
  if (n.size() > drop) {
    cut = !allZero(n.substr(n.size() - drop));
    n.erase(n.size() - drop);
  } else {
    cut = !allZero(n);
    n = "0";
  }
  if (d.neg && cut) increment(n);  // below zero, the floor is one further out
  if (n.size() > 18 || (n.size() == 18 && n[0] >= '9')) return false;
  long long v = 0;
  for (char c : n) v = v * 10 + (c - '0');
  *out = d.neg ? -v : v;
  return true;
}

std::string stars(int width) { return std::string(static_cast<std::size_t>(std::max(width, 0)), '*'); }

std::string fitRight(const std::string& text, int width) {
  const int n = static_cast<int>(text.size());
  if (n > width) return stars(width);
  return std::string(static_cast<std::size_t>(width - n), ' ') + text;
}

std::string renderBest(double x, int width) {
  if (std::isinf(x)) return stars(width);
  if (x == 0.0) return fitRight("0", width);
  constexpr int kMaxSig = 15;
  const Decimal d = toDecimal(x);
  const double ax = std::fabs(x);
  const int sign = d.neg ? 1 : 0;

  // Whole numbers of up to 15 digits are exact and shown as they are.
  if (ax < 1e15 && x == std::floor(x)) {
    const std::string t = fixedText(d, 0);
    if (static_cast<int>(t.size()) <= width) return fitRight(t, width);
  }

  // Decimal candidate: the most decimals that fit, within 15 significant
  // digits. Below 1 the leading zero stays unless no decimal fits beside
  // it (0.5 in two columns is ".5", not "1").
  std::string fixed;
  for (bool lead : {true, false}) {
    if (!lead && (ax >= 1.0 || fixed.find('.') != std::string::npos)) break;
    const int intChars = sign + (lead || d.exp > 0 ? std::max(d.exp, 1) : 0);
    // Decimals may go below zero only where the 15-digit cap rounds the
    // integer digits themselves (|x| >= 1e15); never to squeeze the width.
    const int lowest = std::min(0, kMaxSig - d.exp);
    for (int nd = std::min(std::max(width - intChars - 1, 0), kMaxSig - d.exp);; --nd) {
      const std::string t = trimFraction(fixedText(d, nd, lead));
      if (static_cast<int>(t.size()) <= width) {
        if (fixed.empty() || significantShown(t) >= significantShown(fixed)) fixed = t;
        break;
      }
      if (nd <= lowest) break;
    }
  }

  const std::string sci = eText(d, width, true, kMaxSig);
  const int fs = fixed.empty() ? 0 : significantShown(fixed);
  const int es = sci.empty() ? 0 : significantShown(sci);
  if (fs == 0 && es == 0) return fixed.empty() ? stars(width) : fitRight(fixed, width);
  if (fs > es) return fitRight(fixed, width);
  if (es > fs) return fitRight(sci, width);
  return fitRight(ax >= 1e-4 && ax < 1e15 ? fixed : sci, width);
}

namespace {

// F and COMMA: d decimals, then fewer, then without the leading zero, then E.
std::string renderFixedFamily(double x, int width, int decimals, bool commas) {
  if (std::isinf(x)) return stars(width);
  const Decimal d = toDecimal(x);
  for (int nd = std::max(decimals, 0); nd >= 0; --nd) {
    const std::string t = fixedText(d, nd, true, commas);
    if (static_cast<int>(t.size()) <= width) return fitRight(t, width);
    if (nd > 0) {
      const std::string u = fixedText(d, nd, false, commas);
      if (static_cast<int>(u.size()) <= width && u.find_first_of("123456789") != std::string::npos)
        return fitRight(u, width);
    }
  }
  const std::string e = eText(d, width, false, 15);
  return e.empty() ? stars(width) : fitRight(e, width);
}

}  // namespace

std::string renderFixed(double x, int width, int decimals) { return renderFixedFamily(x, width, decimals, false); }

std::string renderComma(double x, int width, int decimals) { return renderFixedFamily(x, width, decimals, true); }

std::string renderPercent(double x, int width, int decimals) {
  if (std::isinf(x)) return stars(width);
  Decimal d = toDecimal(x);
  if (!d.digits.empty()) d.exp += 2;  // exact x100 in decimal
  const bool neg = d.neg;
  Decimal mag = d;
  mag.neg = false;
  for (int nd = std::max(decimals, 0); nd >= 0; --nd) {
    const std::string body = fixedText(mag, nd);
    const bool shownNeg = neg && !allZero(body);
    const std::string t = shownNeg ? "(" + body + "%)" : body + "%";
    if (static_cast<int>(t.size()) <= width) return fitRight(t, width);
  }
  return stars(width);
}

std::string renderPvalue(double x, int width, int decimals) {
  const int nd = decimals >= 0 ? decimals : std::max(0, std::min(4, width - 2));
  // 0 <= x < 10^-nd, decided on the decimal digits: 0.ddd x 10^exp < 10^-nd
  // exactly when exp <= -nd. A probability of exactly 0 is one that
  // underflowed, so it reads "<.0001" like its neighbours, not "0.0000".
  if (nd > 0 && (x == 0.0 || (x > 0.0 && std::isfinite(x) && toDecimal(x).exp <= -nd))) {
    const std::string t = "<." + std::string(static_cast<std::size_t>(nd - 1), '0') + "1";
    if (static_cast<int>(t.size()) <= width) return fitRight(t, width);
  }
  return renderFixed(x, width, nd);
}

std::string renderE(double x, int width, int decimals) {
  if (std::isinf(x)) return stars(width);
  const Decimal d = toDecimal(x);
  // One column stays reserved for the sign, so that positive and negative
  // values line up; the mantissa shows 1 + nd significant digits.
  const int room = width - 1;
  for (int nd = decimals >= 0 ? std::min(decimals, room) : room; nd >= 0; --nd) {
    const Scientific s = scientific(d, nd + 1);
    const std::string body = s.mantissa + exponentText(s.exponent, false);
    if (static_cast<int>(body.size()) <= room) return fitRight((s.neg ? "-" : "") + body, width);
  }
  return stars(width);
}

}  // namespace qvt::fmtdetail
