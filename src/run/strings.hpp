// Names and labels as the engine keeps them: a length and a blank-padded,
// unterminated array of character units of the encoding in use (UTF-8 bytes).
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace qvt {

using tchar = char;

inline constexpr int kNameLen = 32;
inline constexpr int kLabelLen = 256;

// Moves flen characters from `from` and blank-pads `to` up to tlen. Copies at
// most tlen characters.
inline void vzmp(const tchar* from, long flen, tchar* to, long tlen) noexcept {
  const long n = std::max(0L, std::min(flen, tlen));
  std::copy(from, from + n, to);
  std::fill(to + n, to + std::max(n, tlen), ' ');
}

template <int N>
struct u_text {
  std::int16_t len = 0;
  tchar text[N];

  u_text() noexcept { std::fill(text, text + N, ' '); }
  explicit u_text(std::string_view s) noexcept { set(s); }

  void set(std::string_view s) noexcept {
    len = static_cast<std::int16_t>(std::min<std::size_t>(s.size(), N));
    vzmp(s.data(), len, text, N);
  }
  std::string_view view() const noexcept { return {text, static_cast<std::size_t>(len)}; }
  std::string str() const { return std::string(view()); }
  bool empty() const noexcept { return len == 0; }
};

using u_sname = u_text<kNameLen>;
using u_slabel = u_text<kLabelLen>;

}  // namespace qvt
