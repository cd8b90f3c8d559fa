// The statement records that the parser leaves for the run.
//
// A step gives one PROCSTR. Its list `head` begins with the procedure record
// (fields 0 to 106), into which the QVT, ID, IDM and BY statements all write;
// one record (fields 0 to 26) follows for each FORECAST statement, in the
// order of the statements. An option is either a flag bit of `opt` or a
// numbered field of `fld`.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "calendar/interval.hpp"
#include "host/host.hpp"

namespace qvt {

// Highest field numbers of the two kinds of record.
inline constexpr int kProcFields = 106;
inline constexpr int kForecastFields = 26;

// Kind of the value of a field (STLIST.mode).
enum class StMode : std::uint8_t {
  None = 0,
  Number = 1,     // a double: a number, a date, time or datetime value, a missing value, or a code
  Text = 2,       // a text as written: the interval of ID INTERVAL=, the first item of a FORECAST list
  Character = 3,  // one character: ALIGN= 'B', 'M' or 'E'
  DataSet = 4,    // a data set name
  VarList = 5,    // a variable list
  Format = 6,     // a format as written: DATE9., $CHAR10.
};

// Element codes of a variable list, as written.
enum class VarItemCode : std::uint8_t {
  Name = 1,         // a
  Numbered = 2,     // a1-a5
  Positional = 3,   // a--b
  NumericRange = 4, // a-NUMERIC-b
  CharRange = 5,    // a-CHARACTER-b, a-CHAR-b
  Prefix = 6,       // a:
  AllNumeric = 7,   // _NUMERIC_
  AllChar = 8,      // _CHARACTER_, _CHAR_
  All = 9,          // _ALL_
};

struct VarItem {
  VarItemCode code = VarItemCode::Name;
  std::string first;  // the name (or first name of a range, or the prefix) as written
  std::string last;   // second name of a range
  std::string text;   // the element as written in the program
  bool descending = false;  // BY: DESCENDING stood before it
  SourcePos pos;
};

struct VarList {
  std::vector<VarItem> items;
  bool notsorted = false;  // BY: NOTSORTED stood in the list
};

struct DataSetName {
  std::string text;     // as written (a quoted path without its quotes)
  std::string lib;      // library of lib.member, else empty
  std::string member;   // member, or the path of a quoted name
  bool quoted = false;  // a quoted path
  bool byDefault = false;  // not written: the host's default input or output stands for it
  std::string options;  // the text inside the parentheses behind the name, passed on unread
};

// One numbered field. The rarer, larger values (a data set name, a parsed
// interval) are held by pointer so that the 27 or 107 fields of a record
// stay small; they are never changed once made, so copies share them.
struct STLIST {
  std::uint8_t type = 0;  // 0 the option wasn't given; 1 given; 2 set by default
  StMode mode = StMode::None;
  std::variant<std::monostate, double, char, std::string, std::shared_ptr<const DataSetName>, VarList> v;
  std::shared_ptr<const INTERVAL> interval;  // ID INTERVAL=: the parsed interval, null when it couldn't be parsed
  SourcePos pos;                             // where the value was written

  bool given() const noexcept { return type != 0; }
  double number() const { return std::get<double>(v); }
  char character() const { return std::get<char>(v); }
  const std::string& text() const { return std::get<std::string>(v); }
  const DataSetName& dataset() const { return *std::get<std::shared_ptr<const DataSetName>>(v); }
  const VarList& vars() const { return std::get<VarList>(v); }
};

// Flag bit n has the mask 0x80 >> (n mod 8) in byte n / 8: bit 0 is the
// top bit of the first byte.
inline constexpr int kOptBytes = 32;
inline constexpr int kOptBits = kOptBytes * 8;

struct STMT {
  std::string name;  // statement name: "QVT" for the procedure record, "FORECAST"
  std::array<std::uint8_t, kOptBytes> opt{};
  int nfld = 0;  // number of fields: highest field number + 1
  std::vector<STLIST> fld;
  SourcePos pos;  // where the statement starts

  bool bit(int n) const noexcept {
    return n >= 0 && n < kOptBits && (opt[static_cast<std::size_t>(n / 8)] & (0x80u >> (n % 8))) != 0;
  }
  void setBit(int n) noexcept {
    if (n >= 0 && n < kOptBits) opt[static_cast<std::size_t>(n / 8)] |= static_cast<std::uint8_t>(0x80u >> (n % 8));
  }
  // Field n, or null when the record has no such field.
  const STLIST* field(int n) const noexcept {
    return n >= 0 && n < static_cast<int>(fld.size()) ? &fld[static_cast<std::size_t>(n)] : nullptr;
  }
  bool given(int n) const noexcept {
    const STLIST* f = field(n);
    return f && f->given();
  }
};

struct PROCSTR {
  std::vector<STMT> head;  // procedure record first, then one per FORECAST statement
  int error = 0;     // nonzero: the step must not run (2000, the class of unusable statements)
  int nerrors = 0;   // errors reported while reading the step (lexical, syntax, values)
  int nrepaired = 0; // statements that were repaired and kept
  int nskipped = 0;  // statements that could not be repaired and were dropped
  // Trace flags of the parser, from the host option DEBUG: its text holds
  // "SYN" (syntax trace) or "SEM" (semantic trace), in any case.
  char syndebug = 0;
  char semdebug = 0;
};

// Code left in PROCSTR.error for statements that are unusable.
inline constexpr int kStatementsUnusable = 2000;

}  // namespace qvt
