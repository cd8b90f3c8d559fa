// Default display formats of intervals: the name and two widths with which
// a time ID on the interval's grid is shown.
#include <algorithm>
#include <cmath>
#include <string_view>

#include "calendar/zcust.hpp"
#include "calendar/zfmt.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

struct FmtChoice {
  std::string_view name;
  int width1;
  int width2;
};

void put(const FmtChoice& c, char* fmtname, short* namelen, short* width1, short* width2) noexcept {
  if (fmtname != nullptr) std::copy(c.name.begin(), c.name.end(), fmtname);
  if (namelen != nullptr) *namelen = static_cast<short>(c.name.size());
  if (width1 != nullptr) *width1 = static_cast<short>(c.width1);
  if (width2 != nullptr) *width2 = static_cast<short>(c.width2);
}

// Date form on a date grid, datetime form on any other.
FmtChoice byForm(bool dateGrid, std::string_view dateName, std::string_view dtName, int w1,
                 int w2) noexcept {
  return {dateGrid ? dateName : dtName, w1, w2};
}

// The choice of zintfmt for a built-in interval (never for code 65).
FmtChoice builtinChoice(const INTERVAL* istr) noexcept {
  if (istr == nullptr || istr->intcode == kIntNone) return {"D", 9, 7};
  if (istr->units == 'o' || istr->units == 'u') return {"F", 6, 4};
  const bool d = istr->units == 'd';
  const bool shifted = istr->shiftper != 0;
  switch (istr->intcode) {
    case kIntSecond: return {"DATETIME", 16, 16};
    case kIntMinute: return shifted ? FmtChoice{"DATETIME", 16, 16} : FmtChoice{"DATETIME", 13, 13};
    case kIntHour: return shifted ? FmtChoice{"DATETIME", 13, 13} : FmtChoice{"DATETIME", 10, 10};
    case kIntDay:
    case kIntWeekday:
    case kIntTenday:
    case kIntSemimonth: return byForm(d, "DATE", "DTDATE", 9, 7);
    case kIntWeek: return byForm(d, "WEEKDATX", "DTWKDATX", 17, 15);
    case kIntWeekV:
    case kIntR445Mon:
    case kIntR454Mon:
    case kIntR544Mon:
    case kIntR445Qtr:
    case kIntR454Qtr:
    case kIntR544Qtr:
    case kIntR445Yr:
    case kIntR454Yr:
    case kIntR544Yr:
    case kIntYearV: return byForm(d, "WEEKV", "DTWEEKV", 9, 7);
    case kIntMonth:
    case kIntSemiyear: return byForm(d, "MONYY", "DTMONYY", 7, 5);
    case kIntQtr:
      return shifted ? byForm(d, "MONYY", "DTMONYY", 7, 5) : byForm(d, "YYQC", "DTYYQC", 6, 4);
    case kIntYear:
      return shifted ? byForm(d, "MONYY", "DTMONYY", 7, 5) : byForm(d, "YEAR", "DTYEAR", 4, 2);
    default: return d ? FmtChoice{"DATE", 9, 7} : FmtChoice{"DATETIME", 16, 16};
  }
}

bool isTimeCode(int code) noexcept {
  return code == kIntSecond || code == kIntMinute || code == kIntHour;
}

// A time grid on which values are times (not observation numbers), written
// without the "DT" prefix: its values may be elapsed times or times of day.
bool plainTimeGrid(const INTERVAL* istr) noexcept {
  if (istr == nullptr || !isTimeCode(istr->intcode)) return false;
  if (istr->units == 'o' || istr->units == 'u') return false;
  return !(istr->tokenlen > 0 && (istr->token[0] == 'D' || istr->token[0] == 'd'));
}

// Common logarithm as ln(x) / ln(10), for the digit counts of a range.
double log10ByLn(double x) noexcept { return std::log(x) / 2.302585092994046; }

}  // namespace

