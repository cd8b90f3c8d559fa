// Reading a table of a SQLite library: see sqlite_engine.hpp for the rules.
#include <algorithm>
#include <array>

#include "host/dsname.hpp"
#include "host/host_msgs.hpp"
#include "host/sqlite_db.hpp"
#include "host/csv_cell.hpp"
#include "host/sqlite_engine.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

bool isTemporal(CellKind k) {
  return k == CellKind::Date || k == CellKind::DateTime || k == CellKind::Time;
}

// What the first pass learns of one column.
struct Column {
  SqlDecl decl = SqlDecl::None;
  bool forced = false;                    // the kind comes from the declared type or the format
  CellKind kind = CellKind::Missing;      // so far: Missing while only missing cells were seen
  std::array<long long, 6> firstRecord{};  // first record of each kind of cell, 0 none
  bool storedNumber = false;              // a cell stored as INTEGER or REAL
  std::size_t width = 0;
};

class SqliteReader final : public DsReader {
 public:
  SqliteReader(const DsLocation& loc, int busyMs) : loc_(loc), busyMs_(busyMs) {}

  int open(DsDiag& d, std::vector<DsDiag>& notes);
  const std::vector<VarInfo>& vars() const override { return vars_; }
  long long nobs() const override { return nobs_; }
  const std::string& label() const override { return label_; }
  int next(DsRow& row, DsDiag& d) override;

 private:
  int sqlFailure(int rc, DsDiag& d);
  int columns(const std::vector<SqlColumnMeta>& meta, DsDiag& d);
  int survey(DsDiag& d);
  int surveyCell(std::size_t i, long long record, DsDiag& d);
  std::string_view text(std::size_t i) const;
  int mixed(std::size_t i, long long record, CellKind cellKind, std::string_view cell, CellKind earlier, DsDiag& d);
  int clash(std::size_t i, long long record, std::string_view cell, CellKind want, DsDiag& d);

  DsLocation loc_;
  int busyMs_;
  SqlDb db_;
  SqlStmt sel_;
  std::vector<VarInfo> vars_;
  std::vector<Column> cols_;
  long long nobs_ = 0;
  long long record_ = 0;
  std::string label_;
};

int SqliteReader::sqlFailure(int rc, DsDiag& d) {
  if (sqlIsBusy(rc)) {
    d = DsDiag{kMsgSqlBusyRead, {loc_.display, loc_.path, static_cast<long long>(busyMs_)}, Severity::Error};
    return kHostIoError;
  }
  d = DsDiag{kMsgSqlReadFailed, {loc_.display, loc_.path, std::string(sqlite3_errmsg(db_.get()))}, Severity::Error};
  return kHostIoError;
}

std::string_view SqliteReader::text(std::size_t i) const {
  const int c = static_cast<int>(i);
  const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(sel_.get(), c));
  return p ? std::string_view(p, static_cast<std::size_t>(sqlite3_column_bytes(sel_.get(), c))) : std::string_view();
}

int SqliteReader::mixed(std::size_t i, long long record, CellKind cellKind, std::string_view cell,
                        CellKind earlier, DsDiag& d) {
  const long long at = cols_[i].firstRecord[static_cast<std::size_t>(earlier)];
  d = DsDiag{kMsgSqlMixed,
             {loc_.display, vars_[i].name, record, std::string(kindName(cellKind)), std::string(cell),
              std::string(kindName(earlier)), at},
             Severity::Error};
  return kHostDataError;
}

int SqliteReader::clash(std::size_t i, long long record, std::string_view cell, CellKind want, DsDiag& d) {
  d = DsDiag{kMsgSqlClash, {loc_.display, vars_[i].name, record, std::string(cell), std::string(kindName(want))},
             Severity::Error};
  return kHostDataError;
}

