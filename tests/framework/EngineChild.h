// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_FRAMEWORK_ENGINECHILD_H
#define TESTS_FRAMEWORK_ENGINECHILD_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/base/UniqueFd.h"
#include "tests/base/TemporaryFolder.h"

namespace sim::framework {

/// A running fake engine, and the application's side of its channel.
class EngineChild {
 public:
  enum class Channel { kSocket, kStandardStreams };

  /// `environment`: "NAME=value", on top of the test's own.
  explicit EngineChild(Channel channel = Channel::kSocket, const std::vector<std::string>& environment = {});
  /// Kills what still runs.
  ~EngineChild();

  void Send(std::string_view bytes);
  /// The next line, without its end; fails and returns "(nothing)" after a minute, "(end)" at the end.
  std::string Receive();
  /// Sends a command as a request with id 1.
  void Request(const std::string& command, const std::vector<std::string>& params = {});
  /// The same, and returns the reply's line.
  std::string Execute(const std::string& command, const std::vector<std::string>& params = {});

  /// No more bytes come to the engine; what it sends can still be received.
  void EndInput();
  /// The engine has nobody on the other side any more.
  void Hang();

  void Signal(int signal) const;
  /// Waits for the end, at most a minute: the exit status, or the signal's number below zero.
  int Wait();

  /// What stands in the log: a line a step of the engine's life.
  std::vector<std::string> Log() const;
  /// Waits until `line` stands in the log, at most a minute.
  void WaitForLog(const std::string& line) const;
  /// What was written to standard error.
  std::string StandardError() const;

 private:
  void Exec(const std::vector<std::string>& environment, int in, int out, bool inherited) const;

  TemporaryFolder m_folder;
  pid_t m_pid = -1;
  UniqueFd m_toEngine;
  UniqueFd m_fromEngine;
  std::string m_received;
};

}  // namespace sim::framework

#endif
