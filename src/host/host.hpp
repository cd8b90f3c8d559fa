// The one interface through which the engine reaches its surroundings.
//
// The engine includes this header and nothing else of the host layer. What a
// host does (command line, test harness, later the Python module) stands
// behind the abstract class Host; pure services that every host shares (date
// primitives, format rendering, the message catalogue) are free functions
// declared in the headers this one includes.
//
// Every operation has a virtual member and, where the engine's routines call
// it by its `host...` name, a thin free function of that name. Only msgLog is
// pure virtual: a host that only collects messages (a parser test) derives
// from Host and overrides that one; every other operation then answers
// kHostUnsupported (or null / 0), so callers see a plain failure code.
//
// Result codes: 0 success, negative failure (the kHost... constants below),
// and for the reading operations 1 "one more" / 0 "no more".
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "run/strings.hpp"

namespace qvt {

enum class Severity : std::uint8_t { Note, Warning, Error };

// One argument of a message: a whole number, a real number or a text.
using MsgArg = std::variant<long long, double, std::string>;

// Where in a program text a statement or token stands (1-based line and
// column); an empty file means the program came from the command line.
struct SourcePos {
  std::string file;
  int line = 0;
  int col = 0;
};

// Variable kinds of a data set.
enum class VarType : std::uint8_t { Numeric, Character };

// What the engine may know of one variable of a data set.
struct VarInfo {
  std::string name;    // up to 32 characters, case kept
  std::string label;
  VarType type = VarType::Numeric;
  int length = 8;      // bytes; 8 for numbers
  std::string format;  // e.g. "DATE9." or empty
};

// ---------------------------------------------------------------------------
// Handles. Each is a small number owned by the host; 0 is the null handle
// (for a data set: "not asked for").
struct DsHandle {
  int id = 0;
  explicit operator bool() const noexcept { return id != 0; }
  friend bool operator==(DsHandle, DsHandle) = default;
};
struct PoolHandle {
  int id = 0;
  explicit operator bool() const noexcept { return id != 0; }
  friend bool operator==(PoolHandle, PoolHandle) = default;
};
struct SpoolHandle {
  int id = 0;
  explicit operator bool() const noexcept { return id != 0; }
  friend bool operator==(SpoolHandle, SpoolHandle) = default;
};

// Result codes of host operations.
inline constexpr int kHostOk = 0;
inline constexpr int kHostUnsupported = -1;   // this host has no such service
inline constexpr int kHostBadHandle = -2;     // null, closed or wrong-kind handle
inline constexpr int kHostNotFound = -3;      // no such data set, library or variable
inline constexpr int kHostIoError = -4;       // the file system refused
inline constexpr int kHostDataError = -5;     // the data set's contents are unusable
inline constexpr int kHostByOrder = -6;       // a record out of BY order
inline constexpr int kHostNoInput = -7;       // no DATA= and no earlier output
inline constexpr int kHostBadArgument = -8;   // a call the engine should never make
inline constexpr int kHostNoMemory = -9;      // the memory budget is spent

// The step's return code when the engine's work was done but one of its
// outputs (a data set, a plot file, the report, the listing) could not be
// written: above 4, so the run's exit status says that something is missing.
inline constexpr int kRcOutputLost = 1024;
inline constexpr int kHostSpoolFailed = -10;  // a spool write or read failed
inline constexpr int kHostWrongState = -11;   // e.g. a definition after the first row
// Spool read at the end of the file: the engine tests (result & 0x803FFFFF) == 0x801.
inline constexpr int kHostEof = 0x801;

// ---------------------------------------------------------------------------
// Printed tables. The engine describes a table (its name, template, title,
// columns, named values and rows) and hands it to the host's output layer,
// which renders it (a text listing, an HTML report) or keeps it (a test).
// The engine never sees a renderer. The host's object calls of the printing
// layer are numbered operations on handles elsewhere; here each is a plain
// member, and the numbers are dropped as an internal detail of that layer.

// "data" tables have columns and rows; "factoid" tables are label/value lines.
enum class TableKind : std::uint8_t { Data, Factoid };

// Column types: whole numbers, real numbers, text.
enum class ColType : std::uint8_t { Long = 4, Double = 5, Text = 6 };

// A free column lets the format choose its decimals.
inline constexpr int kColFree = -1;

struct TableColumn {
  std::string name;    // key, e.g. "Predict" or "Horizon3"
  std::string label;   // heading shown to the reader
  ColType type = ColType::Double;
  int width = 0;
  int decimals = kColFree;
  std::string format;  // a format text such as "PVALUE6." or "DATE9."; wins over decimals
  std::string group;   // column group ("Horizon", "Seasons"), empty for none
};

// A cell or a factoid value: a number (possibly the missing value) or a text.
using TableCell = std::variant<double, std::string>;

struct TableHead {
  std::string name;      // e.g. "Forecasts"
  std::string templ;     // e.g. "QVT.QVT.Forecasts"
  TableKind kind = TableKind::Data;
  std::string title;
  std::string contents;  // contents label of a factoid table
  bool hidden = false;   // a plot's data table: kept for its graphs, not printed
};

// One named value a table carries ("Variable", "Lead", ...).
struct TableValue {
  std::string name;
  std::string text;
};

// One line of a factoid table; numbers are rendered by `format` (empty: BEST).
struct FactoidLine {
  std::string label;
  TableCell value;
  std::string format;
};

// A graph drawn from a data table: the plot's name picks its renderer.
// An output group: the tables and graphs of one series, or of one part of
// a series' output, gathered under a label.
struct OutputGroup {
  std::string name;   // e.g. "Variable"
  std::string var;    // the group's variable, e.g. "_NAME_"
  std::string label;  // e.g. "Series sales"
};

struct PlotGraph {
  std::string name;   // e.g. "ModelPlot"
  std::string templ;  // e.g. "QVT.QVT.Graphics.ModelPlot"
  std::string label;  // short label of the plot
  std::string title;
  std::vector<TableValue> values;  // the template's own named values
  // Set by the output layer when the graph is drawn: the groups open at
  // that moment, outermost first. A table's graphs may be drawn in a group
  // nested inside the table's own.
  std::vector<OutputGroup> groups;
};

// A table as the output layer holds it.
struct Table {
  TableHead head;
  std::vector<TableColumn> cols;
  std::vector<TableValue> values;
  std::vector<FactoidLine> lines;
  std::vector<std::vector<TableCell>> rows;
  std::vector<OutputGroup> groups;  // the output groups it was made in, outermost first
  std::vector<PlotGraph> graphs;  // graphs drawn from it, in their order
  bool defined = false;  // columns are complete; rows may follow
};

// Handle of an open table; 0 is null.
struct TableHandle {
  int id = 0;
  explicit operator bool() const noexcept { return id != 0; }
  friend bool operator==(TableHandle, TableHandle) = default;
};

enum class DsMode : std::uint8_t { Input, Output };

// One BY variable: its 1-based number in the input data set, and its order.
struct ByVar {
  int varno = 0;
  bool descending = false;
};

// Facts about an open data set.
struct DsFacts {
  long long nobs = -1;     // records; -1 when the engine can't tell in advance
  std::string lib;         // library name as written by the user, upper case
  std::string member;      // member name, case kept
  std::string label;       // data set label, may be empty
  std::string display;     // name for messages, e.g. "WORK.SALES" or a path
  bool readable = false;   // input that can be read once, front to back, by BY group
  bool rid2n = false;      // record IDs need conversion to observation numbers
};

// Thrown by hostExit and caught by hostRunStep; never seen by the engine's
// own code, which only runs the destructors it passes on the way out.
struct StepExit {
  int rc = 0;
};

class Host {
 public:
  virtual ~Host() = default;

