#include "host/pool.hpp"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace qvt {

bool MemBudget::take(std::size_t bytes) noexcept {
  if (bytes > left()) {
    addDeficit(bytes);
    return false;
  }
  used_ += bytes;
  return true;
}

// 32 bytes keep the payload aligned for any scalar type (alignof(max_align_t) is 16).
struct alignas(16) Pool::Header {
  Header* prev;
  Header* next;
  std::size_t size;
  std::size_t magic;
};


namespace {
constexpr std::size_t kMagic = 0x51565450u;  // guards against a foreign pointer in free
constexpr std::size_t kMaxBlock = std::numeric_limits<std::size_t>::max() / 2;
}  // namespace

Pool::~Pool() {
  while (head_) free(head_ + 1);
}

void* Pool::alloc(std::size_t bytes) noexcept {
  static_assert(sizeof(Header) % alignof(std::max_align_t) == 0);
  if (bytes > kMaxBlock) {
    budget_.addDeficit(bytes);
    return nullptr;
  }
  if (!budget_.take(bytes)) return nullptr;
  auto* h = static_cast<Header*>(std::calloc(1, sizeof(Header) + bytes));
  if (!h) {
    budget_.give(bytes);
    budget_.addDeficit(bytes);
    return nullptr;
  }
  h->size = bytes;
  h->magic = kMagic;
  h->prev = nullptr;
  h->next = head_;
  if (head_) head_->prev = h;
  head_ = h;
  live_ += bytes;
  ++count_;
  return h + 1;
}

void Pool::free(void* block) noexcept {
  if (!block) return;
  Header* h = static_cast<Header*>(block) - 1;
  if (h->magic != kMagic) return;  // not ours: leave it rather than corrupt the heap
  if (h->prev) h->prev->next = h->next; else head_ = h->next;
  if (h->next) h->next->prev = h->prev;
  budget_.give(h->size);
  live_ -= h->size;
  --count_;
  h->magic = 0;
  std::free(h);
}

std::size_t Pool::blockSize(const void* block) const noexcept {
  if (!block) return 0;
  const Header* h = static_cast<const Header*>(block) - 1;
  return h->magic == kMagic ? h->size : 0;
}

void* Pool::realloc(void* block, std::size_t newBytes) noexcept {
  if (!block) return alloc(newBytes);
  Header* h = static_cast<Header*>(block) - 1;
  if (h->magic != kMagic || newBytes > kMaxBlock) {
    budget_.addDeficit(newBytes);
    return nullptr;
  }
  const std::size_t old = h->size;
  // Only the growth counts against the budget: the old bytes are already in it.
  if (newBytes > old) {
    if (newBytes - old > budget_.left()) {
      budget_.addDeficit(newBytes);  // the caller asked for the whole new size
      return nullptr;
    }
    budget_.take(newBytes - old);
  }
  auto* moved = static_cast<Header*>(std::realloc(h, sizeof(Header) + newBytes));
  if (!moved) {
    if (newBytes > old) {
      budget_.give(newBytes - old);
      budget_.addDeficit(newBytes);
    }
    return nullptr;
  }
  if (newBytes < old) budget_.give(old - newBytes);
  if (moved->prev) moved->prev->next = moved; else head_ = moved;
  if (moved->next) moved->next->prev = moved;
  if (newBytes > old) std::memset(reinterpret_cast<char*>(moved + 1) + old, 0, newBytes - old);
  live_ = live_ - old + newBytes;
  moved->size = newBytes;
  return moved + 1;
}

int PoolSet::create() {
  const int id = next_++;
  pools_.emplace(id, std::make_unique<Pool>(budget_));
  return id;
}

Pool* PoolSet::find(int id) noexcept {
  const auto it = pools_.find(id);
  return it == pools_.end() ? nullptr : it->second.get();
}

std::size_t machineAvailableMemory() noexcept {
  if (std::FILE* f = std::fopen("/proc/meminfo", "r")) {
    char line[256];
    unsigned long long kb = 0;
    while (std::fgets(line, sizeof line, f)) {
      if (std::sscanf(line, "MemAvailable: %llu kB", &kb) == 1) break;
    }
    std::fclose(f);
    if (kb > 0) return static_cast<std::size_t>(kb) * 1024u;
  }
  const long pages = ::sysconf(_SC_AVPHYS_PAGES);
  const long page = ::sysconf(_SC_PAGESIZE);
  if (pages > 0 && page > 0) return static_cast<std::size_t>(pages) * static_cast<std::size_t>(page);
  return std::size_t{1} << 30;
}

}  // namespace qvt
