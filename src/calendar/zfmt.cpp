// Format names: lookup in the format table, kind and units of a name, and
// the text of a format with its width and decimals.
#include "calendar/zfmt.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace qvt {
namespace {

// The text without its trailing blanks. Names compare as if the shorter were
// blank-filled, so trailing blanks never decide a match; case does.
std::string_view trimmedName(const tchar* s, int len) noexcept {
  if (s == nullptr || len <= 0) return {};
  std::size_t n = static_cast<std::size_t>(len);
  while (n > 0 && s[n - 1] == ' ') --n;
  return {s, n};
}

// Compares by unsigned character code, as the table is sorted.
int compareCode(std::string_view a, std::string_view b) noexcept {
  const std::size_t n = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    const auto ca = static_cast<unsigned char>(a[i]);
    const auto cb = static_cast<unsigned char>(b[i]);
    if (ca != cb) return ca < cb ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

// Index of the first row of a name, or -1. The table is sorted, so a binary
// search finds the same first row as a walk from the top would.
int findRow(std::string_view name) noexcept {
  if (name.empty() || name.size() >= static_cast<std::size_t>(kFmtNameSize)) return -1;
  const auto it = std::lower_bound(
      fmtinfox.begin(), fmtinfox.end(), name,
      [](const FMTINFOX& row, std::string_view key) { return compareCode(row.fmtname, key) < 0; });
  if (it == fmtinfox.end() || compareCode(it->fmtname, name) != 0) return -1;
  return static_cast<int>(it - fmtinfox.begin());
}

}  // namespace

int zfmttype(const tchar* format, int fmtlen) noexcept {
  const int row = findRow(trimmedName(format, fmtlen));
  if (row < 0) return kFmtKindUnknown;
  const std::string_view cat = fmtinfox[static_cast<std::size_t>(row)].category;
  if (cat == "num") return kFmtKindNum;
  if (cat == "date") return kFmtKindDate;
  if (cat == "time") return kFmtKindTime;
  if (cat == "datetime") return kFmtKindDatetime;
  return kFmtKindOther;
}

char zfmtunits(const tchar* format, int fmtlen) noexcept {
  switch (zfmttype(format, fmtlen)) {
    case kFmtKindNum: return 'o';
    case kFmtKindDate: return 'd';
    case kFmtKindTime:
    case kFmtKindDatetime: return 's';
    default: return 0;
  }
}

long zfmtcode(const tchar* format, int fmtlen) noexcept {
  const int row = findRow(trimmedName(format, fmtlen));
  return row < 0 ? 0 : row + 1L;
}

const char* zfmtshow(long code) noexcept {
  if (code < 1 || code > kFmtInfoRows) return nullptr;
  return fmtinfox[static_cast<std::size_t>(code - 1)].fmtname;
}

void zfmtstri(long code, int len, int ndec, FMTSTRING* str) noexcept {
  if (str == nullptr) return;
  str->string_l = 0;
  std::fill(str->string, str->string + kFmtStringSize, ' ');
  const char* name = zfmtshow(code);
  if (name == nullptr) return;
  const int nl = static_cast<int>(trimmedName(name, static_cast<int>(std::strlen(name))).size());
  // Room for the 40 characters and the terminator that snprintf writes.
  char buf[kFmtStringSize + 1];
  int w = 0;
  if (len == 0 && ndec == 0)
    w = std::snprintf(buf, sizeof buf, "%.*s.", nl, name);
  else if (len == 0)
    w = std::snprintf(buf, sizeof buf, "%.*s.%i", nl, name, ndec);
  else if (ndec == 0)
    w = std::snprintf(buf, sizeof buf, "%.*s%i.", nl, name, len);
  else
    w = std::snprintf(buf, sizeof buf, "%.*s%i.%i", nl, name, len, ndec);
  if (w < 0) return;
  const int n = std::min(w, kFmtStringSize);
  std::copy(buf, buf + n, str->string);
  str->string_l = static_cast<short>(n);
}

void zfmtstr(const FMT& fmt, FMTSTRING* str) noexcept { zfmtstri(fmt.code, fmt.len, fmt.ndec, str); }

}  // namespace qvt
