// Counting and stepping on a custom calendar: the interval that holds a
// date, the interval with a given number, and what the interval functions
// build on them; the calendar's range and default format.
//
// Numbering. The calendar's rows are numbered 1..N from its start. With
// multiplier m and shift s (0 <= s < m), interval k >= 1 is made of rows
// s + 1 + (k - 1) * m to s + k * m, so row i lies in interval
// ceil((i - s) / m). Interval 0 is all of time in front of row s + 1: its
// begin is .M. When the last row ends at a date, the calendar goes on with
// one more row, open to the right, from that date plus 1 to .I: row N + 1.
// An interval that reaches past the last row therefore always ends in .I,
// whether the calendar has "END" or not, and a date after the calendar lies
// in the same interval as stepping onto it from inside finds. Intervals that
// start beyond row N + 1 (or beyond row N when the last row is open) and
// negative numbers lie wholly outside.
#include <algorithm>
#include <cmath>

#include "calendar/zcust.hpp"
#include "calendar/zfmt.hpp"
#include "host/format.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

// Result codes of the row routines.
constexpr int kNoCalendar = -1;  // the interval names no loadable calendar
constexpr int kBadShift = -2;    // the shift isn't below the multiplier
constexpr int kNoInterval = -3;  // a date in a hole, or a special value that names no interval
constexpr int kOutside = -4;     // an interval number wholly outside the calendar

// A calendar whose values all stay below this size is taken as dates, any
// other as datetimes: 86400 days reach from 1723 to 2196, while 86400
// seconds are no more than the first day of 1960.
constexpr double kDateLimit = 86400.0;

const double kDotM = skMissVal('M');
const double kDotI = skMissVal('I');

// A loaded calendar seen through an interval: its usable rows, multiplier
// and shift. Takes a reference when the interval doesn't carry one, and
// gives it back when done.
class Cal {
 public:
  explicit Cal(const INTERVALX& x) noexcept : m_(std::max(1, x.intper)), s_(x.shiftper) {
    info_ = x.cinfo;
    if (info_ == nullptr && zcustLoad(x, &info_) == 0) taken_ = info_;
    if (info_ == nullptr) return;
    const long rows = std::min<long>(info_->nused, static_cast<long>(info_->beginBuffer.size()));
    long start = 0;
    while (start < rows && wzmis(info_->beginBuffer[static_cast<std::size_t>(start)])) ++start;
    n_ = rows - start;
    begin_ = info_->beginBuffer.data() + start;
    const auto need = static_cast<std::size_t>(rows);
    if (!info_->endBuffer.empty() && info_->endBuffer.size() >= need) end_ = info_->endBuffer.data() + start;
    if (!info_->seasBuffer.empty() && info_->seasBuffer.size() >= need) {
      seas_ = info_->seasBuffer.data() + start;
      if (start > 0) seasonBefore_ = info_->seasBuffer[static_cast<std::size_t>(start - 1)];
    }
  }
  ~Cal() { zcintcReleaseRef(taken_); }
  Cal(const Cal&) = delete;
  Cal& operator=(const Cal&) = delete;

  // 0, or why the rows can't be used.
  int check() const noexcept {
    if (info_ == nullptr || n_ < 1) return kNoCalendar;
    if (s_ < 0 || s_ >= m_) return kBadShift;
    return 0;
  }
  long rows() const noexcept { return n_; }
  const CINTC_INFO& info() const noexcept { return *info_; }
  long mult() const noexcept { return m_; }

  double beginOf(long r) const noexcept { return begin_[r - 1]; }
  // The end of row r: its "END", else one below the next row's "BEGIN";
  // the last row without a usable "END" is open.
  double endOf(long r) const noexcept {
    if (end_ != nullptr && !wzmis(end_[r - 1])) return end_[r - 1];
    return r < n_ ? begin_[r] - 1 : kDotI;
  }
  double seasonOf(long r) const noexcept { return seas_ != nullptr ? seas_[r - 1] : kMissing; }

  // Rows including the open one behind a closed last row.
  long total() const noexcept { return wzmis(endOf(n_)) ? n_ : n_ + 1; }
  double rowBegin(long r) const noexcept { return r <= n_ ? beginOf(r) : endOf(n_) + 1; }
  double rowEnd(long r) const noexcept { return r <= n_ ? endOf(r) : kDotI; }

  // Row r holds x: from its "BEGIN" up to its "END", or, where the end
  // comes from the next row, up to below that row's "BEGIN".
  bool holds(long r, double x) const noexcept {
    if (x < beginOf(r)) return false;
    if (end_ != nullptr && !wzmis(end_[r - 1])) return x <= end_[r - 1];
    return r == n_ || x < begin_[r];
  }

  // The row of a non-missing date: 1..N, 0 in front of the calendar, N + 1
  // behind it, -1 in a hole. Where rows may overlap or stand out of order
  // the first row that holds the date wins, so they are scanned in order.
  long rowOf(double x) const noexcept {
    if (info_->ordered) {
      const long r = static_cast<long>(std::upper_bound(begin_, begin_ + n_, x) - begin_);
      if (r >= 1 && holds(r, x)) return r;
    } else {
      for (long r = 1; r <= n_; ++r)
        if (holds(r, x)) return r;
    }
    if (x < beginOf(1)) return 0;
    const double last = endOf(n_);
    if (!wzmis(last) && x > last) return n_ + 1;
    return -1;
  }

