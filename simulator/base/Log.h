// SPDX-License-Identifier: Apache-2.0
/// The log of the simulator's own libraries and of tvsim: one line a call, one write a line, to standard error or to
/// the file in OLM_LOG_FILE, the same place as the engine's lines. Any thread. A line that cannot be written is lost.
///
/// The file does not grow without end: at kMaxLogFile bytes it becomes OLM_LOG_FILE with ".1" behind its name, in the
/// place of an older one, and a new file is begun. All processes and libraries that write to it follow.
#ifndef SIMULATOR_BASE_LOG_H
#define SIMULATOR_BASE_LOG_H

#include <cstddef>
#include <string>
#include <string_view>

namespace sim {

/// The numbers are those of `COLMDebug::PrintLog`, so that OLM_LOG_LEVEL filters both alike.
enum class LogLevel : unsigned int { kPlain = 0, kError = 1, kWarning = 2, kInfo = 4 };

/// Bytes of the log file before it is put away: what more than ten thousand pictures of a slide show leave.
inline constexpr size_t kMaxLogFile = 64 << 20;

/// Writes "[component] text". Control characters in `text` but tabs are shown as \xNN, so that a path cannot forge a
/// line.
/// `component`: the library's name, "lumaview" for example.
void Log(LogLevel level, std::string_view component, std::string_view text);

/// Whether lines of this level are written: not above OLM_LOG_LEVEL (default: all).
bool IsLogged(LogLevel level);

/// Writes `line` as it is, in one write with a line end of its own where it has none, if its level is written.
void WriteLogLine(LogLevel level, std::string_view line);

/// Whether there are control characters other than tabs in `text`.
bool HasControls(std::string_view text);

/// Appends `text` to `line` with these as \xNN.
void AppendWithoutControls(std::string& line, std::string_view text);

}  // namespace sim

#endif
