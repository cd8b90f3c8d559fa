// Output data sets: their definition once per step (every column bound to a
// cell of QVTCOM) and the writers that fill the cells and add rows.
#pragma once

#include "run/qvtcom.hpp"
#include "intermittent/idmodel.hpp"
#include "smoothing/esmtypes.hpp"

namespace qvt {

// Defines every output data set asked for, binds the input, works out the
// expected records, makes tpool and, with several series, the spool. Does
// not return (hostExit) when rc is above 4 at its end.
void qvtds(QVTCOM* com);

// The input's row buffer and bindings (series into ds.data.buf, the time ID
// into id.val) and the OUT= columns: BY variables, time ID, one per series.
void inout(QVTCOM* com);
// The facts of the input: rid2n, in.enobs, and the pool tpool sized by them.
void nobs(QVTCOM* com);

// Definitions of OUTEST=, OUTFOR=, OUTCOMPONENT=, OUTSUM=, OUTSTAT=; each
// expects its data set open.
void outest(QVTCOM* com);
void outfor(QVTCOM* com);
void outcomp(QVTCOM* com);
void outsum(QVTCOM* com);
void outstat(QVTCOM* com);
void outtrend(QVTCOM* com);
void outseason(QVTCOM* com);

// Row writers; each does nothing when its data set wasn't asked for.
void qvtdout(QVTCOM* com);                             // OUT=, one series
void qvtdest(QVTCOM* com, const WINMODEL* esm, const IDMODEL* idm);  // OUTEST=
void qvtdfor(QVTCOM* com, const FOR_OUT* fore);        // OUTFOR=
void qvtdcmp(QVTCOM* com, const FOR_OUT* fore);        // OUTCOMPONENT=
void qvtdsum(QVTCOM* com);                             // OUTSUM=, the series in hand
void qvtdsof(QVTCOM* com, int region);                 // OUTSTAT=: 0 the fit, else BACK=
void qvtdtre(QVTCOM* com);                             // OUTTREND=, the series in hand
void qvtdsea(QVTCOM* com);                             // OUTSEASON=, the series in hand
void qvtdinf(QVTCOM* com);                             // OUTPROCINFO=, at the end of the step

// Message numbers of this stage (group 743).
inline constexpr int kMsgSetupMemory = 3;      // out of memory while setting up the outputs
inline constexpr int kMsgSpoolFailed = 40;     // a spool operation failed; the step ends
inline constexpr int kMsgProcInfoFailed = 4750;  // OUTPROCINFO= could not be written

// Label messages of the data sets (one argument: the input's display name)
// and of their columns.
inline constexpr int kLblOutest = 4000;
inline constexpr int kLblOutfor = 4100;
inline constexpr int kLblOutcomp = 4600;
inline constexpr int kLblOutsum = 4200;
inline constexpr int kLblOutstat = 4300;
inline constexpr int kLblOuttrend = 4400;
inline constexpr int kLblOutseason = 4500;
inline constexpr int kLblLead = 4230;    // the _LEADi_ columns of OUTSUM=, with i
inline constexpr int kLblTimeId = 4102;  // time ID column of OUTFOR= and OUTCOMPONENT=

}  // namespace qvt