  // The interval number of row i.
  long numberOf(long i) const noexcept {
    const long d = i - s_;
    return d <= 0 ? 0 : (d + m_ - 1) / m_;
  }

  // Begin, end and season of interval k; 0 or kOutside.
  int interval(double k, double* b, double* e, double* s) const noexcept {
    *b = *e = *s = kMissing;
    const long R = total();
    if (!(k >= 0) || k > static_cast<double>(R) + 1) return kOutside;
    const auto kk = static_cast<long>(k);
    if (kk == 0) {
      *b = kDotM;
      *e = s_ + 1 <= R ? rowBegin(s_ + 1) - 1 : kDotI;
      if (m_ == 1) *s = seasonBefore_;
      return 0;
    }
    // k is at most R + 1, so these stay far inside a long.
    const long first = s_ + 1 + (kk - 1) * m_;
    const long last = s_ + kk * m_;
    if (first > R) return kOutside;
    *b = rowBegin(first);
    *e = rowEnd(std::min(last, R));
    if (m_ == 1 && first <= n_) *s = seasonOf(first);
    return 0;
  }

 private:
  CINTC_INFO* info_ = nullptr;
  CINTC_INFO* taken_ = nullptr;
  const double* begin_ = nullptr;
  const double* end_ = nullptr;
  const double* seas_ = nullptr;
  double seasonBefore_ = kMissing;
  long n_ = 0;
  long m_;
  long s_;
};

void setAll(double v, double* n, double* b, double* e, double* s) noexcept {
  if (n) *n = v;
  if (b) *b = v;
  if (e) *e = v;
  if (s) *s = v;
}

// findIndexC on an open calendar: the number k and the interval's values.
int find(const Cal& c, double date, double* k, double* b, double* e, double* s) noexcept {
  *k = *b = *e = *s = kMissing;
  if (const int rc = c.check(); rc != 0) return rc;
  long row = -1;
  if (!wzmis(date)) {
    row = c.rowOf(date);
  } else {
    switch (missCode(date)) {
      case 'F': row = 1; break;
      case 'M': row = 0; break;
      case 'L': row = c.rowOf(c.beginOf(c.rows())); break;
      default: break;
    }
  }
  if (row < 0) return kNoInterval;
  const auto number = static_cast<double>(c.numberOf(row));
  if (const int rc = c.interval(number, b, e, s); rc != 0) return rc;
  *k = number;
  return 0;
}

// Interval k on an open calendar; all missing on failure.
int get(const Cal& c, double k, double* b, double* e, double* s) noexcept {
  if (const int rc = c.check(); rc != 0) {
    *b = *e = *s = kMissing;
    return rc;
  }
  return c.interval(k, b, e, s);
}

// The unit rule of a calendar without a date or datetime format.
char unitsByRange(double left, double right) noexcept {
  if (wzmis(left) || wzmis(right)) return 0;
  return std::fabs(left) < kDateLimit && std::fabs(right) < kDateLimit ? 'd' : 's';
}

}  // namespace

int findIndexC(const INTERVALX& x, double date, double* n, double* b, double* e,
               double* s) noexcept {
  const Cal c(x);
  double k, bb, ee, ss;
  const int rc = find(c, date, &k, &bb, &ee, &ss);
  if (n) *n = k;
  if (b) *b = bb;
  if (e) *e = ee;
  if (s) *s = ss;
  return rc;
}

int getIndexC(const INTERVALX& x, double n, double* b, double* e, double* s) noexcept {
  const Cal c(x);
  double bb, ee, ss;
  const int rc = get(c, wzmis(n) ? -1.0 : std::floor(n), &bb, &ee, &ss);
  if (b) *b = bb;
  if (e) *e = ee;
  if (s) *s = ss;
  return rc;
}

int customGetObsC(const INTERVALX& x, double n, double* b, double* e, double* s) noexcept {
  setAll(kMissing, nullptr, b, e, s);
  const Cal c(x);
  if (const int rc = c.check(); rc != 0) return rc;
  const double row = missCode(n) == 'L' ? static_cast<double>(c.rows()) : std::floor(n);
  if (wzmis(row) || !(row >= 1 && row <= static_cast<double>(c.rows()))) return kOutside;
  const auto r = static_cast<long>(row);
  if (b) *b = c.beginOf(r);
  if (e) *e = c.endOf(r);
  if (s) *s = c.seasonOf(r);
  return 0;
}

