// The FORECAST statements into QVTCOM: one FORSTMT each, and the list of
// series with the statement that forecasts each.
#include <algorithm>
#include <cctype>
#include <memory>
#include <string_view>
#include <vector>

#include "statements/qvtpars.hpp"
#include "statements/qvtpcodes.hpp"
#include "statements/qvtpfields.hpp"
#include "statements/varlist.hpp"

namespace qvt {
namespace {

// The parser stops ALPHA= at 0 and 1; a confidence level needs to stay
// strictly inside them.
constexpr double kAlphaLow = 0.000001;
constexpr double kAlphaHigh = 0.999999;

const STLIST* givenNumber(const STMT& r, int field) {
  const STLIST* f = r.field(field);
  return f && f->given() && f->mode == StMode::Number ? f : nullptr;
}

int code(const STLIST* f, int dflt) { return f ? static_cast<int>(f->number()) : dflt; }

bool sameNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t k = 0; k < a.size(); ++k)
    if (std::toupper(static_cast<unsigned char>(a[k])) != std::toupper(static_cast<unsigned char>(b[k]))) return false;
  return true;
}

// Models that need a seasonal cycle: SEASONAL, ADDWINTERS, WINTERS, BESTS, MULTSEASONAL.
bool needsCycle(int model) {
  return model == kModelSeasonal || model == kModelAddWinters || model == kModelWinters ||
         model == kModelBestS || model == kModelMultSeasonal;
}

class Reader {
 public:
  explicit Reader(QVTCOM* com) : com_(com), host_(*com->host) {}

  // Resolves every list first: a name that isn't in the input, or a
  // character variable, makes the step unusable, and all of them are
  // reported before it ends.
  void resolve(const PROCSTR& stmts) {
    const auto vars = host_.dsVars(com_->ds.data.fileid);
    lists_.resize(stmts.head.size());
    std::size_t total = 0;
    int errors = 0;
    for (std::size_t i = 1; i < stmts.head.size(); ++i) {
      const STLIST* f = stmts.head[i].field(pf::kFVars);
      if (!f || !f->given() || f->mode != StMode::VarList) continue;
      errors += resolveVarList(f->vars(), vars, VarNeed::Numeric, host_, lists_[i]);
      total += lists_[i].size();
    }
    if (errors > 0 || com_->rc >= kRcStatements) {
      raiseRc(*com_, kRcStatements);
      com_->error = 1;
      hostExit(host_, com_->rc);
    }
    // Room for every variable as written; repeats and left-out ones make
    // the real count smaller.
    com_->vars = poolArray<VAR>(*com_, com_->cpool, static_cast<long>(total));
    com_->memdef += hostMemDefault(host_);
    if (com_->memdef != 0) {
      hostMemMessage(host_, com_->memdef);
      raiseRc(*com_, kRcMemory);
      com_->error = 1;
      hostExit(host_, com_->rc);
    }
    std::uninitialized_default_construct_n(com_->vars, total);
    seen_.assign(vars.size() + 1, 0);
  }

