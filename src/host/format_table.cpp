// The table of formats this host renders, the parsing of format texts, and
// the dispatch from a format to its renderer.
#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <string>

#include "host/format.hpp"
#include "host/format_detail.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using fmtdetail::Family;

struct Row {
  FormatInfo info;
  Family family;
  char variant;  // separator letter of the YYMMDD, MMDDYY and DDMMYY variants
};

constexpr FormatKind N = FormatKind::Numeric;
constexpr FormatKind D = FormatKind::Date;
constexpr FormatKind T = FormatKind::Time;
constexpr FormatKind DT = FormatKind::Datetime;

// name, kind, default width, min width, max width, max decimals; renderer.
// Rows are in ascending order of name so that lookup is a binary search.
constexpr std::array kRows{
    Row{{"BEST", N, 12, 1, 32, 0}, Family::Best, 0},
    Row{{"COMMA", N, 6, 1, 32, 31}, Family::Comma, 0},
    Row{{"DATE", D, 7, 5, 11, 0}, Family::Date, 0},
    Row{{"DATETIME", DT, 16, 7, 40, 9}, Family::Datetime, 0},
    Row{{"DDMMYY", D, 8, 2, 10, 0}, Family::Dmy, 0},
    Row{{"DDMMYYB", D, 8, 2, 10, 0}, Family::Dmy, 'B'},
    Row{{"DDMMYYC", D, 8, 2, 10, 0}, Family::Dmy, 'C'},
    Row{{"DDMMYYD", D, 8, 2, 10, 0}, Family::Dmy, 'D'},
    Row{{"DDMMYYN", D, 8, 2, 8, 0}, Family::Dmy, 'N'},
    Row{{"DDMMYYP", D, 8, 2, 10, 0}, Family::Dmy, 'P'},
    Row{{"DDMMYYS", D, 8, 2, 10, 0}, Family::Dmy, 'S'},
    Row{{"DTDATE", DT, 7, 5, 9, 0}, Family::Dtdate, 0},
    Row{{"DTMONYY", DT, 5, 5, 7, 0}, Family::Dtmonyy, 0},
    Row{{"DTWEEKV", DT, 11, 3, 200, 0}, Family::Dtweekv, 0},
    Row{{"DTWKDATX", DT, 29, 3, 37, 0}, Family::Dtwkdatx, 0},
    Row{{"DTYEAR", DT, 4, 2, 4, 0}, Family::Dtyear, 0},
    Row{{"DTYYQC", DT, 4, 4, 6, 0}, Family::Dtyyqc, 0},
    Row{{"E", N, 12, 6, 32, 31}, Family::E, 0},
    Row{{"E8601DA", D, 10, 10, 10, 0}, Family::E8601da, 0},
    Row{{"E8601DT", DT, 19, 16, 26, 6}, Family::E8601dt, 0},
    Row{{"E8601TM", T, 8, 8, 15, 6}, Family::E8601tm, 0},
    Row{{"F", N, 12, 1, 32, 31}, Family::Fixed, 0},
    Row{{"HHMM", T, 5, 2, 20, 9}, Family::Hhmm, 0},
    Row{{"HOUR", T, 2, 2, 20, 9}, Family::Hour, 0},
    Row{{"MMDDYY", D, 8, 2, 10, 0}, Family::Mdy, 0},
    Row{{"MMDDYYB", D, 8, 2, 10, 0}, Family::Mdy, 'B'},
    Row{{"MMDDYYC", D, 8, 2, 10, 0}, Family::Mdy, 'C'},
    Row{{"MMDDYYD", D, 8, 2, 10, 0}, Family::Mdy, 'D'},
    Row{{"MMDDYYN", D, 8, 2, 8, 0}, Family::Mdy, 'N'},
    Row{{"MMDDYYP", D, 8, 2, 10, 0}, Family::Mdy, 'P'},
    Row{{"MMDDYYS", D, 8, 2, 10, 0}, Family::Mdy, 'S'},
    Row{{"MMSS", T, 5, 2, 20, 9}, Family::Mmss, 0},
    Row{{"MONYY", D, 5, 5, 7, 0}, Family::Monyy, 0},
    Row{{"PERCENT", N, 6, 2, 32, 31}, Family::Percent, 0},
    Row{{"PVALUE", N, 6, 1, 32, 31}, Family::Pvalue, 0},
    Row{{"TIME", T, 8, 2, 20, 9}, Family::Time, 0},
    Row{{"TOD", T, 8, 2, 20, 9}, Family::Tod, 0},
    Row{{"WEEKDATE", D, 29, 3, 37, 0}, Family::Weekdate, 0},
    Row{{"WEEKDATX", D, 29, 3, 37, 0}, Family::Weekdatx, 0},
    Row{{"WEEKU", D, 11, 3, 200, 0}, Family::Weeku, 0},
    Row{{"WEEKV", D, 11, 3, 200, 0}, Family::Weekv, 0},
    Row{{"WEEKW", D, 11, 3, 200, 0}, Family::Weekw, 0},
    Row{{"YEAR", D, 4, 2, 4, 0}, Family::Year, 0},
    Row{{"YYMMDD", D, 8, 2, 10, 0}, Family::Ymd, 0},
    Row{{"YYMMDDB", D, 8, 2, 10, 0}, Family::Ymd, 'B'},
    Row{{"YYMMDDC", D, 8, 2, 10, 0}, Family::Ymd, 'C'},
    Row{{"YYMMDDD", D, 8, 2, 10, 0}, Family::Ymd, 'D'},
    Row{{"YYMMDDN", D, 8, 2, 8, 0}, Family::Ymd, 'N'},
    Row{{"YYMMDDP", D, 8, 2, 10, 0}, Family::Ymd, 'P'},
    Row{{"YYMMDDS", D, 8, 2, 10, 0}, Family::Ymd, 'S'},
    Row{{"YYQ", D, 4, 4, 6, 0}, Family::Yyq, 0},
    Row{{"YYQC", D, 4, 4, 6, 0}, Family::Yyqc, 0},
};

