// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/LogFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace sim {
namespace {

/// Bytes after which the file's size is looked at again: a command logs ten lines, and a look costs as much as a line.
constexpr size_t kBetweenChecks = 64 << 10;

bool IsSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

void WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written <= 0) {
      return;
    }
    bytes.remove_prefix(static_cast<size_t>(written));
  }
}

}  // namespace

LogFile::LogFile(std::string path, size_t limit) : m_path(std::move(path)), m_limit(limit), m_fd(Open()) {}

void LogFile::Write(std::string_view bytes) {
  const std::lock_guard lock(m_mutex);
  m_unchecked += bytes.size();
  if (m_fd && m_unchecked > std::min(kBetweenChecks, m_limit / 16)) {
    m_unchecked = 0;
    PutAwayIfFull();
  }
  WriteAll(m_fd ? m_fd.Get() : STDERR_FILENO, bytes);
}

UniqueFd LogFile::Open() const {
  return UniqueFd(m_path.empty() ? -1 : open(m_path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
}

/// Of all who have the full file open the first renames it; the others find that the name stands for another file by
/// then and only open that. The lock is on the full file, so it keeps just these apart.
void LogFile::PutAwayIfFull() {
  struct stat ours {};
  struct stat named {};
  if (fstat(m_fd.Get(), &ours) != 0 || static_cast<size_t>(ours.st_size) < m_limit) {
    return;
  }
  flock(m_fd.Get(), LOCK_EX);
  if (stat(m_path.c_str(), &named) == 0 && IsSameFile(ours, named)) {
    std::rename(m_path.c_str(), (m_path + ".1").c_str());
  }
  if (UniqueFd next = Open()) {
    m_fd = std::move(next);  // closing the full one ends the lock
  } else {
    flock(m_fd.Get(), LOCK_UN);
  }
}

}  // namespace sim
