#include "statements/parser.hpp"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <optional>

#include "calendar/interval.hpp"
#include "calendar/zcintc_host.hpp"
#include "run/missing.hpp"
#include "statements/grammar.hpp"
#include "statements/keywords.hpp"
#include "statements/messages.hpp"
#include "statements/scanner.hpp"
#include "statements/stmt_options.hpp"

namespace qvt {
namespace {

// Repairs allowed in one statement before it is given up: a statement that
// needs more is noise rather than a statement with a slip in it.
constexpr int kMaxRepairsPerStatement = 8;
// Steps of one repair's insertion walk; a bound that well-formed tables never reach.
constexpr int kMaxInsertSteps = 10000;

// Fields of which only one may hold a value: the last one written wins.
struct Exclusive {
  RecordKind kind;
  int a, b, c;
};
constexpr Exclusive kExclusive[] = {
    {RecordKind::Procedure, 10, 15, -1}, {RecordKind::Procedure, 18, 19, 20},
    {RecordKind::Procedure, 21, 22, 23}, {RecordKind::Procedure, 40, 41, -1},
    {RecordKind::Forecast, 10, 15, -1},
};

std::string upper(std::string_view s) {
  std::string u(s);
  for (char& c : u) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return u;
}

// Edit distance with adjacent transpositions (the optimal string alignment
// distance of Damerau), so that LAED is one edit from LEAD; limit + 1 when
// it is beyond limit.
int editDistance(std::string_view a, std::string_view b, int limit) {
  const std::size_t la = a.size(), lb = b.size();
  if ((la > lb ? la - lb : lb - la) > static_cast<std::size_t>(limit)) return limit + 1;
  std::vector<std::vector<int>> d(la + 1, std::vector<int>(lb + 1, 0));
  for (std::size_t i = 0; i <= la; ++i) d[i][0] = static_cast<int>(i);
  for (std::size_t j = 0; j <= lb; ++j) d[0][j] = static_cast<int>(j);
  for (std::size_t i = 1; i <= la; ++i) {
    for (std::size_t j = 1; j <= lb; ++j) {
      const int cost = a[i - 1] == b[j - 1] ? 0 : 1;
      d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + cost});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
    }
  }
  return std::min(d[la][lb], limit + 1);
}

std::string numberText(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.15g", v);
  return buf;
}

class Parser {
 public:
  Parser(const Program& prog, Host& host, PROCSTR& out)
      : g_(stmtGrammar()), prog_(prog), src_(*prog.src), host_(host), out_(out) {}

  void step(const Step& st) {
    std::size_t s = st.first;
    while (s < st.last) {
      std::size_t e = s;
      while (e < st.last && prog_.tokens[e].cls != term::ENDJB) ++e;
      if (e < st.last) ++e;
      statement(s, e);
      s = e;
    }
    if (out_.head.empty()) out_.head.push_back(emptyProcRecord(st.pos));
  }

 private:
  const Grammar& g_;
  const Program& prog_;
  const SourceText& src_;
  Host& host_;
  PROCSTR& out_;

  // The statement in hand.
  std::size_t begin_ = 0, end_ = 0, i_ = 0;
  Token sub_;                     // a misspelled keyword taken as the keyword
  std::size_t subAt_ = SIZE_MAX;
  std::vector<GSym> stack_;
  long lastTok_ = -1;             // the token matched last; -1 when it was inserted
  std::string stmtName_;
  int stmtCount_[5] = {};

  // Semantic state.
  std::size_t rec_ = 0;
  int pendField_ = -1, pendKind_ = 0;
  bool pendRange_ = false, pendHasHigh_ = false;
  double pendLow_ = 0, pendHigh_ = 0;
  int listField_ = -1;
  VarItem item_;
  long itemFirst_ = -1;
  bool descPending_ = false;
  bool itemHasFirst_ = false;
  DataSetName ds_;
  SourcePos dsPos_;
  STLIST sink_;  // takes a value for a field that the record doesn't have

  static STMT emptyProcRecord(const SourcePos& pos) {
    STMT r;
    r.name = "QVT";
    r.nfld = kProcFields + 1;
    r.fld.resize(static_cast<std::size_t>(r.nfld));
    r.pos = pos;
    return r;
  }

