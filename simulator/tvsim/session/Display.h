// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SESSION_DISPLAY_H
#define SIMULATOR_TVSIM_SESSION_DISPLAY_H

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "simulator/base/Result.h"
#include "simulator/tvsim/engine/FdWatch.h"
#include "simulator/tvsim/engine/RestartPace.h"
#include "simulator/tvsim/engine/Timer.h"
#include "simulator/tvsim/screen/Screen.h"
#include "simulator/tvsim/session/PrivateDisplay.h"

namespace sim::tvsim {

struct DisplayOptions {
  std::optional<ScreenSize> own;  ///< make a screen of this size; without it the one on ":0" is used
  bool compositor = false;        ///< on that screen, run a compositor too
  std::string folder;             ///< see `PrivateDisplay::Start`
  int quick_restarts = 5;         ///< of an X server of its own within a minute; the next ones wait
};

/// The screen of a session, supervised. When its X server goes, that is told. Where only the connection was cut it is
/// made again, and nobody need know.
/// On the default main context. Loop thread only; the callbacks run there.
class Display {
 public:
  struct Callbacks {
    /// What shows pictures has lost its screen. `reason`: a sentence.
    std::function<void(const std::string& reason)> on_lost;
    /// There is a screen again, ready for the engine's window.
    std::function<void()> on_back;
  };

  /// Errors: there is no screen, or none that an engine can use; what to do about it.
  static Result<std::unique_ptr<Display>> Open(DisplayOptions options, Callbacks callbacks);
  ~Display();
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;

  /// Stays the same object, whatever server it shows.
  Screen& GetScreen() { return *m_screen; }
  bool IsOwn() const { return m_options.own.has_value(); }

  /// Takes a lost screen up again, once there is one: an X server of the session's own is started again, for which
  /// everything waits; another one is looked for four times a second.
  void ComeBack();

  /// Asks whether the X server is still there; where it has gone, that is told from here. Waits a second for one that
  /// hangs.
  bool IsThere();

 private:
  Display(DisplayOptions options, Callbacks callbacks)
      : m_options(std::move(options)), m_callbacks(std::move(callbacks)), m_pace(m_options.quick_restarts) {}

  Status StartServer();
  Status Prepare(std::chrono::milliseconds patience);
  void Watch();
  void Unwatch();
  void OnHangUp();
  bool ReconnectToSameServer();
  void Try();
  void TryAfter(std::chrono::milliseconds wait);

  const DisplayOptions m_options;
  const Callbacks m_callbacks;
  std::unique_ptr<PrivateDisplay> m_server;
  std::unique_ptr<Screen> m_screen;
  pid_t m_server_process = 0;
  std::unique_ptr<FdWatch> m_server_end;
  std::unique_ptr<FdWatch> m_screen_end;
  bool m_is_lost = false;
  RestartPace m_pace;
  std::unique_ptr<Timer> m_next_try;
};

}  // namespace sim::tvsim

#endif
