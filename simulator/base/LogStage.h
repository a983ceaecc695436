// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_BASE_LOGSTAGE_H
#define SIMULATOR_BASE_LOGSTAGE_H

#include <functional>
#include <memory>
#include <string_view>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"

namespace sim {

/// Memory in which a thread's lines of a log wait while it holds them, so that those of a command cost one write
/// together. The process that logs shares it with the one that started it: no line is lost when it is killed, and those
/// of a process that hangs can be written too. Any thread; not inherited by processes that are forked.
class LogStage {
 public:
  using Writer = std::function<void(std::string_view lines)>;

  /// The memory of a new one, to be inherited as the descriptor whose number stands in OLM_LOG_STAGE.
  static Result<UniqueFd> MakeMemory();
  /// `memory` is still the caller's. Errors: it is none of these.
  static Result<std::unique_ptr<LogStage>> Open(int memory);
  ~LogStage();
  LogStage(const LogStage&) = delete;
  LogStage& operator=(const LogStage&) = delete;

  /// The calling thread's lines wait from now on: until `Release`, until there is no room, or until another thread has
  /// a line. One thread at a time.
  void Hold();
  void Release(const Writer& write);

  /// Keeps `line` if the calling thread holds its lines, or writes it behind those that waited.
  void Add(std::string_view line, const Writer& write);
  /// Writes those that wait.
  void Flush(const Writer& write);

 private:
  struct Shared;
  class Lock;
  explicit LogStage(Shared* shared) : m_shared(shared) {}

  bool IsHolder() const;
  bool Keep(std::string_view line);
  void FlushLocked(const Writer& write);
  void BeginAnewLocked();

  Shared* const m_shared;
};

/// Holds the calling thread's log lines for a scope, where its process was given a stage. One scope at a time.
class HeldLog {
 public:
  HeldLog();
  ~HeldLog();
  HeldLog(const HeldLog&) = delete;
  HeldLog& operator=(const HeldLog&) = delete;
};

/// Writes the lines that wait; for who tells somebody else of something that they are about.
void FlushLog();

}  // namespace sim

#endif
