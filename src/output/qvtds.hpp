// Output data sets: their definition once per step (every column bound to a
// cell of QVTCOM) and the writers that fill the cells and add rows.
#pragma once

#include "run/qvtcom.hpp"
#include "smoothing/esmtypes.hpp"

namespace qvt {

// Defines every output data set asked for, binds the input, works out the
// expected records, makes tpool and, with several series, the spool. Does
// not return (hostExit) when rc is above 4 at its end.
void qvtds(QVTCOM* com);

// Row writers; each does nothing when its data set wasn't asked for.
void qvtdout(QVTCOM* com);                             // OUT=, one series
void qvtdest(QVTCOM* com, const WINMODEL* esm);        // OUTEST=
void qvtdfor(QVTCOM* com, const FOR_OUT* fore);        // OUTFOR=
void qvtdcmp(QVTCOM* com, const FOR_OUT* fore);        // OUTCOMPONENT=

}  // namespace qvt
