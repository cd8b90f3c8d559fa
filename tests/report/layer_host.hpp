// The host of the report tests: it keeps every closed table, with its
// graphs, as data, so that the printed tables and the plots are read back
// by name instead of from rendered text.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/output_layer.hpp"

namespace qvt::testing {

class LayerHost : public Host {
 public:
  std::vector<Table> tables;
  OutputLayer layer{[this](const Table& t) { tables.push_back(t); }};
  void msgLog(int, int, std::span<const MsgArg>, const SourcePos*) override {}
  int groupOpen(std::string_view n, std::string_view v, std::string_view l) override {
    return layer.groupOpen(n, v, l);
  }
  int groupClose() override { return layer.groupClose(); }
  int tableOpen(const TableHead& h, TableHandle* o) override { return layer.tableOpen(h, o); }
  int tableColumn(TableHandle t, const TableColumn& c) override { return layer.tableColumn(t, c); }
  int tableColumnsEnd(TableHandle t) override { return layer.tableColumnsEnd(t); }
  int tableValue(TableHandle t, std::string_view n, std::string_view x) override {
    return layer.tableValue(t, n, x);
  }
  int tableLine(TableHandle t, const FactoidLine& l) override { return layer.tableLine(t, l); }
  int tableRow(TableHandle t, std::span<const TableCell> c) override { return layer.tableRow(t, c); }
  int tableClose(TableHandle t) override { return layer.tableClose(t); }
  TableHandle tableFind(std::string_view n) const override { return layer.tableFind(n); }
  int graphDraw(TableHandle t, const PlotGraph& g) override { return layer.graphDraw(t, g); }

  // The names of the tables kept, and of their graphs, in order.
  std::vector<std::string> names(bool graphs = false) const {
    std::vector<std::string> v;
    for (const Table& t : tables) {
      if (!graphs) v.push_back(t.head.name);
      for (std::size_t g = 0; graphs && g < t.graphs.size(); ++g) v.push_back(t.graphs[g].name);
    }
    return v;
  }
};

inline std::vector<std::string> cols(const Table& t) {
  std::vector<std::string> v;
  for (const TableColumn& c : t.cols) v.push_back(c.name);
  return v;
}
inline std::string value(const Table& t, std::string_view name) {
  for (const TableValue& v : t.values)
    if (v.name == name) return v.text;
  return "<none>";
}
inline double num(const TableCell& c) { return std::get<double>(c); }

}  // namespace qvt::testing
