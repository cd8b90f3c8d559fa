// The failure accounting of the per-series run: the MAXERROR= limit on
// failure messages, and the memory test that ends a series with message 2000
// and the return code by BY statement.
#include <gtest/gtest.h>

#include <sstream>

#include "output/qvtds.hpp"
#include "output/ztspool.hpp"
#include "run/dovqvt.hpp"
#include "test_host.hpp"

namespace qvt {
namespace {

using testing::RecordingProcessHost;

struct Rig {
  std::ostringstream log;
  RecordingProcessHost host;
  QVTCOM com;
  VAR var;
  explicit Rig(std::size_t memsize) : host(config(memsize, log)) {
    EXPECT_EQ(host.init(), 0);
    com.host = &host;
    var.name.set("units");
    com.current.varptr = &var;
    com.current.var = var.name;
  }
  static HostConfig config(std::size_t memsize, std::ostringstream& log) {
    HostConfig c;
    c.logStream = &log;
    c.memsize = memsize;
    return c;
  }
};

TEST(Memory, DeficitEndsTheSeriesWithTheCodeOfTheStep) {
  for (const int nby : {0, 1}) {
    SCOPED_TRACE(::testing::Message() << "nby " << nby);
    Rig r(4096);
    r.com.nby = nby;
    EXPECT_EQ(memory(&r.com), 0);  // no deficit: nothing happens
    EXPECT_EQ(r.host.count(kMsgProc, kMsgSeriesMemory), 0);
    EXPECT_EQ(r.com.error, 0);

    const PoolHandle pool = hostPoolCreate(r.host, 0, 1024, 6);
    ASSERT_TRUE(pool);
    EXPECT_EQ(hostPoolAlloc(r.host, pool, 1 << 20), nullptr);  // beyond the budget
    EXPECT_EQ(memory(&r.com), -1);
    const testing::LoggedMsg* m = r.host.find(kMsgProc, kMsgSeriesMemory);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(testing::argText(*m, 0), "units");
    EXPECT_EQ(r.com.error, 1);
    EXPECT_EQ(r.com.rc, nby ? kRcMemoryBy : kRcMemory);
    EXPECT_EQ(r.com.memdef, 0);  // reported once, then cleared
    r.com.error = 0;
    EXPECT_EQ(memory(&r.com), 0);
    EXPECT_EQ(r.host.count(kMsgProc, kMsgSeriesMemory), 1);
  }
}

TEST(Failure, CountsEveryFailureAndAllowsMessagesUpToMaxerror) {
  // OUT= isn't open, so the rows of a failed series go nowhere; what counts
  // here is the status and the count against MAXERROR=.
  for (const long maxerror : {0L, 1L, 3L}) {
    SCOPED_TRACE(::testing::Message() << "maxerror " << maxerror);
    Rig r(0);
    r.com.maxerror = maxerror;
    r.com.nvars = 1;
    for (long k = 1; k <= 4; ++k) {
      const bool allowed = failure(&r.com, kStatusEstimation);
      EXPECT_EQ(allowed, k <= maxerror) << "failure " << k;
      EXPECT_EQ(r.com.counts.failures, k);
      EXPECT_EQ(r.com.current.status, kStatusEstimation);
    }
  }
}

TEST(Putresult, SpoolThatFailsEndsTheStep) {
  // With several series the results go to the spool; a write that fails
  // leaves rows that can't be trusted, so the step ends with rc 1020 after
  // message 40, and nothing after putresult runs.
  Rig r(0);
  r.com.nvars = 2;
  std::vector<double> y = {1, 2, 3};
  r.com.out.y = y.data();
  r.com.out.tobs = 3;
  ASSERT_EQ(ztinit(r.host, &r.com.infile, &r.com.outfile), 0);
  putresult(&r.com);  // a good write first
  r.host.setSpoolWriteFailure(2);
  bool after = false;
  const int rc = hostRunStep(r.host, [&] {
    putresult(&r.com);
    after = true;
  });
  EXPECT_EQ(rc, kRcSpool);
  EXPECT_FALSE(after);
  EXPECT_EQ(r.host.count(kMsgProc, kMsgSpoolFailed), 1);
}

}  // namespace
}  // namespace qvt
