// Date, time and datetime constants against values worked by hand: day 0
// is 1960-01-01, 2020-01-01 is 60 * 365 + 15 leap days = 21915.

#include "statements/literal.hpp"
#include "recording_host.hpp"

namespace qvt {
namespace {

enum class Kind { Date, Time, DateTime };

struct Case {
  Kind kind;
  const char* text;
  std::optional<double> expected;
};

const Case kCases[] = {
    {Kind::Date, "01JAN1960", 0},
    {Kind::Date, "1jan1960", 0},
    {Kind::Date, " 01Jan1960 ", 0},
    {Kind::Date, "31DEC1959", -1},
    {Kind::Date, "01JAN2020", 21915},
    {Kind::Date, "29FEB2000", 14669},  // 14610 (2000-01-01) + 31 + 28
    {Kind::Date, "01MAR2000", 14670},
    {Kind::Date, "29FEB1900", std::nullopt},  // 1900 is no leap year
    {Kind::Date, "01JAN60", 0},
    {Kind::Date, "01JAN39", 28855},  // 2039: 79 * 365 + 20 leap days
    {Kind::Date, "01JAN40", -7305},  // 1940: -(20 * 365 + 5)
    {Kind::Date, "32JAN2020", std::nullopt},
    {Kind::Date, "00JAN2020", std::nullopt},
    {Kind::Date, "01XYZ2020", std::nullopt},
    {Kind::Date, "01JAN202", std::nullopt},
    {Kind::Date, "01JAN20201", std::nullopt},
    {Kind::Date, "", std::nullopt},
    {Kind::Date, "JAN2020", std::nullopt},
    {Kind::Time, "13:30", 48600},
    {Kind::Time, "13:30:15", 48615},
    {Kind::Time, "13:30:15.5", 48615.5},
    {Kind::Time, "00:00", 0},
    {Kind::Time, "1:05", 3900},
    {Kind::Time, "23:59:59", 86399},
    {Kind::Time, "24:00", std::nullopt},
    {Kind::Time, "13:60", std::nullopt},
    {Kind::Time, "13:3", std::nullopt},
    {Kind::Time, "13", std::nullopt},
    {Kind::Time, "13:30:", std::nullopt},
    {Kind::DateTime, "01JAN1960:00:00:00", 0},
    {Kind::DateTime, "02JAN1960:00:00:01", 86401},
    {Kind::DateTime, "01JAN2020:13:30:00", 21915.0 * 86400 + 48600},
    {Kind::DateTime, "01JAN2020 13:30", 21915.0 * 86400 + 48600},
    {Kind::DateTime, "31DEC1959:23:59:59", -1},
    {Kind::DateTime, "01JAN2020", std::nullopt},
    {Kind::DateTime, "01JAN2020:25:00", std::nullopt},
};

TEST(Literals, HandWorkedValues) {
  for (const auto& c : kCases) {
    std::optional<double> got;
    switch (c.kind) {
      case Kind::Date: got = literalDate(c.text); break;
      case Kind::Time: got = literalTime(c.text); break;
      case Kind::DateTime: got = literalDateTime(c.text); break;
    }
    ASSERT_EQ(got.has_value(), c.expected.has_value()) << c.text;
    if (got) {
      EXPECT_DOUBLE_EQ(*got, *c.expected) << c.text;
    }
  }
}

}  // namespace
}  // namespace qvt
