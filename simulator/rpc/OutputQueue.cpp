// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/OutputQueue.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string>
#include <utility>

namespace sim::rpc {
namespace {

/// Bytes that are written at once, as a reader who has his own processor could work on them already.
constexpr size_t kMuch = 16 << 10;

mode_t FileType(int fd) {
  struct stat status {};
  return fstat(fd, &status) == 0 ? status.st_mode & S_IFMT : 0;
}

/// O_NONBLOCK belongs to the open file, which a pipe or terminal shares with whoever passed it on. So it is opened once
/// more for ourselves; where that is not possible the descriptor is returned as it is.
UniqueFd OpenForOurselves(UniqueFd fd) {
  const mode_t type = FileType(fd.Get());
  if (type != S_IFIFO && type != S_IFCHR) {
    return fd;
  }
  const std::string path = "/proc/self/fd/" + std::to_string(fd.Get());
  UniqueFd ours(open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  return ours ? std::move(ours) : std::move(fd);
}

bool TakesBytes(int fd, int waitMs) {
  pollfd poll{.fd = fd, .events = POLLOUT, .revents = 0};
  return ::poll(&poll, 1, waitMs) > 0;
}

}  // namespace

OutputQueue::OutputQueue(UniqueFd out, size_t limit)
    : m_out(OpenForOurselves(std::move(out))), m_isSocket(IsSocket(m_out.Get())), m_limit(limit) {}

bool OutputQueue::Send(std::string_view message, std::string_view before, std::string_view after) {
  return Add(0, message, before, after);
}

bool OutputQueue::SendLater(std::string_view message, std::string_view before, std::string_view after) {
  return Add(kMuch, message, before, after);
}

/// Writes when `enough` bytes wait.
bool OutputQueue::Add(size_t enough, std::string_view message, std::string_view before, std::string_view after) {
  const std::lock_guard lock(m_mutex);
  if (m_broken) {
    return false;
  }
  m_bytes.append(before).append(message).append(after);
  m_waiting = m_bytes.size() - m_written;
  if (m_waiting >= enough) {
    m_broken = !FlushLocked() || m_waiting > m_limit;
  }
  return !m_broken;
}

bool OutputQueue::Flush() {
  if (m_waiting == 0) {
    return !m_broken;
  }
  const std::lock_guard lock(m_mutex);
  m_broken = m_broken || !FlushLocked();
  return !m_broken;
}

bool OutputQueue::Drain(std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (Flush() && Waiting() > 0) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
      return false;
    }
    TakesBytes(Descriptor(), static_cast<int>(left.count()));
  }
  return Waiting() == 0;
}

std::string OutputQueue::BreakReason() const {
  const std::lock_guard lock(m_mutex);
  const bool reader_is_gone = m_error == 0 || m_error == EPIPE || m_error == ECONNRESET;
  return reader_is_gone ? "the peer does not read any more" : std::string("cannot write: ") + std::strerror(m_error);
}

bool OutputQueue::FlushLocked() {
  while (m_written < m_bytes.size()) {
    if (!WriteSomeLocked()) {
      m_error = errno == EAGAIN ? 0 : errno;
      return m_error == 0;
    }
  }
  m_bytes.clear();
  m_written = 0;
  return true;
}

/// False, with errno, when nothing was written. Frees the written part once it is the larger one.
bool OutputQueue::WriteSomeLocked() {
  const ssize_t count = WriteNow(std::string_view(m_bytes).substr(m_written));
  if (count < 0) {
    return errno == EINTR;
  }
  m_written += static_cast<size_t>(count);
  m_waiting = m_bytes.size() - m_written;
  if (m_written > m_bytes.size() / 2) {
    m_bytes.erase(0, std::exchange(m_written, 0));
  }
  return true;
}

ssize_t OutputQueue::WriteNow(std::string_view bytes) const {
  if (m_isSocket) {
    return send(m_out.Get(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  }
  if (!TakesBytes(m_out.Get(), 0)) {
    errno = EAGAIN;
    return -1;
  }
  // A pipe that takes bytes takes this many without blocking, also where it could not be opened for ourselves.
  return write(m_out.Get(), bytes.data(), std::min<size_t>(bytes.size(), PIPE_BUF));
}

}  // namespace sim::rpc
