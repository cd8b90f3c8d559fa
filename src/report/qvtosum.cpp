// "ForecastSummary" and "ForecastSummation": open over a whole BY group, one
// row a series. They stay open in the output layer between the calls, which
// finds them again by name: QVTCOM keeps no handles of the printing layer.
#include <vector>

#include "report/qvto.hpp"
#include "report/tables.hpp"

namespace qvt {
namespace {

constexpr std::string_view kSummary = "ForecastSummary";
constexpr std::string_view kSummation = "ForecastSummation";

void sumColumns(TableOut& t, int first) {
  t.col("Predict", first, ColType::Double, 12);
  t.col("Std", first + 1, ColType::Double, 12);
  t.col("Lower", first + 2, ColType::Double, 12);
  t.col("Upper", first + 3, ColType::Double, 12);
}

}  // namespace

void qvtosum(QVTCOM* com, int flag) {
  if (!com->print.summary || com->istmt.lead < 1) return;
  const int lead = com->istmt.lead;
  const auto& s = com->outsum;
  if (flag == 0) {
    TableOut a(com, kSummary, TableKind::Data, 5800);
    a.col("Variable", 5810, ColType::Text, 8);
    // The horizon columns carry the time of their period: the forecast
    // range starts right behind the fit range, at out.id[out.nobs - BACK=].
    const long base = com->out.nobs - com->istmt.back;
    const bool id = hasId(*com) && com->out.id != nullptr && base + lead <= com->out.tobs;
    for (int i = 0; i < lead; ++i) {
      const std::string label = id ? timeText(*com, com->out.id[base + i])
                                   : catText(com, 5813, {static_cast<long long>(i + 1)});
      a.col(TableColumn{"Horizon" + std::to_string(i + 1), label, ColType::Double, 8, kColFree, {},
                        "Horizon"});
    }
    sumColumns(a, 5814);
    a.endCols();
    TableOut b(com, kSummation, TableKind::Data, 5850);
    b.col("Variable", 5860, ColType::Text, 8);
    sumColumns(b, 5861);
    b.endCols();
    return;
  }
  TableOut a(com, com->host->tableFind(kSummary));
  TableOut b(com, com->host->tableFind(kSummation));
  if (flag == 1) {
    std::vector<TableCell> cells{com->current.var.str()};
    for (int i = 0; i < lead; ++i) cells.emplace_back(s.forlead != nullptr ? s.forlead[i] : kMissing);
    for (double v : {s.pred, s.std, s.lower, s.upper}) cells.emplace_back(v);
    a.row(cells);
    const TableCell sum[] = {com->current.var.str(), s.pred, s.std, s.lower, s.upper};
    b.row(sum);
    return;
  }
  const std::string startsum = numText(com->istmt.startsum);
  a.value("First", "Horizon1");
  a.value("Last", "Horizon" + std::to_string(lead));
  a.value("StartSum", startsum);
  a.value("Lead", numText(lead));
  a.close();
  b.value("StartSum", startsum);
  b.value("Lead", numText(lead));
  b.close();
}

}  // namespace qvt
