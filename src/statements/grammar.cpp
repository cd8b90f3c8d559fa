#include "statements/grammar.hpp"

#include <cctype>
#include <cstdio>
#include <map>
#include <stdexcept>

#include "statements/codes.hpp"
#include "statements/keywords.hpp"
#include "statements/token.hpp"

namespace qvt {
namespace {

// Notation of the grammar text:
//   name : alternative | alternative ;
// lower-case words are non-terminals, upper-case words keywords (main
// spelling), %CLASS a token class, '(' a punctuation mark, KEY= short for
// KEY '='. @r(a,b) is semantic action r with its arguments ('B' is the code
// of the character). An alternative may be empty or hold actions alone.
//
// Semantic actions (routine numbers):
//   1 start a record       2 go on in the procedure record   3 highest field
//   4 end the record       5 set a flag bit                  6 next value to field (kind 1 number, 2 text)
//   8 start a variable list in a field    9 take a variable name    10 finish a list element (code)
//   11 text of the first list element to a field             12 next format to a field
//   15 start a data set name   16 take the name   17 finish it in a field   18 default data set of a field
//   20 next number between low and high (one argument: at least low)
//   29 BY list (0 end, 1 start, 2 DESCENDING, 3 NOTSORTED)   30 data set options
//   33 store a number in a field   37 parse the interval text of a field   38 store a character in a field
constexpr std::string_view kFixedText = R"G(
input     : statement %ENDJB ;
statement : proc | fcst | idst | idmst | byst ;

proc      : QVT @1 @3(106) popts @18(1) @18(2) @4 ;
popts     : popt popts | ;
popt      : DATA= @15 ds @17(1) | OUT= @15 ds @17(2)
          | OUTEST= @15 ds @17(11) | OUTFOR= @15 ds @17(12)
          | OUTSUM= @15 ds @17(13) | OUTSTAT= @15 ds @17(14)
          | OUTTREND= @15 ds @17(16) | OUTSEASON= @15 ds @17(17)
          | OUTCOMPONENT= @15 ds @17(27) | OUTPROCINFO= @15 ds @17(28)
          | PRINT= printarg | PLOT= plotarg
          | SEASONALITY= @20(1,10000) @6(6,1) %INT
          | LEAD= @20(0) @6(7,1) %INT
          | BACK= @20(0,10000) @6(24,1) %INT
          | MAXERROR= @20(0) @6(25,1) %INT
          | STARTSUM= @20(1,10000) @6(8,1) %INT
          | NOOUTALL @5(1) | SORTNAMES @5(2) | PRINTDETAILS @5(18)
          | DEBUG @5(19) | DEBUGD @5(19) @5(20) | DEBUGX @5(19) @5(20) @5(21) ;
ds        : dsname dsopt ;
dsname    : %NAMEX @16 | %VLITERAL @16 | %COMPOUND @16 | %FMT @16 | %QS @16 ;
dsopt     : '(' @30 ')' | ;
printarg     : pitem | '(' pitem pitems ')' ;
pitems    : pitem pitems | ;
pitem     : NONE | ALL @5(10) | ESTIMATES @5(11) | FORECASTS @5(12) | STATISTICS @5(13)
          | SUMMARY @5(14) | TRENDS @5(15) | SEASONS @5(16) | PERFORMANCE @5(17) | STATES @5(22)
          | PERFORMANCESUMMARY @5(23) | PERFORMANCEOVERALL @5(24) | DESCSTATS @5(25)
          | INTERNAL @5(29) ;
plotarg     : litem | '(' litem litems ')' ;
litems    : litem litems | ;
litem     : NONE | ALL @5(30) | ERRORS @5(31) | ACF @5(32) | PACF @5(33) | IACF @5(34) | WN @5(35)
          | MODELS @5(40) | LEVELS @5(41) | TRENDS @5(42) | SEASONS @5(43) | FORECASTS @5(50)
          | MODELFORECASTS @5(51) | FORECASTSONLY @5(52) | PERIODOGRAM @5(53)
          | SPECTRUM @5(54) specopt | CORR @5(55) | BASIC @5(56) ;
specopt   : '(' sopt sopts ')' | ;
sopts     : sopt sopts | ;
sopt      : ALPHA= @20(0,1) @6(29,1) number | CENTER= center ;
center    : YES @33(30,1) | NO @33(30,0) ;
number    : %INT | %NBR | %DATE | %TIME | %DATETIME ;
value     : %NBR | %INT | %MISSING ;
optcomma  : ',' | ;

idst      : ID @2 @8(3) var @9 @10(1) INTERVAL= ivalue @37(4) idopts ;
ivalue    : @6(4,2) %NAMEX | @6(4,2) %FMT ;
idopts    : idopt idopts | ;
idopt     : ALIGN= align | ACCUMULATE= acc | SETMISSING= miss | ZEROMISS= zero
          | START= startv | END= endv
          | FORMAT= @12(46) %FMT | NOTSORTED @5(3) ;
startv    : @6(18,1) %DATE | @6(19,1) %TIME | @6(20,1) %DATETIME ;
endv      : @6(21,1) %DATE | @6(22,1) %TIME | @6(23,1) %DATETIME ;
align     : BEGIN @38(5,'B') | MIDDLE @38(5,'M') | END @38(5,'E') ;
miss      : @6(15,1) number ;
zero      : NONE @33(26,0) | LEFT @33(26,1) | RIGHT @33(26,2) | BOTH @33(26,3) ;

fcst      : FORECAST @1 @3(26) @8(1) fvars fslash @4 ;
fvars     : vitem @11(17) vitems | ;
vitems    : vitem vitems | ;
fslash    : '/' fopts | ;
fopts     : fopt fopts | ;
fopt      : MODEL= model | CRITERION= crit_3 | USE= use | TRANSFORM= trans_6
          | ALPHA= @20(0,1) @6(4,1) number | SEASONTEST= stest
          | HOLDOUT= @20(0,10000) @6(8,1) %INT | HOLDOUTPCT= @20(0,100) @6(19,1) number
          | MEDIAN @5(1) | REPLACEMISSING @5(2) | REPLACEBACK @5(3)
          | ACCUMULATE= acc | SETMISSING= miss | ZEROMISS= zero
          | INTERMITTENT= @20(1) @6(16,1) number | NBACKCAST= @20(1) @6(18,1) %INT ;
stest     : NONE @5(4) | '(' SIGLEVEL= @20(0,1) @6(20,1) number ')' ;

idmst     : IDM @2 idmopts ;
idmopts   : idmopt idmopts | ;
idmopt    : INTERVAL= '(' @5(103) comp_50 ')' | SIZE= '(' @5(113) comp_70 ')'
          | AVERAGE= '(' @5(123) comp_90 ')' | BASE= base ;
base      : AUTO @33(40,1) | @6(41,1) number ;

byst      : BY @2 @8(0) @29(1) byitem byitems @29(0) ;
byitems   : byitem byitems | ;
byitem    : DESCENDING @29(2) vitem | vitem | NOTSORTED @29(3) ;

vitem     : _NUMERIC_ @10(7) | _CHARACTER_ @10(8) | _CHAR_ @10(8) | _ALL_ @10(9) | var @9 vrest ;
var       : %NAMEX | %VLITERAL ;
vrest     : '-' vdash | ':' @10(6) | @10(1) ;
vdash     : var @9 @10(2) | '-' var @9 @10(3) | NUMERIC '-' var @9 @10(4)
          | CHARACTER '-' var @9 @10(5) | CHAR '-' var @9 @10(5) ;
)G";

std::string keywordAlternatives(std::span<const CodeName> codes, int field) {
  std::string s;
  for (const auto& c : codes) {
    if (!s.empty()) s += " | ";
    s += std::string(c.keyword) + " @33(" + std::to_string(field) + "," + std::to_string(c.code) + ")";
  }
  return s;
}

std::string codeRules() {
  std::string g;
  g += "model : " + keywordAlternatives(kModelCodes, 2) + " ;\n";
  g += "use : " + keywordAlternatives(kUseCodes, 5) + " ;\n";
  g += "acc : " + keywordAlternatives(kAccumulateCodes, 9) + " ;\n";
  // SETMISSING= takes a keyword (field 10) or a number (field 15).
  g += "miss : " + keywordAlternatives(kSetMissingCodes, 10) + " ;\n";
  for (int f : {3, 53, 73, 93}) g += "crit_" + std::to_string(f) + " : " + keywordAlternatives(kCriterionCodes, f) + " ;\n";
  for (int f : {6, 51, 71, 91}) {
    const std::string fs = std::to_string(f), ps = std::to_string(f + 1);
    g += "trans_" + fs + " : NONE @33(" + fs + ",0) | LOG @33(" + fs + ",1) | SQRT @33(" + fs + ",2) | LOGISTIC @33(" +
         fs + ",3) | BOXCOX @33(" + fs + ",4) '(' @20(-5,5) @6(" + ps + ",1) number ')' | AUTO @33(" + fs + ",10) ;\n";
  }
  // One copy of the component options for each IDM component, with its
  // base field B and base bit F.
  for (auto [b, f] : {std::pair{50, 100}, std::pair{70, 110}, std::pair{90, 120}}) {
    auto F = [&](int k) { return std::to_string(b + k); };
    auto bit = [&](int k) { return std::to_string(f + k); };
    const std::string bs = std::to_string(b);
    const std::string rest = "@20(-1,2)";
    g += "comp_" + bs + " : copt_" + bs + " copts_" + bs + " ;\n";
    g += "copts_" + bs + " : copt_" + bs + " copts_" + bs + " | ;\n";
    g += "meth_" + bs + " : " + keywordAlternatives(kMethodCodes, b) + " ;\n";
    g += "copt_" + bs + " : METHOD= meth_" + bs + " | TRANSFORM= trans_" + F(1) + " | CRITERION= crit_" + F(3) +
         " | LEVELPARM= " + rest + " @6(" + F(5) + ",1) value" +
         " | LEVELREST= '(' " + rest + " @6(" + F(6) + ",1) value optcomma " + rest + " @6(" + F(7) + ",1) value ')'" +
         " | TRENDPARM= " + rest + " @6(" + F(8) + ",1) value" +
         " | TRENDREST= '(' " + rest + " @6(" + F(9) + ",1) value optcomma " + rest + " @6(" + F(10) + ",1) value ')'" +
         " | DAMPPARM= " + rest + " @6(" + F(11) + ",1) value" +
         " | DAMPREST= '(' " + rest + " @6(" + F(12) + ",1) value optcomma " + rest + " @6(" + F(13) + ",1) value ')'" +
         // The interval between demands is at least one period.
         " | BOUNDS= '(' " + (b == 50 ? "@20(1) " : "") + "@6(" + F(15) + ",1) value optcomma @6(" + F(16) +
         ",1) value ')'" + " | MEDIAN @5(" + bit(0) + ") | NOSTABLE @5(" + bit(1) + ") | NOEST @5(" + bit(2) + ") ;\n";
  }
  return g;
}

struct ClassName {
  std::string_view name;
  int term;
  std::string_view shown;
};
constexpr ClassName kClasses[] = {
    {"ENDJB", term::ENDJB, "';'"},        {"NAMEX", term::NAMEX, "a name"},
    {"QS", term::QS, "a quoted string"},  {"INT", term::INT, "an integer"},
    {"NBR", term::NBR, "a number"},       {"COMPOUND", term::COMPOUND, "a two-level name"},
    {"FMT", term::FMT, "a format"},       {"DATE", term::DATE, "a date constant"},
    {"TIME", term::TIME, "a time constant"}, {"DATETIME", term::DATETIME, "a datetime constant"},
    {"MISSING", term::MISSING, "a missing value"}, {"VLITERAL", term::VLITERAL, "a name literal"},
    {"CATNAME", term::CATNAME, "a catalog name"}, {"DSTOKEN", term::DSTOKEN, "a data set"},
    {"OTHER", term::OTHER, "a mark"},
};
constexpr std::string_view kPunct = "(),-/:=";

class Builder {
 public:
  explicit Builder(Grammar& g) : g_(g) {}

