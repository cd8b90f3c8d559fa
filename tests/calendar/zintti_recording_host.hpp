// A Host that keeps the messages it is given, for the time ID tests.
#pragma once

#include <cstddef>
#include <vector>

#include "host/catalog.hpp"
#include "host/host.hpp"

namespace qvt::testing {

class ZinttiHost : public Host {
 public:
  struct Logged {
    int group;
    int number;
    std::vector<MsgArg> args;
  };
  std::vector<Logged> msgs;

  void msgLog(int group, int number, std::span<const MsgArg> args, const SourcePos*) override {
    msgs.push_back(Logged{group, number, std::vector<MsgArg>(args.begin(), args.end())});
  }
  // The catalogue has a row for message k, so the log can write it.
  bool hasCatalogueRow(std::size_t k) const {
    return catalogFind(msgs[k].group, msgs[k].number) != nullptr;
  }
};

}  // namespace qvt::testing
