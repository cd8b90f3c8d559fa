// A step of the output stage on a real process host: an input data set in a
// temporary folder, the outputs asked for by name, a QVTCOM filled by hand
// as the statements would fill it, and the outputs read back afterwards.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "../host/host_test_util.hpp"
#include "host/process_host.hpp"
#include "run/qvtcom.hpp"

namespace qvt::testing {

// Day number (from 1960-01-01) of a calendar date: the oracle of time IDs.
inline double day(int y, unsigned m, unsigned d) {
  namespace c = std::chrono;
  const auto t = c::sys_days{c::year{y} / c::month{m} / c::day{d}} -
                 c::sys_days{c::year{1960} / c::January / 1};
  return static_cast<double>(t.count());
}
inline double monthEnd(int y, unsigned m) {
  namespace c = std::chrono;
  const c::year_month_day_last l{c::year{y} / c::month{m} / c::last};
  return day(y, m, static_cast<unsigned>(l.day()));
}

// A data set read back: its variables, label and rows (numbers and texts by
// column; the other kind of a column stays empty).
struct Table {
  std::vector<VarInfo> vars;
  std::string label;
  std::vector<std::vector<double>> num;
  std::vector<std::vector<std::string>> text;
  int col(const std::string& name) const {
    for (std::size_t i = 0; i < vars.size(); ++i)
      if (vars[i].name == name) return static_cast<int>(i);
    ADD_FAILURE() << "no column " << name;
    return 0;
  }
  double at(std::size_t row, const std::string& name) const { return num.at(row).at(static_cast<std::size_t>(col(name))); }
  std::string str(std::size_t row, const std::string& name) const {
    return text.at(row).at(static_cast<std::size_t>(col(name)));
  }
};

inline Table readBack(const std::string& dir, const std::string& member) {
  HostConfig cfg;
  cfg.libs = {"work=" + dir};
  std::ostringstream log;
  cfg.logStream = &log;
  ProcessHost h(cfg);
  EXPECT_EQ(h.init(), 0);
  Table t;
  hostRunStep(h, [&] {
    DsHandle d;
    if (hostDsOpen(h, member, DsMode::Input, &d) != 0) {
      ADD_FAILURE() << "can't open " << member << ": " << log.str();
      return;
    }
    const auto vars = h.dsVars(d);
    t.vars.assign(vars.begin(), vars.end());
    DsFacts f;
    hostDsInfo(h, d, &f);
    t.label = f.label;
    std::vector<double> num(vars.size(), 0);
    std::vector<std::string> text(vars.size());
    for (std::size_t i = 0; i < vars.size(); ++i) {
      const int v = static_cast<int>(i + 1);
      if (vars[i].type == VarType::Numeric) hostVarGetD(h, d, v, &num[i]);
      else hostVarGetT(h, d, v, &text[i]);
    }
    while (hostByNext(h, d)) {
      while (hostByGet(h, d)) {
        hostRowGet(h, d);
        t.num.push_back(num);
        t.text.push_back(text);
      }
    }
  });
  return t;
}

// Equal values, or both missing.
inline bool sameCell(double a, double b) { return (wzmis(a) && wzmis(b)) || a == b; }

// The step: input "sales" with the BY variable region, the ID date and the
// series units and price; outputs by option name ("out", "outfor" ...) into
// members of the same names.
struct Rig {
  TempDir dir;
  std::ostringstream log;
  std::unique_ptr<ProcessHost> host;
  QVTCOM com;
  std::vector<VAR> vars;
  int bylist[1] = {0};
  int rc = -1;

  explicit Rig(const std::string& csv, std::size_t memsize = 0, const std::string& tmpDir = "") {
    dir.write("sales.csv", csv);
    HostConfig cfg;
    cfg.memsize = memsize;
    cfg.libs = {"work=" + dir.path()};
    cfg.tmpDir = tmpDir.empty() ? dir.path() : tmpDir;
    cfg.logFormat = LogFormat::Jsonl;
    cfg.logStream = &log;
    host = std::make_unique<ProcessHost>(cfg);
    EXPECT_EQ(host->init(), 0);
  }

  DATASETS* slot(const std::string& name) {
    auto& ds = com.ds;
    const std::map<std::string, DATASETS*> m = {
        {"out", &ds.out},         {"outest", &ds.outest},     {"outfor", &ds.outfor},
        {"outcomp", &ds.outcomp}, {"outsum", &ds.outsum},     {"outstat", &ds.outstat},
        {"outtrend", &ds.outtrend}, {"outseason", &ds.outseason}};
    return m.at(name);
  }

  // Opens the input and the outputs and fills com as the statements would:
  // series by name, the ID variable, BY region (when byRegion), LEAD=,
  // interval MONTH with ALIGN=END and the format MONYY7.
  void open(const std::vector<std::string>& outputs, const std::vector<std::string>& series,
            bool byRegion, int lead) {
    Host& h = *host;
    com.host = &h;
    ASSERT_EQ(hostDsOpen(h, "sales", DsMode::Input, &com.ds.data.fileid), 0);
    for (const auto& o : outputs) ASSERT_EQ(hostDsOpen(h, o, DsMode::Output, &slot(o)->fileid), 0);
    com.cpool = hostPoolCreate(h, 0, 1024, 6);
    com.dpool = hostPoolCreate(h, 0, 1024, 6);
    vars.resize(series.size());
    for (std::size_t i = 0; i < series.size(); ++i) {
      vars[i].dsvarno = hostVarFind(h, com.ds.data.fileid, series[i]);
      vars[i].name.set(series[i]);
    }
    com.nvars = static_cast<int>(series.size());
    com.vars = vars.data();
    com.id.dsvarno = hostVarFind(h, com.ds.data.fileid, "date");
    com.id.name.set("date");
    com.id.label.set("Month of sale");
    if (byRegion) {
      bylist[0] = hostVarFind(h, com.ds.data.fileid, "region");
      com.nby = 1;
      com.bylist = bylist;
      const ByVar bv[] = {{bylist[0], false}};
      h.bySet(com.ds.data.fileid, bv, false);
    }
    com.istmt.lead = lead;
    ASSERT_EQ(zintic(45, &com.istmt.intv), 0);
    com.istmt.align = 'E';
    com.istmt.format.set("MONYY");
    com.istmt.fmtw1 = 7;
  }

  // Runs body as a step (the outputs are put in place at its end).
  void step(const std::function<void()>& body) { rc = hostRunStep(*host, body); }

  // Message numbers of group 743 in the log, with their arguments.
  std::vector<std::pair<int, nlohmann::json>> procMessages() const {
    std::vector<std::pair<int, nlohmann::json>> r;
    for (const auto& j : jsonLines(log.str()))
      if (j.at("group") == 743) r.emplace_back(j.at("number").get<int>(), j.at("args"));
    return r;
  }
};

}  // namespace qvt::testing
