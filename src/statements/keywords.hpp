// The keywords of the statement language.
//
// Each keyword has one number: its index in the alphabetical table of main
// spellings. A secondary spelling (ACC beside ACCUMULATE, SELECT beside
// CRITERION, B beside BEGIN) reads as the same number, so nothing after the
// scanner can tell how a keyword was written.
#pragma once

#include <span>
#include <string_view>

namespace qvt {

// Main spellings, sorted by byte value (so '_' sorts after the letters).
std::span<const std::string_view> keywordNames() noexcept;

// Number of a keyword written in upper case (any spelling), or -1.
int keywordFind(std::string_view upper) noexcept;

// Main spelling of a keyword number; empty for a number out of range.
std::string_view keywordName(int kw) noexcept;

struct KeywordSpelling {
  std::string_view spelling;
  std::string_view main;
};

// The secondary spellings and the main word each stands for.
std::span<const KeywordSpelling> keywordSpellings() noexcept;

}  // namespace qvt
