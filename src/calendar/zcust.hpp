// Hooks of the custom-interval path: a user calendar given by a data set of
// rows and registered under a name. The registry itself isn't built yet, so
// every name is unregistered: getcustomname answers 0, zcustLoad finds no
// calendar, and counting and stepping on a custom interval give the missing
// value. The signatures are the ones the registry will keep.
#pragma once

#include "calendar/interval.hpp"
#include "run/strings.hpp"

namespace qvt {

// kIntCustom when the name is a registered calendar, else 0.
int getcustomname(const tchar* name, int len) noexcept;

// Finds or loads the calendar of an interval: 0 with *oinfo set; 0 with
// *oinfo null for a token that is no calendar; negative on failure.
int zcustLoad(const INTERVAL& interval, CINTC_INFO** oinfo) noexcept;

// Gives up one reference to a loaded calendar; null is allowed.
void zcintcReleaseRef(CINTC_INFO* cinfo) noexcept;

// Counting, begin, end and season of a step, and the largest season, on a
// custom calendar. The missing value when the calendar isn't available.
double customINTCK(const INTERVALX& x, double x1, double x2) noexcept;
double customINTNX(const INTERVALX& x, double date, double n) noexcept;
double customINTNXE(const INTERVALX& x, double date, double n) noexcept;
double customINTINDEX(const INTERVALX& x, double date, double n) noexcept;
double customINTSEAS(const INTERVALX& x) noexcept;

}  // namespace qvt
