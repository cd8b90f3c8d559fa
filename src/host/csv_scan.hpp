// A streaming scanner of RFC 4180 records.
//
// The file is read through one buffer (1 MiB, grown only when a single
// record is larger) and never held whole. A record's fields are views into
// the buffer, or into a scratch string when a quoted field has doubled quotes
// to undo; they stay valid until the next call. Line ends are LF or CRLF; a
// UTF-8 byte-order mark at the start is skipped; blank lines are skipped. A
// quote inside an unquoted field is an ordinary character.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qvt {

class CsvScanner {
 public:
  // Results of next() beside 1 (a record) and 0 (the end of the file).
  static constexpr int kOpenQuote = -1;   // a quoted field runs to the end of the file
  static constexpr int kAfterQuote = -2;  // a character follows a closing quote
  static constexpr int kIoError = -3;

  explicit CsvScanner(std::size_t bufferBytes = std::size_t{1} << 20);
  ~CsvScanner();
  CsvScanner(const CsvScanner&) = delete;
  CsvScanner& operator=(const CsvScanner&) = delete;

  // 0, or kIoError with the reason in ioError().
  int open(const std::string& path);
  int rewind();
  int next();

  std::span<const std::string_view> fields() const noexcept { return fields_; }
  // First line of the record in hand, or of the failing record.
  long long line() const noexcept { return line_; }
  // 1-based field of a kAfterQuote failure.
  int errorField() const noexcept { return errorField_; }
  const std::string& ioError() const noexcept { return ioError_; }
  bool hadBom() const noexcept { return bom_; }
  // Blank lines skipped before records (not those at the end of the file),
  // and the first of them; counted since open or rewind.
  long long blankLines() const noexcept { return blanks_; }
  long long firstBlankLine() const noexcept { return firstBlank_; }

 private:
  struct Span {
    std::size_t off;
    std::size_t len;
    bool scratch;
  };
  int parseRecord();
  int refill();

  int fd_ = -1;
  std::vector<char> buf_;
  std::size_t beg_ = 0, end_ = 0;
  bool eof_ = false;
  bool bom_ = false;
  long long line_ = 0, nextLine_ = 1;
  long long blanks_ = 0, firstBlank_ = 0;
  long long pendingBlanks_ = 0, pendingFirst_ = 0;  // blank lines not yet followed by a record
  int errorField_ = 0;
  std::vector<Span> spans_;
  std::vector<std::string_view> fields_;
  std::string scratch_;
  std::string ioError_;
};

}  // namespace qvt
