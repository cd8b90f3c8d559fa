// Messages of the codes of the intermittent model and what passes through
// it from its settings and its components. Each message number comes
// in a pair: the even number without a name, the odd one with the variable
// as argument {1}. A message of the table is followed by a closing one that
// says what became of the series.
#include "intermittent/idmodel.hpp"

#include <new>

namespace qvt {
namespace {

constexpr int kGroup = 881;
constexpr int kClosing = 8184;
constexpr int kUnknown = 8180;
constexpr int kUnknownHint = 8182;

struct CodeMsg {
  int rc;
  int number;  // the even form
};

// Sorted by code, from the least negative.
constexpr CodeMsg kMessages[] = {
    {-1, 8100},  {-10, 8102}, {-11, 8104}, {-12, 8106}, {-13, 8158}, {-20, 8108}, {-30, 8110},
    {-31, 8112}, {-32, 8114}, {-33, 8116}, {-35, 8118}, {-36, 8120}, {-37, 8122}, {-38, 8124},
    {-40, 8126}, {-41, 8128}, {-42, 8130}, {-43, 8132}, {-45, 8134}, {-46, 8136}, {-47, 8138},
    {-48, 8140}, {-50, 8142}, {-51, 8144}, {-52, 8146}, {-53, 8148}, {-55, 8150}, {-56, 8152},
    {-57, 8154}, {-58, 8156}, {-60, 8170}, {-61, 8172},
};

// The even number, or the odd one with the name when a name is given.
void say(Host& host, int number, const u_sname* variable) {
  if (variable != nullptr && variable->len > 0)
    hostMsgLog(host, kGroup, number + 1, {variable->str()});
  else
    hostMsgLog(host, kGroup, number);
}

}  // namespace

int idmmsg(Host& host, const IDMODEL* idm, int rc, const u_sname* variable) noexcept {
  if (idm == nullptr) return -99;
  if (rc == 0 || rc == 1 || rc == 2) return 0;
  const CodeMsg* hit = nullptr;
  for (const CodeMsg& e : kMessages)
    if (e.rc == rc) hit = &e;
  try {
    say(host, hit ? hit->number : kUnknown, variable);
    say(host, hit ? kClosing : kUnknownHint, variable);
  } catch (const std::bad_alloc&) {
    // The log could not take the text; the result still tells the caller.
  }
  return hit ? 1 : 90;
}

}  // namespace qvt
