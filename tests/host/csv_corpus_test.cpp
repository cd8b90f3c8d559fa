// Every file of the corpus opens to its expected message, never a crash.

#include <set>

#include "host_test_util.hpp"

namespace qvt {
namespace {

const std::string kCorpus = std::string(QVT_SOURCE_DIR) + "/tests/host/corpus";

TEST(Corpus, EveryFileOpensToItsMessage) {
  struct Case {
    const char* member;
    int result;             // of dsOpen
    std::vector<int> msgs;  // group-900 messages logged by the open
    int argIndex;           // an argument of the first message to check, -1 none
    long long argValue;     //   and its value (a line or column number)
  };
  const Case cases[] = {
      {"ragged", kHostDataError, {35}, 1, 3},          {"extra_field", kHostDataError, {35}, 2, 3},
      {"ragged_after_multiline", kHostDataError, {35}, 1, 4},
      {"dup_name", kHostDataError, {32}, 1, 2},        {"empty_name", kHostDataError, {31}, 1, 2},
      {"long_name", kHostDataError, {33}, 1, 1},       {"bad_utf8", kHostDataError, {34}, 1, 3},
      {"bad_utf8_header", kHostDataError, {34}, 1, 1}, {"open_quote", kHostDataError, {36}, 1, 3},
      {"after_quote", kHostDataError, {37}, 1, 2},     {"empty", kHostDataError, {30}, -1, 0},
      {"header_only", 0, {38}, -1, 0},                 {"bom_crlf", 0, {}, -1, 0},
      {"bad_meta", 0, {19}, -1, 0},                    {"meta_clash", kHostDataError, {39}, 1, 2},
      {"turned_text", 0, {42, 42}, 1, 4},              {"blank_lines", 0, {45}, 2, 3},
      // A day before the calendar and one that does not exist are named as
      // such (46), even as a column's first value, and so is a day with a
      // time zone behind it (47); a valid date below a number is a cell of
      // another kind (42).
      {"not_a_date", 0, {46, 47, 46, 42}, 1, 2},
      {"no_such_member", kHostNotFound, {12}, -1, 0},   {"a_folder", kHostNotFound, {7}, -1, 0}};
  std::set<std::string> files;
  for (const auto& e : std::filesystem::directory_iterator(kCorpus))
    if (e.path().extension() == ".csv") files.insert(e.path().stem().string());
  for (const Case& c : cases) {
    SCOPED_TRACE(c.member);
    files.erase(c.member);
    testing::HostFixture f(false, [](HostConfig& cfg) {
      cfg.libs = {"corp=" + kCorpus};
      cfg.csvBufferBytes = 16;  // records cross buffer ends
    });
    DsHandle ds;
    EXPECT_EQ(f.host->dsOpen(std::string("corp.") + c.member, DsMode::Input, &ds), c.result) << f.log.str();
    EXPECT_EQ(static_cast<bool>(ds), c.result == 0);
    EXPECT_EQ(f.numbers(), c.msgs) << f.log.str();
    if (c.argIndex >= 0) {
      const auto first = testing::jsonLines(f.log.str()).at(0);
      EXPECT_EQ(first.at("args").at(static_cast<std::size_t>(c.argIndex)).get<long long>(), c.argValue);
      // Every error names the file it is about.
      EXPECT_NE(first.at("text").get<std::string>().find(c.member), std::string::npos);
    }
    f.host->stepEnd(0);
  }
  EXPECT_TRUE(files.empty()) << "a corpus file without an expected message: " << *files.begin();
}

// The awkward files that are valid read to the right values.
TEST(CorpusValues, BomCrlfAndHeaderOnly) {
  testing::HostFixture f(false, [](HostConfig& cfg) { cfg.libs = {"corp=" + kCorpus}; });
  ProcessHost& h = *f.host;
  const testing::Table t = testing::readTable(h, "corp.bom_crlf");
  ASSERT_EQ(t.size(), 2u) << f.log.str();
  EXPECT_EQ(t[0].info.name, "date");  // no byte-order mark in the name
  EXPECT_EQ(t[0].info.format, "DATE9.");
  // 2024-01-01 is 64*365 + 16 leap days after 1960-01-01; February 1 is 31 days on.
  EXPECT_EQ(t[0].num, (std::vector<double>{23376.0, 23407.0}));
  EXPECT_EQ(t[1].num[0], 3.0);  // "3\r" would not be a number
  EXPECT_EQ(wzmis(t[1].num[1]), 1);
  DsFacts facts;
  EXPECT_EQ(testing::readTable(h, "corp.header_only", &facts).size(), 2u);
  EXPECT_EQ(facts.nobs, 0);
  h.stepEnd(0);
}

}  // namespace
}  // namespace qvt
