#include "report/tables.hpp"

#include <cmath>

#include "host/format.hpp"

namespace qvt {
namespace {

constexpr int kRcPrintFailed = 2000;

std::string trimmed(std::string s) {
  const auto b = s.find_first_not_of(' ');
  if (b == std::string::npos) return {};
  return s.substr(b, s.find_last_not_of(' ') - b + 1);
}

// The template key: the prefix, a point and the table's name. An empty
// prefix becomes "QVT.QVT" at the first table and stays.
std::string templateName(QVTCOM* com, std::string_view name) {
  if (com->templateprefix.len < 1) com->templateprefix.set("QVT.QVT");
  return com->templateprefix.str() + "." + std::string(name);
}

}  // namespace

std::string catText(const QVTCOM* com, int number, std::initializer_list<MsgArg> args) {
  return com->host->msgText(kMsgProc, number, std::span<const MsgArg>(args.begin(), args.size()));
}

std::string idFormat(const QVTCOM& com) {
  const IDSTMT& s = com.istmt;
  if (s.format.empty()) return com.id.format;
  std::string f = s.format.str();
  if (s.fmtw1 > 0) f += std::to_string(s.fmtw1);
  return f + ".";
}

bool hasId(const QVTCOM& com) noexcept { return com.istmt.specified != 0 && com.id.dsvarno != 0; }

std::string numText(double v) { return trimmed(renderFormat(v, "BEST", 12)); }

std::string timeText(const QVTCOM& com, double v) {
  const std::string f = idFormat(com);
  return hasId(com) && !f.empty() ? trimmed(renderFormat(v, f)) : numText(v);
}

TableOut::TableOut(QVTCOM* com, std::string_view name, TableKind kind, int title) : com_(com) {
  TableHead head;
  head.name = std::string(name);
  head.templ = templateName(com, name);
  head.kind = kind;
  head.title = catText(com, title);
  if (kind == TableKind::Factoid) head.contents = head.title;
  check(com->host->tableOpen(head, &h_));
}

TableOut::TableOut(QVTCOM* com, const TableHead& head) : com_(com) {
  check(com->host->tableOpen(head, &h_));
}

void TableOut::check(int rc) {
  if (rc >= 0) return;
  h_ = TableHandle{};
  if (rc == kHostUnsupported) return;
  hostMsgRaw(*com_->host, 0, rc);
  raiseRc(*com_, kRcPrintFailed);
  hostExit(*com_->host, com_->rc, 0);
}

void TableOut::col(std::string name, int label, ColType type, int width, int decimals, std::string format) {
  TableColumn c;
  c.name = std::move(name);
  c.label = catText(com_, label);
  c.type = type;
  c.width = width;
  c.decimals = decimals;
  c.format = std::move(format);
  col(std::move(c));
}

void TableOut::col(TableColumn c) {
  if (h_) check(com_->host->tableColumn(h_, c));
}

void TableOut::endCols() {
  if (h_) check(com_->host->tableColumnsEnd(h_));
}

void TableOut::value(std::string_view name, std::string_view text) {
  if (h_) check(com_->host->tableValue(h_, name, text));
}

void TableOut::variable() {
  value("Variable", com_->current.var.view());
  value("VariableLabel", com_->current.varlabel.view());
}

void TableOut::line(int label, TableCell v, std::string format) {
  if (h_)
    check(com_->host->tableLine(h_, FactoidLine{catText(com_, label), std::move(v), std::move(format)}));
}

void TableOut::row(std::span<const TableCell> cells) {
  if (h_) check(com_->host->tableRow(h_, cells));
}

void TableOut::close() {
  if (!h_) return;
  const TableHandle h = h_;
  h_ = TableHandle{};
  check(com_->host->tableClose(h));
}

}  // namespace qvt