// Names, declared types and what qvt_columns says fix each column's start.
int SqliteReader::columns(const std::vector<SqlColumnMeta>& meta, DsDiag& d) {
  const int n = sqlite3_column_count(sel_.get());
  vars_.assign(static_cast<std::size_t>(n), VarInfo{});
  cols_.assign(static_cast<std::size_t>(n), Column{});
  for (int c = 0; c < n; ++c) {
    const auto i = static_cast<std::size_t>(c);
    const char* name = sqlite3_column_name(sel_.get(), c);
    VarInfo& v = vars_[i];
    v.name = name ? name : "";
    bool dup = false;
    for (std::size_t k = 0; k < i; ++k) dup = dup || equalsNoCase(vars_[k].name, v.name);
    if (v.name.empty() || v.name.size() > 32 || dup) {
      d = DsDiag{kMsgSqlBadName, {loc_.display, static_cast<long long>(c + 1), v.name}, Severity::Error};
      return kHostDataError;
    }
    Column& col = cols_[i];
    col.decl = sqlDeclClass(sqlite3_column_decltype(sel_.get(), c));
    std::string format;
    for (const SqlColumnMeta& m : meta) {
      if (!m.name.empty() && equalsNoCase(m.name, v.name)) {
        v.label = m.label;
        format = m.format;
      }
    }
    const CellKind fk = csvFormatKind(format);
    if (!format.empty() && isTemporal(fk)) {
      col.forced = true;
      col.kind = fk;
    } else if (col.decl == SqlDecl::Text) {
      col.forced = true;
      col.kind = CellKind::Text;
    } else if (col.decl == SqlDecl::Date || col.decl == SqlDecl::DateTime || col.decl == SqlDecl::Time) {
      col.forced = true;
      col.kind = col.decl == SqlDecl::Date ? CellKind::Date
                 : col.decl == SqlDecl::DateTime ? CellKind::DateTime : CellKind::Time;
    } else if (col.decl == SqlDecl::Number && !format.empty()) {
      col.forced = true;
      col.kind = CellKind::Number;
    }
    v.format = format;
  }
  return 0;
}

// One cell of the first pass: its kind joined with the column's, a clash
// with a fixed kind or a mixture reported.
int SqliteReader::surveyCell(std::size_t i, long long record, DsDiag& d) {
  Column& col = cols_[i];
  const int type = sqlite3_column_type(sel_.get(), static_cast<int>(i));
  auto seen = [&](CellKind k) {
    long long& first = col.firstRecord[static_cast<std::size_t>(k)];
    if (first == 0) first = record;
  };
  switch (type) {
    case SQLITE_NULL:
      return 0;
    case SQLITE_BLOB:
      d = DsDiag{kMsgSqlBlob, {loc_.display, vars_[i].name, record}, Severity::Error};
      return kHostDataError;
    case SQLITE_INTEGER:
    case SQLITE_FLOAT: {
      seen(CellKind::Number);
      col.storedNumber = true;
      if (col.forced) {
        // Only a declared TEXT column could hold one, and SQLite turns
        // numbers into text there; kept as a guard of that rule.
        if (col.kind == CellKind::Text) return mixed(i, record, CellKind::Number, text(i), CellKind::Text, d);
        return 0;
      }
      if (col.kind == CellKind::Missing || col.kind == CellKind::Number) {
        col.kind = CellKind::Number;
        return 0;
      }
      return mixed(i, record, CellKind::Number, text(i), col.kind, d);
    }
    default:
      break;
  }
  const std::string_view s = text(i);
  if (utf8ValidPrefix(s) != s.size()) {
    d = DsDiag{kMsgSqlBadUtf8, {loc_.display, vars_[i].name, record}, Severity::Error};
    return kHostDataError;
  }
  if (s.size() > col.width) col.width = s.size();
  double v = 0;
  if (col.forced) {
    if (col.kind != CellKind::Text && !csvParseAs(s, col.kind, &v)) return clash(i, record, s, col.kind, d);
    return 0;
  }
  const CellKind k = csvClassify(s, &v);
  if (k == CellKind::Missing) return 0;
  seen(k);
  if (k == CellKind::Text && col.decl == SqlDecl::Number) return clash(i, record, s, CellKind::Number, d);
  const CellKind joined = csvJoinKinds(col.kind, k);
  if (joined == CellKind::Text && k != col.kind) {
    // Kinds of text alone make a character column, as in a CSV file; beside
    // stored numbers, or in a numeric column, they are a mixture.
    if (col.storedNumber) return mixed(i, record, k, s, CellKind::Number, d);
    if (col.decl == SqlDecl::Number) return mixed(i, record, k, s, col.kind, d);
  }
  col.kind = joined;
  return 0;
}

int SqliteReader::survey(DsDiag& d) {
  const std::size_t n = cols_.size();
  long long record = 0;
  int rc;
  while ((rc = sqlite3_step(sel_.get())) == SQLITE_ROW) {
    ++record;
    for (std::size_t i = 0; i < n; ++i)
      if (const int r = surveyCell(i, record, d); r != 0) return r;
  }
  if (rc != SQLITE_DONE) return sqlFailure(rc, d);
  nobs_ = record;
  for (std::size_t i = 0; i < n; ++i) {
    Column& col = cols_[i];
    VarInfo& v = vars_[i];
    if (col.kind == CellKind::Text) {
      v.type = VarType::Character;
      v.length = static_cast<int>(std::max<std::size_t>(col.width, 1));
      continue;
    }
    if (col.kind == CellKind::Missing) col.kind = CellKind::Number;
    v.type = VarType::Numeric;
    v.length = 8;
    if (v.format.empty()) {
      if (col.kind == CellKind::Date) v.format = "DATE9.";
      else if (col.kind == CellKind::DateTime) v.format = "DATETIME19.";
      else if (col.kind == CellKind::Time) v.format = "TIME8.";
    }
  }
  return 0;
}