  const Token* cur() const noexcept {
    if (i_ >= end_) return nullptr;
    if (i_ == subAt_) return &sub_;
    return &prog_.tokens[i_];
  }
  const Token* tokenAt(std::size_t k) const noexcept {
    if (k >= end_) return nullptr;
    if (k == subAt_) return &sub_;
    return &prog_.tokens[k];
  }
  const Token* last() const noexcept {
    return lastTok_ < 0 ? nullptr : tokenAt(static_cast<std::size_t>(lastTok_));
  }
  SourcePos posOf(const Token* t) const {
    if (t) return t->pos;
    // The end of the statement: just behind its last token.
    if (end_ > begin_) {
      const Token& l = prog_.tokens[end_ - 1];
      return SourcePos{l.pos.file, l.pos.line, l.pos.col + static_cast<int>(l.length)};
    }
    return SourcePos{src_.file, src_.firstLine, src_.firstCol};
  }
  RecordKind kind() const noexcept { return rec_ == 0 ? RecordKind::Procedure : RecordKind::Forecast; }
  STMT& rec() { return out_.head[rec_]; }

  void error(int number, const SourcePos& pos, std::initializer_list<MsgArg> extra) {
    ++out_.nerrors;
    stmtMsg(host_, src_, number, pos, extra);
  }

  // ---------------------------------------------------------------- statements

  void statement(std::size_t b, std::size_t e) {
    const Token& head = prog_.tokens[b];
    if (head.cls == term::ENDJB) return;  // a null statement
    static constexpr std::string_view kStatements[] = {"QVT", "FORECAST", "ID", "IDM", "BY"};
    int which = -1;
    for (int k = 0; k < 5; ++k)
      if (head.cls == term::NAMEX && head.kw >= 0 && keywordName(head.kw) == kStatements[k]) which = k;
    if (which < 0) {
      error(kMsgUnknownStatement, head.pos, {tokenShow(head)});
      ++out_.nskipped;
      return;
    }
    stmtName_ = std::string(kStatements[which]);
    if (which >= 2 && stmtCount_[which] > 0)
      stmtMsg(host_, src_, kMsgSecondStatement, head.pos, {stmtName_});
    ++stmtCount_[which];
    if (which != 0 && out_.head.empty()) out_.head.push_back(emptyProcRecord(head.pos));

    // What to restore when the statement is given up.
    const std::size_t nrec = out_.head.size();
    std::optional<STMT> saved;
    if (which >= 2) saved = out_.head[0];

    begin_ = b;
    end_ = e;
    int repairs = 0;
    const bool ok = run(repairs);
    if (!ok) {
      out_.head.resize(nrec);
      if (saved) out_.head[0] = std::move(*saved);
      if (which == 0 && out_.head.empty()) out_.head.push_back(emptyProcRecord(head.pos));
      error(kMsgUnrepairable, head.pos, {stmtName_});
      ++out_.nskipped;
    } else if (repairs > 0) {
      ++out_.nrepaired;
    }
  }

  bool run(int& repairs) {
    stack_.clear();
    stack_.push_back(GSym{SymKind::Terminal, g_.eof});
    stack_.push_back(GSym{SymKind::Nonterminal, g_.goal});
    i_ = begin_;
    subAt_ = SIZE_MAX;
    lastTok_ = -1;
    resetSemantic();
    while (!stack_.empty()) {
      const GSym top = stack_.back();
      if (top.kind == SymKind::Action) {
        stack_.pop_back();
        act(g_.actions[static_cast<std::size_t>(top.id)]);
        continue;
      }
      const Token* t = cur();
      if (top.kind == SymKind::Terminal) {
        if (matches(top.id, t)) {
          stack_.pop_back();
          matched(top.id, t);
          if (top.id == g_.eof) break;
          ++i_;
          continue;
        }
      } else {
        const int p = lookup(top.id, t);
        if (p >= 0) {
          expand(p);
          continue;
        }
      }
      if (++repairs > kMaxRepairsPerStatement || !repair()) return false;
    }
    return true;
  }

  void resetSemantic() {
    pendField_ = -1;
    pendRange_ = false;
    listField_ = -1;
    item_ = VarItem{};
    itemFirst_ = -1;
    itemHasFirst_ = false;
    descPending_ = false;
  }

  bool matches(int termId, const Token* t) const noexcept {
    if (!t) return termId == g_.eof;
    return termId == t->cls || (t->kw >= 0 && termId == kwTerm(t->kw));
  }

