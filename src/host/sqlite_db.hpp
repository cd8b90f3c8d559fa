// SQLite handles and the small pieces of SQL that the SQLite engine's reader
// and writer share: owning handles, identifier quoting, the classes of
// declared column types, and the side table of labels and formats.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/csv_cell.hpp"

namespace qvt {

struct SqlDbClose {
  void operator()(sqlite3* db) const noexcept { sqlite3_close_v2(db); }
};
struct SqlStmtFinalize {
  void operator()(sqlite3_stmt* s) const noexcept { sqlite3_finalize(s); }
};
using SqlDb = std::unique_ptr<sqlite3, SqlDbClose>;
using SqlStmt = std::unique_ptr<sqlite3_stmt, SqlStmtFinalize>;

// The table of labels and formats: one row per member and variable, and a
// row with an empty variable name for the data set's own label.
inline constexpr std::string_view kSqlMetaTable = "qvt_columns";

// Opens a database with extended result codes and a busy timeout. SQLITE_OK,
// or the result code with the reason in *why (the connection is then closed).
int sqlOpen(const std::string& path, int flags, int busyMs, SqlDb* out, std::string* why);

// Prepares one statement; the result code of SQLite.
int sqlPrepare(sqlite3* db, std::string_view sql, SqlStmt* out);

// Runs statements that return no rows; the result code of SQLite.
int sqlExec(sqlite3* db, const std::string& sql);

// True for the results of a lock that another connection held past the busy timeout.
bool sqlIsBusy(int rc) noexcept;

// The identifier as a quoted SQL name: "a ""b""" for a "b". Every table and
// column name goes through this; none is ever spliced into SQL unquoted.
std::string sqlQuote(std::string_view name);

// What a column's declared type says of its values. Text, Number and None
// follow SQLite's affinity rules (TEXT, CHAR or CLOB; INT, REAL, FLOA, DOUB
// or any other name; no name or BLOB); DATE, DATETIME, TIMESTAMP and TIME
// name the kinds of ISO text the column holds.
enum class SqlDecl : std::uint8_t { None, Text, Number, Date, DateTime, Time };
SqlDecl sqlDeclClass(const char* declared) noexcept;

// The declared type the writer gives a column of a kind: TEXT, REAL, DATE,
// DATETIME or TIME.
const char* sqlDeclName(CellKind kind) noexcept;

// Table or view `name` in the schema (names compare without regard to case):
// 1 with its name as stored and whether it is a table, 0 when absent, or a
// negative SQLite result code (its negation).
int sqlFindTable(sqlite3* db, std::string_view schema, std::string_view name, std::string* stored,
                 bool* isTable);

struct SqlColumnMeta {
  std::string name;  // empty: the data set's label
  std::string label;
  std::string format;
};
// The rows of the side table for a member. 0 (also when there is no side
// table), SQLITE_ERROR with the reason in *why when the table is there but
// has another layout, or another SQLite result code.
int sqlReadMeta(sqlite3* db, std::string_view member, std::vector<SqlColumnMeta>* out, std::string* why);

}  // namespace qvt
