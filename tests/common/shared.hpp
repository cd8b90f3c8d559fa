// What the test programs of several folders share: a temporary folder that
// removes itself, the loaders of the tables of hand-worked values kept beside
// the tests and of the date oracle that Python's datetime wrote, a Host that
// keeps the messages it is given, and Gauss-Jordan elimination in long double
// as the reference for every linear solve. Only the host interface and the
// missing values are needed, so every test program can include it.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "host/catalog.hpp"
#include "host/host.hpp"
#include "host/hostdate.hpp"
#include "run/missing.hpp"

namespace qvt::testing {

class TempDir {
 public:
  TempDir() {
    std::string t = (std::filesystem::temp_directory_path() / "qvt-test-XXXXXX").string();
    if (!::mkdtemp(t.data())) throw std::runtime_error("mkdtemp failed");
    path_ = t;
  }
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return path_; }
  std::string file(const std::string& name) const { return path_ + "/" + name; }
  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream(file(name), std::ios::binary | std::ios::trunc) << bytes;
  }
  std::string read(const std::string& name) const {
    std::ifstream f(file(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(f), {}};
  }
  bool exists(const std::string& name) const { return std::filesystem::exists(file(name)); }
  std::vector<std::string> entries() const {
    std::vector<std::string> r;
    for (const auto& e : std::filesystem::directory_iterator(path_)) r.push_back(e.path().filename().string());
    return r;
  }

 private:
  std::string path_;
};

// A line of a table of cases: its fields and its line number in the file.
struct Row {
  std::vector<std::string> f;
  int line = 0;
};

// The rows of tests/<file>, split at sep; blank lines and lines starting
// with '#' are left out.
inline std::vector<Row> readRows(const std::string& file, char sep) {
  std::ifstream in(std::string(QVT_SOURCE_DIR) + "/tests/" + file);
  EXPECT_TRUE(in.good()) << file;
  std::vector<Row> rows;
  int n = 0;
  for (std::string line; std::getline(in, line);) {
    ++n;
    if (line.empty() || line[0] == '#') continue;
    Row r;
    r.line = n;
    std::size_t at = 0;
    for (std::size_t end; (end = line.find(sep, at)) != std::string::npos; at = end + 1)
      r.f.push_back(line.substr(at, end - at));
    r.f.push_back(line.substr(at));
    rows.push_back(std::move(r));
  }
  return rows;
}

// A value field of those tables: "." and ".A" to "._" are missing values,
// 2020-01-01 a day, 2020-01-01T13:30:45.5 a datetime, anything else a C number.
inline double caseValue(const std::string& s) {
  if (s == ".") return kMissing;
  if (s.size() == 2 && s[0] == '.' && !std::isdigit(static_cast<unsigned char>(s[1]))) return skMissVal(s[1]);
  if (s.size() >= 10 && s[4] == '-' && s[7] == '-') {
    const auto num = [&](std::size_t at, std::size_t n) { return std::stoi(s.substr(at, n)); };
    const double day = hostMdyToDate(num(5, 2), num(8, 2), num(0, 4));
    if (s.size() == 10) return day;
    return day * 86400.0 + num(11, 2) * 3600 + num(14, 2) * 60 + std::stod(s.substr(17));
  }
  return std::strtod(s.c_str(), nullptr);
}

// tests/calendar/date_oracle.csv: dates with the calendar facts Python's
// datetime gives (gen_date_oracle.py writes it; its docstring names the
// columns): day from 1960-01-01; y, m, d; wday 1 Sunday; yday; ISO year,
// week, day 1 Monday; strftime %U and %W; and the month facts k, mstart, msame.
struct OracleRow {
  double day;
  int y, m, d, wday, yday, isoy, isow, isod, wu, ww, k;
  double mstart, msame;
};

inline const std::vector<OracleRow>& dateOracle() {
  static const std::vector<OracleRow> rows = [] {
    std::vector<OracleRow> out;
    std::ifstream in(std::string(QVT_SOURCE_DIR) + "/tests/calendar/date_oracle.csv");
    std::string line;
    std::getline(in, line);  // header
    while (std::getline(in, line)) {
      std::replace(line.begin(), line.end(), ',', ' ');
      std::istringstream s(line);
      OracleRow r{};
      s >> r.day >> r.y >> r.m >> r.d >> r.wday >> r.yday >> r.isoy >> r.isow >> r.isod >> r.wu >> r.ww >> r.k >>
          r.mstart >> r.msame;
      if (s) out.push_back(r);
    }
    EXPECT_FALSE(out.empty()) << "date_oracle.csv";
    return out;
  }();
  return rows;
}

struct Logged {
  int group, number;
  std::vector<MsgArg> args;
  SourcePos pos;
  bool hasPos;
};

// Keeps every message it is given. Base is Host (the messages are only kept)
// or a real host (they also reach its log).
template <class Base>
class Recording : public Base {
 public:
  using Base::Base;
  std::vector<Logged> msgs;

  void msgLog(int group, int number, std::span<const MsgArg> args, const SourcePos* at) override {
    msgs.push_back(Logged{group, number, {args.begin(), args.end()}, at ? *at : SourcePos{}, at != nullptr});
    if constexpr (!std::is_same_v<Base, Host>) Base::msgLog(group, number, args, at);
  }
  // Numbers of the messages of a group (of every group for -1), in order.
  std::vector<int> numbers(int group = -1) const {
    std::vector<int> n;
    for (const auto& m : msgs)
      if (group < 0 || m.group == group) n.push_back(m.number);
    return n;
  }
  // The message as the catalogue writes it; empty when the catalogue has no row.
  std::string text(std::size_t k) const {
    const auto* e = catalogFind(msgs[k].group, msgs[k].number);
    return e ? catalogFormat(*e, msgs[k].args) : std::string();
  }
};
using RecordingHost = Recording<Host>;

// Reduces the square left part of the rows to the identity by Gauss-Jordan
// elimination with partial pivoting, in long double; what is left on the
// right is the solution (the inverse, when the right part started as I).
using LRow = std::vector<long double>;
inline std::vector<LRow> gaussJordan(std::vector<LRow> a) {
  const std::size_t n = a.size();
  for (std::size_t c = 0; c < n; ++c) {
    std::size_t piv = c;
    for (std::size_t r = c + 1; r < n; ++r)
      if (std::fabs(a[r][c]) > std::fabs(a[piv][c])) piv = r;
    std::swap(a[c], a[piv]);
    const long double d = a[c][c];
    for (auto& v : a[c]) v /= d;
    for (std::size_t r = 0; r < n; ++r) {
      const long double f = r == c ? 0.0L : a[r][c];
      for (std::size_t k = 0; k < a[r].size(); ++k) a[r][k] -= f * a[c][k];
    }
  }
  for (auto& row : a) row.erase(row.begin(), row.begin() + static_cast<long>(n));
  return a;
}

}  // namespace qvt::testing
