#include "host/sqlite_db.hpp"

#include <cstring>

#include "host/dsname.hpp"

namespace qvt {

int sqlOpen(const std::string& path, int flags, int busyMs, SqlDb* out, std::string* why) {
  sqlite3* raw = nullptr;
  int rc = sqlite3_open_v2(path.c_str(), &raw, flags, nullptr);
  SqlDb db(raw);  // closed on every way out, also when the open failed
  if (rc == SQLITE_OK) rc = sqlite3_extended_result_codes(raw, 1);
  if (rc == SQLITE_OK) rc = sqlite3_busy_timeout(raw, busyMs);
  if (rc != SQLITE_OK) {
    *why = raw ? sqlite3_errmsg(raw) : sqlite3_errstr(rc);
    return rc;
  }
  *out = std::move(db);
  return SQLITE_OK;
}

int sqlPrepare(sqlite3* db, std::string_view sql, SqlStmt* out) {
  sqlite3_stmt* s = nullptr;
  const int rc = sqlite3_prepare_v2(db, sql.data(), static_cast<int>(sql.size()), &s, nullptr);
  out->reset(s);
  return rc;
}

int sqlExec(sqlite3* db, const std::string& sql) {
  return sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr);
}

bool sqlIsBusy(int rc) noexcept {
  const int primary = rc & 0xFF;
  return primary == SQLITE_BUSY || primary == SQLITE_LOCKED;
}

std::string sqlQuote(std::string_view name) {
  std::string q;
  q.reserve(name.size() + 2);
  q += '"';
  for (const char c : name) {
    if (c == '"') q += '"';
    q += c;
  }
  q += '"';
  return q;
}

namespace {

bool contains(std::string_view upper, std::string_view part) noexcept {
  return upper.find(part) != std::string_view::npos;
}

}  // namespace

SqlDecl sqlDeclClass(const char* declared) noexcept {
  if (!declared || !*declared) return SqlDecl::None;
  const std::string t = upperAscii(declared);
  if (t == "DATE") return SqlDecl::Date;
  if (t == "DATETIME" || t == "TIMESTAMP") return SqlDecl::DateTime;
  if (t == "TIME") return SqlDecl::Time;
  // SQLite's order of the affinity rules: INT first, then text, then blob.
  if (contains(t, "INT")) return SqlDecl::Number;
  if (contains(t, "CHAR") || contains(t, "CLOB") || contains(t, "TEXT")) return SqlDecl::Text;
  if (contains(t, "BLOB")) return SqlDecl::None;
  return SqlDecl::Number;
}

const char* sqlDeclName(CellKind kind) noexcept {
  switch (kind) {
    case CellKind::Text: return "TEXT";
    case CellKind::Date: return "DATE";
    case CellKind::DateTime: return "DATETIME";
    case CellKind::Time: return "TIME";
    default: return "REAL";
  }
}

int sqlFindTable(sqlite3* db, std::string_view schema, std::string_view name, std::string* stored,
                 bool* isTable) {
  SqlStmt s;
  const std::string sql = "SELECT type, name FROM " + sqlQuote(schema) +
                          ".sqlite_master WHERE type IN ('table','view') AND name = ?1 COLLATE NOCASE";
  int rc = sqlPrepare(db, sql, &s);
  if (rc != SQLITE_OK) return -rc;
  sqlite3_bind_text(s.get(), 1, name.data(), static_cast<int>(name.size()), SQLITE_TRANSIENT);
  rc = sqlite3_step(s.get());
  if (rc == SQLITE_DONE) return 0;
  if (rc != SQLITE_ROW) return -rc;
  *isTable = std::strcmp(reinterpret_cast<const char*>(sqlite3_column_text(s.get(), 0)), "table") == 0;
  *stored = reinterpret_cast<const char*>(sqlite3_column_text(s.get(), 1));
  return 1;
}

int sqlReadMeta(sqlite3* db, std::string_view member, std::vector<SqlColumnMeta>* out, std::string* why) {
  out->clear();
  std::string stored;
  bool isTable = false;
  const int found = sqlFindTable(db, "main", kSqlMetaTable, &stored, &isTable);
  if (found < 0) return -found;
  if (found == 0) return SQLITE_OK;
  SqlStmt s;
  int rc = sqlPrepare(db,
                      "SELECT name, label, format FROM " + sqlQuote(kSqlMetaTable) +
                          " WHERE member = ?1 COLLATE NOCASE",
                      &s);
  if (sqlIsBusy(rc)) return rc;
  if (rc != SQLITE_OK) {
    *why = sqlite3_errmsg(db);
    return SQLITE_ERROR;
  }
  sqlite3_bind_text(s.get(), 1, member.data(), static_cast<int>(member.size()), SQLITE_TRANSIENT);
  auto text = [&](int col) {
    const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(s.get(), col));
    return p ? std::string(p, static_cast<std::size_t>(sqlite3_column_bytes(s.get(), col))) : std::string();
  };
  while ((rc = sqlite3_step(s.get())) == SQLITE_ROW) out->push_back({text(0), text(1), text(2)});
  return rc == SQLITE_DONE ? SQLITE_OK : rc;
}

}  // namespace qvt
