// Internals shared by the format sources: exact decimal rounding and the
// renderers of each family. Not for use outside src/host/format*.cpp.
#pragma once

#include <string>

#include "host/format.hpp"

namespace qvt::fmtdetail {

// A finite double as the shortest decimal text that reads back to it:
// value = (neg ? -1 : 1) * 0.digits * 10^exp. `digits` has no leading or
// trailing zeros and is empty for zero.
struct Decimal {
  bool neg = false;
  std::string digits;
  int exp = 0;
};

Decimal toDecimal(double x);

// Digits of round(|x| * 10^nd), half away from zero, without leading zeros
// ("0" for zero). nd may be negative.
std::string roundedDigits(const Decimal& d, int nd);

// "[-]int.frac" with nd decimals. The sign is dropped when every digit
// shown is zero; `leadingZero` false writes ".5" for 0.5; `commas` groups
// the integer digits by three.
std::string fixedText(const Decimal& d, int nd, bool leadingZero = true, bool commas = false);

// Scientific form with `sig` significant digits (at least 1): mantissa
// text "d.ddd" (no point when sig is 1) and the decimal exponent.
struct Scientific {
  bool neg = false;
  std::string mantissa;
  int exponent = 0;
};
Scientific scientific(const Decimal& d, int sig);

// round(x * 10^nd), half away from zero, as a whole number; false when
// |result| >= 9e17, which keeps later products by 10^k within 63 bits.
bool roundScaled(double x, int nd, long long* out);

// floor(x * 10^nd) as a whole number, 0 <= nd <= 9, after x is first rounded
// to 9 decimals, so that binary noise below a nanosecond (86399.99999999999
// for the end of a day) does not take a clock reading back a unit; false as
// for roundScaled.
bool floorScaled(double x, int nd, long long* out);

// `text` right-aligned in `width` characters, or `width` stars when longer.
std::string fitRight(const std::string& text, int width);
std::string stars(int width);

// Family renderers; `width` and `decimals` are already resolved (width >= 1,
// decimals -1 when none was given). Each returns exactly `width` characters.
std::string renderBest(double x, int width);
std::string renderFixed(double x, int width, int decimals);   // F and w.d
std::string renderComma(double x, int width, int decimals);
std::string renderPercent(double x, int width, int decimals);
std::string renderPvalue(double x, int width, int decimals);
std::string renderE(double x, int width, int decimals);

// Date, time and datetime renderers.
enum class Family : unsigned char {
  Best, Fixed, Comma, Percent, Pvalue, E,
  Date, Monyy, Yyq, Yyqc, Year, Weekdate, Weekdatx, Weekv, Weeku, Weekw,
  Ymd, Mdy, Dmy, E8601da,
  Datetime, Dtdate, Dtmonyy, Dtyyqc, Dtyear, Dtwkdatx, Dtweekv, E8601dt,
  Time, Hhmm, Mmss, Hour, Tod, E8601tm,
};

// `variant` is the suffix letter of YYMMDD, MMDDYY and DDMMYY ('B' blank,
// 'C' colon, 'D' dash, 'N' none, 'P' period, 'S' slash), 0 for the plain name.
std::string renderTemporal(double x, Family family, char variant, int width, int decimals);

}  // namespace qvt::fmtdetail
