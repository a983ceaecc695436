// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/scenario/Recorder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace sim::tvsim {
namespace {

/// In a replay, on a slower machine too.
constexpr const char* kEventPatience = "30s";
/// What is shorter is the engine's and the machine's own time, not somebody's who watches.
constexpr std::chrono::milliseconds kShortestPause(500);

}  // namespace

std::string Quoted(const std::string& word) {
  if (!word.empty() && word.find_first_of(" \t\r\n\"\\#$") == std::string::npos) {
    return word;
  }
  std::string quoted = "\"";
  for (const char c : word) {
    if (c == '"' || c == '\\' || c == '$') {
      quoted += '\\';
    }
    quoted += c == '\n' || c == '\r' ? ' ' : c;
  }
  return quoted + '"';
}

Result<std::unique_ptr<Recorder>> Recorder::Start(Television& television, const std::string& file) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  if (!stream) {
    return Error{errno, "cannot write " + file + ": " + std::strerror(errno)};
  }
  stream << "# recorded by tvsim\n";
  std::unique_ptr<Recorder> recorder(new Recorder(std::move(stream)));
  Television::Observer observer;
  observer.on_event = [raw = recorder.get()](const SessionEvent& event) {
    raw->OnStep();
    raw->m_file << "expect-event " << event.event.number << " within " << kEventPatience << std::endl;
  };
  observer.on_command = [raw = recorder.get()](const std::string& method, const std::vector<std::string>& words,
                                               const rpc::Answer& answer) { raw->OnCommand(method, words, answer); };
  observer.on_state = [raw = recorder.get()](const std::string& state) {
    raw->OnStep();
    raw->m_file << "state " << state << std::endl;
  };
  television.Observe(std::move(observer));
  return recorder;
}

void Recorder::OnStep() {
  const auto now = std::chrono::steady_clock::now();
  const auto pause = std::chrono::duration_cast<std::chrono::milliseconds>(now - m_last_step);
  if (pause >= kShortestPause) {
    m_file << "wait " << pause.count() << "ms\n";
  }
  m_last_step = now;
}

void Recorder::OnCommand(const std::string& method, const std::vector<std::string>& words, const rpc::Answer& answer) {
  std::string line = method == "engine.executeWithParamList" ? "with-list" : "";
  for (const std::string& word : words) {
    line += (line.empty() ? "" : " ") + Quoted(word);
  }
  OnStep();
  m_file << line << '\n';
  if (const auto* error = std::get_if<rpc::CallError>(&answer)) {
    m_file << "expect-error " << error->code << std::endl;
  } else {
    m_file << "expect " << Quoted(TextOf(answer)) << std::endl;
  }
}

}  // namespace sim::tvsim
