// The message catalogue: one row per group and number, with the severity and
// a text whose placeholders {1}, {2} ... take the message's arguments.
#pragma once

#include <string>
#include <string_view>
#include <span>

#include "host/host.hpp"

namespace qvt {

struct CatalogEntry {
  int group;
  int number;
  Severity severity;
  std::string_view text;
};

// The row of a group and number, or null when the catalogue has none.
const CatalogEntry* catalogFind(int group, int number) noexcept;

// The text of a message with its arguments put in place.
std::string catalogFormat(const CatalogEntry& e, std::span<const MsgArg> args);

std::span<const CatalogEntry> catalogAll() noexcept;

}  // namespace qvt
