// The statement parser: one step of a program into a PROCSTR.
//
// An LL(1) parser over the tables of grammar.hpp reads one statement at a
// time. A syntax error is reported with its place and the line, then
// repaired by the cheapest combination of deleted input tokens and inserted
// symbols (a misspelled keyword counts as one deletion and one insertion);
// a repair dearer than kMaxRepairCost gives the statement up, and the
// statements behind it are still read and checked.
#pragma once

#include <string_view>

#include "host/host.hpp"
#include "statements/procstr.hpp"
#include "statements/steps.hpp"
#include "statements/token.hpp"

namespace qvt {

// Parses one step of a scanned program into `out` (cleared first). Every
// error (lexical errors inside the step, syntax errors, values out of
// range, bad intervals) is reported to `host` and counted in out.nerrors;
// when there is any, out.error is kStatementsUnusable so that the step does
// not run. The result is out.error.
int xsparse(const Program& prog, const Step& step, Host& host, PROCSTR& out);

// Scans `text` and parses its first step. A text without any step (empty,
// or without a QVT statement) leaves out.error nonzero.
int xsparseText(std::string_view text, const SourcePos& origin, Host& host, PROCSTR& out);

}  // namespace qvt
