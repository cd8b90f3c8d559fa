// Data sets through the process host: writing, reading back bit for bit,
// type inference, the side file, the end of the step, the default input.

#include "host_test_util.hpp"

namespace qvt {
namespace {

using testing::TempDir;

std::uint64_t bits(double x) { return std::bit_cast<std::uint64_t>(x); }

struct Fixture {
  TempDir dir;
  std::ostringstream log;
  std::unique_ptr<ProcessHost> host;
  Fixture() { reset(); }
  void reset() {
    HostConfig cfg;
    cfg.libs = {"lib=" + dir.path()};
    cfg.logFormat = LogFormat::Jsonl;
    cfg.logStream = &log;
    host = std::make_unique<ProcessHost>(cfg);
    EXPECT_EQ(host->init(), 0);
  }
};

// The columns of the round trip: a value of every awkward kind.
struct Table {
  std::vector<double> plain, date, datetime, time;
  std::vector<std::string> text;
};

Table awkwardTable() {
  const double inf = std::numeric_limits<double>::infinity();
  Table t;
  t.plain = {0.1, -0.0, 4.9406564584124654e-324, 2.2250738585072009e-308, 0.30000000000000004,
             123456789012345.67, 1.7976931348623157e308, -inf, kMissing, skMissVal('A'),
             skMissVal('_'), skMissVal('Z')};
  t.date = {23466.0, -138061.0, 6589335.0, 0.0, -0.0, 23466.5, kMissing, skMissVal('B'),
            -1.0, 14669.0, 1.0, 2.0};
  t.datetime = {2027511000.0, 2027511000.125, -1.0, 0.1, kMissing, skMissVal('C'),
                -0.0, 1e-9, 86400.0 * 6589335.0, 3.0, 4.0, 5.0};
  t.time = {48600.0, 0.0, 360000.5, 86399.999999999, kMissing, skMissVal('D'),
            -5.0, 1e-300, 7.0, 8.0, 9.0, 10.0};
  t.text = {"plain", "with,comma", "with \"quotes\"", "two\nlines", "crlf\r\nend",
            "caf\xC3\xA9 \xE2\x82\xAC", "", ".", "007", "  lead", "12", "."};
  return t;
}

void writeTable(ProcessHost& h, const std::string& name, const Table& t) {
  DsHandle out;
  ASSERT_EQ(h.dsOpen(name, DsMode::Output, &out), 0);
  double p = 0, d = 0, dt = 0, tm = 0;
  std::string tx;
  ASSERT_EQ(h.varPutD(out, VarInfo{"plain", "A plain number", VarType::Numeric, 8, ""}, &p), 0);
  ASSERT_EQ(h.varPutD(out, VarInfo{"date", "", VarType::Numeric, 8, "DATE9."}, &d), 0);
  ASSERT_EQ(h.varPutD(out, VarInfo{"stamp", "", VarType::Numeric, 8, "DATETIME19."}, &dt), 0);
  ASSERT_EQ(h.varPutD(out, VarInfo{"clock", "", VarType::Numeric, 8, "TIME8."}, &tm), 0);
  ASSERT_EQ(h.varPutT(out, VarInfo{"text", "Some text", VarType::Character, 20, ""}, &tx), 0);
  ASSERT_EQ(h.varPutE(out), 0);
  ASSERT_EQ(h.dsSetLabel(out, "Awkward values"), 0);
  for (std::size_t i = 0; i < t.plain.size(); ++i) {
    p = t.plain[i];
    d = t.date[i];
    dt = t.datetime[i];
    tm = t.time[i];
    tx = t.text[i];
    ASSERT_EQ(h.rowPut(out), 0);
    ASSERT_EQ(h.dsAdd(out), 0);
  }
  ASSERT_EQ(h.dsClose(out), 0);
}

Table readTable(ProcessHost& h, const std::string& name, std::vector<VarInfo>* vars = nullptr) {
  Table t;
  DsHandle in;
  EXPECT_EQ(h.dsOpen(name, DsMode::Input, &in), 0);
  if (!in) return t;
  if (vars) *vars = std::vector<VarInfo>(h.dsVars(in).begin(), h.dsVars(in).end());
  double p = 0, d = 0, dt = 0, tm = 0;
  std::string tx;
  EXPECT_EQ(h.varGetD(in, h.varFind(in, "PLAIN"), &p), 0);
  EXPECT_EQ(h.varGetD(in, h.varFind(in, "date"), &d), 0);
  EXPECT_EQ(h.varGetD(in, h.varFind(in, "stamp"), &dt), 0);
  EXPECT_EQ(h.varGetD(in, h.varFind(in, "clock"), &tm), 0);
  EXPECT_EQ(h.varGetT(in, h.varFind(in, "text"), &tx), 0);
  while (h.byNext(in) == 1) {
    while (h.byGet(in) == 1) {
      EXPECT_EQ(h.rowGet(in), 0);
      t.plain.push_back(p);
      t.date.push_back(d);
      t.datetime.push_back(dt);
      t.time.push_back(tm);
      t.text.push_back(tx);
    }
  }
  h.dsClose(in);
  return t;
}

void expectSameBits(const std::vector<double>& a, const std::vector<double>& b, const char* what) {
  ASSERT_EQ(a.size(), b.size()) << what;
  for (std::size_t i = 0; i < a.size(); ++i)
    EXPECT_EQ(bits(a[i]), bits(b[i])) << what << " row " << i << ": " << a[i] << " vs " << b[i];
}

TEST(CsvDataSet, ReadWriteReadIsBitExact) {
  Fixture f;
  const Table t = awkwardTable();
  writeTable(*f.host, "lib.first", t);
  f.host->stepEnd(0);
  ASSERT_TRUE(f.dir.exists("first.csv"));
  ASSERT_TRUE(f.dir.exists("first.csv.meta.json"));

  std::vector<VarInfo> vars;
  const Table back = readTable(*f.host, "lib.first", &vars);
  expectSameBits(back.plain, t.plain, "plain");
  expectSameBits(back.date, t.date, "date");
  expectSameBits(back.datetime, t.datetime, "datetime");
  expectSameBits(back.time, t.time, "time");
  EXPECT_EQ(back.text, t.text);
  ASSERT_EQ(vars.size(), 5u);
  EXPECT_EQ(vars[0].label, "A plain number");
  EXPECT_EQ(vars[1].format, "DATE9.");
  EXPECT_EQ(vars[4].type, VarType::Character);

  // Once more through a second file: the second text equals the first.
  writeTable(*f.host, "lib.second", back);
  f.host->stepEnd(0);
  EXPECT_EQ(f.dir.read("second.csv"), f.dir.read("first.csv"));
  DsHandle in;
  ASSERT_EQ(f.host->dsOpen("lib.second", DsMode::Input, &in), 0);
  DsFacts facts;
  ASSERT_EQ(f.host->dsInfo(in, &facts), 0);
  EXPECT_EQ(facts.label, "Awkward values");
  EXPECT_EQ(facts.nobs, 12);
  EXPECT_EQ(facts.display, "LIB.second");
  f.host->stepEnd(0);
}

TEST(CsvDataSet, IsoTextInTheFile) {
  Fixture f;
  DsHandle out;
  ASSERT_EQ(f.host->dsOpen("lib.iso", DsMode::Output, &out), 0);
  double d = 23466.0, s = 2027511000.0, n = skMissVal('A');
  ASSERT_EQ(f.host->varPutD(out, VarInfo{"d", "", VarType::Numeric, 8, "E8601DA."}, &d), 0);
  ASSERT_EQ(f.host->varPutD(out, VarInfo{"s", "", VarType::Numeric, 8, "E8601DT."}, &s), 0);
  ASSERT_EQ(f.host->varPutD(out, VarInfo{"n", "", VarType::Numeric, 8, ""}, &n), 0);
  ASSERT_EQ(f.host->varPutE(out), 0);
  ASSERT_EQ(f.host->rowPut(out), 0);
  ASSERT_EQ(f.host->dsAdd(out), 0);
  f.host->stepEnd(0);
  EXPECT_EQ(f.dir.read("iso.csv"), "d,s,n\n2024-03-31,2024-03-31T13:30:00,.A\n");
}

// Without a side file the types come from the cells.
TEST(CsvDataSet, TypeInference) {
  Fixture f;
  f.dir.write("infer.csv",
              "num,date,stamp,clock,mixed,allmiss,text,dates_and_numbers,code\n"
              "1,2024-01-01,2024-01-01T00:00:00,13:30:00,1,,a,2024-01-01,007\n"
              ".,,2024-01-01 12:00,.,2024-01-01,.,bb,5,010\n"
              ".A,2024-02-01,,7:05,x,.Z,ccc,,1\n");
  DsHandle in;
  ASSERT_EQ(f.host->dsOpen("lib.infer", DsMode::Input, &in), 0) << f.log.str();
  struct Want {
    VarType type;
    int length;
    const char* format;
  } want[] = {{VarType::Numeric, 8, ""},          {VarType::Numeric, 8, "DATE9."},
              {VarType::Numeric, 8, "DATETIME19."}, {VarType::Numeric, 8, "TIME8."},
              {VarType::Character, 10, ""},       {VarType::Numeric, 8, ""},
              {VarType::Character, 3, ""},        {VarType::Character, 10, ""},
              {VarType::Numeric, 8, ""}};
  const auto vars = f.host->dsVars(in);
  ASSERT_EQ(vars.size(), std::size(want));
  for (std::size_t i = 0; i < vars.size(); ++i) {
    EXPECT_EQ(vars[i].type, want[i].type) << vars[i].name;
    EXPECT_EQ(vars[i].length, want[i].length) << vars[i].name;
    EXPECT_EQ(vars[i].format, want[i].format) << vars[i].name;
  }
  f.host->stepEnd(0);
}

// The side file keeps a character column of digits character, and lets a
// date column hold the plain number of a date with a fraction.
TEST(CsvDataSet, SideFileWinsOverInference) {
  Fixture f;
  f.dir.write("zip.csv", "zip,day\n007,2024-03-31\n010,23466.5\n");
  f.dir.write("zip.csv.meta.json",
              R"({"label":"Codes","variables":[{"name":"ZIP","type":"character","length":5},)"
              R"({"name":"day","type":"numeric","format":"DATE9.","label":"Day"}]})");
  DsHandle in;
  ASSERT_EQ(f.host->dsOpen("lib.zip", DsMode::Input, &in), 0) << f.log.str();
  const auto vars = f.host->dsVars(in);
  ASSERT_EQ(vars.size(), 2u);
  EXPECT_EQ(vars[0].type, VarType::Character);
  EXPECT_EQ(vars[1].label, "Day");
  std::string zip;
  double day = 0;
  ASSERT_EQ(f.host->varGetT(in, 1, &zip), 0);
  ASSERT_EQ(f.host->varGetD(in, 2, &day), 0);
  ASSERT_EQ(f.host->byNext(in), 1);
  ASSERT_EQ(f.host->byGet(in), 1);
  f.host->rowGet(in);
  EXPECT_EQ(zip, "007");
  EXPECT_EQ(day, 23466.0);
  ASSERT_EQ(f.host->byGet(in), 1);
  f.host->rowGet(in);
  EXPECT_EQ(zip, "010");
  EXPECT_EQ(day, 23466.5);
  // A character variable can't be bound to a number.
  double wrong = 0;
  EXPECT_EQ(f.host->varGetD(in, 1, &wrong), kHostBadArgument);
  f.host->stepEnd(0);
}

// A step that fails leaves the earlier file as it was, and no temporary file.
TEST(CsvDataSet, FailedStepLeavesTheOldFile) {
  for (const int rc : {1008, 1016, 2000}) {
    Fixture f;
    f.dir.write("keep.csv", "x\n1\n");
    writeTable(*f.host, "lib.keep", awkwardTable());
    f.host->stepEnd(rc);
    EXPECT_EQ(f.dir.read("keep.csv"), "x\n1\n") << rc;
    EXPECT_EQ(f.dir.entries(), std::vector<std::string>{"keep.csv"}) << rc;
    EXPECT_EQ(testing::hostNumbers(f.log.str()), std::vector<int>{20}) << f.log.str();
  }
}

TEST(CsvDataSet, StepThatEndsByHostExitCommitsBelow1000) {
  Fixture f;
  f.dir.write("out.csv", "x\n1\n");
  const int rc = hostRunStep(*f.host, [&] {
    writeTable(*f.host, "lib.out", awkwardTable());
    hostExit(*f.host, 108);  // one BY group failed: the others' rows stand
  });
  EXPECT_EQ(rc, 108);
  EXPECT_NE(f.dir.read("out.csv"), "x\n1\n");
  EXPECT_EQ(f.dir.entries().size(), 2u);  // out.csv and its side file
}

TEST(CsvDataSet, HostDestroyedMidStepLeavesTheOldFile) {
  Fixture f;
  f.dir.write("keep.csv", "x\n1\n");
  writeTable(*f.host, "lib.keep", awkwardTable());
  f.host.reset();  // as if the run stopped before the end of the step
  EXPECT_EQ(f.dir.read("keep.csv"), "x\n1\n");
  EXPECT_EQ(f.dir.entries(), std::vector<std::string>{"keep.csv"});
}

TEST(CsvDataSet, DefaultInputIsTheLastOutputOfAnEarlierStep) {
  Fixture f;
  DsHandle in;
  EXPECT_EQ(f.host->dsOpen("", DsMode::Input, &in), kHostNoInput);
  EXPECT_TRUE(f.log.str().empty());  // the engine words "no input" itself
  writeTable(*f.host, "lib.a", awkwardTable());
  DsHandle in2;
  EXPECT_EQ(f.host->dsOpen("_last_", DsMode::Input, &in2), kHostNoInput);  // not this step's
  f.host->stepEnd(0);
  ASSERT_EQ(f.host->dsOpen("", DsMode::Input, &in), 0);
  DsFacts facts;
  f.host->dsInfo(in, &facts);
  EXPECT_EQ(facts.member, "a");
  f.host->stepEnd(0);
}

TEST(CsvDataSet, NamesAndLibraries) {
  Fixture f;
  f.dir.write("Sales.csv", "x\n1\n");
  DsHandle ds;
  EXPECT_EQ(f.host->dsOpen("lib.sales", DsMode::Input, &ds), 0);  // member names ignore case
  EXPECT_EQ(f.host->dsOpen("'" + f.dir.file("Sales.csv") + "'", DsMode::Input, &ds), 0);
  EXPECT_EQ(f.host->dsOpen("nolib.sales", DsMode::Input, &ds), kHostNotFound);
  EXPECT_EQ(f.host->dsOpen("lib.1bad", DsMode::Input, &ds), kHostBadArgument);
  EXPECT_EQ(f.host->dsOpen("lib.none", DsMode::Input, &ds), kHostNotFound);
  EXPECT_EQ(f.host->dsOpen("'/nonexistent/qvt/x.csv'", DsMode::Output, &ds), kHostIoError);
  EXPECT_FALSE(ds);
  EXPECT_EQ(testing::hostNumbers(f.log.str()), (std::vector<int>{11, 10, 12, 17}));
  f.host->stepEnd(0);
}

TEST(CsvDataSet, OutputDefinitionsAreChecked) {
  Fixture f;
  DsHandle out;
  ASSERT_EQ(f.host->dsOpen("lib.o", DsMode::Output, &out), 0);
  double x = 1;
  ASSERT_EQ(f.host->varPutD(out, VarInfo{"x", "", VarType::Numeric, 8, ""}, &x), 0);
  EXPECT_EQ(f.host->varPutD(out, VarInfo{"X", "", VarType::Numeric, 8, ""}, &x), kHostBadArgument);
  EXPECT_EQ(f.host->rowPut(out), kHostWrongState);  // before the end of the definitions
  ASSERT_EQ(f.host->varPutE(out), 0);
  EXPECT_EQ(f.host->varPutD(out, VarInfo{"y", "", VarType::Numeric, 8, ""}, &x), kHostWrongState);
  EXPECT_EQ(f.host->dsAdd(out), kHostWrongState);  // no row taken
  EXPECT_EQ(testing::hostNumbers(f.log.str()), (std::vector<int>{52, 53}));
  f.host->stepEnd(0);
}

// A one-column data set whose only cell is missing must not become a blank
// line, which the reader would skip.
TEST(CsvDataSet, OneColumnOfMissingValues) {
  Fixture f;
  DsHandle out;
  ASSERT_EQ(f.host->dsOpen("lib.one", DsMode::Output, &out), 0);
  double x = kMissing;
  ASSERT_EQ(f.host->varPutD(out, VarInfo{"x", "", VarType::Numeric, 8, ""}, &x), 0);
  ASSERT_EQ(f.host->varPutE(out), 0);
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(f.host->rowPut(out), 0);
    ASSERT_EQ(f.host->dsAdd(out), 0);
  }
  f.host->stepEnd(0);
  DsHandle in;
  ASSERT_EQ(f.host->dsOpen("lib.one", DsMode::Input, &in), 0);
  DsFacts facts;
  f.host->dsInfo(in, &facts);
  EXPECT_EQ(facts.nobs, 3);
  f.host->stepEnd(0);
}

}  // namespace
}  // namespace qvt
