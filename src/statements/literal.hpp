// Reading the date, time and datetime constants of the statement language:
// '01JAN2020'd, '13:30't, '01JAN2020:13:30:00'dt. Pure functions.
//
// Date values count days from 1960-01-01; time values seconds since
// midnight; datetime values seconds from 1960-01-01 00:00:00. A two-digit
// year falls into the hundred years 1940 to 2039.
#pragma once

#include <optional>
#include <string_view>

namespace qvt {

// DDMONYY or DDMONYYYY (day of one or two digits, month by its first three
// letters in any case, blanks around allowed).
std::optional<double> literalDate(std::string_view text) noexcept;

// HH:MM or HH:MM:SS with an optional fraction of the second; hours 0 to 23.
std::optional<double> literalTime(std::string_view text) noexcept;

// A date as above, then ':' or blanks, then a time as above.
std::optional<double> literalDateTime(std::string_view text) noexcept;

}  // namespace qvt
