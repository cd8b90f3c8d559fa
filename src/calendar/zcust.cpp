#include "calendar/zcust.hpp"

#include "run/missing.hpp"

namespace qvt {

// No calendar is registered until the custom-interval manager exists; these
// answers are the "not found" path that parsing, counting and stepping
// already handle.

int getcustomname(const CINTC_MGR* /*mgr*/, const tchar* /*name*/, int /*len*/) noexcept { return 0; }

int zcustLoad(const INTERVAL& /*interval*/, CINTC_INFO** oinfo) noexcept {
  if (oinfo) *oinfo = nullptr;
  return 0;
}

void zcintcReleaseRef(CINTC_INFO* /*cinfo*/) noexcept {}

double customINTCK(const INTERVALX& /*x*/, double /*x1*/, double /*x2*/) noexcept {
  return kMissing;
}

double customINTNX(const INTERVALX& /*x*/, double /*date*/, double /*n*/) noexcept {
  return kMissing;
}

double customINTNXE(const INTERVALX& /*x*/, double /*date*/, double /*n*/) noexcept {
  return kMissing;
}

double customINTINDEX(const INTERVALX& /*x*/, double /*date*/, double /*n*/) noexcept {
  return kMissing;
}

double customINTSEAS(const INTERVALX& /*x*/) noexcept { return kMissing; }

}  // namespace qvt
