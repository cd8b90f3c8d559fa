#include "statements/token.hpp"

#include <vector>

#include "statements/keywords.hpp"
#include "statements/messages.hpp"

namespace qvt {

std::string_view SourceText::lineText(int line) const noexcept {
  const long k = static_cast<long>(line) - firstLine;
  if (k < 0 || k >= static_cast<long>(lineStart.size())) return {};
  const std::size_t b = lineStart[static_cast<std::size_t>(k)];
  std::size_t e = static_cast<std::size_t>(k) + 1 < lineStart.size() ? lineStart[static_cast<std::size_t>(k) + 1]
                                                                     : text.size();
  while (e > b && (text[e - 1] == '\n' || text[e - 1] == '\r')) --e;
  return std::string_view(text).substr(b, e - b);
}

std::string placeText(const SourcePos& pos) {
  std::string s;
  if (!pos.file.empty()) s = pos.file + ", ";
  s += "line " + std::to_string(pos.line) + ", column " + std::to_string(pos.col);
  return s;
}

std::string excerpt(const SourceText& src, const SourcePos& pos) {
  const std::string_view line = src.lineText(pos.line);
  std::string out;
  out.reserve(line.size() * 2 + 4);
  // Tabs stay tabs under the caret so that it lines up in a terminal.
  for (char c : line) out += (static_cast<unsigned char>(c) < 0x20 && c != '\t') ? ' ' : c;
  out += '\n';
  const int firstCol = pos.line == src.firstLine ? src.firstCol : 1;
  const int upto = pos.col - firstCol;
  for (int k = 0; k < upto; ++k)
    out += (static_cast<std::size_t>(k) < line.size() && line[static_cast<std::size_t>(k)] == '\t') ? '\t' : ' ';
  out += '^';
  return out;
}

std::string tokenShow(const Token& t) {
  if (t.cls == term::ENDJB) return "';'";
  if (t.cls == 0) return "the end of the statement";
  switch (t.cls) {
    case term::QS: return "'" + t.text + "'";
    case term::VLITERAL: return "'" + t.text + "'n";
    default: return t.text;
  }
}

void stmtMsg(Host& host, const SourceText* src, int number, const SourcePos& pos,
             std::initializer_list<MsgArg> extra) {
  std::vector<MsgArg> args;
  args.reserve(extra.size() + 2);
  args.emplace_back(placeText(pos));
  for (const auto& a : extra) args.push_back(a);
  if (src) args.emplace_back(excerpt(*src, pos));
  host.msgLog(kMsgGroupParser, number, args, &pos);
}

}  // namespace qvt
