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

// The pieces of the per-series run that its stages share.

// Writes out.y of the series in hand: to the spool with several series, as
// OUT= rows with one. A spool that fails ends the step (rc 1020).
void putresult(QVTCOM* com);

// Ends the series in hand with `status`: its rows, its summary row, the
// failure count. True while the count allows a message.
bool failure(QVTCOM* com, int status);

// Tests the memory deficit of the series in hand: 0 when none, else -1
// after the out-of-memory messages, with error set and rc raised.
int memory(QVTCOM* com);

// Puts series varno (from 0) of the BY group into in.y.
void getseries(QVTCOM* com, int varno);

// Messages of the driver and the per-series run, group 743.
enum RunMsg : int {
  kMsgSeriesTotal = 101,      // (series seen)
  kMsgRequestedTotal = 102,   // (series with a model requested)
  kMsgFailureTotal = 103,     // (series that failed)
  kMsgGroupTooShort = 110,    // ()
  kMsgFailuresCut = 120,      // ()
  kMsgSeriesMemory = 2000,    // (variable)
  kMsgTooFewValues = 2001,    // (variable)
  kMsgNonPositive = 2002,     // (variable)
  kMsgEstimation = 2003,      // (variable)
  kMsgTransformFailed = 2007, // (variable)
  // Model choice: 2050 plus the code of the failed stage (esmbest's codes
  // turned positive), each with the variable.
  kMsgChoiceFailed = 2050,    // any other cause
  kMsgChoiceMemory = 2051,    // out of memory
  kMsgChoiceNoData = 2052,    // no usable values
  kMsgChoiceLast = 2058,
};

}  // namespace qvt
