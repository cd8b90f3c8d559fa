// The IDM statement into QVTCOM: the smoothing settings of each demand
// component and the base of the demand. Every problem here is a warning: a
// value is dropped or a limit replaced, and a set of settings that still
// breaks a rule of idmsval is dropped as a whole for the defaults.
#include <cmath>
#include <string>
#include <string_view>

#include "intermittent/idmspec.hpp"
#include "run/missing.hpp"
#include "statements/qvtpars.hpp"
#include "statements/qvtpfields.hpp"

namespace qvt {
namespace {

// Fields of the statement.
constexpr int kBaseAuto = 40;
constexpr int kBaseValue = 41;
// The limits that replace a pair the parameter's rules refuse.
constexpr double kRestLower = 0.0001;
constexpr double kRestUpper = 0.9999;
// Limits closer than this are one point: the weight is fixed there.
constexpr double kPointRest = 1e-12;
// Messages: the first of the interval component; size and average demand
// follow 20 and 40 numbers later.
constexpr int kMsgLevel = 3100;       // trend 3105, damp 3110; limits one above each
constexpr int kMsgBoundsReversed = 3114;
constexpr int kMsgNoEst = 3115;       // SIMPLE, DOUBLE, LINEAR, DAMPTREND, BESTN in turn
constexpr int kMsgIdmDropped = 3160;  // (the setting that broke a rule)

// Where one component sits in the record: its base field B and base bit F,
// and its message offset.
struct CompLayout {
  ESMSPEC IDMSPEC::*spec;
  int field, bit, msg;
};
constexpr CompLayout kComps[] = {
    {&IDMSPEC::intv, 50, 100, 0}, {&IDMSPEC::size, 70, 110, 20}, {&IDMSPEC::adem, 90, 120, 40}};

const STLIST* number(const STMT& r, int field) {
  const STLIST* f = r.field(field);
  return f && f->given() && f->mode == StMode::Number ? f : nullptr;
}

void take(const STMT& r, int field, double* to) {
  if (const STLIST* f = number(r, field)) *to = f->number();
}

void take(const STMT& r, int field, int* to) {
  if (const STLIST* f = number(r, field)) *to = static_cast<int>(f->number());
}

// The setting behind a code of idmsval, as the statement writes it.
std::string_view brokenSetting(int code) {
  switch (code) {
    case kIdmsBadModel: return "the choice of INTERVAL=, SIZE= and AVERAGE=";
    case kIdmsBadIntvMethod: return "METHOD= of INTERVAL=";
    case kIdmsBadSizeMethod: return "METHOD= of SIZE=";
    case kIdmsBadAdemMethod: return "METHOD= of AVERAGE=";
    case kIdmsBadIntvTrns: case kIdmsIntvParm: return "TRANSFORM= of INTERVAL=";
    case kIdmsBadSizeTrns: return "TRANSFORM= of SIZE=";
    case kIdmsBadAdemTrns: return "TRANSFORM= of AVERAGE=";
    case kIdmsSizeParm: return "TRANSFORM= of SIZE= or AVERAGE=";
    case kIdmsIntvWeights: return "the weights of INTERVAL=";
    case kIdmsSizeWeights: return "the weights of SIZE=";
    case kIdmsAdemWeights: return "the weights of AVERAGE=";
    case kIdmsIntvBounds: return "BOUNDS= of INTERVAL=";
    case kIdmsSizeBounds: return "BOUNDS= of SIZE=";
    case kIdmsAdemBounds: return "BOUNDS= of AVERAGE=";
    default: return "the rounding of the forecasts";
  }
}

void warn(QVTCOM* com, int msg, std::initializer_list<MsgArg> args) {
  hostMsgLog(*com->host, kMsgProc, msg, args);
  raiseRc(*com, kRcWarning);
}

// One weight: its value and limits from fields first, first + 1, first + 2.
void weight(QVTCOM* com, const STMT& r, int first, int msg, ESMPARM* p) {
  take(r, first, &p->parm);
  take(r, first + 1, &p->lower);
  take(r, first + 2, &p->upper);
  int rc = idmsvps(p);
  if (rc == kIdmsBadLower || rc == kIdmsBadUpper) {
    warn(com, msg + 1, {p->lower, p->upper, -100.0, 100.0, kRestLower, kRestUpper});
    p->lower = kRestLower;
    p->upper = kRestUpper;
    rc = idmsvps(p);
  }
  if (rc == kIdmsParmOutside) {
    warn(com, msg, {p->parm, p->lower, p->upper});
    p->parm = kMissing;
  }
  if (!wzmis(p->lower) && !wzmis(p->upper) && std::fabs(p->upper - p->lower) < kPointRest) {
    p->parm = p->lower;
    p->noest = 1;
  }
}

// NOEST asks that no weight of the component be estimated; that needs a
// value for each weight of its method. Without one, the weights are
// estimated after all.
void noestConsistency(QVTCOM* com, const CompLayout& l, ESMSPEC* c) {
  const ESMPARM* ps[3] = {&c->level, &c->trend, &c->damp};
  int np = 0, which = 0;
  switch (c->modcode) {
    case kIdmSimple: np = 1; which = 0; break;
    case kIdmDouble: np = 1; which = 1; break;
    case kIdmLinear: np = 2; which = 2; break;
    case kIdmDampTrend: np = 3; which = 3; break;
    case kIdmBestN: np = 3; which = 4; break;
    default: return;
  }
  bool allGiven = true, allFixed = true;
  for (int k = 0; k < np; ++k) {
    allGiven = allGiven && !wzmis(ps[k]->parm);
    allFixed = allFixed && ps[k]->noest != 0;
  }
  if (allGiven) {
    if (allFixed) c->noest = 1;
    return;
  }
  if (c->noest) hostMsgLog(*com->host, kMsgProc, kMsgNoEst + l.msg + which);
  c->noest = 0;
}

void component(QVTCOM* com, const STMT& r, const CompLayout& l) {
  ESMSPEC* c = &(com->idmspec.*l.spec);
  const int B = l.field, F = l.bit;
  take(r, B, &c->modcode);
  take(r, B + 1, &c->trnscode);
  take(r, B + 2, &c->trnsparm);
  c->trnsopt = r.bit(F) ? 3 : 2;
  take(r, B + 3, &c->select);

  weight(com, r, B + 5, kMsgLevel + l.msg, &c->level);
  weight(com, r, B + 8, kMsgLevel + 5 + l.msg, &c->trend);
  weight(com, r, B + 11, kMsgLevel + 10 + l.msg, &c->damp);

  ESMFBNDS& b = c->fbnds;
  take(r, B + 15, &b.lower);
  take(r, B + 16, &b.upper);
  if (!wzmis(b.lower) && !wzmis(b.upper)) {
    if (l.spec == &IDMSPEC::intv && b.lower > b.upper) {
      warn(com, kMsgBoundsReversed, {b.lower, b.upper});
      b.lower = b.upper = kMissing;
      b.code = kIdmNoBounds;
    } else {
      b.code = kIdmBoundAll;
    }
  }

  c->noest = r.bit(F + 2) ? 1 : 0;
  noestConsistency(com, l, c);
  c->stability = !r.bit(F + 1) && c->noest == 0 ? 1 : 0;
}

}  // namespace

void getidm(QVTCOM* com, const STMT& proc) {
  IDMSPEC& s = com->idmspec;
  idmsdft(&s);
  com->base = 0;
  if (const STLIST* f = proc.field(kBaseAuto); f && f->given()) com->base = kMissing;
  take(proc, kBaseValue, &com->base);

  bool present[3] = {};
  for (int k = 0; k < 3; ++k) {
    present[k] = proc.bit(kComps[k].bit + 3);
    if (present[k]) component(com, proc, kComps[k]);
  }
  const bool intv = present[0], size = present[1], adem = present[2];
  if ((intv || size) && !adem) {
    s.modcode = kIdmCroston;
    s.noest = s.intv.noest && s.size.noest ? 1 : 0;
  } else if (adem && !intv && !size) {
    s.modcode = kIdmAverage;
    s.noest = s.adem.noest ? 1 : 0;
  } else {
    s.modcode = kIdmBoth;
    s.noest = s.intv.noest && s.size.noest && s.adem.noest ? 1 : 0;
  }
  // A rule still broken drops the statement for the defaults; the user is
  // told which setting did it, since nothing else would show it.
  if (const int bad = idmsval(&s); bad < 0) {
    warn(com, kMsgIdmDropped, {std::string(brokenSetting(bad))});
    idmsdft(&s);
  }
  // Filled: by the statement, or by the defaults that stand without one.
  s.specified = 1;
}

}  // namespace qvt
