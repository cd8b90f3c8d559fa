// The log: text lines and JSON lines, severities, places, counts, options.
#include "host/log_sink.hpp"

#include "host_test_util.hpp"

namespace qvt {
namespace {

TEST(Log, JsonLinesCarryGroupNumberSeverityAndArgs) {
  const MsgArg args[] = {std::string("a.csv"), 17LL, 2.5, kMissing, std::string("caf\xC3\xA9")};
  const SourcePos at{"prog.qvt", 3, 15};
  auto j = nlohmann::json::parse(logJsonLine(900, 35, args, &at));
  // The text has the arguments in place.
  EXPECT_EQ(j.at("text").get<std::string>().rfind("a.csv, line 17: the record has 2.5 fields", 0), 0u);
  j.erase("text");
  EXPECT_EQ(j, nlohmann::json::parse(R"({"group": 900, "number": 35, "severity": "ERROR", "file": "prog.qvt",
                                         "line": 3, "col": 15, "args": ["a.csv", 17, 2.5, null, "café"]})"));
  // Still JSON with invalid UTF-8 in an argument.
  const MsgArg bad[] = {std::string("bad\xFF.csv"), std::string("x")};
  EXPECT_EQ(nlohmann::json::parse(logJsonLine(900, 16, bad, nullptr)).at("number"), 16);
  // Inside a BY group the line names it; outside, there is no "by" at all.
  EXPECT_EQ(nlohmann::json::parse(logJsonLine(900, 16, bad, nullptr, "g=b, s=1")).at("by"), "g=b, s=1");
  EXPECT_FALSE(nlohmann::json::parse(logJsonLine(900, 16, bad, nullptr)).contains("by"));
}

// A BY group of 199 'k' then an e-acute (two bytes) across the 200th byte:
// the line shows the 'k's and stops before the character.
const std::string kLongGroup = "g=" + std::string(197, 'k') + "\xC3\xA9" + std::string(50, 'z');
const std::string kLongLine =
    "NOTE: The file x.csv has a header but no records. (BY group g=" + std::string(197, 'k') + "...)";

TEST(Log, TextLines) {
  struct Case {
    int group, number;
    std::vector<MsgArg> args;
    const char* line;
    const char* by = "";
  };
  const Case cases[] = {
      {900, 38, {std::string("x.csv")}, "NOTE: The file x.csv has a header but no records."},
      {900, 36, {std::string("two\r\nlines.csv"), 4LL},
       "ERROR: two \n    lines.csv, line 4: a quoted field is not closed before the end of the "
       "file. Add the closing double quote."},
      {129, 5, {std::string("line 2, column 3"), std::string("x"), std::string("a 1x;\n  ^")},
       "ERROR: line 2, column 3: x is not a valid number.\n    a 1x;\n      ^"},
      {999, 999, {1LL}, "ERROR: Message 999-999 is missing from the catalogue (1 arguments)."},
      {900, 38, {std::string("x.csv")}, "NOTE: The file x.csv has a header but no records. (BY group g=b, s=1)",
       "g=b, s=1"},
      // Control characters can't reach the terminal; a long group is cut, not inside a character.
      {900, 38, {std::string("a\x1b[31m\x7f.csv")},
       "NOTE: The file a\\x1B[31m\\x7F.csv has a header but no records. (BY group g=\\x01)", "g=\x01"},
      {900, 38, {std::string("x.csv")},
       kLongLine.c_str(), kLongGroup.c_str()},
  };
  for (const Case& c : cases) EXPECT_EQ(logTextLine(c.group, c.number, c.args, c.by), c.line);
}

TEST(Log, HostCountsSeveritiesAndStrictExitStatus) {
  for (const bool strict : {false, true}) {
    std::ostringstream log;
    HostConfig cfg;
    cfg.logStream = &log;
    cfg.strict = strict;
    ProcessHost h(cfg);
    hostMsgLog(h, 900, 38, {std::string("x")});
    EXPECT_EQ(h.exitStatus(0), 0);
    hostMsgLog(h, 900, 19, {std::string("x"), std::string("y")});
    EXPECT_EQ(h.messages(Severity::Note), 1);
    EXPECT_EQ(h.messages(Severity::Warning), 1);
    EXPECT_EQ(h.exitStatus(4), strict ? 1 : 0);
    EXPECT_EQ(h.exitStatus(108), 2);
    EXPECT_EQ(log.str().substr(0, 6), "NOTE: ");
    // A message's text into a label: blank-padded, or cut to the room there is.
    tchar buf[40];
    const int n = hostMsgText(h, buf, 40, 900, 38, {std::string("f")});
    EXPECT_EQ(std::string(buf, static_cast<std::size_t>(n)), "The file f has a header but no records.");
    EXPECT_EQ(buf[39], ' ');
    EXPECT_EQ(hostMsgText(h, buf, 8, 900, 38, {std::string("f")}), 8);
    EXPECT_EQ(std::string(buf, 8), "The file");
    EXPECT_EQ(hostMsgText(h, buf, 40, 1, 1), 0);  // no such row
  }
}

TEST(Log, LogFileAndBadConfiguration) {
  testing::TempDir dir;
  std::ostringstream log;
  dir.write("plain.csv", "x\n1\n");
  HostConfig cfg = testing::jsonlConfig(log, {"ok=" + dir.path(), "bad name=" + dir.path(),
                                               "gone=" + dir.file("nope"), "noequals", "db=sqlite:" + dir.file("x.db"),
                                               "flat=" + dir.file("plain.csv"), "OK=" + dir.path()});
  cfg.logFile = dir.file("run.log");
  cfg.options = {"debug=SYN SEM", "Intervalds=fiscal=cal.fiscal", "=x", "memsize=9"};
  ProcessHost h(cfg);
  EXPECT_EQ(h.init(), kHostBadArgument);
  EXPECT_TRUE(log.str().empty());  // everything went to the file
  // Bad name, no folder, no '=', a file for a folder, a library given twice
  // (names ignore case); an option without a name, one that isn't known.
  EXPECT_EQ(testing::hostNumbers(dir.read("run.log")), (std::vector<int>{15, 23, 15, 9, 13, 24, 8}));
  EXPECT_EQ(hostOptionGet(h, "DEBUG").value_or(""), "SYN SEM");
  EXPECT_EQ(hostOptionGet(h, "intervalds").value_or(""), "fiscal=cal.fiscal");
  EXPECT_FALSE(hostOptionGet(h, "nothing").has_value());
  // The SQLite library is assigned; its database file is made by the first output.
  DsHandle ds;
  EXPECT_EQ(h.dsOpen("db.t", DsMode::Input, &ds), kHostNotFound);
  EXPECT_EQ(testing::hostNumbers(dir.read("run.log")).back(), 102);
}

// A host that only collects messages answers every other operation plainly.
TEST(Log, MinimalHostSaysUnsupported) {
  struct Collect : Host {
    std::vector<int> numbers;
    void msgLog(int, int number, std::span<const MsgArg>, const SourcePos*) override { numbers.push_back(number); }
  } h;
  DsHandle ds;
  EXPECT_EQ(h.dsOpen("x", DsMode::Input, &ds), kHostUnsupported);
  EXPECT_EQ(hostPoolAlloc(h, PoolHandle{1}, 8), nullptr);
  SpoolHandle sp;
  EXPECT_EQ(hostSpoolOpen(h, &sp), kHostUnsupported);
  EXPECT_EQ(hostRunStep(h, [&] { hostExit(h, 16); }), 16);
  EXPECT_EQ(hostRunStep(h, [] { throw std::runtime_error("boom"); }), 2000);
  EXPECT_EQ(h.numbers, std::vector<int>{1});
}

// The progress line is rewritten in place, waits for a long run, and is
// cleared before a log line so that the log starts at the margin.
TEST(Log, ProgressLineWaitsAndClearsBeforeALogLine) {
  std::ostringstream log, progress;
  HostConfig cfg;
  cfg.logStream = &log;
  cfg.progressStream = &progress;
  cfg.progressAfter = 1e9;  // a step that never runs long enough
  ProcessHost(cfg).progress(3);
  EXPECT_EQ(progress.str(), "");
  cfg.progressAfter = 0;
  cfg.progressEvery = 0;
  ProcessHost h(cfg);
  h.progress(7);
  EXPECT_NE(progress.str().find("\r7 series done"), std::string::npos) << progress.str();
  hostMsgLog(h, 900, 21, {std::string("X"), 1LL, 1LL});
  EXPECT_TRUE(progress.str().ends_with("\r\x1b[K")) << "a log line follows a cleared line";
  const std::size_t before = progress.str().size();
  hostMsgLog(h, 900, 21, {std::string("X"), 1LL, 1LL});
  EXPECT_EQ(progress.str().size(), before) << "nothing to clear the second time";
  cfg.progressStream = nullptr;
  ProcessHost(cfg).progress(9);  // no stream: no line, and no crash
}

}  // namespace
}  // namespace qvt

