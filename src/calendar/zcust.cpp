// Custom intervals: the manager's registry of names, the option text that
// fills it, and the cache of loaded calendars.
//
// The loader always brings every row of a calendar into memory, so the
// row-by-row reading of a calendar data set (a search for one row on the
// data set itself, an open data set kept between calls) has no place here:
// every counting and stepping routine works on the loaded CINTC_INFO.
#include "calendar/zcust.hpp"

#include <algorithm>
#include <atomic>
#include <climits>
#include <new>

#include "run/missing.hpp"

namespace qvt {
namespace {

// Longest name, library or member a pair may hold (a u_sname's room).
constexpr std::size_t kPairPartMax = 32;

constexpr char upper(char c) noexcept {
  return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}
constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
constexpr bool isSeparator(char c) noexcept {
  return c == ' ' || c == '(' || c == ')' || c == ',' || c == '=';
}

std::string upperCopy(std::string_view s) {
  std::string u(s);
  for (char& c : u) c = upper(c);
  return u;
}

// The next word of the option from *pos: the run up to a separator.
std::string_view nextWord(std::string_view text, std::size_t* pos) noexcept {
  std::size_t i = *pos;
  while (i < text.size() && isSeparator(text[i])) ++i;
  const std::size_t from = i;
  while (i < text.size() && !isSeparator(text[i])) ++i;
  *pos = i;
  return text.substr(from, i - from);
}

// Pair results of readPair.
constexpr int kPairRead = 0;
constexpr int kPairEnd = 1;        // nothing but separators left
constexpr int kPairMalformed = 2;  // a pair that can't be split

// One pair "name=lib.member" or "name=member" from *pos, upper-cased. A
// name without a data set, a data set with an empty library or member or
// more than one point, and parts longer than a u_sname can't be split.
int readPair(std::string_view text, std::size_t* pos, CUSTOMINTERVAL* out) {
  const std::string_view name = nextWord(text, pos);
  if (name.empty()) return kPairEnd;
  const std::string_view ds = nextWord(text, pos);
  if (ds.empty()) return kPairMalformed;
  const std::size_t dot = ds.find('.');
  std::string_view lib, member = ds;
  if (dot != std::string_view::npos) {
    lib = ds.substr(0, dot);
    member = ds.substr(dot + 1);
    if (lib.empty() || member.empty() || member.find('.') != std::string_view::npos)
      return kPairMalformed;
  }
  if (name.size() > kPairPartMax || lib.size() > kPairPartMax || member.size() > kPairPartMax)
    return kPairMalformed;
  out->interval = upperCopy(name);
  out->lib = upperCopy(lib);
  out->member = upperCopy(member);
  return kPairRead;
}

// Reads at most `room` pairs into `out`; the count read. *malformed tells
// whether the list ended at a pair that couldn't be split.
int readPairs(std::string_view text, CUSTOMINTERVAL* out, int room, bool* malformed) {
  std::size_t pos = 0;
  int n = 0;
  *malformed = false;
  while (n < room) {
    const int rc = readPair(text, &pos, &out[n]);
    if (rc == kPairMalformed) *malformed = true;
    if (rc != kPairRead) break;
    ++n;
  }
  return n;
}

// The numeric tail of a custom token behind its name: "[digits][.[digits]]".
// False when it isn't one; else the multiplier (1 without digits) and the
// shift counted from 0 (0 without digits after the point).
bool readTail(std::string_view t, long long* mult, long long* shift) noexcept {
  long long m = 0, s = 0;
  std::size_t i = 0;
  for (; i < t.size() && isDigit(t[i]); ++i) {
    m = m * 10 + (t[i] - '0');
    if (m > INT_MAX) return false;
  }
  const bool hasMult = i > 0;
  if (i < t.size()) {
    if (t[i] != '.') return false;
    for (++i; i < t.size(); ++i) {
      if (!isDigit(t[i])) return false;
      s = s * 10 + (t[i] - '0');
      if (s > INT_MAX) return false;
    }
  }
  if (hasMult && m < 1) return false;
  *mult = hasMult ? m : 1;
  *shift = s > 0 ? s - 1 : 0;
  return true;
}

// Makes a calendar that the loader filled ready for the step routines: the
// rows are those of beginBuffer; END and SEASON must cover them when their
// flags are set and are dropped otherwise; a row without "BEGIN" behind the
// first row that has one holds no date and is taken out, so that the rows
// from the calendar's start on are numbered without gaps. Rows without
// "BEGIN" in front of the start stay: the season of the last of them is the
// season in front of the calendar. -1 for a calendar without a usable row
// or with buffers that don't match its flags.
int normalize(CINTC_INFO* info) {
  const std::size_t rows = info->beginBuffer.size();
  const bool hasEnd = (info->flags & kCintcHasEnd) != 0;
  const bool hasSeason = (info->flags & kCintcHasSeason) != 0;
  if ((hasEnd && info->endBuffer.size() < rows) || (hasSeason && info->seasBuffer.size() < rows))
    return -1;
  info->endBuffer.resize(hasEnd ? rows : 0);
  info->seasBuffer.resize(hasSeason ? rows : 0);
  std::size_t start = 0;
  while (start < rows && wzmis(info->beginBuffer[start])) ++start;
  if (start == rows) return -1;
  std::size_t keep = start;
  for (std::size_t r = start; r < rows; ++r) {
    if (wzmis(info->beginBuffer[r])) continue;
    info->beginBuffer[keep] = info->beginBuffer[r];
    if (hasEnd) info->endBuffer[keep] = info->endBuffer[r];
    if (hasSeason) info->seasBuffer[keep] = info->seasBuffer[r];
    ++keep;
  }
  info->beginBuffer.resize(keep);
  info->endBuffer.resize(hasEnd ? keep : 0);
  info->seasBuffer.resize(hasSeason ? keep : 0);
  info->nused = static_cast<long>(keep);
  info->n = std::max(info->n, info->nused);
  info->ordered = true;
  for (std::size_t r = start; r + 1 < keep && info->ordered; ++r) {
    const double next = info->beginBuffer[r + 1];
    const bool endInside = !hasEnd || wzmis(info->endBuffer[r]) || info->endBuffer[r] < next;
    info->ordered = info->beginBuffer[r] < next && endInside;
  }
  return 0;
}

}  // namespace

void parseIntervalOptions(std::string_view option, CUSTOMINTERVAL* custInt, int* n) {
  if (n == nullptr) return;
  if (custInt == nullptr) {
    *n = 0;
    return;
  }
  bool malformed = false;
  *n = readPairs(upperCopy(option), custInt, std::clamp(*n, 0, kCustomPairsMax), &malformed);
}

int parseIntervalDS(std::string_view intervalDS, CUSTOMINTERVAL* custInt, std::size_t* ctx) {
  if (custInt == nullptr || ctx == nullptr || *ctx > intervalDS.size()) return 1;
  return readPair(intervalDS, ctx, custInt) == kPairRead ? 0 : 1;
}

int zcintcInit(CINTC_MGR* mgr, std::string_view option, CINTC_LOADER loader) {
  if (mgr == nullptr) return 1;
  std::lock_guard<std::mutex> hold(mgr->lock);
  mgr->cache.clear();
  mgr->maps.assign(kCustomPairsMax, CUSTOMINTERVAL{});
  bool malformed = false;
  const int n = readPairs(upperCopy(option), mgr->maps.data(), kCustomPairsMax, &malformed);
  mgr->maps.resize(static_cast<std::size_t>(n));
  mgr->loader = std::move(loader);
  return malformed ? 1 : 0;
}

void zcintcTerm(CINTC_MGR* mgr) noexcept {
  if (mgr == nullptr) return;
  std::lock_guard<std::mutex> hold(mgr->lock);
  mgr->maps.clear();
  mgr->cache.clear();
  mgr->loader = nullptr;
}

int getcustomname(const CINTC_MGR* mgr, const tchar* name, int len) noexcept {
  if (mgr == nullptr || name == nullptr || len <= 0) return 0;
  for (const CUSTOMINTERVAL& m : mgr->maps) {
    if (m.interval.size() != static_cast<std::size_t>(len)) continue;
    bool same = true;
    for (int i = 0; i < len && same; ++i) same = upper(name[i]) == m.interval[static_cast<std::size_t>(i)];
    if (same) return kIntCustom;
  }
  return 0;
}

// A token names a pair when it is the pair's name followed by a numeric
// tail that agrees with the interval's multiplier and shift: CAL, CAL1.,
// CAL.1 and CAL1.1 all name CAL with multiplier 1. Asking for agreement
// keeps the parse and this lookup on the same pair when one registered
// name is another followed by digits (CAL and CAL2: the token CAL2 parses
// as CAL with multiplier 2 and is found as such).
CUSTOMINTERVAL getCustomIntervalDSRef(const INTERVAL& interval, int* multiplier, int* shift) {
  if (multiplier) *multiplier = -1;
  if (shift) *shift = -1;
  if (interval.custom == nullptr) return {};
  const std::string token =
      upperCopy(std::string_view(interval.token, static_cast<std::size_t>(
                                                     std::clamp<int>(interval.tokenlen, 0, kIntTokenMax))));
  const long long wantMult = std::max(1, interval.intper);
  const long long wantShift = std::max(0, interval.shiftper);
  for (const CUSTOMINTERVAL& m : interval.custom->maps) {
    if (!std::string_view(token).starts_with(m.interval)) continue;
    long long mult = 0, sh = 0;
    if (!readTail(std::string_view(token).substr(m.interval.size()), &mult, &sh)) continue;
    if (mult != wantMult || sh != wantShift) continue;
    if (multiplier) *multiplier = static_cast<int>(mult);
    if (shift) *shift = static_cast<int>(sh);
    return m;
  }
  return {};
}

int zcustLoad(const INTERVAL& interval, CINTC_INFO** oinfo) noexcept {
  if (oinfo) *oinfo = nullptr;
  if (interval.custom == nullptr || interval.intcode != kIntCustom) return 0;
  CINTC_MGR& mgr = *interval.custom;
  try {
    std::lock_guard<std::mutex> hold(mgr.lock);
    const CUSTOMINTERVAL ds = getCustomIntervalDSRef(interval, nullptr, nullptr);
    if (ds.interval.empty()) return 0;
    CINTC_INFO* info = nullptr;
    if (auto it = mgr.cache.find(ds.interval); it != mgr.cache.end()) {
      info = it->second.get();
    } else {
      if (!mgr.loader) return -1;
      auto fresh = std::make_unique<CINTC_INFO>();
      // Loader failures are the host's to report; a positive answer isn't
      // one of its codes and counts as a failure too.
      const int rc = mgr.loader(ds, fresh.get());
      if (rc != 0) return rc < 0 ? rc : -1;
      if (normalize(fresh.get()) != 0) return -1;
      info = fresh.get();
      mgr.cache.emplace(ds.interval, std::move(fresh));
    }
    std::atomic_ref<int>(info->refs).fetch_add(1);
    if (oinfo) {
      *oinfo = info;
    } else {
      std::atomic_ref<int>(info->refs).fetch_sub(1);
    }
    return 0;
  } catch (const std::bad_alloc&) {
    return -2;
  } catch (...) {
    // A loader is host code; whatever it throws stays out of the engine.
    return -1;
  }
}

void zcintcReleaseRef(CINTC_INFO* cinfo) noexcept {
  if (cinfo != nullptr) std::atomic_ref<int>(cinfo->refs).fetch_sub(1);
}

}  // namespace qvt
