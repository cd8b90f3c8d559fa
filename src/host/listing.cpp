// Text and HTML renderings of a printed table.
//
// Listing layout (chosen here; the engine leaves the look to the host):
//   the title; one line "Name: text" for each named value; a blank line;
//   for a data table the column labels, a rule of dashes under each, and the
//   rows; for a factoid table one line a fact, the labels padded to the
//   longest; a blank line. A column is as wide as the widest of its width,
//   its label and its cells, and two blanks separate columns. Numbers are
//   right-aligned, texts left-aligned.
#include <algorithm>
#include <string>

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
  for (const TableValue& v : t.values) out += v.name + ": " + v.text + "\n";
  out += "\n";
  if (t.head.kind == TableKind::Factoid) {
    std::size_t lw = 0;
    for (const FactoidLine& l : t.lines) lw = std::max(lw, l.label.size());
    for (const FactoidLine& l : t.lines) out += pad(l.label, lw, false) + "  " + lineValue(l) + "\n";
    return out + "\n";
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
  return out + "\n";
}

std::string renderHtml(const Table& t) {
  std::string out = "<section class=\"table\" data-name=\"" + htmlEscape(t.head.name) + "\">\n<h2>" +
                    htmlEscape(t.head.title) + "</h2>\n";
  if (!t.values.empty()) {
    out += "<dl>";
    for (const TableValue& v : t.values)
      out += "<dt>" + htmlEscape(v.name) + "</dt><dd>" + htmlEscape(v.text) + "</dd>";
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
  return out + "</table>\n</section>\n";
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
