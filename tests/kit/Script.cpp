// SPDX-License-Identifier: Apache-2.0
#include "tests/kit/Script.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <vector>

#include "tests/kit/Journal.h"

namespace kit {
namespace {

struct Failure {
  size_t nth;  ///< counted from the first call of the world
  int code;
};

struct Line {
  size_t calls = 0;
  std::vector<Failure> failures;
  std::vector<std::function<void()>> once;
  std::vector<std::function<void()>> always;
};

// A shared_mutex: the tests watch pthread_mutex_lock, and that watch makes Calls itself.
struct Script {
  std::shared_mutex mutex;
  std::map<std::string, Line, std::less<>> lines;
};

Script& TheScript() {
  static auto& script = *new Script;  // never destroyed: what is called while the process ends asks for it too
  return script;
}

using Lock = std::unique_lock<std::shared_mutex>;

std::vector<std::function<void()>> HooksFor(const char* name) {
  Script& script = TheScript();
  const Lock lock(script.mutex);
  Line& line = script.lines[name];
  std::vector<std::function<void()>> hooks = line.always;
  hooks.insert(hooks.end(), line.once.begin(), line.once.end());
  line.once.clear();
  return hooks;
}

}  // namespace

void FailAt(const std::string& name, size_t nth, int code) {
  Script& script = TheScript();
  const Lock lock(script.mutex);
  Line& line = script.lines[name];
  line.failures.push_back({line.calls + nth, code});
}

void FailNext(const std::string& name, int code) {
  FailAt(name, 1, code);
}

size_t CallCount(const std::string& name) {
  Script& script = TheScript();
  const Lock lock(script.mutex);
  return script.lines[name].calls;
}

size_t PendingFailures() {
  Script& script = TheScript();
  const Lock lock(script.mutex);
  size_t pending = 0;
  for (const auto& line : script.lines) pending += line.second.failures.size();
  return pending;
}

void OnCall(const std::string& name, std::function<void()> hook) {
  Script& script = TheScript();
  const Lock lock(script.mutex);
  script.lines[name].once.push_back(std::move(hook));
}

void OnEveryCall(const std::string& name, std::function<void()> hook) {
  Script& script = TheScript();
  const Lock lock(script.mutex);
  script.lines[name].always.push_back(std::move(hook));
}

void ResetScript() {
  Script& script = TheScript();
  const Lock lock(script.mutex);
  script.lines.clear();
}

Call::Call(const char* name, const char* kind) : m_name(name), m_kind(kind), m_recording(Recording()) {
  Script& script = TheScript();
  const Lock lock(script.mutex);
  Line& line = script.lines[name];
  const size_t number = ++line.calls;
  const auto failure =
      std::find_if(line.failures.begin(), line.failures.end(), [number](const Failure& f) { return f.nth == number; });
  if (failure == line.failures.end()) return;
  m_fails = true;
  m_code = failure->code;
  line.failures.erase(failure);
}

Call& Call::Arg(const std::string& text) {
  if (m_recording) m_arguments += (m_arguments.empty() ? "" : ", ") + text;
  return *this;
}

Call& Call::Out(const std::string& text) {
  if (m_recording && !m_fails) m_out += (m_out.empty() ? " -> " : ", ") + text;
  return *this;
}

int Call::Done(int success) {
  const int result = m_fails ? m_code : success;
  Finish(" = " + std::to_string(result));
  return result;
}

void Call::Finish(const std::string& result) {
  if (m_recording) Append(std::string(m_kind) + " " + m_name + "(" + m_arguments + ")" + result + m_out);
  for (const auto& hook : HooksFor(m_name)) hook();
}

}  // namespace kit
