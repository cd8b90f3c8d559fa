#include "host/by_cursor.hpp"

#include <bit>
#include <charconv>
#include <cstring>

#include "host/host_msgs.hpp"
#include "run/missing.hpp"

namespace qvt {

namespace {
// Missing values in their sort order: ._ (0xFFFFFF...) lowest, then . (0xFFFFFE...),
// then .A (0xFFFFFD...) up to .Z (0xFFFFE4...): a larger upper part sorts first.
long long missRank(double x) noexcept {
  return -static_cast<long long>(std::bit_cast<std::uint64_t>(x) >> 40);
}

std::string valueText(const DsRow& row, std::size_t i, VarType t) {
  if (t == VarType::Character) return "'" + row.text[i] + "'";
  const double v = row.num[i];
  if (wzmis(v)) {
    const char c = missCode(v);
    return c == '.' || c == 0 ? std::string(".") : std::string(".") + c;
  }
  char buf[32];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  return std::string(buf, r.ptr);
}
}  // namespace

int byCompareNum(double a, double b) noexcept {
  const bool ma = wzmis(a) != 0, mb = wzmis(b) != 0;
  if (ma || mb) {
    if (!mb) return -1;
    if (!ma) return 1;
    const long long ra = missRank(a), rb = missRank(b);
    return ra < rb ? -1 : (ra > rb ? 1 : 0);
  }
  return a < b ? -1 : (a > b ? 1 : 0);
}

int byCompareText(std::string_view a, std::string_view b) noexcept {
  while (!a.empty() && a.back() == ' ') a.remove_suffix(1);
  while (!b.empty() && b.back() == ' ') b.remove_suffix(1);
  const int c = std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
  if (c != 0) return c < 0 ? -1 : 1;
  return a.size() < b.size() ? -1 : (a.size() > b.size() ? 1 : 0);
}

ByCursor::ByCursor(DsReader& reader, std::string display) : rd_(reader), display_(std::move(display)) {
  const std::size_t n = rd_.vars().size();
  cur_.resize(n);
  ahead_.resize(n);
  key_.resize(n);
}

int ByCursor::setBy(std::span<const ByVar> vars, bool notsorted, DsDiag& diag) {
  const auto n = static_cast<int>(rd_.vars().size());
  for (const ByVar& b : vars) {
    if (b.varno < 1 || b.varno > n) {
      diag = DsDiag{kMsgNoVariable, {static_cast<long long>(b.varno), display_}};
      return kHostBadArgument;
    }
  }
  by_.assign(vars.begin(), vars.end());
  notsorted_ = notsorted;
  return 0;
}

bool ByCursor::isByVar(std::size_t index) const noexcept {
  for (const ByVar& b : by_)
    if (static_cast<std::size_t>(b.varno - 1) == index) return true;
  return false;
}

int ByCursor::fetch(DsDiag& diag) {
  const int r = rd_.next(ahead_, diag);
  if (r < 0) return r;
  haveAhead_ = r == 1;
  if (haveAhead_) ++aheadObs_;
  return 0;
}

// Compares a and b on the BY variables in order, each in its direction;
// *first is the index in by_ of the first variable that differs.
int ByCursor::compareKeys(const DsRow& a, const DsRow& b, std::size_t* first) const {
  const auto& vars = rd_.vars();
  for (std::size_t k = 0; k < by_.size(); ++k) {
    const auto i = static_cast<std::size_t>(by_[k].varno - 1);
    const int c = vars[i].type == VarType::Character ? byCompareText(a.text[i], b.text[i])
                                                     : byCompareNum(a.num[i], b.num[i]);
    if (c != 0) {
      *first = k;
      return by_[k].descending ? -c : c;
    }
  }
  return 0;
}

bool ByCursor::sameGroup(const DsRow& row) const {
  std::size_t k = 0;
  return compareKeys(row, key_, &k) == 0;
}

int ByCursor::nextGroup(DsDiag& diag) {
  if (orderError_) {
    diag = orderDiag_;
    return kHostByOrder;
  }
  if (!started_) {
    started_ = true;
    if (const int r = fetch(diag); r < 0) return r;
  }
  if (by_.empty()) {
    // Without BY variables: one group of all records, even of none.
    if (groups_) {
      inGroup_ = false;
      return 0;
    }
    groups_ = true;
    inGroup_ = true;
    return 1;
  }
  while (inGroup_) {  // skip what the caller left unread of the group in hand
    const int r = nextRecord(diag);
    if (r < 0) return r;
    if (r == 0) break;
  }
  if (!haveAhead_) {
    keyValid_ = false;
    return 0;
  }
  keyValid_ = true;
  for (const ByVar& b : by_) {
    const auto i = static_cast<std::size_t>(b.varno - 1);
    key_.num[i] = ahead_.num[i];
    key_.text[i] = ahead_.text[i];
  }
  inGroup_ = true;
  return 1;
}

int ByCursor::nextRecord(DsDiag& diag) {
  if (orderError_) {
    diag = orderDiag_;
    return kHostByOrder;
  }
  if (!inGroup_ || !haveAhead_ || (!by_.empty() && !sameGroup(ahead_))) {
    inGroup_ = false;
    return 0;
  }
  std::swap(cur_, ahead_);
  curObs_ = aheadObs_;
  if (const int r = fetch(diag); r < 0) return r;
  if (haveAhead_ && !by_.empty() && !notsorted_) {
    std::size_t k = 0;
    if (compareKeys(ahead_, cur_, &k) < 0) {
      const auto i = static_cast<std::size_t>(by_[k].varno - 1);
      const VarInfo& v = rd_.vars()[i];
      // The record in hand is good; the failure comes with the next call,
      // which would have to move past it.
      orderDiag_ = DsDiag{kMsgByOrder,
                          {display_, std::string(by_[k].descending ? "descending" : "ascending"), v.name,
                           aheadObs_, valueText(ahead_, i, v.type), curObs_, valueText(cur_, i, v.type)}};
      orderError_ = true;
    }
  }
  return 1;
}

}  // namespace qvt
