// A parsed text, the data files of this folder, and a step run through
// qvtpars inside a process host, which keeps its messages, on a temporary
// folder.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "../common/shared.hpp"
#include "host/process_host.hpp"
#include "statements/messages.hpp"
#include "statements/parser.hpp"
#include "statements/qvtpars.hpp"
#include "statements/scanner.hpp"
#include "statements/stmt_json.hpp"

namespace qvt::testing {

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
  std::vector<std::vector<std::string>> rows;
  for (auto& r : readRows("statements/" + file, sep)) rows.push_back(std::move(r.f));
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
    dir_.write("sales.csv", kSalesCsv);
    HostConfig cfg;
    cfg.libs = {"work=" + dir_.path()};
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
  ~Step() { host->stepEnd(rc); }
  PROCSTR stmts;
  std::unique_ptr<QVTCOM> com;
  int rc = 0;
  bool exited = false;
  TempDir dir_;
  std::ostringstream log_;
  std::unique_ptr<Recording<ProcessHost>> host;  // goes first, before the step's records
};

}  // namespace qvt::testing
