// The entry of a procedure step and the per-series run.
#pragma once

#include "host/host.hpp"
#include "run/qvtcom.hpp"
#include "statements/procstr.hpp"

namespace qvt {

// Runs one step on parsed statements. Ends through hostExit with the step's
// return code; call it inside hostRunStep.
void dovqvt(Host& host, const PROCSTR& stmts);

// Runs all series of one BY group.
void qvtrun(QVTCOM* com);

}  // namespace qvt
