#include "host/catalog.hpp"

#include <set>
#include <utility>

#include <gtest/gtest.h>

namespace qvt {
namespace {

// catalogFind halves each part, so an unsorted part hides rows; and a
// group and number in two parts would make the text depend on the order of
// the search.
TEST(Catalog, PartsAreSortedAndDisjoint) {
  std::set<std::pair<int, int>> seen;
  for (std::span<const CatalogEntry> part : catalogParts()) {
    for (std::size_t i = 0; i < part.size(); ++i) {
      const CatalogEntry& e = part[i];
      if (e.group == 0) continue;  // an empty part's placeholder
      if (i > 0) {
        EXPECT_LT(std::pair(part[i - 1].group, part[i - 1].number), std::pair(e.group, e.number))
            << "row " << e.group << "/" << e.number << " is out of order";
      }
      EXPECT_TRUE(seen.insert({e.group, e.number}).second) << e.group << "/" << e.number << " twice";
      EXPECT_FALSE(e.text.empty()) << e.group << "/" << e.number;
      const CatalogEntry* f = catalogFind(e.group, e.number);
      ASSERT_NE(f, nullptr) << e.group << "/" << e.number;
      EXPECT_EQ(f->text, e.text);
    }
  }
  EXPECT_EQ(catalogFind(743, 999999), nullptr);
}

}  // namespace
}  // namespace qvt
