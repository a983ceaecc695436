// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/CrashRecord.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>

namespace sim::tvsim {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNameStart = "crash-";

/// Local time to the microsecond, in an order that is that of the names too.
std::string Now() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm broken_down{};
  localtime_r(&now.tv_sec, &broken_down);
  char text[64], all[96];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H-%M-%S", &broken_down);
  std::snprintf(all, sizeof all, "%s.%06ld", text, now.tv_nsec / 1000);
  return all;
}

/// Oldest first; their names begin with the time.
std::vector<fs::path> Records(const fs::path& folder) {
  std::vector<fs::path> records;
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(folder, none)) {
    if (entry.path().filename().string().starts_with(kNameStart)) {
      records.push_back(entry.path());
    }
  }
  std::ranges::sort(records);
  return records;
}

}  // namespace

Result<std::string> CrashFolder() {
  const char* state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && *state == '/') {
    return std::string(state) + "/tvsim";
  }
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home == '/') {
    return std::string(home) + "/.local/state/tvsim";
  }
  return Error{ENOENT, "no folder for what is known of crashes: neither XDG_STATE_HOME nor HOME is set"};
}

Result<std::string> WriteCrashRecord(const CrashRecord& record) {
  const auto folder = CrashFolder();
  if (!folder) {
    return folder.error();
  }
  std::error_code error;
  fs::create_directories(*folder, error);
  if (error) {
    return Error{error.value(), "cannot make " + *folder + ": " + error.message()};
  }
  const mode_t mask = umask(0077);  // paths and logs are the user's own affair
  const std::string name = kNameStart + Now() + ".txt", file = *folder + "/" + name;
  const std::string unfinished = *folder + "/unfinished-" + name;  // whoever finds a record finds all of it
  std::ofstream text(unfinished);
  umask(mask);
  text << "end:     " << record.end << "\ncommand: " << record.command << "\npicture: " << record.picture << "\n\n";
  for (const std::string& line : record.log) {
    text << line << "\n";
  }
  text.close();
  if (!text || std::rename(unfinished.c_str(), file.c_str()) != 0) {
    const int reason = errno;
    fs::remove(unfinished, error);
    return Error{reason, "cannot write " + file + ": " + std::strerror(reason)};
  }
  std::vector<fs::path> records = Records(*folder);
  for (size_t oldest = 0; oldest + kKeptCrashRecords < records.size(); ++oldest) {
    fs::remove(records[oldest], error);
  }
  return file;
}

std::optional<std::string> NewestCrashRecord() {
  const auto folder = CrashFolder();
  const std::vector<fs::path> records = folder ? Records(*folder) : std::vector<fs::path>{};
  return records.empty() ? std::nullopt : std::optional(records.back().string());
}

}  // namespace sim::tvsim
