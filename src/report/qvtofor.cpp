// The "Forecasts" table, with its decimals chosen from the size of the
// values shown and its "Obs" column as wide as the largest number.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

#include "report/qvtg.hpp"
#include "report/qvto.hpp"
#include "report/tables.hpp"

namespace qvt {

int forformat(const double* const* vecs, int nvecs, long first, long last) noexcept {
  // The largest and the smallest normal double: any value shown moves them.
  double minnum = std::numeric_limits<double>::max();
  double maxnum = std::numeric_limits<double>::min();
  for (int k = 0; k < nvecs; ++k) {
    if (vecs[k] == nullptr) continue;
    for (long t = first; t <= last; ++t) {
      const double v = vecs[k][t];
      if (wzmis(v)) continue;
      minnum = std::min(minnum, std::fabs(v));
      maxnum = std::max(maxnum, std::fabs(v));
    }
  }
  if (maxnum >= 10000000000.0 || minnum <= 0.001) return kForFree;
  struct Step {
    double at;
    int decimals;
  };
  static constexpr Step kSteps[] = {{1000000000.0, 0}, {100000000.0, 1}, {10000000.0, 2}, {1000000.0, 3},
                                    {10.0, 4},         {0.1, 5},         {0.01, 6},       {0.001, 7}};
  for (const Step& s : kSteps)
    if (maxnum >= s.at) return s.decimals;
  return kForFree;
}

int obsformat(double tobs) noexcept {
  if (tobs <= 9999) return 4;
  // The limits 10^w - 1 for the widths 5 to 10, compared as logarithms.
  const double lv = std::log(tobs);
  double limit = 99999;
  for (int w = 5; w <= 10; ++w, limit = limit * 10 + 9)
    if (lv <= std::log(limit)) return w;
  return 20;
}

std::string confidenceText(double alpha) {
  // One rule for tables and plots; it also reads a missing alpha as 0.05.
  char buf[3];
  qvtocl(alpha, buf);
  return buf;
}

void qvtofor(QVTCOM* com, const FOR_OUT* fore, int method) {
  if (!com->print.forecasts || fore == nullptr) return;
  const bool details = com->print.details != 0;
  const double alpha = com->current.varptr != nullptr ? com->current.varptr->fstmt->alpha : fore->alpha;
  const std::string conf = confidenceText(alpha);
  const long n = fore->n;
  const long t0 = details ? 0 : std::max(n - com->istmt.lead, 0L);
  const double* shown[] = {fore->actual, fore->predicted, fore->lower, fore->upper};
  const int d = n > t0 ? forformat(shown, 4, t0, n - 1) : kForFree;
  const int dec = d == kForFree ? kColFree : d;

  TableOut t(com, "Forecasts", TableKind::Data, 5400);
  t.col("Obs", 5411, ColType::Long, obsformat(static_cast<double>(com->out.tobs)), 0);
  const bool id = hasId(*com);
  if (id) t.col("Time", 5410, ColType::Double, com->istmt.fmtw1, kColFree, idFormat(*com));
  t.col("Predict", 5412, ColType::Double, 11, dec);
  t.col("Std", 5413, ColType::Double, 9, dec);
  TableColumn lower{"Lower", catText(com, 5414, {conf}), ColType::Double, 11, dec, {}, {}};
  TableColumn upper{"Upper", catText(com, 5415, {conf}), ColType::Double, 11, dec, {}, {}};
  t.col(lower);
  t.col(upper);
  const bool errors = details && !com->op.nooutall;
  const bool trend = details && (method == 2 || method == 3 || method == 4 || method == 6 || method == 7);
  const bool season = details && (method == 5 || method == 6 || method == 7 || method == 11);
  if (errors) {
    t.col("Actual", 5416, ColType::Double, 11, dec);
    t.col("Error", 5417, ColType::Double, 11);
  }
  if (details) t.col("Level", 5418, ColType::Double, 11, dec);
  if (trend) t.col("Trend", 5419, ColType::Double, 11);
  if (season) t.col("Season", 5420, ColType::Double, 11);
  t.endCols();

  t.variable();
  t.value("Confidence", numText((1 - alpha) * 100));
  t.value("Lead", numText(static_cast<double>(com->out.tobs - com->out.nobs)));
  // The intermittent model's detailed table shows every period of the frame,
  // so a used range has nothing to mark there. Its "Lead" would carry the
  // label 5820 ("Forecast horizon"); named values have no label of their
  // own in this output layer, so the number is handed over as elsewhere.
  const bool demandDetails = method == kModelCroston && details && !com->op.nooutall;
  if (!demandDetails) {
    t.value("First", timeText(*com, com->current.first));
    t.value("Last", timeText(*com, com->current.last));
  }

  const auto at = [](const double* v, long i) { return TableCell(v != nullptr ? v[i] : kMissing); };
  std::vector<TableCell> cells;
  for (long r = t0; r < n; ++r) {
    cells.clear();
    cells.emplace_back(static_cast<double>(r - n - com->istmt.back + com->out.tobs + 1));
    if (id) cells.push_back(at(fore->date, r));
    cells.push_back(at(fore->predicted, r));
    cells.push_back(at(fore->std, r));
    cells.push_back(at(fore->lower, r));
    cells.push_back(at(fore->upper, r));
    if (errors) {
      cells.push_back(at(fore->actual, r));
      cells.push_back(at(fore->residual, r));
    }
    if (details) cells.push_back(at(fore->level, r));
    if (trend) cells.push_back(at(fore->trend, r));
    if (season) cells.push_back(at(fore->season, r));
    t.row(cells);
  }
  t.close();
}

}  // namespace qvt
