// The plots of a smoothing model's fit and of its forecasts: one hidden
// data table a call, and the graphs that PLOT= names drawn from it.
#include <algorithm>
#include <cstring>
#include <numbers>
#include <string>
#include <vector>

#include "report/plotdata.hpp"
#include "report/qvto.hpp"
#include "report/qvtg.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

bool hasTrend(int m) { return m == 2 || m == 3 || m == 4 || m == 6 || m == 7; }
bool hasSeason(int m) { return m == 5 || m == 6 || m == 7 || m == 11; }

double alphaOf(const QVTCOM* com, const FOR_OUT* fore) {
  return com->current.varptr != nullptr && com->current.varptr->fstmt != nullptr
             ? com->current.varptr->fstmt->alpha
             : fore->alpha;
}

// The "Obs" number of row r of the n forecast rows, as the "Forecasts"
// table numbers it: the last row is the last period of the whole frame.
double obsOf(const QVTCOM* com, long r, long n) {
  return static_cast<double>(r - n - com->istmt.back + com->out.tobs + 1);
}

TableCell cell(const double* v, long i) { return TableCell(v != nullptr ? v[i] : kMissing); }

// "Obs", and "Time" when there is an ID, with the labels of the plots.
void timeColumns(PlotTable& t, int obsLabel, int timeLabel) {
  QVTCOM* com = t.com();
  t.col("Obs", obsLabel, ColType::Long, obsformat(com->out.tobs < 1 ? 4 : static_cast<double>(com->out.tobs)), 0);
  if (hasId(*com)) t.col("Time", timeLabel, ColType::Double, com->istmt.fmtw1, kColFree, idFormat(*com));
}

}  // namespace

void qvtgmod(QVTCOM* com, const FOR_OUT* fore, int method, int nparms) {
  const auto& g = com->plot;
  if (g.none || fore == nullptr) return;
  if (!(g.models || g.errors || g.levels || g.trends || g.seasons || g.acf || g.pacf || g.iacf || g.wn ||
        g.periodogram || g.spectrum || g.corr))
    return;
  const double alpha = alphaOf(com, fore);
  const long rows = std::clamp(com->current.nobs, 0L, fore->n);
  const double* shown[] = {fore->actual, fore->predicted, fore->lower, fore->upper};
  const int d = rows > 0 ? forformat(shown, 4, 0, rows - 1) : kForFree;
  const int dec = d == kForFree ? kColFree : d;
  const long nlags = plotLags(com->istmt.seasonality, com->current.nobs);
  const bool season = hasSeason(method);

  PlotTable t(com, "ModelPlots", "Forecasts", 7200);
  timeColumns(t, 5411, 5409);
  t.col("Predict", 5421, ColType::Double, 11, dec);
  t.col("Std", 5413, ColType::Double, 9, dec);
  t.confidenceCols(alpha, dec);
  t.actualCol(dec);
  t.col("Error", 5417, ColType::Double, 11);
  t.col("Level", 5418, ColType::Double, 11, dec);
  t.col("Trend", 5419, ColType::Double, 11);
  if (season) t.col("Season", 5420, ColType::Double, 11);
  t.endCols();

  t.axisValues(alpha);
  t.value("Series", "Error");
  t.value("Lead", numText(static_cast<double>(com->out.tobs - com->out.nobs)));
  t.value("First", timeText(*com, com->current.first));
  t.value("Last", timeText(*com, com->current.last));
  t.value("NLags", numText(static_cast<double>(nlags)));
  t.value("NParms", numText(nparms));
  t.value("MeanAdj", numText(com->spectrum.meanAdj));
  t.value("Alpha", numText(com->spectrum.alpha));
  t.value("Seasonality", numText(com->istmt.seasonality));

  const bool id = hasId(*com);
  std::vector<TableCell> cells;
  for (long r = 0; r < rows; ++r) {
    cells.clear();
    cells.emplace_back(obsOf(com, r, fore->n));
    if (id) cells.push_back(cell(fore->date, r));
    for (const double* v : {fore->predicted, fore->std, fore->lower, fore->upper, fore->actual, fore->residual,
                            fore->level, fore->trend})
      cells.push_back(cell(v, r));
    if (season) cells.push_back(cell(fore->season, r));
    t.row(cells);
  }

  if (g.models) t.graph("ModelPlot", 7210, 7211);
  if (g.levels) t.graph("LevelStatePlot", 7220, 7221);
  if (g.trends && hasTrend(method)) t.graph("TrendStatePlot", 7230, 7231);
  if (g.seasons && season) t.graph("SeasonStatePlot", 7240, 7241);
  qvtogre(com, com->current.varptr);
  if (g.errors) {
    t.graph("ErrorPlot", 7250, 7251);
    t.graph("ErrorHistogram", 7255, 7256);
  }
  if (g.acf) {
    t.graph("ErrorACFPlot", 7261, 7262);
    t.graph("ErrorACFNORMPlot", 7263, 7264);
  }
  if (g.pacf) {
    t.graph("ErrorPACFPlot", 7271, 7272);
    t.graph("ErrorPACFNORMPlot", 7273, 7274);
  }
  if (g.iacf) {
    t.graph("ErrorIACFPlot", 7281, 7282);
    t.graph("ErrorIACFNORMPlot", 7283, 7284);
  }
  if (g.wn) {
    t.graph("ErrorWhiteNoiseProbPlot", 7293, 7294);
    t.graph("ErrorWhiteNoiseLogProbPlot", 7295, 7296);
  }
  if (g.corr)
    t.graph("ErrorCorrelationPlots", 7245, 7246,
            {{"Series", "Error"}, {"NLags", numText(static_cast<double>(nlags))}, {"NParms", numText(nparms)}});
  if (g.periodogram || g.spectrum) {
    u_slabel tvl, tdl, fvl, fdl;
    double seasFreq = kMissing;
    ztsGetPeriodTickList(com->current.nobs, com->istmt.seasonality, std::numbers::pi, &tvl, &tdl, &seasFreq);
    ztsGetFrequencyTickList(com->current.nobs, com->istmt.seasonality, std::numbers::pi, &fvl, &fdl);
    std::vector<TableValue> lists = {{"SeasFreq", numText(seasFreq)}, {"TickValList", tvl.str()},
                                     {"TickDispList", tdl.str()},     {"FreqValList", fvl.str()},
                                     {"FreqDispList", fdl.str()},     {"MaxFreq", numText(std::numbers::pi)}};
    if (g.periodogram) t.graph("ErrorPeriodogram", 7297, 7298, lists);
    if (g.spectrum) {
      char conf[3];
      qvtocl(com->spectrum.alpha, conf);
      lists.push_back({"Alpha", numText(com->spectrum.alpha)});
      lists.push_back({"ConfLevel", catText(com, 5430, {std::string(conf)})});
      lists.push_back({"MeanAdj", numText(com->spectrum.meanAdj)});
      lists.push_back({"Kernel", "KERNBART"});
      t.graph("ErrorSpectralDensityPlot", 7299, 7289, lists);
    }
  }
  qvtogre(com, nullptr);
  t.close();
}