  // --- messages -----------------------------------------------------------

  // Writes a message of the catalogue to the log. `at` names the place in
  // the program text when the message concerns a statement.
  virtual void msgLog(int group, int number, std::span<const MsgArg> args,
                      const SourcePos* at = nullptr) = 0;

  // The text of a catalogue row with its arguments in place (labels, column
  // titles). Empty when the catalogue has no such row.
  virtual std::string msgText(int group, int number, std::span<const MsgArg> args = {}) const;

  // Writes the message that explains the last failed host operation whose
  // result was `result` (spools, record writes), then forgets it.
  virtual void msgRaw(int result);

  // --- options ------------------------------------------------------------

  // Value of a host option such as "DEBUG" or "INTERVALDS"; names are case
  // insensitive. nullopt when the option was not given.
  virtual std::optional<std::string> optionGet(std::string_view name) const;

  // --- data sets ----------------------------------------------------------

  // Opens a data set named `member`, `lib.member`, or a quoted path. An empty
  // name (or _LAST_) for input means the last data set an earlier step wrote.
  // On failure the host has already logged a message naming the data set.
  virtual int dsOpen(std::string_view name, DsMode mode, DsHandle* out);
  // Closes a data set. An output stays under its temporary name until the
  // step ends; see stepEnd.
  virtual int dsClose(DsHandle ds);
  // The variables of an open data set, in order; variable numbers are 1-based
  // positions in this list. Empty for a bad handle.
  virtual std::span<const VarInfo> dsVars(DsHandle ds) const;
  // 1-based number of the variable, names compared without regard to case; 0 when absent.
  virtual int varFind(DsHandle ds, std::string_view name) const;
  virtual int dsInfo(DsHandle ds, DsFacts* out) const;
  // Gives an output data set its label.
  virtual int dsSetLabel(DsHandle ds, std::string_view label);

