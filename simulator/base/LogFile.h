// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_BASE_LOGFILE_H
#define SIMULATOR_BASE_LOGFILE_H

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "simulator/base/UniqueFd.h"

namespace sim {

/// A file that many processes append lines to, and that is put away when it is full. Any thread.
class LogFile {
 public:
  /// `path`: the file, made where there is none; standard error where it is empty or cannot be opened.
  /// `limit`: bytes from which on the file is full; standard error never is.
  LogFile(std::string path, size_t limit);

  /// Appends `bytes` in one write, as far as the system takes them in one.
  void Write(std::string_view bytes);

 private:
  UniqueFd Open() const;
  void PutAwayIfFull();

  const std::string m_path;
  const size_t m_limit;
  std::mutex m_mutex;
  size_t m_unchecked = SIZE_MAX / 2;  ///< bytes written here since the file's size was looked at; at first it was not
  UniqueFd m_fd;                      ///< none: standard error
};

}  // namespace sim

#endif