  int lookup(int nt, const Token* t) const noexcept {
    if (!t) return g_.cell(nt, g_.eof);
    if (t->kw >= 0) {
      const int p = g_.cell(nt, kwTerm(t->kw));
      if (p >= 0) return p;
    }
    return g_.cell(nt, t->cls);
  }

  void expand(int p) {
    stack_.pop_back();
    const auto& rhs = g_.prods[static_cast<std::size_t>(p)].rhs;
    for (auto it = rhs.rbegin(); it != rhs.rend(); ++it) stack_.push_back(*it);
  }

  // ---------------------------------------------------------------- repair

  // The terminals a token can stand for: its keyword first, then its class.
  int termsOf(const Token* t, int out[2]) const noexcept {
    if (!t) {
      out[0] = g_.eof;
      return 1;
    }
    int n = 0;
    if (t->kw >= 0) out[n++] = kwTerm(t->kw);
    if (t->cls > 0) out[n++] = t->cls;
    return n;
  }

  struct Plan {
    int cost = kCostInfinite;
    long depth = -1;  // stack index of the symbol that yields the token
    int term = 0;
  };

  // The cheapest insertion before a token that can stand for `terms`, over the current stack.
  Plan plan(const std::vector<GSym>& stack, const int* terms, int nterms) const {
    Plan best;
    long acc = 0;
    for (long k = static_cast<long>(stack.size()) - 1; k >= 0 && acc < best.cost; --k) {
      const GSym& y = stack[static_cast<std::size_t>(k)];
      if (y.kind == SymKind::Action) continue;
      if (y.kind == SymKind::Terminal) {
        for (int j = 0; j < nterms; ++j)
          if (y.id == terms[j] && acc < best.cost) best = Plan{static_cast<int>(acc), k, y.id};
        if (best.depth == k) break;
      } else {
        for (int j = 0; j < nterms; ++j) {
          const long c = acc + g_.ecost(y.id, terms[j]);
          if (c < best.cost) best = Plan{static_cast<int>(c), k, terms[j]};
        }
      }
      acc += g_.symCost(y);
      if (acc > kCostInfinite) acc = kCostInfinite;
    }
    return best;
  }

  std::string expectedText() const {
    for (auto it = stack_.rbegin(); it != stack_.rend(); ++it) {
      if (it->kind == SymKind::Action) continue;
      if (it->kind == SymKind::Terminal) return g_.termName(it->id);
      // "A, B or C"; past twelve, "A, B, ... L or 9 more".
      std::vector<std::string> names;
      int more = 0;
      for (int t = 1; t < g_.nterms; ++t) {
        if (g_.cell(it->id, t) < 0) continue;
        if (names.size() < 12) names.emplace_back(g_.termName(t));
        else ++more;
      }
      if (more > 0) names.push_back(std::to_string(more) + " more");
      std::string s;
      for (std::size_t k = 0; k < names.size(); ++k)
        s += (k == 0 ? "" : k + 1 == names.size() ? " or " : ", ") + names[k];
      return s;
    }
    return "nothing";
  }

  // A candidate repair: delete `del` tokens, read the next word as keyword
  // `kw` (or not, -1), then insert what the cheapest plan asks for.
  struct Candidate {
    int cost = kCostInfinite;
    std::size_t del = 0;
    int kw = -1;
    bool checked = false;  // the tokens behind it parse
    int edits = 0;         // of a misspelled keyword: letters changed to reach it
  };
  // The edits of a repair without a misspelled keyword: at the same cost, a
  // keyword that the word is a misspelling of is preferred.
  static constexpr int kNoSpelling = 1000;

  // Tokens checked behind a repair before it is preferred: a repair that
  // only moves the error one token on is no repair.
  static constexpr int kCheckTokens = 3;

