// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/WaitReport.h"

#include <sys/syscall.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

namespace sim::tvsim {
namespace {

namespace fs = std::filesystem;

/// The file behind the system call's first argument, which is a descriptor in hexadecimal.
std::string SourceOf(const fs::path& process, const std::string& argument) {
  std::error_code unknown;
  const auto target = fs::read_symlink(process / "fd" / std::to_string(std::stol(argument, nullptr, 16)), unknown);
  return unknown ? "" : " from " + target.string();
}

/// The kernel's line is "running", or the system call's number and its arguments.
std::string StateOf(const fs::path& process, const fs::path& task) {
  std::ifstream line(task / "syscall");
  std::string number, argument;
  if (!(line >> number)) {
    return "";
  }
  if (number == "running") {
    return "runs";
  }
  line >> argument;
  switch (std::stol(number)) {
    case -1:
      return "runs";
    case SYS_futex:
      return "waits for a lock";
    case SYS_read:
    case SYS_recvmsg:
      return "waits for input" + SourceOf(process, argument);
    case SYS_write:
    case SYS_sendmsg:
      return "waits for a reader" + SourceOf(process, argument);
#ifdef SYS_poll
    case SYS_poll:
#endif
    case SYS_ppoll:
    case SYS_epoll_pwait:
      return "waits for input";
    case SYS_clock_nanosleep:
#ifdef SYS_nanosleep
    case SYS_nanosleep:
#endif
#ifdef SYS_pause
    case SYS_pause:
#endif
      return "sleeps";
    default:
      return "is in system call " + number;
  }
}

}  // namespace

std::string WhatItWaitsFor(pid_t process) {
  const fs::path folder = "/proc/" + std::to_string(process);
  std::vector<std::string> order;
  std::map<std::string, int> counts;
  std::error_code gone;
  for (const auto& task : fs::directory_iterator(folder / "task", gone)) {
    std::string name;
    std::getline(std::ifstream(task.path() / "comm"), name);
    const std::string state = StateOf(folder, task.path());
    if (state.empty()) {
      continue;
    }
    const std::string text = name + " " + state;
    if (++counts[text] == 1) {
      order.push_back(text);
    }
  }
  std::ostringstream all;
  for (const std::string& text : order) {
    all << (text == order.front() ? "" : ", ") << text;
    if (counts[text] > 1) {
      all << " (" << counts[text] << " times)";
    }
  }
  return all.str();
}

}  // namespace sim::tvsim
