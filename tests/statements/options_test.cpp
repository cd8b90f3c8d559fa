// Every option of the QVT, ID, FORECAST and IDM statements to its flag bit
// or field, with the value limits (the table is options.csv); data set
// names, the ID statement, and variable lists as written
// and resolved against the variables of a data set (varlists.txt).

#include <map>
#include <tuple>

#include "statements/varlist.hpp"
#include "support.hpp"

namespace qvt {
namespace {

using testing::Parsed;

// The text each context puts in front of an option.
const std::map<char, std::string> kContext = {
    {'P', "qvt "}, {'I', "qvt; id t interval=month "}, {'F', "qvt; forecast x / "}, {'M', "qvt; idm "}};

// Checks one row of options.csv; component rows (C) are written with the
// base field b and base bit f of the component they stand in.
void checkOption(char ctx, const std::string& opt, const std::string& expected, int b = 0, int f = 0) {
  const std::string text = kContext.at(ctx) + opt + ";";
  SCOPED_TRACE(text);
  Parsed r(text, SourcePos{"r.qvt", 1, 1});
  if (expected[0] == '!') {
    EXPECT_EQ(r.p.error, kStatementsUnusable);
    ASSERT_EQ(r.h.numbers(), testing::ints(expected.substr(1)));
    return;
  }
  EXPECT_EQ(r.rc, 0);
  for (std::size_t k = 0; k < r.h.msgs.size(); ++k) ADD_FAILURE() << r.h.text(k);
  ASSERT_EQ(r.p.head.size(), ctx == 'F' ? 2u : 1u);
  const STMT& s = r.p.head.back();
  // Fields each context gives by itself: the default data sets of the
  // procedure record, the ID variable and interval, the FORECAST list.
  std::set<int> bits, fields = ctx == 'F' ? std::set<int>{1, 17} : std::set<int>{1, 2};
  if (ctx == 'I') fields.insert({3, 4});
  std::istringstream in(expected);
  for (std::string w; in >> w;) {
    if (w[0] == 'b') {
      bits.insert(w[1] == '+' ? f + std::stoi(w.substr(2)) : std::stoi(w.substr(1)));
      continue;
    }
    const auto eq = w.find('=');
    const int n = w[0] == '+' ? b + std::stoi(w.substr(1, eq)) : std::stoi(w.substr(0, eq));
    fields.insert(n);
    ASSERT_TRUE(s.given(n)) << "field " << n;
    if (eq == std::string::npos) continue;
    const std::string v = w.substr(eq + 1);
    const STLIST& x = s.fld[static_cast<std::size_t>(n)];
    // A letter stands for a character field; x.number() throws on any other kind.
    if (x.mode == StMode::Character) {
      EXPECT_EQ(std::string(1, x.character()), v) << "field " << n;
    } else {
      EXPECT_DOUBLE_EQ(x.number(), std::stod(v)) << "field " << n;
    }
  }
  for (int k = 0; k < kOptBits; ++k) EXPECT_EQ(s.bit(k), bits.count(k) == 1) << "bit " << k;
  for (int n = 0; n < s.nfld; ++n) EXPECT_EQ(s.given(n), fields.count(n) == 1) << "field " << n;
}

// The IDM components with their base field and base bit.
const std::tuple<std::string, int, int> kComponents[] = {
    {"INTERVAL", 50, 100}, {"SIZE", 70, 110}, {"AVERAGE", 90, 120}};

TEST(Options, EachOptionToItsBitOrFieldWithinItsLimits) {
  for (const auto& r : testing::dataRows("options.csv", '|')) {
    ASSERT_EQ(r.size(), 3u);
    if (r[0] != "C") {
      checkOption(r[0][0], r[1], r[2]);
      continue;
    }
    for (const auto& [name, b, f] : kComponents)
      checkOption('M', name + "=(" + r[1] + ")", r[2] + " b+3", b, f);
    if (HasFatalFailure()) return;
  }
}

// The name forms; the data sets not written are marked as set by default.
TEST(Options, DataSetNameForms) {
  const std::pair<const char*, const char*> cases[] = {
      {"sales", "|sales|0|"},
      {"mylib.sales", "mylib|sales|0|"},
      {"'data/co2.csv'", "|data/co2.csv|1|"},
      {"'my data'n", "|my data|0|"},
      {"sales(where=(x>1) keep=a b)", "|sales|0|where=(x>1) keep=a b"},
  };
  for (auto [written, want] : cases) {
    Parsed r(std::string("qvt data=") + written + " lead=3;");
    SCOPED_TRACE(written);
    for (std::size_t k = 0; k < r.h.msgs.size(); ++k) ADD_FAILURE() << r.h.text(k);
    const STMT& s = r.p.head.at(0);
    const DataSetName& d = s.fld[1].dataset();
    EXPECT_EQ(d.lib + "|" + d.member + "|" + std::to_string(d.quoted) + "|" + d.options, want);
    EXPECT_FALSE(d.byDefault);
    EXPECT_TRUE(s.fld[1].type == 1 && s.fld[2].type == 2);
    EXPECT_DOUBLE_EQ(s.fld[7].number(), 3) << "the option behind the data set is still read";
  }
  Parsed r("qvt out=o;");
  const STMT& out = r.p.head.at(0);
  EXPECT_TRUE(out.fld[1].type == 2 && out.fld[1].dataset().byDefault);
  EXPECT_TRUE(out.fld[2].type == 1 && !out.fld[2].dataset().byDefault);
}

TEST(Options, IdVariableIntervalAndForecastLists) {
  Parsed id("qvt; id Date interval=month2.2 align=end;");
  const STMT& s = id.p.head.at(0);
  ASSERT_EQ(s.fld[3].vars().items.size(), 1u);
  EXPECT_EQ(s.fld[3].vars().items[0].first, "Date");
  EXPECT_EQ(s.fld[4].text(), "month2.2");
  ASSERT_TRUE(s.fld[4].interval != nullptr);
  // MONTH is interval 45; the shift .2 is stored counted from 0.
  const INTERVAL& iv = *s.fld[4].interval;
  EXPECT_EQ(std::to_string(iv.intcode) + " " + std::to_string(iv.intper) + " " + std::to_string(iv.shiftper),
            "45 2 1");
  // The first item of each FORECAST list as written; an empty list has none.
  Parsed f("qvt; forecast _ALL_; forecast a b1-b3 / model=simple; forecast;");
  EXPECT_EQ(f.p.head.at(1).fld[17].text() + " " + f.p.head.at(2).fld[17].text(), "_ALL_ a");
  EXPECT_TRUE(f.p.head.at(3).given(1) && f.p.head[3].fld[1].vars().items.empty());
  EXPECT_FALSE(f.p.head[3].given(17));
}

VarInfo var(const char* name, VarType t) { return VarInfo{name, "", t, 8, ""}; }

constexpr VarType N = VarType::Numeric, C = VarType::Character;

const std::vector<VarInfo> kVars = {
    var("x1", N),  var("x2", N),  var("x3", N),     var("Name", C), var("v01", N),
    var("v02", N), var("v03", C), var("my var", N), var("z", N),    var("city", C),
};

VarList parseList(const std::string& list) {
  testing::Parsed r("qvt; forecast " + list + ";");
  EXPECT_EQ(r.p.error, 0) << list;
  return r.p.head.at(1).fld[1].vars();
}

TEST(VarLists, ResolvedAgainstTheDataSet) {
  for (const auto& r : testing::dataRows("varlists.txt", '|')) {
    SCOPED_TRACE(r.at(0));
    testing::RecordingHost h;
    std::vector<int> got;
    const VarNeed need = r.at(1) == "N" ? VarNeed::Numeric : VarNeed::Any;
    const int errors = resolveVarList(parseList(r[0]), kVars, need, h, got);
    EXPECT_EQ(got, testing::ints(r.at(2)));
    const std::vector<int> messages = testing::ints(r.at(3));
    EXPECT_EQ(h.numbers(), messages);
    // Finding none of a type is a note, not an error.
    const auto notes = std::count(messages.begin(), messages.end(), kMsgNoneOfType);
    EXPECT_EQ(errors, static_cast<int>(messages.size()) - notes);
    for (std::size_t k = 0; k < h.msgs.size(); ++k) EXPECT_FALSE(h.text(k).empty());
  }
  // An empty data set.
  testing::RecordingHost h;
  std::vector<int> got{99};
  EXPECT_EQ(resolveVarList(parseList("_all_ x1"), {}, VarNeed::Any, h, got), 1);
  EXPECT_TRUE(got.empty());
  EXPECT_EQ(h.numbers(), (std::vector<int>{kMsgNoneOfType, kMsgVarNotFound}));
}

TEST(VarLists, KeptAsWritten) {
  std::string got;
  for (const auto& it : parseList("a b1-b3 c--d e-numeric-f g-char-h i: _numeric_ _char_ _all_ 'x y'n").items)
    got += std::to_string(static_cast<int>(it.code)) + " " + it.first + " " + it.last + " " + it.text + "|";
  EXPECT_EQ(got,
            "1 a  a|2 b1 b3 b1-b3|3 c d c--d|4 e f e-numeric-f|5 g h g-char-h|6 i  i:|"
            "7 _numeric_  _numeric_|8 _char_  _char_|9 _all_  _all_|1 x y  'x y'n|");
  // Names that are keywords elsewhere are names here.
  testing::Parsed kw("qvt; by model lead; forecast interval / model=simple;");
  ASSERT_EQ(kw.p.error, 0);
  EXPECT_EQ(kw.p.head[0].fld[0].vars().items.at(1).first, "lead");
  EXPECT_EQ(kw.p.head.at(1).fld[17].text(), "interval");
}

}  // namespace
}  // namespace qvt
