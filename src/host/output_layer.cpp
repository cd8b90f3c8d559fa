// The table store of the output layer: call order and bookkeeping. A call
// on a null or closed table answers kHostBadHandle, a column after the
// columns were ended or a row before kHostWrongState, a row whose cell count
// differs from the columns kHostBadArgument; such a table is still rendered
// as far as it went, since a call that the engine should never make must
// not lose the rest of the listing.
#include "host/output_layer.hpp"

namespace qvt {

int OutputLayer::groupOpen(std::string_view name, std::string_view var, std::string_view label) {
  if (name.empty()) return kHostBadArgument;
  groups_.push_back({std::string(name), std::string(var), std::string(label)});
  return kHostOk;
}

int OutputLayer::groupClose() {
  if (!groups_.empty()) groups_.pop_back();
  return kHostOk;
}

Table* OutputLayer::find(TableHandle t) {
  auto it = open_.find(t.id);
  return it == open_.end() ? nullptr : &it->second;
}

int OutputLayer::tableOpen(const TableHead& head, TableHandle* out) {
  if (out == nullptr) return kHostBadArgument;
  *out = TableHandle{};
  if (head.name.empty()) return kHostBadArgument;
  Table t;
  t.head = head;
  t.groups = groups_;
  // A factoid table has no columns to define.
  t.defined = head.kind == TableKind::Factoid;
  const int id = next_++;
  open_.emplace(id, std::move(t));
  *out = TableHandle{id};
  return kHostOk;
}

int OutputLayer::tableColumn(TableHandle h, const TableColumn& col) {
  Table* t = find(h);
  if (t == nullptr) return kHostBadHandle;
  if (t->defined) return kHostWrongState;
  t->cols.push_back(col);
  return kHostOk;
}

int OutputLayer::tableColumnsEnd(TableHandle h) {
  Table* t = find(h);
  if (t == nullptr) return kHostBadHandle;
  t->defined = true;
  return kHostOk;
}

int OutputLayer::tableValue(TableHandle h, std::string_view name, std::string_view text) {
  Table* t = find(h);
  if (t == nullptr) return kHostBadHandle;
  for (TableValue& v : t->values) {
    if (v.name == name) {
      v.text = std::string(text);  // a value handed over twice keeps the later text
      return kHostOk;
    }
  }
  t->values.push_back({std::string(name), std::string(text)});
  return kHostOk;
}

int OutputLayer::tableLine(TableHandle h, const FactoidLine& line) {
  Table* t = find(h);
  if (t == nullptr) return kHostBadHandle;
  if (t->head.kind != TableKind::Factoid) return kHostWrongState;
  t->lines.push_back(line);
  return kHostOk;
}

int OutputLayer::tableRow(TableHandle h, std::span<const TableCell> cells) {
  Table* t = find(h);
  if (t == nullptr) return kHostBadHandle;
  if (!t->defined || t->head.kind != TableKind::Data) return kHostWrongState;
  if (cells.size() != t->cols.size()) return kHostBadArgument;
  t->rows.emplace_back(cells.begin(), cells.end());
  return kHostOk;
}

int OutputLayer::tableClose(TableHandle h) {
  auto it = open_.find(h.id);
  if (it == open_.end()) return kHostBadHandle;
  Table t = std::move(it->second);
  open_.erase(it);
  if (sink_) sink_(t);
  return kHostOk;
}

int OutputLayer::graphDraw(TableHandle h, const PlotGraph& graph) {
  Table* t = find(h);
  if (t == nullptr) return kHostBadHandle;
  if (!t->defined || t->head.kind != TableKind::Data) return kHostWrongState;
  if (graph.name.empty()) return kHostBadArgument;
  t->graphs.push_back(graph);
  t->graphs.back().groups = groups_;
  return kHostOk;
}

TableHandle OutputLayer::tableFind(std::string_view name) const {
  // The latest of that name: a group that ended early may have left an
  // older one open, which the step's end drops.
  for (auto it = open_.rbegin(); it != open_.rend(); ++it)
    if (it->second.head.name == name) return TableHandle{it->first};
  return TableHandle{};
}

}  // namespace qvt
