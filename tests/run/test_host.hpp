// Test helpers of the run: a real process host that also keeps every message
// it logs (group, number, arguments), a temporary folder, and a QVTCOM wired
// to a CSV input the way output set-up wires it (cells bound, pools made), so
// that a test can read BY groups without the statement layer.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "calendar/interval.hpp"
#include "host/host.hpp"
#include "host/process_host.hpp"
#include "run/missing.hpp"
#include "run/qvtcom.hpp"

namespace qvt::testing {

class TempFolder {
 public:
  TempFolder() {
    std::string t = (std::filesystem::temp_directory_path() / "qvt-run-test-XXXXXX").string();
    if (!::mkdtemp(t.data())) throw std::runtime_error("mkdtemp failed");
    path_ = t;
  }
  ~TempFolder() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  const std::string& path() const { return path_; }
  std::string file(const std::string& name) const { return path_ + "/" + name; }
  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream f(file(name), std::ios::binary | std::ios::trunc);
    f << bytes;
  }

 private:
  std::string path_;
};

struct LoggedMsg {
  int group = 0;
  int number = 0;
  std::vector<MsgArg> args;
};

// A ProcessHost that records each message before logging it as usual.
class RecordingProcessHost : public ProcessHost {
 public:
  using ProcessHost::ProcessHost;
  std::vector<LoggedMsg> msgs;

  void msgLog(int group, int number, std::span<const MsgArg> args, const SourcePos* at) override {
    msgs.push_back({group, number, std::vector<MsgArg>(args.begin(), args.end())});
    ProcessHost::msgLog(group, number, args, at);
  }
  // Numbers of the messages of one group, in order.
  std::vector<int> numbers(int group) const {
    std::vector<int> r;
    for (const auto& m : msgs)
      if (m.group == group) r.push_back(m.number);
    return r;
  }
  int count(int group, int number) const {
    int n = 0;
    for (const auto& m : msgs) n += m.group == group && m.number == number;
    return n;
  }
  // The nth (from 0) message of that group and number, or null.
  const LoggedMsg* find(int group, int number, int nth = 0) const {
    for (const auto& m : msgs)
      if (m.group == group && m.number == number && nth-- == 0) return &m;
    return nullptr;
  }
};

// Argument k of a message as the test expects it.
inline std::string argText(const LoggedMsg& m, std::size_t k) {
  return k < m.args.size() && std::holds_alternative<std::string>(m.args[k]) ? std::get<std::string>(m.args[k])
                                                                             : std::string("<not a text>");
}
inline long long argInt(const LoggedMsg& m, std::size_t k) {
  return k < m.args.size() && std::holds_alternative<long long>(m.args[k]) ? std::get<long long>(m.args[k]) : -999999;
}
inline double argReal(const LoggedMsg& m, std::size_t k) {
  return k < m.args.size() && std::holds_alternative<double>(m.args[k]) ? std::get<double>(m.args[k]) : -999999.0;
}

// What the ID statement and the step say about the input.
struct InputSetup {
  std::string csv;                  // the input data set, CSV text with a header
  std::string dataset;              // instead of csv: the name of an existing data set
  std::vector<std::string> series;  // series to forecast, in order
  std::string id;                   // time ID variable; empty: none
  std::string interval;             // empty: no ID statement
  std::vector<std::string> by;      // BY variables
  int acc = 0;                      // ACCUMULATE= code
  int zeromiss = 0;                 // ZEROMISS= code of the one FORECAST statement
  bool notsorted = false;           // NOTSORTED in the ID statement
  double start = kMissing, end = kMissing;
  int lead = 0;
  long enobs = 4;                   // records expected; small, so that arrays grow
  long maxerror = 25;
  char trendRequest = 0;
  std::size_t memsize = 0;          // memory budget of the host; 0: the machine's
};

