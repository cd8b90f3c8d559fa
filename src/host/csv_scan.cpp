#include "host/csv_scan.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qvt {
namespace {
constexpr int kNeedMore = 2;
}

CsvScanner::CsvScanner(std::size_t bufferBytes) : buf_(std::max<std::size_t>(bufferBytes, 16)) {}

CsvScanner::~CsvScanner() {
  if (fd_ >= 0) ::close(fd_);
}

int CsvScanner::open(const std::string& path) {
  if (fd_ >= 0) ::close(fd_);
  fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0) {
    ioError_ = std::strerror(errno);
    return kIoError;
  }
  return rewind();
}

int CsvScanner::rewind() {
  if (::lseek(fd_, 0, SEEK_SET) < 0) {
    ioError_ = std::strerror(errno);
    return kIoError;
  }
  beg_ = end_ = 0;
  eof_ = false;
  line_ = 0;
  nextLine_ = 1;
  blanks_ = firstBlank_ = pendingBlanks_ = pendingFirst_ = 0;
  while (end_ < 3 && !eof_)
    if (refill() != 0) return kIoError;
  bom_ = end_ >= 3 && static_cast<unsigned char>(buf_[0]) == 0xEF &&
         static_cast<unsigned char>(buf_[1]) == 0xBB && static_cast<unsigned char>(buf_[2]) == 0xBF;
  if (bom_) beg_ = 3;
  return 0;
}

int CsvScanner::refill() {
  if (beg_ > 0) {
    std::memmove(buf_.data(), buf_.data() + beg_, end_ - beg_);
    end_ -= beg_;
    beg_ = 0;
  }
  if (end_ == buf_.size()) buf_.resize(buf_.size() * 2);  // one record fills the buffer
  for (;;) {
    const ssize_t n = ::read(fd_, buf_.data() + end_, buf_.size() - end_);
    if (n < 0) {
      if (errno == EINTR) continue;
      ioError_ = std::strerror(errno);
      return kIoError;
    }
    if (n == 0) eof_ = true;
    end_ += static_cast<std::size_t>(n);
    return 0;
  }
}

int CsvScanner::next() {
  for (;;) {
    const int r = parseRecord();
    if (r != kNeedMore) return r;
    if (refill() != 0) return kIoError;
  }
}

// One record from beg_, or kNeedMore when the buffer ends inside it (the
// caller refills and the record is parsed again from its start).
int CsvScanner::parseRecord() {
  const char* b = buf_.data();
  const std::size_t e = end_;
  std::size_t p = beg_;
  // Blank lines. Each is consumed once (beg_ moves past it before a
  // refill), so it is counted once.
  const auto blank = [this] {
    if (pendingBlanks_++ == 0) pendingFirst_ = nextLine_;
    ++nextLine_;
  };
  for (;;) {
    if (p == e) {
      beg_ = p;
      if (eof_) return 0;
      return kNeedMore;
    }
    if (b[p] == '\n') {
      ++p;
      blank();
    } else if (b[p] == '\r') {
      if (p + 1 == e) {
        if (!eof_) {
          beg_ = p;
          return kNeedMore;
        }
        ++p;  // a CR that ends the file
        continue;
      }
      if (b[p + 1] != '\n') break;
      p += 2;
      blank();
    } else {
      break;
    }
  }
  if (pendingBlanks_ > 0) {
    if (blanks_ == 0) firstBlank_ = pendingFirst_;
    blanks_ += pendingBlanks_;
    pendingBlanks_ = 0;
  }
  beg_ = p;
  spans_.clear();
  scratch_.clear();
  long long inner = 0;  // line breaks inside quoted fields
  for (;;) {
    if (p < e && b[p] == '"') {
      std::size_t q = p + 1;
      std::size_t seg = q;
      bool undo = false;
      const std::size_t soff = scratch_.size();
      for (;;) {
        const void* hit = q < e ? std::memchr(b + q, '"', e - q) : nullptr;
        if (!hit) {
          if (!eof_) return kNeedMore;
          line_ = nextLine_;
          return kOpenQuote;
        }
        const auto k = static_cast<std::size_t>(static_cast<const char*>(hit) - b);
        if (k + 1 == e && !eof_) return kNeedMore;
        if (k + 1 < e && b[k + 1] == '"') {  // a doubled quote stands for one
          scratch_.append(b + seg, k + 1 - seg);
          q = seg = k + 2;
          undo = true;
          continue;
        }
        inner += std::count(b + p + 1, b + k, '\n');
        if (undo) {
          scratch_.append(b + seg, k - seg);
          spans_.push_back({soff, scratch_.size() - soff, true});
        } else {
          spans_.push_back({p + 1, k - p - 1, false});
        }
        p = k + 1;
        break;
      }
      if (p == e) {
        if (!eof_) return kNeedMore;
        break;
      }
      if (b[p] == ',') {
        ++p;
        continue;
      }
      if (b[p] == '\n') {
        ++p;
        break;
      }
      if (b[p] == '\r' && p + 1 == e && !eof_) return kNeedMore;
      if (b[p] == '\r' && (p + 1 == e || b[p + 1] == '\n')) {
        p = std::min(p + 2, e);
        break;
      }
      line_ = nextLine_;
      errorField_ = static_cast<int>(spans_.size());
      return kAfterQuote;
    }
    std::size_t q = p;
    while (q < e && b[q] != ',' && b[q] != '\n') ++q;
    if (q == e && !eof_) return kNeedMore;
    std::size_t fend = q;
    if (fend > p && b[fend - 1] == '\r' && (q == e || b[q] == '\n')) --fend;  // CRLF, or a CR ending the file
    spans_.push_back({p, fend - p, false});
    if (q == e) {
      p = q;
      break;
    }
    p = q + 1;
    if (b[q] == '\n') break;
  }
  fields_.clear();
  for (const Span& s : spans_)
    fields_.emplace_back(s.scratch ? scratch_.data() + s.off : b + s.off, s.len);
  beg_ = p;
  line_ = nextLine_;
  nextLine_ += 1 + inner;
  return 1;
}

}  // namespace qvt
