// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SESSION_TELEVISION_H
#define SIMULATOR_TVSIM_SESSION_TELEVISION_H

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulator/base/EndSignals.h"
#include "simulator/tvsim/engine/Engine.h"
#include "simulator/tvsim/engine/FdWatch.h"
#include "simulator/tvsim/engine/Wire.h"
#include "simulator/tvsim/session/Display.h"
#include "simulator/vconf/include/Store.h"

namespace sim::tvsim {

/// An event as the session remembers it.
struct SessionEvent {
  int64_t sequence = 0;      ///< 1, 2, 3 ... within the session, whatever engine sent it
  int64_t milliseconds = 0;  ///< since 1970
  std::string picture;       ///< the path of the last command that named one
  EngineEvent event;
};

struct TelevisionOptions {
  std::string folder;  ///< of the session, see RuntimeFolder
  DisplayOptions display;
  EngineOptions engine;
};

/// A television that is switched on: screen, key store and engine, and the calls with which an application drives it.
/// When the X server goes, so does the engine; both are there again as soon as it is.
/// The waiting calls run the default main context meanwhile; they end early, with an error, when the session is
/// interrupted (SIGINT, SIGTERM, SIGHUP). Loop thread only.
class Television {
 public:
  using Patience = std::chrono::milliseconds;

  /// Errors: what is missing on this machine, and what to do about it.
  static Result<std::unique_ptr<Television>> SwitchOn(TelevisionOptions options);
  ~Television();
  Television(const Television&) = delete;
  Television& operator=(const Television&) = delete;

  /// Opens the application in the engine, and again in every engine that has to be started later.
  Status OpenApplication(const Application& application);
  Status CloseApplication();

  /// Runs one command of the engine; its result, an integer or a text, as JSON.
  rpc::Answer Execute(const std::string& command, const std::vector<std::string>& params);
  rpc::Answer ExecuteWithParamList(const std::string& command, const std::vector<std::string>& params);

  /// As the two above, without waiting.
  void SendOpen(const Application& application, rpc::Client::OnAnswer on_answer);
  void SendClose(rpc::Client::OnAnswer on_answer);

  /// Sends a command and does not wait. `method`: "engine.execute" or "engine.executeWithParamList". `on_answer` as for
  /// `Engine::Call`. `written`: `command` and `params` as the method takes them, where somebody has written them
  /// already.
  void SendCommand(const std::string& method, const std::string& command, const std::vector<std::string>& params,
                   rpc::Client::OnAnswer on_answer, rpc::JsonText written = {});

  /// Sets the application's state key: "pause", "resume" or "destroy".
  Status SetState(const std::string& state);

  /// Puts these faults in the place of those before; none end them. See Faults.h.
  Status SetFaults(const std::vector<std::string>& rules);
  const std::vector<std::string>& Faults() const { return m_faults; }

  /// Takes the oldest event that was not taken yet, waiting for one; nothing when none came in time.
  std::optional<EngineEvent> TakeEvent(Patience patience);
  bool HasEvent() const { return !m_events.empty(); }
  void ForgetEvents() { m_events.clear(); }

  /// Sees to everything until there is an `Interruption`.
  void RunUntilInterrupted();
  /// Waits, and sees to everything else meanwhile.
  void Pause(Patience time);
  /// Waits until `condition` holds; false when it does not within `patience`. It is looked at whenever something
  /// happened on the main context.
  bool PauseUntil(Patience patience, const std::function<bool()>& condition);

  /// Whether the screen was lost since this was last asked; where it was, waits for the engine on the next one.
  bool ScreenWasLost();

  /// What the screen shows, as a PNG.
  Status TakeScreenshot(const std::string& file);
  Screen& GetScreen() { return m_display->GetScreen(); }

  /// Why the session is over before its work is; empty while it is not.
  const std::string& Interruption() const { return m_interruption; }

  /// What the session runs on, for people: "screen 1920x1080 of its own, openbox".
  std::string Describe() const;
  const Engine& GetEngine() const { return *m_engine; }
  const std::optional<Application>& OpenedApplication() const { return m_application; }

  /// The last events, at most `kRememberedEvents`, oldest first.
  const std::deque<SessionEvent>& History() const { return m_history; }
  static constexpr size_t kRememberedEvents = 1000;

  /// Who looks on besides what this class does itself; each of the functions may be missing.
  struct Observer {
    std::function<void(const SessionEvent&)> on_event;
    std::function<void(const ProcessEnd&, bool restarted)> on_engine_exit;
    std::function<void()> on_late_start;  ///< of an engine that was not restarted at once
    std::function<void()> on_new_screen;  ///< the X server is another one
    /// `words`: the command and its texts. Before the answer reaches who asked.
    std::function<void(const std::string& method, const std::vector<std::string>& words, const rpc::Answer&)>
        on_command;
    std::function<void(const std::string& state)> on_state;
  };
  void Observe(Observer observer) { m_observers.push_back(std::move(observer)); }

 private:
  explicit Television(TelevisionOptions options);

  Status StartDisplay();
  Status StartEngine();
  void OnSignal();
  void Interrupt(const std::string& reason);
  void OnScreenLost(const std::string& reason);
  void OnScreenBack();
  void OnEvent(const EngineEvent& event);
  void OnEngineExit(const ProcessEnd& end, bool restarted);
  void RecordCrash(const ProcessEnd& end) const;
  void OnLateStart();
  std::string FaultsFile() const;
  void OpenAgain();

  /// Calls that function of each observer that has it.
  template <typename Function, typename... Arguments>
  void Tell(Function Observer::*function, const Arguments&... arguments) {
    for (const Observer& observer : m_observers) {
      if (observer.*function) {
        (observer.*function)(arguments...);
      }
    }
  }

  /// Starts a call by `send`, which is given what takes its answer, and waits for that.
  rpc::Answer Await(const std::function<void(rpc::Client::OnAnswer)>& send);

  const TelevisionOptions m_options;
  const EndSignals m_signals;
  const FdWatch m_signal_watch;
  std::unique_ptr<Display> m_display;
  bool m_screen_was_lost = false;
  std::unique_ptr<vconf::Store> m_store;
  std::unique_ptr<Engine> m_engine;
  std::optional<Application> m_application;
  std::vector<std::string> m_faults;
  std::string m_picture;             ///< of the last command that named one
  std::deque<EngineEvent> m_events;  ///< not taken yet
  std::deque<SessionEvent> m_history;
  int64_t m_last_sequence = 0;
  std::vector<Observer> m_observers;
  std::string m_interruption;
};

}  // namespace sim::tvsim

#endif