// A QVTCOM wired to a CSV input in a temporary folder.
class InputRun {
 public:
  explicit InputRun(const InputSetup& s)
      : host_(config(s)), host(host_) {
    if (host.init() != 0) throw std::runtime_error("host init failed");
    if (s.dataset.empty()) folder.write("input.csv", s.csv);
    com.host = &host;
    com.cpool = hostPoolCreate(host, 0, 1024, 6);
    com.dpool = hostPoolCreate(host, 0, 1024, 6);
    com.tpool = hostPoolCreate(host, 0, 1024, 6);
    if (hostDsOpen(host, s.dataset.empty() ? std::string("input") : s.dataset, DsMode::Input,
                   &com.ds.data.fileid) != 0)
      throw std::runtime_error("input does not open");
    DsFacts f;
    hostDsInfo(host, com.ds.data.fileid, &f);
    com.ds.data.display.set(f.display);
    com.ds.data.lib.set(f.lib);
    com.ds.data.mem.set(f.member);

    fstmt.acc.code = s.acc;
    fstmt.zeromiss.code = s.zeromiss;
    com.nvars = static_cast<int>(s.series.size());
    vars.resize(s.series.size());
    buf.assign(std::max<std::size_t>(1, s.series.size()), kMissing);
    com.ds.data.buf = buf.data();
    for (std::size_t i = 0; i < s.series.size(); ++i) {
      VAR& v = vars[i];
      v.name.set(s.series[i]);
      v.dsvarno = hostVarFind(host, com.ds.data.fileid, s.series[i]);
      v.fstmt = &fstmt;
      if (hostVarGetD(host, com.ds.data.fileid, v.dsvarno, &buf[i]) != 0)
        throw std::runtime_error("series does not bind: " + s.series[i]);
    }
    com.vars = vars.data();
    if (!s.id.empty()) {
      com.id.dsvarno = hostVarFind(host, com.ds.data.fileid, s.id);
      com.id.name.set(s.id);
      VarInfo vi;
      hostVarName(host, com.ds.data.fileid, com.id.dsvarno, &vi);
      com.id.format = vi.format;
      if (hostVarGetD(host, com.ds.data.fileid, com.id.dsvarno, &com.id.val) != 0)
        throw std::runtime_error("time ID does not bind");
    }
    IDSTMT& is = com.istmt;
    is.start = s.start;
    is.end = s.end;
    if (!s.interval.empty()) {
      is.specified = 1;
      if (zintstr(s.interval.data(), static_cast<int>(s.interval.size()), &is.intv) != 0)
        throw std::runtime_error("bad interval " + s.interval);
      is.time = is.intv.units == 's';
    }
    is.acc.code = s.acc;
    is.acc.specified = s.acc != 0;
    is.notsorted = s.notsorted;
    is.lead = s.lead;
    is.zeromiss.code = s.zeromiss;
    com.in.enobs = s.enobs;
    com.maxerror = s.maxerror;
    com.trend.request = s.trendRequest;
    if (!s.by.empty()) {
      std::vector<ByVar> bv;
      for (const auto& b : s.by) bv.push_back({hostVarFind(host, com.ds.data.fileid, b), false});
      host.bySet(com.ds.data.fileid, bv, false);
      com.nby = static_cast<int>(bv.size());
    }
    if (!vars.empty()) com.current.varptr = &vars[0];
  }

  // Moves to the next BY group: false at the end.
  bool nextGroup() {
    com.error = 0;
    com.memdef = 0;
    return hostByNext(host, com.ds.data.fileid) != 0;
  }
  // Runs a routine that may end the step; the rc of hostExit, or -1 when it returned.
  template <class F>
  int orExit(F&& f) {
    try {
      f();
    } catch (const StepExit& e) {
      return e.rc;
    }
    return -1;
  }

  TempFolder folder;
  std::ostringstream log;

 private:
  HostConfig config(const InputSetup& s) {
    HostConfig c;
    c.libs = {"work=" + folder.path()};
    c.logStream = &log;
    c.logFormat = LogFormat::Jsonl;
    c.memsize = s.memsize;
    return c;
  }
  RecordingProcessHost host_;

 public:
  RecordingProcessHost& host;
  QVTCOM com;
  FORSTMT fstmt;
  std::vector<VAR> vars;
  std::vector<double> buf;
};

// Days from 1960-01-01 of a civil date, by the days-from-civil algorithm of
// H. Hinnant ("chrono-compatible low-level date algorithms"); independent of
// the calendar code under test.
constexpr long daysFromCivil(long y, long m, long d) {
  y -= m <= 2;
  const long era = (y >= 0 ? y : y - 399) / 400;
  const long yoe = y - era * 400;
  const long doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468 + 3653;  // 1970-01-01 is day 3653
}
struct Civil {
  long y, m, d;
};
constexpr Civil civilFromDays(long z) {
  z += 719468 - 3653;
  const long era = (z >= 0 ? z : z - 146096) / 146097;
  const long doe = z - era * 146097;
  const long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const long y = yoe + era * 400;
  const long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const long mp = (5 * doy + 2) / 153;
  const long d = doy - (153 * mp + 2) / 5 + 1;
  const long m = mp + (mp < 10 ? 3 : -9);
  return {y + (m <= 2), m, d};
}
static_assert(daysFromCivil(1960, 1, 1) == 0);
static_assert(daysFromCivil(2020, 3, 1) - daysFromCivil(2020, 2, 1) == 29);

inline std::string isoDate(long day) {
  const Civil c = civilFromDays(day);
  char b[64];
  std::snprintf(b, sizeof b, "%04ld-%02ld-%02ld", c.y, c.m, c.d);
  return b;
}
inline std::string isoDatetime(long long sec) {
  const long long day = sec >= 0 ? sec / 86400 : -((-sec + 86399) / 86400);
  const long long s = sec - day * 86400;
  char b[96];
  std::snprintf(b, sizeof b, "%sT%02lld:%02lld:%02lld", isoDate(static_cast<long>(day)).c_str(), s / 3600,
                s / 60 % 60, s % 60);
  return b;
}

}  // namespace qvt::testing
