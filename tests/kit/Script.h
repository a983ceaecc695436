// SPDX-License-Identifier: Apache-2.0
/// Scripted failures of the faked calls, and hooks into them. Thread-safe.
#ifndef TESTS_KIT_SCRIPT_H
#define TESTS_KIT_SCRIPT_H

#include <cstddef>
#include <functional>
#include <string>

namespace kit {

/// The `nth` call of `name` from now on (1 = the next) fails and returns `code`; calls that return a pointer, an atom,
/// a window or a yes-or-no return none whatever `code` says.
void FailAt(const std::string& name, size_t nth, int code = 0);
void FailNext(const std::string& name, int code = 0);

/// Calls of `name` since the world was made anew.
size_t CallCount(const std::string& name);

/// Failures that were scripted and have not happened.
size_t PendingFailures();

/// Runs `hook` inside the next call of `name` (every call), on the caller's thread, after the call is in the journal
/// and before it returns.
void OnCall(const std::string& name, std::function<void()> hook);
void OnEveryCall(const std::string& name, std::function<void()> hook);

/// Forgets failures, hooks and counts.
void ResetScript();

/// One call of a fake while it runs: collects the arguments, knows whether it is to fail, writes the entry.
class Call {
 public:
  explicit Call(const char* name, const char* kind = "call");
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  /// True when this call is scripted to fail; it then may change nothing.
  bool Fails() const { return m_fails; }
  /// One more argument as it stands in the journal.
  Call& Arg(const std::string& text);
  Call& Arg(long value) { return Arg(std::to_string(value)); }
  /// One more out value, written only when the call succeeds.
  Call& Out(const std::string& text);

  /// Each ends the call: writes "NAME(arguments)", and the result where it has one, and runs the hooks.
  void DoneVoid() { Finish({}); }
  void Done(const std::string& result) { Finish(" = " + result); }
  /// Returns `success`, or the scripted code.
  int Done(int success);

 private:
  void Finish(const std::string& result);

  const char* const m_name;
  const char* const m_kind;
  const bool m_recording;
  bool m_fails = false;
  int m_code = 0;
  std::string m_arguments;
  std::string m_out;
};

}  // namespace kit

#endif
