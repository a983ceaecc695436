// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_TVSIM_TVSIMFIXTURE_H
#define TESTS_TVSIM_TVSIMFIXTURE_H

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "simulator/tvsim/process/ChildProcess.h"

namespace sim::tvsim {

/// What a finished tvsim left.
struct Outcome {
  int status = -1;  ///< exit status; -1 when a signal ended it
  std::string output;
  std::string errors;
};

/// The engine and the screen that tvsim is given in a test.
struct Equipment {
  std::string engine;
  std::string screen_size;
};
/// An engine that shows nothing, see fake-engine.
Equipment WithFakeEngine();
/// The engine itself, and a television's screen.
Equipment WithEngine();

/// The program tvsim, each test in a temporary folder of its own.
class TvsimFixture : public testing::Test {
 protected:
  explicit TvsimFixture(Equipment equipment = WithFakeEngine());
  ~TvsimFixture() override;

  /// A copy of no picture in particular under the name that tells the fake engine what to do.
  std::string PictureNamed(const std::string& name);
  std::string FileWith(const std::string& name, const std::string& text);
  std::string PathOf(const std::string& name) const { return m_folder / name; }

  /// Runs tvsim to its end. Subcommands that start a session get the equipment and a screen of their own.
  Outcome Run(std::vector<std::string> arguments, const std::string& input = "");
  /// Starts it with that as its standard input; its output goes to PathOf("output").
  ChildProcess StartReading(const UniqueFd& input, std::vector<std::string> arguments);
  /// Starts it, with its output going to PathOf("output").
  ChildProcess Start(std::vector<std::string> arguments, const std::string& input = "");

  /// What the engine said.
  std::string EngineLog() const;
  /// Processes of anybody's that were started by this test's tvsim, with their names.
  std::vector<std::string> Processes() const;
  /// 0 for none, which must not be killed: that would be everything.
  pid_t ProcessNamed(const std::string& name) const;
  /// What was kept of engines that ended and should not have.
  std::vector<std::string> CrashRecords() const;
  /// Files of sessions.
  std::vector<std::string> SessionFiles() const;

  /// Waits, looking again and again; fails the test after a generous time.
  static void Await(const std::string& what, const std::function<bool()>& condition);

 private:
  ProcessRequest Request(std::vector<std::string> arguments) const;

  const Equipment m_equipment;
  std::filesystem::path m_folder;
};

std::string ContentsOf(const std::string& file);

/// The commands in the fake engine's log, in order, as "Command(param,param)".
std::vector<std::string> CommandsIn(const std::string& log);

}  // namespace sim::tvsim

#endif
