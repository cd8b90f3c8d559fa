// The SQLite engine: a library is a database file, a member is a table (or,
// for reading, a view) in it; labels and formats live in the table
// qvt_columns(member, name, label, format), with a row whose name is empty
// for the data set's label.
//
// Reading gives what the CSV engine gives for the same cells. A column's
// type comes, in this order, from a date, datetime or time format in
// qvt_columns; from its declared type (TEXT, CHAR or CLOB: character; DATE,
// DATETIME or TIMESTAMP, TIME: that kind of ISO text; INTEGER, REAL and the
// other numeric names: numbers); or, for a column without a declared type,
// from its cells as in a CSV file. Stored numbers are numbers; NULL is the
// missing value (blank text for character); a text cell is read as a CSV
// cell is (".A" a special missing value, "2024-03-31" a date value). A column
// whose cells are of two kinds (stored numbers beside words, dates beside
// numbers) is refused with a message naming both records, never guessed.
// Reading runs one prepared statement twice inside one read transaction (a
// snapshot): a pass that finds the kinds, widths and record count, then the
// records, in rowid order for a table with a rowid.
//
// Writing stages the records in a private temporary database; commit copies
// them into the library inside one write transaction that replaces the
// table and its qvt_columns rows together, so that a step that fails or is
// killed leaves the earlier table and its labels as they were. Numbers are
// REAL (SQLite keeps a zero without its sign), values with a date, datetime
// or time format ISO text in a column of that declared type, characters
// TEXT; the ordinary missing value is NULL, a special one the text ".A".
//
// A lock held by another connection is waited for up to busyMs, then
// reported; nothing is changed.
#pragma once

#include <memory>
#include <string>

#include "host/dsengine.hpp"

namespace qvt {

// Host messages (group 900) of the SQLite engine and of the record-write
// test hook. Arguments beside each.
enum SqliteMsg : int {
  kMsgSqlCantOpen = 100,    // (database, reason)
  kMsgSqlNoFolder = 101,    // (folder, database, library)
  kMsgSqlNoFile = 102,      // (data set, database)
  kMsgSqlNoTable = 103,     // (data set, database, table)
  kMsgSqlBusyRead = 104,    // (data set, database, milliseconds)
  kMsgSqlBusyWrite = 105,   // (data set, database, milliseconds)
  kMsgSqlReadFailed = 106,  // (data set, database, reason)
  kMsgSqlWriteFailed = 107, // (data set, database, reason)
  kMsgSqlBadName = 108,     // (data set, column number, name)
  kMsgSqlMixed = 109,       // (data set, column, record, kind, cell, earlier kind, earlier record)
  kMsgSqlClash = 110,       // (data set, column, record, cell, kind)
  kMsgSqlBlob = 111,        // (data set, column, record)
  kMsgSqlBadUtf8 = 112,     // (data set, column, record)
  kMsgSqlBadMeta = 113,     // (database, reason)
  kMsgSqlNoRecords = 114,   // (data set)
  kMsgSqlReserved = 115,    // (data set, table)
  kMsgSqlNoColumns = 116,   // (data set)
  kMsgRowWriteHook = 119,   // (data set, record)
};

class SqliteEngine final : public DsEngine {
 public:
  explicit SqliteEngine(int busyMs = 5000) : busyMs_(busyMs) {}

  // Checks a library assignment: the database's folder exists and, when the
  // file exists, it is a SQLite database. 0, or -1 with diag filled.
  static int checkLibrary(const std::string& lib, const std::string& path, int busyMs, DsDiag& diag);

  DsLocation locate(const std::string& lib, const std::string& where,
                    const std::string& member) const override;
  bool exists(const DsLocation& loc) const override;
  DsDiag missing(const DsLocation& loc) const override;
  std::unique_ptr<DsReader> openRead(const DsLocation& loc, DsDiag& diag,
                                     std::vector<DsDiag>& notes) override;
  std::unique_ptr<DsWriter> openWrite(const DsLocation& loc, DsDiag& diag) override;

 private:
  int busyMs_;
};

// The reader and the writer, made by the engine.
std::unique_ptr<DsReader> sqliteOpenReader(const DsLocation& loc, int busyMs, DsDiag& diag,
                                           std::vector<DsDiag>& notes);
std::unique_ptr<DsWriter> sqliteOpenWriter(const DsLocation& loc, int busyMs, DsDiag& diag);

}  // namespace qvt