  void statement(const STMT& r, const std::vector<int>& nums, FORSTMT& fs) {
    // 1. Flags.
    fs.transform.median = r.bit(pf::kFBitMedian) ? 1 : 0;
    fs.replacemissing = r.bit(pf::kFBitReplaceMissing) ? 1 : 0;
    fs.replaceback = r.bit(pf::kFBitReplaceBack) ? 1 : 0;
    fs.seasontest.none = r.bit(pf::kFBitSeasonTestNone) ? 1 : 0;

    // 2, 3. The model; without a seasonal cycle BEST is BESTN, and a model
    // that needs a cycle can't forecast this statement's variables.
    const STLIST* m = givenNumber(r, pf::kFModel);
    fs.model.code = code(m, kModelBest);
    fs.model.specified = m ? 1 : 0;
    if (com_->istmt.nseasons < 2) {
      if (fs.model.code == kModelBest) fs.model.code = kModelBestN;
      if (needsCycle(fs.model.code)) {
        qvtpmdl(com_, fs.model.code, &fs.model.name, &fs.model.label);
        const std::string name = fs.model.name.str();
        hostMsgLog(host_, kMsgProc, pmsg::kModelNeedsCycle, {name});
        hostMsgLog(host_, kMsgProc, pmsg::kModelVarsDropped, {name});
        raiseRc(*com_, kRcWarning);
        return;
      }
    }
    qvtpmdl(com_, fs.model.code, &fs.model.name, &fs.model.label);

    // 4. Variables.
    const STLIST* first = r.field(pf::kFFirstItem);
    const bool all = first && first->given() && first->mode == StMode::Text && sameNoCase(first->text(), "_ALL_");
    for (const int varno : nums) add(varno, all, fs);

    // 5 to 7. CRITERION=, ALPHA=, USE=.
    const STLIST* sel = givenNumber(r, pf::kFCriterion);
    fs.select.code = code(sel, 3);  // RMSE
    fs.select.specified = sel ? 1 : 0;
    qvtpsel(com_, fs.select.code, &fs.select.name, &fs.select.label);
    fs.alpha = 0.05;
    if (const STLIST* a = givenNumber(r, pf::kFAlpha)) {
      fs.alpha = a->number();
      if (fs.alpha < kAlphaLow) {
        fs.alpha = kAlphaLow;
        hostMsgLog(host_, kMsgProc, pmsg::kAlphaRaised);
      } else if (fs.alpha > kAlphaHigh) {
        fs.alpha = kAlphaHigh;
        hostMsgLog(host_, kMsgProc, pmsg::kAlphaLowered);
      }
    }
    const STLIST* use = givenNumber(r, pf::kFUse);
    fs.use.code = code(use, kUsePredict);
    fs.use.specified = use ? 1 : 0;
    qvtpuse(com_, fs.use.code, &fs.use.name, &fs.use.label);

    // 8. TRANSFORM=; the intermittent model transforms its components itself.
    const STLIST* t = givenNumber(r, pf::kFTransform);
    fs.transform.code = kTrnsNone;
    if (t && fs.model.code == kModelCroston) {
      hostMsgLog(host_, kMsgProc, pmsg::kTransformIgnored);
    } else if (t) {
      fs.transform.code = code(t, kTrnsNone);
      fs.transform.specified = 1;
    }
    qvtptrn(com_, fs.transform.code, &fs.transform.name, &fs.transform.label);
    if (const STLIST* p = givenNumber(r, pf::kFBoxCox)) fs.transform.parm = p->number();

    // 9. Holdout and the seasonality test.
    if (const STLIST* h = givenNumber(r, pf::kFHoldout)) fs.holdout = static_cast<long>(h->number());
    if (const STLIST* h = givenNumber(r, pf::kFHoldoutPct)) fs.holdoutpct = h->number() / 100.0;
    if (const STLIST* s = givenNumber(r, pf::kFSigLevel)) fs.seasontest.siglevel = s->number();

    // 10. ACCUMULATE=: the statement's own, else the ID statement's.
    const IDSTMT& is = com_->istmt;
    if (const STLIST* a = givenNumber(r, pf::kAccumulate)) {
      fs.acc.code = code(a, kAccNone);
      fs.acc.specified = 1;
    } else {
      fs.acc.code = is.acc.code;
      fs.acc.specified = is.acc.specified;
    }
    if (fs.acc.code != kAccNone && !is.specified) {
      fs.acc.code = kAccNone;
      fs.acc.specified = 0;
      hostMsgLog(host_, kMsgProc, pmsg::kAccWithoutId);
      raiseRc(*com_, kRcWarning);
    }
    qvtpacc(com_, fs.acc.code, &fs.acc.name, &fs.acc.label);

    // 11, 12. SETMISSING=, ZEROMISS=.
    if (const STLIST* s = givenNumber(r, pf::kSetMissCode)) {
      fs.setmiss.code = code(s, kSetMissMissing);
      fs.setmiss.value = kMissing;
      fs.setmiss.specified = 1;
    } else if (const STLIST* v = givenNumber(r, pf::kSetMissValue)) {
      fs.setmiss.code = kSetMissValue;
      fs.setmiss.value = v->number();
      fs.setmiss.specified = 1;
    } else {
      fs.setmiss.code = is.setmiss.code;
      fs.setmiss.value = is.setmiss.value;
      fs.setmiss.specified = is.setmiss.specified;
    }
    if (const STLIST* z = givenNumber(r, pf::kZeroMiss)) {
      fs.zeromiss.code = code(z, kZeroNone);
      fs.zeromiss.specified = 1;
    } else {
      fs.zeromiss.code = is.zeromiss.code;
    }

    // 13. INTERMITTENT= decides only under BESTALL; NBACKCAST=.
    if (const STLIST* i = givenNumber(r, pf::kFIntermittent)) {
      fs.intermittent = i->number();
      if (fs.model.code != kModelBestAll) hostMsgLog(host_, kMsgProc, pmsg::kIntermittentIgnored, {fs.model.name.str()});
    }
    if (const STLIST* b = givenNumber(r, pf::kFNBackcast)) fs.nbackcast = static_cast<long>(b->number());
  }

