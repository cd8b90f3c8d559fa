// Tokens of the statement language and the program text they come from.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/host.hpp"

namespace qvt {

// Terminal numbers. 1 to 19 are the token classes, 20 to 26 the
// punctuation, then one terminal per keyword (in the order of
// keywordNames()), and last the end of the input.
namespace term {
inline constexpr int ENDJB = 1;  // ';', the end of a statement
inline constexpr int NAMEX = 2;
inline constexpr int QS = 3;
inline constexpr int INT = 4;
inline constexpr int NBR = 5;
inline constexpr int COMPOUND = 6;  // lib.member
inline constexpr int FMT = 7;
inline constexpr int DATE = 8;
inline constexpr int TIME = 9;
inline constexpr int DATETIME = 10;
inline constexpr int MISSING = 11;
inline constexpr int VLITERAL = 12;  // 'any name'n
inline constexpr int CATNAME = 13;   // no rule of the language uses it
inline constexpr int DSTOKEN = 14;   // no rule of the language uses it
// A printable mark of no rule (< > + * and the like): data set options may
// hold one; anywhere else it is a syntax error.
inline constexpr int OTHER = 15;
inline constexpr int LPAREN = 20;
inline constexpr int RPAREN = 21;
inline constexpr int COMMA = 22;
inline constexpr int MINUS = 23;
inline constexpr int SLASH = 24;
inline constexpr int COLON = 25;
inline constexpr int EQUALS = 26;
inline constexpr int FIRSTKW = 27;
}  // namespace term

// Terminal number of keyword kw.
constexpr int kwTerm(int kw) noexcept { return term::FIRSTKW + kw; }

struct Token {
  int cls = 0;        // terminal class: NAMEX for every word, keyword or not
  int kw = -1;        // keyword number when the word is a keyword (any spelling)
  std::string text;   // word as written; contents of a string or name literal; format or lib.member as written
  double value = 0;   // INT, NBR, DATE, TIME, DATETIME, MISSING
  SourcePos pos;
  std::uint32_t offset = 0;  // slice of the program text
  std::uint32_t length = 0;
  bool bad = false;  // a literal that could not be read (already reported)
};

// A program text with what is needed to point into it.
struct SourceText {
  std::string file;
  std::string text;
  int firstLine = 1;  // line number of the first line
  int firstCol = 1;   // column number of the first character of the first line
  std::vector<std::uint32_t> lineStart;

  // Text of the line with the given number, without its line end; empty when out of range.
  std::string_view lineText(int line) const noexcept;
};

struct Program {
  std::shared_ptr<const SourceText> src;
  std::vector<Token> tokens;
  int nerrors = 0;  // lexical errors reported while scanning
  std::vector<std::uint32_t> errorAt;  // text offset of each, to charge it to its step
};

// "file, line L, column C" (no file part for text from the command line).
std::string placeText(const SourcePos& pos);

// The line of pos and a caret under its column, for the text of a message.
std::string excerpt(const SourceText& src, const SourcePos& pos);

// A token as shown in a message: its text, or a name for the end of a
// statement or of the input.
std::string tokenShow(const Token& t);

}  // namespace qvt