  // Input: bind variables to cells, then iterate BY groups and records.
  virtual int varGetD(DsHandle ds, int varno, double* cell);
  virtual int varGetT(DsHandle ds, int varno, std::string* cell);
  // The BY variables and their order; without a call there is one group.
  // With notsorted a group is each run of equal values and no order is checked.
  virtual int bySet(DsHandle ds, std::span<const ByVar> vars, bool notsorted);
  // 1 when another BY group starts, 0 at the end, negative on failure.
  // Records of the previous group that were not read are skipped.
  virtual int byNext(DsHandle ds);
  // 1 when the next record of the group is in hand, 0 at the group's end,
  // negative on failure (kHostByOrder after the out-of-order message).
  virtual int byGet(DsHandle ds);
  // Moves the cells of the record in hand into the bound cells.
  virtual int rowGet(DsHandle ds);
  // 1-based observation number of the record in hand; 0 before the first.
  virtual long long dsNote(DsHandle ds) const;

  // Output: define variables bound to cells, then add records.
  virtual int varPutD(DsHandle ds, const VarInfo& info, const double* cell);
  virtual int varPutT(DsHandle ds, const VarInfo& info, const std::string* cell);
  // A character cell in the engine's own form: a 16-bit length and its text.
  virtual int varPutTc(DsHandle ds, const VarInfo& info, const std::int16_t* len, const tchar* text);
  // Copies the definitions of source variables; their values follow the
  // source's BY group in hand (or its record in hand for other variables).
  virtual int varPutCv(DsHandle ds, DsHandle source, std::span<const int> varnos);
  // Ends the definitions; the data set can take records from now on.
  virtual int varPutE(DsHandle ds);
  // Takes the bound cells as the next record.
  virtual int rowPut(DsHandle ds);
  // Appends the record taken by rowPut.
  virtual int dsAdd(DsHandle ds);

  // --- memory -------------------------------------------------------------

  // A pool; null when that fails. Pools live until the step ends.
  virtual PoolHandle poolCreate(std::size_t initial, std::size_t block, int flags);
  // A zero-filled block of `bytes`, or null (the bytes then add to the deficit).
  virtual void* poolAlloc(PoolHandle pool, std::size_t bytes);
  // Frees a block; `bytes` may be -1 when the caller doesn't know the size.
  virtual void poolFree(PoolHandle pool, void* block, long long bytes);
  // Grows or shrinks a block keeping its contents; new bytes are zero. Null on
  // failure, and the old block is then still valid.
  virtual void* realloc(PoolHandle pool, void* block, std::size_t oldBytes, std::size_t newBytes,
                        int flags);
  // Bytes that allocations may still take under the budget.
  virtual std::size_t poolSize() const;
  // Bytes that allocations failed to provide since the last call; resets.
  virtual long long memDefault();
  // Issues the out-of-memory note for that many bytes.
  virtual void memMessage(long long bytes);

