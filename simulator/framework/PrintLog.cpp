// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "platform/olm_emp.h"
#include "simulator/base/Log.h"

namespace olm {
namespace {

/// What a line begins with. It comes in a call of its own, its message in the next one of the same thread.
constexpr const char* kPrefixFormat = "[OLM][%s(%d)] ";

/// Around a coloured message.
constexpr std::string_view kColourStart = "\033[3";
constexpr size_t kColourLength = 5;
constexpr std::string_view kColourEnd = "\033[0m";

/// A prefix whose message has not come yet.
struct Pending {
  std::string prefix;
  sim::LogLevel level = sim::LogLevel::kPlain;

  /// Writes a prefix that stays without a message.
  void Flush() {
    if (!prefix.empty()) {
      sim::WriteLogLine(level, std::exchange(prefix, {}));
    }
  }
  ~Pending() { Flush(); }
};
thread_local Pending pending;

__attribute__((format(printf, 1, 0))) std::string Format(const char* format, va_list arguments) {
  char room[512];  // for nearly every line
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(room, sizeof room, format, arguments);
  std::string text(static_cast<size_t>(std::max(length, 0)), '\0');
  if (text.size() < sizeof room) {
    text.assign(room, text.size());
  } else {
    std::vsnprintf(text.data(), text.size() + 1, format, again);
  }
  va_end(again);
  return text;
}

/// Appends `message` so that the line stays one: its colour stays, its line end goes, what else would move the cursor
/// is spelt out.
void AppendMessage(std::string& line, std::string_view message) {
  if (message.starts_with(kColourStart) && message.size() >= kColourLength) {
    line.append(message.substr(0, kColourLength));
    message.remove_prefix(kColourLength);
  }
  const bool coloured = message.ends_with(kColourEnd);
  message.remove_suffix(coloured ? kColourEnd.size() : 0);
  message.remove_suffix(message.ends_with('\n') ? 1 : 0);
  sim::AppendWithoutControls(line, message);
  line.append(coloured ? kColourEnd : "").append("\n");
}

}  // namespace

void COLMDebug::PrintLog(unsigned int /*module*/, unsigned int level, const char* format, ...) {
  const auto logLevel = static_cast<sim::LogLevel>(level);
  if (!sim::IsLogged(logLevel)) {
    return;
  }
  va_list arguments;
  va_start(arguments, format);
  std::string text = Format(format, arguments);
  va_end(arguments);
  if (std::strcmp(format, kPrefixFormat) == 0) {
    pending.Flush();
    pending.prefix = std::move(text);
    pending.level = logLevel;
    return;
  }
  std::string line = std::exchange(pending.prefix, {});
  line.reserve(line.size() + text.size() + 1);
  AppendMessage(line, text);
  sim::WriteLogLine(logLevel, line);
}

}  // namespace olm
