// The text of one CSV cell and the value it stands for. Pure functions.
//
// Reading (blanks around a cell are ignored for the numeric kinds):
//   ""  "."            the ordinary missing value
//   ".A" .. ".Z" "._"  special missing values (letters in either case)
//   12  -0.5  1e-3  +4  inf  -inf
//                      numbers, as std::from_chars reads them; "nan" is not a
//                      number (the engine never keeps a processor NaN), nor is
//                      a value out of the double range
//   2024-03-31         a date: days from 1960-01-01 (years of 4 or 5 digits,
//                      within the calendar's range)
//   2024-03-31T13:30:00, 2024-03-31 13:30, ...T13:30:00.25
//                      a datetime: seconds from 1960-01-01 00:00:00
//   13:30:00  7:05  100:00:00.5
//                      a time value: seconds; hours may exceed 23 (durations)
//   anything else      text
//
// Writing gives the shortest text that reads back to the same bits: ISO 8601
// for a value with a date, datetime or time format when it has one (a whole
// date in the calendar's range; a datetime or time below 2^53 seconds, with
// the fraction of a second written in full), else the number itself.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qvt {

enum class CellKind : std::uint8_t { Missing, Number, Date, DateTime, Time, Text };

// The kind's name in messages about a column ("date", "character", ...);
// both engines name a clash of kinds the same way.
constexpr const char* kindName(CellKind k) {
  switch (k) {
    case CellKind::Date: return "date";
    case CellKind::DateTime: return "datetime";
    case CellKind::Time: return "time";
    case CellKind::Text: return "character";
    default: return "numeric";
  }
}

// The kind of a cell and, for every kind but Text, its value.
CellKind csvClassify(std::string_view cell, double* value) noexcept;

// What keeps a cell of the form of an ISO date, alone or starting a
// datetime ("2021-02-29", "2024-03-01T00:00:00Z"), from being one, when
// csvClassify calls it text: its day (one that does not exist, or outside
// the calendar's range), or what follows the day (a time zone, hour 24).
// Each deserves its own word to the user.
enum class DateFlaw : std::uint8_t { None, Day, Time };
DateFlaw csvDateFlaw(std::string_view cell) noexcept;

// Reads a cell of a column whose kind is known (Number, Date, DateTime or
// Time): true with the value when the cell is missing, of that kind, or a
// plain number (the raw value of a date that has no ISO form).
bool csvParseAs(std::string_view cell, CellKind kind, double* value) noexcept;

// The column kind a format asks for: Date, DateTime or Time for the formats
// of those families (DATE9., E8601DA., DATETIME19., TIME8., ...), Number for
// any other format or none.
CellKind csvFormatKind(std::string_view format) noexcept;

// Appends the cell text of a numeric value written under a column kind.
void csvAppendNumber(std::string& out, double v, CellKind kind);

// Appends a text cell, quoted by RFC 4180 when it holds a comma, a quote or a
// line break.
void csvAppendText(std::string& out, std::string_view text);

// Joins a column kind with the kind of one more cell: missing cells fit any
// kind, a column with cells of two different kinds is text. `Missing` stands
// for a column that has had only missing cells so far.
constexpr CellKind csvJoinKinds(CellKind column, CellKind cell) noexcept {
  if (cell == CellKind::Missing || column == cell) return column;
  if (column == CellKind::Missing) return cell;
  return CellKind::Text;
}

// The longest run of bytes in `s` that is valid UTF-8 from the start.
std::size_t utf8ValidPrefix(std::string_view s) noexcept;

}  // namespace qvt
