// Test helpers of the run: a process host that keeps every message it logs,
// a QVTCOM wired to a CSV input in a temporary folder the way output set-up
// wires it (cells bound, pools made), and the calendar of std::chrono as the
// oracle of time IDs, independent of the calendar code under test.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <map>
#include <sstream>

#include "host/process_host.hpp"
#include "run/qvtin.hpp"

namespace qvt::testing {

inline long day(int y, int m, int d) {
  using namespace std::chrono;
  return (sys_days{year{y} / m / d} - sys_days{year{1960} / 1 / 1}).count();
}
inline std::string isoDate(long d) {
  using namespace std::chrono;
  const year_month_day c{sys_days{year{1960} / 1 / 1} + days{d}};
  char b[32];
  std::snprintf(b, sizeof b, "%04d-%02u-%02u", int(c.year()), unsigned(c.month()), unsigned(c.day()));
  return b;
}
template <class T>
std::string fmt(T x) {
  std::ostringstream s;
  s << std::setprecision(17) << x;
  return s.str();
}
// Cells joined by ',', missing ones as '.'.
template <class T>
std::string cells(const T* p, long n) {
  std::string s;
  for (long i = 0; p && i < n; ++i) s += (i ? "," : "") + (wzmis(double(p[i])) ? "." : fmt(p[i]));
  return s;
}

// A ProcessHost that records each message, its arguments joined by '|' (real
// ones, time IDs in these messages, shown as dates when whole days), before
// logging it as usual.
struct RecordingHost : ProcessHost {
  using ProcessHost::ProcessHost;
  std::vector<std::tuple<int, int, std::string>> msgs;
  void msgLog(int group, int number, std::span<const MsgArg> args, const SourcePos* at) override {
    std::string s;
    for (const MsgArg& a : args) {
      s += s.empty() ? "" : "|";
      if (const auto* t = std::get_if<std::string>(&a)) s += *t;
      if (const auto* i = std::get_if<long long>(&a)) s += std::to_string(*i);
      const auto* x = std::get_if<double>(&a);
      if (x) s += std::fabs(*x) < 1e6 && *x == std::floor(*x) ? isoDate(long(*x)) : fmt(*x);
    }
    msgs.emplace_back(group, number, s);
    ProcessHost::msgLog(group, number, args, at);
  }
  std::vector<int> numbers(int group) const {
    std::vector<int> r;
    for (const auto& [g, n, s] : msgs)
      if (g == group) r.push_back(n);
    return r;
  }
  // The arguments of the nth (from 0) message of that number.
  std::string args(int group, int number, int nth = 0) const {
    for (const auto& [g, n, s] : msgs)
      if (g == group && n == number && nth-- == 0) return s;
    return "<none>";
  }
};

// A QVTCOM wired to the CSV input "input", set up by "key=value" words: csv
// (records separated by '/'), interval and id (empty: none), series, by, nby,
// acc, notsorted, maxerror, start and end (dates), lead, zeromiss, trend,
// enobs (records expected: small, so that arrays grow) and memsize.
struct InputRun {
  std::map<std::string, std::string> kv = {{"csv", "date,y/2020-01-01,1"}, {"interval", "MONTH"}, {"id", "date"},
                                           {"series", "y"}, {"maxerror", "25"}, {"enobs", "4"}};
  std::string dir = (std::filesystem::temp_directory_path() / "qvt-run-test-XXXXXX").string();
  std::ostringstream log;
  RecordingHost host;
  QVTCOM com;
  FORSTMT fstmt;
  std::vector<VAR> vars;
  std::vector<double> buf = std::vector<double>(8, kMissing);

  explicit InputRun(const std::string& setup) : host(config(setup)) {
    EXPECT_EQ(host.init(), 0);
    std::replace(kv["csv"].begin(), kv["csv"].end(), '/', '\n');
    std::ofstream(dir + "/input.csv") << kv["csv"] << '\n';
    com.host = &host;
    com.cpool = hostPoolCreate(host, 0, 1024, 6);
    com.dpool = hostPoolCreate(host, 0, 1024, 6);
    com.tpool = hostPoolCreate(host, 0, 1024, 6);
    EXPECT_EQ(hostDsOpen(host, "input", DsMode::Input, &com.ds.data.fileid), 0);
    const DsHandle ds = com.ds.data.fileid;
    DsFacts f;
    hostDsInfo(host, ds, &f);
    com.ds.data.display.set(f.display);
    com.ds.data.lib.set(f.lib);
    com.ds.data.mem.set(f.member);
    fstmt.acc.code = int(num("acc"));
    fstmt.zeromiss.code = int(num("zeromiss"));
    std::istringstream series(kv["series"]);
    for (std::string s; std::getline(series, s, ',');) {
      VAR& v = vars.emplace_back();
      v.name.set(s);
      v.dsvarno = hostVarFind(host, ds, s);
      v.fstmt = &fstmt;
      EXPECT_EQ(hostVarGetD(host, ds, v.dsvarno, &buf[vars.size() - 1]), 0);
    }
    com.nvars = int(vars.size());
    com.ds.data.buf = buf.data();
    com.current.varptr = com.vars = vars.data();
    if (!kv["id"].empty()) {
      com.id.dsvarno = hostVarFind(host, ds, kv["id"]);
      com.id.name.set(kv["id"]);
      VarInfo vi;
      hostVarName(host, ds, com.id.dsvarno, &vi);
      com.id.format = vi.format;
      EXPECT_EQ(hostVarGetD(host, ds, com.id.dsvarno, &com.id.val), 0);
    }
    IDSTMT& is = com.istmt;
    if (!kv["interval"].empty()) {
      is.specified = 1;
      EXPECT_EQ(zintstr(kv["interval"].data(), int(kv["interval"].size()), &is.intv), 0);
      is.time = is.intv.units == 's';
    }
    is.start = date("start");
    is.end = date("end");
    is.acc.code = fstmt.acc.code;
    is.acc.specified = fstmt.acc.code != 0;
    is.notsorted = num("notsorted") != 0;
    is.lead = int(num("lead"));
    com.in.enobs = num("enobs");
    com.maxerror = num("maxerror");
    com.trend.request = char(num("trend"));
    com.nby = int(num("nby"));
    if (kv.count("by")) {
      const ByVar bv[] = {{hostVarFind(host, ds, kv["by"]), false}};
      host.bySet(ds, bv, false);
      com.nby = 1;
    }
  }
  ~InputRun() { std::filesystem::remove_all(dir); }