  void finish() {
    if (dropped_) hostMsgLog(host_, kMsgProc, pmsg::kSeriesLeft, {static_cast<long long>(com_->nvars)});
    if (com_->op.sortnames && com_->nvars >= 2) sortnames(com_);
  }

  const std::vector<int>& list(std::size_t i) const { return lists_[i]; }

 private:
  QVTCOM* com_;
  Host& host_;
  std::vector<std::vector<int>> lists_;  // resolved variable numbers of each record
  std::vector<char> seen_;               // by variable number: already a series
  bool dropped_ = false;

  bool isBy(int varno) const {
    for (int k = 0; k < com_->nby; ++k)
      if (com_->bylist[k] == varno) return true;
    return false;
  }

  void add(int varno, bool all, FORSTMT& fs) {
    if (isBy(varno)) return;  // BY variables are never series, and a list like _ALL_ names them
    if (com_->id.dsvarno != 0 && varno == com_->id.dsvarno) {
      if (!all) {
        hostMsgLog(host_, kMsgProc, pmsg::kIdInList, {com_->id.name.str()});
        raiseRc(*com_, kRcWarning);
        dropped_ = true;
      }
      return;
    }
    VarInfo v;
    hostVarName(host_, com_->ds.data.fileid, varno, &v);
    if (seen_[static_cast<std::size_t>(varno)]) {
      // The first statement that names a variable forecasts it.
      hostMsgLog(host_, kMsgProc, pmsg::kNamedTwice, {v.name});
      raiseRc(*com_, kRcWarning);
      dropped_ = true;
      return;
    }
    seen_[static_cast<std::size_t>(varno)] = 1;
    VAR& var = com_->vars[com_->nvars++];
    var.dsvarno = varno;
    var.fstmt = &fs;
    var.name.set(v.name);
    var.label.set(v.label);
    com_->outsum.maxlen = std::max<int>(com_->outsum.maxlen, var.name.len);
  }
};

// Upper-case byte order, the raw bytes breaking ties: the input's variable
// names are unique without regard to case, so the order is total.
bool nameBefore(const VAR& a, const VAR& b) {
  const std::string_view x = a.name.view(), y = b.name.view();
  const std::size_t n = std::min(x.size(), y.size());
  for (std::size_t k = 0; k < n; ++k) {
    const int cx = std::toupper(static_cast<unsigned char>(x[k]));
    const int cy = std::toupper(static_cast<unsigned char>(y[k]));
    if (cx != cy) return cx < cy;
  }
  if (x.size() != y.size()) return x.size() < y.size();
  return x < y;
}

}  // namespace

void sortnames(QVTCOM* com) {
  if (com->nvars < 2) return;
  std::sort(com->vars, com->vars + com->nvars, nameBefore);
}

void getfors(QVTCOM* com, const PROCSTR& stmts) {
  Reader rd(com);
  rd.resolve(stmts);
  com->nvars = 0;
  for (std::size_t i = 1; i < stmts.head.size(); ++i)
    rd.statement(stmts.head[i], rd.list(i), com->fstmt[i - 1]);
  rd.finish();
}

}  // namespace qvt
