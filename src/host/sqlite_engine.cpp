#include "host/sqlite_engine.hpp"

#include <filesystem>

#include "host/sqlite_db.hpp"

namespace qvt {

namespace fs = std::filesystem;

int SqliteEngine::checkLibrary(const std::string& lib, const std::string& path, int busyMs, DsDiag& diag) {
  std::error_code ec;
  const fs::path folder = fs::path(path).parent_path();
  if (path.empty() || (!folder.empty() && !fs::is_directory(folder, ec))) {
    diag = DsDiag{kMsgSqlNoFolder, {folder.string(), path, lib}, Severity::Error};
    return -1;
  }
  if (!fs::exists(path, ec)) return 0;  // made by the first output
  SqlDb db;
  std::string why;
  int rc = sqlOpen(path, SQLITE_OPEN_READONLY, busyMs, &db, &why);
  if (rc == SQLITE_OK) {
    // Opening reads nothing; the schema is where a file that is no database shows.
    rc = sqlExec(db.get(), "SELECT count(*) FROM main.sqlite_master");
    if (rc != SQLITE_OK) why = sqlite3_errmsg(db.get());
  }
  if (rc != SQLITE_OK && !sqlIsBusy(rc)) {  // a lock now says nothing of later
    diag = DsDiag{kMsgSqlCantOpen, {path, why}, Severity::Error};
    return -1;
  }
  return 0;
}

DsLocation SqliteEngine::locate(const std::string& lib, const std::string& where,
                                const std::string& member) const {
  DsLocation loc;
  loc.lib = lib;
  loc.member = member;
  loc.path = where;
  loc.display = lib + "." + member;
  return loc;
}

bool SqliteEngine::exists(const DsLocation& loc) const {
  std::error_code ec;
  if (!fs::is_regular_file(loc.path, ec)) return false;
  SqlDb db;
  std::string why, stored;
  bool isTable = false;
  if (sqlOpen(loc.path, SQLITE_OPEN_READONLY, busyMs_, &db, &why) != SQLITE_OK) return true;
  // Only a certain "no such table" is absence: a database that can't be read
  // now is left to openRead, which says why.
  return sqlFindTable(db.get(), "main", loc.member, &stored, &isTable) != 0;
}

DsDiag SqliteEngine::missing(const DsLocation& loc) const {
  std::error_code ec;
  if (!fs::is_regular_file(loc.path, ec)) return DsDiag{kMsgSqlNoFile, {loc.display, loc.path}, Severity::Error};
  return DsDiag{kMsgSqlNoTable, {loc.display, loc.path, loc.member}, Severity::Error};
}

std::unique_ptr<DsReader> SqliteEngine::openRead(const DsLocation& loc, DsDiag& diag,
                                                 std::vector<DsDiag>& notes) {
  return sqliteOpenReader(loc, busyMs_, diag, notes);
}

std::unique_ptr<DsWriter> SqliteEngine::openWrite(const DsLocation& loc, DsDiag& diag) {
  return sqliteOpenWriter(loc, busyMs_, diag);
}

}  // namespace qvt
