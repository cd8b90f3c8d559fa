// From the statement records of a step to the run-wide record: the
// procedure and ID statements, the FORECAST statements, the series list.
#pragma once

#include "run/qvtcom.hpp"
#include "statements/procstr.hpp"

namespace qvt {

// Fills com from the parsed statements: options, data sets (opened through
// the host), the ID statement and frame, the FORECAST statements, nvars and
// vars, and the three pools. Sets com->error and raises com->rc on any
// statement-level error.
void qvtpars(QVTCOM* com, const PROCSTR& stmts);

}  // namespace qvt
