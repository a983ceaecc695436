// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SESSION_SESSION_H
#define SIMULATOR_TVSIM_SESSION_SESSION_H

#include <functional>
#include <optional>
#include <string>

#include "simulator/tvsim/session/Television.h"

namespace sim::tvsim {

/// Where a session shows its pictures.
enum class DisplayChoice {
  kAuto,      ///< on the X server on ":0" where there is one, else on a screen of its own
  kOwn,       ///< on a screen of its own that nobody sees
  kExisting,  ///< on the X server on ":0"
};

struct SessionOptions {
  std::string name = "tv";
  DisplayChoice display = DisplayChoice::kAuto;
  ScreenSize size;
  bool compositor = false;  ///< on a screen of its own
  std::string engine = "picture-player";
  std::string engine_log;  ///< a file; empty: one in the session's folder, which goes with it
  std::string record;      ///< a file for what happens, as a scenario; empty: none
  int answer_limit_ms = 30000;
  int quick_restarts = 5;  ///< of the engine, or the X server, within a minute; the next ones wait
  Application application;
};

class ControlServer;

/// A session that runs.
struct OpenSession {
  Television& television;
  ControlServer& control;
  const std::string& folder;  ///< see RuntimeFolder
};

/// Switches a television on, runs `work` and switches it off. All of it happens in a guarded child process (Guard.h):
/// however tvsim ends, no engine, X server, socket or file of the session stays.
/// Returns what `work` returns; kNotReady, with a complaint, when the session could not be made.
int RunInSession(const SessionOptions& options, const std::function<int(const OpenSession&)>& work);
int RunInSession(const SessionOptions& options, const std::function<int(Television&)>& work);

}  // namespace sim::tvsim

#endif
