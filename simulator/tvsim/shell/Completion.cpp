// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/shell/Completion.h"

#include <editline/readline.h>

#include <algorithm>
#include <cstring>

#include "simulator/tvsim/control/CommandTable.h"
#include "simulator/tvsim/scenario/ScenarioPlayer.h"

namespace sim::tvsim {
namespace {

/// The editor asks for one match after the other, until null; it frees them.
char* NextFirstWord(const char* beginning, int how_often) {
  static std::vector<std::string> words;
  if (how_often == 0) {
    words = FirstWords(beginning);
  }
  const auto index = static_cast<size_t>(how_often);
  return index < words.size() ? strdup(words[index].c_str()) : nullptr;
}

char** Complete(const char* beginning, int start, int) {
  return rl_completion_matches(beginning, start == 0 ? NextFirstWord : rl_filename_completion_function);
}

}  // namespace

std::vector<std::string> FirstWords(const std::string& beginning) {
  std::vector<std::string> words = ScenarioPlayer::StatementNames();
  for (const EngineCommand& command : EngineCommands()) {
    words.emplace_back(command.name);
  }
  std::erase_if(words, [&](const std::string& word) { return !word.starts_with(beginning); });
  std::ranges::sort(words);
  return words;
}

void CompleteScenarioLines() {
  rl_attempted_completion_function = Complete;
}

}  // namespace sim::tvsim
