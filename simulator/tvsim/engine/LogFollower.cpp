// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/LogFollower.h"

#include <fcntl.h>
#include <glib-unix.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace sim::tvsim {
namespace {

/// A line that is longer is handed on in parts; the engine logs parameters of any length.
constexpr size_t kLongestLine = 1 << 20;

}  // namespace

Result<std::unique_ptr<LogFollower>> LogFollower::Create(const std::string& file, bool from_start, OnLine on_line) {
  UniqueFd watch(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  const std::string folder = std::filesystem::absolute(file).parent_path();
  if (!watch || inotify_add_watch(watch.Get(), folder.c_str(), IN_MODIFY | IN_CREATE | IN_MOVED_TO) < 0) {
    return Error{errno, "cannot follow " + file + ": " + std::strerror(errno)};
  }
  std::unique_ptr<LogFollower> follower(new LogFollower(file, std::move(watch), std::move(on_line)));
  follower->m_skip = !from_start;
  follower->Read();
  follower->m_skip = false;
  return follower;
}

LogFollower::LogFollower(std::string file, UniqueFd watch, OnLine on_line)
    : m_file(std::move(file)), m_on_line(std::move(on_line)), m_watch(std::move(watch)) {
  m_source = g_unix_fd_add(
      m_watch.Get(), G_IO_IN,
      [](gint descriptor, GIOCondition, gpointer self) -> gboolean {
        char events[4096];
        while (read(descriptor, events, sizeof events) > 0) {
        }
        static_cast<LogFollower*>(self)->Read();
        return G_SOURCE_CONTINUE;
      },
      this);
}

LogFollower::~LogFollower() {
  g_source_remove(m_source);
}

/// True when a log was opened that had not been before. A device is none: it may have no end.
bool LogFollower::OpenWhereNeeded() {
  struct stat standing, opened;
  const bool exists = stat(m_file.c_str(), &standing) == 0 && S_ISREG(standing.st_mode);
  if (!exists || (m_log && fstat(m_log.Get(), &opened) == 0 && opened.st_ino == standing.st_ino)) {
    return false;
  }
  m_log.Reset(open(m_file.c_str(), O_RDONLY | O_CLOEXEC));
  return bool(m_log);
}

void LogFollower::Read() {
  if (m_log) {
    ReadToEnd();  // of the one that may have been put away
  }
  if (OpenWhereNeeded()) {
    if (m_skip) {
      lseek(m_log.Get(), 0, SEEK_END);
    }
    ReadToEnd();
  }
}

void LogFollower::ReadToEnd() {
  char bytes[16384];
  for (ssize_t count; (count = read(m_log.Get(), bytes, sizeof bytes)) > 0;) {
    Take(bytes, static_cast<size_t>(count));
  }
}

void LogFollower::Take(const char* bytes, size_t count) {
  m_unfinished.append(bytes, count);
  size_t begin = 0;
  for (size_t end; (end = m_unfinished.find('\n', begin)) != std::string::npos; begin = end + 1) {
    m_on_line(m_unfinished.substr(begin, end - begin));
  }
  m_unfinished.erase(0, begin);
  if (m_unfinished.size() > kLongestLine) {
    m_on_line(std::exchange(m_unfinished, {}));
  }
}

}  // namespace sim::tvsim
