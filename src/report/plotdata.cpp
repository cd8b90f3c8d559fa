#include "report/plotdata.hpp"

#include "report/qvtg.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

std::string prefix(QVTCOM* com) {
  if (com->templateprefix.len < 1) com->templateprefix.set("QVT.QVT");
  return com->templateprefix.str();
}

TableHead plotHead(QVTCOM* com, std::string_view name, std::string_view templ, int title) {
  TableHead head;
  head.name = std::string(name);
  head.templ = prefix(com) + "." + std::string(templ);
  head.title = catText(com, title);
  head.hidden = com->print.internal == 0;
  return head;
}

}  // namespace

PlotTable::PlotTable(QVTCOM* com, std::string_view name, std::string_view templ, int title)
    : TableOut(com, plotHead(com, name, templ, title)) {}

void PlotTable::confidenceCols(double alpha, int decimals) {
  if (!h_) return;
  char conf[3];
  qvtocl(alpha, conf);
  col(TableColumn{"Lower", catText(com_, 5414, {std::string(conf)}), ColType::Double, 11, decimals, {}, {}});
  col(TableColumn{"Upper", catText(com_, 5415, {std::string(conf)}), ColType::Double, 11, decimals, {}, {}});
}

void PlotTable::actualCol(int decimals) {
  if (!h_) return;
  const auto& cur = com_->current;
  const std::string label = cur.varlabel.empty() ? cur.var.str() : cur.varlabel.str();
  col(TableColumn{"Actual", label, ColType::Double, 11, decimals, {}, {}});
}

void PlotTable::axisValues(double alpha) {
  const QVTCOM& c = *com_;
  const bool id = hasId(c);
  const std::string idLabel = !c.id.label.empty() ? c.id.label.str() : c.id.name.str();
  value("ID", id ? c.id.name.view() : "Obs");
  value("IDLABEL", id ? idLabel : catText(com_, 5409));
  value("IDFORMAT", c.istmt.fmtstr.view());
  value("IDTYPE", id ? "TIME" : "LINEAR");
  value("Time", id ? "Time" : "Obs");
  value("IntegerTime", id ? "FALSE" : "TRUE");
  value("Variable", c.current.var.view());
  value("VariableLabel", c.current.varlabel.view());
  char conf[3];
  qvtocl(alpha, conf);
  value("Confidence", numText((1 - (wzmis(alpha) ? 0.05 : alpha)) * 100));
  value("ConfidenceLabel", catText(com_, 5430, {std::string(conf)}));
}

void PlotTable::graph(std::string_view name, int label, int title, std::vector<TableValue> values) {
  if (!h_) return;
  PlotGraph g;
  g.name = std::string(name);
  g.templ = prefix(com_) + ".Graphics." + g.name;
  g.label = catText(com_, label);
  g.title = catText(com_, title, {com_->current.var.str()});
  g.values = std::move(values);
  const int rc = com_->host->graphDraw(h_, g);
  // A host that keeps tables but draws no graphs still gets the table.
  if (rc != kHostUnsupported) check(rc);
}

}  // namespace qvt
