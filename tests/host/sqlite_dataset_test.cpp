// Data sets in a SQLite library through the process host: bit-exact round
// trips, the same variables and values as the CSV engine for the same cells,
// outputs that fail or are cut off leave the earlier table, names that need
// quoting, and the failures a database can give (missing table, mixed
// kinds, another connection's lock). The database is inspected with the
// sqlite3 C API directly, independently of the engine.
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/csv_cell.hpp"
#include "host_test_util.hpp"

namespace qvt {
namespace {

using namespace testing;
using testing::Table;  // not the plot table of qvt
using Rows = std::vector<std::string>;

// A second, independent connection to the database.
class RawDb {
 public:
  explicit RawDb(const std::string& path) { sqlite3_open(path.c_str(), &db_); }
  ~RawDb() { sqlite3_close(db_); }
  RawDb(const RawDb&) = delete;
  RawDb& operator=(const RawDb&) = delete;
  int exec(const std::string& sql) { return sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr); }
  // The rows of a query, cells as text ("NULL" for a null), joined by '|'.
  Rows rows(const std::string& sql) {
    Rows out;
    const auto add = [](void* to, int n, char** cell, char**) {
      std::string r;
      for (int c = 0; c < n; ++c) r += (c ? "|" : "") + std::string(cell[c] ? cell[c] : "NULL");
      static_cast<Rows*>(to)->push_back(r);
      return 0;
    };
    if (sqlite3_exec(db_, sql.c_str(), add, &out, nullptr) != SQLITE_OK) out.push_back(sqlite3_errmsg(db_));
    return out;
  }

