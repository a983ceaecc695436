// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/Log.h"

#include <fcntl.h>
#include <pthread.h>

#include <charconv>
#include <cstdlib>
#include <string>

#include "simulator/base/LogFile.h"
#include "simulator/base/LogStage.h"
#include "simulator/base/TextScan.h"

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

/// Null where this process was given none; a process that is forked has none either. Never closed, like the file.
LogStage*& Stage() {
  static LogStage* stage = [] {
    const std::string number = Environment("OLM_LOG_STAGE");
    int memory = -1;
    std::from_chars(number.data(), number.data() + number.size(), memory);
    auto opened = LogStage::Open(memory);
    if (!opened) {
      return static_cast<LogStage*>(nullptr);
    }
    fcntl(memory, F_SETFD, FD_CLOEXEC);
    pthread_atfork(nullptr, nullptr, [] { Stage() = nullptr; });
    return opened->release();
  }();
  return stage;
}

/// Made on first use and never destroyed, like the file.
const LogStage::Writer& FileWriter() {
  static const auto* const writer = new LogStage::Writer([](std::string_view lines) { File().Write(lines); });
  return *writer;
}

unsigned int HighestLevel() {
  static const unsigned int highest = [] {
    const std::string level = Environment("OLM_LOG_LEVEL");
    return level.empty() ? ~0u : static_cast<unsigned int>(std::strtoul(level.c_str(), nullptr, 10));
  }();
  return highest;
}

/// Of one character or of many; unsigned.
template <typename Character>
auto IsControl(Character c) {
  return ((c < 0x20) & (c != '\t')) | (c == 0x7F);
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
  if (!line.ends_with('\n')) {
    return WriteLogLine(level, std::string(line) + '\n');
  }
  if (LogStage* stage = Stage()) {
    stage->Add(line, FileWriter());
  } else {
    File().Write(line);
  }
}

HeldLog::HeldLog() {
  if (LogStage* stage = Stage()) {
    stage->Hold();
  }
}

HeldLog::~HeldLog() {
  if (LogStage* stage = Stage()) {
    stage->Release(FileWriter());
  }
}

void FlushLog() {
  if (LogStage* stage = Stage()) {
    stage->Flush(FileWriter());
  }
}

bool HasControls(std::string_view text) {
  return HasAny(text, [](auto c) { return IsControl(c); });
}

void AppendWithoutControls(std::string& line, std::string_view text) {
  if (!HasControls(text)) {
    line.append(text);
    return;
  }
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (const char c : text) {
    if (IsControl(static_cast<unsigned char>(c))) {
      line.append("\\x").append(1, kDigits[static_cast<unsigned char>(c) >> 4]).append(1, kDigits[c & 0xF]);
    } else {
      line += c;
    }
  }
}

}  // namespace sim
