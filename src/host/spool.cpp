#include "host/spool.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace qvt {
namespace {
constexpr std::size_t kBuf = 64 * 1024;
}

SpoolFile::~SpoolFile() { close(); }

int SpoolFile::fail(const char* what) {
  err_ = std::string(what) + ": " + std::strerror(errno);
  return -1;
}

int SpoolFile::open(const std::string& folder) {
  close();
  std::string templ = (folder.empty() ? std::string("/tmp") : folder) + "/qvt-spool-XXXXXX";
  fd_ = ::mkstemp(templ.data());
  if (fd_ < 0) return fail(templ.c_str());
  ::unlink(templ.c_str());  // nothing to clean up later, even after a crash
  pos_ = size_ = wstart_ = rstart_ = 0;
  wbuf_.clear();
  wbuf_.reserve(kBuf);
  rbuf_.clear();
  err_.clear();
  return 0;
}

int SpoolFile::flush() {
  std::size_t done = 0;
  while (done < wbuf_.size()) {
    const ssize_t n = ::pwrite(fd_, wbuf_.data() + done, wbuf_.size() - done,
                               static_cast<off_t>(wstart_ + static_cast<long long>(done)));
    if (n < 0) {
      if (errno == EINTR) continue;
      return fail("write");
    }
    done += static_cast<std::size_t>(n);
  }
  wbuf_.clear();
  return 0;
}

int SpoolFile::write(const void* data, std::size_t bytes) {
  if (fd_ < 0) {
    err_ = "the spool is not open";
    return -1;
  }
  rbuf_.clear();  // the read cache may cover the bytes being replaced
  if (!wbuf_.empty() && wstart_ + static_cast<long long>(wbuf_.size()) != pos_) {
    if (flush() != 0) return -1;
  }
  if (wbuf_.empty()) wstart_ = pos_;
  const char* p = static_cast<const char*>(data);
  wbuf_.insert(wbuf_.end(), p, p + bytes);
  pos_ += static_cast<long long>(bytes);
  size_ = std::max(size_, pos_);
  if (wbuf_.size() >= kBuf) return flush();
  return 0;
}

int SpoolFile::read(void* data, std::size_t bytes) {
  if (fd_ < 0) {
    err_ = "the spool is not open";
    return -1;
  }
  if (flush() != 0) return -1;
  if (pos_ + static_cast<long long>(bytes) > size_) return 1;
  char* out = static_cast<char*>(data);
  while (bytes > 0) {
    const long long rend = rstart_ + static_cast<long long>(rbuf_.size());
    if (rbuf_.empty() || pos_ < rstart_ || pos_ >= rend) {
      const std::size_t want = static_cast<std::size_t>(std::min<long long>(
          static_cast<long long>(std::max(kBuf, bytes)), size_ - pos_));
      rbuf_.resize(want);
      std::size_t got = 0;
      while (got < want) {
        const ssize_t n = ::pread(fd_, rbuf_.data() + got, want - got,
                                  static_cast<off_t>(pos_ + static_cast<long long>(got)));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
          rbuf_.clear();
          if (n == 0) errno = EIO;  // the file is shorter than we wrote: not ours to explain
          return fail("read");
        }
        got += static_cast<std::size_t>(n);
      }
      rstart_ = pos_;
      continue;
    }
    const std::size_t off = static_cast<std::size_t>(pos_ - rstart_);
    const std::size_t n = std::min(bytes, rbuf_.size() - off);
    std::memcpy(out, rbuf_.data() + off, n);
    out += n;
    bytes -= n;
    pos_ += static_cast<long long>(n);
  }
  return 0;
}

int SpoolFile::point(long long pos) {
  if (fd_ < 0) {
    err_ = "the spool is not open";
    return -1;
  }
  if (flush() != 0) return -1;
  if (pos == -2) {
    if (::ftruncate(fd_, static_cast<off_t>(pos_)) != 0) return fail("truncate");
    size_ = pos_;
    rbuf_.clear();
    return 0;
  }
  if (pos < 0) {
    err_ = "a negative position other than -2";
    return -1;
  }
  pos_ = pos;
  return 0;
}

int SpoolFile::close() {
  if (fd_ < 0) return 0;
  const int r = ::close(fd_);
  fd_ = -1;
  wbuf_.clear();
  rbuf_.clear();
  if (r != 0) return fail("close");
  return 0;
}

}  // namespace qvt
