// From the statement records of a step to the run-wide record: the
// procedure and ID statements, the FORECAST statements, the series list.
#pragma once

#include "run/qvtcom.hpp"
#include "statements/procstr.hpp"

namespace qvt {

// Fills com from the parsed statements: options, data sets (opened through
// the host), the ID statement and frame, the FORECAST statements, nvars and
// vars, and the pools cpool and dpool. com->host must be set. Doesn't return
// (hostExit, which throws StepExit) when the statements can't be run: a
// parse error, no series, a contradictory time frame, a data set that can't
// be opened, or any other rc above 4 at its end. On return rc is at most 4
// and error is 0.
void qvtpars(QVTCOM* com, const PROCSTR& stmts);

// The procedure record (also written by ID and BY): flags, the input data
// set and its facts, BY variables, the ID variable and interval, LEAD=,
// BACK=, STARTSUM=, the frame options. Needs cpool. Outputs are opened later
// by qvtpars, once the cross-statement checks have said which stay wanted.
void getopts(QVTCOM* com, const STMT& proc);

// The FORECAST records behind the procedure record: com->fstmt (nfor
// records, already allocated in cpool) and com->vars / com->nvars, each list
// resolved against the input's variables. Needs getopts first.
void getfors(QVTCOM* com, const PROCSTR& stmts);

// The IDM statement (also written into the procedure record): com->idmspec
// and com->base. Without the statement the defaults of idmsdft stand and
// base is 0. All its problems are warnings (rc at most 4).
void getidm(QVTCOM* com, const STMT& proc);

// Sorts com->vars by name (names compare without regard to case, as the
// input's variable names are unique that way).
void sortnames(QVTCOM* com);

// LEAD=: the field's value when given, else defaultLead. At most the limit:
// stored, result 0. Above it: with bit 1 of opts, message (773) 102 with the
// value and the limit, and the step ends with rc 2000; without, message
// (773) 101, the limit is stored, result -1.
int qvtGetLEAD(QVTCOM* com, const STLIST* fld, int defaultLead, int opts, int* lead);
// The largest LEAD= accepted: 100000000.
void qvtGetLEADLimit(int* limit);

}  // namespace qvt
