// Variable lists as written, and resolved against the variables of a data set.

#include "statements/varlist.hpp"
#include "support.hpp"

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
  testing::Parsed r("qvt; forecast " + list + ";");
  EXPECT_EQ(r.p.error, 0) << list;
  return r.p.head.at(1).fld[1].vars();
}

struct Case {
  const char* list;
  VarNeed need;
  std::vector<int> numbers;
  std::vector<int> messages;
};

const Case kCases[] = {
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
    testing::RecordingHost h;
    std::vector<int> got;
    const int errors = resolveVarList(parseList(c.list), kVars, c.need, h, got);
    EXPECT_EQ(got, c.numbers);
    EXPECT_EQ(h.numbers(), c.messages);
    EXPECT_EQ(errors, static_cast<int>(c.messages.size() - std::count(c.messages.begin(), c.messages.end(), kMsgNoneOfType)));
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
  // BY lists: DESCENDING before an item, NOTSORTED anywhere.
  testing::Parsed by("qvt; by region descending city notsorted;");
  ASSERT_EQ(by.p.error, 0);
  const VarList& l = by.p.head.at(0).fld[0].vars();
  ASSERT_EQ(l.items.size(), 2u);
  EXPECT_FALSE(l.items[0].descending);
  EXPECT_TRUE(l.items[1].descending);
  EXPECT_TRUE(l.notsorted);
  // Names that are keywords elsewhere are names here.
  testing::Parsed kw("qvt; by model lead; forecast interval / model=simple;");
  ASSERT_EQ(kw.p.error, 0);
  EXPECT_EQ(kw.p.head[0].fld[0].vars().items.at(1).first, "lead");
  EXPECT_EQ(kw.p.head.at(1).fld[17].text(), "interval");
}

}  // namespace
}  // namespace qvt
