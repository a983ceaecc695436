// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_ENGINE_LOGFOLLOWER_H
#define SIMULATOR_TVSIM_ENGINE_LOGFOLLOWER_H

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"

namespace sim::tvsim {

/// Hands on each line that is added to a log, also after the log was put away and begun anew, and when it does not
/// exist yet. On the default main context.
class LogFollower {
 public:
  using OnLine = std::function<void(const std::string& line)>;

  /// `from_start`: the lines that are there already come first. Errors: the log's folder cannot be watched.
  static Result<std::unique_ptr<LogFollower>> Create(const std::string& file, bool from_start, OnLine on_line);
  ~LogFollower();
  LogFollower(const LogFollower&) = delete;
  LogFollower& operator=(const LogFollower&) = delete;

  /// Reads what is there now. Called by itself whenever something changes.
  void Read();

 private:
  LogFollower(std::string file, UniqueFd watch, OnLine on_line);

  bool OpenWhereNeeded();
  void ReadToEnd();
  void Take(const char* bytes, size_t count);

  const std::string m_file;
  const OnLine m_on_line;
  UniqueFd m_watch;  ///< inotify, of the folder: it sees the file come, grow and go
  UniqueFd m_log;
  std::string m_unfinished;  ///< a line whose end has not come yet
  bool m_skip = false;       ///< what the log holds when it is opened first is not handed on
  unsigned int m_source = 0;
};

}  // namespace sim::tvsim

#endif
