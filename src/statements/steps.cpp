#include "statements/steps.hpp"

#include <cctype>

#include "statements/keywords.hpp"
#include "statements/messages.hpp"

namespace qvt {
namespace {

bool isWord(const Token& t, std::string_view upperWord) {
  if (t.cls != term::NAMEX || t.text.size() != upperWord.size()) return false;
  for (std::size_t k = 0; k < t.text.size(); ++k)
    if (std::toupper(static_cast<unsigned char>(t.text[k])) != upperWord[k]) return false;
  return true;
}

}  // namespace

std::vector<Step> splitSteps(const Program& prog, Host& host, int* nerrors) {
  std::vector<Step> steps;
  int errors = 0;
  const auto& toks = prog.tokens;
  const int qvtKw = keywordFind("QVT");
  const auto textEnd = static_cast<std::uint32_t>(prog.src ? prog.src->text.size() : 0);
  bool open = false;
  auto close = [&](std::size_t at, std::uint32_t offset) {
    if (!open) return;
    steps.back().last = at;
    steps.back().endOffset = offset;
    open = false;
  };
  std::size_t s = 0;
  while (s < toks.size()) {
    std::size_t e = s;  // one past the statement's ';' (or the end)
    while (e < toks.size() && toks[e].cls != term::ENDJB) ++e;
    if (e < toks.size()) ++e;
    const Token& head = toks[s];
    if (head.cls == term::NAMEX && head.kw == qvtKw) {
      close(s, head.offset);
      Step st;
      st.first = s;
      st.beginOffset = head.offset;
      st.pos = head.pos;
      steps.push_back(st);
      open = true;
    } else if (isWord(head, "RUN") && (e - s == 1 || (e - s == 2 && toks[s + 1].cls == term::ENDJB))) {
      if (open) {
        steps.back().endedByRun = true;
        close(s, head.offset);
      }
    } else if (!open && head.cls != term::ENDJB) {
      ++errors;
      stmtMsg(host, prog.src.get(), kMsgOutsideStep, head.pos, {tokenShow(head)});
    }
    s = e;
  }
  close(toks.size(), textEnd);
  if (toks.empty()) {
    ++errors;
    SourcePos at;
    if (prog.src) at = SourcePos{prog.src->file, prog.src->firstLine, prog.src->firstCol};
    stmtMsg(host, nullptr, kMsgEmptyProgram, at, {});
  }
  if (nerrors) *nerrors = errors;
  return steps;
}

}  // namespace qvt
