// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_BASE_UNIQUEFD_H
#define SIMULATOR_BASE_UNIQUEFD_H

#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace sim {

/// Owns a file descriptor and closes it. Empty while it is -1.
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : m_fd(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    Reset(std::exchange(other.m_fd, -1));
    return *this;
  }
  ~UniqueFd() { Reset(); }

  int Get() const { return m_fd; }
  explicit operator bool() const { return m_fd >= 0; }
  [[nodiscard]] int Release() { return std::exchange(m_fd, -1); }
  void Reset(int fd = -1) {
    if (const int old = std::exchange(m_fd, fd); old >= 0) {
      close(old);
    }
  }

 private:
  int m_fd = -1;
};

/// Whether `fd` is open, and a socket.
inline bool IsSocket(int fd) {
  struct stat status {};
  return fstat(fd, &status) == 0 && S_ISSOCK(status.st_mode);
}

}  // namespace sim

#endif
