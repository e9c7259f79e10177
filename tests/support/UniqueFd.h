#pragma once

#include <unistd.h>

#include <utility>

namespace support {

/// A file descriptor that is closed with its owner.
/// Owner: whoever holds it. Threads: none of its own. Failure: -1 stands for none.
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    reset(std::exchange(other.fd_, -1));
    return *this;
  }
  ~UniqueFd() { reset(); }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  /// Hands the descriptor over to the caller, who closes it.
  int release() { return std::exchange(fd_, -1); }
  void reset(int fd = -1) {
    const int old = std::exchange(fd_, fd);
    if (old >= 0) ::close(old);
  }

 private:
  int fd_ = -1;
};

}  // namespace support
