// Spools: a stream of doubles written, read back, cut and rewritten, and the
// hook that makes one write fail.
#include "host/spool.hpp"

#include <filesystem>
#include <numeric>

#include "host_test_util.hpp"

namespace qvt {
namespace {

TEST(Spool, WriteReadCutAndRewrite) {
  testing::TempDir dir;
  SpoolFile sp;
  ASSERT_EQ(sp.open(dir.path()), 0);
  EXPECT_TRUE(dir.entries().empty());  // unlinked at once
  // 30000 doubles: 240 KB, several buffers, written in rows of 3.
  std::vector<double> v(30000);
  std::iota(v.begin(), v.end(), 0.5);
  for (std::size_t i = 0; i < v.size(); i += 3) ASSERT_EQ(sp.write(&v[i], 3 * sizeof(double)), 0);
  EXPECT_EQ(sp.size(), static_cast<long long>(v.size() * sizeof(double)));
  ASSERT_EQ(sp.point(0), 0);
  std::vector<double> back(v.size());
  for (std::size_t i = 0; i < v.size(); i += 5) ASSERT_EQ(sp.read(&back[i], 5 * sizeof(double)), 0);
  EXPECT_EQ(back, v);
  double x;
  EXPECT_EQ(sp.read(&x, sizeof x), 1);  // the end of the file
  // The double at a byte position, NaN when it can't be read.
  const auto at = [&](long long pos) {
    double got = std::nan("");
    EXPECT_EQ(sp.point(pos), 0);
    EXPECT_EQ(sp.read(&got, sizeof got), 0) << pos;
    return got;
  };
  EXPECT_EQ(at(1000 * sizeof(double)), 1000.5);  // random access: the 1000th cell
  // Position 0, then -2: empties the spool (the engine's reset between groups).
  ASSERT_EQ(sp.point(0), 0);
  ASSERT_EQ(sp.point(-2), 0);
  EXPECT_EQ(sp.size(), 0);
  EXPECT_EQ(sp.read(&x, sizeof x), 1);
  for (const double cell : {9.0, 7.0}) {  // the second overwrites after a read filled the cache
    ASSERT_EQ(sp.point(0), 0);
    ASSERT_EQ(sp.write(&cell, sizeof cell), 0);
    EXPECT_EQ(at(0), cell);
    EXPECT_EQ(sp.read(&x, sizeof x), 1);
  }
  EXPECT_EQ(sp.point(-5), -1);
}

TEST(SpoolThroughHost, NthWriteFailsAndMsgRawExplains) {
  testing::TempDir dir;
  testing::HostFixture f(false, [&](HostConfig& c) {
    c.tmpDir = dir.path();
    c.failSpoolWriteAt = 3;
  });
  ProcessHost& h = *f.host;
  SpoolHandle a, b;
  ASSERT_EQ(hostSpoolOpen(h, &a), 0);
  ASSERT_EQ(hostSpoolOpen(h, &b), 0);
  const double x = 1.5;
  EXPECT_EQ(hostSpoolWrite(h, a, &x, sizeof x), 0);
  EXPECT_EQ(hostSpoolWrite(h, b, &x, sizeof x), 0);
  const int r = hostSpoolWrite(h, a, &x, sizeof x);  // the third write of the host
  EXPECT_EQ(r, kHostSpoolFailed);
  EXPECT_EQ(hostSpoolWrite(h, a, &x, sizeof x), 0);
  EXPECT_TRUE(f.log.str().empty());  // the engine asks for the explanation
  hostMsgRaw(h, 0, r);
  EXPECT_EQ(f.numbers(), std::vector<int>{81});
  // End of file under the engine's mask.
  double y;
  ASSERT_EQ(hostSpoolPoint(h, b, 0), 0);
  ASSERT_EQ(hostSpoolRead(h, b, &y, sizeof y), 0);
  const int eof = hostSpoolRead(h, b, &y, sizeof y);
  EXPECT_EQ(eof & 0x803FFFFF, 0x801);
  EXPECT_EQ(hostSpoolClose(h, a, 1), 0);
  EXPECT_EQ(hostSpoolClose(h, a, 1), kHostBadHandle);
  EXPECT_EQ(hostSpoolWrite(h, SpoolHandle{}, &x, sizeof x), kHostBadHandle);
  h.stepEnd(0);  // closes b
  EXPECT_EQ(hostSpoolPoint(h, b, 0), kHostBadHandle);
  EXPECT_TRUE(dir.entries().empty());
}

TEST(Spool, FolderThatDoesNotExist) {
  SpoolFile sp;
  EXPECT_EQ(sp.open("/nonexistent/qvt/folder"), -1);
  EXPECT_FALSE(sp.error().empty());
  double x = 0;
  EXPECT_EQ(sp.write(&x, sizeof x), -1);
  testing::HostFixture f(false, [](HostConfig& c) { c.tmpDir = "/nonexistent/qvt/folder"; });
  SpoolHandle a;
  EXPECT_EQ(hostSpoolOpen(*f.host, &a), kHostSpoolFailed);
  EXPECT_FALSE(a);
  EXPECT_EQ(f.numbers(), std::vector<int>{80});
}

}  // namespace
}  // namespace qvt
