// The plots of an intermittent series: its data table holds the model's
// results by demand (the columns of the printed "Demands" table), one row
// for each demand of the fit sample and the hold-out and one for the next
// demand, the forecast.
#include <vector>

#include "report/plotdata.hpp"
#include "report/qvto.hpp"
#include "report/qvtg.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

struct Column {
  const char* name;
  int label;
};

// After each component's actual value: its prediction, standard error,
// limits and error; after the demand's: the same and the stock.
constexpr Column kCols[] = {{"ActualInterval", 5710}, {"PredictedInterval", 5711}, {"StdInterval", 5712},
                            {"LowerInterval", 5713},  {"UpperInterval", 5714},     {"ErrorInterval", 5715},
                            {"ActualSize", 5720},     {"PredictedSize", 5721},     {"StdSize", 5722},
                            {"LowerSize", 5723},      {"UpperSize", 5724},         {"ErrorSize", 5725},
                            {"Actual", 5730},         {"Predict", 5731},           {"Std", 5732},
                            {"Lower", 5733},          {"Upper", 5734},             {"Error", 5735},
                            {"Stock", 5736}};

}  // namespace

void qvtgdem(QVTCOM* com, const IDMODEL* idm) {
  const auto& g = com->plot;
  if (g.none || idm == nullptr || idm->ids == nullptr) return;
  if (!(g.forecasts || g.modelforecasts || g.forecastsonly || g.models || g.errors)) return;
  const IDSERIES& ids = *idm->ids;
  PlotTable t(com, "DemandsPlot", "Demands", 5700);
  t.col("Index", 5702, ColType::Long, 6, 0);
  if (hasId(*com))
    t.col("DemandTime", 5703, ColType::Double, com->istmt.fmtw1, kColFree, idFormat(*com));
  else
    t.col("DemandTime", 5703, ColType::Double, 8, 0);
  for (const Column& c : kCols) t.col(c.name, c.label, ColType::Double, 12);
  t.endCols();
  t.axisValues(idm->results.alpha);
  t.value("Base", numText(ids.base));
  t.value("Number", numText(static_cast<double>(ids.n)));

  // The rows of the printed Demands table.
  std::vector<TableCell> cells;
  for (long i = 0; i <= ids.nsample + ids.nholdout; ++i) {
    demandCells(*idm, i, &cells);
    t.row(cells);
  }

  if (g.models) {
    t.graph("DemandIntervalPlot", 7410, 7411);
    t.graph("DemandIntervalHistogram", 7460, 7461);
    t.graph("DemandSizePlot", 7420, 7421);
    t.graph("DemandSizeHistogram", 7470, 7471);
  }
  if (g.errors) t.graph("DemandErrorsPlot", 7440, 7441);
  if (g.forecasts || g.modelforecasts || g.forecastsonly) t.graph("DemandForecastsPlot", 7450, 7451);
  t.close();
}

}  // namespace qvt
