// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SOAK_PLAYER_H
#define TESTS_SOAK_PLAYER_H

#include <sys/types.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/base/UniqueFd.h"

namespace soak {

/// The engine in a process of its own, driven over its channel one command at a time. Every failure is an exception
/// that says what was waited for: whoever soaks has nothing to go on with.
class Player {
 public:
  /// `environment`: on top of this process's.
  Player(const std::string& program, const std::map<std::string, std::string>& environment);
  ~Player();
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  void Open(const std::string& application, const std::string& widget);
  /// The result as JSON: an integer bare, a text in quotation marks.
  std::string Execute(const std::string& command, const std::vector<std::string>& params = {});
  /// Throws unless the result is 1.
  void Do(const std::string& command, const std::vector<std::string>& params = {});
  /// Takes events until `event` has come; those before it are dropped.
  void AwaitEvent(int event);
  /// Drops what has come already.
  void DropEvents() { m_events.clear(); }

  /// Ends the channel and waits: the exit status, or the signal's number below zero.
  int End();

  pid_t Pid() const { return m_pid; }

 private:
  std::string Call(const std::string& method, const std::string& params);
  /// Reads one line: an event is kept, the answer to `id` returned, with an empty text for an event.
  std::string ReadMessage();

  pid_t m_pid = -1;
  sim::UniqueFd m_channel;
  std::string m_received;
  std::vector<int> m_events;
  int m_lastId = 0;
};

}  // namespace soak

#endif
