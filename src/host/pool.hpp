// Memory pools under one byte budget.
//
// Every block comes zero-filled. An allocation that would take the budget
// over its limit returns null and adds its size to the deficit, which
// `takeDeficit` reports and clears: the engine makes a group of allocations
// and then tests the deficit once. Pools own their blocks; destroying a pool
// (or the whole PoolSet at the end of a step) frees everything left.
#pragma once

#include <cstddef>
#include <limits>
#include <map>
#include <memory>

namespace qvt {

class MemBudget {
 public:
  explicit MemBudget(std::size_t limit) noexcept : limit_(limit) {}

  // True, and the bytes counted, when they fit; otherwise the bytes go to the deficit.
  bool take(std::size_t bytes) noexcept;
  void give(std::size_t bytes) noexcept { used_ = bytes > used_ ? 0 : used_ - bytes; }
  // Saturates rather than wrapping: a request of nearly all addressable memory
  // must not read back as a negative deficit.
  void addDeficit(std::size_t bytes) noexcept {
    constexpr auto kMax = static_cast<std::size_t>(std::numeric_limits<long long>::max());
    const std::size_t room = kMax - static_cast<std::size_t>(deficit_);
    deficit_ += static_cast<long long>(bytes < room ? bytes : room);
  }
  long long takeDeficit() noexcept {
    const long long d = deficit_;
    deficit_ = 0;
    return d;
  }
  std::size_t limit() const noexcept { return limit_; }
  std::size_t used() const noexcept { return used_; }
  std::size_t left() const noexcept { return limit_ > used_ ? limit_ - used_ : 0; }

 private:
  std::size_t limit_;
  std::size_t used_ = 0;
  long long deficit_ = 0;
};

// One pool: a list of blocks, each with a small header in front that links
// it to its neighbours and keeps its size, so that a block can be freed
// without its size and the pool can free all of them at once.
class Pool {
 public:
  explicit Pool(MemBudget& budget) noexcept : budget_(budget) {}
  ~Pool();
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

  void* alloc(std::size_t bytes) noexcept;
  // Frees a block of this pool; bytes may be -1. A null block is ignored.
  void free(void* block) noexcept;
  // Null on failure, the old block then left as it was. Growth is zero-filled.
  void* realloc(void* block, std::size_t newBytes) noexcept;
  std::size_t blockSize(const void* block) const noexcept;
  std::size_t liveBytes() const noexcept { return live_; }
  std::size_t liveBlocks() const noexcept { return count_; }

 private:
  struct Header;
  MemBudget& budget_;
  Header* head_ = nullptr;
  std::size_t live_ = 0;
  std::size_t count_ = 0;
};

// All pools of a host, by handle number.
class PoolSet {
 public:
  explicit PoolSet(std::size_t limit) : budget_(limit) {}
  int create();
  Pool* find(int id) noexcept;
  void releaseAll() noexcept { pools_.clear(); }
  MemBudget& budget() noexcept { return budget_; }
  const MemBudget& budget() const noexcept { return budget_; }

 private:
  MemBudget budget_;
  std::map<int, std::unique_ptr<Pool>> pools_;
  int next_ = 1;
};

// The memory the machine has available now (MemAvailable of /proc/meminfo,
// else the free physical pages); the default budget of a process host.
std::size_t machineAvailableMemory() noexcept;

}  // namespace qvt
