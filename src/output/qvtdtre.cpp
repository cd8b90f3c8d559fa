// OUTTREND= and OUTSEASON=: statistics of the raw values of each series by
// period of the frame and by season of the cycle, as the accumulation made
// them (trend.stats). The rows are written before the series is modelled, so
// a series that fails later still has them.
#include <array>
#include <vector>

#include "output/outcols.hpp"
#include "output/qvtds.hpp"

namespace qvt {
namespace {

// The statistics columns shared by both data sets, labels from base + 10.
void statColumns(std::vector<OutColumn>& cols, int base, double* nobs, double* n, double* nmiss,
                 const ZINT_STATS& s) {
  cols.push_back(numColumn("NOBS", base + 10, nobs));
  cols.push_back(numColumn("N", base + 11, n));
  cols.push_back(numColumn("NMISS", base + 12, nmiss));
  cols.push_back(numColumn("MIN", base + 13, &s.min));
  cols.push_back(numColumn("MAX", base + 14, &s.max));
  cols.push_back(numColumn("RANGE", base + 15, &s.range));
  cols.push_back(numColumn("SUM", base + 16, &s.sum));
  cols.push_back(numColumn("MEAN", base + 17, &s.mean));
  cols.push_back(numColumn("STDDEV", base + 18, &s.std));
  cols.push_back(numColumn("USS", base + 19, &s.uss));
  cols.push_back(numColumn("CSS", base + 20, &s.css));
  cols.push_back(numColumn("MEDIAN", base + 21, &s.median));
}

}  // namespace

void outtrend(QVTCOM* com) {
  auto& o = com->outtrend;
  std::vector<OutColumn> cols = {textColumn("_NAME_", 4401, &com->current.var), timeIdColumn(*com, &o.timeid)};
  // Without a cycle there is no season to name.
  if (com->istmt.nseasons > 1) cols.push_back(numColumn("_SEASON_", 4403, &o.season));
  statColumns(cols, 4400, &o.nobs, &o.n, &o.nmiss, o.stats);
  defineDs(com, com->ds.outtrend, kLblOuttrend, cols);
}

void outseason(QVTCOM* com) {
  auto& o = com->outseason;
  std::vector<OutColumn> cols = {textColumn("_NAME_", 4501, &com->current.var),
                                 numColumn("_SEASON_", 4502, &o.scode)};
  statColumns(cols, 4500, &o.nobs, &o.n, &o.nmiss, o.stats);
  defineDs(com, com->ds.outseason, kLblOutseason, cols);
}

void qvtdtre(QVTCOM* com) {
  const DsHandle ds = com->ds.outtrend.fileid;
  const auto& tr = com->trend;
  if (!ds || tr.stats == nullptr) return;
  auto& o = com->outtrend;
  const bool seasons = com->istmt.nseasons > 1 && tr.scodes != nullptr;
  for (long t = 0; t < tr.nt; ++t) {
    o.timeid = com->out.id[t];
    if (seasons) o.season = tr.scodes[t] + 1;  // codes count from 0, seasons from 1
    o.stats = tr.stats[t];
    o.nobs = static_cast<double>(o.stats.nobs);
    o.n = static_cast<double>(o.stats.n);
    o.nmiss = static_cast<double>(o.stats.nmiss);
    if (!putRow(*com->host, ds)) return;
  }
}

void qvtdsea(QVTCOM* com) {
  const DsHandle ds = com->ds.outseason.fileid;
  const auto& tr = com->trend;
  if (!ds || tr.stats == nullptr) return;
  auto& o = com->outseason;
  for (int s = 1; s <= tr.ns; ++s) {
    o.scode = s;
    o.stats = tr.stats[s - 1];
    o.nobs = static_cast<double>(o.stats.nobs);
    o.n = static_cast<double>(o.stats.n);
    o.nmiss = static_cast<double>(o.stats.nmiss);
    if (!putRow(*com->host, ds)) return;
  }
}

}  // namespace qvt
