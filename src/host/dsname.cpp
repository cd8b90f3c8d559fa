#include "host/dsname.hpp"

namespace qvt {
namespace {
bool isAlpha(char c) noexcept { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }
bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
char upper(char c) noexcept { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }
}  // namespace

bool isPlainName(std::string_view s, std::size_t maxLen) noexcept {
  if (s.empty() || s.size() > maxLen || !isAlpha(s[0])) return false;
  for (const char c : s)
    if (!isAlpha(c) && !isDigit(c)) return false;
  return true;
}

std::string upperAscii(std::string_view s) {
  std::string r(s);
  for (char& c : r) c = upper(c);
  return r;
}

bool equalsNoCase(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (upper(a[i]) != upper(b[i])) return false;
  return true;
}

int hostNameSplit(std::string_view text, DsName* out) {
  DsName r;
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  if (text.empty()) return -1;
  const char q = text.front();
  if (q == '\'' || q == '"') {
    if (text.size() < 3 || text.back() != q) return -1;
    const std::string_view body = text.substr(1, text.size() - 2);
    for (std::size_t i = 0; i < body.size(); ++i) {
      if (body[i] == q) {
        if (i + 1 >= body.size() || body[i + 1] != q) return -1;  // a lone quote inside
        ++i;
      }
      r.path += body[i];
    }
    r.quoted = true;
  } else {
    const auto dot = text.find('.');
    std::string_view lib, mem = text;
    if (dot != std::string_view::npos) {
      lib = text.substr(0, dot);
      mem = text.substr(dot + 1);
      if (!isPlainName(lib, kLibNameLen)) return -1;
    }
    if (!isPlainName(mem, 32)) return -1;
    r.lib = upperAscii(lib);
    r.member = std::string(mem);
  }
  if (out) *out = std::move(r);
  return 0;
}

}  // namespace qvt
