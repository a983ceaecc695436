// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_CONTROL_CONTROLCONTEXT_H
#define SIMULATOR_TVSIM_CONTROL_CONTROLCONTEXT_H

#include <memory>
#include <string>
#include <vector>

#include "simulator/tvsim/screen/ScreenWatch.h"
#include "simulator/tvsim/session/Television.h"

namespace sim::tvsim {

/// What all clients of a session share.
struct ControlContext {
  Television& television;
  std::vector<std::string> pictures{};          ///< what the session was given to show, absolute paths
  std::function<void(int64_t)> screen_changed;  ///< tells those who follow the screen
  std::function<void()> log_wanted;             ///< begins to read the engine's log
  std::unique_ptr<ScreenWatch> screen{};        ///< from the first time somebody looks

  /// Errors: see ScreenWatch.
  Result<ScreenWatch*> WatchScreen() {
    if (!screen) {
      auto started = ScreenWatch::Start(television.GetScreen(), screen_changed);
      if (!started) {
        return started.error();
      }
      screen = std::move(*started);
    }
    return screen.get();
  }
};

/// What one client has asked to be told.
struct Subscriptions {
  bool log = false;
  bool screen = false;
};

}  // namespace sim::tvsim

#endif
