#include "host/catalog.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

namespace qvt {
namespace {

using enum Severity;

// Groups: 743 the procedure's own messages and labels, 881 run information and
// intermittent models, 882 time ID positioning, 773 the LEAD= limit, 129 the
// parser, 900 the host layer (command line, data sets, pools, spools).
// Keep the rows sorted by group and number: catalogFind searches by halving.
constexpr CatalogEntry kCatalog[] = {
    // --- group 129: statement parser ---
    // --- group 743: procedure ---
    // --- group 773: LEAD= limit ---
    // --- group 881: run information, intermittent models ---
    // --- group 882: time ID positioning ---
    // --- group 900: host layer ---
    {900, 1, Error, "Internal placeholder message {1}."},
};

}  // namespace

std::span<const CatalogEntry> catalogAll() noexcept { return kCatalog; }

const CatalogEntry* catalogFind(int group, int number) noexcept {
  auto key = [](const CatalogEntry& e) { return std::pair{e.group, e.number}; };
  auto it = std::lower_bound(std::begin(kCatalog), std::end(kCatalog), std::pair{group, number},
                             [&](const CatalogEntry& e, const std::pair<int, int>& k) { return key(e) < k; });
  if (it == std::end(kCatalog) || key(*it) != std::pair{group, number}) return nullptr;
  return &*it;
}

std::string catalogFormat(const CatalogEntry& e, std::span<const MsgArg> args) {
  std::string out;
  const std::string_view t = e.text;
  for (std::size_t i = 0; i < t.size(); ++i) {
    if (t[i] == '{' && i + 2 < t.size() && t[i + 1] >= '1' && t[i + 1] <= '9' && t[i + 2] == '}') {
      const auto k = static_cast<std::size_t>(t[i + 1] - '1');
      if (k < args.size()) {
        std::visit(
            [&](const auto& v) {
              using T = std::decay_t<decltype(v)>;
              if constexpr (std::is_same_v<T, std::string>) {
                out += v;
              } else if constexpr (std::is_same_v<T, double>) {
                char buf[32];
                std::snprintf(buf, sizeof buf, "%.15g", v);
                out += buf;
              } else {
                out += std::to_string(v);
              }
            },
            args[k]);
      }
      i += 2;
    } else {
      out += t[i];
    }
  }
  return out;
}

}  // namespace qvt
