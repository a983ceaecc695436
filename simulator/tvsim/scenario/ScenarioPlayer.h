// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SCENARIO_SCENARIOPLAYER_H
#define SIMULATOR_TVSIM_SCENARIO_SCENARIOPLAYER_H

#include <optional>
#include <string>
#include <vector>

#include "simulator/tvsim/scenario/Scenario.h"
#include "simulator/tvsim/session/Television.h"

namespace sim::tvsim {

/// Plays the steps of a scenario on a television. A step whose first word is none of the statements (see the table in
/// the source) is a command of the engine with up to four texts; its result waits for an "expect".
class ScenarioPlayer {
 public:
  using Failure = std::optional<std::string>;

  /// `name`: what the scenario is called in messages, its file.
  ScenarioPlayer(Television& television, std::string name) : m_television(television), m_name(std::move(name)) {}

  /// What is wrong with a step before anything is played: a missing or surplus word, a number without its unit.
  static Failure Check(const Step& step);

  /// Up to the first step that fails. Says each step and its result on standard output, and what failed on standard
  /// error. Returns an exit status.
  int Play(const std::vector<Step>& steps);

  /// Checks and plays one step; why it failed, or nothing.
  Failure PlayOne(const Step& step);

  static std::vector<std::string> StatementNames();
  /// The statements with their words, a line each.
  static std::string Help();

 private:
  using Words = std::vector<std::string>;

  /// One kind of step.
  struct Statement {
    const char* name;
    const char* usage;  ///< the words that follow the name; one in [brackets] or ending in "..." may be left out
    Failure (ScenarioPlayer::*play)(const Words& words);
  };
  static const Statement kStatements[];
  static const Statement* Find(const std::string& name);

  Failure PlayStep(const Step& step);
  Failure Command(const Words& words);
  Failure CommandWithParamList(const Words& words);
  Failure Expect(const Words& words);
  Failure ExpectError(const Words& words);
  Failure ExpectEvent(const Words& words);
  Failure ExpectNoEvent(const Words& words);
  Failure ExpectLog(const Words& words);
  Failure ExpectScreenshot(const Words& words);
  Failure Screenshot(const Words& words);
  Failure State(const Words& words);
  Failure Fault(const Words& words);
  Failure Wait(const Words& words);
  Failure Open(const Words& words);
  Failure Close(const Words& words);

  void Answered(const rpc::Answer& answer);

  Television& m_television;
  const std::string m_name;
  std::optional<rpc::Answer> m_answer;  ///< of the last command
};

}  // namespace sim::tvsim

#endif
