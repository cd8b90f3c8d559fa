// The entry routine of a procedure step: the run-wide record, the set-up of
// statements and outputs, the loop over BY groups and the totals.
#include "run/dovqvt.hpp"

#include <memory>

#include "output/qvtds.hpp"
#include "output/ztspool.hpp"
#include "report/qvto.hpp"
#include "run/qvtin.hpp"
#include "run/qvtout.hpp"
#include "statements/qvtpars.hpp"
#include "stats/ztscp.hpp"

namespace qvt {
namespace {

// Ends the group's series all at once: a frame no longer than BACK= leaves
// nothing to fit.
void groupTooShort(QVTCOM* com) {
  if (com->counts.failures < com->maxerror) hostMsgLog(*com->host, kMsgProc, kMsgGroupTooShort);
  com->counts.series += com->nvars;
  com->counts.requested += com->nvars;
  com->counts.failures += com->nvars;
}

void runGroup(QVTCOM* com) {
  Host& host = *com->host;
  qvtin(com);
  if (com->error != 0 || com->out.nobs == 0) return;
  if (com->out.nobs <= com->istmt.back) {
    groupTooShort(com);
    return;
  }
  const long back = com->istmt.back;
  if (com->nvars >= 2) {
    // Record-major input to series-major, so that one series at a time is read.
    if (zttrans(host, com->outfile, com->infile, com->in.nobs, com->nvars) != 0 || com->error != 0)
      return;
  }
  qvtrun(com);
  if (com->error != 0) return;
  if (com->nvars >= 2) {
    // Series-major results back to one row per period for OUT=. A series that
    // ran out of memory left its row out, and the transposition then meets
    // the end of the spool: the group has no OUT= rows.
    if (zttrans(host, com->outfile, com->infile, com->nvars, com->out.tobs - back) == 0 &&
        com->error == 0)
      qvtout(com);
  }
}

}  // namespace

void dovqvt(Host& host, const PROCSTR& stmts) {
  // The record lives for the step; the heap keeps the caller's stack small.
  auto owner = std::make_unique<QVTCOM>();
  QVTCOM* com = owner.get();
  com->host = &host;
  com->qvtmsg = kMsgProc;
  com->rc = 0;

  qvtpars(com, stmts);
  if (com->error != 0 || com->rc > kRcWarning) hostExit(host, com->rc, 0);
  qvtds(com);
  if (com->error != 0) hostExit(host, com->rc, 0);
  qvtoint(com);
  const auto& pr = com->print;
  const bool cross = pr.performance || pr.performancesummary || pr.performanceoverall;
  // Without the collector (no memory) the performance tables are left out
  // and the forecasts go on: they don't depend on it.
  if (cross && ztscpi(com->nvars, com->istmt.back, nullptr, &com->outcps.cp) == -1)
    hostMemMessage(host, static_cast<long long>(sizeof(ZTS_CP)));
  // The step can end anywhere by hostExit (a BY group out of order, a spool
  // that fails), and always ends by it; the guard frees the collector on
  // every way out.
  struct CollectorGuard {
    ZTS_CP** cp;
    ~CollectorGuard() { ztscpt(cp); }
  } collector{&com->outcps.cp};

  com->error = 0;
  com->memdef = 0;
  while (hostByNext(host, com->ds.data.fileid) != 0) {
    runGroup(com);
    com->error = 0;
    com->memdef = 0;
  }

  if (cross) {
    if (com->nby > 0) {
      ztscpcu(com->outcps.cp);
      qvtocps(com, 1);
    }
  }
  if (com->nvars >= 2) qvtend(com);
  qvtdinf(com);
  if (com->counts.failures > com->maxerror) hostMsgLog(host, kMsgProc, kMsgFailuresCut);
  hostMsgLog(host, kMsgProc, kMsgSeriesTotal, {static_cast<long long>(com->counts.series)});
  hostMsgLog(host, kMsgProc, kMsgRequestedTotal, {static_cast<long long>(com->counts.requested)});
  hostMsgLog(host, kMsgProc, kMsgFailureTotal, {static_cast<long long>(com->counts.failures)});
  hostExit(host, com->rc, 0);
}

}  // namespace qvt