  void parseText(std::string_view text) {
    // Two passes: names of non-terminals first, so that a rule may use a
    // non-terminal defined below it.
    std::vector<std::string> words = split(text);
    for (std::size_t i = 0; i + 1 < words.size(); ++i)
      if (words[i + 1] == ":" && isLower(words[i])) ntId(words[i]);
    std::size_t i = 0;
    while (i < words.size()) {
      const int lhs = ntId(words[i]);
      if (i + 1 >= words.size() || words[i + 1] != ":") fail("':' expected after " + words[i]);
      i += 2;
      std::vector<GSym> rhs;
      while (true) {
        if (i >= words.size()) fail("rule of " + g_.ntName[static_cast<std::size_t>(lhs)] + " not ended");
        const std::string& w = words[i++];
        if (w == "|" || w == ";") {
          g_.prods.push_back(GProd{lhs, std::move(rhs)});
          rhs.clear();
          if (w == ";") break;
          continue;
        }
        symbol(w, rhs);
      }
    }
    for (std::size_t k = 0; k < g_.ntName.size(); ++k)
      if (!defined(static_cast<int>(k))) fail("non-terminal without rule: " + g_.ntName[k]);
  }

 private:
  Grammar& g_;
  std::map<std::string, int, std::less<>> nts_;