constexpr bool sortedByName() {
  for (std::size_t i = 1; i < kRows.size(); ++i)
    if (!(kRows[i - 1].info.name < kRows[i].info.name)) return false;
  return true;
}
static_assert(sortedByName(), "format rows must stay in ascending order of name");

const Row* findRow(std::string_view name) noexcept {
  const auto it = std::lower_bound(kRows.begin(), kRows.end(), name,
                                   [](const Row& r, std::string_view n) { return r.info.name < n; });
  return it != kRows.end() && it->info.name == name ? &*it : nullptr;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isNameChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

std::string_view trim(std::string_view t) {
  while (!t.empty() && (t.front() == ' ' || t.front() == '\t')) t.remove_prefix(1);
  while (!t.empty() && (t.back() == ' ' || t.back() == '\t')) t.remove_suffix(1);
  return t;
}

// Reads a run of digits as a number no larger than `limit`; -1 when it is
// larger (or longer than any valid value could be).
int readBounded(std::string_view digits, int limit) {
  long v = 0;
  for (char c : digits) {
    v = v * 10 + (c - '0');
    if (v > limit) return -1;
  }
  return static_cast<int>(v);
}

}  // namespace

int parseFormatSpec(std::string_view text, FormatSpec* out) {
  text = trim(text);
  if (text.empty()) return kFormatEmpty;
  std::size_t i = 0;
  if (text[0] == '$') ++i;
  const std::size_t nameStart = i;
  while (i < text.size() && isNameChar(text[i])) ++i;
  const std::size_t runEnd = i;
  // The width is the trailing run of digits of the name part.
  std::size_t nameEnd = runEnd;
  while (nameEnd > nameStart && isDigit(text[nameEnd - 1])) --nameEnd;
  const std::string_view name = text.substr(nameStart, nameEnd - nameStart);
  const std::string_view widthText = text.substr(nameEnd, runEnd - nameEnd);
  if (name.size() > 32 || (!name.empty() && isDigit(name[0]))) return kFormatSyntax;  // "8ABC." is no name

  std::string_view decText;
  bool point = false;
  if (i < text.size()) {
    if (text[i] != '.') return kFormatSyntax;
    point = true;
    ++i;
    const std::size_t ds = i;
    while (i < text.size() && isDigit(text[i])) ++i;
    decText = text.substr(ds, i - ds);
    if (i != text.size()) return kFormatSyntax;
  }
  // "8", ".2" and "$" alone are not formats; "8.2" is F8.2 and "$10." the
  // plain character format.
  if (name.empty() && (widthText.empty() || !point)) return kFormatSyntax;

  int width = 0;
  if (!widthText.empty()) {
    width = readBounded(widthText, kMaxFormatWidth);
    if (width < 1) return kFormatRange;
  }
  int decimals = -1;
  if (!decText.empty()) {
    decimals = readBounded(decText, kMaxFormatDecimals);
    if (decimals < 0) return kFormatRange;
  }

  std::string upper = text[0] == '$' ? "$" : "";
  for (char c : name) upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  if (upper.empty()) upper = "F";
  out->name = std::move(upper);
  out->width = width;
  out->decimals = decimals;
  return kFormatOk;
}

