// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
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

/// The characters of a line as it grows. Writing lines is most of what a command costs, so they are put where they
/// belong without a call for each piece, and the room stays for the next line.
class LineText {
 public:
  size_t GetSize() const { return m_size; }
  std::string_view GetText() const { return {m_room.get(), m_size}; }
  void ShrinkTo(size_t size) { m_size = size; }

  void Append(std::string_view text) {
    std::memcpy(MakeRoom(text.size()), text.data(), text.size());
    m_size += text.size();
  }
  template <int kBase, typename Number>
  void AppendNumber(Number number) {
    constexpr size_t kMostDigits = 16;
    char* const first = MakeRoom(kMostDigits);
    m_size += static_cast<size_t>(std::to_chars(first, first + kMostDigits, number, kBase).ptr - first);
  }
  /// Where `more` characters can be put; they count once `Append` or `AppendNumber` is through. Never null.
  char* MakeRoom(size_t more) {
    if (more >= m_capacity - m_size) {
      Grow(more);
    }
    return m_room.get() + m_size;
  }

 private:
  void Grow(size_t more) {
    const size_t capacity = std::max<size_t>(2 * m_capacity, m_size + more + kLongLine);
    auto room = std::make_unique_for_overwrite<char[]>(capacity);
    std::copy_n(m_room.get(), m_size, room.get());
    m_room = std::move(room);
    m_capacity = capacity;
  }

  static constexpr size_t kLongLine = 500;

  std::unique_ptr<char[]> m_room;
  size_t m_capacity = 0;
  size_t m_size = 0;
};

/// A line whose message has not come yet.
struct Pending {
  LineText line;
  sim::LogLevel level = sim::LogLevel::kPlain;

  /// Writes a prefix that stays without a message.
  void Flush() {
    if (line.GetSize() > 0) {
      line.Append("\n");
      Write(level);
    }
  }
  void Write(sim::LogLevel as) {
    sim::WriteLogLine(as, line.GetText());
    line.ShrinkTo(0);
  }
  ~Pending() { Flush(); }
};
/// Without the attribute the compiler calls the loader for its address, at half a hundred places of a line's way.
/// A program has this library from its start, so its place is known by then.
__attribute__((tls_model("initial-exec"))) thread_local Pending pendingOfThread;

/// As kPrefixFormat says; every second call is for one.
void AppendPrefix(LineText& line, const char* function, int number) {
  line.Append("[OLM][");
  line.Append(function);
  line.Append("(");
  line.AppendNumber<10>(number);
  line.Append(")] ");
}

/// Appends what vsnprintf would write, where `format` has plain %s, %d and %x only, as nearly every line of the engine
/// has; that takes a fifth of its time. False otherwise, and what was appended is of no use.
__attribute__((format(printf, 2, 0))) bool AppendPlainFormatted(LineText& line, const char* format, va_list arguments) {
  for (const char* percent; (percent = std::strchr(format, '%')) != nullptr; format = percent + 2) {
    line.Append({format, static_cast<size_t>(percent - format)});
    switch (percent[1]) {
      case 's': {
        const char* word = va_arg(arguments, const char*);
        line.Append(word != nullptr ? word : "(null)");
        break;
      }
      case 'd':
        line.AppendNumber<10>(va_arg(arguments, int));
        break;
      case 'x':
        line.AppendNumber<16>(va_arg(arguments, unsigned int));
        break;
      default:
        return false;
    }
  }
  line.Append(format);
  return true;
}

__attribute__((format(printf, 2, 0))) void AppendFormatted(LineText& line, const char* format, va_list arguments) {
  const size_t before = line.GetSize();
  va_list again, oncemore;
  va_copy(again, arguments);
  va_copy(oncemore, arguments);
  if (!AppendPlainFormatted(line, format, arguments)) {
    line.ShrinkTo(before);
    std::string text(static_cast<size_t>(std::max(std::vsnprintf(nullptr, 0, format, again), 0)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, oncemore);
    line.Append(text);
  }
  va_end(again);
  va_end(oncemore);
}

/// Makes a message, all that stands behind `start`, the rest of one line: its colour stays, its line end is the last
/// character, what else would move the cursor is spelt out.
void FinishLine(LineText& line, size_t start) {
  std::string_view message = line.GetText().substr(start);
  if (message.starts_with(kColourStart) && message.size() >= kColourLength) {
    message.remove_prefix(kColourLength);
    start += kColourLength;
  }
  const bool ends = message.ends_with(kColourEnd);
  message.remove_suffix(ends ? kColourEnd.size() : 0);
  const bool hasLineEnd = message.ends_with('\n');
  message.remove_suffix(hasLineEnd ? 1 : 0);
  if (sim::HasControls(message)) {
    std::string spelt;
    sim::AppendWithoutControls(spelt, message);
    line.ShrinkTo(start);
    line.Append(spelt);
    line.Append(ends ? kColourEnd : "");
  } else if (hasLineEnd) {
    line.ShrinkTo(start + message.size());
    line.Append(ends ? kColourEnd : "");
  }
  line.Append("\n");
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
    const size_t start = pending.line.GetSize();
    AppendFormatted(pending.line, format, arguments);
    FinishLine(pending.line, start);
    pending.Write(logLevel);
  }
  va_end(arguments);
}

}  // namespace olm
