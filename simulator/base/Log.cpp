// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/Log.h"

#include <cstdlib>
#include <string>

#include "simulator/base/LogFile.h"

namespace sim {
namespace {

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

/// Opened on first use and never closed: threads may log while the process exits.
LogFile& File() {
  static auto* const file = new LogFile(Environment("OLM_LOG_FILE"), kMaxLogFile);
  return *file;
}

unsigned int HighestLevel() {
  static const unsigned int highest = [] {
    const std::string level = Environment("OLM_LOG_LEVEL");
    return level.empty() ? ~0u : static_cast<unsigned int>(std::strtoul(level.c_str(), nullptr, 10));
  }();
  return highest;
}

bool IsControl(char c) {
  return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
}

}  // namespace

void Log(LogLevel level, std::string_view component, std::string_view text) {
  std::string line = "[";
  line.append(component).append("] ");
  AppendWithoutControls(line, text);
  WriteLogLine(level, line);
}

bool IsLogged(LogLevel level) {
  return static_cast<unsigned int>(level) <= HighestLevel();
}

void WriteLogLine(LogLevel level, std::string_view line) {
  if (!IsLogged(level)) {
    return;
  }
  if (line.ends_with('\n')) {
    return File().Write(line);
  }
  File().Write(std::string(line) + '\n');
}

void AppendWithoutControls(std::string& line, std::string_view text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  size_t copied = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (IsControl(text[i])) {
      line.append(text, copied, i - copied).append("\\x");
      line += kDigits[static_cast<unsigned char>(text[i]) >> 4];
      line += kDigits[text[i] & 0xF];
      copied = i + 1;
    }
  }
  line.append(text, copied);
}

}  // namespace sim
