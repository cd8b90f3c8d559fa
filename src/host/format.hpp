// Formats of the host: how a number, a date, a time or a datetime value is
// written as text of a given width.
//
// A format is written NAMEw.d: "DATE9.", "BEST12.", "F8.2" (also "8.2"),
// "COMMA10.2", "YYMMDDN8.", "E8601DT19.3". The width w is the number of
// characters of the result; the decimals d are digits after the point for
// the numeric formats and fractional seconds for the time and datetime
// formats. A name without width takes the format's default width.
//
// Rules shared by every format rendered here (a user of a statistics tool
// expects them, so they hold without exception):
//
// | Situation | Result |
// |---|---|
// | any value | right-aligned in exactly w characters |
// | ordinary missing | "." ; special missing: its letter "A".."Z" or "_" |
// | a NaN that is not one of the 28 missing values | "." |
// | number too wide for w | fewer decimals, then E notation, then w stars |
// | date outside 1582-01-01 .. the calendar's last day, or +-inf | w stars |
// | w below the shortest form of a date or time format | w stars |
// | rounding | half away from zero, on the shortest decimal text that reads |
// |          | back to the double (so 2.675 shows as 2.68, not 2.67)       |
// | negative result that rounds to zero | no minus sign ("0.00") |
// | date part of a fractional date or of a datetime | the day it falls in |
// |                                                 | (floor)            |
// | time shown to a unit | rounded to that unit, carrying into the day |
// | name known to the engine but not rendered here | rendered as BEST |
//
// Two-digit years shown by the short forms are the year modulo 100.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qvt {

// What kind of value a format shows.
enum class FormatKind : std::uint8_t { Numeric, Date, Time, Datetime };

// A parsed format: name, width and decimals. `width` 0 means none was
// given (the default width applies); `decimals` -1 means none was given.
struct FormatSpec {
  std::string name;  // upper case, without width or point; "F" for "w.d"
  int width = 0;
  int decimals = -1;
};

// One row of the table of formats this host renders.
struct FormatInfo {
  std::string_view name;
  FormatKind kind;
  int defaultWidth;
  int minWidth;  // the shortest width that shows something other than stars
  int maxWidth;     // widths above it are accepted and padded on the left
  int maxDecimals;  // the most decimals a statement should accept; 0 where they mean nothing
};

// Largest width and decimals that parseFormatSpec accepts.
inline constexpr int kMaxFormatWidth = 200;
inline constexpr int kMaxFormatDecimals = 31;

// Result codes of parseFormatSpec.
inline constexpr int kFormatOk = 0;
inline constexpr int kFormatEmpty = -1;      // no text
inline constexpr int kFormatSyntax = -2;     // not NAMEw.d
inline constexpr int kFormatRange = -3;      // width or decimals beyond the limits above

// Parses "NAME", "NAME.", "NAMEw.", "NAMEw.d", "NAME.d", "w." or "w.d".
// The name is letters, digits and '_' (a leading '$' for character
// formats), at most 32, and ends in a non-digit so that trailing digits are
// the width ("E8601DA10." is E8601DA with width 10). Surrounding blanks are
// ignored; the name is upper-cased. 0 on success; on failure `out` is left
// alone.
int parseFormatSpec(std::string_view text, FormatSpec* out);

// The text of a format: "DATE9.", "BEST12.2", "DATE.", "BEST.2".
std::string formatSpecText(const FormatSpec& spec);

// The table row of a format name (upper case, as parseFormatSpec leaves
// it), or nullptr when this host does not render it.
const FormatInfo* findFormat(std::string_view name) noexcept;

// Renders `value` through `spec` into `out`. Returns 0 when the format was
// rendered as itself, 1 when the name is not one this host renders and
// BEST of the same width (12 when none was given) stood in for it.
int renderValue(double value, const FormatSpec& spec, std::string* out);

// Conveniences over renderValue: by name, width (0: default) and decimals
// (-1: none); and by format text, where a text that doesn't parse renders
// as BEST12.
std::string renderFormat(double value, std::string_view name, int width, int decimals = -1);
std::string renderFormat(double value, std::string_view formatText);

}  // namespace qvt
