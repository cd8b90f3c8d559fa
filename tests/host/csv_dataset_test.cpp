// CSV data sets through the process host: writing, reading back bit for bit,
// type inference, the side file, the end of the step, the default input.
#include "host_test_util.hpp"

namespace qvt {
namespace {

using namespace testing;
using testing::Table;  // not the plot table of qvt

TEST(CsvDataSet, ReadWriteReadIsBitExact) {
  HostFixture f;
  Table want = awkwardTable();
  for (int c = 0; c < 3; ++c) want[c].num.back() = -0.0;  // a CSV file keeps the sign of zero
  f.commit("lib.first", want, "Awkward values");
  ASSERT_TRUE(f.dir.exists("first.csv.meta.json"));
  const Table back = readTable(*f.host, "lib.first");
  want[4].info.length = 31;  // the widest text, in bytes
  expectSame(back, want);

  // Once more through a second file: the second text equals the first.
  f.commit("lib.second", back, "Awkward values");
  EXPECT_EQ(f.dir.read("second.csv"), f.dir.read("first.csv"));
  DsFacts facts;
  readTable(*f.host, "lib.second", &facts);
  EXPECT_EQ(facts.label, "Awkward values");
  EXPECT_EQ(facts.nobs, 12);
  EXPECT_EQ(facts.display, "LIB.second");
  f.host->stepEnd(0);
}

// ISO text in the file; a one-column data set whose only cell is missing
// must not become a blank line, which the reader would skip.
TEST(CsvDataSet, TextInTheFile) {
  HostFixture f;
  const Table t{{numVar("d", "E8601DA."), {23466.0, kMissing}},
                {numVar("s", "E8601DT."), {2027511000.0, kMissing}},
                {numVar("n"), {skMissVal('A'), kMissing}}};
  writeTable(*f.host, "lib.iso", t);
  writeTable(*f.host, "lib.one", Table{t[2]});
  f.host->stepEnd(0);
  EXPECT_EQ(f.dir.read("iso.csv"), "d,s,n\n2024-03-31,2024-03-31T13:30:00,.A\n,,\n");
  DsFacts facts;
  EXPECT_EQ(readTable(*f.host, "lib.one", &facts)[0].num.size(), 2u);
  EXPECT_EQ(facts.nobs, 2);
  f.host->stepEnd(0);
}

// Without a side file the types come from the cells.
TEST(CsvDataSet, TypeInference) {
  HostFixture f;
  f.dir.write("infer.csv",
              "num,date,stamp,clock,mixed,allmiss,text,dates_and_numbers,code\n"
              "1,2024-01-01,2024-01-01T00:00:00,13:30:00,1,,a,2024-01-01,007\n"
              ".,,2024-01-01 12:00,.,2024-01-01,.,bb,5,010\n"
              ".A,2024-02-01,,7:05,x,.Z,ccc,,1\n");
  DsHandle in;
  ASSERT_EQ(f.host->dsOpen("lib.infer", DsMode::Input, &in), 0) << f.log.str();
  std::vector<std::string> got;
  for (const VarInfo& v : f.host->dsVars(in)) got.push_back(describe(v));
  EXPECT_EQ(got, (std::vector<std::string>{"num N8 ", "date N8 DATE9.", "stamp N8 DATETIME19.", "clock N8 TIME8.",
                                           "mixed C10 ", "allmiss N8 ", "text C3 ", "dates_and_numbers C10 ",
                                           "code N8 "}));
  f.host->stepEnd(0);
}

// The side file keeps a character column of digits character, and lets a
// date column hold the plain number of a date with a fraction.
TEST(CsvDataSet, SideFileWinsOverInference) {
  HostFixture f;
  f.dir.write("zip.csv", "zip,day\n007,2024-03-31\n010,23466.5\n");
  f.dir.write("zip.csv.meta.json",
              R"({"label":"Codes","variables":[{"name":"ZIP","type":"character","length":5},)"
              R"({"name":"day","type":"numeric","format":"DATE9.","label":"Day"}]})");
  const Table t = readTable(*f.host, "lib.zip");
  ASSERT_EQ(t.size(), 2u) << f.log.str();
  EXPECT_EQ(t[0].info.type, VarType::Character);
  EXPECT_EQ(t[1].info.label, "Day");
  EXPECT_EQ(t[0].text, (std::vector<std::string>{"007", "010"}));
  EXPECT_EQ(t[1].num, (std::vector<double>{23466.0, 23466.5}));
  // A character variable can't be bound to a number.
  DsHandle in;
  ASSERT_EQ(f.host->dsOpen("lib.zip", DsMode::Input, &in), 0);
  double wrong = 0;
  EXPECT_EQ(f.host->varGetD(in, 1, &wrong), kHostBadArgument);
  f.host->stepEnd(0);
}

// A step that fails, or a host that goes away mid-step, leaves the earlier
// file as it was, and no temporary file; a step ended by hostExit below
// 1000 commits (one BY group failed: the others' rows stand).
TEST(CsvDataSet, EndOfTheStepDecidesTheOutput) {
  for (const int rc : {1008, 1016, 2000, -1, 108}) {
    SCOPED_TRACE(rc);
    HostFixture f;
    f.dir.write("keep.csv", "x\n1\n");
    if (rc == 108) {
      EXPECT_EQ(hostRunStep(*f.host, [&] {
                  writeTable(*f.host, "lib.keep", awkwardTable());
                  hostExit(*f.host, 108);
                }),
                108);
      EXPECT_NE(f.dir.read("keep.csv"), "x\n1\n");
      EXPECT_EQ(f.dir.entries().size(), 2u);  // keep.csv and its side file
      continue;
    }
    writeTable(*f.host, "lib.keep", awkwardTable());
    if (rc < 0) f.host.reset();  // as if the run stopped before the end of the step
    else f.host->stepEnd(rc);
    EXPECT_EQ(f.dir.read("keep.csv"), "x\n1\n");
    EXPECT_EQ(f.dir.entries(), std::vector<std::string>{"keep.csv"});
    if (rc > 0) {
      EXPECT_EQ(f.numbers(), std::vector<int>{20});
    }
  }
}

TEST(CsvDataSet, DefaultInputIsTheLastOutputOfAnEarlierStep) {
  HostFixture f;
  DsHandle in;
  EXPECT_EQ(f.host->dsOpen("", DsMode::Input, &in), kHostNoInput);
  EXPECT_TRUE(f.log.str().empty());  // the engine words "no input" itself
  writeTable(*f.host, "lib.a", awkwardTable());
  EXPECT_EQ(f.host->dsOpen("_last_", DsMode::Input, &in), kHostNoInput);  // not this step's
  f.host->stepEnd(0);
  ASSERT_EQ(f.host->dsOpen("", DsMode::Input, &in), 0);
  DsFacts facts;
  f.host->dsInfo(in, &facts);
  EXPECT_EQ(facts.member, "a");
  f.host->stepEnd(0);
}

TEST(CsvDataSet, NamesLibrariesAndDefinitions) {
  HostFixture f;
  f.dir.write("Sales.csv", "x\n1\n");
  DsHandle ds;
  EXPECT_EQ(f.host->dsOpen("lib.sales", DsMode::Input, &ds), 0);  // member names ignore case
  EXPECT_EQ(f.host->dsOpen("'" + f.dir.file("Sales.csv") + "'", DsMode::Input, &ds), 0);
  EXPECT_EQ(f.host->dsOpen("nolib.sales", DsMode::Input, &ds), kHostNotFound);
  EXPECT_EQ(f.host->dsOpen("lib.1bad", DsMode::Input, &ds), kHostBadArgument);
  EXPECT_EQ(f.host->dsOpen("lib.none", DsMode::Input, &ds), kHostNotFound);
  EXPECT_EQ(f.host->dsOpen("'/nonexistent/qvt/x.csv'", DsMode::Output, &ds), kHostIoError);
  EXPECT_FALSE(ds);
  EXPECT_EQ(f.numbers(), (std::vector<int>{11, 10, 12, 17}));
  f.host->stepEnd(0);

  DsHandle out;
  ASSERT_EQ(f.host->dsOpen("lib.o", DsMode::Output, &out), 0);
  double x = 1;
  ASSERT_EQ(f.host->varPutD(out, numVar("x"), &x), 0);
  EXPECT_EQ(f.host->varPutD(out, numVar("X"), &x), kHostBadArgument);
  EXPECT_EQ(f.host->rowPut(out), kHostWrongState);  // before the end of the definitions
  ASSERT_EQ(f.host->varPutE(out), 0);
  EXPECT_EQ(f.host->varPutD(out, numVar("y"), &x), kHostWrongState);
  EXPECT_EQ(f.host->dsAdd(out), kHostWrongState);  // no row taken
  EXPECT_EQ(f.numbers(), (std::vector<int>{11, 10, 12, 17, 52, 53}));
  f.host->stepEnd(0);
}

}  // namespace
}  // namespace qvt
