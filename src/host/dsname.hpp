// Data set names as a program writes them: `member`, `lib.member`, or a
// quoted path ('data/sales.csv' or "data/sales.csv", a quote inside doubled).
#pragma once

#include <string>
#include <string_view>

namespace qvt {

struct DsName {
  std::string lib;     // upper case; empty for the default library or a path
  std::string member;  // case kept
  std::string path;    // the path of a quoted name
  bool quoted = false;
};

// Longest library name: the engine keeps it in 8 characters.
inline constexpr std::size_t kLibNameLen = 8;

// A name of letters, digits and underscores, not starting with a digit, of at
// most maxLen bytes.
bool isPlainName(std::string_view s, std::size_t maxLen) noexcept;

// Splits a two-level name. 0, or -1 when the text is no data set name.
int hostNameSplit(std::string_view text, DsName* out);

// ASCII upper case; names compare without regard to case.
std::string upperAscii(std::string_view s);
bool equalsNoCase(std::string_view a, std::string_view b) noexcept;

}  // namespace qvt
