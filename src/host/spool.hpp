// Temporary spool files: a sequential stream of bytes with repositioning.
//
// The file is made in the temporary folder and unlinked at once, so that it
// disappears when it is closed or the process ends, however that happens.
// Writes go through a 64 KiB buffer (the engine writes one record of a few
// doubles at a time); a read, a move or a cut first flushes it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qvt {

class SpoolFile {
 public:
  SpoolFile() = default;
  ~SpoolFile();
  SpoolFile(const SpoolFile&) = delete;
  SpoolFile& operator=(const SpoolFile&) = delete;

  // 0, or -1 with the reason in error().
  int open(const std::string& folder);
  int write(const void* data, std::size_t bytes);
  // 0 when all bytes were read; 1 when fewer than `bytes` remain (nothing is
  // consumed); -1 on an I/O failure.
  int read(void* data, std::size_t bytes);
  // pos >= 0 moves there; -2 cuts the file at the current position.
  int point(long long pos);
  int close();
  long long size() const noexcept { return size_; }
  long long tell() const noexcept { return pos_; }
  const std::string& error() const noexcept { return err_; }

 private:
  int flush();
  int fail(const char* what);

  int fd_ = -1;
  long long pos_ = 0;   // logical position
  long long size_ = 0;  // logical size, buffered bytes included
  std::vector<char> wbuf_;
  long long wstart_ = 0;  // file offset of wbuf_[0]
  std::vector<char> rbuf_;
  long long rstart_ = 0;  // file offset of rbuf_[0]; rbuf_ empty when invalid
  std::string err_;
};

}  // namespace qvt
