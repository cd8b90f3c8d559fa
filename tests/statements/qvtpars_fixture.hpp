// A step's statements run through qvtpars inside a process host on a
// temporary folder, with the messages recorded.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "host/process_host.hpp"
#include "statements/parser.hpp"
#include "statements/qvtpars.hpp"

namespace qvt::testing {

struct Msg {
  int group;
  int number;
  std::vector<MsgArg> args;
};

class RecordingProcessHost : public ProcessHost {
 public:
  using ProcessHost::ProcessHost;
  std::vector<Msg> msgs;
  void msgLog(int group, int number, std::span<const MsgArg> args, const SourcePos* at) override {
    msgs.push_back(Msg{group, number, std::vector<MsgArg>(args.begin(), args.end())});
    ProcessHost::msgLog(group, number, args, at);
  }
};

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
class Step {
 public:
  explicit Step(const std::string& program, std::vector<std::string> options = {}, bool withData = true,
                std::size_t memsize = 0) {
    std::string t = (std::filesystem::temp_directory_path() / "qvt-pars-test-XXXXXX").string();
    if (!::mkdtemp(t.data())) throw std::runtime_error("mkdtemp failed");
    dir_ = t;
    if (withData) std::ofstream(dir_ + "/sales.csv") << kSalesCsv;
    HostConfig cfg;
    cfg.libs = {"work=" + dir_};
    cfg.options = std::move(options);
    cfg.logStream = &log_;
    cfg.memsize = memsize;
    host_ = std::make_unique<RecordingProcessHost>(cfg);
    host_->init();
    xsparseText(program, SourcePos{}, *host_, stmts);
    com = std::make_unique<QVTCOM>();
    com->host = host_.get();
    try {
      qvtpars(com.get(), stmts);
      exited = false;
      rc = com->rc;
    } catch (const StepExit& e) {
      exited = true;
      rc = e.rc;
    }
  }
  ~Step() {
    host_->stepEnd(rc);
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
  }
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;

  const std::vector<Msg>& msgs() const { return host_->msgs; }
  // Numbers of the messages of one group, in order.
  std::vector<int> numbers(int group) const {
    std::vector<int> r;
    for (const Msg& m : host_->msgs)
      if (m.group == group) r.push_back(m.number);
    return r;
  }
  // The first message of a group and number, or null.
  const Msg* find(int group, int number) const {
    for (const Msg& m : host_->msgs)
      if (m.group == group && m.number == number) return &m;
    return nullptr;
  }
  Host& host() { return *host_; }
  const std::string& dir() const { return dir_; }

  PROCSTR stmts;
  std::unique_ptr<QVTCOM> com;
  int rc = 0;
  bool exited = false;

 private:
  std::string dir_;
  std::ostringstream log_;
  std::unique_ptr<RecordingProcessHost> host_;
};

inline std::string argText(const MsgArg& a) {
  if (const auto* s = std::get_if<std::string>(&a)) return *s;
  if (const auto* i = std::get_if<long long>(&a)) return std::to_string(*i);
  std::ostringstream o;
  o << std::get<double>(a);
  return o.str();
}

}  // namespace qvt::testing