  [[noreturn]] static void fail(const std::string& why) { throw std::logic_error("statement grammar: " + why); }

  static bool isLower(std::string_view w) { return !w.empty() && std::islower(static_cast<unsigned char>(w[0])); }

  static std::vector<std::string> split(std::string_view t) {
    std::vector<std::string> out;
    std::size_t i = 0;
    while (i < t.size()) {
      if (std::isspace(static_cast<unsigned char>(t[i]))) {
        ++i;
        continue;
      }
      std::size_t j = i;
      if (t[i] == '\'') {
        j = i + 3;  // a quoted punctuation mark: '('
      } else if (t[i] == '@') {
        while (j < t.size() && t[j] != ')' && !std::isspace(static_cast<unsigned char>(t[j]))) ++j;
        if (j < t.size() && t[j] == ')') ++j;
      } else {
        while (j < t.size() && !std::isspace(static_cast<unsigned char>(t[j]))) ++j;
      }
      out.emplace_back(t.substr(i, j - i));
      i = j;
    }
    return out;
  }

  int ntId(const std::string& name) {
    if (auto it = nts_.find(name); it != nts_.end()) return it->second;
    const int id = static_cast<int>(g_.ntName.size());
    g_.ntName.push_back(name);
    nts_.emplace(name, id);
    return id;
  }