 private:
  sqlite3* db_ = nullptr;
};

struct Fixture : HostFixture {
  explicit Fixture(long long failRowAt = 0, int busyMs = 5000)
      : HostFixture(true, [&](HostConfig& c) {
          c.failRowWriteAt = failRowAt;
          c.sqliteBusyMs = busyMs;
        }) {}
};

TEST(SqliteDataSet, WriteReadWriteReadIsBitExact) {
  Fixture f;
  const Table t = awkwardTable();
  f.commit("lib.first", t, "Awkward values");
  DsFacts facts;
  const Table back = readTable(*f.host, "lib.first", &facts);
  EXPECT_EQ(facts.label, "Awkward values");
  Table want = t;
  want[4].info.length = 31;  // the widest text, in bytes
  expectSame(back, want);

  f.commit("lib.second", back, facts.label);
  expectSame(readTable(*f.host, "lib.second"), want);
  f.host->stepEnd(0);

  // The storage, seen by SQLite itself: numbers REAL, missing NULL, special
  // missing and ISO values as text, the declared types, the side table.
  RawDb raw(f.db);
  EXPECT_EQ(raw.rows("SELECT typeof(plain), typeof(date), date, stamp, clock FROM second ORDER BY rowid LIMIT 2"),
            (Rows{"real|text|2024-03-31|2024-03-31T13:30:00|13:30:00",
                  "real|text|1582-01-01|2024-03-31T13:30:00.125|00:00:00"}));
  EXPECT_EQ(raw.rows("SELECT plain FROM second WHERE rowid BETWEEN 8 AND 11"),
            (Rows{"NULL", ".A", "._", ".Z"}));
  EXPECT_EQ(raw.rows("SELECT typeof(date), date FROM second WHERE rowid = 5"),
            Rows{"real|23466.5"});  // no ISO form for a fraction of a day
  EXPECT_EQ(raw.rows("SELECT type FROM pragma_table_info('second')"),
            (Rows{"REAL", "DATE", "DATETIME", "TIME", "TEXT"}));
  EXPECT_EQ(raw.rows("SELECT name, label, format FROM qvt_columns WHERE member = 'second' ORDER BY rowid"),
            (Rows{"|Awkward values|", "plain|A plain number|", "date||DATE9.", "stamp||DATETIME19.",
                  "clock||TIME8.", "say \"what\"; DROP TABLE x;--|Some text|"}));
  EXPECT_EQ(raw.rows("PRAGMA integrity_check"), Rows{"ok"});

  // SQLite keeps a REAL zero without its sign: -0 reads back as +0, the one
  // value that does not survive the trip.
  f.commit("lib.z", Table{{numVar("x"), {-0.0, -1.0}}});
  const Table z = readTable(*f.host, "lib.z");
  ASSERT_EQ(z.size(), 1u);
  EXPECT_EQ(bits(z[0].num[0]), bits(0.0));
  EXPECT_EQ(z[0].num[1], -1.0);
}

// The cells of a CSV file read by both engines: as the CSV engine reads the
// file, and from a table that holds the same cells, loaded as text without
// declared types (the way a plain import makes it) or as REAL numbers.
TEST(SqliteDataSet, SameVariablesAndValuesAsCsv) {
  const std::vector<std::vector<std::string>> cells = {
      {"num", "date", "stamp", "clock", "word", "allmiss", "code", "mixed"},
      {"1.5", "2024-01-01", "2024-01-01T00:00:00", "13:30:00", "a", "", "007", "1"},
      {".", "", "2024-01-01 12:00", ".", "bb", ".", "010", "x"},
      {".A", "2024-02-01", "", "7:05", "c,\"c\"\nc", ".Z", "1", "2024-01-01"},
      {"-1e-3", "1960-01-01", "1959-12-31T23:59:59.5", "100:00:00", "", "", "2", "."}};
  Fixture f;
  std::string csv;
  for (const auto& line : cells) {
    for (std::size_t c = 0; c < line.size(); ++c) {
      if (c) csv += ',';
      csvAppendText(csv, line[c]);
    }
    csv += '\n';
  }
  f.dir.write("cells.csv", csv);
  const Table want = readTable(*f.host, "csv.cells");
  ASSERT_EQ(want.size(), 8u) << f.log.str();
  ASSERT_EQ(want[6].info.type, VarType::Numeric);  // "007" is a number when nothing says otherwise

  for (const bool typed : {false, true}) {
    SCOPED_TRACE(typed ? "REAL numbers" : "untyped text");
    // The same cells as SQL literals; numbers of the first column bare when typed.
    std::string sql = "DROP TABLE IF EXISTS cells; CREATE TABLE cells(";
    for (std::size_t c = 0; c < cells[0].size(); ++c)
      sql += (c ? ", " : "") + cells[0][c] + (typed && !c ? " REAL" : "");
    sql += "); INSERT INTO cells VALUES ";
    for (std::size_t r = 1; r < cells.size(); ++r) {
      for (std::size_t c = 0; c < cells[r].size(); ++c) {
        const std::string& v = cells[r][c];
        const bool bare = typed && c == 0 && (v.empty() || v[0] != '.');
        sql += std::string(c ? ", " : r > 1 ? "), (" : "(") + (bare ? (v.empty() ? "NULL" : v) : "'" + v + "'");
      }
    }
    ASSERT_EQ(RawDb(f.db).exec(sql + ")"), SQLITE_OK) << sql;
    expectSame(readTable(*f.host, "lib.cells"), want);
  }
}

// A writer cut off after two records, a step that failed, a host that went
// away and a process that died mid-step: the earlier table, its labels and
// the database stay as they were.
TEST(SqliteDataSet, UnfinishedOutputLeavesTheEarlierTable) {
  enum class How { RowHook, FailedStep, HostGone, Killed };
  for (const How how : {How::RowHook, How::FailedStep, How::HostGone, How::Killed}) {
    SCOPED_TRACE(static_cast<int>(how));
    Fixture f(how == How::RowHook ? 3 : 0);
    {
      RawDb raw(f.db);
      ASSERT_EQ(raw.exec("CREATE TABLE keep(x REAL); INSERT INTO keep VALUES (1), (2);"
                         "CREATE TABLE qvt_columns(member, name, label, format);"
                         "INSERT INTO qvt_columns VALUES ('keep', 'x', 'Old label', 'F8.2')"),
                SQLITE_OK);
    }
    if (how == How::Killed) {
      const pid_t pid = ::fork();
      ASSERT_GE(pid, 0);
      if (pid == 0) {
        writeTable(*f.host, "lib.keep", awkwardTable());
        ::_exit(0);  // no destructor, no step end: as if killed
      }
      int status = 0;
      ::waitpid(pid, &status, 0);
      EXPECT_TRUE(WIFEXITED(status));
    } else {
      writeTable(*f.host, "lib.keep", awkwardTable());
      if (how == How::RowHook) f.host->stepEnd(0);
      if (how == How::FailedStep) f.host->stepEnd(1012);
      if (how == How::HostGone) f.host.reset();
    }
    if (how == How::RowHook || how == How::FailedStep) {
      EXPECT_EQ(f.numbers(), (how == How::RowHook ? std::vector<int>{119, 20} : std::vector<int>{20}));
    }
    RawDb raw(f.db);
    EXPECT_EQ(raw.rows("PRAGMA integrity_check"), Rows{"ok"});
    EXPECT_EQ(raw.rows("SELECT x FROM keep ORDER BY rowid"), (Rows{"1.0", "2.0"}));
    EXPECT_EQ(raw.rows("SELECT * FROM qvt_columns"), Rows{"keep|x|Old label|F8.2"});
    EXPECT_EQ(raw.rows("SELECT count(*) FROM sqlite_master"), Rows{"2"});
  }
}

// Records come in rowid order whatever the insertion order, also when a
// column takes the name rowid; a table WITHOUT ROWID comes in key order, a
// view as it gives them. A BY variable out of that order is reported.
TEST(SqliteDataSet, TableOrderAndByCheck) {
  struct Case {
    const char* sql;
    std::vector<double> want;
  } cases[] = {
      {"CREATE TABLE t(k REAL, v REAL); CREATE INDEX i ON t(v, k);"
       "INSERT INTO t(rowid, k, v) VALUES (3, 3, 1), (1, 1, 3), (2, 2, 2)",
       {1, 2, 3}},
      {"CREATE TABLE t(rowid REAL, k REAL); INSERT INTO t(_rowid_, rowid, k) VALUES (2, 8, 2), (1, 9, 1)", {9, 8}},
      {"CREATE TABLE t(k REAL PRIMARY KEY, v) WITHOUT ROWID; INSERT INTO t VALUES (2, 'b'), (1, 'a')", {1, 2}},
      {"CREATE TABLE t0(k REAL); INSERT INTO t0 VALUES (1), (3), (2); CREATE VIEW t AS SELECT k FROM t0 WHERE k > 1",
       {3, 2}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.sql);
    Fixture f;
    RawDb(f.db).exec(c.sql);
    const Table t = readTable(*f.host, "lib.t");
    ASSERT_FALSE(t.empty()) << f.log.str();
    EXPECT_EQ(t[0].num, c.want);
  }
  Fixture f;
  RawDb(f.db).exec("CREATE TABLE t(g TEXT, x REAL); INSERT INTO t VALUES ('a', 1), ('b', 2), ('a', 3)");
  DsHandle in;
  ASSERT_EQ(f.host->dsOpen("lib.t", DsMode::Input, &in), 0);
  const ByVar by[] = {{1, false}};
  ASSERT_EQ(f.host->bySet(in, by, false), 0);
  ASSERT_EQ(f.host->byNext(in), 1);
  ASSERT_EQ(f.host->byGet(in), 1);
  ASSERT_EQ(f.host->byNext(in), 1);
  ASSERT_EQ(f.host->byGet(in), 1);
  EXPECT_EQ(f.host->byGet(in), kHostByOrder);
  EXPECT_EQ(f.numbers(), std::vector<int>{50});
}

// Tables that can't be read, each with its message; the database unchanged.
TEST(SqliteDataSet, UnreadableTables) {
  struct Case {
    const char* name;
    const char* sql;
    int rc;
    std::vector<int> msgs;
  } cases[] = {
      {"no table", "CREATE TABLE other(x)", kHostNotFound, {103}},
      {"text in REAL", "CREATE TABLE t(x REAL); INSERT INTO t VALUES (1), ('abc')", kHostDataError, {110}},
      {"word beside number", "CREATE TABLE t(x); INSERT INTO t VALUES (1.5), ('abc')", kHostDataError, {109}},
      {"number after words", "CREATE TABLE t(x); INSERT INTO t VALUES ('abc'), (2)", kHostDataError, {109}},
      {"date beside number", "CREATE TABLE t(x); INSERT INTO t VALUES (1.5), ('2024-01-01')", kHostDataError, {109}},
      {"date beside time", "CREATE TABLE t(x NUMERIC); INSERT INTO t VALUES ('2024-01-01'), ('12:00:00')",
       kHostDataError, {109}},
      {"not a date", "CREATE TABLE t(d DATE); INSERT INTO t VALUES ('2024-01-01'), ('soon')", kHostDataError, {110}},
      {"format not met", "CREATE TABLE t(d TEXT); INSERT INTO t VALUES ('2024-02-30');"
                         "CREATE TABLE qvt_columns(member, name, label, format);"
                         "INSERT INTO qvt_columns VALUES ('t', 'd', '', 'DATE9.')",
       kHostDataError, {110}},
      {"blob", "CREATE TABLE t(x); INSERT INTO t VALUES (x'00ff')", kHostDataError, {111}},
      {"bad utf-8", "CREATE TABLE t(x TEXT); INSERT INTO t VALUES (CAST(x'61ff' AS TEXT))", kHostDataError, {112}},
      {"long name", "CREATE TABLE t(abcdefghijabcdefghijabcdefghijabc)", kHostDataError, {108}},
      {"empty name", "CREATE TABLE t(\"\")", kHostDataError, {108}},
      {"side table of another layout", "CREATE TABLE t(x); CREATE TABLE qvt_columns(a, b)", 0, {113, 114}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Fixture f;
    ASSERT_EQ(RawDb(f.db).exec(c.sql), SQLITE_OK);
    DsHandle in;
    EXPECT_EQ(f.host->dsOpen("lib.t", DsMode::Input, &in), c.rc);
    EXPECT_EQ(f.numbers(), c.msgs);
    f.host->stepEnd(0);
  }
}

// Libraries and names: the file is made by the first output; a missing
// file, a folder that isn't there, a file that is no database, a reserved
// member name.
TEST(SqliteDataSet, LibrariesAndNames) {
  Fixture f;
  DsHandle ds;
  EXPECT_EQ(f.host->dsOpen("lib.t", DsMode::Input, &ds), kHostNotFound);
  EXPECT_EQ(f.host->dsOpen("lib.qvt_columns", DsMode::Output, &ds), kHostIoError);
  EXPECT_EQ(f.host->dsOpen("lib.SQLite_x", DsMode::Output, &ds), kHostIoError);
  EXPECT_EQ(f.numbers(), (std::vector<int>{102, 115, 115}));
  EXPECT_FALSE(f.dir.exists("lib.db"));
  f.commit("lib.T", Table{{numVar("x"), {1.0}}});
  EXPECT_TRUE(f.dir.exists("lib.db"));
  EXPECT_EQ(readTable(*f.host, "lib.t")[0].num, std::vector<double>{1.0});  // names ignore case
  f.host->stepEnd(0);

  f.dir.write("junk.db", std::string(4096, 'x'));
  std::ostringstream log;
  ProcessHost bad(jsonlConfig(
      log, {"a=sqlite:" + f.dir.file("junk.db"), "b=sqlite:" + f.dir.file("none/x.db"), "c=sqlite:"}));
  EXPECT_EQ(bad.init(), kHostBadArgument);
  EXPECT_EQ(hostNumbers(log.str()), (std::vector<int>{100, 101, 15}));
}

// Another connection's locks: a write lock held past the busy timeout stops
// the output at the step's end, an exclusive lock stops reading; the earlier
// table stays, and once the lock is gone the same output goes through.
TEST(SqliteDataSet, LockedDatabase) {
  Fixture f(0, 50);
  const Table t{{numVar("x"), {5.0, 6.0}}};
  RawDb other(f.db);
  ASSERT_EQ(other.exec("CREATE TABLE t(x REAL); INSERT INTO t VALUES (1)"), SQLITE_OK);
  ASSERT_EQ(other.exec("BEGIN IMMEDIATE; INSERT INTO t VALUES (2)"), SQLITE_OK);
  f.commit("lib.t", t);
  EXPECT_EQ(f.numbers(), std::vector<int>{105});
  ASSERT_EQ(other.exec("COMMIT"), SQLITE_OK);
  EXPECT_EQ(other.rows("SELECT x FROM t"), (Rows{"1.0", "2.0"}));

  ASSERT_EQ(other.exec("BEGIN EXCLUSIVE"), SQLITE_OK);
  DsHandle in;
  EXPECT_EQ(f.host->dsOpen("lib.t", DsMode::Input, &in), kHostDataError);
  EXPECT_EQ(f.numbers(), (std::vector<int>{105, 104}));
  ASSERT_EQ(other.exec("COMMIT"), SQLITE_OK);

  f.commit("lib.t", t);
  EXPECT_EQ(f.numbers(), (std::vector<int>{105, 104, 21}));
  EXPECT_EQ(other.rows("SELECT x FROM t"), (Rows{"5.0", "6.0"}));
}

// Reading and writing the same database in one step: the input's read lock
// is let go before the output is committed.
TEST(SqliteDataSet, InputAndOutputInOneDatabase) {
  Fixture f;
  RawDb(f.db).exec("CREATE TABLE a(x REAL); INSERT INTO a VALUES (1), (2), (3)");
  DsHandle in, out;
  ASSERT_EQ(f.host->dsOpen("lib.a", DsMode::Input, &in), 0);
  double x = 0;
  ASSERT_EQ(f.host->varGetD(in, 1, &x), 0);
  ASSERT_EQ(f.host->dsOpen("lib.b", DsMode::Output, &out), 0);
  ASSERT_EQ(f.host->varPutD(out, numVar("twice"), &x), 0);
  ASSERT_EQ(f.host->varPutE(out), 0);
  ASSERT_EQ(f.host->byNext(in), 1);
  ASSERT_EQ(f.host->byGet(in), 1);  // the reader stays in the middle of the table
  f.host->rowGet(in);
  x *= 2;
  ASSERT_EQ(f.host->rowPut(out), 0);
  ASSERT_EQ(f.host->dsAdd(out), 0);
  f.host->stepEnd(0);
  EXPECT_EQ(f.numbers(), std::vector<int>{21}) << f.log.str();
  EXPECT_EQ(RawDb(f.db).rows("SELECT twice FROM b"), Rows{"2.0"});
}

}  // namespace
}  // namespace qvt
