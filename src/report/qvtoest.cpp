// "ParameterEstimates" and "SmoothedStates" (or "DemandStates") of the
// model used: a smoothing model, or the intermittent model's components.
#include <algorithm>
#include <span>
#include <vector>

#include "intermittent/idmodel.hpp"
#include "report/qvto.hpp"
#include "report/tables.hpp"

namespace qvt {
namespace {

// The columns and named values of the estimates table. The widths of the
// numbers are ours: 12 free places hold BEST's digits, a t value needs no
// more than two decimals to be read.
void estimateColumns(QVTCOM* com, TableOut& t, int width, const std::string& model) {
  t.col("Parameter", 5211, ColType::Text, width);
  t.col("Estimate", 5212, ColType::Double, 12);
  t.col("StdErr", 5213, ColType::Double, 12);
  t.col("tValue", 5214, ColType::Double, 8, 2);
  t.col("Probt", 5215, ColType::Double, 6, kColFree, "PVALUE6.");
  t.endCols();
  t.variable();
  t.value("Transform", com->current.trns.view());
  t.value("Model", model);
}

// Catalogue texts of the weights of each smoothing model, in the order of
// its estimates.
std::span<const int> parmNames(int model) {
  static constexpr int kLevel[] = {1101};
  static constexpr int kTrend[] = {1101, 1103};
  static constexpr int kDamp[] = {1101, 1103, 1104};
  static constexpr int kDouble[] = {1102};
  static constexpr int kSeason[] = {1101, 1105};
  static constexpr int kWinters[] = {1101, 1103, 1105};
  switch (model) {
    case 1: return kLevel;
    case 2: return kTrend;
    case 3: return kDamp;
    case 4: return kDouble;
    case 5:
    case 11: return kSeason;
    case 6:
    case 7: return kWinters;
    default: return {};
  }
}

bool hasTrend(int m) noexcept { return m == 2 || m == 3 || m == 4 || m == 6 || m == 7; }
bool hasSeason(int m) noexcept { return m == 5 || m == 6 || m == 7 || m == 11; }

double at(const std::vector<double>& v, std::size_t i) { return i < v.size() ? v[i] : kMissing; }

// The weights of a demand component in the order of its estimates, each
// with the catalogue text of its name: base (level), base + 1 (trend),
// base + 2 (damping); the one weight of DOUBLE is base + 3.
struct ComponentParm {
  int name;
  const ESMPEST* p;
};
std::vector<ComponentParm> componentParms(const ESMODEL& c, int base) {
  switch (c.modused) {
    case kIdmSimple: return {{base, &c.pest.level}};
    case kIdmLinear: return {{base, &c.pest.level}, {base + 1, &c.pest.trend}};
    case kIdmDampTrend: return {{base, &c.pest.level}, {base + 1, &c.pest.trend}, {base + 2, &c.pest.damp}};
    case kIdmDouble: return {{base + 3, &c.pest.level}};
    default: return {};
  }
}

bool componentTrend(const ESMODEL& c) noexcept {
  return c.modused == kIdmLinear || c.modused == kIdmDampTrend || c.modused == kIdmDouble;
}

void demandEstimates(QVTCOM* com, const IDMODEL* idm) {
  const bool croston = idm->modused == kIdmUsedCroston;
  if (!croston && idm->modused != kIdmUsedAverage) return;
  std::vector<ComponentParm> parms;
  if (croston) {
    parms = componentParms(idm->intv, 1120);
    for (const ComponentParm& p : componentParms(idm->size, 1130)) parms.push_back(p);
  } else {
    parms = componentParms(idm->adem, 1140);
  }
  std::vector<std::string> labels;
  int width = 0;
  for (const ComponentParm& p : parms) {
    labels.push_back(catText(com, p.name));
    width = std::max(width, static_cast<int>(labels.back().size()));
  }
  TableOut t(com, "ParameterEstimates", TableKind::Data, 5200);
  estimateColumns(com, t, width, catText(com, croston ? 1030 : 1033));
  for (std::size_t i = 0; i < parms.size(); ++i) {
    const ESMPEST& e = *parms[i].p;
    const TableCell row[] = {labels[i], e.estimate, e.stderr_, e.tvalue, e.pvalue};
    t.row(row);
  }
  t.close();
}

// Backcast, start and final state of each part of the form in use. The
// backcast runs backward in time, so its trend points the other way, as in
// the smoothing table.
void demandStates(QVTCOM* com, const IDMODEL* idm) {
  const bool croston = idm->modused == kIdmUsedCroston;
  if (!croston && idm->modused != kIdmUsedAverage) return;
  struct Part {
    const ESMODEL* c;
    const char* level;
    int levelLabel;
    const char* trend;
  };
  std::vector<Part> parts;
  if (croston) {
    parts = {{&idm->intv, "IntervalLevel", 6161, "IntervalTrend"}, {&idm->size, "SizeLevel", 6171, "SizeTrend"}};
  } else {
    parts = {{&idm->adem, "AverageLevel", 6181, "AverageTrend"}};
  }
  TableOut t(com, "DemandStates", TableKind::Data, 6150);
  t.col("State", 6110, ColType::Text, 8);
  for (const Part& p : parts) {
    t.col(p.level, p.levelLabel, ColType::Double, 12);
    if (componentTrend(*p.c)) t.col(p.trend, p.levelLabel + 1, ColType::Double, 12);
  }
  t.endCols();
  t.variable();
  std::vector<TableCell> cells;
  for (int k = 0; k < 3; ++k) {
    cells.clear();
    cells.emplace_back(catText(com, 6105 + k));
    for (const Part& p : parts) {
      const ESMSTATES& l = p.c->forecast.level;
      const ESMSTATES& b = p.c->forecast.trend;
      cells.emplace_back(k == 0 ? l.backcast : k == 1 ? l.start : l.final);
      if (!componentTrend(*p.c)) continue;
      const double v = k == 0 ? b.backcast : k == 1 ? b.start : b.final;
      cells.emplace_back(k == 0 && !wzmis(v) ? -v : v);
    }
    t.row(cells);
  }
  t.close();
}

}  // namespace

void qvtoest(QVTCOM* com, const WINMODEL* esm, const IDMODEL* idm) {
  if (!com->print.estimates) return;
  if (esm == nullptr) {
    if (idm != nullptr) demandEstimates(com, idm);
    return;
  }
  const int model = esm->spec.code;
  const auto names = parmNames(model);
  std::vector<std::string> labels;
  int width = 0;
  for (int k : names) {
    labels.push_back(catText(com, k));
    width = std::max(width, static_cast<int>(labels.back().size()));
  }
  TableOut t(com, "ParameterEstimates", TableKind::Data, 5200);
  estimateColumns(com, t, width, catText(com, model == 11 ? 1008 : 1000 + model));
  const MODELPEST& p = esm->pest;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const TableCell row[] = {labels[i], at(p.parms, i), at(p.stderr_, i), at(p.tvals, i), at(p.pvalue, i)};
    t.row(row);
  }
  t.close();
}

