// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/shell/Shell.h"

#include <editline/readline.h>
#include <glib-unix.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <sstream>

#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/shell/Completion.h"

namespace sim::tvsim {
namespace {

constexpr const char* kPrompt = "tv> ";
constexpr int kRememberedLines = 1000;

/// The editor's callback takes no argument of ours.
Shell* g_shell = nullptr;

/// XDG's folder for what is kept between runs; empty when there is none.
std::string HistoryFile() {
  const char* state = std::getenv("XDG_STATE_HOME");
  const char* home = std::getenv("HOME");
  if ((state == nullptr || *state != '/') && home == nullptr) {
    return "";
  }
  const std::filesystem::path folder =
      (state != nullptr && *state == '/' ? std::filesystem::path(state)
                                         : std::filesystem::path(home) / ".local/state") /
      "tvsim";
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  return error ? "" : (folder / "history").string();
}

}  // namespace

Shell::Shell(Television& television)
    : m_television(television), m_player(television, "shell"), m_on_terminal(isatty(STDIN_FILENO) != 0) {
  Television::Observer observer;
  observer.on_event = [this](const SessionEvent& event) {
    ShowAbovePrompt("event " + std::to_string(event.event.number) + " " + event.event.name);
  };
  television.Observe(std::move(observer));
}

int Shell::Run() {
  Say(m_television.Describe() + "; \"help\" lists what there is, the end of input ends the session");
  return m_on_terminal ? RunOnTerminal() : RunOnPipe();
}

int Shell::RunOnPipe() {
  int status = kDone;
  for (std::string line; !m_over && m_television.Interruption().empty() && std::getline(std::cin, line);) {
    status = Play(line) ? status : kFailed;
  }
  return status;
}

int Shell::RunOnTerminal() {
  const std::string history = HistoryFile();
  using_history();
  stifle_history(kRememberedLines);
  if (!history.empty()) {
    read_history(history.c_str());
  }
  g_shell = this;
  CompleteScenarioLines();
  rl_callback_handler_install(kPrompt, [](char* line) { g_shell->TakeLine(line); });
  m_prompting = true;
  const guint input = g_unix_fd_add(
      STDIN_FILENO, G_IO_IN,
      [](gint, GIOCondition, gpointer) -> gboolean {
        rl_callback_read_char();
        return G_SOURCE_CONTINUE;
      },
      nullptr);
  while (!m_over && m_television.Interruption().empty()) {
    g_main_context_iteration(nullptr, TRUE);
  }
  g_source_remove(input);
  rl_callback_handler_remove();
  g_shell = nullptr;
  if (!history.empty()) {
    write_history(history.c_str());
  }
  return kDone;
}

/// A line from the editor, which owns it; null at the end of input.
void Shell::TakeLine(const char* line) {
  m_prompting = false;
  if (line == nullptr) {
    Say("");
    m_over = true;
    return;
  }
  if (*line != '\0') {
    add_history(line);
    Play(line);
  }
  m_prompting = !m_over;
}

bool Shell::Play(const std::string& line) {
  std::istringstream text(line);
  const Result<std::vector<Step>> steps = ParseScenario(text);
  if (!steps) {
    Complain(steps.error().reason);
    return false;
  }
  for (const Step& step : *steps) {
    if (step.words[0] == "exit") {
      m_over = true;
    } else if (step.words[0] == "help") {
      Say(ScenarioPlayer::Help());
    } else if (const auto failure = m_player.PlayOne(step)) {
      Complain(*failure);
      return false;
    }
  }
  return true;
}

void Shell::ShowAbovePrompt(const std::string& text) {
  if (!m_prompting || !m_on_terminal) {
    Say(text);
    return;
  }
  std::fputs("\r\033[K", stdout);
  Say(text);
  rl_forced_update_display();
}

}  // namespace sim::tvsim
