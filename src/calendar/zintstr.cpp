// Interval names: parsing an interval text into an INTERVAL, and writing the
// canonical text back.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "calendar/interval.hpp"
#include "calendar/zcust.hpp"

namespace qvt {
namespace {

struct Spelling {
  std::string_view name;
  int code;
};

// Every accepted spelling. The first spelling of a code is its base name.
constexpr Spelling kSpellings[] = {
    {"NONE", kIntNone},
    {"OBS", kIntObs},
    {"SECOND", kIntSecond}, {"SECONDS", kIntSecond}, {"SEC", kIntSecond},
    {"MINUTE", kIntMinute}, {"MINUTES", kIntMinute}, {"MIN", kIntMinute},
    {"HOUR", kIntHour}, {"HOURLY", kIntHour}, {"HOURS", kIntHour}, {"HR", kIntHour},
    {"DAY", kIntDay}, {"DAILY", kIntDay}, {"DAYS", kIntDay},
    {"WEEKDAY", kIntWeekday}, {"WEEKDAYS", kIntWeekday},
    {"WEEK", kIntWeek}, {"WEEKLY", kIntWeek}, {"WEEKS", kIntWeek},
    {"WEEKV", kIntWeekV},
    {"TENDAY", kIntTenday},
    {"SEMIMONTH", kIntSemimonth}, {"SEMIMONTHLY", kIntSemimonth}, {"SEMIMONTHS", kIntSemimonth},
    {"SEMIMON", kIntSemimonth},
    {"MONTH", kIntMonth}, {"MONTHLY", kIntMonth}, {"MONTHS", kIntMonth}, {"MON", kIntMonth},
    {"R445MON", kIntR445Mon}, {"R454MON", kIntR454Mon}, {"R544MON", kIntR544Mon},
    {"QTR", kIntQtr}, {"QUARTER", kIntQtr}, {"QUARTERLY", kIntQtr}, {"QUARTERS", kIntQtr},
    {"QTRLY", kIntQtr}, {"QTRS", kIntQtr},
    {"R445QTR", kIntR445Qtr}, {"R454QTR", kIntR454Qtr}, {"R544QTR", kIntR544Qtr},
    {"SEMIYEAR", kIntSemiyear}, {"SEMIYEARLY", kIntSemiyear}, {"SEMIYEARS", kIntSemiyear},
    {"SEMIYR", kIntSemiyear}, {"SEMIANNUAL", kIntSemiyear}, {"SEMIANN", kIntSemiyear},
    {"YEAR", kIntYear}, {"YEARS", kIntYear}, {"YEARLY", kIntYear}, {"YR", kIntYear},
    {"ANNUAL", kIntYear}, {"ANNUALLY", kIntYear}, {"ANNUALS", kIntYear},
    {"R445YR", kIntR445Yr}, {"R454YR", kIntR454Yr}, {"R544YR", kIntR544Yr},
    {"YEARV", kIntYearV},
};

constexpr std::string_view baseName(int code) noexcept {
  for (const Spelling& s : kSpellings)
    if (s.code == code) return s.name;
  return {};
}

// How many shift units one interval of multiplier 1 spans: WEEK.7 is the
// last shift of a week, YEAR.12 of a year, YEARV.52 of an ISO year.
constexpr int shiftLimitFactor(int code) noexcept {
  switch (code) {
    case kIntWeek: case kIntWeekV: return 7;
    case kIntQtr: case kIntR445Qtr: case kIntR454Qtr: case kIntR544Qtr: return 3;
    case kIntSemiyear: return 6;
    case kIntYear: case kIntR445Yr: case kIntR454Yr: case kIntR544Yr: return 12;
    case kIntYearV: return 52;
    default: return 1;
  }
}

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
constexpr bool isLetter(char c) noexcept { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
constexpr char upper(char c) noexcept { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

int lookup(std::string_view name) noexcept {
  for (const Spelling& s : kSpellings)
    if (s.name == name) return s.code;
  return -1;
}

// Reads a run of decimal digits. 0 with *v set; 102 for a non-digit;
// `overflow` when the value exceeds 2147483647 or is below 1. An empty run
// leaves *v alone.
int readNumber(std::string_view t, std::int64_t* v, int overflow) noexcept {
  if (t.empty()) return 0;
  std::int64_t n = 0;
  for (char c : t) {
    if (!isDigit(c)) return 102;
    n = n * 10 + (c - '0');
    if (n > 2147483647) {
      // Keep scanning for a non-digit, which takes precedence.
      for (char c2 : t)
        if (!isDigit(c2)) return 102;
      return overflow;
    }
  }
  if (n < 1) return overflow;
  *v = n;
  return 0;
}

// The numeric tail "[digits][.[digits]]": multiplier and written shift.
// Returns 0, 1, 2 or 102; *mult and *shift are left alone where absent.
int readTail(std::string_view tail, std::int64_t* mult, std::int64_t* shift) noexcept {
  const auto dot = tail.find('.');
  const std::string_view m = tail.substr(0, dot);
  if (int rc = readNumber(m, mult, 1); rc != 0) return rc;
  if (dot != std::string_view::npos) {
    if (int rc = readNumber(tail.substr(dot + 1), shift, 2); rc != 0) return rc;
  }
  return 0;
}

// Finds the retail digits of a name such as R445YR: their position, or npos.
std::size_t findRetail(std::string_view u) noexcept {
  for (std::string_view pat : {"445", "454", "544"}) {
    const std::size_t p = u.find(pat);
    if (p == std::string_view::npos || p == 0 || u[p - 1] != 'R') continue;
    const std::string_view after = u.substr(p + 3);
    if (after.starts_with("YR") || after.starts_with("QTR") || after.starts_with("MON")) return p;
  }
  return std::string_view::npos;
}

// Finishes a custom interval found in `custom`: its numeric tail, the
// manager it came from, its units and the load. Units not set by a prefix
// follow the calendar: the category of the format of "BEGIN", else its
// range; a calendar that decides neither is taken as a date grid, as every
// code above 24 is.
int finishCustom(INTERVAL* out, std::string_view tail, CINTC_MGR* custom) noexcept {
  out->intcode = static_cast<char>(kIntCustom);
  std::int64_t mult = 1, shift = 0;
  if (int rc = readTail(tail, &mult, &shift); rc != 0) return rc;
  if (shift > mult) return 2;
  out->intper = static_cast<int>(mult);
  out->shiftper = shift > 0 ? static_cast<int>(shift - 1) : 0;
  out->custom = custom;
  CINTC_INFO* info = nullptr;
  if (zcustLoad(*out, &info) < 0) return -1;
  if (out->units == 0) {
    INTERVALX x = zintwiden(*out);
    x.cinfo = info;
    const char u = info != nullptr ? customUnits(x) : 0;
    out->units = u != 0 ? u : 'd';
  }
  zcintcReleaseRef(info);  // parsing only warms the cache
  return 0;
}

}  // namespace

int zintstr(const tchar* specin, int len, INTERVAL* out, CINTC_MGR* custom) noexcept {
  if (!specin || !out) return 1001;
  if (len < 0) len = static_cast<int>(strnlen(specin, kIntTokenMax + 1));
  if (len < 1 || len > kIntTokenMax) return 101;

  *out = INTERVAL{};
  std::copy(specin, specin + len, out->token);
  out->tokenlen = static_cast<short>(len);
  out->intper = 1;

  char buf[kIntTokenMax];
  for (int i = 0; i < len; ++i) buf[i] = upper(specin[i]);
  const std::string_view u(buf, static_cast<std::size_t>(len));

  // The name part: the leading letters, with retail digits taken into it.
  std::size_t nameEnd = 0;
  while (nameEnd < u.size() && isLetter(u[nameEnd])) ++nameEnd;
  if (const std::size_t p = findRetail(u); p != std::string_view::npos && p == nameEnd) {
    nameEnd = p + 3;
    while (nameEnd < u.size() && isLetter(u[nameEnd])) ++nameEnd;
  }

  // Scan the rest: digits, at most one point, and a weekend mark "W" that
  // must come before any point.
  std::size_t point = std::string_view::npos, mark = std::string_view::npos;
  bool nameHasDigits = false;
  for (std::size_t i = nameEnd; i < u.size(); ++i) {
    const char c = u[i];
    if (c == '.') {
      if (point != std::string_view::npos) return 102;
      point = i;
    } else if (c == 'W' && mark == std::string_view::npos && point == std::string_view::npos) {
      mark = i;
    } else if (!isDigit(c)) {
      nameHasDigits = true;
      break;
    }
  }

  if (nameHasDigits) {
    // The name holds digits itself: only a registered calendar can match.
    // Its numeric tail is what follows the last point, and the digits
    // directly before that point (or before the text's end).
    const std::size_t last = u.rfind('.');
    std::size_t end = u.size();
    if (last != std::string_view::npos) {
      for (std::size_t i = last + 1; i < u.size(); ++i)
        if (!isDigit(u[i])) return 102;
      end = last;
    }
    while (end > 0 && isDigit(u[end - 1])) --end;
    if (getcustomname(custom, specin, static_cast<int>(end)) == kIntCustom)
      return finishCustom(out, u.substr(end), custom);
    if (getcustomname(custom, specin, len) == kIntCustom) return finishCustom(out, {}, custom);
    return 103;
  }

  if (nameEnd == 0) {
    // A bare number: OBS with that multiplier; a shift isn't allowed.
    if (mark != std::string_view::npos) return 102;
    std::int64_t mult = 1, shift = 0;
    if (int rc = readTail(u, &mult, &shift); rc != 0) return rc;
    if (point != std::string_view::npos && point + 1 < u.size()) return 2;
    out->units = 'o';
    out->intcode = static_cast<char>(kIntObs);
    out->intper = static_cast<int>(mult);
    return 0;
  }

  std::string_view name = u.substr(0, nameEnd);
  if (name.starts_with("DT")) {
    name.remove_prefix(2);
    out->units = 's';
  } else if (name.starts_with("T") && !name.starts_with("TE")) {
    name.remove_prefix(1);
    out->units = 's';
  }

  const int code = name.size() >= 2 ? lookup(name) : -1;
  if (code < 0) {
    if (getcustomname(custom, specin, static_cast<int>(nameEnd)) == kIntCustom)
      return finishCustom(out, u.substr(nameEnd), custom);
    if (getcustomname(custom, specin, len) == kIntCustom) {
      out->units = 0;
      return finishCustom(out, {}, custom);
    }
    // "WEEKDAYW": a weekend mark straight after the name is swallowed by
    // the run of letters; it is a mark without days, not an unknown name.
    if (name.ends_with('W') && lookup(name.substr(0, name.size() - 1)) == kIntWeekday) return 102;
    return 103;
  }
  out->intcode = static_cast<char>(code);

  std::string_view tail = u.substr(nameEnd);
  if (code == kIntWeekday) {
    std::fill(std::begin(out->weekend), std::end(out->weekend), 0);
    if (mark == std::string_view::npos) {
      out->weekend[0] = 1;
      out->weekend[6] = 1;
    } else {
      const std::string_view days = u.substr(nameEnd, mark - nameEnd);
      if (days.empty() || days.size() > 6) return 102;
      for (char c : days) {
        if (c < '1' || c > '7') return 102;
        out->weekend[c - '1'] = 1;
      }
      tail = u.substr(mark + 1);
    }
    out->nweekday = static_cast<char>(7 - std::count(std::begin(out->weekend), std::end(out->weekend), 1));
  } else {
    if (mark != std::string_view::npos) return 102;
    if (code == kIntNone && !tail.empty()) return 103;
  }

  std::int64_t mult = 1, shift = 0;
  if (int rc = readTail(tail, &mult, &shift); rc != 0) return rc;
  if (shift > static_cast<std::int64_t>(shiftLimitFactor(code)) * mult) return 2;
  out->intper = static_cast<int>(mult);
  out->shiftper = shift > 0 ? static_cast<int>(shift - 1) : 0;

  if (out->units == 0) {
    if (code == kIntNone) out->units = 'u';
    else if (code == kIntObs) out->units = 'o';
    else if (code > 24) out->units = 'd';
    else out->units = 's';
  }
  if (code == kIntSecond || code == kIntMinute || code == kIntHour) out->units = 's';
  return 0;
}

int zintbase(tchar* name, int* l, const INTERVAL* istr) noexcept {
  if (!name || !l || !istr) return 0;
  std::string_view base = baseName(istr->intcode);
  if (istr->intcode == kIntCustom) {
    // A calendar's name is its token less the multiplier and shift.
    std::size_t n = static_cast<std::size_t>(std::clamp<int>(istr->tokenlen, 0, kIntTokenMax));
    while (n > 0 && (isDigit(istr->token[n - 1]) || istr->token[n - 1] == '.')) --n;
    base = std::string_view(istr->token, n);
  }
  if (base.empty()) base = "NONE";
  int n = 0;
  if (istr->units == 's' && istr->intcode > 20 && istr->intcode != kIntCustom) {
    name[n++] = 'D';
    name[n++] = 'T';
  }
  std::copy(base.begin(), base.end(), name + n);
  *l = n + static_cast<int>(base.size());
  return 0;
}

int zinti2s(tchar* str, int* len, const INTERVAL* istr) noexcept {
  if (!str || !len || !istr) return 1001;
  char buf[64];
  int n = 0;
  if (istr->intcode == kIntCustom) {
    n = std::clamp<int>(istr->tokenlen, 0, kIntTokenMax);
    std::copy(istr->token, istr->token + n, buf);
  } else {
    zintbase(buf, &n, istr);
    if (istr->intcode == kIntWeekday) {
      bool standard = istr->weekend[0] == 1 && istr->weekend[6] == 1;
      for (int i = 1; i < 6; ++i) standard = standard && istr->weekend[i] == 0;
      if (!standard) {
        for (int i = 0; i < 7; ++i)
          if (istr->weekend[i]) buf[n++] = static_cast<char>('1' + i);
        buf[n++] = 'W';
      }
    }
    const int mult = std::max(1, istr->intper);
    const bool week = std::string_view(buf, static_cast<std::size_t>(n)) == "WEEK";
    auto append = [&](long v) {
      char digits[16];
      int k = 0;
      do {
        digits[k++] = static_cast<char>('0' + v % 10);
        v /= 10;
      } while (v > 0);
      while (k > 0) buf[n++] = digits[--k];
    };
    if (week || mult != 1) append(mult);
    // Parsing never stores a negative shift; a hand-made one prints as none.
    const bool shifted = istr->shiftper > 0;
    if (week || mult != 1 || shifted) buf[n++] = '.';
    if (shifted) append(static_cast<long>(istr->shiftper) + 1);
  }
  if (*len < n + 1) return 101;
  std::copy(buf, buf + n, str);
  str[n] = '\0';
  *len = n;
  return 0;
}

int zintic(int intcode, INTERVAL* out) noexcept {
  if (!out) return 1;
  switch (intcode) {
    case kIntNone: case kIntObs: case kIntSecond: case kIntMinute: case kIntHour: case kIntDay:
    case kIntWeekday: case kIntWeek: case kIntWeekV: case kIntTenday: case kIntSemimonth:
    case kIntMonth: case kIntR445Mon: case kIntR454Mon: case kIntR544Mon: case kIntQtr:
    case kIntR445Qtr: case kIntR454Qtr: case kIntR544Qtr: case kIntSemiyear: case kIntYear:
    case kIntYearV:
      break;
    default:
      return 1;
  }
  const std::string_view name = baseName(intcode);
  return zintstr(name.data(), static_cast<int>(name.size()), out) == 0 ? 0 : 1;
}

int zinticms(int intcode, int m, int s, INTERVAL* out) noexcept {
  if (m < 0) return 1;
  if (s < 0) return 2;
  INTERVAL probe;
  if (zintic(intcode, &probe) != 0) return 103;
  const std::string_view name = baseName(intcode);
  char buf[48];
  int n = static_cast<int>(name.size());
  std::copy(name.begin(), name.end(), buf);
  auto append = [&](int v) {
    char digits[16];
    int k = 0;
    do {
      digits[k++] = static_cast<char>('0' + v % 10);
      v /= 10;
    } while (v > 0);
    while (k > 0) buf[n++] = digits[--k];
  };
  if (m != 0) append(m);
  if (s != 0) {
    buf[n++] = '.';
    append(s);
  }
  // A text too long for a token gives 101 from the parser, as written.
  return zintstr(buf, n, out);
}

}  // namespace qvt
