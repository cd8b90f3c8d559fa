#include "statements/stmt_json.hpp"

#include "run/missing.hpp"
#include "statements/stmt_options.hpp"

namespace qvt {
namespace {

constexpr const char* kItemKinds[] = {"",        "name",   "numbered", "positional", "numeric range",
                                      "character range", "prefix", "_NUMERIC_", "_CHARACTER_", "_ALL_"};

nlohmann::json numberJson(double v) {
  if (wzmis(v)) {
    const char c = missCode(v);
    return c == '.' || c == 0 ? std::string(".") : std::string(".") + c;
  }
  return v;
}

nlohmann::json fieldJson(RecordKind kind, int n, const STLIST& f) {
  nlohmann::json j;
  j["field"] = n;
  j["option"] = fieldOption(kind, n);
  if (f.type == 2) j["default"] = true;
  switch (f.mode) {
    case StMode::Number: {
      j["kind"] = "number";
      const double v = f.number();
      j["value"] = numberJson(v);
      const auto codes = fieldCodes(kind, n);
      if (!codes.empty() && !wzmis(v)) {
        const auto name = codeName(codes, static_cast<int>(v));
        if (!name.empty()) j["name"] = std::string(name);
      }
      break;
    }
    case StMode::Text:
      j["kind"] = "text";
      j["value"] = f.text();
      if (f.interval) {
        j["interval"] = {{"intcode", static_cast<int>(f.interval->intcode)},
                         {"intper", f.interval->intper},
                         {"shiftper", f.interval->shiftper},
                         {"units", std::string(1, f.interval->units)}};
      }
      break;
    case StMode::Format:
      j["kind"] = "format";
      j["value"] = f.text();
      break;
    case StMode::Character:
      j["kind"] = "character";
      j["value"] = std::string(1, f.character());
      break;
    case StMode::DataSet: {
      j["kind"] = "dataset";
      const DataSetName& d = f.dataset();
      nlohmann::json v = {{"text", d.text}, {"lib", d.lib}, {"member", d.member}, {"quoted", d.quoted},
                          {"default", d.byDefault}};
      if (!d.options.empty()) v["options"] = d.options;
      j["value"] = v;
      break;
    }
    case StMode::VarList: {
      j["kind"] = "varlist";
      const VarList& l = f.vars();
      nlohmann::json items = nlohmann::json::array();
      for (const auto& it : l.items) {
        nlohmann::json x = {{"code", static_cast<int>(it.code)},
                            {"kind", kItemKinds[static_cast<int>(it.code) % 10]},
                            {"first", it.first},
                            {"text", it.text}};
        if (!it.last.empty()) x["last"] = it.last;
        if (it.descending) x["descending"] = true;
        items.push_back(std::move(x));
      }
      j["value"] = {{"count", l.items.size()}, {"items", items}};
      if (l.notsorted) j["value"]["notsorted"] = true;
      break;
    }
    case StMode::None:
      j["kind"] = "none";
      break;
  }
  return j;
}

}  // namespace

nlohmann::json stmtJson(const PROCSTR& p) {
  nlohmann::json records = nlohmann::json::array();
  for (std::size_t r = 0; r < p.head.size(); ++r) {
    const STMT& s = p.head[r];
    const RecordKind kind = r == 0 ? RecordKind::Procedure : RecordKind::Forecast;
    nlohmann::json bits = nlohmann::json::array();
    for (int b = 0; b < kOptBits; ++b)
      if (s.bit(b)) bits.push_back({{"bit", b}, {"option", bitOption(kind, b)}});
    nlohmann::json fields = nlohmann::json::array();
    for (int n = 0; n < static_cast<int>(s.fld.size()); ++n)
      if (s.fld[static_cast<std::size_t>(n)].given()) fields.push_back(fieldJson(kind, n, s.fld[static_cast<std::size_t>(n)]));
    records.push_back({{"statement", s.name}, {"nfld", s.nfld}, {"bits", bits}, {"fields", fields}});
  }
  return {{"error", p.error}, {"records", records}};
}

std::string stmtJsonText(const PROCSTR& p, int indent) {
  // A quoted name may hold bytes that aren't UTF-8; they are replaced rather than thrown on.
  return stmtJson(p).dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace qvt
