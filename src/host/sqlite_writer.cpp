// Writing a table of a SQLite library: see sqlite_engine.hpp for the rules.
#include <cmath>
#include <filesystem>

#include "host/dsname.hpp"
#include "host/host_msgs.hpp"
#include "host/sqlite_db.hpp"
#include "host/sqlite_engine.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

namespace fs = std::filesystem;

constexpr const char* kDest = "qvt_dest";  // the library's schema name while committing

class SqliteWriter final : public DsWriter {
 public:
  SqliteWriter(DsLocation loc, int busyMs) : loc_(std::move(loc)), busyMs_(busyMs) {}
  ~SqliteWriter() override { discard(); }

  int open(DsDiag& d);
  int begin(const std::vector<VarInfo>& vars, DsDiag& d) override;
  int append(const DsRow& row, DsDiag& d) override;
  int commit(std::string_view label, DsDiag& d) override;
  void discard() noexcept override;
  long long records() const noexcept override { return records_; }

 private:
  int failure(int rc, DsDiag& d);
  int replace(std::string_view label);

  DsLocation loc_;
  int busyMs_;
  SqlDb stage_;  // a private temporary database, deleted when closed
  SqlStmt insert_;
  std::vector<VarInfo> vars_;
  std::vector<CellKind> kinds_;
  std::string cell_;
  long long records_ = 0;
  bool done_ = false;
};

int SqliteWriter::failure(int rc, DsDiag& d) {
  if (sqlIsBusy(rc)) {
    d = DsDiag{kMsgSqlBusyWrite, {loc_.display, loc_.path, static_cast<long long>(busyMs_)}, Severity::Error};
  } else {
    d = DsDiag{kMsgSqlWriteFailed, {loc_.display, loc_.path, std::string(sqlite3_errmsg(stage_.get()))},
               Severity::Error};
  }
  return kHostIoError;
}

int SqliteWriter::open(DsDiag& d) {
  if (equalsNoCase(loc_.member, kSqlMetaTable) || upperAscii(loc_.member).rfind("SQLITE_", 0) == 0) {
    d = DsDiag{kMsgSqlReserved, {loc_.display, loc_.member}, Severity::Error};
    return kHostBadArgument;
  }
  // A file that is there but no database is said now, not at the step's end.
  if (SqliteEngine::checkLibrary(loc_.lib, loc_.path, busyMs_, d) != 0) return kHostIoError;
  std::string why;
  if (const int rc = sqlOpen("", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, busyMs_, &stage_, &why);
      rc != SQLITE_OK) {
    d = DsDiag{kMsgSqlWriteFailed, {loc_.display, loc_.path, why}, Severity::Error};
    return kHostIoError;
  }
  // The stage is private and thrown away on any failure: no journal needed.
  // A larger page cache keeps a stage of some hundred thousand records in
  // memory, so that the copy at commit reads no pages back from the disk.
  if (const int rc = sqlExec(stage_.get(),
                             "PRAGMA main.journal_mode=OFF; PRAGMA main.synchronous=OFF;"
                             "PRAGMA main.cache_size=-65536");
      rc != SQLITE_OK)
    return failure(rc, d);
  return 0;
}

std::string columnList(const std::vector<VarInfo>& vars, const std::vector<CellKind>& kinds) {
  std::string s = "(";
  for (std::size_t i = 0; i < vars.size(); ++i) {
    if (i) s += ", ";
    s += sqlQuote(vars[i].name);
    s += ' ';
    s += sqlDeclName(kinds[i]);
  }
  return s + ")";
}

int SqliteWriter::begin(const std::vector<VarInfo>& vars, DsDiag& d) {
  if (!stage_ || insert_) return kHostWrongState;
  if (vars.empty()) {
    d = DsDiag{kMsgSqlNoColumns, {loc_.display}, Severity::Error};
    return kHostBadArgument;
  }
  vars_ = vars;
  kinds_.clear();
  for (const VarInfo& v : vars_)
    kinds_.push_back(v.type == VarType::Character ? CellKind::Text : csvFormatKind(v.format));
  // The stage has the library table's declared types, so that SQLite's type
  // conversions happen once, here, and the copy moves records unchanged.
  std::string sql = "CREATE TABLE main.stage" + columnList(vars_, kinds_) + "; BEGIN";
  if (const int rc = sqlExec(stage_.get(), sql); rc != SQLITE_OK) return failure(rc, d);
  sql = "INSERT INTO main.stage VALUES (";
  for (std::size_t i = 0; i < vars_.size(); ++i) sql += i ? ",?" : "?";
  sql += ")";
  if (const int rc = sqlPrepare(stage_.get(), sql, &insert_); rc != SQLITE_OK) return failure(rc, d);
  return 0;
}

int SqliteWriter::append(const DsRow& row, DsDiag& d) {
  if (!insert_) return kHostWrongState;
  sqlite3_stmt* s = insert_.get();
  for (std::size_t i = 0; i < vars_.size(); ++i) {
    const int p = static_cast<int>(i + 1);
    const CellKind kind = kinds_[i];
    if (kind == CellKind::Text) {
      sqlite3_bind_text(s, p, row.text[i].data(), static_cast<int>(row.text[i].size()), SQLITE_STATIC);
      continue;
    }
    const double v = row.num[i];
    if (wzmis(v)) {
      // A special missing value as its text ".A"; the ordinary one (and any
      // unnamed pattern) as NULL.
      const char c = missCode(v);
      if (c == '_' || (c >= 'A' && c <= 'Z')) {
        const char t[2] = {'.', c};
        sqlite3_bind_text(s, p, t, 2, SQLITE_TRANSIENT);
      } else {
        sqlite3_bind_null(s, p);
      }
      continue;
    }
    if (kind != CellKind::Number && std::isfinite(v)) {
      // A date, datetime or time as ISO text when it has such a form; a date
      // with a fraction of a day stays a number.
      cell_.clear();
      csvAppendNumber(cell_, v, kind);
      double back = 0;
      if (csvClassify(cell_, &back) == kind) {
        sqlite3_bind_text(s, p, cell_.data(), static_cast<int>(cell_.size()), SQLITE_TRANSIENT);
        continue;
      }
    }
    sqlite3_bind_double(s, p, v);
  }
  const int rc = sqlite3_step(s);
  sqlite3_reset(s);
  if (rc != SQLITE_DONE) return failure(rc, d);
  ++records_;
  return 0;
}