int SqliteReader::open(DsDiag& d, std::vector<DsDiag>& notes) {
  std::string why;
  if (sqlOpen(loc_.path, SQLITE_OPEN_READONLY, busyMs_, &db_, &why) != SQLITE_OK) {
    d = DsDiag{kMsgSqlCantOpen, {loc_.path, why}, Severity::Error};
    return kHostIoError;
  }
  // One read transaction over both passes: they see the same records.
  if (const int rc = sqlExec(db_.get(), "BEGIN"); rc != SQLITE_OK) return sqlFailure(rc, d);
  std::string table;
  bool isTable = false;
  const int found = sqlFindTable(db_.get(), "main", loc_.member, &table, &isTable);
  if (found < 0) {
    if (!sqlIsBusy(-found)) {  // a file that is no database shows here
      d = DsDiag{kMsgSqlCantOpen, {loc_.path, std::string(sqlite3_errmsg(db_.get()))}, Severity::Error};
      return kHostIoError;
    }
    return sqlFailure(-found, d);
  }
  if (found == 0) {
    d = DsDiag{kMsgSqlNoTable, {loc_.display, loc_.path, loc_.member}, Severity::Error};
    return kHostNotFound;
  }
  std::vector<SqlColumnMeta> meta;
  if (const int rc = sqlReadMeta(db_.get(), table, &meta, &why); rc != SQLITE_OK) {
    if (rc != SQLITE_ERROR) return sqlFailure(rc, d);
    notes.push_back(DsDiag{kMsgSqlBadMeta, {loc_.path, why}, Severity::Warning});
    meta.clear();
  }
  for (const SqlColumnMeta& m : meta)
    if (m.name.empty()) label_ = m.label;
  const std::string from = "SELECT * FROM main." + sqlQuote(table);
  if (int rc = sqlPrepare(db_.get(), from, &sel_); rc != SQLITE_OK) return sqlFailure(rc, d);
  if (isTable) {
    // Table order is rowid order; a column may take one of the rowid's
    // names, and a table WITHOUT ROWID has none (its key order stands).
    for (const char* alias : {"rowid", "_rowid_", "oid"}) {
      bool taken = false;
      for (int c = 0; c < sqlite3_column_count(sel_.get()); ++c)
        taken = taken || equalsNoCase(sqlite3_column_name(sel_.get(), c), alias);
      if (taken) continue;
      SqlStmt ordered;
      if (sqlPrepare(db_.get(), from + " ORDER BY " + alias, &ordered) == SQLITE_OK) sel_ = std::move(ordered);
      break;
    }
  }
  if (const int r = columns(meta, d); r != 0) return r;
  if (const int r = survey(d); r != 0) return r;
  if (nobs_ == 0) notes.push_back(DsDiag{kMsgSqlNoRecords, {loc_.display}, Severity::Note});
  sqlite3_reset(sel_.get());
  return 0;
}

int SqliteReader::next(DsRow& row, DsDiag& d) {
  const int rc = sqlite3_step(sel_.get());
  if (rc == SQLITE_DONE) return 0;
  if (rc != SQLITE_ROW) return sqlFailure(rc, d);
  ++record_;
  const std::size_t n = vars_.size();
  if (row.num.size() != n) row.resize(n);
  for (std::size_t i = 0; i < n; ++i) {
    const int c = static_cast<int>(i);
    const int type = sqlite3_column_type(sel_.get(), c);
    const CellKind kind = cols_[i].kind;
    if (kind == CellKind::Text) {
      if (type == SQLITE_NULL) row.text[i].clear();
      else if (type == SQLITE_TEXT) row.text[i].assign(text(i));
      else return mixed(i, record_, CellKind::Number, text(i), CellKind::Text, d);  // the survey saw none
      continue;
    }
    switch (type) {
      case SQLITE_NULL: row.num[i] = kMissing; break;
      case SQLITE_INTEGER:
      case SQLITE_FLOAT: row.num[i] = sqlite3_column_double(sel_.get(), c); break;
      case SQLITE_TEXT:
        if (!csvParseAs(text(i), kind, &row.num[i])) return clash(i, record_, text(i), kind, d);
        break;
      default:
        d = DsDiag{kMsgSqlBlob, {loc_.display, vars_[i].name, record_}, Severity::Error};
        return kHostDataError;
    }
  }
  return 1;
}

}  // namespace

std::unique_ptr<DsReader> sqliteOpenReader(const DsLocation& loc, int busyMs, DsDiag& diag,
                                           std::vector<DsDiag>& notes) {
  auto r = std::make_unique<SqliteReader>(loc, busyMs);
  if (r->open(diag, notes) != 0) return nullptr;
  return r;
}

}  // namespace qvt
