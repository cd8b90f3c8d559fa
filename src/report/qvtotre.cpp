// "TrendStatistics" and "SeasonStatistics": the statistics of the raw
// records of each period and each season, from trend.stats.
#include <vector>

#include "report/qvto.hpp"
#include "report/tables.hpp"

namespace qvt {
namespace {

// The statistic columns both tables share, from the first label number on;
// a star column (details only) is skipped without PRINTDETAILS.
void statColumns(TableOut& t, int first, bool details) {
  // Counts need 8 places; sums of squares can be large, so 12 free places.
  if (details) t.col("Nobs", first + 2, ColType::Long, 8);
  t.col("N", first + 3, ColType::Long, 8);
  if (details) t.col("NMiss", first + 4, ColType::Long, 8);
  t.col("Minimum", first + 5, ColType::Double, 12);
  t.col("Maximum", first + 6, ColType::Double, 12);
  if (details) t.col("Range", first + 7, ColType::Double, 12);
  t.col("Sum", first + 8, ColType::Double, 12);
  t.col("Mean", first + 9, ColType::Double, 12);
  t.col("StdDev", first + 10, ColType::Double, 12);
  if (details) {
    t.col("USS", first + 11, ColType::Double, 12);
    t.col("CSS", first + 12, ColType::Double, 12);
    t.col("Median", first + 13, ColType::Double, 12);
  }
}

void statCells(std::vector<TableCell>& c, const ZINT_STATS& s, bool details) {
  const auto d = [](long v) { return static_cast<double>(v); };
  if (details) c.emplace_back(d(s.nobs));
  c.emplace_back(d(s.n));
  if (details) c.emplace_back(d(s.nmiss));
  c.emplace_back(s.min);
  c.emplace_back(s.max);
  if (details) c.emplace_back(s.range);
  c.emplace_back(s.sum);
  c.emplace_back(s.mean);
  c.emplace_back(s.std);
  if (details) {
    c.emplace_back(s.uss);
    c.emplace_back(s.css);
    c.emplace_back(s.median);
  }
}

}  // namespace

void qvtotre(QVTCOM* com) {
  if (!com->print.trends || com->trend.stats == nullptr) return;
  const bool details = com->print.details != 0;
  const long nt = com->trend.nt;
  const bool id = hasId(*com) && com->out.id != nullptr;
  TableOut t(com, "TrendStatistics", TableKind::Data, 5900);
  t.col("Obs", 5910, ColType::Long, obsformat(static_cast<double>(nt)), 0);
  if (id) t.col("Time", 5911, ColType::Double, com->istmt.fmtw1, kColFree, idFormat(*com));
  statColumns(t, 5910, details);
  t.endCols();
  t.variable();
  std::vector<TableCell> cells;
  for (long i = 0; i < nt; ++i) {
    cells.clear();
    cells.emplace_back(static_cast<double>(i + 1));
    if (id) cells.emplace_back(com->out.id[i]);
    statCells(cells, com->trend.stats[i], details);
    t.row(cells);
  }
  t.close();
}

void qvtosea(QVTCOM* com) {
  if (!com->print.seasons || com->trend.stats == nullptr) return;
  const bool details = com->print.details != 0;
  const int ns = com->trend.ns;
  TableOut t(com, "SeasonStatistics", TableKind::Data, 6000);
  t.col("Season", 6010, ColType::Long, obsformat(ns), 0);
  statColumns(t, 6010, details);
  t.endCols();
  t.variable();
  t.value("Seasonality", numText(ns));
  std::vector<TableCell> cells;
  for (int i = 0; i < ns; ++i) {
    cells.clear();
    cells.emplace_back(static_cast<double>(i + 1));
    statCells(cells, com->trend.stats[i], details);
    t.row(cells);
  }
  t.close();
}

}  // namespace qvt
