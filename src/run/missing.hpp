// Missing values: doubles whose upper 16 bits are all ones.
//
// There are 28 of them, told apart by their bit pattern: the ordinary one
// (written '.'), '._' and the special values .A to .Z. Every one of them
// passes wzmis(), so aggregates and outputs skip them alike. No arithmetic is
// ever done on a missing value: callers test first and propagate by hand.
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace qvt {

inline constexpr std::uint64_t kMissOrdinaryBits = 0xFFFFFE0000000000ULL;
inline constexpr std::uint64_t kMissUnderscoreBits = 0xFFFFFF0000000000ULL;
inline constexpr std::uint64_t kMissABits = 0xFFFFFD0000000000ULL;  // .A; each later letter is one less in the upper 24 bits

// True when the upper 16 bits of the pattern are all ones.
constexpr bool isMissingBits(std::uint64_t bits) noexcept { return (bits >> 48) == 0xFFFFu; }

// 1 when x is a missing value of any kind, else 0.
constexpr int wzmis(double x) noexcept { return isMissingBits(std::bit_cast<std::uint64_t>(x)) ? 1 : 0; }

// The missing value named by a code character: 'A'..'Z' or 'a'..'z' give the
// special values, '_' and '-' give ._, anything else the ordinary missing value.
constexpr double skMissVal(int code) noexcept {
  if (code >= 'a' && code <= 'z') code = code - 'a' + 'A';
  if (code >= 'A' && code <= 'Z') {
    const auto k = static_cast<std::uint64_t>(code - 'A');
    return std::bit_cast<double>(kMissABits - (k << 40));
  }
  if (code == '_' || code == '-') return std::bit_cast<double>(kMissUnderscoreBits);
  return std::bit_cast<double>(kMissOrdinaryBits);
}

// The ordinary missing value.
inline constexpr double kMissing = std::bit_cast<double>(kMissOrdinaryBits);

// The code character of a missing value ('.', '_' or 'A'..'Z'), or 0 when x
// is not one of the 28 missing values (a non-missing number, or a NaN pattern
// that passes the test but is none of the table's).
constexpr char missCode(double x) noexcept {
  const auto bits = std::bit_cast<std::uint64_t>(x);
  if (bits == kMissOrdinaryBits) return '.';
  if (bits == kMissUnderscoreBits) return '_';
  if ((bits & 0xFFFFFFFFFFULL) == 0 && bits <= kMissABits && bits >= kMissABits - (25ULL << 40))
    return static_cast<char>('A' + ((kMissABits - bits) >> 40));
  return 0;
}

// Fills len doubles with val.
inline void vzfdl(double val, double* to, std::size_t len) noexcept {
  for (std::size_t i = 0; i < len; ++i) to[i] = val;
}

// 1 when x is missing, 0 when |x| <= maxval; otherwise counts x as too large
// (when count is given) and returns -1.
inline int zmissr(double x, double maxval, long* count) noexcept {
  if (wzmis(x)) return 1;
  if (std::fabs(x) <= maxval) return 0;
  if (count) ++*count;
  return -1;
}

}  // namespace qvt
