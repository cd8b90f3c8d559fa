// Custom intervals: a user calendar given by a data set of rows and
// registered under a name by the host option INTERVALDS, then used like
// MONTH, with multiplier and shift (FISCAL, FISCAL3, FISCAL3.2).
//
// The registry and the cache of loaded calendars live in a CINTC_MGR that a
// host object owns; nothing here is global. An interval parsed against a
// manager carries a pointer to it (INTERVAL::custom), so that counting,
// stepping, seasons and formats find the calendar without any other context.
// The manager never reads a data set itself: the host hands it a loader
// that fills a CINTC_INFO with the calendar's rows.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "calendar/interval.hpp"
#include "run/strings.hpp"

namespace qvt {

// At most this many pairs of the option are looked at.
inline constexpr int kCustomPairsMax = 20;

// One pair of the option: interval name and data set, all upper case. An
// empty lib means the host's default library.
struct CUSTOMINTERVAL {
  std::string interval;
  std::string lib;
  std::string member;
};

// Bits of CINTC_INFO::flags.
inline constexpr int kCintcHasEnd = 1;     // the calendar has an "END" variable
inline constexpr int kCintcHasSeason = 2;  // the calendar has a "SEASON" variable

// A loaded calendar: its rows in time order. Owned by the manager's cache
// and lent out by zcustLoad; the reference count is kept for the lender's
// bookkeeping, the rows live as long as the manager.
struct CINTC_INFO {
  int flags = 0;       // kCintcHasEnd | kCintcHasSeason
  long n = 0;          // rows allowed
  long nused = 0;      // rows read
  std::vector<double> beginBuffer;  // "BEGIN" of each row; may hold missing values
  std::vector<double> endBuffer;    // "END" of each row; empty without kCintcHasEnd
  std::vector<double> seasBuffer;   // "SEASON" of each row; empty without kCintcHasSeason
  std::string fmt;     // format name of "BEGIN", upper case, no width ("DATE"); empty for none
  short fmt_w = -1;    // its width, -1 when the format has none
  short fmt_d = -1;    // its decimals, -1 when the format has none
  int refs = 0;        // references lent out and not yet given back
  // BEGINs strictly increasing and no END reaching the next row's BEGIN: the
  // only row that can hold a date is then the last one beginning at or
  // before it, found by bisection. Otherwise rows are searched in order.
  bool ordered = false;
};

// What the host supplies to read a calendar data set: fills `into` with the
// rows (BEGIN, and END and SEASON when the data set has them, setting the
// flags) and the format of BEGIN. 0, or a negative code: the data set can't
// be opened or read, has no "BEGIN", or has no rows. The loader reports its
// own failures to the user (it is host code); the manager only passes the
// code on.
using CINTC_LOADER = std::function<int(const CUSTOMINTERVAL& ds, CINTC_INFO* into)>;

// The custom-interval manager: the registry of names and the cache of
// loaded calendars. One per host, made by zcintcInit; the mutex guards the
// cache so that BY groups running side by side may share it.
struct CINTC_MGR {
  std::vector<CUSTOMINTERVAL> maps;  // registered pairs, in the option's order
  std::map<std::string, std::unique_ptr<CINTC_INFO>, std::less<>> cache;  // by interval name
  CINTC_LOADER loader;
  std::mutex lock;
};

// Sets up a manager: parses the option text (pairs name=lib.member or
// name=member; separators blank, "(", ")", "," and "="; upper-cased first)
// into the registry and keeps the loader. 0, or 1 when the text held a pair
// that couldn't be split (the pairs before it are kept).
int zcintcInit(CINTC_MGR* mgr, std::string_view option, CINTC_LOADER loader);

// Forgets the registry and every loaded calendar.
void zcintcTerm(CINTC_MGR* mgr) noexcept;

// Reads the option into `custInt`, a table of *n entries (at most
// kCustomPairsMax are looked at); *n becomes the count of pairs read.
void parseIntervalOptions(std::string_view option, CUSTOMINTERVAL* custInt, int* n);

// One pair at the place *ctx holds (an offset into `intervalDS`), which moves
// past it: 0 with `custInt` filled, or 1 at the end of the text.
int parseIntervalDS(std::string_view intervalDS, CUSTOMINTERVAL* custInt, std::size_t* ctx);

// kIntCustom when the name (upper-cased before the lookup) is registered in
// `mgr`, else 0. A null manager registers nothing.
int getcustomname(const CINTC_MGR* mgr, const tchar* name, int len) noexcept;

// The option pair of an interval's token, with the multiplier and shift the
// token implies (-1 when no pair matches, and then an empty record).
CUSTOMINTERVAL getCustomIntervalDSRef(const INTERVAL& interval, int* multiplier, int* shift);

// Finds or loads the calendar of an interval through interval.custom: 0 with
// *oinfo set and one reference taken; 0 with *oinfo null for a token that is
// no calendar (or an interval parsed without a manager); negative on failure.
int zcustLoad(const INTERVAL& interval, CINTC_INFO** oinfo) noexcept;

// Gives up one reference to a loaded calendar; null is allowed.
void zcintcReleaseRef(CINTC_INFO* cinfo) noexcept;

// Counting, begin, end and season of a step, and the largest season, on a
// custom calendar. The missing value when the calendar isn't available or
// the step leaves it.
double customINTCK(const INTERVALX& x, double x1, double x2) noexcept;
double customINTNX(const INTERVALX& x, double date, double n) noexcept;
double customINTNXE(const INTERVALX& x, double date, double n) noexcept;
double customINTINDEX(const INTERVALX& x, double date, double n) noexcept;
double customINTSEAS(const INTERVALX& x) noexcept;

// The step behind the three above: begin, end and season of the interval n
// steps from the one that holds x. All three missing on any failure.
void customINTNXBES(const INTERVALX& x, double date, double n, double* b, double* e,
                    double* s) noexcept;

// The calendar's default format: 0 with the name, its length and the two
// widths, or -1 when no format can be decided.
int customINTFMT(const INTERVALX& x, char* fmtname, short* namelen, short* width1,
                 short* width2) noexcept;

// The row routines below answer 0, or one of these negative codes, with
// every result missing: -1 the interval names no calendar that can be
// loaded; -2 its shift isn't below its multiplier; -3 a date in a hole
// between rows, or a special value that names no interval; -4 an interval
// number wholly outside the calendar.
//
// The interval that holds x, with its number, begin, end and season. .F
// stands for the first row, .M for the time in front of the calendar, .L
// for the last row; other special values give -3.
int findIndexC(const INTERVALX& x, double date, double* n, double* b, double* e,
               double* s) noexcept;

// The interval with number n (0 is the one in front of the calendar): its
// begin, end and season (the season only for multiplier 1).
int getIndexC(const INTERVALX& x, double n, double* b, double* e, double* s) noexcept;

// Raw row n (1-based) of the calendar, .L for the last: its begin, end
// (derived from the next row without END; .I for an open last row) and
// season.
int customGetObsC(const INTERVALX& x, double n, double* b, double* e, double* s) noexcept;

// First and last dates of the calendar: bit 1 of LR asks for the left,
// bit 2 for the right (the last "END", or the last "BEGIN" when the last
// row is open).
int customRange(const INTERVALX& x, int LR, double* left, double* right) noexcept;

// The units of a calendar's values: 'd' or 's' by the category of its
// format when that is a date, time or datetime format, else by its range
// (both ends below 86400 in size are dates); 0 when neither decides.
char customUnits(const INTERVALX& x) noexcept;

// The positions of time IDs on a custom calendar.
struct ZTS_OBSDATES {
  double start = 0;        // the series start, or missing for the first usable time ID
  INTERVALX interval;      // a custom interval
  const double* dateVar = nullptr;  // the time IDs
  long nobs = 0;
};

// What zintctid and zintctidL write where the pointers aren't null.
struct ZTS_CTIDOUT {
  double* CDSIndex = nullptr;      // calendar interval number of each time ID (-1 on overflow)
  long* TSIndex = nullptr;         // number less the start's number
  // 1 begin .M, 2 other missing begin, 4 end .I, 8 other missing end; 10 a missing or failed ID
  int* InfinityByObs = nullptr;
  int* Infinity = nullptr;         // all of InfinityByObs ORed
  int* Order = nullptr;            // bit 1 equal neighbours, bit 2 a fall
  double* MaxBack = nullptr;       // number of the calendar's first row less the least number
  double* MaxLead = nullptr;       // the greatest number less that of the calendar's last row
  double* first = nullptr;         // aligned date of the least number
  double* last = nullptr;          // aligned date of the greatest number
  long MaxFail = 0;                // stop after this many failures; 0 never
};

// Time IDs to positions on a custom calendar. `align` may be null ("B",
// "E", "M" the middle, floored as zintnx3 does, "S" the time ID itself;
// anything else acts as "B"). `dates`, when not null, gets the aligned time
// IDs; it may be dateinfo->dateVar itself to align in place. Results: 0;
// 32768 for no time IDs; -1 for a null list, an interval that isn't a
// loadable calendar, a start that lies in no interval, or failed IDs; 128
// for missing IDs; -3 and -4 for the two overflow limits. zintctid is the
// same routine: the host's index size is a long here.
int zintctidL(ZTS_OBSDATES* dateinfo, double* dates, const tchar* align, ZTS_CTIDOUT* out) noexcept;
int zintctid(ZTS_OBSDATES* dateinfo, double* dates, const tchar* align, ZTS_CTIDOUT* out) noexcept;

}  // namespace qvt
