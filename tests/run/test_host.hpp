// Test helpers of the run: a QVTCOM wired to a CSV input in a temporary
// folder the way output set-up wires it (cells bound, pools made), a host
// that logs JSON lines so that each message can be read back, and the
// calendar of std::chrono as the oracle of time IDs, independent of the
// calendar code under test.
#pragma once

#include <fmt/format.h>

#include <chrono>
#include <map>

#include "../host/host_test_util.hpp"
#include "run/qvtin.hpp"

namespace qvt::testing {

inline std::chrono::sys_days sysDay(long d) { return std::chrono::sys_days{std::chrono::days{d - 3653}}; }
inline long day(int y, int m, int d) {
  using namespace std::chrono;
  return (sys_days{year{y} / m / d} - sysDay(0)).count();
}
// By hand: fmt's chrono formatting goes through nanoseconds, which overflow
// beyond the year 2262.
inline std::string isoDate(long d) {
  const std::chrono::year_month_day c{sysDay(d)};
  return fmt::format("{:04}-{:02}-{:02}", int(c.year()), unsigned(c.month()), unsigned(c.day()));
}
// Cells joined by ',', missing ones as '.'.
template <class T>
std::string cells(const T* p, long n) {
  std::string s;
  for (long i = 0; p && i < n; ++i) s += (i ? "," : "") + (wzmis(double(p[i])) ? "." : fmt::format("{}", p[i]));
  return s;
}

// A QVTCOM wired to the CSV input "input", set up by "key=value" words: csv
// (records separated by '/'), interval and id (empty: none), series, by, nby,
// acc, notsorted, start and end (dates), lead, zeromiss, trend, maxerror,
// enobs (records expected: small, so that arrays grow) and memsize; file (a
// CSV file already written) is read instead of csv.
struct InputRun {
  std::map<std::string, std::string> kv = {{"csv", "date,y/2020-01-01,1"}, {"interval", "MONTH"},
                                           {"id", "date"}, {"series", "y"}, {"maxerror", "25"}, {"enobs", "4"}};
  TempDir dir;
  std::ostringstream log;
  ProcessHost host;
  QVTCOM com;
  FORSTMT fstmt;
  std::vector<VAR> vars;
  std::vector<double> buf = std::vector<double>(8, kMissing);

  explicit InputRun(const std::string& setup) : host(config(setup)) {
    EXPECT_EQ(host.init(), 0);
    std::replace(kv["csv"].begin(), kv["csv"].end(), '/', '\n');
    if (!kv.count("file")) dir.write("input.csv", kv["csv"] + '\n');
    com.host = &host;
    for (PoolHandle* p : {&com.cpool, &com.dpool, &com.tpool}) *p = hostPoolCreate(host, 0, 1024, 6);
    const std::string input = kv.count("file") ? "'" + kv["file"] + "'" : "input";
    EXPECT_EQ(hostDsOpen(host, input, DsMode::Input, &com.ds.data.fileid), 0);
    const DsHandle ds = com.ds.data.fileid;
    DsFacts f;
    hostDsInfo(host, ds, &f);
    com.ds.data.display.set(f.display);
    com.ds.data.lib.set(f.lib);
    com.ds.data.mem.set(f.member);
    fstmt.acc.code = com.istmt.acc.code = int(num("acc"));
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
    is.specified = !kv["interval"].empty();
    if (is.specified) {
      EXPECT_EQ(zintstr(kv["interval"].data(), int(kv["interval"].size()), &is.intv), 0);
    }
    is.start = date("start");
    is.end = date("end");
    is.notsorted = num("notsorted") != 0;
    is.lead = int(num("lead"));
    com.in.enobs = num("enobs");
    com.maxerror = num("maxerror");
    com.trend.request = char(num("trend"));
    com.nby = int(num("nby") + long(kv.count("by")));
    if (kv.count("by")) {
      const ByVar bv[] = {{hostVarFind(host, ds, kv["by"]), false}};
      host.bySet(ds, bv, false);
    }
  }
  HostConfig config(const std::string& setup) {
    std::istringstream in(setup);
    for (std::string w; in >> w;) kv[w.substr(0, w.find('='))] = w.substr(w.find('=') + 1);
    HostConfig c = jsonlConfig(log, {"work=" + dir.path()});
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

  // The messages logged so far, read back from the log: each one's number
  // (as group-number outside group 743) and its arguments joined by '|'.
  std::vector<std::pair<std::string, std::string>> messages() const {
    std::vector<std::pair<std::string, std::string>> r;
    for (const auto& j : jsonLines(log.str())) {
      std::string a;
      for (const auto& x : j["args"]) {
        const double d = x.is_number_float() ? x.get<double>() : 0.5;  // whole days show as dates
        const bool isDay = d == std::floor(d) && std::fabs(d) < 1e6;
        a += "|" + (x.is_string() ? x.get<std::string>() : isDay ? isoDate(long(d)) : x.dump());
      }
      const std::string group = j["group"] == kMsgProc ? "" : j["group"].dump() + "-";
      r.emplace_back(group + j["number"].dump(), a.empty() ? a : a.substr(1));
    }
    return r;
  }

  // Compares "key=value" words with the state of com: facts by name, msgs
  // (the numbers of all messages, joined by ','), and for a word "N=text"
  // the arguments of the next message N, which must begin with text.
  void expect(const std::string& want) const {
    const auto& v = com.vars[0];
    const auto& o = com.out;
    auto f = [](auto x) { return fmt::format("{}", x); };
    auto date = [&](double x) { return std::fabs(x) < 1e7 ? isoDate(long(x)) : f(x); };
    const auto all = messages();
    std::string msgs;
    for (const auto& [n, a] : all) msgs += (msgs.empty() ? "" : ",") + n;
    const std::map<std::string, std::string> got = {
        {"err", f(com.error)}, {"rc", f(com.rc)}, {"msgs", msgs}, {"in", f(com.in.nobs)}, {"out", f(o.nobs)},
        {"tobs", f(o.tobs)}, {"soff", f(o.soffset)}, {"eoff", f(o.eoffset)}, {"forlast", date(o.forlast)},
        {"ids", o.id && o.tobs > 0 ? date(o.id[0]) + ".." + date(o.id[o.tobs - 1]) : ""},
        {"dups", f(com.ndups)}, {"gaps", f(com.ngaps)}, {"maxgap", f(com.maxgap)}, {"big", f(com.nbigval)},
        {"n", f(com.in.n)},
        {"y", cells(com.in.y, com.in.nobs)}, {"pos", cells(com.in.pos, com.in.nobs)},
        {"outy", cells(o.y, std::max(o.nobs, o.tobs))},
        {"v", cells(std::vector<long>{v.n, v.nin, v.nmiss, v.start, v.stop}.data(), 5)},
        {"rows", f(com.obsfirst) + "-" + f(com.obslast)}, {"idstart", f(com.id.start)}};
    std::map<std::string, int> nth;
    std::istringstream in(want);
    for (std::string w; in >> w;) {
      const std::string key = w.substr(0, w.find('=')), value = w.substr(w.find('=') + 1);
      int k = nth[key]++;
      std::string args = "<none>";
      for (const auto& [n, a] : all)
        if (n == key && k-- == 0) args = a;
      const std::string have = std::isdigit(key[0]) ? args.substr(0, value.size()) : got.at(key);
      EXPECT_EQ(have, value) << w;
    }
  }
};

}  // namespace qvt::testing
