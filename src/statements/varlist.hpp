// Resolving the variable lists of the statements against the variables of
// the input data set, once that data set is known.
#pragma once

#include <span>
#include <vector>

#include "host/host.hpp"
#include "statements/procstr.hpp"

namespace qvt {

// What a list may name. Numeric: a variable named on its own must be
// numeric (an error otherwise), and ranges and _ALL_ keep only the numeric
// variables they span. Any: every type.
enum class VarNeed { Any, Numeric };

// Variable numbers (1-based positions in `vars`) of the list's elements, in
// the order written; a variable named twice appears twice. Names compare
// without regard to case.
//   a          the variable a
//   a1-a5      a1, a2, ..., a5: the same prefix, the numbers at the ends (a leading zero keeps the width)
//   a--b       every variable from a to b in the order of the data set
//   a-NUMERIC-b, a-CHARACTER-b   those of that type between a and b
//   a:         every variable whose name begins with a
//   _NUMERIC_, _CHARACTER_, _ALL_
// Each problem is reported to host (group 129) at the element's place: a
// name that isn't there, a wrong type, two names that don't form a numbered
// range, a range that runs backwards, a prefix that matches nothing. The
// result is the number of errors; `out` holds what could be resolved.
int resolveVarList(const VarList& list, std::span<const VarInfo> vars, VarNeed need, Host& host,
                   std::vector<int>& out);

}  // namespace qvt
