// The grammar of the statement language as LL(1) tables, with the costs of
// inserting and deleting symbols that drive the repair of syntax errors.
//
// The grammar is written as text in grammar.cpp (one rule per non-terminal,
// semantic actions as @routine(args) in the right sides) and turned into
// tables once: FIRST and FOLLOW sets, the parse table, and for the repair
// the cheapest terminal string of each non-terminal (S) and the cheapest
// prefix by which a non-terminal reaches a given terminal (E), as in the
// insert-delete repair of Fischer, Milton and Quiring (1980).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qvt {

enum class SymKind : unsigned char { Terminal, Nonterminal, Action };

struct GSym {
  SymKind kind;
  int id;
};

struct GAction {
  int routine;
  std::vector<int> args;
};

struct GProd {
  int lhs;
  std::vector<GSym> rhs;
};

inline constexpr int kCostInfinite = 1 << 20;
// Largest cost of one repair; a dearer one gives the statement up.
inline constexpr int kMaxRepairCost = 127;

struct Grammar {
  int nterms = 0;  // terminal numbers run from 1 to nterms - 1; the last is the end of the input
  int eof = 0;
  int goal = 0;    // the non-terminal of one statement and its ';'
  std::vector<std::string> ntName;
  std::vector<GProd> prods;
  std::vector<GAction> actions;
  std::vector<int> table;   // [nt * nterms + t]: production, or -1
  std::vector<int> S;       // per non-terminal: cost of its cheapest terminal string
  std::vector<int> Sprod;   // the production that yields it
  std::vector<int> E;       // [nt * nterms + t]: cheapest insertion before t within nt
  std::vector<int> Eprod;   // the production that yields it
  std::vector<std::string> conflicts;  // LL(1) conflicts found while building (must stay empty)

  int cell(int nt, int t) const noexcept {
    return t > 0 && t < nterms ? table[static_cast<std::size_t>(nt * nterms + t)] : -1;
  }
  int ecost(int nt, int t) const noexcept {
    return t > 0 && t < nterms ? E[static_cast<std::size_t>(nt * nterms + t)] : kCostInfinite;
  }
  int eprod(int nt, int t) const noexcept { return Eprod[static_cast<std::size_t>(nt * nterms + t)]; }
  // Cost of inserting a terminal.
  int insCost(int t) const noexcept;
  // Cost of a symbol's cheapest string (0 for an action).
  int symCost(const GSym& s) const noexcept;
  // A terminal as shown in a message: a keyword, a quoted punctuation
  // mark, or a word for a token class.
  std::string termName(int t) const;
  int nonterminal(std::string_view name) const noexcept;  // -1 when unknown
};

// Cost of deleting a token of a terminal class (keywords count as
// "other terminals").
int deleteCost(int cls, bool keyword) noexcept;

// The grammar of the language, built on first use and never changed.
const Grammar& stmtGrammar();

// The grammar's text, for the tests that read it.
std::string stmtGrammarText();

}  // namespace qvt
