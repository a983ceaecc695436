// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_ENGINE_ENGINE_H
#define SIMULATOR_TVSIM_ENGINE_ENGINE_H

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/base/LogStage.h"
#include "simulator/base/Result.h"
#include "simulator/rpc/Client.h"
#include "simulator/tvsim/engine/Alarm.h"
#include "simulator/tvsim/engine/FdWatch.h"
#include "simulator/tvsim/engine/RestartPace.h"
#include "simulator/tvsim/process/ChildProcess.h"

namespace sim::tvsim {

class Timer;

/// The event numbers of the engine that a slide show waits for.
inline constexpr int64_t kRenderError = 6;
inline constexpr int64_t kRenderCompleted = 8;
inline constexpr int64_t kDecodeCompleted = 10;

/// One notification of the engine to its application.
struct EngineEvent {
  int64_t number = 0;
  std::string name;  ///< "RENDER_COMPLETED" for example
  std::string param1;
  std::string param2;
};

/// Ours, in the range that JSON-RPC 2.0 leaves to servers: the engine did not answer in time.
inline constexpr int kNoAnswerInTime = -32001;

struct EngineOptions {
  std::string program = "picture-player";
  std::string log_file;                                          ///< of the engine process; made where it is missing
  std::vector<std::pair<std::string, std::string>> environment;  ///< added to that of this process
  std::chrono::milliseconds answer_limit{30000};  ///< for one command; the first decoding of a large picture fits in
  int quick_restarts = 5;                         ///< within a minute; the next ones wait
};

/// The engine process, supervised: when it ends, or is ended because it does not answer, that is reported and it is
/// started again, as soon as `RestartPace` says.
/// Loop thread only; the callbacks run there.
class Engine {
 public:
  struct Callbacks {
    std::function<void(const EngineEvent&)> on_event;
    /// `restarted`: a new engine takes commands already; it has no application open. Else one comes later.
    std::function<void(const ProcessEnd&, bool restarted)> on_exit;
    /// That one has come.
    std::function<void()> on_late_start;
    /// Asked before an engine is started again. When it answers false none is, until `Resume`.
    std::function<bool()> may_start;
  };

  /// Runs on the default main context. Errors: there is no such program or it cannot be started.
  static Result<std::unique_ptr<Engine>> Start(EngineOptions options, Callbacks callbacks);

  /// Ends the engine: closes its channel, waits for its orderly end, kills it when that takes too long.
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  /// `on_answer` is called exactly once, unless this engine goes before. When the engine ends or does not answer within
  /// the limit, it is called with an error once the next engine is there.
  void Call(std::string_view method, rpc::JsonText params, rpc::Client::OnAnswer on_answer);

  /// Ends the engine and starts none until `Resume`; calls meanwhile fail with `reason`. The end is reported as any
  /// other. Where none is running only the second half happens.
  void Suspend(const std::string& reason);
  /// The next engine comes at once. The end of the one before has been reported by now.
  void Resume();

  /// False between an engine's end and a start that waits.
  bool IsRunning() const { return m_process != nullptr; }
  /// Not while one that was ended by `Suspend` still is.
  bool TakesCommands() const { return m_client != nullptr && m_suspended.empty(); }
  pid_t ProcessId() const { return m_process ? m_process->Id() : -1; }
  /// What the engine that ended last had not answered: the oldest call's method and parameters. Empty: it was idle.
  const std::string& InterruptedCall() const { return m_interrupted_call; }
  int Restarts() const { return m_restarts; }
  const std::string& LogFile() const { return m_options.log_file; }

 private:
  Engine(EngineOptions options, Callbacks callbacks);

  Status Launch();
  void OnNotification(const std::string& method, const rpc::JsonText& params);
  void LookAfterCalls();
  void LookAgainWithin(std::chrono::nanoseconds longest_wait);
  void WriteLastLines();
  void TellOfSlowAnswer();
  void GiveUp();
  void Kill(rpc::CallError reason);
  void OnProcessEnd();
  void OnChannelClosed();
  void Finish();
  bool LaunchAgain();
  void LaunchLater();

  const EngineOptions m_options;
  const Callbacks m_callbacks;
  std::unique_ptr<LogStage> m_log_stage;  ///< of the engine that runs, or ran last
  std::unique_ptr<ChildProcess> m_process;
  std::unique_ptr<rpc::Client> m_client;
  std::unique_ptr<rpc::Client> m_dead_client;  ///< of the engine before; its callbacks may still be on the stack
  std::unique_ptr<FdWatch> m_end;              ///< until it has come
  bool m_process_ended = false;
  bool m_channel_closed = false;
  std::optional<rpc::CallError> m_killed;           ///< why it was ended from here
  std::string m_suspended;                          ///< why none is started; empty: one may be
  std::unique_ptr<Alarm> m_answer_alarm;            ///< is set while calls are open
  std::unique_ptr<Timer> m_patience;                ///< runs between the end of one and of the other
  std::vector<rpc::Client::OpenCall> m_lost_calls;  ///< until it is known how the engine ended
  std::string m_interrupted_call;
  rpc::Client::Clock::time_point m_told_of_call;  ///< that the log has been told is slow
  int m_restarts = 0;
  RestartPace m_pace;
  std::unique_ptr<Timer> m_late_start;
};

}  // namespace sim::tvsim

#endif