void zintfmt(const INTERVAL* istr, char* fmtname, short* namelen, short* width1,
             short* width2) noexcept {
  if (istr != nullptr && istr->intcode == kIntCustom && istr->units != 'o' && istr->units != 'u') {
    // The calendar gives the format. A token that doesn't find it as it
    // stands is tried once more as the bare name, without multiplier and
    // shift; a calendar that gives none leaves the out fields alone.
    if (customINTFMT(zintwiden(*istr), fmtname, namelen, width1, width2) == 0) return;
    int n = std::clamp<int>(istr->tokenlen, 0, kIntTokenMax);
    auto tail = [](char ch) { return (ch >= '0' && ch <= '9') || ch == '.'; };
    while (n > 1 && tail(istr->token[n - 1])) --n;
    if (n == istr->tokenlen) return;
    INTERVAL bare = *istr;
    std::fill(std::begin(bare.token) + n, std::end(bare.token), '\0');
    bare.tokenlen = static_cast<short>(n);
    bare.intper = 1;
    bare.shiftper = 0;
    customINTFMT(zintwiden(bare), fmtname, namelen, width1, width2);
    return;
  }
  put(builtinChoice(istr), fmtname, namelen, width1, width2);
}

void zintfmm(const INTERVAL* istr, double idval, char* fmtname, short* namelen, short* width1,
             short* width2) noexcept {
  if (istr != nullptr && !wzmis(idval) && istr->units != 'o' && istr->units != 'u' &&
      isTimeCode(istr->intcode)) {
    const double top = istr->shiftper + istr->intper * 86400.0;
    if (idval >= 0.0 && idval <= top) {
      put({"TIME", istr->shiftper != 0 ? 13 : 10, 8}, fmtname, namelen, width1, width2);
      return;
    }
  }
  zintfmt(istr, fmtname, namelen, width1, width2);
}

void zintfmp(const INTERVAL* istr, double minval, double maxval, char* fmtname, short* namelen,
             short* width1, short* width2) noexcept {
  if (plainTimeGrid(istr) && !wzmis(minval) && !wzmis(maxval)) {
    const double top = 2.0 * (istr->shiftper + istr->intper * 86400.0);
    const double nper = minval >= 0.0 && minval <= top ? zintck2(*istr, minval, maxval) : kMissing;
    if (!wzmis(nper)) {
      const double mult = istr->intcode == kIntSecond ? 1.0 : istr->intcode == kIntMinute ? 60.0 : 3600.0;
      const double seconds = istr->intper * nper * mult;
      const double minutes = std::floor(seconds / 60.0);
      const double hours = std::floor(seconds / 3600.0);
      const int md = minutes > 0.0 ? static_cast<int>(std::floor(log10ByLn(minutes))) : 0;
      const int hd = hours > 0.0 ? static_cast<int>(std::floor(log10ByLn(hours))) : 0;
      FmtChoice c{};
      switch (istr->intcode) {
        case kIntSecond:
          if (nper > 1000.0 || hd > 1) c = {"TIME", hd + 6, hd + 6};
          else if (md <= 1) c = {"MMSS", 5, 5};
          else c = {"MMSS", md + 3, md + 3};
          break;
        case kIntMinute:
          if (nper > 1000.0 || hd > 1) c = {"HHMM", hd + 3, hd + 3};
          else c = {"HHMM", md + 3, md + 3};
          break;
        default:
          if (nper <= 1000.0) c = {"HHMM", hd + 3, hd};
          else c = {"HOUR", hd, hd};
          break;
      }
      c.width1 = std::min(c.width1, 20);
      c.width2 = std::min(c.width2, 20);
      put(c, fmtname, namelen, width1, width2);
      return;
    }
  }
  zintfmt(istr, fmtname, namelen, width1, width2);
}

void zintfmd(const INTERVAL* istr, char* fmtname, short* namelen, short* width1,
             short* width2) noexcept {
  if (plainTimeGrid(istr)) {
    const int k = istr->intper;
    FmtChoice c{};
    bool found = true;
    switch (istr->intcode) {
      case kIntSecond:
        if (k < 6) c = {"MMSS", 5, 5};
        else if (k <= 15) c = {"MMSS", 6, 5};
        else if (k <= 86399) c = {"TIME", 8, 5};
        else found = false;
        break;
      case kIntMinute:
        if (k < 16) c = {"HHMM", 6, 5};
        else if (k <= 60) c = {"HHMM", 7, 5};
        else if (k <= 1439) c = {"HHMM", 7, 6};
        else found = false;
        break;
      default:
        if (k < 5) c = {"HHMM", 10, 8};
        else if (k <= 23) c = {"HHMM", 11, 8};
        else found = false;
        break;
    }
    if (found) {
      put(c, fmtname, namelen, width1, width2);
      return;
    }
  }
  zintfmt(istr, fmtname, namelen, width1, width2);
}

}  // namespace qvt
