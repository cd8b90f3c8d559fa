// Time intervals: the parsed interval record, its derived records, the
// interval codes, and the operations that parse, print, count and step.
//
// Value units. A date value counts whole days from 1960-01-01 (day 0, a
// Friday) on the proleptic Gregorian calendar; a datetime value counts
// seconds from 1960-01-01 00:00:00, 86400 to a day. The calendar code works
// from day -138061 (1582-01-01) to day 6589335 and answers the missing value
// outside that range.
//
// All operations here are pure: no I/O, no global state, and counting and
// stepping never allocate.
#pragma once

#include <cstdint>

#include "run/strings.hpp"

namespace qvt {

// Interval codes. The order carries meaning: below 25 time based, 25 to 31
// day based, 32 to 64 month or week-of-year based, 65 custom. Codes 28, 29,
// 38, 43, 49, 54 and 58 are reserved and never produced by parsing.
enum IntCode : int {
  kIntNone = 0,
  kIntObs = 1,
  kIntSecond = 10,
  kIntMinute = 15,
  kIntHour = 20,
  kIntDay = 25,
  kIntWeekday = 27,
  kIntWeek = 30,
  kIntWeekV = 31,
  kIntTenday = 35,
  kIntSemimonth = 40,
  kIntMonth = 45,
  kIntR445Mon = 46,
  kIntR454Mon = 47,
  kIntR544Mon = 48,
  kIntQtr = 50,
  kIntR445Qtr = 51,
  kIntR454Qtr = 52,
  kIntR544Qtr = 53,
  kIntSemiyear = 55,
  kIntYear = 60,
  kIntR445Yr = 61,
  kIntR454Yr = 62,
  kIntR544Yr = 63,
  kIntYearV = 64,
  kIntCustom = 65,
};

// Length of the token field, including room that is never used for a
// terminator: a token holds at most kIntTokenMax characters.
inline constexpr int kIntTokenSize = 22;
inline constexpr int kIntTokenMax = 21;

// A parsed interval. A plain value that callers copy freely. A cleared
// record (all zero) is what parsing starts from.
struct CINTC_MGR;  // the custom-interval manager (calendar/zcust.hpp)

struct INTERVAL {
  char units = 0;        // 'u' none, 'o' observation numbers, 'd' dates, 's' datetimes
  char intcode = 0;      // an IntCode
  int intper = 0;        // multiplier, at least 1 once parsed (MONTH3 is 3)
  int shiftper = 0;      // shift counted from 0: the text ".4" is stored as 3
  char nweekday = 0;     // working days in a week; WEEKDAY only
  char weekend[7] = {};  // 1 for a weekend day, index 0 Sunday .. 6 Saturday; WEEKDAY only
  tchar token[kIntTokenSize] = {};  // the text as written, not terminated
  short tokenlen = 0;
  void* holidays = nullptr;  // reserved; always null
  // The custom-interval manager a custom name was found in; null for the
  // built-in intervals. Not owned: the manager outlives every interval
  // parsed against it (it belongs to the host).
  CINTC_MGR* custom = nullptr;
};

// What is derived from an interval once: its seasonal cycle and the name and
// width of its default format.
struct INTINFO {
  INTERVAL sinterval;  // the interval of the seasonal cycle
  int nseasons = 0;
  short formatw = 0;   // width of the default format
  short formatl = 0;   // length of the format's name
  tchar format[9] = {};
};

struct CINTC_INFO;  // a loaded custom calendar (custom-interval manager)

// The extended record that the custom-interval path and the seasonal cycle
// work on. It begins with the fields of INTERVAL, so an INTERVALX can be
// handed to any operation that takes an INTERVAL.
struct INTERVALX : INTERVAL {
  CINTC_INFO* cinfo = nullptr;  // released with zcintcReleaseRef by whoever filled it
  void* ccache = nullptr;       // handle of the cache that holds cinfo
  short formatw = 0;
  short formatl = 0;
  tchar format[9] = {};
  int nseasons = 0;
  INTERVALX* sinterval = nullptr;  // seasonal cycle, may be null
};

// Widens an interval: a copy with the extra fields zero.
inline INTERVALX zintwiden(const INTERVAL& i) noexcept {
  INTERVALX x;
  static_cast<INTERVAL&>(x) = i;
  return x;
}

// ---------------------------------------------------------------------------
// Names

// Parses an interval text. A negative len means that the text is
// NUL-terminated and its length is measured. Results: 0 parsed; 1 bad
// multiplier; 2 bad shift; 101 length outside 1..21; 102 malformed; 103
// unknown name (or a multiplier or shift on NONE); 1001 null argument; -1 a
// custom calendar that could not be loaded. The record is usable only on 0.
// Names other than the built-in ones are looked up in `custom`, the host's
// custom-interval manager; null knows none.
int zintstr(const tchar* specin, int len, INTERVAL* out, CINTC_MGR* custom = nullptr) noexcept;

// Writes the canonical text of an interval and a terminator into str. On
// entry *len is the room of the buffer, on success the length of the text.
// 0, or 101 (buffer unchanged) when the text and terminator do not fit,
// 1001 for a null argument.
int zinti2s(tchar* str, int* len, const INTERVAL* istr) noexcept;

// Writes the base name only (with "DT" for a datetime interval above code
// 20), no multiplier, shift or terminator; *l gets its length. Always 0.
// A custom interval writes its token less the multiplier and shift. The
// buffer needs room for kIntTokenMax characters.
int zintbase(tchar* name, int* l, const INTERVAL* istr) noexcept;

// The interval with that code, multiplier 1 and no shift: 0, or 1 for a code
// that has none here (retail years, custom, reserved and unknown codes).
int zintic(int intcode, INTERVAL* out) noexcept;

// The interval with that code, multiplier m (0 leaves it out) and written
// shift s (0 leaves it out): 1 for m < 0, 2 for s < 0, 103 for a code that
// zintic refuses, else the result of zintstr on the joined text.
int zinticms(int intcode, int m, int s, INTERVAL* out) noexcept;

// ---------------------------------------------------------------------------
// Counting and stepping. None of these reports anything but the missing
// value, which stands for every result that can't be given.

// Number of interval boundaries passed going from x1 to x2; negative when x2
// lies before x1.
double zintck2(const INTERVAL& istr, double x1, double x2) noexcept;

// Beginning of the interval n intervals on from the one that holds x.
double zintnx2(const INTERVAL& istr, double x, double n) noexcept;

// As zintnx2, with the date inside the target interval chosen by align[0]:
// 'B' beginning, 'E' end, 'M' middle, 'S' the same place as x has in its own
// interval; anything else (a lower-case letter too, or a null align) acts
// as 'B'. The statement layer passes the upper-case letter. sub_intrvl, when
// given, caches the interval of the shift units between calls ("S" only):
// pass a cleared record first and keep it.
double zintnx3(const INTERVAL& istr, double inptDate, double n, const tchar* align,
               INTERVAL* sub_intrvl) noexcept;

// The interval in whose units a shift of istr is counted (DAY for WEEK,
// MONTH for YEAR ...). 0, or 2 with a cleared record for a code that has none.
int zintshft(const INTERVAL& istr, INTERVAL* sistr) noexcept;

// Number of whole intervals from date0 to date1: a step of that many
// intervals from date0 with "S" alignment does not overshoot date1.
double zintck3(const INTERVALX& intervalx, double date0, double date1) noexcept;

// ---------------------------------------------------------------------------
// Comparison and fitting

// How grid a relates to grid b: 0 the same boundaries; k >= 2 a is made of
// exactly k intervals of b (-k the other way); 1 a holds a whole but varying
// number of b (-1 the other way). Special missing values say why not: .M
// lengths that aren't multiples, .S lengths that fit with boundaries that
// don't line up, .B no common base (weeks against months), .W working-day
// grids whose weekends can't be matched, .E a code that isn't one. The
// ordinary missing value: no statement can be made (custom calendars, a
// time grid whose length doesn't divide a day against months, working-day
// grids whose common period is too long to walk).
double zintc(const INTERVAL& a, const INTERVAL& b) noexcept;

// The interval for which d2 is one step ("S" alignment) on from d1, on the
// units units[0] ('d' dates, 's' datetimes, 'o' observation numbers). info,
// when given, gets its cycle and default format. 0 found; 1 none (interval
// is NONE with units 'u'); 2 a missing date; 3 d2 not at least 1 above d1;
// 2 also for a null interval.
int zintfit(double d1, double d2, const tchar* units, INTERVAL* interval, INTINFO* info) noexcept;

}  // namespace qvt
