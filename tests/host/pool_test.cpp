// Pools under a byte budget: zero-filled blocks, the deficit, growth.
#include "host/pool.hpp"

#include <algorithm>
#include <cstring>

#include "host_test_util.hpp"

namespace qvt {
namespace {

bool allZero(const void* p, std::size_t n) {
  const auto* b = static_cast<const unsigned char*>(p);
  return std::all_of(b, b + n, [](unsigned char c) { return c == 0; });
}

TEST(Pool, BudgetAndDeficit) {
  struct Step {
    std::size_t bytes;
    bool ok;
    std::size_t used;   // after the step
    long long deficit;  // taken after the step
  };
  // Budget 1000: 400 + 500 fit, 200 more does not (deficit 200), 100 fits
  // exactly, then nothing is left.
  const Step steps[] = {{400, true, 400, 0}, {500, true, 900, 0}, {200, false, 900, 200},
                        {100, true, 1000, 0}, {1, false, 1000, 1}, {0, true, 1000, 0}};
  PoolSet set(1000);
  Pool* p = set.find(set.create());
  ASSERT_NE(p, nullptr);
  for (const Step& s : steps) {
    void* b = p->alloc(s.bytes);
    EXPECT_EQ(b != nullptr, s.ok) << s.bytes;
    EXPECT_TRUE(!b || allZero(b, s.bytes));
    EXPECT_EQ(set.budget().used(), s.used);
    EXPECT_EQ(set.budget().takeDeficit(), s.deficit);
  }
  // The deficit adds up over a group of failed allocations; taking clears it.
  EXPECT_EQ(p->alloc(50), nullptr);
  EXPECT_EQ(p->alloc(70), nullptr);
  EXPECT_EQ(set.budget().takeDeficit(), 120);
  EXPECT_EQ(set.budget().takeDeficit(), 0);
  // A huge request is a deficit, not a crash.
  PoolSet huge(static_cast<std::size_t>(-1));
  EXPECT_EQ(huge.find(huge.create())->alloc(static_cast<std::size_t>(-1) - 8), nullptr);
  EXPECT_GT(huge.budget().takeDeficit(), 0);
}

TEST(Pool, FreeReallocAndRelease) {
  PoolSet set(1000);
  Pool* a = set.find(set.create());
  Pool* b = set.find(set.create());
  void* x = a->alloc(300);
  b->alloc(300);
  auto* v = static_cast<unsigned char*>(a->alloc(300));
  EXPECT_EQ(set.budget().left(), 100u);
  a->free(x);
  a->free(nullptr);  // ignored
  EXPECT_EQ(set.budget().left(), 400u);
  EXPECT_EQ(a->liveBlocks(), 1u);
  std::memset(v, 7, 300);
  // Growing to 600 needs 300 more: it fits although 300 + 600 more would not.
  auto* w = static_cast<unsigned char*>(a->realloc(v, 600));
  ASSERT_NE(w, nullptr);
  EXPECT_EQ(w[0], 7);
  EXPECT_EQ(w[299], 7);
  EXPECT_TRUE(allZero(w + 300, 300));
  EXPECT_EQ(set.budget().used(), 900u);
  EXPECT_EQ(a->blockSize(w), 600u);
  // Too much: null, the old block intact, the deficit is the asked size.
  EXPECT_EQ(a->realloc(w, 2000), nullptr);
  EXPECT_EQ(w[299], 7);
  EXPECT_EQ(set.budget().takeDeficit(), 2000);
  // Shrinking gives bytes back.
  w = static_cast<unsigned char*>(a->realloc(w, 100));
  ASSERT_NE(w, nullptr);
  EXPECT_EQ(w[99], 7);
  EXPECT_EQ(set.budget().used(), 400u);
  set.releaseAll();
  EXPECT_EQ(set.budget().used(), 0u);
  EXPECT_EQ(set.find(1), nullptr);
}

TEST(PoolThroughHost, MemsizeLimitsAndMessages) {
  testing::HostFixture f(false, [](HostConfig& c) { c.memsize = 4096; });
  ProcessHost& h = *f.host;
  const PoolHandle pool = hostPoolCreate(h, 0, 1024, 6);
  ASSERT_TRUE(pool);
  EXPECT_EQ(hostPoolSize(h), 4096u);
  void* a = hostPoolAlloc(h, pool, 4000);
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(hostPoolAlloc(h, pool, 200), nullptr);
  EXPECT_EQ(hostRealloc(h, pool, a, 4000, 8000, 4), nullptr);
  EXPECT_EQ(hostPoolAlloc(h, PoolHandle{}, 8), nullptr);  // no such pool
  EXPECT_EQ(hostMemDefault(h), 200 + 8000 + 8);
  EXPECT_EQ(hostMemDefault(h), 0);
  hostMemMessage(h, 8200);
  const auto lines = testing::jsonLines(f.log.str());
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].at("number"), 70);
  EXPECT_EQ(lines[0].at("args"), nlohmann::json::parse("[8200, 4096]"));
  // The end of the step frees every pool.
  h.stepEnd(0);
  EXPECT_EQ(hostPoolSize(h), 4096u);
}

}  // namespace
}  // namespace qvt