  bool defined(int nt) const {
    for (const auto& p : g_.prods)
      if (p.lhs == nt) return true;
    return false;
  }

  void symbol(const std::string& w, std::vector<GSym>& rhs) {
    if (w[0] == '@') {
      GAction a{0, {}};
      std::size_t k = 1;
      while (k < w.size() && std::isdigit(static_cast<unsigned char>(w[k]))) a.routine = a.routine * 10 + (w[k++] - '0');
      if (k < w.size() && w[k] == '(') {
        ++k;
        while (k < w.size() && w[k] != ')') {
          if (w[k] == ',') {
            ++k;
            continue;
          }
          if (w[k] == '\'') {
            a.args.push_back(static_cast<unsigned char>(w[k + 1]));
            k += 3;
            continue;
          }
          std::size_t e = k;
          if (w[e] == '-') ++e;
          while (e < w.size() && std::isdigit(static_cast<unsigned char>(w[e]))) ++e;
          a.args.push_back(std::stoi(w.substr(k, e - k)));
          k = e;
        }
      }
      g_.actions.push_back(std::move(a));
      rhs.push_back(GSym{SymKind::Action, static_cast<int>(g_.actions.size()) - 1});
      return;
    }
    if (w[0] == '\'') {
      const auto p = kPunct.find(w[1]);
      if (p == std::string_view::npos) fail("unknown punctuation " + w);
      rhs.push_back(GSym{SymKind::Terminal, term::LPAREN + static_cast<int>(p)});
      return;
    }
    if (w[0] == '%') {
      for (const auto& c : kClasses)
        if (w.substr(1) == c.name) {
          rhs.push_back(GSym{SymKind::Terminal, c.term});
          return;
        }
      fail("unknown token class " + w);
    }
    if (isLower(w)) {
      rhs.push_back(GSym{SymKind::Nonterminal, ntId(w)});
      return;
    }
    std::string kw = w;
    const bool withEquals = kw.back() == '=';
    if (withEquals) kw.pop_back();
    const int k = keywordFind(kw);
    if (k < 0 || keywordName(k) != kw) fail("not a main keyword: " + kw);
    rhs.push_back(GSym{SymKind::Terminal, kwTerm(k)});
    if (withEquals) rhs.push_back(GSym{SymKind::Terminal, term::EQUALS});
  }
};

using Bits = std::vector<char>;

void analyse(Grammar& g) {
  const int nt = static_cast<int>(g.ntName.size());
  const int T = g.nterms;
  auto at = [T](int n, int t) { return static_cast<std::size_t>(n * T + t); };
  // Nullable and FIRST.
  std::vector<char> nullable(static_cast<std::size_t>(nt), 0);
  std::vector<Bits> first(static_cast<std::size_t>(nt), Bits(static_cast<std::size_t>(T), 0));
  auto firstOfSeq = [&](const std::vector<GSym>& rhs, std::size_t from, Bits& out) -> bool {
    for (std::size_t k = from; k < rhs.size(); ++k) {
      const GSym& s = rhs[k];
      if (s.kind == SymKind::Action) continue;
      if (s.kind == SymKind::Terminal) {
        out[static_cast<std::size_t>(s.id)] = 1;
        return false;
      }
      const Bits& f = first[static_cast<std::size_t>(s.id)];
      for (int t = 0; t < T; ++t)
        if (f[static_cast<std::size_t>(t)]) out[static_cast<std::size_t>(t)] = 1;
      if (!nullable[static_cast<std::size_t>(s.id)]) return false;
    }
    return true;  // the rest can be empty
  };
  for (bool changed = true; changed;) {
    changed = false;
    for (const auto& p : g.prods) {
      Bits f(static_cast<std::size_t>(T), 0);
      const bool canBeEmpty = firstOfSeq(p.rhs, 0, f);
      Bits& dst = first[static_cast<std::size_t>(p.lhs)];
      for (int t = 0; t < T; ++t)
        if (f[static_cast<std::size_t>(t)] && !dst[static_cast<std::size_t>(t)]) dst[static_cast<std::size_t>(t)] = 1, changed = true;
      if (canBeEmpty && !nullable[static_cast<std::size_t>(p.lhs)]) nullable[static_cast<std::size_t>(p.lhs)] = 1, changed = true;
    }
  }
  // FOLLOW.
  std::vector<Bits> follow(static_cast<std::size_t>(nt), Bits(static_cast<std::size_t>(T), 0));
  follow[static_cast<std::size_t>(g.goal)][static_cast<std::size_t>(g.eof)] = 1;
  for (bool changed = true; changed;) {
    changed = false;
    for (const auto& p : g.prods) {
      for (std::size_t k = 0; k < p.rhs.size(); ++k) {
        if (p.rhs[k].kind != SymKind::Nonterminal) continue;
        Bits f(static_cast<std::size_t>(T), 0);
        const bool restEmpty = firstOfSeq(p.rhs, k + 1, f);
        if (restEmpty) {
          const Bits& fl = follow[static_cast<std::size_t>(p.lhs)];
          for (int t = 0; t < T; ++t)
            if (fl[static_cast<std::size_t>(t)]) f[static_cast<std::size_t>(t)] = 1;
        }
        Bits& dst = follow[static_cast<std::size_t>(p.rhs[k].id)];
        for (int t = 0; t < T; ++t)
          if (f[static_cast<std::size_t>(t)] && !dst[static_cast<std::size_t>(t)]) dst[static_cast<std::size_t>(t)] = 1, changed = true;
      }
    }
  }
  // Parse table; a second production for one cell is a conflict.
  g.table.assign(static_cast<std::size_t>(nt * T), -1);
  for (std::size_t pi = 0; pi < g.prods.size(); ++pi) {
    const auto& p = g.prods[pi];
    Bits f(static_cast<std::size_t>(T), 0);
    if (firstOfSeq(p.rhs, 0, f)) {
      const Bits& fl = follow[static_cast<std::size_t>(p.lhs)];
      for (int t = 0; t < T; ++t)
        if (fl[static_cast<std::size_t>(t)]) f[static_cast<std::size_t>(t)] = 1;
    }
    for (int t = 1; t < T; ++t) {
      if (!f[static_cast<std::size_t>(t)]) continue;
      int& c = g.table[at(p.lhs, t)];
      if (c >= 0 && c != static_cast<int>(pi))
        g.conflicts.push_back(g.ntName[static_cast<std::size_t>(p.lhs)] + " on " + g.termName(t));
      else
        c = static_cast<int>(pi);
    }
  }
  // S: cheapest terminal string of each non-terminal.
  g.S.assign(static_cast<std::size_t>(nt), kCostInfinite);
  g.Sprod.assign(static_cast<std::size_t>(nt), -1);
  for (bool changed = true; changed;) {
    changed = false;
    for (std::size_t pi = 0; pi < g.prods.size(); ++pi) {
      const auto& p = g.prods[pi];
      long c = 0;
      for (const auto& s : p.rhs) c += g.symCost(s);
      if (c < g.S[static_cast<std::size_t>(p.lhs)]) {
        g.S[static_cast<std::size_t>(p.lhs)] = static_cast<int>(c);
        g.Sprod[static_cast<std::size_t>(p.lhs)] = static_cast<int>(pi);
        changed = true;
      }
    }
  }
  // E: cheapest insertion by which a non-terminal reaches terminal t.
  g.E.assign(static_cast<std::size_t>(nt * T), kCostInfinite);
  g.Eprod.assign(static_cast<std::size_t>(nt * T), -1);
  for (bool changed = true; changed;) {
    changed = false;
    for (std::size_t pi = 0; pi < g.prods.size(); ++pi) {
      const auto& p = g.prods[pi];
      long prefix = 0;
      for (const auto& s : p.rhs) {
        if (prefix >= kCostInfinite) break;
        if (s.kind == SymKind::Terminal) {
          int& e = g.E[at(p.lhs, s.id)];
          if (prefix < e) e = static_cast<int>(prefix), g.Eprod[at(p.lhs, s.id)] = static_cast<int>(pi), changed = true;
        } else if (s.kind == SymKind::Nonterminal) {
          for (int t = 1; t < T; ++t) {
            const long c = prefix + g.E[at(s.id, t)];
            int& e = g.E[at(p.lhs, t)];
            if (c < e) e = static_cast<int>(c), g.Eprod[at(p.lhs, t)] = static_cast<int>(pi), changed = true;
          }
        }
        prefix += g.symCost(s);
      }
    }
  }
}

}  // namespace