  // Whether, after the candidate, the next kCheckTokens tokens (or the rest
  // of the statement) parse, on a copy of the stack without semantics.
  bool check(std::size_t at, int kw) {
    std::vector<GSym> st = stack_;
    const Token* first = tokenAt(at);
    Token subst;
    if (kw >= 0 && first) {
      subst = *first;
      subst.cls = -1;
      subst.kw = kw;
      first = &subst;
    }
    int terms[2];
    const int nt = termsOf(first, terms);
    if (!walk(st, terms, nt, nullptr)) return false;
    std::size_t k = at;
    int matchedCount = 0;
    for (int steps = 0; steps < kMaxInsertSteps && matchedCount < kCheckTokens; ++steps) {
      if (st.empty()) return true;
      const GSym top = st.back();
      const Token* t = k == at ? first : tokenAt(k);
      if (top.kind == SymKind::Action) {
        st.pop_back();
        // Data set options are skipped unread, as the action does.
        if (g_.actions[static_cast<std::size_t>(top.id)].routine == 30) {
          int depth = 0;
          while (const Token* x = tokenAt(k)) {
            if (x->cls == term::ENDJB || (x->cls == term::RPAREN && depth == 0)) break;
            if (x->cls == term::LPAREN) ++depth;
            if (x->cls == term::RPAREN) --depth;
            ++k;
          }
        }
        continue;
      }
      if (top.kind == SymKind::Terminal) {
        if (!matches(top.id, t)) return false;
        if (top.id == g_.eof) return true;
        st.pop_back();
        ++k;
        ++matchedCount;
        continue;
      }
      const int p = lookup(top.id, t);
      if (p < 0) return false;
      st.pop_back();
      const auto& rhs = g_.prods[static_cast<std::size_t>(p)].rhs;
      for (auto it = rhs.rbegin(); it != rhs.rend(); ++it) st.push_back(*it);
    }
    return true;
  }

  bool repair() {
    const std::size_t start = i_;
    const Token* bad = cur();
    const SourcePos at = posOf(bad);
    const std::string found = bad ? tokenShow(*bad) : std::string("the end of the text");
    const std::string expected = expectedText();

    // Least cost first among the repairs behind which the statement goes
    // on; the cheapest of all when none does.
    Candidate best;
    // Between keywords that repair at the same cost, the closest spelling
    // wins: RMSEE is RMSE (one letter), not MSE (two).
    auto consider = [&](long cost, std::size_t d, int kw, int edits) {
      if (cost > kMaxRepairCost) return;
      const bool ok = check(start + d, kw);
      if ((ok && !best.checked) ||
          (ok == best.checked && (cost < best.cost || (cost == best.cost && edits < best.edits))))
        best = Candidate{static_cast<int>(cost), d, kw, ok, edits};
    };
    long del = 0;
    for (std::size_t d = 0;; ++d) {
      const Token* t = tokenAt(start + d);
      if (t && t->cls == term::NAMEX) {
        // A misspelled keyword: one deletion and one insertion.
        const std::string w = upper(t->text);
        const int limit = w.size() <= 4 ? 1 : 2;
        const auto names = keywordNames();
        for (int k = 0; k < static_cast<int>(names.size()); ++k) {
          const int edits = k == t->kw ? limit + 1 : editDistance(w, names[static_cast<std::size_t>(k)], limit);
          if (edits > limit) continue;
          const int term = kwTerm(k);
          const Plan p = plan(stack_, &term, 1);
          consider(del + deleteCost(t->cls, t->kw >= 0) + g_.insCost(term) + p.cost, d, k, edits);
        }
      }
      int terms[2];
      const int nt = termsOf(t, terms);
      const Plan p = plan(stack_, terms, nt);
      consider(del + p.cost, d, -1, kNoSpelling);
      if (!t) break;
      del += deleteCost(t->cls, t->kw >= 0);
      if (del > kMaxRepairCost) break;
    }
    if (best.cost > kMaxRepairCost) {
      error(kMsgSyntax, at, {found, expected});
      return false;
    }

    std::string deleted;
    for (std::size_t k = 0; k < best.del; ++k) {
      if (!deleted.empty()) deleted += ' ';
      deleted += tokenShow(*tokenAt(start + k));
    }
    i_ = start + best.del;
    if (best.kw >= 0) {
      sub_ = *tokenAt(i_);
      sub_.cls = -1;  // from here on the word is the keyword and nothing else
      sub_.kw = best.kw;
      subAt_ = i_;
    }
    std::string inserted;
    int terms[2];
    const int nt = termsOf(cur(), terms);
    if (!walk(stack_, terms, nt, &inserted)) {
      error(kMsgSyntax, at, {found, expected});
      return false;
    }
    if (best.kw >= 0 && best.del == 0 && inserted.empty()) {
      error(kMsgMisspelled, at, {found, std::string(keywordName(best.kw))});
      return true;
    }
    error(kMsgSyntax, at, {found, expected});
    std::string how;
    if (!deleted.empty()) how = "deleting " + deleted;
    if (best.kw >= 0)
      how += std::string(how.empty() ? "" : ", ") + "reading " + tokenShow(*cur()) + " as " +
             std::string(keywordName(best.kw));
    if (!inserted.empty()) how += std::string(how.empty() ? "" : ", ") + "inserting " + inserted;
    stmtMsg(host_, nullptr, kMsgRepaired, at, {how});
    return true;
  }

