#include "statements/varlist.hpp"

#include <cctype>
#include <string>

#include "statements/messages.hpp"

namespace qvt {
namespace {

bool sameName(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t k = 0; k < a.size(); ++k)
    if (std::toupper(static_cast<unsigned char>(a[k])) != std::toupper(static_cast<unsigned char>(b[k]))) return false;
  return true;
}

bool startsWith(std::string_view name, std::string_view prefix) {
  return name.size() >= prefix.size() && sameName(name.substr(0, prefix.size()), prefix);
}

// Prefix and trailing digits of a name; false when it doesn't end in a digit.
bool splitNumbered(std::string_view name, std::string_view& prefix, std::string_view& digits) {
  std::size_t k = name.size();
  while (k > 0 && std::isdigit(static_cast<unsigned char>(name[k - 1]))) --k;
  if (k == name.size() || k == 0) return false;
  prefix = name.substr(0, k);
  digits = name.substr(k);
  return true;
}

class Resolver {
 public:
  Resolver(std::span<const VarInfo> vars, VarNeed need, Host& host, std::vector<int>& out)
      : vars_(vars), need_(need), host_(host), out_(out) {}

  int errors = 0;

  void item(const VarItem& it) {
    switch (it.code) {
      case VarItemCode::Name: name(it, it.first); break;
      case VarItemCode::Numbered: numbered(it); break;
      case VarItemCode::Positional: positional(it, 0); break;
      case VarItemCode::NumericRange: positional(it, 1); break;
      case VarItemCode::CharRange: positional(it, 2); break;
      case VarItemCode::Prefix: prefix(it); break;
      case VarItemCode::AllNumeric: every(it, 1); break;
      case VarItemCode::AllChar: every(it, 2); break;
      case VarItemCode::All: every(it, 0); break;
    }
  }

 private:
  std::span<const VarInfo> vars_;
  VarNeed need_;
  Host& host_;
  std::vector<int>& out_;

  void fail(int number, const VarItem& it, std::initializer_list<MsgArg> extra) {
    ++errors;
    stmtMsg(host_, nullptr, number, it.pos, extra);
  }

  int find(std::string_view n) const {
    for (std::size_t k = 0; k < vars_.size(); ++k)
      if (sameName(vars_[k].name, n)) return static_cast<int>(k);
    return -1;
  }

  // Whether a variable passes the type filter: 1 numeric only, 2 character
  // only, 0 anything; and always what the list needs.
  bool keeps(int k, int type) const {
    const VarType t = vars_[static_cast<std::size_t>(k)].type;
    if (type == 1 && t != VarType::Numeric) return false;
    if (type == 2 && t != VarType::Character) return false;
    return need_ == VarNeed::Any || t == VarType::Numeric;
  }

  void add(int k) { out_.push_back(k + 1); }

  void name(const VarItem& it, std::string_view n) {
    const int k = find(n);
    if (k < 0) return fail(kMsgVarNotFound, it, {std::string(n)});
    if (need_ == VarNeed::Numeric && vars_[static_cast<std::size_t>(k)].type != VarType::Numeric)
      return fail(kMsgWrongType, it, {vars_[static_cast<std::size_t>(k)].name});
    add(k);
  }

  void numbered(const VarItem& it) {
    std::string_view p1, d1, p2, d2;
    if (!splitNumbered(it.first, p1, d1) || !splitNumbered(it.last, p2, d2) || !sameName(p1, p2))
      return fail(kMsgNotNumbered, it, {it.first, it.last});
    if (d1.size() > 9 || d2.size() > 9) return fail(kMsgNotNumbered, it, {it.first, it.last});
    const long n1 = std::stol(std::string(d1)), n2 = std::stol(std::string(d2));
    if (n1 > n2) return fail(kMsgEmptyRange, it, {it.text, it.first, it.last});
    // x01-x10 counts with two digits, x1-x10 without padding.
    const std::size_t width = d1.size() > 1 && d1[0] == '0' ? d1.size() : 0;
    for (long n = n1; n <= n2; ++n) {
      std::string digits = std::to_string(n);
      if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
      name(it, std::string(p1) + digits);
    }
  }

  void positional(const VarItem& it, int type) {
    const int a = find(it.first), b = find(it.last);
    if (a < 0) fail(kMsgVarNotFound, it, {it.first});
    if (b < 0) fail(kMsgVarNotFound, it, {it.last});
    if (a < 0 || b < 0) return;
    if (a > b) return fail(kMsgEmptyRange, it, {it.text, it.first, it.last});
    const std::size_t before = out_.size();
    for (int k = a; k <= b; ++k)
      if (keeps(k, type)) add(k);
    if (out_.size() == before) stmtMsg(host_, nullptr, kMsgNoneOfType, it.pos, {it.text});
  }

  void prefix(const VarItem& it) {
    bool any = false;
    const std::size_t before = out_.size();
    for (std::size_t k = 0; k < vars_.size(); ++k) {
      if (!startsWith(vars_[k].name, it.first)) continue;
      any = true;
      if (keeps(static_cast<int>(k), 0)) add(static_cast<int>(k));
    }
    if (!any) return fail(kMsgNoPrefix, it, {it.first});
    if (out_.size() == before) stmtMsg(host_, nullptr, kMsgNoneOfType, it.pos, {it.text});
  }

  void every(const VarItem& it, int type) {
    const std::size_t before = out_.size();
    for (std::size_t k = 0; k < vars_.size(); ++k)
      if (keeps(static_cast<int>(k), type)) add(static_cast<int>(k));
    if (out_.size() == before) stmtMsg(host_, nullptr, kMsgNoneOfType, it.pos, {it.text});
  }
};

}  // namespace

int resolveVarList(const VarList& list, std::span<const VarInfo> vars, VarNeed need, Host& host,
                   std::vector<int>& out) {
  out.clear();
  Resolver r(vars, need, host, out);
  for (const auto& it : list.items) r.item(it);
  return r.errors;
}

}  // namespace qvt
