// The tables of the step and of each series: "DataSet", the output group of
// a series with its "Variable" table, and "DescStats".
#include "report/qvto.hpp"
#include "report/tables.hpp"

namespace qvt {

void qvtoint(QVTCOM* com) {
  // Without a printed table and without a plot nothing needs the layer.
  if (com->print.none && com->plot.none) return;
  // The hosts of this system draw a graph wherever the user gave it a place
  // (--html, --plots) and quietly nowhere otherwise, so the layer is not
  // asked whether graphics are on.
  TableOut t(com, "DataSet", TableKind::Factoid, 5010);
  const DATASETS& in = com->ds.data;
  t.line(5011, in.display.str());
  t.line(5012, in.label.str());
  const IDSTMT& is = com->istmt;
  if (is.specified) {
    if (!com->id.name.empty()) t.line(5013, com->id.name.str());
    if (!is.interval.empty()) t.line(5014, is.interval.str());
    if (!wzmis(is.start)) t.line(5015, timeText(*com, is.start));
    if (!wzmis(is.end)) t.line(5016, timeText(*com, is.end));
  }
  // The cycle length known before any BY group: SEASONALITY=, else that of
  // the interval as the statements sized it; at least 1.
  const int ns = is.seasonality > 0 ? is.seasonality : is.nseasons;
  t.line(5017, static_cast<double>(ns > 1 ? ns : 1), "F8.");
  t.line(5018, static_cast<double>(is.lead), "F8.");
  if (is.back > 0) t.line(5019, static_cast<double>(is.back), "F8.");
  t.close();
}

void qvtogrp(QVTCOM* com, const VAR* var) {
  if ((com->print.none || com->print.overallonly) && com->plot.none) return;
  Host& h = *com->host;
  qvtogre(com, nullptr);  // a nested group never outlives its series
  if (com->grp) h.groupClose();
  com->grp = false;
  if (var == nullptr) return;
  com->grp = h.groupOpen("Variable", "_NAME_", catText(com, 5001, {var->name.str()})) >= 0;
  if (com->plot.none && com->print.summaryonly) return;
  TableOut t(com, "Variable", TableKind::Factoid, 5020);
  t.line(5021, var->name.str());
  t.line(5022, var->label.str());
  if (hasId(*com)) {
    if (!wzmis(var->first)) t.line(5023, timeText(*com, var->first));
    if (!wzmis(var->last)) t.line(5024, timeText(*com, var->last));
  }
  const double nobs = static_cast<double>(com->in.nobs);
  t.line(5025, nobs, "F12.");
  t.value("Nobs", numText(nobs));
  t.close();
}

void qvtogre(QVTCOM* com, const VAR* var) {
  if ((com->print.none || com->print.overallonly) && com->plot.none) return;
  if (com->grpe) com->host->groupClose();
  com->grpe = false;
  const auto& g = com->plot;
  if (var == nullptr || !(g.errors || g.acf || g.pacf || g.iacf || g.wn)) return;
  com->grpe = com->host->groupOpen("PredictionErrors", "_ERRORS_", catText(com, 5002, {var->name.str()})) >= 0;
}

void qvtovar(QVTCOM* com) {
  if (!com->print.descstats) return;
  const SUMMSTATS& s = com->outsum.stats;
  TableOut t(com, "DescStats", TableKind::Factoid, 5100);
  t.line(5110, com->current.var.str());
  t.line(5111, static_cast<double>(s.nobs), "F12.");
  t.line(5112, static_cast<double>(s.nmiss), "F12.");
  t.line(5120, s.min, "BEST8.");
  t.line(5121, s.max, "BEST8.");
  t.line(5122, s.mean, "BEST8.");
  t.line(5123, s.std, "BEST8.");
  t.close();
}

}  // namespace qvt
