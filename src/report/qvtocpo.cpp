// "Performance": the errors of one series' forecasts of the BACK= range,
// horizon by horizon, with their summary over all horizons, one row for
// each error type the collector keeps.
#include <algorithm>
#include <vector>

#include "report/qvto.hpp"
#include "report/tables.hpp"
#include "stats/ztscp.hpp"

namespace qvt {

void qvtocpo(QVTCOM* com) {
  const long back = com->istmt.back;
  const ZTS_CP* cp = com->outcps.cp;
  if (!com->print.performance || back < 1 || cp == nullptr) return;
  struct Row {
    bool on;
    int name;
    const std::vector<double>& err;
    const ZTS_CP_STATS& s;
  };
  const Row rows[] = {{cp->spec.pct != 0, 7050, cp->pe, cp->indiv.pct},
                      {cp->spec.sym != 0, 7051, cp->se, cp->indiv.sym},
                      {cp->spec.rel != 0, 7052, cp->re, cp->indiv.rel}};
  std::string names[std::size(rows)];
  int width = 1;
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    names[i] = catText(com, rows[i].name);
    if (rows[i].on) width = std::max(width, static_cast<int>(names[i].size()));
  }
  const std::string pct = "PERCENT8.3";
  TableOut t(com, "Performance", TableKind::Data, 7000);
  t.col("ErrorType", 7010, ColType::Text, width);
  for (long i = 0; i < back; ++i)
    t.col(TableColumn{"Horizon" + std::to_string(i + 1), horizonLabel(com, i, 7013), ColType::Double, 8,
                      kColFree, pct, "Horizon"});
  t.col("Minimum", 7020, ColType::Double, 8, kColFree, pct);
  t.col("Maximum", 7021, ColType::Double, 8, kColFree, pct);
  t.col("Mean", 7022, ColType::Double, 8, kColFree, pct);
  t.col("MeanAbsolute", 7023, ColType::Double, 8, kColFree, pct);
  t.col("MedianAbsolute", 7024, ColType::Double, 8, kColFree, pct);
  t.col("GeometricMeanAbsolute", 7025, ColType::Double, 8, kColFree, pct);
  t.endCols();
  t.variable();
  t.value("First", "Horizon1");
  t.value("Last", "Horizon" + std::to_string(back));
  t.value("Back", numText(static_cast<double>(back)));
  std::vector<TableCell> cells;
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const Row& r = rows[i];
    if (!r.on) continue;
    cells.clear();
    cells.emplace_back(names[i]);
    for (long h = 0; h < back; ++h)
      cells.emplace_back(h < static_cast<long>(r.err.size()) ? r.err[h] : kMissing);
    for (double v : {r.s.min, r.s.max, r.s.mean, r.s.amean, r.s.median, r.s.gm}) cells.emplace_back(v);
    t.row(cells);
  }
  t.close();
}

std::string horizonLabel(QVTCOM* com, long i, int text) {
  // The BACK= range starts right behind the fit range, at
  // out.id[out.nobs - BACK=], as in the forecast summary.
  const long at = com->out.nobs - com->istmt.back + i;
  if (hasId(*com) && com->out.id != nullptr && at >= 0 && at < com->out.tobs)
    return timeText(*com, com->out.id[at]);
  return catText(com, text, {static_cast<long long>(i + 1)});
}

}  // namespace qvt
