#include "statements/scanner.hpp"

#include <cctype>
#include <charconv>
#include <cmath>

#include "run/missing.hpp"
#include "statements/keywords.hpp"
#include "statements/literal.hpp"
#include "statements/messages.hpp"

namespace qvt {
namespace {

bool isNameStart(char c) noexcept { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool isNameChar(char c) noexcept { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }
bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

std::string upper(std::string_view s) {
  std::string u(s);
  for (char& c : u) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return u;
}

class Scanner {
 public:
  Scanner(const SourceText& src, Host& host, Program& out) : src_(src), s_(src.text), host_(host), out_(out) {}

  void run() {
    while (true) {
      skipBlanksAndComments();
      if (i_ >= s_.size()) break;
      token();
    }
  }

 private:
  const SourceText& src_;
  std::string_view s_;
  Host& host_;
  Program& out_;
  std::size_t i_ = 0;
  int line_ = src_.firstLine;
  std::size_t lineBegin_ = 0;
  bool stmtStart_ = true;

  SourcePos posAt(std::size_t at) const {
    // Columns of the first line start at firstCol.
    const int col = static_cast<int>(at - lineBegin_) + 1 + (line_ == src_.firstLine ? src_.firstCol - 1 : 0);
    return SourcePos{src_.file, line_, col};
  }

  void advance(std::size_t n = 1) {
    for (std::size_t k = 0; k < n && i_ < s_.size(); ++k) {
      if (s_[i_] == '\n') {
        ++line_;
        lineBegin_ = i_ + 1;
      }
      ++i_;
    }
  }

  char peek(std::size_t k = 0) const noexcept { return i_ + k < s_.size() ? s_[i_ + k] : '\0'; }

  void error(int number, const SourcePos& pos, std::initializer_list<MsgArg> extra) {
    ++out_.nerrors;
    out_.errorAt.push_back(static_cast<std::uint32_t>(i_ > 0 ? i_ - 1 : 0));
    stmtMsg(host_, src_, number, pos, extra);
  }

  void skipBlanksAndComments() {
    while (i_ < s_.size()) {
      const char c = s_[i_];
      if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v') {
        advance();
      } else if (c == '/' && peek(1) == '*') {
        const SourcePos at = posAt(i_);
        const auto end = s_.find("*/", i_ + 2);
        if (end == std::string_view::npos) {
          error(kMsgUnterminatedComment, at, {});
          advance(s_.size() - i_);
        } else {
          advance(end + 2 - i_);
        }
      } else if (c == '*' && stmtStart_) {
        // A statement comment runs to the next semicolon.
        const SourcePos at = posAt(i_);
        const auto end = s_.find(';', i_);
        if (end == std::string_view::npos) {
          error(kMsgUnterminatedComment, at, {});
          advance(s_.size() - i_);
        } else {
          advance(end + 1 - i_);
        }
      } else {
        break;
      }
    }
  }

  Token& push(int cls, std::size_t begin, const SourcePos& pos) {
    Token t;
    t.cls = cls;
    t.pos = pos;
    t.offset = static_cast<std::uint32_t>(begin);
    t.length = static_cast<std::uint32_t>(i_ - begin);
    out_.tokens.push_back(std::move(t));
    stmtStart_ = cls == term::ENDJB;
    return out_.tokens.back();
  }

  bool signAllowed() const noexcept {
    if (out_.tokens.empty()) return false;
    const int p = out_.tokens.back().cls;
    return p == term::EQUALS || p == term::LPAREN || p == term::COMMA || p == term::INT || p == term::NBR ||
           p == term::MISSING;
  }

  void token() {
    const std::size_t begin = i_;
    const SourcePos pos = posAt(i_);
    const char c = s_[i_];
    if (c == '\'' || c == '"') return quoted(begin, pos);
    if (isDigit(c) || (c == '.' && isDigit(peek(1)))) return number(begin, pos);
    if ((c == '-' || c == '+') && signAllowed() && (isDigit(peek(1)) || (peek(1) == '.' && isDigit(peek(2)))))
      return number(begin, pos);
    if (c == '.') return missing(begin, pos);
    if (isNameStart(c)) return word(begin, pos);
    if (c == '$') return dollarFormat(begin, pos);
    int cls = 0;
    switch (c) {
      case ';': cls = term::ENDJB; break;
      case '(': cls = term::LPAREN; break;
      case ')': cls = term::RPAREN; break;
      case ',': cls = term::COMMA; break;
      case '-': cls = term::MINUS; break;
      case '/': cls = term::SLASH; break;
      case ':': cls = term::COLON; break;
      case '=': cls = term::EQUALS; break;
      default: break;
    }
    if (cls != 0) {
      advance();
      push(cls, begin, pos).text = std::string(1, c);
      return;
    }
    if (static_cast<unsigned char>(c) > 0x20 && static_cast<unsigned char>(c) < 0x7F) {
      advance();
      push(term::OTHER, begin, pos).text = std::string(1, c);
      return;
    }
    // Not a character of the language: report it (as \xNN) and go on behind it.
    std::string shown;
    {
      static constexpr char hex[] = "0123456789ABCDEF";
      const auto u = static_cast<unsigned char>(c);
      shown = std::string("\\x") + hex[u >> 4] + hex[u & 15];
    }
    error(kMsgBadCharacter, pos, {shown});
    advance();
  }

  void quoted(std::size_t begin, const SourcePos& pos) {
    const char q = s_[i_];
    advance();
    std::string body;
    bool closed = false;
    while (i_ < s_.size()) {
      if (s_[i_] == q) {
        if (peek(1) == q) {  // a doubled quote stands for one
          body += q;
          advance(2);
          continue;
        }
        advance();
        closed = true;
        break;
      }
      body += s_[i_];
      advance();
    }
    if (!closed) {
      // The string runs to the end of the text; it still stands as a string
      // so that the statement reads on as far as it goes.
      error(kMsgUnterminatedString, pos, {});
      Token& t = push(term::QS, begin, pos);
      t.text = std::move(body);
      t.bad = true;
      return;
    }
    // The suffix letter tells a date, time, datetime or name literal.
    std::size_t n = 0;
    while (isNameChar(peek(n))) ++n;
    const std::string suffix = upper(s_.substr(i_, n));
    int cls = term::QS;
    if (suffix == "D") cls = term::DATE;
    else if (suffix == "T") cls = term::TIME;
    else if (suffix == "DT") cls = term::DATETIME;
    else if (suffix == "N") cls = term::VLITERAL;
    if (cls != term::QS) advance(n);
    Token& t = push(cls, begin, pos);
    t.text = std::move(body);
    if (cls == term::VLITERAL && (t.text.empty() || t.text.size() > kMaxNameLength)) {
      t.bad = true;
      error(kMsgBadName, pos, {t.text});
    }
    std::optional<double> v;
    switch (cls) {
      case term::DATE: v = literalDate(t.text); break;
      case term::TIME: v = literalTime(t.text); break;
      case term::DATETIME: v = literalDateTime(t.text); break;
      default: return;
    }
    if (!v) {
      t.bad = true;
      t.value = kMissing;
      const std::string shown(s_.substr(begin, i_ - begin));
      error(kMsgBadLiteral, pos, {shown});
    } else {
      t.value = *v;
    }
  }

  void number(std::size_t begin, const SourcePos& pos) {
    bool isInt = true;
    if (s_[i_] == '-' || s_[i_] == '+') advance();
    while (isDigit(peek())) advance();
    if (peek() == '.') {
      isInt = false;
      advance();
      while (isDigit(peek())) advance();
    }
    if ((peek() == 'e' || peek() == 'E') &&
        (isDigit(peek(1)) || ((peek(1) == '-' || peek(1) == '+') && isDigit(peek(2))))) {
      isInt = false;
      advance(2);
      while (isDigit(peek())) advance();
    }
    bool bad = false;
    // A number glued to letters (12abc) is not a number of the language.
    while (isNameChar(peek())) {
      advance();
      bad = true;
    }
    Token& t = push(isInt ? term::INT : term::NBR, begin, pos);
    t.text = std::string(s_.substr(begin, i_ - begin));
    std::string_view digits = t.text;
    if (!digits.empty() && digits.front() == '+') digits.remove_prefix(1);
    double v = 0;
    if (!bad) {
      const auto r = std::from_chars(digits.data(), digits.data() + digits.size(), v);
      bad = r.ec != std::errc() || r.ptr != digits.data() + digits.size() || !std::isfinite(v);
    }
    if (bad) {
      t.bad = true;
      t.value = kMissing;
      error(kMsgBadNumber, pos, {t.text});
      return;
    }
    t.value = v;
  }

  void missing(std::size_t begin, const SourcePos& pos) {
    advance();  // the dot
    double v = kMissing;
    const char c = peek();
    if ((std::isalpha(static_cast<unsigned char>(c)) || c == '_') && !isNameChar(peek(1))) {
      v = skMissVal(c);
      advance();
    }
    Token& t = push(term::MISSING, begin, pos);
    t.text = std::string(s_.substr(begin, i_ - begin));
    t.value = v;
  }

  void word(std::size_t begin, const SourcePos& pos) {
    while (isNameChar(peek())) advance();
    std::size_t wordEnd = i_;
    int cls = term::NAMEX;
    if (peek() == '.') {
      if (isNameStart(peek(1))) {  // lib.member
        advance();
        while (isNameChar(peek())) advance();
        cls = term::COMPOUND;
      } else {  // a format: DATE9. BEST12.2 MONTH.2
        advance();
        while (isDigit(peek())) advance();
        cls = term::FMT;
      }
    }
    Token& t = push(cls, begin, pos);
    t.text = std::string(s_.substr(begin, i_ - begin));
    if (cls == term::NAMEX) {
      t.kw = keywordFind(upper(t.text));
      if (wordEnd - begin > kMaxNameLength) {
        t.bad = true;
        error(kMsgBadName, pos, {t.text});
      }
    } else if (cls == term::COMPOUND) {
      const auto dot = t.text.find('.');
      if (dot > kMaxNameLength || t.text.size() - dot - 1 > kMaxNameLength) {
        t.bad = true;
        error(kMsgBadName, pos, {t.text});
      }
    }
  }

  void dollarFormat(std::size_t begin, const SourcePos& pos) {
    std::size_t n = 1;
    while (isNameChar(peek(n))) ++n;
    if (peek(n) != '.') {  // a lone '$' is a mark of no rule
      advance();
      push(term::OTHER, begin, pos).text = "$";
      return;
    }
    advance(n + 1);
    while (isDigit(peek())) advance();
    Token& t = push(term::FMT, begin, pos);
    t.text = std::string(s_.substr(begin, i_ - begin));
  }
};

}  // namespace

int scanProgram(std::string_view text, const SourcePos& origin, Host& host, Program& out) {
  auto src = std::make_shared<SourceText>();
  src->file = origin.file;
  src->text = std::string(text);
  src->firstLine = origin.line > 0 ? origin.line : 1;
  src->firstCol = origin.col > 0 ? origin.col : 1;
  src->lineStart.push_back(0);
  for (std::size_t k = 0; k < src->text.size(); ++k)
    if (src->text[k] == '\n') src->lineStart.push_back(static_cast<std::uint32_t>(k + 1));
  out.src = src;
  out.tokens.clear();
  out.nerrors = 0;
  Scanner sc(*src, host, out);
  sc.run();
  return out.nerrors;
}

}  // namespace qvt