// Inside the library's write transaction: the new table in place of the old,
// and its rows of qvt_columns in place of the old rows.
int SqliteWriter::replace(std::string_view label) {
  sqlite3* db = stage_.get();
  const std::string dest = sqlQuote(kDest);
  const std::string table = dest + "." + sqlQuote(loc_.member);
  const std::string meta = dest + "." + sqlQuote(kSqlMetaTable);
  std::string sql = "CREATE TABLE IF NOT EXISTS " + meta +
                    " (member TEXT NOT NULL COLLATE NOCASE, name TEXT NOT NULL COLLATE NOCASE,"
                    " label TEXT, format TEXT, PRIMARY KEY (member, name));"
                    "DROP TABLE IF EXISTS " + table + ";"
                    "CREATE TABLE " + table + columnList(vars_, kinds_) + ";"
                    "INSERT INTO " + table + " SELECT * FROM main.stage;";
  if (const int rc = sqlExec(db, sql); rc != SQLITE_OK) return rc;
  SqlStmt del, ins;
  int rc = sqlPrepare(db, "DELETE FROM " + meta + " WHERE member = ?1 COLLATE NOCASE", &del);
  if (rc != SQLITE_OK) return rc;
  sqlite3_bind_text(del.get(), 1, loc_.member.data(), static_cast<int>(loc_.member.size()), SQLITE_STATIC);
  if ((rc = sqlite3_step(del.get())) != SQLITE_DONE) return rc;
  rc = sqlPrepare(db, "INSERT INTO " + meta + " (member, name, label, format) VALUES (?1, ?2, ?3, ?4)", &ins);
  if (rc != SQLITE_OK) return rc;
  auto row = [&](std::string_view name, std::string_view lab, std::string_view fmt) {
    sqlite3_stmt* s = ins.get();
    sqlite3_bind_text(s, 1, loc_.member.data(), static_cast<int>(loc_.member.size()), SQLITE_STATIC);
    sqlite3_bind_text(s, 2, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
    sqlite3_bind_text(s, 3, lab.data(), static_cast<int>(lab.size()), SQLITE_STATIC);
    sqlite3_bind_text(s, 4, fmt.data(), static_cast<int>(fmt.size()), SQLITE_STATIC);
    const int r = sqlite3_step(s);
    sqlite3_reset(s);
    return r == SQLITE_DONE ? SQLITE_OK : r;
  };
  if ((rc = row("", label, "")) != SQLITE_OK) return rc;
  for (const VarInfo& v : vars_)
    if ((rc = row(v.name, v.label, v.format)) != SQLITE_OK) return rc;
  return SQLITE_OK;
}

int SqliteWriter::commit(std::string_view label, DsDiag& d) {
  if (!insert_ || done_) return kHostWrongState;
  insert_.reset();
  sqlite3* db = stage_.get();
  if (const int rc = sqlExec(db, "COMMIT"); rc != SQLITE_OK) return failure(rc, d);
  std::error_code ec;
  const bool existed = fs::exists(loc_.path, ec);
  SqlStmt attach;
  int rc = sqlPrepare(db, "ATTACH DATABASE ?1 AS " + sqlQuote(kDest), &attach);
  if (rc == SQLITE_OK) {
    sqlite3_bind_text(attach.get(), 1, loc_.path.data(), static_cast<int>(loc_.path.size()), SQLITE_STATIC);
    rc = sqlite3_step(attach.get());
    if (rc == SQLITE_DONE) rc = SQLITE_OK;
  }
  if (rc != SQLITE_OK) {
    d = DsDiag{kMsgSqlCantOpen, {loc_.path, std::string(sqlite3_errmsg(db))}, Severity::Error};
    return kHostIoError;
  }
  // IMMEDIATE: the write lock is taken (or waited for) before anything is
  // read, so the transaction can't fail half way for a lock.
  rc = sqlExec(db, "BEGIN IMMEDIATE");
  if (rc == SQLITE_OK) rc = replace(label);
  if (rc == SQLITE_OK) rc = sqlExec(db, "COMMIT");
  if (rc != SQLITE_OK) {
    failure(rc, d);  // the reason before ROLLBACK replaces it
    sqlExec(db, "ROLLBACK");
    sqlExec(db, "DETACH DATABASE " + sqlQuote(kDest));
    // A database file that this output made and left empty goes again.
    if (!existed && fs::file_size(loc_.path, ec) == 0 && !ec) fs::remove(loc_.path, ec);
    return kHostIoError;
  }
  sqlExec(db, "DETACH DATABASE " + sqlQuote(kDest));
  done_ = true;
  stage_.reset();
  return 0;
}

void SqliteWriter::discard() noexcept {
  insert_.reset();
  stage_.reset();  // the temporary database goes with its connection
  done_ = true;
}

}  // namespace

std::unique_ptr<DsWriter> sqliteOpenWriter(const DsLocation& loc, int busyMs, DsDiag& diag) {
  auto w = std::make_unique<SqliteWriter>(loc, busyMs);
  if (w->open(diag) != 0) return nullptr;
  return w;
}

}  // namespace qvt
