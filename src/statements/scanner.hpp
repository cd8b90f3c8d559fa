// The token scanner of the statement language.
//
// Skips blanks, /* ... */ comments and statement comments (* ... ; where a
// statement may start). Words are NAMEX tokens that also carry their keyword
// number, if any: whether a word is a keyword or a name is decided by the
// parser from the context, so a variable may be called MODEL or LEAD.
#pragma once

#include <string_view>

#include "host/host.hpp"
#include "statements/token.hpp"

namespace qvt {

// Longest name of a variable or data set member.
inline constexpr std::size_t kMaxNameLength = 32;

// Scans a whole program. `origin` gives the file name and the line and
// column of the first character. Every lexical error is reported to `host`
// (group 129) with its place; scanning goes on behind it where it can (an
// unterminated string or comment runs to the end of the text). The result
// is the number of lexical errors, also kept in out.nerrors.
int scanProgram(std::string_view text, const SourcePos& origin, Host& host, Program& out);

}  // namespace qvt
