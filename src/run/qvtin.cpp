// Reading one BY group: every record is accepted or refused by its time ID,
// the raw values stay in record order (one series in in.y, several in the
// spool), and the equally spaced frame of the group is worked out.
#include <algorithm>
#include <cmath>
#include <string>

#include "calendar/interval.hpp"
#include "calendar/zintti.hpp"
#include "host/format.hpp"
#include "output/ztspool.hpp"
#include "run/qvtin.hpp"
#include "stats/transform.hpp"

namespace qvt {
namespace {

// A difference of a day or more between the first two IDs under a date
// interval means the ID variable most likely holds datetimes (seconds).
constexpr double kDayTest = 86400.0;
// Gap warnings issued over the whole step.
constexpr long kGapWarnings = 10;

// Messages of group 743 issued here.
enum InputMsg : int {
  kMsgMissingId = 5,
  kMsgRepeatedId = 6,
  kMsgDescendingId = 7,
  kMsgUncountable = 8,
  kMsgGap = 10,
  kMsgGapLimit = 11,
  kMsgTooLarge = 14,
  kMsgTooManyRecords = 25,
  kMsgSamePeriod = 30,
  kMsgFrameTooLong = 31,
  kMsgSamePeriodHint = 33,
  kMsgSecondsUnderDates = 34,
  kMsgGroupSkipped = 36,
  kMsgSpool = 40,
  kMsgOneRecord = 44,
  kMsgNoRecords = 45,
  kMsgGapsUnsorted = 50,
  kMsgGapCell = 51,
  kMsgGapsUnsortedEnd = 52,
  kMsgDupsUnsorted = 55,
  kMsgDupRecord = 56,
  kMsgDupsUnsortedEnd = 57,
};
// Messages of the time ID group when the grid can't be stepped.
constexpr int kMsgStepCustom = 1014;
constexpr int kMsgStepOther = 1018;

Host& hostOf(QVTCOM* com) { return *com->host; }

std::string token(const QVTCOM* com) {
  const INTERVAL& iv = com->istmt.intv;
  const auto n = static_cast<std::size_t>(std::clamp<int>(iv.tokenlen, 0, kIntTokenMax));
  return std::string(iv.token, n);
}

std::string idName(const QVTCOM* com) { return com->id.name.str(); }
std::string display(const QVTCOM* com) { return com->ds.data.display.str(); }
long long obsno(const QVTCOM* com) { return com->obsno; }

// An ID value as the user reads it: through the format of the ID statement
// when one was given, else the variable's own, else as a plain number.
std::string shown(const QVTCOM* com, double v) {
  std::string fmt;
  if (com->istmt.userfmt && com->istmt.fmtstr.len > 0) fmt = com->istmt.fmtstr.str();
  else if (!com->id.format.empty()) fmt = com->id.format;
  else if (com->istmt.fmtstr.len > 0) fmt = com->istmt.fmtstr.str();
  else fmt = "BEST12.";
  std::string s = renderFormat(v, fmt);
  const auto b = s.find_first_not_of(' ');
  return b == std::string::npos ? s : s.substr(b);
}

// Ends the group on a data error: error set, rc 108 or 1008.
int dataError(QVTCOM* com) {
  com->error = 1;
  raiseRc(*com, dataErrorRc(*com));
  return 1;
}

[[noreturn]] void spoolFailure(QVTCOM* com) {
  hostMsgLog(hostOf(com), kMsgProc, kMsgSpool);
  raiseRc(*com, kRcSpool);
  hostExit(hostOf(com), com->rc, 0);
}

// Takes the memory deficit of the allocations just made; true when there was one.
bool memoryShort(QVTCOM* com) {
  com->memdef += hostMemDefault(hostOf(com));
  if (com->memdef == 0) return false;
  hostMemMessage(hostOf(com), com->memdef);
  com->memdef = 0;
  com->error = 1;
  raiseRc(*com, memoryRc(*com));
  return true;
}

template <class T>
void freeArray(QVTCOM* com, PoolHandle pool, T*& p) {
  if (p) hostPoolFree(hostOf(com), pool, p, -1);
  p = nullptr;
}

// Doubles in.id and, with one series, in.y. False (both freed) when memory fails.
bool growInput(QVTCOM* com) {
  Host& h = hostOf(com);
  const long old = com->in.obsa;
  const long want = old >= 1 ? old * 2 : 1024;
  const auto ob = static_cast<std::size_t>(std::max(old, 0L)) * sizeof(double);
  const auto nb = static_cast<std::size_t>(want) * sizeof(double);
  bool ok = true;
  if (void* p = hostRealloc(h, com->tpool, com->in.id, ob, nb, 4)) com->in.id = static_cast<double*>(p);
  else ok = false;
  if (ok && com->nvars < 2) {
    if (void* p = hostRealloc(h, com->tpool, com->in.y, ob, nb, 4)) com->in.y = static_cast<double*>(p);
    else ok = false;
  }
  com->memdef += hostMemDefault(h);
  if (ok && com->memdef == 0) {
    com->in.obsa = want;
    return true;
  }
  freeArray(com, com->tpool, com->in.id);
  if (com->nvars < 2) freeArray(com, com->tpool, com->in.y);
  com->in.obsa = 0;
  hostMemMessage(h, com->memdef);
  com->memdef = 0;
  raiseRc(*com, memoryRc(*com));
  com->error = 1;
  return false;
}

}  // namespace

int handleError(QVTCOM* com, int rc) {
  if (rc >= 0) return 0;
  if (rc == -1) {
    const int number = com->istmt.intv.intcode == kIntCustom ? kMsgStepCustom : kMsgStepOther;
    hostMsgLog(hostOf(com), kMsgTimeId, number,
               {idName(com), com->ds.data.lib.str(), com->ds.data.mem.str(), token(com)});
  }
  return kRcSpool;
}

void warn(QVTCOM* com, long gap) {
  ++com->ngaps;
  com->maxgap = std::max(com->maxgap, gap);
  if (com->istmt.acc.code != kAccNone || com->nwarn >= kGapWarnings) return;
  hostMsgLog(hostOf(com), kMsgProc, kMsgGap,
             {static_cast<long long>(gap), obsno(com), display(com), token(com), idName(com),
              shown(com, com->id.prev), idName(com), shown(com, com->id.val), com->id.prev,
              com->id.val});
  ++com->nwarn;
  if (com->nwarn == kGapWarnings) hostMsgLog(hostOf(com), kMsgProc, kMsgGapLimit);
  raiseRc(*com, kRcWarning);
}

int checkid(QVTCOM* com) {
  Host& h = hostOf(com);
  const INTERVAL& iv = com->istmt.intv;
  const double val = com->id.val;

  if (wzmis(val)) {
    hostMsgLog(h, kMsgProc, kMsgMissingId, {idName(com), obsno(com), display(com)});
    raiseRc(*com, kRcWarning);
    if (com->in.nobs == 0) ++com->id.start;
    return 1;
  }
  if (com->in.nobs == 0) return 0;

  auto uncountable = [&]() {
    hostMsgLog(h, kMsgProc, kMsgUncountable,
               {idName(com), shown(com, val), obsno(com), display(com), val});
    return dataError(com);
  };
  auto countable = [](double c) { return !wzmis(c) && std::isfinite(c) && std::fabs(c) < kLargestDistance; };

  if (com->istmt.notsorted) {
    // The whole range seen must stay countable in intervals.
    const double c = std::fabs(com->in.last - val) < std::fabs(com->in.first - val)
                         ? zintck2(iv, com->in.first, val)
                         : zintck2(iv, val, com->in.last);
    return countable(c) ? 0 : uncountable();
  }

  const double prev = com->id.prev;
  if (val < prev) {
    hostMsgLog(h, kMsgProc, kMsgDescendingId,
               {display(com), obsno(com), idName(com), shown(com, prev), idName(com), shown(com, val)});
    return dataError(com);
  }
  if (val == prev && com->istmt.acc.code == kAccNone) {
    hostMsgLog(h, kMsgProc, kMsgRepeatedId, {idName(com), shown(com, val), obsno(com), display(com)});
    return dataError(com);
  }
  if (com->in.nobs < 2 && val - prev >= kDayTest) {
    if (iv.units == 'd' && iv.intcode != kIntNone) {
      hostMsgLog(h, kMsgProc, kMsgSecondsUnderDates, {token(com), idName(com)});
      raiseRc(*com, kRcWarning);
    }
    if (iv.units == 'd' || iv.intcode == kIntNone) {
      for (int i = 0; i < com->nvars; ++i) {
        VAR& v = com->vars[i];
        if (v.n > 0) v.first = v.last = com->in.first;
      }
    }
  }
  const double c = zintck2(iv, prev, val);
  if (!countable(c)) return uncountable();
  const auto k = static_cast<long>(c);
  if (k < 1) {
    ++com->ndups;
    if (com->istmt.acc.code != kAccNone) return 0;
    hostMsgLog(h, kMsgProc, kMsgSamePeriod,
               {obsno(com), display(com), token(com), idName(com), shown(com, prev), idName(com),
                shown(com, val), token(com), prev, val});
    hostMsgLog(h, kMsgProc, kMsgSamePeriodHint, {token(com), idName(com)});
    hostMsgLog(h, kMsgProc, kMsgGroupSkipped);
    return dataError(com);
  }
  if (k > 1) warn(com, k - 1);
  return 0;
}

int getid(QVTCOM* com) {
  Host& h = hostOf(com);
  if (com->rid2n) com->obsno = static_cast<long>(hostDsNote(h, com->ds.data.fileid));
  else ++com->obsno;
  if (com->in.nobs == 0) com->obsfirst = com->obsno;
  com->obslast = com->obsno;

  if (com->in.nobs >= com->in.obsa && !growInput(com)) return 1;

  if (com->id.dsvarno < 1) {
    const double t = zintnx2(com->istmt.intv, 0, static_cast<double>(com->in.nobs));
    com->id.val = wzmis(t) ? kMissing : t + 1;
  } else if (checkid(com) != 0) {
    return 1;
  }

  const double val = com->id.val;
  com->id.prev = val;
  com->in.id[com->in.nobs] = val;
  if (!com->istmt.notsorted) {
    com->in.last = val;
    if (com->in.nobs == 0) com->in.first = val;
  } else if (com->in.nobs == 0) {
    com->in.first = com->in.last = val;
  } else {
    if (val > com->in.last) {
      com->in.last = val;
      com->notsorted = 1;
    }
    if (val < com->in.first) {
      com->in.first = val;
      com->notsorted = 1;
    }
    if (val == com->in.last) ++com->ndups;
  }
  return 0;
}

long noutobs(QVTCOM* com) {
  if (com->in.nobs == 0) return 0;
  com->out.soffset = com->out.eoffset = 0;
  const long lead = com->istmt.lead;
  if (com->istmt.intv.intcode == kIntNone) {
    com->out.first = 1;
    com->out.last = static_cast<double>(com->in.nobs);
    com->out.forlast = static_cast<double>(com->in.nobs + lead);
    return com->in.nobs;
  }
  const INTERVAL& iv = com->istmt.intv;
  // A count that can't be given (a date beyond the calendar) is -1; the
  // caller turns it into the positioning failure.
  auto count = [](double c) -> long {
    if (wzmis(c) || !std::isfinite(c) || std::fabs(c) >= kLargestDistance) return -1;
    return static_cast<long>(c);
  };
  double s = com->out.first = zintnx2(iv, com->in.first, 0);
  double e = com->out.last = zintnx2(iv, com->in.last, 0);
  if (com->istmt.specified) {
    if (!wzmis(com->istmt.start)) {
      s = zintnx2(iv, com->istmt.start, 0);
      com->out.soffset = count(zintck2(iv, s, com->out.first));
    }
    if (!wzmis(com->istmt.end)) {
      e = zintnx2(iv, com->istmt.end, 0);
      const double c = zintck2(iv, com->out.last, e);
      com->out.eoffset = wzmis(c) || !std::isfinite(c) ? 0 : static_cast<long>(c);
    }
  }
  com->out.forlast = zintnx2(iv, e, static_cast<double>(lead));
  const long n = count(zintck2(iv, s, e));
  return n < 0 ? -1 : n + 1;
}

void allocate(QVTCOM* com) {
  Host& h = hostOf(com);
  if (com->out.tobs > kLargestCount) {
    hostMsgLog(h, kMsgProc, kMsgFrameTooLong);
    dataError(com);
    return;
  }
  if (com->out.nobs == 0) return;
  auto& in = com->in;
  auto& out = com->out;
  if (in.oldnobs < in.nobs || out.obsa < out.tobs) {
    freeArray(com, com->tpool, in.flags);
    in.flags = poolArray<char>(*com, com->tpool, std::max(in.nobs, out.tobs));
    if (in.oldnobs < in.nobs) {
      if (com->nvars >= 2) {
        freeArray(com, com->tpool, in.y);
        in.y = poolArray<double>(*com, com->tpool, in.nobs);
      }
      freeArray(com, com->tpool, in.pos);
      in.pos = poolArray<long>(*com, com->tpool, in.nobs);
      in.oldnobs = in.nobs;
    }
    if (out.obsa < out.tobs) {
      for (double** v : {&out.id, &out.y, &out.actual, &out.predict, &out.lower, &out.upper,
                         &out.error, &out.std, &out.level, &out.trend, &out.season}) {
        freeArray(com, com->dpool, *v);
        *v = poolArray<double>(*com, com->dpool, out.tobs);
      }
      out.obsa = out.tobs;
    }
  }
  // A failed group leaves some arrays null: forget the sizes, so that the
  // next group allocates them again rather than trusting them.
  auto forgetSizes = [&]() {
    in.oldnobs = 0;
    out.obsa = 0;
    com->trend.nia = com->trend.noa = com->trend.nsa = 0;
  };
  if (memoryShort(com)) {
    forgetSizes();
    return;
  }

  auto& tr = com->trend;
  if (tr.request != 0) {
    const long ns = com->istmt.nseasons;
    const long need = tr.request == 1 ? ns : tr.request == 2 ? out.nobs : std::max(ns, out.nobs);
    if (tr.nia < in.nobs) {
      freeArray(com, com->tpool, tr.work);
      tr.work = poolArray<double>(*com, com->tpool, 2 * in.nobs);
      tr.nia = in.nobs;
    }
    if (ns > 1 && tr.noa < out.nobs) {
      freeArray(com, com->dpool, tr.scodes);
      tr.scodes = poolArray<int>(*com, com->dpool, out.nobs);
      tr.noa = out.nobs;
    }
    if (tr.nsa < need) {
      freeArray(com, com->dpool, tr.stats);
      tr.stats = poolArray<ZINT_STATS>(*com, com->dpool, need);
      tr.nsa = need;
    }
  }
  if (!out.intwgts) {
    // The back-transform's integration weights: 100 points a side, ten to a
    // standard deviation. Made once a run; the pool outlives the BY groups.
    out.intwgts = poolArray<double>(*com, com->cpool, 101);
    if (out.intwgts) ztstniw(kTrnsGridK, kTrnsGridB, out.intwgts);
  }
  if (memoryShort(com)) forgetSizes();
}

void notsorted(QVTCOM* com) {
  Host& h = hostOf(com);
  auto& in = com->in;
  const long T = com->out.nobs;
  // zinttic wants the flags cleared; the block serves every group.
  std::fill(in.flags, in.flags + T, char{0});
  if (zinttic(in.pos, in.nobs, T, in.flags, &com->ndups, &com->ngaps) == -99) {
    // A position outside the frame: the frame and the positions disagree.
    com->error = 1;
    raiseRc(*com, dataErrorRc(*com));
    return;
  }
  const double base = com->istmt.specified && !wzmis(com->istmt.start) ? com->istmt.start : com->out.first;
  if (com->ngaps >= 1) {
    hostMsgLog(h, kMsgProc, kMsgGapsUnsorted, {idName(com)});
    for (long t = 0; t < T; ++t) {
      if (in.flags[t] != kCellGap) continue;
      const double v = com->istmt.intv.intcode == kIntNone
                           ? static_cast<double>(t + 1)
                           : zintnx3(com->istmt.intv, base, static_cast<double>(t), &com->istmt.align, nullptr);
      hostMsgLog(h, kMsgProc, kMsgGapCell, {v, idName(com), shown(com, v)});
    }
    hostMsgLog(h, kMsgProc, kMsgGapsUnsortedEnd, {token(com)});
    raiseRc(*com, kRcWarning);
  }
  if (com->ndups >= 1) {
    hostMsgLog(h, kMsgProc, kMsgDupsUnsorted, {idName(com), static_cast<long long>(com->ndups), token(com)});
    for (long i = 0; i < in.nobs; ++i) {
      const long p = in.pos[i];
      if (p < 0 || p >= T || in.flags[p] != kCellMany) continue;
      hostMsgLog(h, kMsgProc, kMsgDupRecord, {in.id[i], idName(com), shown(com, in.id[i])});
    }
    hostMsgLog(h, kMsgProc, kMsgDupsUnsortedEnd, {token(com), idName(com)});
    dataError(com);
  }
}

void qvtin(QVTCOM* com) {
  Host& h = hostOf(com);
  auto& in = com->in;
  auto& out = com->out;
  const bool several = com->nvars >= 2;

  if (several && ztrset(h, com->outfile) != 0) spoolFailure(com);

  com->obsfirst = com->obslast = 0;
  in.n = in.nobs = 0;
  com->ndups = com->ngaps = com->nbigval = 0;
  in.first = in.last = 0;
  com->id.val = com->id.prev = kMissing;
  com->notsorted = 0;

  if (!in.id) {
    in.obsa = in.enobs;
    in.id = poolArray<double>(*com, com->tpool, in.obsa);
    if (!several && !in.y) in.y = poolArray<double>(*com, com->tpool, in.obsa);
    com->memdef += hostMemDefault(h);
    if (com->memdef != 0 || !in.id) {
      hostMemMessage(h, com->memdef);
      com->memdef = 0;
      freeArray(com, com->tpool, in.id);
      in.obsa = 0;
      raiseRc(*com, kRcMemory);
      com->error = 1;
      return;
    }
  }

  for (int i = 0; i < com->nvars; ++i) {
    VAR& v = com->vars[i];
    v.start = v.stop = v.n = v.nmiss = 0;
    v.first = v.last = kMissing;
  }
  com->id.start = 0;

  const IDSTMT& is = com->istmt;
  double* buf = com->ds.data.buf;
  while (hostByGet(h, com->ds.data.fileid)) {
    hostRowGet(h, com->ds.data.fileid);
    const int r = getid(com);
    if (com->error) return;
    if (r != 0) continue;

    bool any = false;
    for (int i = 0; i < com->nvars; ++i) {
      if (zmissr(buf[i], kLargestValue, &com->nbigval) == 0) {
        VAR& v = com->vars[i];
        if (v.n == 0) {
          v.start = in.nobs;
          v.first = com->id.val;
        }
        ++v.n;
        v.stop = in.nobs;
        v.last = com->id.val;
        any = true;
      } else {
        // Also the special missing values of the input: the run writes only
        // the ordinary one, so that no input value can pose as a mark of
        // accumulation.
        buf[i] = kMissing;
      }
    }
    const double val = com->id.val;
    const bool inFrame = !is.specified || wzmis(val) ||
                         ((wzmis(is.start) || val >= is.start) && (wzmis(is.end) || val <= is.end));
    if (!inFrame) continue;
    if (several) {
      if (ztput(h, com->outfile, com->nvars, buf) != 0) spoolFailure(com);
    } else {
      in.y[in.nobs] = com->nvars == 1 ? buf[0] : kMissing;
    }
    ++in.nobs;
    if (any) ++in.n;
  }

  if (com->nbigval != 0) hostMsgLog(h, kMsgProc, kMsgTooLarge, {kLargestValue});
  if (in.nobs < 1) {
    hostMsgLog(h, kMsgProc, kMsgNoRecords);
    dataError(com);
    return;
  }
  if (in.nobs == 1) {
    if (com->counts.failures + 1 <= com->maxerror) hostMsgLog(h, kMsgProc, kMsgOneRecord);
    raiseRc(*com, kRcWarning);
  }
  if (in.nobs > kLargestCount) {
    hostMsgLog(h, kMsgProc, kMsgTooManyRecords);
    dataError(com);
    return;
  }
  for (int i = 0; i < com->nvars; ++i) {
    VAR& v = com->vars[i];
    v.nin = v.n > 0 ? v.stop - v.start + 1 : 0;
    v.nmiss = v.nin - v.n;
  }

  out.nobs = noutobs(com);
  if (out.nobs < 0) {
    out.nobs = out.tobs = 0;
    com->error = handleError(com, -1);
    raiseRc(*com, dataErrorRc(*com));
    return;
  }
  out.tobs = out.nobs + is.lead;
  allocate(com);
  if (com->error) return;

  const INTERVAL& iv = is.intv;
  const bool custom = iv.intcode == kIntCustom;
  const double base = is.specified && !wzmis(is.start) ? is.start : out.first;
  const long n = in.nobs;
  auto position = [&](int sort) -> bool {
    long maxpos = 0;
    double first = kMissing, last = kMissing;
    const int r = zinttip(iv, &is.align, in.id, n, base, sort, in.pos, &maxpos, &first, &last);
    const std::string lib = com->ds.data.lib.str();
    com->error = zinttipErr(h, &com->id.name, lib.c_str(), &com->ds.data.mem, iv, r);
    if (com->error > 4) {
      raiseRc(*com, dataErrorRc(*com));
      return false;
    }
    return true;
  };
  if (com->notsorted == 0 && com->ngaps < 1 && com->ndups < 1 && n != 1) {
    // Records follow one another period by period.
    if (custom) {
      if (!position(0)) return;
    } else if (com->trend.request != 0) {
      const long off = iv.intcode == kIntNone ? 0 : out.soffset;
      for (long i = 0; i < n; ++i) in.pos[i] = i + off;
    }
  } else {
    if (!position(custom ? 0 : 2)) return;
    if (com->notsorted && is.acc.code == kAccNone) {
      notsorted(com);
      if (com->error) return;
    }
  }

  if (iv.intcode != kIntNone) {
    for (long t = 0; t < out.tobs; ++t) {
      const double d = zintnx3(iv, base, static_cast<double>(t), &is.align, nullptr);
      if (wzmis(d)) {
        com->error = handleError(com, -1);
        raiseRc(*com, dataErrorRc(*com));
        return;
      }
      out.id[t] = d;
    }
  } else {
    for (long t = 0; t < out.tobs; ++t) out.id[t] = static_cast<double>(t + 1);
  }
}

}  // namespace qvt