void qvtosta(QVTCOM* com, const WINMODEL* esm, const IDMODEL* idm) {
  if (!com->print.states) return;
  if (esm == nullptr) {
    if (idm != nullptr) demandStates(com, idm);
    return;
  }
  const int model = esm->spec.code;
  const bool trend = hasTrend(model);
  const int ns = hasSeason(model) ? std::max(esm->ts.nseasons, 0) : 0;
  TableOut t(com, "SmoothedStates", TableKind::Data, 6100);
  t.col("State", 6110, ColType::Text, 8);
  t.col("Level", 6111, ColType::Double, 12);
  if (trend) t.col("Trend", 6112, ColType::Double, 12);
  for (int i = 1; i <= ns; ++i) {
    TableColumn c{"Season" + std::to_string(i), catText(com, 6113, {static_cast<long long>(i)}),
                  ColType::Double, 12, kColFree, {}, "Seasons"};
    t.col(std::move(c));
  }
  t.endCols();
  t.variable();
  t.value("Seasonality", numText(static_cast<double>(esm->ts.nseasons)));
  t.value("First", timeText(*com, com->current.first));
  t.value("Last", timeText(*com, com->current.last));
  struct State {
    int name;
    const SMOOTHVALS* v;
    double trendSign;
  };
  // The backcast runs backward in time, so its trend points the other way.
  const State states[] = {{6105, &esm->svi, -1.0}, {6106, &esm->startvals, 1.0}, {6107, &esm->smooth, 1.0}};
  std::vector<TableCell> cells;
  for (const State& s : states) {
    cells.clear();
    cells.emplace_back(catText(com, s.name));
    cells.emplace_back(s.v->level);
    if (trend) cells.emplace_back(wzmis(s.v->trend) ? kMissing : s.trendSign * s.v->trend);
    for (int i = 0; i < ns; ++i) cells.emplace_back(at(s.v->sfactor, static_cast<std::size_t>(i)));
    t.row(cells);
  }
  t.close();
}

}  // namespace qvt
