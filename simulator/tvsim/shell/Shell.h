// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SHELL_SHELL_H
#define SIMULATOR_TVSIM_SHELL_SHELL_H

#include <string>

#include "simulator/tvsim/scenario/ScenarioPlayer.h"
#include "simulator/tvsim/session/Television.h"

namespace sim::tvsim {

/// Lines of a scenario, typed one by one: results and events are shown as they come. On a terminal with history and
/// completion; from a pipe line by line. One at a time in a process: the line editor keeps its state in globals.
class Shell {
 public:
  explicit Shell(Television& television);

  /// Until the end of input, "exit", or an interruption. Returns an exit status: of a pipe kFailed when a line failed.
  int Run();

 private:
  int RunOnTerminal();
  int RunOnPipe();

  /// False when the line failed.
  bool Play(const std::string& line);
  void TakeLine(const char* line);
  void ShowAbovePrompt(const std::string& text);

  Television& m_television;
  ScenarioPlayer m_player;
  bool m_on_terminal = false;
  bool m_prompting = false;  ///< the prompt stands on the terminal's last line
  bool m_over = false;
};

}  // namespace sim::tvsim

#endif
