// The custom-interval manager of a host: the one place where the calendar
// code reaches data sets. The manager is made on first use from the host
// option INTERVALDS and kept in the host's named resource "_ZKJECINTC_", so
// it lives exactly as long as the host and is shared by every step.
#pragma once

#include "calendar/zcust.hpp"
#include "host/host.hpp"

namespace qvt {

// The host's manager, made if missing. Never null: without INTERVALDS the
// manager simply registers no name.
CINTC_MGR* zcintcMgr(Host& host);

// Forgets the host's manager and its loaded calendars; the next zcintcMgr
// makes a new one (after the option or a calendar data set has changed).
void zcintcDrop(Host& host);

// Reads a calendar data set through the host into `into`: the rows of
// "BEGIN", and of "END" and "SEASON" when they exist, and the format of
// "BEGIN". 0, or negative after a message that names the data set.
int zcintcRead(Host& host, const CUSTOMINTERVAL& ds, CINTC_INFO* into);

}  // namespace qvt
