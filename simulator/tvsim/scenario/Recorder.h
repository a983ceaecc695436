// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SCENARIO_RECORDER_H
#define SIMULATOR_TVSIM_SCENARIO_RECORDER_H

#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "simulator/base/Result.h"
#include "simulator/tvsim/session/Television.h"

namespace sim::tvsim {

/// Writes what happens on a television as a scenario that plays it again: each command, whoever sent it, with the
/// result that it gave, the events where they came, the application's states, and the pauses between them.
class Recorder {
 public:
  /// Writes to `file`, anew. Errors: it cannot be written.
  static Result<std::unique_ptr<Recorder>> Start(Television& television, const std::string& file);

 private:
  explicit Recorder(std::ofstream file) : m_file(std::move(file)) {}

  void OnCommand(const std::string& method, const std::vector<std::string>& words, const rpc::Answer& answer);

  /// Notes how long nothing has happened, so that a replay keeps the pace.
  void OnStep();

  std::ofstream m_file;
  std::chrono::steady_clock::time_point m_last_step = std::chrono::steady_clock::now();
};

/// `word` as a scenario holds it, in quotes where it needs them. Line ends become blanks: a step is one line.
std::string Quoted(const std::string& word);

}  // namespace sim::tvsim

#endif
