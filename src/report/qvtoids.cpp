// "DemandSummary" and "DemandSeasonalSummary": the statistics that the
// demand series keeps of its intervals, sizes and average demands.
//
// Both are printed when PRINT=SUMMARY asks for them: the run calls them at
// the step where the demand series is set up, under print.summary, and the
// routines test the same flag, so that the request that names a summary is
// the one that gives it (rather than PRINT=FORECASTS, which has tables of
// its own for the demands).
#include <vector>

#include "intermittent/idseries.hpp"
#include "report/qvto.hpp"
#include "report/tables.hpp"

namespace qvt {
namespace {

// The plain components in the order of the rows, with the catalogue text
// of each row's name.
const IDSCOMP* component(const IDSERIES& ids, int comp) noexcept {
  switch (comp) {
    case kIdsInterval: return &ids.intv;
    case kIdsSize: return &ids.size;
    case kIdsAverage: return &ids.adem;
    default: return nullptr;
  }
}
int componentText(int comp) noexcept { return 5602 + comp; }

// Numbers are shown free in 12 places: sizes may be large or fractional.
constexpr int kWidth = 12;

}  // namespace

void qvtoids(QVTCOM* com, const IDSERIES* ids) {
  if (!com->print.summary || ids == nullptr) return;
  std::vector<std::string> names;
  int width = 0;
  for (int c = kIdsInterval; c <= kIdsAverage; ++c) {
    names.push_back(catText(com, componentText(c)));
    width = std::max(width, static_cast<int>(names.back().size()));
  }
  TableOut t(com, "DemandSummary", TableKind::Data, 5600);
  t.col("Component", 5605, ColType::Text, width);
  t.col("Total", 5610, ColType::Double, kWidth);
  t.col("Minimum", 5611, ColType::Double, kWidth);
  t.col("Maximum", 5612, ColType::Double, kWidth);
  t.col("Average", 5613, ColType::Double, kWidth);
  t.col("StdDev", 5614, ColType::Double, kWidth);
  t.col("Range", 5615, ColType::Double, kWidth);
  t.endCols();
  t.variable();
  t.value("Base", numText(ids->base));
  for (int c = kIdsInterval; c <= kIdsAverage; ++c) {
    const IDSSTATS& s = component(*ids, c)->stats;
    const TableCell row[] = {names[static_cast<std::size_t>(c)], s.sum, s.min, s.max, s.avg, s.std, s.range};
    t.row(row);
  }
  t.close();
}

void qvtoiss(QVTCOM* com, const IDSERIES* ids, int comp) {
  if (!com->print.summary || ids == nullptr || ids->seasonality <= 1) return;
  const IDSCOMP* c = component(*ids, comp);
  if (c == nullptr) return;
  static constexpr int kTitles[] = {5650, 5655, 5660};
  static constexpr const char* kNames[] = {"Interval", "Size", "Average"};
  const std::string name = catText(com, componentText(comp));
  TableOut t(com, "DemandSeasonalSummary", TableKind::Data, kTitles[comp]);
  t.col("Component", 5665, ColType::Text, static_cast<int>(name.size()));
  t.col("Season", 5666, ColType::Long, 6, 0);
  t.col("N", 5670, ColType::Long, 6, 0);
  t.col("Total", 5671, ColType::Double, kWidth);
  t.col("Minimum", 5672, ColType::Double, kWidth);
  t.col("Maximum", 5673, ColType::Double, kWidth);
  t.col("Average", 5674, ColType::Double, kWidth);
  t.col("StdDev", 5675, ColType::Double, kWidth);
  t.col("Range", 5676, ColType::Double, kWidth);
  t.endCols();
  t.variable();
  t.value("ComponentName", kNames[comp]);
  t.value("Base", numText(ids->base));
  t.value("Seasonality", numText(ids->seasonality));
  // Season codes run from 0 in the demand series and from 1 when shown.
  for (std::size_t s = 0; s < c->seasons.size(); ++s) {
    const IDSSTATS& st = c->seasons[s];
    const TableCell row[] = {name, static_cast<double>(s + 1), static_cast<double>(st.n), st.sum, st.min, st.max,
                             st.avg, st.std, st.range};
    t.row(row);
  }
  t.close();
}

}  // namespace qvt
