// The output layer of a host: keeps the open tables and groups that the
// engine builds through Host::tableOpen and its companions, checks the order
// of the calls, and hands each table, once closed, to a sink that renders or
// keeps it. ProcessHost and the test hosts forward their table members here.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "host/host.hpp"

namespace qvt {

class OutputLayer {
 public:
  using Sink = std::function<void(const Table&)>;
  explicit OutputLayer(Sink sink) : sink_(std::move(sink)) {}

  int groupOpen(std::string_view name, std::string_view var, std::string_view label);
  int groupClose();
  int tableOpen(const TableHead& head, TableHandle* out);
  int tableColumn(TableHandle t, const TableColumn& col);
  int tableColumnsEnd(TableHandle t);
  int tableValue(TableHandle t, std::string_view name, std::string_view text);
  int tableLine(TableHandle t, const FactoidLine& line);
  int tableRow(TableHandle t, std::span<const TableCell> cells);
  int tableClose(TableHandle t);
  TableHandle tableFind(std::string_view name) const;
  int graphDraw(TableHandle t, const PlotGraph& graph);
  // Tables still open (a step that ended early); they are dropped unrendered.
  void clear() { open_.clear(); groups_.clear(); }
  // How many groups are open.
  std::size_t depth() const { return groups_.size(); }

 private:
  Table* find(TableHandle t);
  Sink sink_;
  std::map<int, Table> open_;
  int next_ = 1;
  std::vector<OutputGroup> groups_;  // the open groups, outermost first
};

// Renders a table as aligned text: the title, the named values as heading
// lines, then the column labels and the rows (or the factoid's lines).
std::string renderListing(const Table& t);
// Renders a table as an HTML fragment: a heading, the named values and one
// <table> element; every text is escaped.
std::string renderHtml(const Table& t);
// Escapes the characters that HTML and SVG give a meaning (& < > ") in text
// and attribute values.
std::string htmlEscape(std::string_view s);
// The text of one cell as the column's format renders it, without padding.
std::string renderCell(const TableCell& cell, const TableColumn& col);

// Renders one graph of a data table as a standalone SVG document; empty
// when the plot's name has no renderer.
std::string renderGraphSvg(const Table& data, const PlotGraph& graph);

}  // namespace qvt
