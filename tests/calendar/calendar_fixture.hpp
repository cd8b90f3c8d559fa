// What every calendar test uses: the interval and date routines, the date
// oracle, an interval read from its text (a text the test relies on must
// parse), and a date value from year, month and day.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "calendar/interval.hpp"
#include "calendar/zfmt.hpp"
#include "calendar/zidate.hpp"
#include "calendar/zintcycle.hpp"
#include "date_oracle.hpp"
#include "host/hostdate.hpp"
#include "run/missing.hpp"

namespace qvt::testing {

inline INTERVAL iv(const char* text) {
  INTERVAL i;
  EXPECT_EQ(zintstr(text, -1, &i), 0) << text;
  return i;
}

inline double ymd(int y, int m, int d) { return hostMdyToDate(m, d, y); }

}  // namespace qvt::testing
