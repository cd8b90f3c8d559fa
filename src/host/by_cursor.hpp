// BY-group iteration over a data set reader, with the sort check.
//
// One record is read ahead: a group ends when the record ahead has other BY
// values, and the order check compares the record ahead with the record in
// hand. Order is by the first BY variable whose values differ: ascending
// unless that variable is DESCENDING. With NOTSORTED a group is each run of
// equal values and nothing is checked.
//
// Order of values: numbers by value (-0 equals 0); every missing value comes
// before every number, in the order ._, ., .A, ..., .Z. Texts compare byte
// by byte with trailing blanks ignored.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/dsengine.hpp"

namespace qvt {

// <0, 0, >0 as a sorts before, equal to, or after b.
int byCompareNum(double a, double b) noexcept;
int byCompareText(std::string_view a, std::string_view b) noexcept;

class ByCursor {
 public:
  // The reader must outlive the cursor; display names the data set in messages.
  ByCursor(DsReader& reader, std::string display);

  // Before the first group. kHostBadArgument (diag filled) for a variable
  // number outside the data set.
  int setBy(std::span<const ByVar> vars, bool notsorted, DsDiag& diag);
  // 1 when a group starts, 0 at the end of the data, negative on failure.
  int nextGroup(DsDiag& diag);
  // 1 with a record in hand, 0 at the group's end, negative on failure:
  // kHostByOrder, with the message in diag, on the first call (of either
  // kind) after the last record that was in order.
  int nextRecord(DsDiag& diag);

  const DsRow& current() const noexcept { return cur_; }
  // 1-based number of the record in hand; 0 before the first.
  long long currentObs() const noexcept { return curObs_; }
  // The BY values of the group in hand (only the BY variables' cells are set).
  const DsRow& key() const noexcept { return key_; }
  bool isByVar(std::size_t index) const noexcept;
  bool hasBy() const noexcept { return !by_.empty(); }
  // The BY variables, and whether key() holds a group's values: from the
  // start of the first group until the end of the data.
  std::span<const ByVar> byVars() const noexcept { return by_; }
  bool keyValid() const noexcept { return keyValid_; }

 private:
  int fetch(DsDiag& diag);  // reads the record ahead
  int compareKeys(const DsRow& a, const DsRow& b, std::size_t* first) const;
  bool sameGroup(const DsRow& row) const;

  DsReader& rd_;
  std::string display_;
  std::vector<ByVar> by_;
  bool notsorted_ = false;
  DsRow cur_, ahead_, key_;
  long long curObs_ = 0, aheadObs_ = 0;
  bool haveAhead_ = false;
  bool started_ = false;  // the record ahead has been fetched once
  bool inGroup_ = false;  // a group is open and not yet at its end
  bool groups_ = false;   // without BY variables: the one group was given
  bool orderError_ = false;  // the record ahead is out of order
  bool keyValid_ = false;
  DsDiag orderDiag_;
};

}  // namespace qvt
