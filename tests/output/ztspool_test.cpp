// The series spool: the pass plan of the transposition, the transposition
// against a direct transpose in one and in many passes, positioned reads,
// and the failure results through the host's failure hook.
#include "output/ztspool.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "../host/host_test_util.hpp"
#include "host/process_host.hpp"

namespace qvt {
namespace {

struct SpoolHost {
  testing::TempDir dir;
  std::ostringstream log;
  std::unique_ptr<ProcessHost> host;
  SpoolHandle a, b;
  explicit SpoolHost(long long failWriteAt = 0) {
    HostConfig cfg;
    cfg.tmpDir = dir.path();
    cfg.logFormat = LogFormat::Jsonl;
    cfg.logStream = &log;
    cfg.failSpoolWriteAt = failWriteAt;
    host = std::make_unique<ProcessHost>(cfg);
    EXPECT_EQ(host->init(), 0);
    EXPECT_EQ(ztinit(*host, &a, &b), 0);
  }
  ~SpoolHost() { host->stepEnd(0); }
  // Everything that is left in a spool from its current position.
  std::vector<double> rest(SpoolHandle sp) {
    std::vector<double> r;
    double x;
    while (hostSpoolRead(*host, sp, &x, sizeof x) == 0) r.push_back(x);
    return r;
  }
};

// A matrix of nrow rows of ncol cells whose every cell tells its place.
std::vector<double> matrix(long nrow, long ncol) {
  std::vector<double> m;
  for (long i = 0; i < nrow; ++i)
    for (long j = 0; j < ncol; ++j) m.push_back(static_cast<double>(i * 1000 + j) + 0.25);
  return m;
}

std::vector<double> transpose(const std::vector<double>& m, long nrow, long ncol) {
  std::vector<double> t(m.size());
  for (long i = 0; i < nrow; ++i)
    for (long j = 0; j < ncol; ++j)
      t[static_cast<std::size_t>(j * nrow + i)] = m[static_cast<std::size_t>(i * ncol + j)];
  return t;
}

TEST(Zttplan, PassArithmetic) {
  struct Case {
    long nrow, ncol, limit, per, passes;
  } const cases[] = {
      // 1000 x 1000 cells are 8 MB: 2097152 / 8000 = 262 output rows a pass,
      // four passes, the last of 1000 - 3 x 262 = 214 rows.
      {1000, 1000, kZtPassBytes, 262, 4},
      {1, 5000, kZtPassBytes, 5000, 1},    // one record: everything fits
      {5000, 1, kZtPassBytes, 1, 1},       // one series
      {10, 10, kZtPassBytes, 10, 1},       // smaller than a pass
      // One output row of 2.4 MB exceeds the pass: one row a pass.
      {300000, 5, kZtPassBytes, 1, 5},
      {13, 11, 3 * 13 * 8, 3, 4},          // forced: three rows a pass
      {13, 11, 0, 1, 11},                  // no room: still one row a pass
      {0, 5, kZtPassBytes, 0, 0},
      {5, 0, kZtPassBytes, 0, 0},
  };
  for (const Case& c : cases) {
    const ZtPlan p = zttplan(c.nrow, c.ncol, c.limit);
    EXPECT_EQ(p.per, c.per) << c.nrow << "x" << c.ncol;
    EXPECT_EQ(p.passes, c.passes) << c.nrow << "x" << c.ncol;
    if (p.per > 0) {  // the passes cover the rows, the last one not empty
      EXPECT_GE(p.per * p.passes, c.ncol);
      EXPECT_LT(p.per * (p.passes - 1), c.ncol);
    }
  }
}

TEST(Zttrans, MatchesDirectTransposeInOneAndManyPasses) {
  struct Case {
    long nrow, ncol, limit;
  } const cases[] = {
      {1, 7, kZtPassBytes}, {7, 1, kZtPassBytes}, {1, 1, kZtPassBytes},
      {13, 11, kZtPassBytes},  // one pass
      {13, 11, 3 * 13 * 8},    // 4 passes, the last with 2 rows
      {13, 11, 0},             // 11 passes of one row
      {6, 9, 4 * 6 * 8},       // 3 passes: 4, 4, 1
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.nrow << "x" << c.ncol << " limit " << c.limit);
    SpoolHost s;
    const auto m = matrix(c.nrow, c.ncol);
    for (long i = 0; i < c.nrow; ++i) ASSERT_EQ(ztput(*s.host, s.a, c.ncol, &m[static_cast<std::size_t>(i * c.ncol)]), 0);
    ASSERT_EQ(zttransm(*s.host, s.a, s.b, c.nrow, c.ncol, c.limit), 0);
    EXPECT_EQ(s.rest(s.b), transpose(m, c.nrow, c.ncol));  // positioned at its start
    ASSERT_EQ(hostSpoolPoint(*s.host, s.a, 0), 0);
    EXPECT_TRUE(s.rest(s.a).empty());  // the source was cleared
    // And back: the round trip gives the original.
    ASSERT_EQ(zttransm(*s.host, s.b, s.a, c.ncol, c.nrow, c.limit), 0);
    EXPECT_EQ(s.rest(s.a), m);
  }
}

TEST(Zttrans, TargetIsClearedFirstAndShortInputIsEndOfFile) {
  SpoolHost s;
  const double junk[] = {-1, -2, -3, -4, -5, -6, -7, -8, -9};
  ASSERT_EQ(ztput(*s.host, s.b, 9, junk), 0);  // left over in the target
  const auto m = matrix(2, 3);
  ASSERT_EQ(ztput(*s.host, s.a, 6, m.data()), 0);
  ASSERT_EQ(zttrans(*s.host, s.a, s.b, 2, 3), 0);
  EXPECT_EQ(s.rest(s.b), transpose(m, 2, 3));
  // A series that put no row: three rows of three announced, two there.
  ASSERT_EQ(ztput(*s.host, s.a, 6, m.data()), 0);
  EXPECT_EQ(zttrans(*s.host, s.a, s.b, 3, 3), 2);
  EXPECT_EQ(testing::hostNumbers(s.log.str()), std::vector<int>{82});  // the read that found the end
  // Bad arguments.
  EXPECT_EQ(zttrans(*s.host, s.a, s.b, 0, 2), 5);
  EXPECT_EQ(zttrans(*s.host, s.a, s.b, 2, -1), 5);
  EXPECT_EQ(zttrans(*s.host, SpoolHandle{}, s.b, 2, 2), 5);
}

TEST(Zttrans, FailedWriteOfAPassIsResult4) {
  // Writes of the host: 1 the input, 2 the first pass, 3 the second pass.
  SpoolHost s(3);
  const auto m = matrix(4, 6);
  ASSERT_EQ(ztput(*s.host, s.a, 24, m.data()), 0);
  EXPECT_EQ(zttransm(*s.host, s.a, s.b, 4, 6, 3 * 4 * 8), 4);
  EXPECT_EQ(testing::hostNumbers(s.log.str()), std::vector<int>{81});
}

TEST(Ztput, FailedWriteIsResult2AndBadArgumentsResult1) {
  SpoolHost s(2);
  const double x[] = {1, 2};
  EXPECT_EQ(ztput(*s.host, s.a, 2, x), 0);
  EXPECT_EQ(ztput(*s.host, s.a, 2, x), 2);  // the hook
  EXPECT_EQ(ztput(*s.host, s.a, 2, x), 0);  // the spool goes on
  EXPECT_EQ(ztput(*s.host, SpoolHandle{}, 2, x), 1);
  EXPECT_EQ(ztput(*s.host, s.a, -1, x), 1);
  EXPECT_EQ(ztput(*s.host, s.a, 2, nullptr), 1);
  EXPECT_EQ(ztput(*s.host, s.a, 0, nullptr), 0);
}

TEST(Ztget, RowByNumberThenReadingOn) {
  SpoolHost s;
  const auto m = matrix(3, 4);  // three series of four cells, series-major
  ASSERT_EQ(ztput(*s.host, s.a, 12, m.data()), 0);
  std::vector<double> v(4);
  const auto row = [&](int i) { return std::vector<double>(m.begin() + 4 * i, m.begin() + 4 * i + 4); };
  ASSERT_EQ(ztget(*s.host, s.a, 2, 4, v.data()), 0);
  EXPECT_EQ(v, row(2));
  ASSERT_EQ(ztget(*s.host, s.a, 0, 4, v.data()), 0);
  EXPECT_EQ(v, row(0));
  ASSERT_EQ(ztget(*s.host, s.a, -1, 4, v.data()), 0);  // on from row 0
  EXPECT_EQ(v, row(1));
  ASSERT_EQ(ztget(*s.host, s.a, 1, 2, v.data()), 0);  // rows of 2: cells 2 and 3
  EXPECT_EQ(v[0], m[2]);
  EXPECT_EQ(v[1], m[3]);
  ASSERT_EQ(ztget(*s.host, s.a, 2, 4, v.data()), 0);
  EXPECT_EQ(ztget(*s.host, s.a, -1, 4, v.data()), 2);  // past the end
  EXPECT_EQ(ztget(*s.host, s.a, 3, 4, v.data()), 2);   // row 3 doesn't exist
  EXPECT_EQ(ztget(*s.host, s.a, -2, 4, v.data()), 2);
  EXPECT_EQ(ztget(*s.host, SpoolHandle{}, 0, 4, v.data()), 2);
  EXPECT_EQ(ztget(*s.host, s.a, 0, 4, nullptr), 2);
}

TEST(Ztrset, EmptiesAndNullIsResult1) {
  SpoolHost s;
  const double x[] = {1, 2, 3};
  ASSERT_EQ(ztput(*s.host, s.a, 3, x), 0);
  ASSERT_EQ(ztrset(*s.host, s.a), 0);
  ASSERT_EQ(ztput(*s.host, s.a, 1, x + 2), 0);
  ASSERT_EQ(hostSpoolPoint(*s.host, s.a, 0), 0);
  EXPECT_EQ(s.rest(s.a), std::vector<double>{3});
  EXPECT_EQ(ztrset(*s.host, SpoolHandle{}), 1);
}

TEST(ZtinitZtterm, OpenCloseAndFailures) {
  SpoolHost s;
  EXPECT_EQ(ztinit(*s.host, nullptr, &s.b), 1);
  EXPECT_EQ(ztterm(*s.host, SpoolHandle{}, s.b), 1);
  EXPECT_EQ(ztterm(*s.host, s.a, s.b), 0);
  EXPECT_TRUE(s.dir.entries().empty());
  // Closed already: the first close fails and is explained.
  EXPECT_EQ(ztterm(*s.host, s.a, s.b), 2);
  EXPECT_EQ(testing::hostNumbers(s.log.str()), std::vector<int>{90});

  testing::TempDir none;
  HostConfig cfg;
  cfg.tmpDir = none.path() + "/missing";
  std::ostringstream log;
  cfg.logStream = &log;
  ProcessHost h(cfg);
  SpoolHandle x, y;
  EXPECT_EQ(ztinit(h, &x, &y), 2);
}

}  // namespace
}  // namespace qvt
