// The procedure record into QVTCOM: the options of the procedure statement,
// the input data set, the BY variables and the ID statement with its frame.
#include <algorithm>
#include <string>
#include <vector>

#include "calendar/zfmt.hpp"
#include "calendar/zintcycle.hpp"
#include "host/format.hpp"
#include "statements/qvtpars.hpp"
#include "statements/qvtpcodes.hpp"
#include "statements/qvtpfields.hpp"
#include "statements/qvtpopen.hpp"
#include "statements/varlist.hpp"

namespace qvt {
namespace {

const STLIST* given(const STMT& r, int field) {
  const STLIST* f = r.field(field);
  return f && f->given() ? f : nullptr;
}

const STLIST* givenNumber(const STMT& r, int field) {
  const STLIST* f = given(r, field);
  return f && f->mode == StMode::Number ? f : nullptr;
}

char flag(const STMT& r, int bit) { return r.bit(bit) ? 1 : 0; }

// The deficit of the allocations made so far; a nonzero one ends the step.
void memoryCheck(QVTCOM* com) {
  com->memdef += hostMemDefault(*com->host);
  if (com->memdef == 0) return;
  hostMemMessage(*com->host, com->memdef);
  raiseRc(*com, kRcMemory);
  com->error = 1;
  hostExit(*com->host, com->rc);
}

// The flags of PRINT=, PLOT= and the plain options.
void flags(QVTCOM* com, const STMT& r) {
  auto& op = com->op;
  op.nooutall = flag(r, pf::kBitNoOutAll);
  op.sortnames = flag(r, pf::kBitSortNames);
  op.debugx = flag(r, pf::kBitDebugX);
  op.debugd = static_cast<char>(flag(r, pf::kBitDebugD) | op.debugx);
  op.debug = static_cast<char>(flag(r, pf::kBitDebug) | op.debugd);
  com->istmt.notsorted = flag(r, pf::kBitNotSorted);

  auto& p = com->print;
  p.details = flag(r, pf::kBitPrintDetails);
  p.all = flag(r, 10);
  p.estimates = flag(r, 11);
  p.forecasts = flag(r, 12);
  p.statistics = flag(r, 13);
  p.summary = flag(r, 14);
  p.trends = flag(r, 15);
  p.seasons = flag(r, 16);
  p.performance = flag(r, 17);
  p.states = flag(r, 22);
  p.performancesummary = flag(r, 23);
  p.performanceoverall = flag(r, 24);
  p.descstats = flag(r, 25);
  p.internal = flag(r, 29);
  if (p.all) p.summary = p.statistics = p.forecasts = p.estimates = p.descstats = 1;

  auto& g = com->plot;
  g.all = flag(r, 30);
  g.errors = flag(r, 31);
  g.acf = flag(r, 32);
  g.pacf = flag(r, 33);
  g.iacf = flag(r, 34);
  g.wn = flag(r, 35);
  g.models = flag(r, 40);
  g.levels = flag(r, 41);
  g.trends = flag(r, 42);
  g.seasons = flag(r, 43);
  g.forecasts = flag(r, 50);
  g.modelforecasts = flag(r, 51);
  g.forecastsonly = flag(r, 52);
  g.periodogram = flag(r, 53);
  g.spectrum = flag(r, 54);
  g.corr = flag(r, 55);
  g.basic = flag(r, 56);

  com->spectrum.alpha = 0.5;
  com->spectrum.meanAdj = 0;
  if (const STLIST* f = givenNumber(r, pf::kSpecAlpha)) com->spectrum.alpha = f->number();
  if (const STLIST* f = givenNumber(r, pf::kSpecCenter)) com->spectrum.meanAdj = f->number() != 0 ? 1 : 0;
}

// PLOT=ALL and PLOT=BASIC stand for sets of plots.
void plotSets(QVTCOM* com) {
  auto& g = com->plot;
  if (g.all)
    g.wn = g.iacf = g.pacf = g.acf = g.errors = g.seasons = g.trends = g.levels = g.models =
        g.forecastsonly = g.modelforecasts = g.forecasts = g.spectrum = g.periodogram = 1;
  if (g.basic) g.errors = g.modelforecasts = g.corr = 1;
}

// The input data set; without one nothing else can be read.
void input(QVTCOM* com, const STMT& r) {
  STLIST dflt;  // a procedure record always has field 1 (given or by default); a bare one reads the default input
  const STLIST* f = r.field(pf::kData);
  const int rc = qvtpDsOpen(com, f ? *f : dflt, DsMode::Input, &com->ds.data);
  if (rc == kHostOk) return;
  if (rc == kHostNoInput) {
    hostMsgLog(*com->host, kMsgProc, pmsg::kNoInput);
    raiseRc(*com, kRcStatements);
  } else {
    raiseRc(*com, kRcInputUnusable);  // the host has said why
  }
  com->error = 1;
  hostExit(*com->host, com->rc);
}

// Counts a failed resolution: the step can't run, but the other lists are
// still checked so that every wrong name is reported at once.
void listError(QVTCOM* com) {
  raiseRc(*com, kRcStatements);
  com->error = 1;
}

// BY variables: numbers, order, and the host's grouping of the input.
void byVars(QVTCOM* com, const STMT& r) {
  const STLIST* f = given(r, pf::kBy);
  if (!f || f->mode != StMode::VarList) return;
  Host& host = *com->host;
  const VarList& list = f->vars();
  const auto vars = host.dsVars(com->ds.data.fileid);
  std::vector<ByVar> by;
  int errors = 0;
  for (const VarItem& it : list.items) {
    // One element at a time, so that DESCENDING stays with what it expands to.
    VarList one;
    one.items.push_back(it);
    std::vector<int> nums;
    errors += resolveVarList(one, vars, VarNeed::Any, host, nums);
    for (int n : nums) by.push_back(ByVar{n, it.descending});
  }
  com->bynotsorted = list.notsorted ? 1 : 0;
  if (errors > 0) return listError(com);
  if (by.empty()) return;
  com->nby = static_cast<int>(by.size());
  com->bylist = poolArray<int>(*com, com->cpool, com->nby);
  com->bydesc = poolArray<char>(*com, com->cpool, com->nby);
  memoryCheck(com);
  for (int k = 0; k < com->nby; ++k) {
    com->bylist[k] = by[static_cast<std::size_t>(k)].varno;
    com->bydesc[k] = by[static_cast<std::size_t>(k)].descending ? 1 : 0;
  }
  if (host.bySet(com->ds.data.fileid, by, com->bynotsorted != 0) != kHostOk) {
    raiseRc(*com, kRcInputUnusable);  // the host has said why
    com->error = 1;
    hostExit(host, com->rc);
  }
}

// The code of a format name in the format table, or 0 when it isn't there.
long formatCode(const std::string& name) {
  return zfmtcode(name.data(), static_cast<int>(name.size()));
}

// The ID variable: its number, name, label and format.
void idVar(QVTCOM* com, const STMT& r) {
  const STLIST* f = given(r, pf::kIdVar);
  if (!f || f->mode != StMode::VarList) return;
  com->istmt.specified = 1;
  Host& host = *com->host;
  std::vector<int> nums;
  if (resolveVarList(f->vars(), host.dsVars(com->ds.data.fileid), VarNeed::Numeric, host, nums) > 0 ||
      nums.empty())
    return listError(com);
  VarInfo v;
  hostVarName(host, com->ds.data.fileid, nums.front(), &v);
  com->id.dsvarno = nums.front();
  com->id.name.set(v.name);
  com->id.label.set(v.label);
  com->id.format = v.format;
  com->id.fcode = 99;  // no format
  FormatSpec spec;
  if (!v.format.empty() && parseFormatSpec(v.format, &spec) == kFormatOk)
    if (const long code = formatCode(spec.name); code != 0) com->id.fcode = code;
}

// The interval, its default format, and the seasonal cycle.
void interval(QVTCOM* com, const STMT& r) {
  IDSTMT& is = com->istmt;
  const STLIST* f = given(r, pf::kInterval);
  if (f && f->interval) {
    is.intv = *f->interval;
  } else {
    is.intv = INTERVAL{};
    zintstr("1", 1, &is.intv);  // observation numbers: the frame of a step without ID statement
  }
  is.interval.set(std::string_view(is.intv.token, static_cast<std::size_t>(std::max<short>(is.intv.tokenlen, 0))));
  char name[kIntFmtNameMax + 1] = {};
  short namelen = 0, w1 = 0, w2 = 0;
  zintfmt(&is.intv, name, &namelen, &w1, &w2);
  namelen = std::clamp<short>(namelen, 0, kIntFmtNameMax);  // the name never outgrows its buffer
  is.format.set(std::string_view(name, static_cast<std::size_t>(namelen)));
  is.fmtw1 = w1;
  is.fmtw2 = w2;
  is.fcode = formatCode(std::string(name, static_cast<std::size_t>(namelen)));
  FMTSTRING s;
  zfmtstri(is.fcode, w1, 0, &s);
  is.fmtstr.set(std::string_view(s.string, static_cast<std::size_t>(std::max<short>(s.string_l, 0))));
  is.time = is.intv.units == 's' ? 1 : 0;

  const STLIST* a = given(r, pf::kAlign);
  is.align = a && a->mode == StMode::Character ? a->character() : 'B';

  const STLIST* sf = givenNumber(r, pf::kSeasonality);
  if (sf && sf->number() != 0) {
    is.seasonality = is.nseasons = static_cast<int>(sf->number());
    if (is.intv.intcode == kIntWeek && is.seasonality == 52) is.scode53 = -1;
  } else {
    INTERVAL cycle{};
    int n = 0;
    is.seasonality = is.nseasons = zintsea(&is.intv, 0, &cycle, &n) == 0 ? n : 0;
  }
  if (is.nseasons > 1) {
    com->outstates.seasons = poolArray<double>(*com, com->cpool, is.nseasons);
    memoryCheck(com);
  }
}

// LEAD=, BACK=, MAXERROR=, STARTSUM=.
void horizon(QVTCOM* com, const STMT& r) {
  IDSTMT& is = com->istmt;
  qvtGetLEAD(com, r.field(pf::kLead), 12, 1, &is.lead);
  const STLIST* b = givenNumber(r, pf::kBack);
  is.back = b ? static_cast<int>(b->number()) : 0;
  const STLIST* m = givenNumber(r, pf::kMaxError);
  com->maxerror = m ? static_cast<long>(m->number()) : 25;
  const STLIST* s = givenNumber(r, pf::kStartSum);
  is.startsum = s ? static_cast<int>(s->number()) : (is.lead != 0 ? 1 : 0);
  if (is.startsum > is.lead) {
    hostMsgLog(*com->host, kMsgProc, pmsg::kStartSumAboveLead, {static_cast<long long>(is.startsum)});
    is.startsum = 1;
    raiseRc(*com, kRcWarning);
  }
}

// ACCUMULATE=, SETMISSING=, ZEROMISS=, START=, END= of the ID statement.
void frameOptions(QVTCOM* com, const STMT& r) {
  IDSTMT& is = com->istmt;
  const STLIST* acc = givenNumber(r, pf::kAccumulate);
  is.acc.code = acc ? static_cast<int>(acc->number()) : kAccNone;
  is.acc.specified = acc ? 1 : 0;
  qvtpacc(com, is.acc.code, &is.acc.name, &is.acc.label);

  is.setmiss.code = kSetMissMissing;
  is.setmiss.value = kMissing;
  is.setmiss.specified = 0;
  if (const STLIST* f = givenNumber(r, pf::kSetMissCode)) {
    is.setmiss.code = static_cast<int>(f->number());
    is.setmiss.specified = 1;
  }
  if (const STLIST* f = givenNumber(r, pf::kSetMissValue)) {
    is.setmiss.code = kSetMissValue;
    is.setmiss.value = f->number();
    is.setmiss.specified = 1;
  }
  is.zeromiss.code = kZeroNone;
  is.zeromiss.specified = 0;
  if (const STLIST* f = givenNumber(r, pf::kZeroMiss)) {
    is.zeromiss.code = static_cast<int>(f->number());
    is.zeromiss.specified = 1;
  }

  // The date field wins over the time field, that over the datetime field.
  auto when = [&](int dateField, int timeField, int dtField, double* v, char* units) {
    *v = kMissing;
    *units = 0;
    if (const STLIST* f = givenNumber(r, dateField)) {
      *v = f->number();
      *units = 'd';
    } else if (const STLIST* t = givenNumber(r, timeField)) {
      *v = t->number();
      *units = 's';
    } else if (const STLIST* d = givenNumber(r, dtField)) {
      *v = d->number();
      *units = 's';
    }
  };
  when(pf::kStartDate, pf::kStartTime, pf::kStartDatetime, &is.start, &is.startunits);
  when(pf::kEndDate, pf::kEndTime, pf::kEndDatetime, &is.end, &is.endunits);
}

// FORMAT= of the ID statement: a character format can't show a time ID.
void userFormat(QVTCOM* com, const STMT& r) {
  const STLIST* f = given(r, pf::kFormat);
  if (!f || f->mode != StMode::Format) return;
  FormatSpec spec;
  if (parseFormatSpec(f->text(), &spec) != kFormatOk) return;  // the scanner only makes FMT tokens that parse
  if (spec.name.find('$') != std::string::npos) {
    hostMsgLog(*com->host, kMsgProc, pmsg::kCharFormat, {f->text()});
    return;
  }
  IDSTMT& is = com->istmt;
  is.userfmt = 1;
  is.fcode = formatCode(spec.name);
  // A format written without a width (DATE.) shows with its default width.
  int width = spec.width;
  if (width == 0)
    if (const FormatInfo* info = findFormat(spec.name)) width = info->defaultWidth;
  is.fmtw1 = is.fmtw2 = static_cast<std::int16_t>(width);
  is.format.set(spec.name);
  FMTSTRING s;
  zfmtstri(is.fcode, spec.width, spec.decimals > 0 ? spec.decimals : 0, &s);
  if (s.string_l > 0)
    is.fmtstr.set(std::string_view(s.string, static_cast<std::size_t>(s.string_l)));
  else
    is.fmtstr.set(formatSpecText(spec));  // a name the format table doesn't know keeps its text as written
}

}  // namespace

void getopts(QVTCOM* com, const STMT& proc) {
  flags(com, proc);
  input(com, proc);
  byVars(com, proc);
  idVar(com, proc);
  interval(com, proc);
  horizon(com, proc);
  frameOptions(com, proc);
  userFormat(com, proc);
  plotSets(com);
}

}  // namespace qvt
