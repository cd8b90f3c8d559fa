// Data set engines behind the host: how records of one kind of library (a
// folder of CSV files, later a SQLite database) are read and written. The
// host resolves a data set name to a library and hands the engine a
// location; the engine knows nothing of BY groups, bindings or messages
// beyond the diagnostic it fills on failure.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/host.hpp"
#include "host/host_msgs.hpp"

namespace qvt {

// A failure: a group-900 message number and its arguments, logged by the host.
struct DsDiag {
  int number = 0;
  std::vector<MsgArg> args;
  Severity severity = Severity::Error;  // a Note (e.g. a header without records) is not a failure
};

// One record: a cell per variable, numeric values in num and character values
// in text, both indexed by 0-based variable number (the other one unused).
struct DsRow {
  std::vector<double> num;
  std::vector<std::string> text;
  void resize(std::size_t n) {
    num.resize(n);
    text.resize(n);
  }
};

// Where a data set lives.
struct DsLocation {
  std::string lib;      // upper case; empty for a quoted path
  std::string member;   // as written
  std::string path;     // the file (CSV) or database (SQLite)
  std::string display;  // for messages: LIB.MEMBER or the path
};

class DsReader {
 public:
  virtual ~DsReader() = default;
  virtual const std::vector<VarInfo>& vars() const = 0;
  virtual long long nobs() const = 0;  // -1 when unknown
  virtual const std::string& label() const = 0;
  // 1 with the next record in row (sized to the variables), 0 at the end,
  // negative with diag filled on failure.
  virtual int next(DsRow& row, DsDiag& diag) = 0;
};

class DsWriter {
 public:
  virtual ~DsWriter() = default;  // a writer destroyed before commit discards its output
  // The variables, once, before the first record.
  virtual int begin(const std::vector<VarInfo>& vars, DsDiag& diag) = 0;
  virtual int append(const DsRow& row, DsDiag& diag) = 0;
  // Puts the output in place under its name, with its label: 0; 1 when the
  // data is in place but diag has a warning to log; negative on failure.
  virtual int commit(std::string_view label, DsDiag& diag) = 0;
  virtual void discard() noexcept = 0;
  virtual long long records() const noexcept = 0;
};

class DsEngine {
 public:
  virtual ~DsEngine() = default;
  // The location of a member of a library kept at `where` (a folder, a database file).
  virtual DsLocation locate(const std::string& lib, const std::string& where,
                            const std::string& member) const = 0;
  virtual bool exists(const DsLocation& loc) const = 0;
  // Why an input is absent, for a location that exists() denies: by default
  // the file is missing; an engine of databases says which table.
  virtual DsDiag missing(const DsLocation& loc) const {
    return DsDiag{kMsgNoDataSet, {loc.display, loc.path}, Severity::Error};
  }
  // Null with diag filled on failure; notes and warnings that don't stop the
  // reading (an unusable side file, a file without records) go to notes.
  virtual std::unique_ptr<DsReader> openRead(const DsLocation& loc, DsDiag& diag,
                                             std::vector<DsDiag>& notes) = 0;
  virtual std::unique_ptr<DsWriter> openWrite(const DsLocation& loc, DsDiag& diag) = 0;
};

}  // namespace qvt