  // Inserts the cheapest symbols on `st` in front of a token that can stand
  // for `terms`, until a terminal that it matches is on top. With
  // `inserted` (the real stack) the actions run and the inserted terminals
  // are listed; without, it only rewrites the stack.
  bool walk(std::vector<GSym>& st, const int* terms, int nt, std::string* inserted) {
    for (int steps = 0; steps < kMaxInsertSteps; ++steps) {
      if (st.empty()) return false;
      const GSym top = st.back();
      if (top.kind == SymKind::Action) {
        st.pop_back();
        if (inserted) act(g_.actions[static_cast<std::size_t>(top.id)]);
        continue;
      }
      const Plan p = plan(st, terms, nt);
      if (p.depth < 0 || p.cost >= kCostInfinite) return false;
      const bool here = p.depth == static_cast<long>(st.size()) - 1;
      if (top.kind == SymKind::Terminal) {
        if (here) return true;
        st.pop_back();
        if (inserted) {
          if (!inserted->empty()) *inserted += ' ';
          *inserted += g_.termName(top.id);
          matched(top.id, nullptr);
        }
        continue;
      }
      const int prod = here ? g_.eprod(top.id, p.term) : g_.Sprod[static_cast<std::size_t>(top.id)];
      if (prod < 0) return false;
      st.pop_back();
      const auto& rhs = g_.prods[static_cast<std::size_t>(prod)].rhs;
      for (auto it = rhs.rbegin(); it != rhs.rend(); ++it) st.push_back(*it);
    }
    return false;
  }

  // ---------------------------------------------------------------- semantics

  void matched(int termId, const Token* t) {
    lastTok_ = t ? static_cast<long>(i_) : -1;
    if (pendField_ < 0) return;
    switch (termId) {
      case term::INT: case term::NBR: case term::DATE: case term::TIME: case term::DATETIME:
      case term::MISSING: case term::NAMEX: case term::FMT:
        break;
      default:
        return;
    }
    const int field = pendField_;
    const int kindOf = pendKind_;
    const bool range = pendRange_;
    pendField_ = -1;
    pendRange_ = false;
    if (!t || t->bad) return;  // inserted by a repair, or already reported
    if (kindOf == 1) {
      const double v = t->value;
      if (range && !wzmis(v)) {
        const std::string opt = fieldOption(kind(), field);
        if (pendHasHigh_ && (v < pendLow_ || v > pendHigh_)) {
          error(kMsgOutOfRange, t->pos, {t->text, opt, numberText(pendLow_), numberText(pendHigh_)});
          return;
        }
        if (!pendHasHigh_ && v < pendLow_) {
          error(kMsgTooSmall, t->pos, {t->text, opt, numberText(pendLow_)});
          return;
        }
      }
      put(field, t->pos, StMode::Number).v = v;
    } else if (kindOf == 2) {
      put(field, t->pos, StMode::Text).v = t->text;
    } else {
      put(field, t->pos, StMode::Format).v = t->text;
    }
  }

  // The field to write, after the warning for a repeated option.
  STLIST& put(int field, const SourcePos& pos, StMode mode) {
    STMT& r = rec();
    if (field < 0 || field >= r.nfld) {  // a table error; never on user input
      sink_ = STLIST{};
      return sink_;
    }
    bool repeated = r.fld[static_cast<std::size_t>(field)].type == 1;
    for (const auto& x : kExclusive) {
      if (x.kind != kind() || (x.a != field && x.b != field && x.c != field)) continue;
      for (int o : {x.a, x.b, x.c}) {
        if (o < 0 || o == field) continue;
        STLIST& other = r.fld[static_cast<std::size_t>(o)];
        if (other.type == 1) repeated = true;
        other = STLIST{};
      }
    }
    if (repeated) stmtMsg(host_, src_, kMsgRepeated, pos, {fieldOption(kind(), field)});
    STLIST& f = r.fld[static_cast<std::size_t>(field)];
    f = STLIST{};
    f.type = 1;
    f.mode = mode;
    f.pos = pos;
    return f;
  }

