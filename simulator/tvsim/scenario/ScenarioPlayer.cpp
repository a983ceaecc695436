// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/scenario/ScenarioPlayer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sstream>

#include "simulator/base/Faults.h"
#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/engine/LogTail.h"

namespace sim::tvsim {
namespace {

using Clock = std::chrono::steady_clock;
using Words = std::vector<std::string>;

constexpr std::chrono::milliseconds kScreensPatience(3000);
constexpr std::chrono::milliseconds kBetweenLooks(20);

std::string DecibelText(double likeness) {
  char text[64];
  std::snprintf(text, sizeof text, "%.1f dB", likeness);
  return text;
}

std::string Joined(const Words& words) {
  std::string text;
  for (const std::string& word : words) {
    text += (text.empty() ? "" : " ") + (word.empty() || word.find(' ') != std::string::npos ? '"' + word + '"' : word);
  }
  return text;
}

Words SplitUsage(const char* usage) {
  std::istringstream stream(usage);
  Words words;
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  return words;
}

/// What is wrong with `word` where the usage wants `wanted`.
bool Fits(const std::string& wanted, const std::string& word) {
  if (wanted == "TIME") {
    return ParseDuration(word).has_value();
  }
  if (wanted == "NUMBERdB") {
    return ParseDecibels(word).has_value();
  }
  if (wanted == "NUMBER") {
    return rpc::ReadInteger(word).has_value();
  }
  if (wanted == "pause|resume|destroy") {
    return word == "pause" || word == "resume" || word == "destroy";
  }
  return wanted != "within" || word == "within";
}

/// "fault none" ends all faults.
bool IsNoFault(const Words& words) {
  return words.size() == 2 && words[1] == "none";
}

Clock::time_point DeadlineOf(const std::string& duration) {
  return Clock::now() + *ParseDuration(duration);
}

std::chrono::milliseconds Left(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
  return std::max(left, std::chrono::milliseconds(0));
}

}  // namespace

// What a scenario may hold besides the engine's commands.
const ScenarioPlayer::Statement ScenarioPlayer::kStatements[] = {
    {"expect", "RESULT", &ScenarioPlayer::Expect},
    {"expect-error", "NUMBER", &ScenarioPlayer::ExpectError},
    {"expect-event", "NUMBER within TIME", &ScenarioPlayer::ExpectEvent},
    {"expect-no-event", "NUMBER within TIME", &ScenarioPlayer::ExpectNoEvent},
    {"expect-log", "TEXT within TIME", &ScenarioPlayer::ExpectLog},
    {"expect-screenshot", "FILE NUMBERdB", &ScenarioPlayer::ExpectScreenshot},
    {"screenshot", "FILE", &ScenarioPlayer::Screenshot},
    {"state", "pause|resume|destroy", &ScenarioPlayer::State},
    {"fault", "RULE...", &ScenarioPlayer::Fault},
    {"wait", "TIME", &ScenarioPlayer::Wait},
    {"open", "APPLICATION WIDGET", &ScenarioPlayer::Open},
    {"close", "", &ScenarioPlayer::Close},
    {"with-list", "COMMAND PARAM...", &ScenarioPlayer::CommandWithParamList},
};

const ScenarioPlayer::Statement* ScenarioPlayer::Find(const std::string& name) {
  const auto found = std::ranges::find(kStatements, name, &Statement::name);
  return found == std::end(kStatements) ? nullptr : found;
}

ScenarioPlayer::Failure ScenarioPlayer::Check(const Step& step) {
  const Statement* statement = Find(step.words[0]);
  constexpr size_t kMostParams = 4;
  if (statement == nullptr) {
    return step.words.size() <= 1 + kMostParams
               ? std::nullopt
               : Failure("a command takes up to four texts; \"with-list " + step.words[0] + " ...\" takes any number");
  }
  const Words usage = SplitUsage(statement->usage);
  const bool open_end = !usage.empty() && usage.back().ends_with("...");
  bool fits = open_end ? step.words.size() >= usage.size() : step.words.size() == usage.size() + 1;
  for (size_t i = 0; fits && i < usage.size() && i + 1 < step.words.size(); ++i) {
    fits = Fits(usage[i], step.words[i + 1]);
  }
  if (fits && step.words[0] == "fault" && !IsNoFault(step.words)) {
    const auto rule = ParseFaultRule(Joined({step.words.begin() + 1, step.words.end()}));
    return rule ? std::nullopt : Failure(rule.error().reason);
  }
  return fits ? std::nullopt
              : Failure(std::string("it is written \"") + statement->name + " " + statement->usage + "\"");
}

int ScenarioPlayer::Play(const std::vector<Step>& steps) {
  for (const Step& step : steps) {
    Say(m_name + ":" + std::to_string(step.line) + ": " + Joined(step.words));
    if (const Failure failure = PlayStep(step)) {
      return Fail(kFailed, m_name + ":" + std::to_string(step.line) + ": " + *failure);
    }
    if (!m_television.Interruption().empty()) {
      return kFailed;
    }
  }
  Say(m_name + ": " + std::to_string(steps.size()) + " steps done");
  return kDone;
}

ScenarioPlayer::Failure ScenarioPlayer::PlayOne(const Step& step) {
  const Failure wrong = Check(step);
  return wrong ? wrong : PlayStep(step);
}

std::vector<std::string> ScenarioPlayer::StatementNames() {
  std::vector<std::string> names;
  for (const Statement& statement : kStatements) {
    names.emplace_back(statement.name);
  }
  return names;
}

std::string ScenarioPlayer::Help() {
  std::string text = "COMMAND [PARAM [PARAM [PARAM [PARAM]]]]    a command of the engine\n";
  for (const Statement& statement : kStatements) {
    text += std::string(statement.name) + " " + statement.usage + "\n";
  }
  return text + "exit";
}

ScenarioPlayer::Failure ScenarioPlayer::PlayStep(const Step& step) {
  const Statement* statement = Find(step.words[0]);
  if (statement == nullptr) {
    return Command(step.words);
  }
  return (this->*statement->play)({step.words.begin() + 1, step.words.end()});
}

void ScenarioPlayer::Answered(const rpc::Answer& answer) {
  m_answer = answer;
  Say("  " + TextOf(answer));
}

ScenarioPlayer::Failure ScenarioPlayer::Command(const Words& words) {
  Answered(m_television.Execute(words[0], {words.begin() + 1, words.end()}));
  return std::nullopt;
}

ScenarioPlayer::Failure ScenarioPlayer::CommandWithParamList(const Words& words) {
  Answered(m_television.ExecuteWithParamList(words[0], {words.begin() + 1, words.end()}));
  return std::nullopt;
}

ScenarioPlayer::Failure ScenarioPlayer::Expect(const Words& words) {
  if (!m_answer) {
    return "there is no command before it";
  }
  const std::string text = TextOf(*m_answer);
  return text == words[0] ? std::nullopt : Failure("expected " + words[0] + ", the command answers " + text);
}

ScenarioPlayer::Failure ScenarioPlayer::ExpectError(const Words& words) {
  const auto* error = m_answer ? std::get_if<rpc::CallError>(&*m_answer) : nullptr;
  if (error == nullptr) {
    return "expected error " + words[0] + ", the command answers " + (m_answer ? TextOf(*m_answer) : "nothing");
  }
  return std::to_string(error->code) == words[0]
             ? std::nullopt
             : Failure("expected error " + words[0] + ", it is " + TextOf(*m_answer));
}

/// Events before the expected one are passed over.
ScenarioPlayer::Failure ScenarioPlayer::ExpectEvent(const Words& words) {
  const auto deadline = DeadlineOf(words[2]);
  std::string others;
  while (const auto event = m_television.TakeEvent(Left(deadline))) {
    if (std::to_string(event->number) == words[0]) {
      Say("  event " + words[0] + " " + event->name);
      return std::nullopt;
    }
    others += (others.empty() ? "; there came " : ", ") + std::to_string(event->number);
  }
  return "no event " + words[0] + " within " + words[2] + others;
}

ScenarioPlayer::Failure ScenarioPlayer::ExpectNoEvent(const Words& words) {
  const auto deadline = DeadlineOf(words[2]);
  while (const auto event = m_television.TakeEvent(Left(deadline))) {
    if (std::to_string(event->number) == words[0]) {
      return "event " + words[0] + " came";
    }
  }
  return std::nullopt;
}

/// What the screen shall show may still be on its way there, so it is looked at again and again.
ScenarioPlayer::Failure ScenarioPlayer::ExpectScreenshot(const Words& words) {
  const Result<Picture> expected = ReadPng(words[0]);
  if (!expected) {
    return expected.error().reason;
  }
  const auto deadline = Clock::now() + kScreensPatience;
  for (;;) {
    const Result<Picture> shown = m_television.GetScreen().Capture();
    const Result<double> likeness = shown ? Psnr(*expected, *shown) : shown.error();
    if (!likeness) {
      return likeness.error().reason;
    }
    const std::string text = DecibelText(*likeness);
    if (*likeness >= *ParseDecibels(words[1])) {
      Say("  " + text);
      return std::nullopt;
    }
    if (Clock::now() >= deadline || !m_television.Interruption().empty()) {
      return "the screen is like " + words[0] + " by " + text + " only, expected " + words[1];
    }
    m_television.Pause(kBetweenLooks);
  }
}

ScenarioPlayer::Failure ScenarioPlayer::ExpectLog(const Words& words) {
  const auto deadline = DeadlineOf(words[2]);
  while (!HasLineWith(m_television.GetEngine().LogFile(), words[0])) {
    if (Clock::now() >= deadline || !m_television.Interruption().empty()) {
      return "no line with \"" + words[0] + "\" in the engine's log within " + words[2];
    }
    m_television.Pause(kBetweenLooks);
  }
  return std::nullopt;
}

ScenarioPlayer::Failure ScenarioPlayer::Screenshot(const Words& words) {
  const Status taken = m_television.TakeScreenshot(words[0]);
  return taken ? std::nullopt : Failure(taken.error().reason);
}

ScenarioPlayer::Failure ScenarioPlayer::State(const Words& words) {
  const Status set = m_television.SetState(words[0]);
  return set ? std::nullopt : Failure(set.error().reason);
}

/// One more besides those before it.
ScenarioPlayer::Failure ScenarioPlayer::Fault(const Words& words) {
  Words rules = m_television.Faults();
  if (words[0] == "none") {
    rules.clear();
  } else {
    rules.push_back(Joined(words));
  }
  const Status set = m_television.SetFaults(rules);
  return set ? std::nullopt : Failure(set.error().reason);
}

ScenarioPlayer::Failure ScenarioPlayer::Wait(const Words& words) {
  m_television.Pause(*ParseDuration(words[0]));
  return std::nullopt;
}

ScenarioPlayer::Failure ScenarioPlayer::Open(const Words& words) {
  const Status opened = m_television.OpenApplication({words[0], words[1]});
  return opened ? std::nullopt : Failure(opened.error().reason);
}

ScenarioPlayer::Failure ScenarioPlayer::Close(const Words&) {
  const Status closed = m_television.CloseApplication();
  return closed ? std::nullopt : Failure(closed.error().reason);
}

}  // namespace sim::tvsim
