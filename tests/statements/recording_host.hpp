// A Host that keeps the messages it is given, for the tests.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "host/catalog.hpp"
#include "host/host.hpp"
#include "statements/keywords.hpp"
#include "statements/messages.hpp"
#include "statements/parser.hpp"
#include "statements/scanner.hpp"
#include "statements/steps.hpp"
#include "statements/stmt_json.hpp"

namespace qvt::testing {

struct Logged {
  int group;
  int number;
  std::vector<MsgArg> args;
  SourcePos pos;
  bool hasPos;
};

class RecordingHost : public Host {
 public:
  std::vector<Logged> msgs;

  void msgLog(int group, int number, std::span<const MsgArg> args, const SourcePos* at) override {
    msgs.push_back(Logged{group, number, std::vector<MsgArg>(args.begin(), args.end()), at ? *at : SourcePos{},
                          at != nullptr});
  }

  std::vector<int> numbers() const {
    std::vector<int> n;
    for (const auto& m : msgs) n.push_back(m.number);
    return n;
  }
  bool has(int number) const {
    for (const auto& m : msgs)
      if (m.number == number) return true;
    return false;
  }
  // The message as the catalogue writes it; empty when the catalogue has no row.
  std::string text(std::size_t k) const {
    const auto* e = catalogFind(msgs[k].group, msgs[k].number);
    return e ? catalogFormat(*e, msgs[k].args) : std::string();
  }
};

}  // namespace qvt::testing
