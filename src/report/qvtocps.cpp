// "PerformanceSummary" (a BY group, from the collector's `global` level)
// and "PerformanceOverall" (the run, from `univ`): five statistics of each
// error type and the three coverage ratios of the limits, by horizon and
// over all horizons ("Cumulative").
#include <algorithm>
#include <span>
#include <vector>

#include "report/qvto.hpp"
#include "report/tables.hpp"
#include "stats/ztscp.hpp"

namespace qvt {
namespace {

// Both tables share the template of the summary. A refused open follows
// the failure rule of every layer call; it is not retried under the
// table's own name, which would print it under the wrong template.
TableOut openTable(QVTCOM* com, std::string_view name, int title) {
  if (com->templateprefix.len < 1) com->templateprefix.set("QVT.QVT");
  TableHead head;
  head.name = std::string(name);
  head.templ = com->templateprefix.str() + ".PerformanceSummary";
  head.kind = TableKind::Data;
  head.title = catText(com, title);
  return TableOut(com, head);
}

}  // namespace

void qvtocps(QVTCOM* com, int where) {
  const long back = com->istmt.back;
  const ZTS_CP* cp = com->outcps.cp;
  const auto& p = com->print;
  const bool wanted = where == 0 ? (p.performance || p.performancesummary)
                                 : (p.performanceoverall || p.performance);
  if (!wanted || back < 1 || cp == nullptr || com->outcps.forback == nullptr) return;
  const std::vector<ZTS_CP_JSTATS>& level = where == 0 ? cp->global : cp->univ;
  if (level.size() != static_cast<std::size_t>(back + 1)) return;

  struct Type {
    bool on;
    int name, selector;
  };
  const Type types[] = {{cp->spec.pct != 0, 7150, kCpPct},
                        {cp->spec.sym != 0, 7151, kCpSym},
                        {cp->spec.rel != 0, 7152, kCpRel},
                        {cp->spec.cl != 0, 7153, kCpCl}};
  struct Stat {
    int label, acc;
  };
  const Stat errorRows[] = {{7120, kCpMin}, {7121, kCpMax}, {7122, kCpMean}, {7123, kCpAMean}, {7124, kCpGm}};
  const Stat limitRows[] = {{7125, kCpLower}, {7126, kCpUpper}, {7127, kCpTotal}};

  int wtype = 1, wstat = 1;
  for (const Type& ty : types)
    if (ty.on) wtype = std::max(wtype, static_cast<int>(catText(com, ty.name).size()));
  for (const Stat& s : errorRows) wstat = std::max(wstat, static_cast<int>(catText(com, s.label).size()));
  for (const Stat& s : limitRows) wstat = std::max(wstat, static_cast<int>(catText(com, s.label).size()));

  const std::string pct = "PERCENT8.3";
  const bool group = where == 0;
  TableOut t = openTable(com, group ? "PerformanceSummary" : "PerformanceOverall", group ? 7100 : 7101);
  t.col("ErrorType", 7110, ColType::Text, wtype);
  t.col("Statistic", 7115, ColType::Text, wstat);
  for (long i = 0; i < back; ++i) {
    const std::string label =
        group ? horizonLabel(com, i, 7113) : catText(com, 7113, {static_cast<long long>(i + 1)});
    t.col(TableColumn{"Horizon" + std::to_string(i + 1), label, ColType::Double, 8, kColFree, pct,
                      "Horizon"});
  }
  t.col("Cumulative", 7116, ColType::Double, 8, kColFree, pct);
  t.endCols();
  t.value("First", "Horizon1");
  t.value("Last", "Horizon" + std::to_string(back));
  t.value("Back", numText(static_cast<double>(back)));

  double* v = com->outcps.forback;
  std::vector<TableCell> cells;
  for (const Type& ty : types) {
    if (!ty.on) continue;
    const std::string name = catText(com, ty.name);
    const bool limits = ty.selector == kCpCl;
    const std::span<const Stat> stats = limits ? std::span<const Stat>(limitRows) : std::span<const Stat>(errorRows);
    for (const Stat& s : stats) {
      if (ztscpv(level.data(), back + 1, ty.selector, s.acc, v) < 0) continue;
      cells.clear();
      cells.emplace_back(name);
      cells.emplace_back(catText(com, s.label));
      for (long i = 0; i <= back; ++i) cells.emplace_back(v[i]);
      t.row(cells);
    }
  }
  t.close();
}

}  // namespace qvt