namespace qvt {
namespace {

// A listing that can't be written (its reader went away): each step that
// printed into it ends with kRcOutputLost, the loss is logged once, and a
// step that printed nothing ends as it would.
TEST(Log, LostListingRaisesTheStepsThatPrinted) {
  std::ostringstream log, listing;
  listing.setstate(std::ios::badbit);
  HostConfig cfg = testing::jsonlConfig(log, {});
  cfg.listingStream = &listing;
  ProcessHost h(cfg);
  ASSERT_EQ(h.init(), 0);
  const auto print = [&h] {
    TableHandle t;
    ASSERT_EQ(h.tableOpen(TableHead{"X", "Q.X", TableKind::Data, "x", ""}, &t), kHostOk);
    ASSERT_EQ(h.tableColumn(t, TableColumn{"a", "A", ColType::Double, 8, 0, {}, {}}), kHostOk);
    ASSERT_EQ(h.tableColumnsEnd(t), kHostOk);
    const TableCell one[] = {1.0};
    ASSERT_EQ(h.tableRow(t, one), kHostOk);
    ASSERT_EQ(h.tableClose(t), kHostOk);
  };
  print();
  EXPECT_EQ(h.stepEnd(0), kRcOutputLost);
  print();
  EXPECT_EQ(h.stepEnd(4), kRcOutputLost);
  EXPECT_EQ(h.stepEnd(4), 4);
  EXPECT_EQ(testing::hostNumbers(log.str()), (std::vector<int>{29}));
}

}  // namespace
}  // namespace qvt
