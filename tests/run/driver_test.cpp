// The per-series run: completion of OUT= by USE=, REPLACEMISSING and
// REPLACEBACK and the summary row's forecast columns on hand-built frames
// whose cells are worked out by hand; failure accounting and memory; OUT= of
// several series through the spool.
#include "output/qvtds.hpp"
#include "output/ztspool.hpp"
#include "run/append.hpp"
#include "run/dovqvt.hpp"
#include "run/qvtout.hpp"
#include "smoothing/esmfor.hpp"
#include "test_host.hpp"

namespace qvt {
namespace {

using testing::InputRun;
constexpr double M = kMissing;

// A frame of `nobs` periods with LEAD=3 and the series `y` whose used range
// is n periods from period s, with `lead` forecasts behind it. The forecast
// vectors hold 100+i (predicted), 200+i (lower), 300+i (upper) for row i.
struct Frame {
  QVTCOM com;
  VAR var;
  FORSTMT f;
  std::vector<double> y, pred, lower, upper;
  FOR_OUT fore;

  Frame(std::vector<double> series, long nobs, long s, long n, long lead) : y(series) {
    com.istmt.lead = 3;
    com.out.nobs = nobs;
    com.out.tobs = nobs + 3;
    var.fstmt = &f;
    com.current.varptr = &var;
    com.current.start = s;
    com.current.nobs = n;
    com.current.lead = lead;
    fore.n = n + lead;
    for (long i = 0; i < fore.n; ++i) {
      pred.push_back(100.0 + double(i));
      lower.push_back(200.0 + double(i));
      upper.push_back(300.0 + double(i));
    }
    fore.predicted = pred.data();
    fore.lower = lower.data();
    fore.upper = upper.data();
  }
};

TEST(Append, UseReplaceMissingBackAndTheGrowingHorizon) {
  // Six periods, LEAD=3; the used range is periods 1..4 (s 1, n 4), period 3
  // is missing inside it and period 5 is a missing tail, so the horizon is 4
  // and the forecasts (rows 4..7 of fore) fill periods 5..8.
  // With BACK=2 the fit range is periods 0..3 with values at 1 and 2 (s 1,
  // n 2, horizon 4); fore row i is period 1 + i. The BACK= periods 4 and 5
  // keep their actuals and only LEAD - BACK = 1 forecast follows (row 5,
  // period 6); REPLACEBACK overwrites periods 3..5 with rows 2..4.
  const struct {
    int back, use;
    bool repmiss, repback;
    const char* want;
  } cases[] = {
      {0, kUseNone, true, false, ".,1,2,.,4,.,.,.,."},
      {0, kUseLower, false, false, ".,1,2,.,4,204,205,206,207"},
      {0, kUseUpper, true, false, ".,1,2,302,4,304,305,306,307"},
      {2, kUsePredict, false, false, ".,1,2,.,4,5,105,.,."},
      {2, kUsePredict, false, true, ".,1,2,102,103,104,105,.,."},
  };
  for (const auto& c : cases) {
    Frame fr({M, 1, 2, M, 4, c.back ? 5 : M, M, M, M}, 6, 1, c.back ? 2 : 4, 4);
    fr.com.istmt.back = c.back;
    fr.f.use.code = c.use;
    fr.f.replacemissing = c.repmiss;
    fr.f.replaceback = c.repback;
    append(&fr.com, &fr.fore, fr.y.data());
    EXPECT_EQ(testing::cells(fr.y.data(), 9), c.want) << c.use << c.repmiss;
  }
}

TEST(Summation, LastForecastSumsAndLeadCells) {
  // LEAD=3 equal to STARTSUM=3: the summary is the last forecast (row 7).
  Frame fr({1, 2, 3, 4, 5, M, M, M}, 5, 0, 5, 3);
  fr.f.use.code = kUseLower;
  std::vector<double> std(8, 9.0), forlead(3, 0.0);
  fr.fore.std = std.data();
  const auto& o = fr.com.outsum;
  fr.com.outsum.forlead = forlead.data();
  fr.com.istmt.startsum = 3;
  auto sums = [&] { return testing::cells(std::vector<double>{o.pred, o.lower, o.upper, o.std}.data(), 4); };
  EXPECT_EQ(summation(&fr.com, nullptr, &fr.fore), 0);
  EXPECT_EQ(sums(), "107,207,307,9");
  EXPECT_EQ(testing::cells(forlead.data(), 3), "205,206,207");  // USE=LOWER: the lower limits of the leads
  // Under a transformation the limits of the last forecast don't stand.
  fr.com.current.trnscode = kTrnsLog;
  summation(&fr.com, nullptr, &fr.fore);
  EXPECT_EQ(sums(), "107,.,.,.");
  // A transformed series sums the forecasts from STARTSUM= on, skipping
  // missing ones; with all of them missing the sum is missing. USE=NONE
  // leaves the lead cells missing.
  fr.f.use.code = kUseNone;
  fr.com.istmt.startsum = 2;
  summation(&fr.com, nullptr, &fr.fore);
  EXPECT_EQ(sums(), "213,.,.,.");  // leads 2 and 3: 106 + 107
  fr.pred[6] = M;
  summation(&fr.com, nullptr, &fr.fore);
  EXPECT_EQ(sums(), "107,.,.,.");
  EXPECT_EQ(testing::cells(forlead.data(), 3), ".,.,.");
  fr.pred[7] = M;
  summation(&fr.com, nullptr, &fr.fore);
  EXPECT_TRUE(wzmis(o.pred));
  // No LEAD=: nothing to sum.
  fr.com.istmt.lead = 0;
  fr.com.outsum.pred = 1;
  summation(&fr.com, nullptr, &fr.fore);
  EXPECT_TRUE(wzmis(o.pred));
}

TEST(Memory, DeficitEndsTheSeriesWithTheCodeOfTheStep) {
  for (const int nby : {0, 1}) {
    InputRun r("memsize=4096 nby=" + std::to_string(nby));
    r.com.current.var = r.vars[0].name;
    EXPECT_EQ(memory(&r.com), 0);  // no deficit: nothing happens
    EXPECT_EQ(hostPoolAlloc(r.host, r.com.tpool, 1 << 20), nullptr);  // beyond the budget
    EXPECT_EQ(memory(&r.com), -1);
    EXPECT_EQ(r.com.memdef, 0);  // reported once, then cleared
    EXPECT_EQ(memory(&r.com), 0);
    r.expect(nby ? "err=1 rc=116 2000=y" : "err=1 rc=1016 2000=y");
  }
}

TEST(Failure, CountsEveryFailureAndAllowsMessagesUpToMaxerror) {
  // OUT= isn't open, so the rows of a failed series go nowhere; what counts
  // here is the status and the count against MAXERROR=.
  for (const long maxerror : {0L, 1L, 3L}) {
    InputRun r("maxerror=" + std::to_string(maxerror));
    for (long k = 1; k <= 4; ++k) {
      EXPECT_EQ(failure(&r.com, kStatusEstimation), k <= maxerror) << maxerror << " " << k;
      EXPECT_EQ(r.com.counts.failures, k);
      EXPECT_EQ(r.com.current.status, kStatusEstimation);
    }
  }
}

TEST(Putresult, SpoolThatFailsEndsTheStep) {
  // With several series the results go to the spool; a write that fails
  // leaves rows that can't be trusted, so the step ends with rc 1020 after
  // message 40, and nothing after putresult runs.
  InputRun r("series=a,b id= csv=a,b/1,2");
  std::vector<double> y = {1, 2, 3};
  r.com.out.y = y.data();
  r.com.out.tobs = 3;
  ASSERT_EQ(ztinit(r.host, &r.com.infile, &r.com.outfile), 0);
  putresult(&r.com);  // a good write first
  r.host.setSpoolWriteFailure(2);
  bool after = false;
  EXPECT_EQ(hostRunStep(r.host, [&] {
              putresult(&r.com);
              after = true;
            }),
            kRcSpool);
  EXPECT_FALSE(after);
  r.expect("msgs=40");
}

// OUT= of several series: eight month starts from January 2020; START= adds
// one period ahead of the input (first = id[1]), the input ends at id[4],
// the forecasts at id[6]; kept rows carry the month end (ALIGN=END).
void frame(QVTCOM& com, std::vector<double>& id) {
  for (int m = 1; m <= 8; ++m) id.push_back(double(testing::day(2020, m, 1)));
  com.out.id = id.data();
  com.out.tobs = 8;
  com.out.first = id[1];
  com.out.last = id[4];
  com.out.forlast = id[6];
  EXPECT_EQ(zintstr("MONTH", 5, &com.istmt.intv), 0);
  com.istmt.align = 'E';
}

TEST(Qvtout, WithoutAnIntervalTheIdIsWrittenAsItStands) {
  QVTCOM com;
  std::vector<double> id;
  frame(com, id);
  com.istmt.intv = INTERVAL{};
  EXPECT_EQ(qvtoutx(&com, 6, 0, nullptr), 0);
  EXPECT_EQ(com.id.val, id[6]);
}

TEST(Qvtout, RowsOfAllSeriesFromTheTransposedSpool) {
  InputRun r("series=units,price csv=date,units,price/2020-02-01,1,10");
  std::vector<double> id;
  // Results of the run, series-major: each series' P = 7 cells (BACK=1).
  const std::vector<double> units = {0, 1, 2, 3, 4, 5.5, 6.5}, price = {0, 10, 20, 30, 40, 50, 60};
  const int rc = hostRunStep(r.host, [&] {
    ASSERT_EQ(hostDsOpen(r.host, "out", DsMode::Output, &r.com.ds.out.fileid), 0);
    qvtds(&r.com);
    ASSERT_EQ(r.com.error, 0);
    frame(r.com, id);
    r.com.istmt.back = 1;
    ASSERT_EQ(ztput(r.host, r.com.outfile, 7, units.data()), 0);
    ASSERT_EQ(ztput(r.host, r.com.outfile, 7, price.data()), 0);
    ASSERT_EQ(zttrans(r.host, r.com.outfile, r.com.infile, 2, 7), 0);
    qvtout(&r.com);
    EXPECT_EQ(qvtend(&r.com), 0);
  });
  ASSERT_EQ(rc, 0) << r.log.str();
  // Periods 1 to 6 at their month ends: period 0 is before the input.
  EXPECT_EQ(r.dir.read("out.csv"), "date,units,price\n2020-02-29,1,10\n2020-03-31,2,20\n2020-04-30,3,30\n"
                        "2020-05-31,4,40\n2020-06-30,5.5,50\n2020-07-31,6.5,60\n");
}

}  // namespace
}  // namespace qvt
