// Text and HTML renderings of a printed table.
//
// Listing layout (chosen here; the engine leaves the look to the host):
//   the title; a line "Label: text" for each named value a reader needs (see
//   kCaptions); a blank line; for a data table the column labels, a rule of
//   dashes under each, and the rows; for a factoid table one line a fact,
//   the labels padded to the longest; the footnote, if any; a blank line.
//   A column is as wide as the widest of its width, its label and its cells,
//   and two blanks separate columns. Numbers are right-aligned, texts
//   left-aligned.
//
// Most named values are there for the plot templates (column names of the
// first and last horizon, row counts, the series' name that the group
// heading already shows); the printed table leaves them out.
#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/format.hpp"
#include "host/output_layer.hpp"

namespace qvt {
namespace {

std::string trimmed(const std::string& s) {
  const auto b = s.find_first_not_of(' ');
  if (b == std::string::npos) return {};
  const auto e = s.find_last_not_of(' ');
  return s.substr(b, e - b + 1);
}

std::string pad(const std::string& s, std::size_t w, bool right) {
  if (s.size() >= w) return s;
  const std::string fill(w - s.size(), ' ');
  return right ? fill + s : s + fill;
}

std::string lineValue(const FactoidLine& l) {
  if (const auto* s = std::get_if<std::string>(&l.value)) return *s;
  const double v = std::get<double>(l.value);
  return trimmed(l.format.empty() ? renderFormat(v, "BEST", 12) : renderFormat(v, l.format));
}

// The named values a reader of a printed table needs, with their labels.
constexpr std::pair<std::string_view, std::string_view> kCaptions[] = {
    {"Model", "Model"},
    {"Transform", "Transformation"},
    {"SelectLabel", "Selection criterion"},
    {"Base", "Base"},
};

std::string_view valueOf(const Table& t, std::string_view name) {
  for (const TableValue& v : t.values)
    if (v.name == name) return v.text;
  return {};
}

// The caption lines (label, text) of a table: the named values above, and
// the variable's label where it says more than its name.
std::vector<std::pair<std::string_view, std::string_view>> captions(const Table& t) {
  std::vector<std::pair<std::string_view, std::string_view>> out;
  const std::string_view label = valueOf(t, "VariableLabel");
  if (!label.empty() && label != valueOf(t, "Variable")) out.emplace_back("Label", label);
  for (const auto& [name, shown] : kCaptions)
    if (const std::string_view text = valueOf(t, name); !text.empty()) out.emplace_back(shown, text);
  // The summary sums the leads from STARTSUM= on; said only when that isn't the first.
  if (const std::string_view start = valueOf(t, "StartSum"); !start.empty() && start != "1")
    out.emplace_back("Sum from horizon", start);
  return out;
}

}  // namespace

std::string renderCell(const TableCell& cell, const TableColumn& col) {
  if (const auto* s = std::get_if<std::string>(&cell)) return *s;
  const double v = std::get<double>(cell);
  // A free column shows BEST in its own width; below 7 places BEST would
  // print stars for ordinary values, so such a column takes BEST12 and the
  // listing widens it.
  const int w = col.width >= 7 ? col.width : 12;
  if (!col.format.empty()) return trimmed(renderFormat(v, col.format));
  if (col.type == ColType::Long) return trimmed(renderFormat(v, "F", 20, 0));
  if (col.decimals >= 0) return trimmed(renderFormat(v, "F", 32, col.decimals));
  return trimmed(renderFormat(v, "BEST", w));
}

std::string renderListing(const Table& t) {
  std::string out = t.head.title + "\n";
  for (const auto& [label, text] : captions(t)) out += std::string(label) + ": " + std::string(text) + "\n";
  out += "\n";
  const std::string_view foot = valueOf(t, "FootMessage");
  const std::string footLine = foot.empty() ? std::string() : std::string(foot) + "\n";
  if (t.head.kind == TableKind::Factoid) {
    std::size_t lw = 0;
    for (const FactoidLine& l : t.lines) lw = std::max(lw, l.label.size());
    for (const FactoidLine& l : t.lines) out += pad(l.label, lw, false) + "  " + lineValue(l) + "\n";
    return out + footLine + "\n";
  }
  const std::size_t nc = t.cols.size();
  std::vector<std::vector<std::string>> cells(t.rows.size(), std::vector<std::string>(nc));
  std::vector<std::size_t> w(nc);
  for (std::size_t c = 0; c < nc; ++c) {
    w[c] = std::max(static_cast<std::size_t>(std::max(t.cols[c].width, 0)), t.cols[c].label.size());
    for (std::size_t r = 0; r < t.rows.size(); ++r) {
      cells[r][c] = renderCell(t.rows[r][c], t.cols[c]);
      w[c] = std::max(w[c], cells[r][c].size());
    }
  }
  const auto line = [&](auto&& text) {
    std::string s;
    for (std::size_t c = 0; c < nc; ++c)
      s += (c > 0 ? "  " : "") + pad(text(c), w[c], t.cols[c].type != ColType::Text);
    while (!s.empty() && s.back() == ' ') s.pop_back();
    return s + "\n";
  };
  out += line([&](std::size_t c) { return t.cols[c].label; });
  out += line([&](std::size_t c) { return std::string(w[c], '-'); });
  for (std::size_t r = 0; r < t.rows.size(); ++r) out += line([&](std::size_t c) { return cells[r][c]; });
  return out + footLine + "\n";
}

std::string renderHtml(const Table& t) {
  std::string out = "<section class=\"table\" data-name=\"" + htmlEscape(t.head.name) + "\">\n<h2>" +
                    htmlEscape(t.head.title) + "</h2>\n";
  if (const auto lines = captions(t); !lines.empty()) {
    out += "<dl>";
    for (const auto& [label, text] : lines) out += "<dt>" + htmlEscape(label) + "</dt><dd>" + htmlEscape(text) + "</dd>";
    out += "</dl>\n";
  }
  out += "<table>\n";
  if (t.head.kind == TableKind::Factoid) {
    for (const FactoidLine& l : t.lines)
      out += "<tr><th>" + htmlEscape(l.label) + "</th><td>" + htmlEscape(lineValue(l)) + "</td></tr>\n";
  } else {
    out += "<tr>";
    for (const TableColumn& c : t.cols)
      out += "<th data-name=\"" + htmlEscape(c.name) + "\">" + htmlEscape(c.label) + "</th>";
    out += "</tr>\n";
    for (const auto& row : t.rows) {
      out += "<tr>";
      for (std::size_t c = 0; c < t.cols.size(); ++c)
        out += "<td>" + htmlEscape(renderCell(row[c], t.cols[c])) + "</td>";
      out += "</tr>\n";
    }
  }
  out += "</table>\n";
  if (const std::string_view foot = valueOf(t, "FootMessage"); !foot.empty())
    out += "<p class=\"foot\">" + htmlEscape(foot) + "</p>\n";
  return out + "</section>\n";
}

std::string htmlEscape(std::string_view s) {
  std::string out;
  out.reserve(s.size());
  for (char c : s) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out += c;
    }
  }
  return out;
}

}  // namespace qvt