  HostConfig config(const std::string& setup) {
    std::istringstream in(setup);
    for (std::string w; in >> w;) kv[w.substr(0, w.find('='))] = w.substr(w.find('=') + 1);
    EXPECT_NE(::mkdtemp(dir.data()), nullptr);
    HostConfig c;
    c.libs = {"work=" + dir};
    c.logStream = &log;
    c.memsize = std::size_t(num("memsize"));
    return c;
  }
  long num(const std::string& key) const { return kv.count(key) ? std::stol(kv.at(key)) : 0; }
  double date(const std::string& key) const {
    int y = 0, m = 0, d = 0;
    if (!kv.count(key) || std::sscanf(kv.at(key).c_str(), "%d-%d-%d", &y, &m, &d) != 3) return kMissing;
    return double(day(y, m, d));
  }

  // Moves to the next BY group: false at the end.
  bool nextGroup() {
    com.error = 0;
    com.memdef = 0;
    return hostByNext(host, com.ds.data.fileid) != 0;
  }
  // Reads the next group; the rc of hostExit, or -1 when qvtin returned.
  int read() {
    EXPECT_TRUE(nextGroup());
    try {
      qvtin(&com);
    } catch (const StepExit& e) {
      return e.rc;
    }
    return -1;
  }

  // Compares the facts named in "key=value" words with the state of com.
  void expect(const std::string& want) const {
    const auto& v = com.vars[0];
    const auto& o = com.out;
    const auto tid = host.numbers(882);
    std::string ids;
    auto date = [](double x) { return std::fabs(x) < 1e7 ? isoDate(long(x)) : fmt(x); };
    for (long t = 0; o.id && t < o.tobs; ++t) ids += (t ? "," : "") + date(o.id[t]);
    const std::map<std::string, std::string> got = {
        {"err", fmt(com.error)}, {"rc", fmt(com.rc)}, {"in", fmt(com.in.nobs)}, {"out", fmt(o.nobs)},
        {"tobs", fmt(o.tobs)}, {"soff", fmt(o.soffset)}, {"eoff", fmt(o.eoffset)}, {"ids", ids},
        {"forlast", date(o.forlast)}, {"dups", fmt(com.ndups)}, {"gaps", fmt(com.ngaps)},
        {"maxgap", fmt(com.maxgap)}, {"big", fmt(com.nbigval)}, {"n", fmt(com.in.n)},
        {"y", cells(com.in.y, com.in.nobs)}, {"pos", cells(com.in.pos, com.in.nobs)},
        {"outy", cells(o.y, std::max(o.nobs, o.tobs))}, {"vn", fmt(v.n)}, {"vnin", fmt(v.nin)},
        {"vmiss", fmt(v.nmiss)}, {"vstart", fmt(v.start)}, {"vstop", fmt(v.stop)},
        {"rows", fmt(com.obsfirst) + "-" + fmt(com.obslast)}, {"idstart", fmt(com.id.start)},
        {"timeid", cells(tid.data(), long(tid.size()))}};
    std::istringstream in(want);
    for (std::string w; in >> w;) EXPECT_EQ(got.at(w.substr(0, w.find('='))), w.substr(w.find('=') + 1)) << w;
  }
  // Arguments of the nth message `number` of group 743 against "a|b|..."
  // where '*' takes any one, "$ds" is the input's name, and a final "..."
  // any further ones.
  void expectArgs(int number, int nth, const std::string& want) const {
    const std::string got = host.args(kMsgProc, number, nth);
    std::istringstream w(want), g(got);
    std::string a, b;
    while (std::getline(w, a, '|') && a != "...") {
      ASSERT_TRUE(std::getline(g, b, '|')) << number << ": " << got;
      EXPECT_TRUE(a == "*" || b == (a == "$ds" ? com.ds.data.display.str() : a)) << number << ": " << got;
    }
    EXPECT_TRUE(a == "..." || !std::getline(g, b, '|')) << "message " << number << " has more: " << got;
  }
};

}  // namespace qvt::testing
