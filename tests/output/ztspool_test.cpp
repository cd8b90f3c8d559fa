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

using Cells = std::vector<double>;

struct SpoolHost {
  testing::TempDir dir;
  std::ostringstream log;
  std::unique_ptr<ProcessHost> host;
  SpoolHandle a, b;
  explicit SpoolHost(long long failWriteAt = 0) {
    HostConfig cfg = testing::jsonlConfig(log);
    cfg.tmpDir = dir.path();
    cfg.failSpoolWriteAt = failWriteAt;
    host = std::make_unique<ProcessHost>(cfg);
    EXPECT_EQ(host->init(), 0);
    EXPECT_EQ(ztinit(*host, &a, &b), 0);
  }
  ~SpoolHost() { host->stepEnd(0); }
  // Everything that is left in a spool from its current position.
  Cells rest(SpoolHandle sp) {
    Cells r;
    for (double x; hostSpoolRead(*host, sp, &x, sizeof x) == 0;) r.push_back(x);
    return r;
  }
  std::vector<int> numbers() const { return testing::hostNumbers(log.str()); }
};

// A matrix of nrow rows of ncol cells whose every cell tells its place, and
// its transpose.
Cells matrix(long nrow, long ncol, bool transposed = false) {
  Cells m;
  for (long i = 0; i < nrow * ncol; ++i) {
    const long r = transposed ? i % nrow : i / ncol, c = transposed ? i / nrow : i % ncol;
    m.push_back(static_cast<double>(r * 1000 + c) + 0.25);
  }
  return m;
}

TEST(Zttrans, PassPlanAndTransposeInOneAndManyPasses) {
  // 1000 x 1000 cells are 8 MB: 2097152 / 8000 = 262 output rows a pass,
  // four passes; one output row of 2.4 MB exceeds the pass: one row a pass.
  struct Case { long nrow, ncol, limit, per, passes; };
  const Case cases[] = {
      {1000, 1000, kZtPassBytes, 262, 4}, {300000, 5, kZtPassBytes, 1, 5}, {0, 5, kZtPassBytes, 0, 0},
      {5, 0, kZtPassBytes, 0, 0}, {1, 7, kZtPassBytes, 7, 1}, {13, 11, 3 * 13 * 8, 3, 4}, {13, 11, 0, 1, 11},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.nrow << "x" << c.ncol << " limit " << c.limit);
    const ZtPlan p = zttplan(c.nrow, c.ncol, c.limit);
    EXPECT_EQ(p.per, c.per);
    EXPECT_EQ(p.passes, c.passes);
    if (c.nrow * c.ncol == 0 || c.nrow * c.ncol > 1000) continue;
    SpoolHost s;
    const auto m = matrix(c.nrow, c.ncol);
    ASSERT_EQ(ztput(*s.host, s.b, c.ncol, m.data()), 0);  // left over in the target: cleared first
    for (long i = 0; i < c.nrow; ++i) ASSERT_EQ(ztput(*s.host, s.a, c.ncol, &m[i * c.ncol]), 0);
    ASSERT_EQ(zttransm(*s.host, s.a, s.b, c.nrow, c.ncol, c.limit), 0);
    EXPECT_EQ(s.rest(s.b), matrix(c.nrow, c.ncol, true));  // positioned at its start
    ASSERT_EQ(hostSpoolPoint(*s.host, s.a, 0), 0);
    EXPECT_TRUE(s.rest(s.a).empty());  // the source was cleared
    ASSERT_EQ(zttransm(*s.host, s.b, s.a, c.ncol, c.nrow, c.limit), 0);  // and back
    EXPECT_EQ(s.rest(s.a), m);
  }
}

TEST(Zttrans, ShortInputIsEndOfFileAndFailedPassWriteIs4) {
  SpoolHost s;
  const auto m = matrix(2, 3);
  // A series that put no row: three rows of three announced, two there.
  ASSERT_EQ(ztput(*s.host, s.a, 6, m.data()), 0);
  EXPECT_EQ(zttrans(*s.host, s.a, s.b, 3, 3), 2);
  EXPECT_EQ(s.numbers(), std::vector<int>{82});  // the read that found the end
  EXPECT_EQ(zttrans(*s.host, s.a, s.b, 0, 2), 5);
  // Writes of the host: 1 the input, 2 the first pass, 3 the second pass.
  SpoolHost f(3);
  ASSERT_EQ(ztput(*f.host, f.a, 24, matrix(4, 6).data()), 0);
  EXPECT_EQ(zttransm(*f.host, f.a, f.b, 4, 6, 3 * 4 * 8), 4);
  EXPECT_EQ(f.numbers(), std::vector<int>{81});
}

TEST(Ztget, RowByNumberThenReadingOnAndReset) {
  SpoolHost s;
  const auto m = matrix(3, 4);  // three series of four cells, series-major
  ASSERT_EQ(ztput(*s.host, s.a, 12, m.data()), 0);
  Cells v(4);
  // (row, width, first cell wanted): -1 reads on from where the last read ended.
  const int reads[][3] = {{0, 4, 0}, {-1, 4, 4}, {1, 2, 2}, {2, 4, 8}};
  for (const auto& r : reads) {
    ASSERT_EQ(ztget(*s.host, s.a, r[0], r[1], v.data()), 0) << r[0];
    EXPECT_EQ(Cells(v.begin(), v.begin() + r[1]), Cells(m.begin() + r[2], m.begin() + r[2] + r[1])) << r[0];
  }
  EXPECT_EQ(ztget(*s.host, s.a, -1, 4, v.data()), 2);  // past the end
  EXPECT_EQ(ztget(*s.host, s.a, -2, 4, v.data()), 2);
  // A reset spool starts again from nothing.
  ASSERT_EQ(ztrset(*s.host, s.a), 0);
  ASSERT_EQ(ztput(*s.host, s.a, 1, &m[2]), 0);
  ASSERT_EQ(hostSpoolPoint(*s.host, s.a, 0), 0);
  EXPECT_EQ(s.rest(s.a), Cells{m[2]});
  EXPECT_EQ(ztrset(*s.host, SpoolHandle{}), 1);
}

TEST(ZtputZtinitZtterm, WritesOpenCloseAndFailures) {
  SpoolHost s(2);  // the second write of the host fails
  const double x[] = {1, 2};
  EXPECT_EQ(ztput(*s.host, s.a, 2, x), 0);
  EXPECT_EQ(ztput(*s.host, s.a, 2, x), 2);  // the hook
  EXPECT_EQ(ztput(*s.host, s.a, -1, x), 1);
  EXPECT_EQ(ztput(*s.host, s.a, 2, nullptr), 1);
  EXPECT_EQ(ztput(*s.host, s.a, 0, nullptr), 0);
  EXPECT_EQ(ztinit(*s.host, nullptr, &s.b), 1);
  EXPECT_EQ(ztterm(*s.host, SpoolHandle{}, s.b), 1);
  EXPECT_EQ(ztterm(*s.host, s.a, s.b), 0);
  EXPECT_TRUE(s.dir.entries().empty());
  EXPECT_EQ(ztterm(*s.host, s.a, s.b), 2);  // closed already: the first close fails and is explained
  EXPECT_EQ(s.numbers(), std::vector<int>{90});
  HostConfig cfg = testing::jsonlConfig(s.log);
  cfg.tmpDir = s.dir.file("missing");
  ProcessHost h(cfg);
  SpoolHandle one, two;
  EXPECT_EQ(ztinit(h, &one, &two), 2);
}

}  // namespace
}  // namespace qvt
