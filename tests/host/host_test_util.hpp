// Helpers of the host tests: a host on a temporary folder with a JSON-lines
// log, data sets as columns in memory, and the loader of the tables of
// hand-worked values kept beside the tests.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdlib.h>
#include <string>
#include <vector>

#include "../common/shared.hpp"
#include "host/format.hpp"
#include "host/hostdate.hpp"
#include "host/process_host.hpp"
#include "run/missing.hpp"

namespace qvt::testing {

inline std::uint64_t bits(double x) { return std::bit_cast<std::uint64_t>(x); }

// Every line of a JSON-lines log, parsed.
inline std::vector<nlohmann::json> jsonLines(const std::string& log) {
  std::vector<nlohmann::json> r;
  std::istringstream in(log);
  for (std::string line; std::getline(in, line);)
    if (!line.empty()) r.push_back(nlohmann::json::parse(line));
  return r;
}

// The message numbers of group 900 in a JSON-lines log, in order.
inline std::vector<int> hostNumbers(const std::string& log) {
  std::vector<int> r;
  for (const auto& j : jsonLines(log))
    if (j.at("group") == 900) r.push_back(j.at("number").get<int>());
  return r;
}

inline HostConfig jsonlConfig(std::ostream& log, std::vector<std::string> libs = {}) {
  HostConfig cfg;
  cfg.libs = std::move(libs);
  cfg.logFormat = LogFormat::Jsonl;
  cfg.logStream = &log;
  return cfg;
}

inline VarInfo numVar(const std::string& name, const std::string& format = "") {
  return VarInfo{name, "", VarType::Numeric, 8, format};
}

// A column of a data set in memory.
struct Column {
  VarInfo info;
  std::vector<double> num;
  std::vector<std::string> text{};
};
using Table = std::vector<Column>;

// A host whose library "lib" is the temporary folder, or a SQLite database
// in it (then "csv" is the folder); `tweak` sets whatever else the test needs.
struct HostFixture {
  TempDir dir;
  std::ostringstream log;
  std::unique_ptr<ProcessHost> host;
  std::string db;
  explicit HostFixture(bool sqlite = false, const std::function<void(HostConfig&)>& tweak = {})
      : db(dir.file("lib.db")) {
    HostConfig cfg = jsonlConfig(log, {sqlite ? "lib=sqlite:" + db : "lib=" + dir.path(), "csv=" + dir.path()});
    if (tweak) tweak(cfg);
    host = std::make_unique<ProcessHost>(cfg);
    EXPECT_EQ(host->init(), 0) << log.str();
  }
  std::vector<int> numbers() const { return hostNumbers(log.str()); }
  // Writes a data set in a step of its own that ends well.
  void commit(const std::string& name, const Table& t, const std::string& label = "");
};

// A variable as "name N8 FORMAT" or "name C3 ", with ": label" when it has one.
inline std::string describe(const VarInfo& v) {
  return v.name + (v.type == VarType::Numeric ? " N" : " C") + std::to_string(v.length) + " " + v.format +
         (v.label.empty() ? "" : ": " + v.label);
}

inline void writeTable(ProcessHost& h, const std::string& name, const Table& t, const std::string& label = "") {
  ASSERT_FALSE(t.empty()) << name;  // a failed read before: no columns to write
  DsHandle out;
  ASSERT_EQ(h.dsOpen(name, DsMode::Output, &out), 0);
  std::vector<double> num(t.size());
  std::vector<std::string> text(t.size());
  for (std::size_t c = 0; c < t.size(); ++c) {
    const bool n = t[c].info.type == VarType::Numeric;
    ASSERT_EQ(n ? h.varPutD(out, t[c].info, &num[c]) : h.varPutT(out, t[c].info, &text[c]), 0);
  }
  ASSERT_EQ(h.varPutE(out), 0);
  ASSERT_EQ(h.dsSetLabel(out, label), 0);
  const std::size_t rows = t[0].num.empty() ? t[0].text.size() : t[0].num.size();
  for (std::size_t r = 0; r < rows; ++r) {
    for (std::size_t c = 0; c < t.size(); ++c) {
      if (t[c].info.type == VarType::Numeric) num[c] = t[c].num[r];
      else text[c] = t[c].text[r];
    }
    ASSERT_EQ(h.rowPut(out), 0);
    if (h.dsAdd(out) != 0) return;  // the test hook that fails a row
  }
  ASSERT_EQ(h.dsClose(out), 0);
}

inline void HostFixture::commit(const std::string& name, const Table& t, const std::string& label) {
  writeTable(*host, name, t, label);
  host->stepEnd(0);
}

// Every variable and record of a data set, with the data set's facts.
inline Table readTable(ProcessHost& h, const std::string& name, DsFacts* facts = nullptr) {
  Table t;
  DsHandle in;
  EXPECT_EQ(h.dsOpen(name, DsMode::Input, &in), 0);
  if (!in) return t;
  for (const VarInfo& v : h.dsVars(in)) t.push_back({v, {}});
  std::vector<double> num(t.size());
  std::vector<std::string> text(t.size());
  for (std::size_t c = 0; c < t.size(); ++c) {
    const int varno = static_cast<int>(c + 1);
    const bool n = t[c].info.type == VarType::Numeric;
    EXPECT_EQ(n ? hostVarGetD(h, in, varno, &num[c]) : hostVarGetT(h, in, varno, &text[c]), 0);
  }
  while (h.byNext(in) == 1) {
    while (h.byGet(in) == 1) {
      EXPECT_EQ(h.rowGet(in), 0);
      for (std::size_t c = 0; c < t.size(); ++c) {
        if (t[c].info.type == VarType::Numeric) t[c].num.push_back(num[c]);
        else t[c].text.push_back(text[c]);
      }
    }
  }
  if (facts) h.dsInfo(in, facts);
  h.dsClose(in);
  return t;
}

// A value of every awkward kind in each column, and a character variable
// whose name only quoting keeps whole: a quote, a blank, a keyword, a statement.
inline Table awkwardTable() {
  const double inf = std::numeric_limits<double>::infinity();
  return Table{
      {{"plain", "A plain number", VarType::Numeric, 8, ""},
       {0.1, 4.9406564584124654e-324, 2.2250738585072009e-308, 0.30000000000000004, 123456789012345.67,
        1.7976931348623157e308, -inf, kMissing, skMissVal('A'), skMissVal('_'), skMissVal('Z'), 3.0}},
      {numVar("date", "DATE9."),
       {23466.0, -138061.0, 6589335.0, 0.0, 23466.5, kMissing, skMissVal('B'), -1.0, 14669.0, 1.0, 2.0, inf}},
      {numVar("stamp", "DATETIME19."),
       {2027511000.0, 2027511000.125, -1.0, 0.1, kMissing, skMissVal('C'), 1e-9, 86400.0 * 6589335.0, 3.0,
        4.0, 5.0, 1e300}},
      {numVar("clock", "TIME8."),
       {48600.0, 0.0, 360000.5, 86399.999999999, kMissing, skMissVal('D'), -5.0, 1e-300, 7.0, 8.0, 9.0,
        10.0}},
      {{"say \"what\"; DROP TABLE x;--", "Some text", VarType::Character, 20, ""},
       {},
       {"plain", "with,comma", "with \"quotes\" and 'apostrophes'", "two\nlines", "crlf\r\nend",
        "caf\xC3\xA9 \xE2\x82\xAC", "", ".", "007", "  lead", "12", std::string("nul\0byte", 8)}}};
}

// Same variables, and the same values to the bit.
inline void expectSame(const Table& got, const Table& want) {
  ASSERT_EQ(got.size(), want.size());
  for (std::size_t c = 0; c < want.size(); ++c) {
    const std::string& name = want[c].info.name;
    EXPECT_EQ(describe(got[c].info), describe(want[c].info));
    EXPECT_EQ(got[c].text, want[c].text) << name;
    ASSERT_EQ(got[c].num.size(), want[c].num.size()) << name;
    for (std::size_t r = 0; r < want[c].num.size(); ++r)
      EXPECT_EQ(bits(got[c].num[r]), bits(want[c].num[r])) << name << " record " << r + 1;
  }
}

// A table of hand-worked cases beside the tests, fields split at '|'; the
// place of each row ("name:line") is its last field.
inline std::vector<std::vector<std::string>> loadCases(const std::string& name) {
  std::vector<std::vector<std::string>> rows;
  for (auto& r : readRows("host/" + name, '|')) {
    r.f.push_back(name + ":" + std::to_string(r.line));
    rows.push_back(std::move(r.f));
  }
  return rows;
}

}  // namespace qvt::testing
