#include "report/plotdata.hpp"

#include "report/qvtg.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

constexpr int kRcPrintFailed = 2000;

std::string prefix(QVTCOM* com) {
  if (com->templateprefix.len < 1) com->templateprefix.set("QVT.QVT");
  return com->templateprefix.str();
}

}  // namespace

PlotTable::PlotTable(QVTCOM* com, std::string_view name, std::string_view templ, int title) : com_(com) {
  TableHead head;
  head.name = std::string(name);
  head.templ = prefix(com) + "." + std::string(templ);
  head.title = catText(com, title);
  head.hidden = com->print.internal == 0;
  check(com->host->tableOpen(head, &h_));
}

void PlotTable::check(int rc) {
  if (rc >= 0) return;
  h_ = TableHandle{};
  if (rc == kHostUnsupported) return;
  hostMsgRaw(*com_->host, 0, rc);
  raiseRc(*com_, kRcPrintFailed);
  hostExit(*com_->host, com_->rc, 0);
}

void PlotTable::col(std::string name, int label, ColType type, int width, int decimals, std::string format) {
  if (!h_) return;
  TableColumn c{std::move(name), catText(com_, label), type, width, decimals, std::move(format), {}};
  check(com_->host->tableColumn(h_, c));
}

void PlotTable::confidenceCols(double alpha, int decimals) {
  if (!h_) return;
  char conf[3];
  qvtocl(alpha, conf);
  check(com_->host->tableColumn(
      h_, TableColumn{"Lower", catText(com_, 5414, {std::string(conf)}), ColType::Double, 11, decimals, {}, {}}));
  if (!h_) return;
  check(com_->host->tableColumn(
      h_, TableColumn{"Upper", catText(com_, 5415, {std::string(conf)}), ColType::Double, 11, decimals, {}, {}}));
}

void PlotTable::actualCol(int decimals) {
  if (!h_) return;
  const auto& cur = com_->current;
  const std::string label = cur.varlabel.empty() ? cur.var.str() : cur.varlabel.str();
  check(com_->host->tableColumn(h_, TableColumn{"Actual", label, ColType::Double, 11, decimals, {}, {}}));
}

void PlotTable::endCols() {
  if (h_) check(com_->host->tableColumnsEnd(h_));
}

void PlotTable::value(std::string_view name, std::string_view text) {
  if (h_) check(com_->host->tableValue(h_, name, text));
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

void PlotTable::row(std::span<const TableCell> cells) {
  if (h_) check(com_->host->tableRow(h_, cells));
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

void PlotTable::close() {
  if (!h_) return;
  const TableHandle h = h_;
  h_ = TableHandle{};
  check(com_->host->tableClose(h));
}

}  // namespace qvt