  std::string sliceText(long first, long lastIdx) const {
    if (first < 0 || lastIdx < first) return {};
    const Token* a = tokenAt(static_cast<std::size_t>(first));
    const Token* b = tokenAt(static_cast<std::size_t>(lastIdx));
    if (!a || !b) return {};
    const std::size_t from = a->offset, to = b->offset + b->length;
    return src_.text.substr(from, to - from);
  }

  static int arg(const GAction& a, std::size_t k, int dflt = 0) {
    return k < a.args.size() ? a.args[k] : dflt;
  }

  void act(const GAction& a) {
    const SourcePos here = last() ? last()->pos : posOf(cur());
    switch (a.routine) {
      case 1: {  // a new record for this statement
        STMT r;
        r.name = stmtName_;
        r.pos = prog_.tokens[begin_].pos;
        if (stmtName_ == "QVT" && !out_.head.empty()) {
          out_.head[0] = r;
          rec_ = 0;
        } else {
          out_.head.push_back(std::move(r));
          rec_ = out_.head.size() - 1;
        }
        break;
      }
      case 2:
        rec_ = 0;
        break;
      case 3:
        rec().nfld = arg(a, 0) + 1;
        rec().fld.resize(static_cast<std::size_t>(rec().nfld));
        break;
      case 4:
        break;
      case 5:
        rec().setBit(arg(a, 0));
        break;
      case 6:
        pendField_ = arg(a, 0);
        pendKind_ = arg(a, 1, 1);
        break;
      case 8: {
        listField_ = arg(a, 0);
        STMT& r = rec();
        if (listField_ >= 0 && listField_ < r.nfld) {
          STLIST& f = r.fld[static_cast<std::size_t>(listField_)];
          f = STLIST{};
          f.type = 1;
          f.mode = StMode::VarList;
          f.v = VarList{};
          f.pos = here;
        }
        break;
      }
      case 9: {
        const Token* t = last();
        if (itemFirst_ < 0) itemFirst_ = lastTok_;
        const std::string name = t ? t->text : std::string();
        if (!itemHasFirst_) {
          itemHasFirst_ = true;
          item_.first = name;
          item_.pos = t ? t->pos : here;
        } else {
          item_.last = name;
        }
        break;
      }
      case 10: {
        item_.code = static_cast<VarItemCode>(arg(a, 0));
        const long first = itemFirst_ >= 0 ? itemFirst_ : lastTok_;
        item_.text = sliceText(first, lastTok_);
        if (item_.pos.line == 0) item_.pos = here;
        if (item_.code >= VarItemCode::AllNumeric) item_.first = item_.text;
        item_.descending = descPending_;
        if (VarList* l = list()) l->items.push_back(item_);
        item_ = VarItem{};
        itemFirst_ = -1;
        itemHasFirst_ = false;
        descPending_ = false;
        break;
      }
      case 11: {
        const VarList* l = list();
        if (l && !l->items.empty()) put(arg(a, 0), l->items.front().pos, StMode::Text).v = l->items.front().text;
        break;
      }
      case 12:
        pendField_ = arg(a, 0);
        pendKind_ = 3;
        break;
      case 15:
        ds_ = DataSetName{};
        break;
      case 16: {
        const Token* t = last();
        if (!t) break;
        dsPos_ = t->pos;
        ds_.text = t->text;
        if (t->cls == term::COMPOUND) {
          const auto dot = t->text.find('.');
          ds_.lib = t->text.substr(0, dot);
          ds_.member = t->text.substr(dot + 1);
        } else if (t->cls == term::QS) {
          ds_.quoted = true;
          ds_.member = t->text;
        } else if (t->cls == term::FMT) {
          // A member name written with a trailing dot (sales.) scans as a format.
          std::string m = t->text;
          while (!m.empty() && (m.back() == '.' || std::isdigit(static_cast<unsigned char>(m.back())))) {
            if (m.back() == '.') {
              m.pop_back();
              break;
            }
            m.pop_back();
          }
          ds_.member = m;
          ds_.text = m;
        } else {
          ds_.member = t->text;
        }
        break;
      }
      case 17:
        if (!ds_.text.empty()) put(arg(a, 0), dsPos_, StMode::DataSet).v = std::make_shared<const DataSetName>(ds_);
        break;
      case 18: {
        STMT& r = rec();
        const int f = arg(a, 0);
        if (f >= 0 && f < r.nfld && !r.fld[static_cast<std::size_t>(f)].given()) {
          STLIST& x = r.fld[static_cast<std::size_t>(f)];
          x.type = 2;
          x.mode = StMode::DataSet;
          DataSetName d;
          d.byDefault = true;
          x.v = std::make_shared<const DataSetName>(std::move(d));
        }
        break;
      }
      case 20:
        pendRange_ = true;
        pendLow_ = arg(a, 0);
        pendHasHigh_ = a.args.size() > 1;
        pendHigh_ = arg(a, 1);
        break;
      case 29:
        if (arg(a, 0) == 2) descPending_ = true;
        if (arg(a, 0) == 3)
          if (VarList* l = list()) l->notsorted = true;
        break;
      case 30: {
        // Data set options: everything up to the matching ')' is passed on unread.
        const std::size_t from = i_;
        int depth = 0;
        while (const Token* t = cur()) {
          if (t->cls == term::ENDJB) break;
          if (t->cls == term::RPAREN && depth == 0) break;
          if (t->cls == term::LPAREN) ++depth;
          if (t->cls == term::RPAREN) --depth;
          ++i_;
        }
        if (i_ > from) ds_.options = sliceText(static_cast<long>(from), static_cast<long>(i_) - 1);
        break;
      }
      case 33:
        put(arg(a, 0), here, StMode::Number).v = static_cast<double>(arg(a, 1));
        break;
      case 37:
        parseInterval(arg(a, 0));
        break;
      case 38:
        put(arg(a, 0), here, StMode::Character).v = static_cast<char>(arg(a, 1));
        break;
      default:
        break;
    }
  }

