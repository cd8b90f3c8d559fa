// What the qvto routines share: a table under construction, whose every
// host call goes through one failure rule, and the texts of the catalogue,
// the time ID's format and the named values each table carries.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "run/qvtcom.hpp"

namespace qvt {

// A catalogue text of the procedure's group.
std::string catText(const QVTCOM* com, int number, std::initializer_list<MsgArg> args = {});
// The ID format with its width, as the time ID's cells are shown.
std::string idFormat(const QVTCOM& com);
// True when the step has a time ID variable.
bool hasId(const QVTCOM& com) noexcept;
// A number as a named value's text: in the ID format for a time, else BEST.
std::string timeText(const QVTCOM& com, double v);
std::string numText(double v);

// A table under construction. A failed host call goes to pvwexit: a host
// without an output layer (kHostUnsupported) makes the table a silent
// no-op; any other failure is reported by hostMsgRaw and ends the step with
// rc 2000, since a broken listing is a fault of the engine or the host, not
// of the data. Nothing closes on destruction: closing can end the step.
class TableOut {
 public:
  TableOut(QVTCOM* com, std::string_view name, TableKind kind, int title);
  // A table opened earlier and still open (the summary tables).
  TableOut(QVTCOM* com, TableHandle h) : com_(com), h_(h) {}
  // Opens a table described in full: a template of its own (the two
  // performance tables share one; plots' data tables name theirs and may
  // be hidden).
  TableOut(QVTCOM* com, const TableHead& head);
  explicit operator bool() const noexcept { return static_cast<bool>(h_); }
  TableHandle handle() const noexcept { return h_; }

  void col(std::string name, int label, ColType type, int width, int decimals = kColFree,
           std::string format = {});
  void col(TableColumn c);
  void endCols();
  void value(std::string_view name, std::string_view text);
  // "Variable" and "VariableLabel" of the series in hand.
  void variable();
  void line(int label, TableCell v, std::string format = {});
  void row(std::span<const TableCell> cells);
  void close();

 protected:
  void check(int rc);
  QVTCOM* com_;
  TableHandle h_;
};

}  // namespace qvt
