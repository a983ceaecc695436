// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_PROCESS_CHILDPROCESS_H
#define SIMULATOR_TVSIM_PROCESS_CHILDPROCESS_H

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"

namespace sim::tvsim {

/// How a process ended, as waitpid tells it.
struct ProcessEnd {
  int status = 0;  ///< exit status, or the signal's number when `signalled`
  bool signalled = false;

  /// "exit status 3" or "signal 11 (Segmentation fault)".
  std::string Text() const;
};

struct ProcessRequest {
  std::vector<std::string> arguments;  ///< the first is the program, looked up in PATH when it has no slash
  std::vector<std::pair<std::string, std::string>> environment;  ///< added to that of this process
  std::vector<std::pair<int, int>> descriptors;                  ///< (number here, number there)
};

/// A child of this process in a process group of its own, reading nothing from standard input unless it is given
/// something. It gets SIGKILL when the thread that started it ends, and when this object goes.
class ChildProcess {
 public:
  /// Errors: the program cannot be executed.
  static Result<ChildProcess> Start(const ProcessRequest& request);

  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess& operator=(ChildProcess&& other) noexcept;
  ~ChildProcess();

  pid_t Id() const { return m_pid; }
  /// A descriptor that polls readable once the process has ended.
  int EndDescriptor() const { return m_pidfd.Get(); }

  /// Does nothing when the process has ended.
  void Signal(int number) const;

  /// How it ended, or nothing when it is still running after `patience`.
  std::optional<ProcessEnd> Wait(std::chrono::milliseconds patience);

  /// Asks by SIGTERM, and after `patience` ends it by SIGKILL.
  ProcessEnd End(std::chrono::milliseconds patience);

 private:
  ChildProcess(pid_t pid, UniqueFd pidfd) : m_pid(pid), m_pidfd(std::move(pidfd)) {}

  pid_t m_pid = -1;
  UniqueFd m_pidfd;
  std::optional<ProcessEnd> m_end;
};

/// Where a program that belongs to this one stands: beside this executable, else in PATH. Empty when nowhere.
std::string FindProgram(const std::string& name);

}  // namespace sim::tvsim

#endif