  VarList* list() {
    STMT& r = rec();
    if (listField_ < 0 || listField_ >= r.nfld) return nullptr;
    return std::get_if<VarList>(&r.fld[static_cast<std::size_t>(listField_)].v);
  }

  void parseInterval(int field) {
    STMT& r = rec();
    if (field < 0 || field >= r.nfld) return;
    STLIST& f = r.fld[static_cast<std::size_t>(field)];
    if (f.type != 1 || f.mode != StMode::Text) return;
    const std::string& text = f.text();
    INTERVAL intv{};
    // A name that isn't built in may be a calendar of the host's INTERVALDS
    // option; looking it up loads the calendar, so the run finds it ready.
    const int rc = zintstr(text.data(), static_cast<int>(text.size()), &intv, zcintcMgr(host_));
    if (rc != 0) {
      error(kMsgBadInterval, f.pos, {text, static_cast<long long>(rc)});
      return;
    }
    f.interval = std::make_shared<const INTERVAL>(intv);
  }
};

// The trace flags that the host option DEBUG asks for.
void traceFlags(const Host& host, PROCSTR& out) {
  const std::optional<std::string> debug = hostOptionGet(host, "DEBUG");
  if (!debug || debug->find_first_not_of(' ') == std::string::npos) return;
  const std::string u = upper(*debug);
  out.syndebug = u.find("SYN") != std::string::npos ? 1 : 0;
  out.semdebug = u.find("SEM") != std::string::npos ? 1 : 0;
}

}  // namespace

int xsparse(const Program& prog, const Step& step, Host& host, PROCSTR& out) {
  out = PROCSTR{};
  traceFlags(host, out);
  // Lexical errors inside the step make it unusable as well.
  for (std::uint32_t at : prog.errorAt)
    if (at >= step.beginOffset && at < std::max(step.endOffset, step.beginOffset + 1)) ++out.nerrors;
  if (prog.src) {
    Parser p(prog, host, out);
    p.step(step);
  }
  if (out.nerrors > 0) out.error = kStatementsUnusable;
  return out.error;
}

int xsparseText(std::string_view text, const SourcePos& origin, Host& host, PROCSTR& out) {
  Program prog;
  scanProgram(text, origin, host, prog);
  int splitErrors = 0;
  const auto steps = splitSteps(prog, host, &splitErrors);
  if (steps.empty()) {
    out = PROCSTR{};
    out.nerrors = prog.nerrors + splitErrors;
    out.error = kStatementsUnusable;
    return out.error;
  }
  xsparse(prog, steps.front(), host, out);
  // Statements before the first step were reported by the split.
  if (splitErrors > 0) {
    out.nerrors += splitErrors;
    out.error = kStatementsUnusable;
  }
  return out.error;
}

}  // namespace qvt
