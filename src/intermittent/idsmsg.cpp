// Messages for the codes of the demand-series routines (group 881). Each
// message comes in a pair: the even number without a name, the odd one with
// it. The routines themselves stay silent; the run calls this when it has
// decided to report a failed series.
#include "intermittent/idseries.hpp"

#include <new>
#include <string>

namespace qvt {
namespace {

constexpr int kGroup = 881;
constexpr int kMsgUnknown = 8090;  // a code without a message of its own
constexpr int kMsgClosing = 8092;  // follows every message of the table

struct CodeMsg {
  int rc;
  int number;
  bool timeid;  // the time ID's name goes with it, else the variable's
};

constexpr CodeMsg kTable[] = {
    {kIdsNoMem, 8100, false},       {kIdsNoSeasons, 8102, true},    {kIdsBadTime, 8104, true},
    {kIdsAllMissing, 8106, false},  {kIdsExtreme, 8108, false},     {kIdsNoDemand, 8110, false},
    {kIdsNoFitDemand, 8112, false}, {kIdsNonPositive, 8114, false}, {kIdsTransform, 8116, false},
};

bool given(const u_sname* name) { return name != nullptr && name->len != 0; }

// The even form without a name, the odd one with it.
void log(Host& host, int number, const u_sname* name) {
  if (given(name)) {
    hostMsgLog(host, kGroup, number + 1, {name->str()});
  } else {
    hostMsgLog(host, kGroup, number);
  }
}

}  // namespace

int idsmsg(Host& host, const IDSERIES* ids, int rc, const u_sname* timeid, const u_sname* variable) noexcept {
  if (ids == nullptr) return kIdsBadArg;
  if (rc >= 0) return 0;
  const CodeMsg* m = nullptr;
  for (const CodeMsg& e : kTable) {
    if (e.rc == rc) m = &e;
  }
  try {
    if (m != nullptr) {
      log(host, m->number, m->timeid ? timeid : variable);
      log(host, kMsgClosing, variable);
    } else {
      log(host, kMsgUnknown, variable);
    }
  } catch (const std::bad_alloc&) {
    // A message that can't be built is lost; the series' status still tells.
  }
  return m != nullptr ? 0 : 99;
}

}  // namespace qvt
