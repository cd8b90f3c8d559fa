// OUT= of several series: the row filter's three rules, and the rows that
// qvtout writes from a transposed spool, read back from the file.
#include "run/qvtout.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "../output/output_rig.hpp"
#include "output/qvtds.hpp"
#include "output/ztspool.hpp"

namespace qvt {
namespace {

using testing::day;
using testing::monthEnd;

// Eight month starts from January 2020: START= adds one period ahead of the
// input (first = id[1]), the input ends at id[4], the forecasts at id[6].
struct Frame {
  std::vector<double> id;
  QVTCOM com;
  Frame() {
    for (unsigned m = 1; m <= 8; ++m) id.push_back(day(2020, m, 1));
    com.out.id = id.data();
    com.out.tobs = 8;
    com.out.first = id[1];
    com.out.last = id[4];
    com.out.forlast = id[6];
    EXPECT_EQ(zintic(45, &com.istmt.intv), 0);
    com.istmt.align = 'E';
  }
};

TEST(Qvtoutx, HistoryRangeAndEnd) {
  // Expected result for obs 0..8, without and with NOOUTALL.
  const int all[] = {1, 0, 0, 0, 0, 0, 0, 2, 2};
  const int fut[] = {1, 1, 1, 1, 1, 0, 0, 2, 2};
  for (const int nooutall : {0, 1}) {
    Frame f;
    f.com.op.nooutall = static_cast<char>(nooutall);
    for (long obs = 0; obs <= 8; ++obs) {
      SCOPED_TRACE(::testing::Message() << "nooutall " << nooutall << " obs " << obs);
      const int r = qvtoutx(&f.com, obs, 0, nullptr);
      EXPECT_EQ(r, (nooutall ? fut : all)[obs]);
      if (r == 0) {
        EXPECT_EQ(f.com.id.val, monthEnd(2020, static_cast<unsigned>(obs + 1)));  // ALIGN=END
      } else if (obs < 8) {
        EXPECT_EQ(f.com.id.val, f.id[static_cast<std::size_t>(obs)]);
      }
    }
  }
  // Without an interval the ID is written as it stands.
  Frame g;
  g.com.istmt.intv = INTERVAL{};
  EXPECT_EQ(qvtoutx(&g.com, 3, 0, nullptr), 0);
  EXPECT_EQ(g.com.id.val, g.id[3]);
}

TEST(Qvtout, RowsOfAllSeriesFromTheTransposedSpool) {
  testing::Rig rig(
      "region,date,units,price\n"
      "a,2020-02-01,1,10\na,2020-03-01,2,20\na,2020-04-01,3,30\na,2020-05-01,4,40\n");
  Frame f;
  // Results of the run, series-major: each series' P = 7 cells (BACK=1).
  const std::vector<double> units = {0, 1, 2, 3, 4, 5.5, 6.5}, price = {0, 10, 20, 30, 40, 50, 60};
  rig.step([&] {
    rig.open({"out"}, {"units", "price"}, false, 2);
    QVTCOM& com = rig.com;
    qvtds(&com);
    ASSERT_EQ(com.error, 0);
    com.out.id = f.id.data();
    com.out.tobs = 8;
    com.istmt.back = 1;
    com.out.first = f.id[1];
    com.out.last = f.id[4];
    com.out.forlast = f.id[6];
    ASSERT_EQ(ztput(*com.host, com.outfile, 7, units.data()), 0);
    ASSERT_EQ(ztput(*com.host, com.outfile, 7, price.data()), 0);
    ASSERT_EQ(zttrans(*com.host, com.outfile, com.infile, 2, 7), 0);
    qvtout(&com);
    EXPECT_EQ(qvtend(&com), 0);
  });
  ASSERT_EQ(rig.rc, 0) << rig.log.str();
  const auto out = testing::readBack(rig.dir.path(), "out");
  ASSERT_EQ(out.vars.size(), 3u);
  ASSERT_EQ(out.num.size(), 6u);  // periods 1 to 6: period 0 is before the input
  for (std::size_t r = 0; r < 6; ++r) {
    EXPECT_EQ(out.at(r, "date"), monthEnd(2020, static_cast<unsigned>(r + 2)));
    EXPECT_EQ(out.at(r, "units"), units[r + 1]);
    EXPECT_EQ(out.at(r, "price"), price[r + 1]);
  }
}

}  // namespace
}  // namespace qvt
