// Helpers shared by the definition routines and the row writers of the
// output data sets: catalogue labels, the time ID's format, column
// definitions bound to cells, and the writing of one row.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "run/qvtcom.hpp"

namespace qvt {

// The text of a catalogue row of the procedure's group, as a label.
std::string catLabel(const Host& host, int number, std::initializer_list<MsgArg> args = {});

// The format of the time ID in the outputs: the ID statement's format with
// its first width ("MONYY7."); the ID variable's own format when the
// statement gave none.
std::string timeFormat(const QVTCOM& com);

// One column behind the BY variables: a character cell (text) or a numeric
// cell (num); the label is catalogue row `label` unless info.label is set.
struct OutColumn {
  VarInfo info;
  int label = 0;
  const u_sname* text = nullptr;
  const double* num = nullptr;
};

// A numeric column named `name` with catalogue label `label`.
OutColumn numColumn(std::string_view name, int label, const double* cell);
// A character column of 32 units.
OutColumn textColumn(std::string_view name, int label, const u_sname* cell);
// The time ID column of OUTFOR= and OUTCOMPONENT=.
OutColumn timeIdColumn(const QVTCOM& com, const double* cell);

// Defines a data set: the BY variables copied from the input, the columns,
// the data set's label (catalogue row dsLabel with the input's display
// name). A memory deficit raises rc.
void defineDs(QVTCOM* com, DATASETS& ds, int dsLabel, std::span<const OutColumn> cols);

// The display name of the input, for labels and messages.
std::string inputDisplay(const QVTCOM& com);

// Takes the bound cells as a record and appends it. False when the host
// refused (it has reported why; the data set is then not kept).
bool putRow(Host& host, DsHandle ds);

// The value of a result vector at t, or missing when the vector wasn't made.
inline double cellAt(const double* v, long t) noexcept { return v ? v[t] : kMissing; }

}  // namespace qvt
