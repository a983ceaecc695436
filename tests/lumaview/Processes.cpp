// SPDX-License-Identifier: Apache-2.0
#include "tests/lumaview/Processes.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

namespace lumaview_test {
namespace {

struct Process {
  pid_t pid = -1;
  pid_t parent = -1;
  char state = 'Z';
  std::string name;
};

/// Of the line in /proc/PID/stat: "pid (name) state parent ...".
std::optional<Process> Look(const std::filesystem::path& folder) {
  std::ifstream file(folder / "stat");
  std::string line;
  if (!std::getline(file, line)) {
    return std::nullopt;
  }
  const size_t open = line.find('(');
  const size_t close = line.rfind(')');
  Process process;
  process.pid = std::stoi(line);
  process.name = line.substr(open + 1, close - open - 1);
  std::istringstream rest(line.substr(close + 1));
  rest >> process.state >> process.parent;
  return process;
}

std::vector<Process> ListAlive() {
  std::vector<Process> all;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") != std::string::npos) {
      continue;
    }
    const auto process = Look(entry.path());
    if (process && process->state != 'Z' && process->state != 'X') {
      all.push_back(*process);
    }
  }
  return all;
}

std::vector<Process> ListDescendants(pid_t ancestor) {
  const std::vector<Process> all = ListAlive();
  std::vector<Process> found;
  std::vector<pid_t> parents = {ancestor};
  for (size_t i = 0; i < parents.size(); ++i) {
    for (const Process& process : all) {
      if (process.parent == parents[i]) {
        parents.push_back(process.pid);
        found.push_back(process);
      }
    }
  }
  return found;
}

}  // namespace

bool IsAlive(pid_t pid) {
  const auto process = Look("/proc/" + std::to_string(pid));
  return process && process->state != 'Z' && process->state != 'X';
}

std::vector<pid_t> FindDescendants(const std::string& name, pid_t ancestor) {
  std::vector<pid_t> found;
  for (const Process& process : ListDescendants(ancestor)) {
    if (name.empty() || process.name == name) {
      found.push_back(process.pid);
    }
  }
  return found;
}

size_t CountRunning(const std::string& name) {
  size_t running = 0;
  for (const Process& process : ListDescendants(getpid())) {
    running += process.name == name && process.state == 'R' ? 1 : 0;
  }
  return running;
}

}  // namespace lumaview_test
