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

// Day number from 1960-01-01 of day d of the month m months after January
// 2020, by the calendar of <chrono>: the oracle of time IDs. Day 0 is the
// last day of the month before.
inline double day(int m, int d) {
  namespace c = std::chrono;
  const c::year_month ym = c::year{2020} / c::January + c::months{m};
  return static_cast<double>((c::sys_days{ym / 1} - c::sys_days{c::year{1960} / 1 / 1}).count() + d - 1);
}

// A data set read back: its variables, label and columns by name.
struct OutDs {
  std::vector<VarInfo> vars;
  std::string label;
  std::map<std::string, std::vector<double>> num;
  std::map<std::string, std::vector<std::string>> text;
  std::vector<std::string> names() const {
    std::vector<std::string> r;
    for (const auto& v : vars) r.push_back(v.name);
    return r;
  }
};

inline OutDs readBack(const std::string& dir, const std::string& member) {
  HostConfig cfg;
  cfg.libs = {"work=" + dir};
  std::ostringstream log;
  cfg.logStream = &log;
  ProcessHost h(cfg);
  EXPECT_EQ(h.init(), 0);
  OutDs t;
  DsHandle d;
  EXPECT_EQ(h.dsOpen(member, DsMode::Input, &d), 0) << member << ": " << log.str();
  if (!d) return t;
  const auto vars = h.dsVars(d);
  t.vars.assign(vars.begin(), vars.end());
  DsFacts f;
  h.dsInfo(d, &f);
  t.label = f.label;
  std::vector<double> num(vars.size(), 0);
  std::vector<std::string> text(vars.size());
  for (std::size_t i = 0; i < vars.size(); ++i) {
    const bool isNum = vars[i].type == VarType::Numeric;
    const int v = static_cast<int>(i + 1);
    EXPECT_EQ(isNum ? hostVarGetD(h, d, v, &num[i]) : hostVarGetT(h, d, v, &text[i]), 0);
  }
  while (h.byNext(d) == 1) {
    while (h.byGet(d) == 1) {
      EXPECT_EQ(h.rowGet(d), 0);
      for (std::size_t i = 0; i < vars.size(); ++i) {
        if (vars[i].type == VarType::Numeric) t.num[vars[i].name].push_back(num[i]);
        else t.text[vars[i].name].push_back(text[i]);
      }
    }
  }
  h.dsClose(d);
  return t;
}

// Cell by cell from the first want, missing matching missing.
inline void expectCells(const std::vector<double>& got, const double* want, const std::string& what) {
  for (std::size_t i = 0; i < got.size(); ++i)
    EXPECT_TRUE((wzmis(got[i]) && wzmis(want[i])) || got[i] == want[i]) << what << " row " << i;
}

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

  // Opens the input and the outputs and fills com as the statements would:
  // series by name, the ID variable, BY region (when byRegion), LEAD=,
  // interval MONTH with ALIGN=END and the format MONYY7.
  void open(const std::vector<std::string>& outputs, const std::vector<std::string>& series, bool byRegion,
            int lead) {
    Host& h = *host;
    auto& ds = com.ds;
    const std::map<std::string, DATASETS*> slot = {
        {"out", &ds.out}, {"outest", &ds.outest}, {"outfor", &ds.outfor}, {"outcomp", &ds.outcomp},
        {"outsum", &ds.outsum}};
    com.host = &h;
    ASSERT_EQ(hostDsOpen(h, "sales", DsMode::Input, &ds.data.fileid), 0);
    for (const auto& o : outputs) ASSERT_EQ(hostDsOpen(h, o, DsMode::Output, &slot.at(o)->fileid), 0);
    com.cpool = hostPoolCreate(h, 0, 1024, 6);
    com.dpool = hostPoolCreate(h, 0, 1024, 6);
    vars.resize(series.size());
    for (std::size_t i = 0; i < series.size(); ++i) {
      vars[i].dsvarno = hostVarFind(h, ds.data.fileid, series[i]);
      vars[i].name.set(series[i]);
    }
    com.nvars = static_cast<int>(series.size());
    com.vars = vars.data();
    com.id.dsvarno = hostVarFind(h, ds.data.fileid, "date");
    com.id.name.set("date");
    com.id.label.set("Month of sale");
    if (byRegion) {
      bylist[0] = hostVarFind(h, ds.data.fileid, "region");
      com.nby = 1;
      com.bylist = bylist;
      const ByVar bv[] = {{bylist[0], false}};
      h.bySet(ds.data.fileid, bv, false);
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
