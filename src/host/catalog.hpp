// The message catalogue: one row per group and number, with the severity and
// a text whose placeholders {1}, {2} ... take the message's arguments.
#pragma once

#include <array>
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

// The catalogue comes in parts, each sorted by group and number; a group and
// number stands in one part only.
std::span<const CatalogEntry> catalogRun() noexcept;         // the driver and the per-series run
std::span<const CatalogEntry> catalogInput() noexcept;       // BY-group input, time ID checks, positions
std::span<const CatalogEntry> catalogStatements() noexcept;  // statements into the run
std::span<const CatalogEntry> catalogOutput() noexcept;      // output data sets and the spool
std::span<const CatalogEntry> catalogReport() noexcept;      // printed tables
std::array<std::span<const CatalogEntry>, 6> catalogParts() noexcept;

}  // namespace qvt