void customINTNXBES(const INTERVALX& x, double date, double n, double* b, double* e,
                    double* s) noexcept {
  double bb = kMissing, ee = kMissing, ss = kMissing, k = kMissing;
  const Cal c(x);
  const bool step = !wzmis(n) && n != 0;
  const double by = wzmis(n) ? 0.0 : std::floor(n);
  int rc = c.check();
  if (rc == 0) {
    if (!wzmis(date) || missCode(date) == 'L') {
      rc = find(c, date, &k, &bb, &ee, &ss);
      if (rc == 0 && step) rc = c.interval(k + by, &bb, &ee, &ss);
    } else if (missCode(date) == 'F') {
      if (!wzmis(n)) rc = c.interval(by + 1, &bb, &ee, &ss);
    } else if (missCode(date) == 'M') {
      if (!wzmis(n)) rc = c.interval(by, &bb, &ee, &ss);
    } else if (missCode(date) == 'I') {
      // From the interval behind the last row: nothing lies further on.
      const long last = c.rows();
      const double end = c.endOf(last);
      rc = find(c, wzmis(end) ? c.beginOf(last) : end + 1, &k, &bb, &ee, &ss);
      if (rc == 0 && step) rc = by > 0 ? kOutside : c.interval(k + by, &bb, &ee, &ss);
    } else {
      rc = kNoInterval;
    }
  }
  if (rc != 0) bb = ee = ss = kMissing;
  if (b) *b = bb;
  if (e) *e = ee;
  if (s) *s = ss;
}

double customINTNX(const INTERVALX& x, double date, double n) noexcept {
  double b, e, s;
  customINTNXBES(x, date, n, &b, &e, &s);
  return b;
}

double customINTNXE(const INTERVALX& x, double date, double n) noexcept {
  double b, e, s;
  customINTNXBES(x, date, n, &b, &e, &s);
  return e;
}

double customINTINDEX(const INTERVALX& x, double date, double n) noexcept {
  double b, e, s;
  customINTNXBES(x, date, n, &b, &e, &s);
  return s;
}

double customINTCK(const INTERVALX& x, double x1, double x2) noexcept {
  const Cal c(x);
  double k1, k2, b, e, s;
  if (find(c, x1, &k1, &b, &e, &s) != 0 || find(c, x2, &k2, &b, &e, &s) != 0) return kMissing;
  return k2 - k1;
}

double customINTSEAS(const INTERVALX& x) noexcept {
  const Cal c(x);
  if (c.check() != 0 || c.mult() != 1 || c.info().seasBuffer.empty()) return kMissing;
  double top = kMissing;
  for (double v : c.info().seasBuffer)
    if (!wzmis(v) && (wzmis(top) || v > top)) top = v;
  return top;
}

// The right end of the range is the last row's "END"; a calendar whose last
// row is open names no later date than that row's "BEGIN", which stands in.
int customRange(const INTERVALX& x, int LR, double* left, double* right) noexcept {
  if (left && (LR & 1)) *left = kMissing;
  if (right && (LR & 2)) *right = kMissing;
  const Cal c(x);
  if (const int rc = c.check(); rc != 0) return rc;
  if (left && (LR & 1)) *left = c.beginOf(1);
  if (right && (LR & 2)) {
    const double e = c.endOf(c.rows());
    *right = wzmis(e) ? c.beginOf(c.rows()) : e;
  }
  return 0;
}

char customUnits(const INTERVALX& x) noexcept {
  const Cal c(x);
  if (c.check() != 0) return 0;
  const std::string& f = c.info().fmt;
  const char u = f.empty() ? 0 : zfmtunits(f.data(), static_cast<int>(f.size()));
  if (u == 'd' || u == 's') return u;
  double left, right;
  if (customRange(x, 3, &left, &right) != 0) return 0;
  return unitsByRange(left, right);
}

// A format of "BEGIN" is used when it fits the room callers keep for a
// name (kIntFmtNameMax) and has a width, its own or the host's default for
// that name; both widths are that width. A name the host doesn't know and
// that has no width, or a longer name, is taken as no format.
int customINTFMT(const INTERVALX& x, char* fmtname, short* namelen, short* width1,
                 short* width2) noexcept {
  const Cal c(x);
  if (c.check() != 0) return -1;
  const std::string& f = c.info().fmt;
  std::string_view name;
  int w1 = 0, w2 = 0;
  if (!f.empty() && f.size() <= static_cast<std::size_t>(kIntFmtNameMax)) {
    int w = c.info().fmt_w;
    if (w <= 0) {
      const FormatInfo* known = findFormat(f);
      w = known != nullptr ? known->defaultWidth : 0;
    }
    if (w > 0) {
      name = f;
      w1 = w2 = w;
    }
  }
  if (name.empty()) {
    double left, right;
    if (customRange(x, 3, &left, &right) != 0) return -1;
    const char u = unitsByRange(left, right);
    if (u == 0) return -1;
    name = u == 'd' ? "DATE" : "DATETIME";
    w1 = u == 'd' ? 9 : 16;
    w2 = u == 'd' ? 7 : 16;
  }
  if (fmtname) std::copy(name.begin(), name.end(), fmtname);
  if (namelen) *namelen = static_cast<short>(name.size());
  if (width1) *width1 = static_cast<short>(w1);
  if (width2) *width2 = static_cast<short>(w2);
  return 0;
}

}  // namespace qvt
