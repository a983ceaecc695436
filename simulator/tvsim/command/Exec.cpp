// SPDX-License-Identifier: Apache-2.0
#include <fstream>
#include <iostream>

#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/command/Command.h"
#include "simulator/tvsim/scenario/ScenarioPlayer.h"

namespace sim::tvsim {
namespace {

struct ExecOptions {
  SessionOptions session;
  std::string file;
  bool fast = false;  ///< without the recorded pauses
  int times = 1;
};

/// The scenario, read whole and checked, so that nothing is played of one that is written wrongly.
Result<std::vector<Step>> ReadScenario(const std::string& file) {
  std::ifstream opened;
  if (file != "-") {
    opened.open(file);
    if (!opened) {
      return Error{ENOENT, "cannot read " + file};
    }
  }
  Result<std::vector<Step>> steps = ParseScenario(file == "-" ? std::cin : opened);
  if (!steps) {
    return Error{EINVAL, file + ":" + steps.error().reason};
  }
  for (const Step& step : *steps) {
    if (const auto wrong = ScenarioPlayer::Check(step)) {
      return Error{EINVAL, file + ":" + std::to_string(step.line) + ": " + *wrong};
    }
  }
  return steps;
}

int Exec(const ExecOptions& options) {
  const Result<std::vector<Step>> steps = ReadScenario(options.file);
  if (!steps) {
    return Fail(kNotReady, steps.error().reason);
  }
  return RunInSession(options.session,
                      [&](Television& television) { return ScenarioPlayer(television, options.file).Play(*steps); });
}

int Replay(const ExecOptions& options) {
  Result<std::vector<Step>> steps = ReadScenario(options.file);
  if (!steps) {
    return Fail(kNotReady, steps.error().reason);
  }
  if (options.fast) {
    std::erase_if(*steps, [](const Step& step) { return step.words[0] == "wait"; });
  }
  return RunInSession(options.session, [&](Television& television) {
    int status = kDone;
    for (int time = 0; time < options.times && status == kDone && television.Interruption().empty(); ++time) {
      status = ScenarioPlayer(television, options.file).Play(*steps);
    }
    return status;
  });
}

}  // namespace

std::function<int()> ConfigureExec(CLI::App& app) {
  auto options = std::make_shared<ExecOptions>();
  app.add_option("FILE", options->file, "The scenario; - for standard input")->required();
  AddSessionOptions(app, options->session);
  return [options] { return Exec(*options); };
}

std::function<int()> ConfigureReplay(CLI::App& app) {
  auto options = std::make_shared<ExecOptions>();
  app.add_option("FILE", options->file, "What --record has written")->required();
  app.add_flag("--fast", options->fast, "Without the pauses that were recorded");
  app.add_option("--times", options->times, "How often")->capture_default_str()->check(CLI::Range(1, 1000000));
  AddSessionOptions(app, options->session);
  return [options] { return Replay(*options); };
}

}  // namespace sim::tvsim