  // --- spools -------------------------------------------------------------

  virtual int spoolOpen(SpoolHandle* out);
  virtual int spoolWrite(SpoolHandle sp, const void* data, std::size_t bytes);
  // 0 when all bytes were read; kHostEof when fewer remain (nothing is read).
  virtual int spoolRead(SpoolHandle sp, void* data, std::size_t bytes);
  // Moves to byte `pos` (0 the start); -2 cuts the file at the current position.
  virtual int spoolPoint(SpoolHandle sp, long long pos);
  virtual int spoolClose(SpoolHandle sp, int mode);

  // --- progress -----------------------------------------------------------

  // `seriesDone` series of the step are finished. A host may show a progress
  // line for long runs; the default shows nothing.
  virtual void progress(long long seriesDone);

  // --- printed tables -----------------------------------------------------

  // Opens an output group inside the groups that are open (one for each
  // series, "Variable", and in it one for the plots of its prediction
  // errors). groupClose closes the innermost; without an open group it does
  // nothing.
  virtual int groupOpen(std::string_view name, std::string_view var, std::string_view label);
  virtual int groupClose();
  // Creates a table; its columns, named values, lines and rows follow, then
  // tableClose renders and releases it.
  virtual int tableOpen(const TableHead& head, TableHandle* out);
  virtual int tableColumn(TableHandle t, const TableColumn& col);
  // Ends the column definitions; rows may follow.
  virtual int tableColumnsEnd(TableHandle t);
  virtual int tableValue(TableHandle t, std::string_view name, std::string_view text);
  virtual int tableLine(TableHandle t, const FactoidLine& line);
  // One row; one cell for each column, in their order.
  virtual int tableRow(TableHandle t, std::span<const TableCell> cells);
  virtual int tableClose(TableHandle t);
  // The open table of that name (the summary tables stay open over a BY
  // group); the null handle when none is open.
  virtual TableHandle tableFind(std::string_view name) const;
  // Draws a graph from the open data table t, whose columns are complete;
  // the graph is rendered when t is closed, after t itself.
  virtual int graphDraw(TableHandle t, const PlotGraph& graph);

  // --- the step -----------------------------------------------------------

  // The step ended with return code rc: outputs are renamed into place when
  // rc is below 1000 (only whole-step failures discard them), and pools,
  // spools and data sets are released. Returns the step's final return code:
  // rc, or kRcOutputLost when an output of the step could not be written.
  virtual int stepEnd(int rc);

  // --- named resources ----------------------------------------------------

  // Objects that a layer above the host keeps for as long as the host lives,
  // under a name (the custom-interval manager is one). The host owns them:
  // they outlive every step and die with the host. Null for an unknown name.
  std::shared_ptr<void> resGet(std::string_view name) const;
  // Stores `obj` under `name`, replacing (and releasing) what was there.
  void resSet(std::string_view name, std::shared_ptr<void> obj);
  void resDelete(std::string_view name);

