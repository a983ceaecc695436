// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

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

/// A line whose message has not come yet.
struct Pending {
  std::string line;  ///< keeps its room for the thread's next lines
  sim::LogLevel level = sim::LogLevel::kPlain;

  /// Writes a prefix that stays without a message.
  void Flush() {
    if (!line.empty()) {
      Write(level);
    }
  }
  void Write(sim::LogLevel as) {
    sim::WriteLogLine(as, line);
    line.clear();
  }
  ~Pending() { Flush(); }
};
/// Without the attribute the compiler calls the loader for its address, at half a hundred places of a line's way.
/// A program has this library from its start, so its place is known by then.
__attribute__((tls_model("initial-exec"))) thread_local Pending pendingOfThread;

template <typename Number>
void AppendNumber(std::string& text, Number number, int base) {
  char digits[16];
  text.append(digits, std::to_chars(std::begin(digits), std::end(digits), number, base).ptr);
}

/// As kPrefixFormat says; every second call is for one.
void AppendPrefix(std::string& line, const char* function, int number) {
  line.append("[OLM][").append(function).append("(");
  AppendNumber(line, number, 10);
  line.append(")] ");
}

/// Appends what vsnprintf would write, where `format` has plain %s, %d and %x only, as nearly every line of the engine
/// has; that takes a fifth of its time. False otherwise, and `text` is of no use.
__attribute__((format(printf, 2, 0))) bool AppendPlainFormatted(std::string& text, const char* format,
                                                                va_list arguments) {
  for (const char* percent; (percent = std::strchr(format, '%')) != nullptr; format = percent + 2) {
    text.append(format, static_cast<size_t>(percent - format));
    switch (percent[1]) {
      case 's': {
        const char* word = va_arg(arguments, const char*);
        text.append(word != nullptr ? word : "(null)");
        break;
      }
      case 'd':
        AppendNumber(text, va_arg(arguments, int), 10);
        break;
      case 'x':
        AppendNumber(text, va_arg(arguments, unsigned int), 16);
        break;
      default:
        return false;
    }
  }
  text.append(format);
  return true;
}

__attribute__((format(printf, 2, 0))) void AppendFormatted(std::string& text, const char* format, va_list arguments) {
  const size_t before = text.size();
  va_list again, oncemore;
  va_copy(again, arguments);
  va_copy(oncemore, arguments);
  if (!AppendPlainFormatted(text, format, arguments)) {
    const auto length = static_cast<size_t>(std::max(std::vsnprintf(nullptr, 0, format, again), 0));
    text.resize(before + length + 1);
    std::vsnprintf(&text[before], length + 1, format, oncemore);
    text.pop_back();
  }
  va_end(again);
  va_end(oncemore);
}

/// Makes a message, all that stands behind `start`, the rest of one line: its colour stays, its line end is the last
/// character, what else would move the cursor is spelt out.
void FinishLine(std::string& line, size_t start) {
  const std::string_view message = std::string_view(line).substr(start);
  const bool begins = message.starts_with(kColourStart) && message.size() >= kColourLength;
  const size_t from = start + (begins ? kColourLength : 0);
  const bool ends = std::string_view(line).substr(from).ends_with(kColourEnd);
  size_t to = line.size() - (ends ? kColourEnd.size() : 0);
  if (to > from && line[to - 1] == '\n') {
    line.erase(--to, 1);
  }
  sim::SpellOutControls(line, from, to);
  line += '\n';
}

}  // namespace

void COLMDebug::PrintLog(unsigned int /*module*/, unsigned int level, const char* format, ...) {
  const auto logLevel = static_cast<sim::LogLevel>(level);
  if (!sim::IsLogged(logLevel)) {
    return;
  }
  Pending& pending = pendingOfThread;
  va_list arguments;
  va_start(arguments, format);
  if (std::strcmp(format, kPrefixFormat) == 0) {
    pending.Flush();
    const char* function = va_arg(arguments, const char*);
    AppendPrefix(pending.line, function, va_arg(arguments, int));
    pending.level = logLevel;
  } else {
    const size_t start = pending.line.size();
    AppendFormatted(pending.line, format, arguments);
    FinishLine(pending.line, start);
    pending.Write(logLevel);
  }
  va_end(arguments);
}

}  // namespace olm
