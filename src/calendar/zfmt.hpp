// Display formats: the table of every format name the host knows, the kind of
// time value a format name implies, the text of a format with its width and
// decimals, and the default format of an interval.
//
// All operations are pure: no I/O, no global mutable state, no allocation.
#pragma once

#include <array>
#include <cstdint>

#include "calendar/interval.hpp"
#include "run/strings.hpp"

namespace qvt {

// Room for a format name in a table row: the longest name has 9 characters;
// the rest of the array is NUL so that a row name reads as a C string too.
inline constexpr int kFmtNameSize = 12;

// One row of the format table.
struct FMTINFOX {
  char fmtname[kFmtNameSize];  // upper case, without width or point; "$" starts a character format
  tchar fmttype;               // 'F' a format, 'I' an informat
  int inverse;                 // carried, not read; 0 where not recorded
  const char* informat;        // the informat that reads this format's output, else " "
  const char* category;        // "date", "curr", "datetime", "binary", "char", "num", "time", "smf", "stat"
  long desc;                   // number of the description text; 0 where not recorded
  const char* formatted;       // an example of the output, else " "
};

inline constexpr int kFmtInfoRows = 1030;
inline constexpr int kFmtInfoNames = 720;

// The format table: 1030 rows, 720 distinct names, ascending by character
// code; a name with two rows has its 'F' row first and both rows share the
// category. Only fmtname and category are read by this system.
extern const std::array<FMTINFOX, kFmtInfoRows> fmtinfox;

// Kinds of a format name (results of zfmttype).
inline constexpr int kFmtKindOther = 0;
inline constexpr int kFmtKindNum = 4;
inline constexpr int kFmtKindDate = 8;
inline constexpr int kFmtKindTime = 9;
inline constexpr int kFmtKindDatetime = 10;
inline constexpr int kFmtKindUnknown = -1;

// The kind of a format name: 4 num, 8 date, 9 time, 10 datetime, 0 a name of
// another category, -1 a name that isn't in the table (or a null name).
// Matching is on character codes: case matters, trailing blanks don't.
int zfmttype(const tchar* format, int fmtlen) noexcept;

// The units of an interval that a format implies: 'o' for a num format, 'd'
// for a date format, 's' for time and datetime formats, 0 otherwise.
char zfmtunits(const tchar* format, int fmtlen) noexcept;

// A format as the host hands it over. `code` identifies the format's name;
// in this build it is the number of the name's first row in fmtinfox,
// counted from 1 (see zfmtcode), since the host layer keeps no format codes
// of its own yet.
struct FMT {
  short len = 0;   // width, 0 if none
  short ndec = 0;  // decimals, 0 if none
  long code = 0;
};

// A format's text: its length and 40 blank-filled, unterminated characters.
inline constexpr int kFmtStringSize = 40;
struct FMTSTRING {
  short string_l = 0;
  tchar string[kFmtStringSize];
};

// The code of a format name (the number of its first row in fmtinfox,
// from 1), or 0 for a name that isn't in the table. Trailing blanks don't count.
long zfmtcode(const tchar* format, int fmtlen) noexcept;

// The name of a format code, NUL-terminated, or null for a code that names
// no row.
const char* zfmtshow(long code) noexcept;

// The text of a format: NAME., NAME.d, NAMEw. or NAMEw.d. The string is
// blank-filled first; a code without a name leaves it empty (length 0).
void zfmtstr(const FMT& fmt, FMTSTRING* str) noexcept;

// The same from separate values.
void zfmtstri(long code, int len, int ndec, FMTSTRING* str) noexcept;

// Room that the name out of zintfmt and its variants may need.
inline constexpr int kIntFmtNameMax = 9;

// The default format of an interval: the name (unterminated, *namelen
// characters, no blank fill), the full width and the short width. A null
// interval or code 0 gives "D" with 9 and 7. On a custom interval whose
// calendar gives no format the out fields stay as the caller set them.
void zintfmt(const INTERVAL* istr, char* fmtname, short* namelen, short* width1,
             short* width2) noexcept;

// As zintfmt, but a time-of-day value on a time grid gets "TIME".
void zintfmm(const INTERVAL* istr, double idval, char* fmtname, short* namelen, short* width1,
             short* width2) noexcept;

// As zintfmt, but a range of elapsed time on a time grid without a "DT"
// prefix gets an elapsed-time format wide enough for the range.
void zintfmp(const INTERVAL* istr, double minval, double maxval, char* fmtname, short* namelen,
             short* width1, short* width2) noexcept;

// As zintfmt, but a time grid without a "DT" prefix gets a format that
// follows the multiplier.
void zintfmd(const INTERVAL* istr, char* fmtname, short* namelen, short* width1,
             short* width2) noexcept;

}  // namespace qvt