 private:
  mutable std::mutex resLock_;  // steps may later run BY groups side by side
  std::map<std::string, std::shared_ptr<void>, std::less<>> res_;
};

// ---------------------------------------------------------------------------
// The operations under the names the engine's routines use.

inline void hostMsgLog(Host& h, int group, int number, std::initializer_list<MsgArg> args = {},
                       const SourcePos* at = nullptr) {
  h.msgLog(group, number, std::span<const MsgArg>(args.begin(), args.size()), at);
}

// Puts a message's text, blank-padded, into buf (size units); returns the
// length of the text (at most size).
int hostMsgText(const Host& h, tchar* buf, int size, int group, int number,
                std::initializer_list<MsgArg> args = {});

inline void hostMsgRaw(Host& h, int /*zero*/, int result) { h.msgRaw(result); }

inline std::optional<std::string> hostOptionGet(const Host& h, std::string_view name) {
  return h.optionGet(name);
}

inline int hostDsOpen(Host& h, std::string_view name, DsMode mode, DsHandle* out) {
  return h.dsOpen(name, mode, out);
}
inline int hostDsClose(Host& h, DsHandle ds) { return h.dsClose(ds); }
inline int hostVarFind(const Host& h, DsHandle ds, std::string_view name) { return h.varFind(ds, name); }
// The description of variable varno (1-based); kHostNotFound outside the list.
int hostVarName(const Host& h, DsHandle ds, int varno, VarInfo* out);
inline int hostDsInfo(const Host& h, DsHandle ds, DsFacts* out) { return h.dsInfo(ds, out); }
inline int hostVarGetD(Host& h, DsHandle ds, int varno, double* cell) { return h.varGetD(ds, varno, cell); }
inline int hostVarGetT(Host& h, DsHandle ds, int varno, std::string* cell) {
  return h.varGetT(ds, varno, cell);
}
inline int hostRowGet(Host& h, DsHandle ds) { return h.rowGet(ds); }
inline long long hostDsNote(const Host& h, DsHandle ds) { return h.dsNote(ds); }
inline int hostVarPutD(Host& h, DsHandle ds, const VarInfo& info, const double* cell) {
  return h.varPutD(ds, info, cell);
}
template <int N>
int hostVarPutT(Host& h, DsHandle ds, const VarInfo& info, const u_text<N>& cell) {
  return h.varPutTc(ds, info, &cell.len, cell.text);
}
inline int hostVarPutCv(Host& h, DsHandle ds, DsHandle source, std::span<const int> varnos) {
  return h.varPutCv(ds, source, varnos);
}
inline int hostVarPutE(Host& h, DsHandle ds) { return h.varPutE(ds); }
inline int hostRowPut(Host& h, DsHandle ds) { return h.rowPut(ds); }
inline int hostDsAdd(Host& h, DsHandle ds) { return h.dsAdd(ds); }

inline PoolHandle hostPoolCreate(Host& h, std::size_t initial, std::size_t block, int flags) {
  return h.poolCreate(initial, block, flags);
}
inline void* hostPoolAlloc(Host& h, PoolHandle pool, std::size_t bytes) { return h.poolAlloc(pool, bytes); }
inline void hostPoolFree(Host& h, PoolHandle pool, void* block, long long bytes) {
  h.poolFree(pool, block, bytes);
}
inline void* hostRealloc(Host& h, PoolHandle pool, void* block, std::size_t oldBytes,
                         std::size_t newBytes, int flags) {
  return h.realloc(pool, block, oldBytes, newBytes, flags);
}
inline std::size_t hostPoolSize(const Host& h) { return h.poolSize(); }
inline long long hostMemDefault(Host& h) { return h.memDefault(); }
inline void hostMemMessage(Host& h, long long bytes) { h.memMessage(bytes); }

inline int hostSpoolOpen(Host& h, SpoolHandle* out) { return h.spoolOpen(out); }
inline int hostSpoolWrite(Host& h, SpoolHandle sp, const void* data, std::size_t bytes) {
  return h.spoolWrite(sp, data, bytes);
}
inline int hostSpoolRead(Host& h, SpoolHandle sp, void* data, std::size_t bytes) {
  return h.spoolRead(sp, data, bytes);
}
inline int hostSpoolPoint(Host& h, SpoolHandle sp, long long pos) { return h.spoolPoint(sp, pos); }
inline int hostSpoolClose(Host& h, SpoolHandle sp, int mode) { return h.spoolClose(sp, mode); }

inline void hostProgress(Host& h, long long seriesDone) { h.progress(seriesDone); }

// Ends the step with return code rc; doesn't return. Only valid inside hostRunStep.
[[noreturn]] void hostExit(Host& h, int rc, int zero = 0);

// Moves to the next BY group: nonzero while there is one. Reads the next
// record of the group: nonzero while there is one. A failure (a record out of
// order, a file that can't be read on) has already been reported by the host;
// it ends the step with rc 1012 (the input can't be used the way the run
// needs it), so the engine's loops only ever see "another" or "no more".
int hostByNext(Host& h, DsHandle ds);
int hostByGet(Host& h, DsHandle ds);

// Runs one step: calls body, takes the rc of its hostExit (0 when it simply
// returns), then h.stepEnd(rc). Out of memory in the C++ runtime becomes rc
// 1016, any other exception rc 2000, each after an internal-error message.
// Returns rc.
int hostRunStep(Host& h, const std::function<void()>& body);

}  // namespace qvt
