// Variable lists as written, resolved against the variables of a data set.

#include "recording_host.hpp"
#include "statements/varlist.hpp"

namespace qvt {
namespace {

VarInfo var(const char* name, VarType t) {
  VarInfo v;
  v.name = name;
  v.type = t;
  return v;
}

constexpr VarType N = VarType::Numeric, C = VarType::Character;

// Positions 1..10.
const std::vector<VarInfo> kVars = {
    var("x1", N),  var("x2", N),  var("x3", N),     var("Name", C), var("v01", N),
    var("v02", N), var("v03", C), var("my var", N), var("z", N),    var("city", C),
};

VarList parseList(const std::string& list) {
  testing::RecordingHost h;
  PROCSTR p;
  xsparseText("qvt; forecast " + list + ";", SourcePos{}, h, p);
  EXPECT_EQ(p.error, 0) << list;
  return p.head.at(1).fld[1].vars();
}

struct Case {
  const char* list;
  VarNeed need;
  std::vector<int> numbers;
  std::vector<int> messages;
};

const Case kCases[] = {
    {"x1", VarNeed::Numeric, {1}, {}},
    {"X2", VarNeed::Numeric, {2}, {}},
    {"x1 x1", VarNeed::Numeric, {1, 1}, {}},
    {"x1-x3", VarNeed::Numeric, {1, 2, 3}, {}},
    {"x3-x1", VarNeed::Numeric, {}, {kMsgEmptyRange}},
    {"x1-z", VarNeed::Numeric, {}, {kMsgNotNumbered}},
    {"x1-y3", VarNeed::Numeric, {}, {kMsgNotNumbered}},
    {"x2-x4", VarNeed::Numeric, {2, 3}, {kMsgVarNotFound}},
    {"v01-v02", VarNeed::Numeric, {5, 6}, {}},
    {"v01-v03", VarNeed::Numeric, {5, 6}, {kMsgWrongType}},
    {"v01-v03", VarNeed::Any, {5, 6, 7}, {}},
    {"x2--v01", VarNeed::Numeric, {2, 3, 5}, {}},
    {"x2--v01", VarNeed::Any, {2, 3, 4, 5}, {}},
    {"v01--x2", VarNeed::Any, {}, {kMsgEmptyRange}},
    {"x1-numeric-city", VarNeed::Any, {1, 2, 3, 5, 6, 8, 9}, {}},
    {"x1-character-city", VarNeed::Any, {4, 7, 10}, {}},
    {"x1-char-city", VarNeed::Any, {4, 7, 10}, {}},
    {"x1-character-city", VarNeed::Numeric, {}, {kMsgNoneOfType}},
    {"x:", VarNeed::Numeric, {1, 2, 3}, {}},
    {"V0:", VarNeed::Any, {5, 6, 7}, {}},
    {"q:", VarNeed::Any, {}, {kMsgNoPrefix}},
    {"_numeric_", VarNeed::Any, {1, 2, 3, 5, 6, 8, 9}, {}},
    {"_character_", VarNeed::Any, {4, 7, 10}, {}},
    {"_char_", VarNeed::Any, {4, 7, 10}, {}},
    {"_all_", VarNeed::Any, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, {}},
    {"_all_", VarNeed::Numeric, {1, 2, 3, 5, 6, 8, 9}, {}},
    {"name", VarNeed::Numeric, {}, {kMsgWrongType}},
    {"name", VarNeed::Any, {4}, {}},
    {"'my var'n z", VarNeed::Numeric, {8, 9}, {}},
    {"nosuch x1", VarNeed::Numeric, {1}, {kMsgVarNotFound}},
};

TEST(VarLists, ResolvedAgainstTheDataSet) {
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.list);
    const VarList l = parseList(c.list);
    testing::RecordingHost h;
    std::vector<int> got;
    const int errors = resolveVarList(l, kVars, c.need, h, got);
    EXPECT_EQ(got, c.numbers);
    EXPECT_EQ(h.numbers(), c.messages);
    int expectedErrors = 0;
    for (int m : c.messages) expectedErrors += m != kMsgNoneOfType;
    EXPECT_EQ(errors, expectedErrors);
    for (std::size_t k = 0; k < h.msgs.size(); ++k) EXPECT_FALSE(h.text(k).empty());
  }
}

TEST(VarLists, KeptAsWritten) {
  const VarList l = parseList("a b1-b3 c--d e-numeric-f g-char-h i: _numeric_ _char_ _all_ 'x y'n");
  const struct {
    VarItemCode code;
    const char* first;
    const char* last;
    const char* text;
  } want[] = {
      {VarItemCode::Name, "a", "", "a"},
      {VarItemCode::Numbered, "b1", "b3", "b1-b3"},
      {VarItemCode::Positional, "c", "d", "c--d"},
      {VarItemCode::NumericRange, "e", "f", "e-numeric-f"},
      {VarItemCode::CharRange, "g", "h", "g-char-h"},
      {VarItemCode::Prefix, "i", "", "i:"},
      {VarItemCode::AllNumeric, "_numeric_", "", "_numeric_"},
      {VarItemCode::AllChar, "_char_", "", "_char_"},
      {VarItemCode::All, "_all_", "", "_all_"},
      {VarItemCode::Name, "x y", "", "'x y'n"},
  };
  ASSERT_EQ(l.items.size(), std::size(want));
  for (std::size_t k = 0; k < std::size(want); ++k) {
    EXPECT_EQ(l.items[k].code, want[k].code) << k;
    EXPECT_EQ(l.items[k].first, want[k].first) << k;
    EXPECT_EQ(l.items[k].last, want[k].last) << k;
    EXPECT_EQ(l.items[k].text, want[k].text) << k;
  }
}

TEST(VarLists, ByListWithDescendingAndNotsorted) {
  testing::RecordingHost h;
  PROCSTR p;
  xsparseText("qvt; by region descending city notsorted;", SourcePos{}, h, p);
  ASSERT_EQ(p.error, 0);
  const VarList& by = p.head.at(0).fld[0].vars();
  ASSERT_EQ(by.items.size(), 2u);
  EXPECT_FALSE(by.items[0].descending);
  EXPECT_TRUE(by.items[1].descending);
  EXPECT_TRUE(by.notsorted);
  // Names that are keywords elsewhere are names here.
  xsparseText("qvt; by model lead; forecast interval / model=simple;", SourcePos{}, h, p);
  ASSERT_EQ(p.error, 0);
  EXPECT_EQ(p.head[0].fld[0].vars().items.at(1).first, "lead");
  EXPECT_EQ(p.head.at(1).fld[17].text(), "interval");
}

TEST(VarLists, EmptyDataSet) {
  const VarList l = parseList("_all_ x1");
  testing::RecordingHost h;
  std::vector<int> got{99};
  EXPECT_EQ(resolveVarList(l, {}, VarNeed::Any, h, got), 1);
  EXPECT_TRUE(got.empty());
  EXPECT_EQ(h.numbers(), (std::vector<int>{kMsgNoneOfType, kMsgVarNotFound}));
}

}  // namespace
}  // namespace qvt