int deleteCost(int cls, bool keyword) noexcept {
  if (keyword) return 10;
  switch (cls) {
    case term::NAMEX: case term::QS: case term::INT: case term::NBR: case term::COMPOUND: case term::FMT:
    case term::DATE: case term::TIME: case term::DATETIME: case term::MISSING:
      return 50;
    case term::ENDJB:
      return kCostInfinite;  // a statement is repaired within itself
    default:
      return 10;
  }
}

int Grammar::insCost(int t) const noexcept {
  if (t == eof) return kMaxRepairCost;
  switch (t) {
    case term::NAMEX: return 1;
    case term::QS: return 2;
    case term::INT: return 2;
    case term::NBR: return 4;
    case term::COMPOUND: return 5;
    case term::FMT: return 3;
    case term::DATE: case term::TIME: case term::DATETIME: case term::MISSING: return 50;
    default: return 10;
  }
}

int Grammar::symCost(const GSym& s) const noexcept {
  switch (s.kind) {
    case SymKind::Action: return 0;
    case SymKind::Terminal: return insCost(s.id);
    case SymKind::Nonterminal: return S[static_cast<std::size_t>(s.id)];
  }
  return 0;
}

std::string Grammar::termName(int t) const {
  if (t == eof) return "the end of the text";
  if (t >= term::FIRSTKW) return std::string(keywordName(t - term::FIRSTKW));
  if (t >= term::LPAREN && t <= term::EQUALS) return std::string("'") + kPunct[static_cast<std::size_t>(t - term::LPAREN)] + "'";
  for (const auto& c : kClasses)
    if (c.term == t) return std::string(c.shown);
  return "symbol " + std::to_string(t);
}

int Grammar::nonterminal(std::string_view name) const noexcept {
  for (std::size_t k = 0; k < ntName.size(); ++k)
    if (ntName[k] == name) return static_cast<int>(k);
  return -1;
}

std::string stmtGrammarText() { return std::string(kFixedText) + codeRules(); }

const Grammar& stmtGrammar() {
  // Built once on first use and read-only afterwards; the initialisation of
  // a function-local static is thread-safe.
  static const Grammar g = [] {
    Grammar r;
    r.nterms = term::FIRSTKW + static_cast<int>(keywordNames().size()) + 1;
    r.eof = r.nterms - 1;
    Builder(r).parseText(stmtGrammarText());
    r.goal = r.nonterminal("input");
    analyse(r);
    return r;
  }();
  return g;
}

}  // namespace qvt
