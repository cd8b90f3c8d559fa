// "FitStatistics" and "PerformanceStatistics": the 28 statistics of fit of
// outstat.stats, one a row.
#include <algorithm>

#include "report/qvto.hpp"
#include "report/tables.hpp"

namespace qvt {

void qvtosof(QVTCOM* com, int region) {
  if (!com->print.statistics) return;
  const SF_STATS& s = com->outstat.stats;
  const auto d = [](long v) { return static_cast<double>(v); };
  struct Stat {
    int label;
    double value;
  };
  const Stat rows[] = {
      {1200, d(s.dfe)},   {1201, d(s.nobs)}, {1202, d(s.n)},     {1203, d(s.nmissa)}, {1204, d(s.nmissp)},
      {1205, d(s.nparms)}, {1206, s.tss},    {1207, s.sst},      {1231, s.sse},       {1232, s.mse},
      {1233, s.rmse},     {1234, s.umse},    {1235, s.urmse},    {1273, s.mape},      {1263, s.mae},
      {1240, s.rsquare},  {1241, s.adj_Rsq}, {1242, s.a_adj_Rsq}, {1243, s.rw_Rsq},   {1250, s.aic},
      {1251, s.sbc},      {1252, s.apc},     {1261, s.maxerr},   {1260, s.minerr},    {1271, s.maxpe},
      {1270, s.minpe},    {1262, s.me},      {1272, s.mpe},
  };
  // soflabels: the labels once, and the longest of them as the column's width.
  std::string labels[std::size(rows)];
  int width = 0;
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    labels[i] = catText(com, rows[i].label);
    width = std::max(width, static_cast<int>(labels[i].size()));
  }
  const bool fit = region == 0;
  TableOut t(com, fit ? "FitStatistics" : "PerformanceStatistics", TableKind::Data, fit ? 5300 : 5302);
  t.col("Statistic", 5311, ColType::Text, width);
  t.col("Value", 5312, ColType::Double, 12);
  t.endCols();
  t.variable();
  const bool demand = com->current.modelcode == kModelCroston;
  t.value("FootMessage", catText(com, fit ? (demand ? 5350 : 5351) : (demand ? 5360 : 5361)));
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const TableCell row[] = {labels[i], rows[i].value};
    t.row(row);
  }
  t.close();
}

}  // namespace qvt
