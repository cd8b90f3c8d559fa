// Informats of the host: text to date, time and datetime values, and the
// ISO 8601 text that reads back to the same value.
//
// Values: a date counts days from 1960-01-01, a time seconds since
// midnight, a datetime seconds from 1960-01-01 00:00:00. Every reader skips
// blanks at both ends, accepts upper and lower case, and leaves `*value`
// untouched unless it returns kReadOk. Fields are checked, never wrapped:
// 29FEB2021, 31APR2020, 25:00 and 12:60 fail with kReadField.
//
// | Reader | Accepts |
// |---|---|
// | readIsoDate | YYYY-MM-DD (a year of 4 or 5 digits) |
// | readIsoTime | HH:MM, HH:MM:SS, HH:MM:SS.f (hours of two digits, 00-23) |
// | readIsoDatetime | an ISO date, 'T' or one blank, an ISO time |
// | readDateLiteral | DDMONYY or DDMONYYYY (1 or 2 digit day): 01JAN2020, 1jan20 |
// | readTimeLiteral | H:MM, HH:MM, HH:MM:SS, HH:MM:SS.f: 13:30, 9:05:00.5 |
// | readDatetimeLiteral | a date literal, ':' or a blank, a time literal: |
// |                     | 01JAN2020:13:30:00 |
//
// Two-digit years fall in the hundred years that start at the cutoff
// year: with the default 1940, 40..99 are 1940..1999 and 00..39 are
// 2000..2039. Business series are mostly recent history and forecasts a
// few decades ahead; the window covers both.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qvt {

inline constexpr int kYearCutoffDefault = 1940;

// Result codes of the readers.
inline constexpr int kReadOk = 0;
inline constexpr int kReadSyntax = -1;    // the text is not of the form read
inline constexpr int kReadField = -2;     // a month, day, hour, minute or second out of range
inline constexpr int kReadRange = -3;     // a real day outside the calendar (before 1582, after its last day)

int readIsoDate(std::string_view text, double* value) noexcept;
int readIsoTime(std::string_view text, double* value) noexcept;
int readIsoDatetime(std::string_view text, double* value) noexcept;

int readDateLiteral(std::string_view text, double* value, int yearCutoff = kYearCutoffDefault) noexcept;
int readTimeLiteral(std::string_view text, double* value) noexcept;
int readDatetimeLiteral(std::string_view text, double* value,
                        int yearCutoff = kYearCutoffDefault) noexcept;

// What readIsoValue found.
enum class TemporalKind : std::uint8_t { None, Date, Time, Datetime };

// Tries the three ISO readers: a cell of a CSV file is a date, a datetime
// or a time when one of them takes it whole. Returns the code of the reader
// that matched the shape of the text (kReadSyntax with kind None when none
// did), so "2021-02-29" gives kReadField rather than passing as text.
int readIsoValue(std::string_view text, double* value, TemporalKind* kind) noexcept;

// ISO 8601 text of a value that the matching reader turns back into the
// same double: whole seconds are written without a fraction, others with
// the fewest fractional digits that read back exactly. A date's fraction of
// a day is dropped (it is written as the day it falls in). Empty for a
// missing value, a non-finite one or a day outside the calendar.
std::string isoDateText(double date);
std::string isoTimeText(double time);          // HH:MM:SS; empty outside [0, 86400)
std::string isoDatetimeText(double datetime);  // YYYY-MM-DDTHH:MM:SS

}  // namespace qvt
