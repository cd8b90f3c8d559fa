// Hosts that keep the messages they are given, a parsed text, and a step run
// through qvtpars inside a process host on a temporary folder.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "host/catalog.hpp"
#include "host/process_host.hpp"
#include "statements/messages.hpp"
#include "statements/parser.hpp"
#include "statements/qvtpars.hpp"
#include "statements/scanner.hpp"
#include "statements/stmt_json.hpp"

namespace qvt::testing {

struct Logged { int group, number; std::vector<MsgArg> args; SourcePos pos; bool hasPos; };

// Base is Host (the messages are only kept) or ProcessHost (they also reach its log).
template <class Base>
class Recording : public Base {
 public:
  using Base::Base;
  std::vector<Logged> msgs;

  void msgLog(int group, int number, std::span<const MsgArg> args, const SourcePos* at) override {
    msgs.push_back(Logged{group, number, {args.begin(), args.end()}, at ? *at : SourcePos{}, at != nullptr});
    if constexpr (std::is_same_v<Base, ProcessHost>) Base::msgLog(group, number, args, at);
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

// A text through xsparseText.
struct Parsed {
  explicit Parsed(const std::string& text, const SourcePos& origin = SourcePos{})
      : rc(xsparseText(text, origin, h, p)) {}
  RecordingHost h;
  PROCSTR p;
  int rc;  // after h and p, which it is made from
};

// The rows of a data file of this folder, split at sep; lines that are
// empty or start with '#' are left out.
inline std::vector<std::vector<std::string>> dataRows(const std::string& file, char sep) {
  std::ifstream in(std::string(QVT_SOURCE_DIR) + "/tests/statements/" + file);
  EXPECT_TRUE(in.good()) << file;
  std::vector<std::vector<std::string>> rows;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    rows.emplace_back();
    std::size_t at = 0;
    for (std::size_t end; (end = line.find(sep, at)) != std::string::npos; at = end + 1)
      rows.back().push_back(line.substr(at, end - at));
    rows.back().push_back(line.substr(at));
  }
  return rows;
}

// Space-separated numbers.
inline std::vector<int> ints(const std::string& text) {
  std::istringstream in(text);
  std::vector<int> v;
  for (int n; in >> n;) v.push_back(n);
  return v;
}

inline std::string argText(const MsgArg& a) {
  if (const auto* s = std::get_if<std::string>(&a)) return *s;
  if (const auto* i = std::get_if<long long>(&a)) return std::to_string(*i);
  std::ostringstream o;
  o << std::get<double>(a);
  return o.str();
}

// Columns: date (ISO dates), sales, units, price (numbers), region
// (characters), store (numbers, the BY variable of the tests).
inline constexpr const char* kSalesCsv =
    "date,sales,units,price,region,store\n"
    "2020-01-01,10,1,2.5,East,1\n"
    "2020-02-01,12,2,2.5,East,1\n"
    "2020-03-01,11,1,2.6,West,2\n"
    "2020-04-01,14,3,2.7,West,2\n";

// One step: parsed, then qvtpars, which either returns (rc 0 to 4) or ends
// the step through hostExit. The step is ended (pools released, outputs
// committed or discarded) when the object goes.
struct Step {
  explicit Step(const std::string& program, std::vector<std::string> options = {}, std::size_t memsize = 0) {
    std::string t = (std::filesystem::temp_directory_path() / "qvt-pars-test-XXXXXX").string();
    if (!::mkdtemp(t.data())) throw std::runtime_error("mkdtemp failed");
    dir_ = t;
    std::ofstream(dir_ + "/sales.csv") << kSalesCsv;
    HostConfig cfg;
    cfg.libs = {"work=" + dir_};
    cfg.options = std::move(options);
    cfg.logStream = &log_;
    cfg.memsize = memsize;
    host = std::make_unique<Recording<ProcessHost>>(cfg);
    host->init();
    xsparseText(program, SourcePos{}, *host, stmts);
    com = std::make_unique<QVTCOM>();
    com->host = host.get();
    try {
      qvtpars(com.get(), stmts);
      rc = com->rc;
    } catch (const StepExit& e) {
      exited = true;
      rc = e.rc;
    }
  }
  ~Step() {
    host->stepEnd(rc);
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
  }
  PROCSTR stmts;
  std::unique_ptr<QVTCOM> com;
  int rc = 0;
  bool exited = false;
  std::string dir_;
  std::ostringstream log_;
  std::unique_ptr<Recording<ProcessHost>> host;  // goes first, before the step's records
};

}  // namespace qvt::testing
