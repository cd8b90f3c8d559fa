// LEAD= and its limit.
#include "statements/qvtpars.hpp"
#include "statements/qvtpfields.hpp"

namespace qvt {
namespace {
// The horizon is an int throughout the run, and every output vector is
// LEAD= longer than the series: a hundred million periods is the most that
// a run can allocate for.
constexpr int kLeadLimit = 100000000;
}  // namespace

void qvtGetLEADLimit(int* limit) {
  if (limit) *limit = kLeadLimit;
}

int qvtGetLEAD(QVTCOM* com, const STLIST* fld, int defaultLead, int opts, int* lead) {
  int limit = 0;
  qvtGetLEADLimit(&limit);
  // Compared as a double: a written value may lie far beyond an int.
  const double v = fld && fld->given() && fld->mode == StMode::Number ? fld->number() : defaultLead;
  if (v <= limit) {
    *lead = static_cast<int>(v);
    return 0;
  }
  // LEAD= is written as a whole number; one too large for a long long stays a double.
  const auto report = [&](int number) {
    if (v < 9.0e18) {
      hostMsgLog(*com->host, kMsgLeadLimit, number, {static_cast<long long>(v), static_cast<long long>(limit)});
    } else {
      hostMsgLog(*com->host, kMsgLeadLimit, number, {v, static_cast<long long>(limit)});
    }
  };
  if (opts & 1) {
    report(pmsg::kLeadLimitError);
    raiseRc(*com, kRcStatements);
    com->error = 1;
    hostExit(*com->host, com->rc);
  }
  report(pmsg::kLeadLimitNote);
  *lead = limit;
  return -1;
}

}  // namespace qvt