std::string formatSpecText(const FormatSpec& spec) {
  std::string t = spec.name;
  if (spec.width > 0) t += std::to_string(spec.width);
  t += '.';
  if (spec.decimals > 0) t += std::to_string(spec.decimals);
  return t;
}

const FormatInfo* findFormat(std::string_view name) noexcept {
  const Row* r = findRow(name);
  return r ? &r->info : nullptr;
}

int renderValue(double value, const FormatSpec& spec, std::string* out) {
  int rc = 0;
  const Row* row = findRow(spec.name);
  int width = spec.width;
  if (!row) {
    rc = 1;
    row = findRow("BEST");
  }
  if (width <= 0) width = row->info.defaultWidth;
  width = std::min(width, kMaxFormatWidth);
  const int decimals = std::min(spec.decimals, kMaxFormatDecimals);

  if (wzmis(value) || std::isnan(value)) {
    const char c = missCode(value);
    *out = fmtdetail::fitRight(std::string(1, c == 0 ? '.' : c), width);
    return rc;
  }
  switch (row->family) {
    case Family::Best: *out = fmtdetail::renderBest(value, width); break;
    case Family::Fixed: *out = fmtdetail::renderFixed(value, width, decimals); break;
    case Family::Comma: *out = fmtdetail::renderComma(value, width, decimals); break;
    case Family::Percent: *out = fmtdetail::renderPercent(value, width, decimals); break;
    case Family::Pvalue: *out = fmtdetail::renderPvalue(value, width, decimals); break;
    case Family::E: *out = fmtdetail::renderE(value, width, decimals); break;
    default: *out = fmtdetail::renderTemporal(value, row->family, row->variant, width, decimals); break;
  }
  return rc;
}

std::string renderFormat(double value, std::string_view name, int width, int decimals) {
  FormatSpec spec;
  for (char c : trim(name)) spec.name += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  spec.width = std::clamp(width, 0, kMaxFormatWidth);
  spec.decimals = decimals < 0 ? -1 : std::min(decimals, kMaxFormatDecimals);
  std::string out;
  renderValue(value, spec, &out);
  return out;
}

std::string renderFormat(double value, std::string_view formatText) {
  FormatSpec spec;
  if (parseFormatSpec(formatText, &spec) != kFormatOk) spec = FormatSpec{"BEST", 12, -1};
  std::string out;
  renderValue(value, spec, &out);
  return out;
}

}  // namespace qvt