void qvtgfor(QVTCOM* com, const FOR_OUT* fore, int method, int type) {
  (void)method;  // the forecast plots look the same for every model
  const auto& g = com->plot;
  if (g.none || fore == nullptr) return;
  struct Kind {
    char flag;
    const char* name;
    int label, title;
  };
  const Kind kinds[] = {{g.forecastsonly, "ForecastsOnlyPlot", 7310, 7311},
                        {g.forecasts, "ForecastsPlot", 7320, 7321},
                        {g.modelforecasts, "ModelForecastsPlot", 7330, 7331}};
  if (type < 0 || type > 2 || !kinds[type].flag) return;
  const double alpha = alphaOf(com, fore);
  const long nobs = std::clamp(com->current.nobs, 0L, fore->n);
  const long r0 = type == 0 ? nobs : 0;
  const double* shown[] = {fore->actual, fore->predicted, fore->lower, fore->upper};
  const int d = fore->n > r0 ? forformat(shown, 4, r0, fore->n - 1) : kForFree;
  const int dec = d == kForFree ? kColFree : d;

  PlotTable t(com, "ForecastPlots", "Forecasts", 7300);
  timeColumns(t, 5411, 5409);
  t.col("Predict", 5421, ColType::Double, 11, dec);
  t.confidenceCols(alpha, dec);
  t.actualCol(dec);
  t.endCols();
  t.axisValues(alpha);
  t.value("Lead", numText(static_cast<double>(com->out.tobs - com->out.nobs)));
  t.value("First", timeText(*com, com->current.first));
  t.value("Last", timeText(*com, com->current.last));
  // The first forecast's time; without an ID, its "Obs" number.
  const double horizon = nobs >= fore->n ? kMissing
                         : hasId(*com) && fore->date != nullptr ? fore->date[nobs]
                                                                : obsOf(com, nobs, fore->n);
  t.value("Horizon", timeText(*com, horizon));

  const bool id = hasId(*com);
  std::vector<TableCell> cells;
  for (long r = r0; r < fore->n; ++r) {
    // The forecasts plot shows limits only where the forecasts begin.
    const bool limits = type != 1 || r >= nobs;
    cells.clear();
    cells.emplace_back(obsOf(com, r, fore->n));
    if (id) cells.push_back(cell(fore->date, r));
    cells.push_back(cell(fore->predicted, r));
    cells.push_back(limits ? cell(fore->lower, r) : TableCell(kMissing));
    cells.push_back(limits ? cell(fore->upper, r) : TableCell(kMissing));
    cells.push_back(cell(fore->actual, r));
    t.row(cells);
  }
  t.graph(kinds[type].name, kinds[type].label, kinds[type].title);
  t.close();
}

}  // namespace qvt
