// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/process/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>

namespace sim::tvsim {
namespace {

/// Everything the child needs between fork and exec, where nothing may be allocated.
struct Launch {
  std::vector<char*> arguments;
  std::vector<char*> environment;
  std::string program;
  std::vector<std::string> environment_texts;
};

bool IsNamed(const char* entry, const std::string& name) {
  return std::strncmp(entry, name.c_str(), name.size()) == 0 && entry[name.size()] == '=';
}

Launch Prepare(const ProcessRequest& request) {
  Launch launch;
  launch.program = FindProgram(request.arguments.front());
  for (const std::string& argument : request.arguments) {
    launch.arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  launch.arguments.push_back(nullptr);
  for (const auto& [name, value] : request.environment) {
    launch.environment_texts.push_back(name + "=" + value);
  }
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const bool replaced =
        std::ranges::any_of(request.environment, [&](const auto& variable) { return IsNamed(*entry, variable.first); });
    if (!replaced) {
      launch.environment.push_back(*entry);
    }
  }
  for (std::string& text : launch.environment_texts) {
    launch.environment.push_back(text.data());
  }
  launch.environment.push_back(nullptr);
  return launch;
}

void ResetSignals() {
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGCHLD}) {
    signal(number, SIG_DFL);
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// Moves the descriptors to their numbers. They are first copied above all targets, so that none overwrites another.
bool PlaceDescriptors(const std::vector<std::pair<int, int>>& descriptors) {
  constexpr int kAboveTargets = 64;
  int copies[8];
  size_t count = 0;
  for (const auto& [here, there] : descriptors) {
    if (count == std::size(copies) || (copies[count++] = fcntl(here, F_DUPFD_CLOEXEC, kAboveTargets)) < 0) {
      return false;
    }
  }
  for (size_t i = 0; i < count; ++i) {
    if (dup2(copies[i], descriptors[i].second) < 0) {
      return false;
    }
  }
  return true;
}

[[noreturn]] void Execute(const ProcessRequest& request, const Launch& launch, pid_t parent, int failure_pipe) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(127);
  }
  setpgid(0, 0);
  ResetSignals();
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (nothing >= 0 && dup2(nothing, STDIN_FILENO) >= 0 && PlaceDescriptors(request.descriptors)) {
    execve(launch.program.c_str(), launch.arguments.data(), launch.environment.data());
  }
  const int reason = errno;
  (void)!write(failure_pipe, &reason, sizeof reason);
  _exit(127);
}

bool IsExecutableFile(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored) && access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::string ProcessEnd::Text() const {
  return signalled ? "signal " + std::to_string(status) + " (" + strsignal(status) + ")"
                   : "exit status " + std::to_string(status);
}

std::string FindProgram(const std::string& name) {
  if (name.find('/') != std::string::npos) {
    return IsExecutableFile(name) ? name : "";
  }
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error && IsExecutableFile(self.parent_path() / name)) {
    return self.parent_path() / name;
  }
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin");
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (const std::string candidate = folder + "/" + name; IsExecutableFile(candidate)) {
      return candidate;
    }
  }
  return "";
}

Result<ChildProcess> ChildProcess::Start(const ProcessRequest& request) {
  const Launch launch = Prepare(request);
  if (launch.program.empty()) {
    return Error{-1, "there is no program '" + request.arguments.front() + "' here"};
  }
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    return Error{-1, std::string("no pipe: ") + std::strerror(errno)};
  }
  UniqueFd reader(ends[0]), writer(ends[1]);
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid == 0) {
    Execute(request, launch, parent, writer.Get());
  }
  if (pid < 0) {
    return Error{-1, std::string("cannot start another process: ") + std::strerror(errno)};
  }
  ChildProcess child(pid, UniqueFd(static_cast<int>(syscall(SYS_pidfd_open, pid, 0))));
  writer.Reset();
  int reason = 0;
  if (read(reader.Get(), &reason, sizeof reason) == sizeof reason) {
    return Error{-1, "cannot execute " + launch.program + ": " + std::strerror(reason)};
  }
  return child;
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : m_pid(std::exchange(other.m_pid, -1)), m_pidfd(std::move(other.m_pidfd)), m_end(other.m_end) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
  std::swap(m_pid, other.m_pid);
  std::swap(m_pidfd, other.m_pidfd);
  std::swap(m_end, other.m_end);
  return *this;
}

ChildProcess::~ChildProcess() {
  if (m_pid > 0 && !m_end) {
    End(std::chrono::milliseconds(0));
  }
}

void ChildProcess::Signal(int number) const {
  if (m_pid > 0 && !m_end) {
    kill(m_pid, number);  // not reaped yet, so the number is still its own
  }
}

std::optional<ProcessEnd> ChildProcess::Wait(std::chrono::milliseconds patience) {
  if (m_end) {
    return m_end;
  }
  pollfd ended{m_pidfd.Get(), POLLIN, 0};
  const auto deadline = std::chrono::steady_clock::now() + patience;
  for (int left = static_cast<int>(patience.count()); poll(&ended, 1, left) < 0 && errno == EINTR;) {
    const auto rest =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    left = std::max(0, static_cast<int>(rest.count()));
  }
  int status = 0;
  if (waitpid(m_pid, &status, WNOHANG) == m_pid) {
    const bool signalled = WIFSIGNALED(status);
    m_end = ProcessEnd{signalled ? WTERMSIG(status) : WEXITSTATUS(status), signalled};
  }
  return m_end;
}

ProcessEnd ChildProcess::End(std::chrono::milliseconds patience) {
  if (patience.count() > 0) {
    Signal(SIGTERM);
    if (const auto end = Wait(patience)) {
      return *end;
    }
  }
  Signal(SIGKILL);
  constexpr std::chrono::milliseconds kKernelsTime(10000);  // SIGKILL ends everything but a process in the kernel
  return Wait(kKernelsTime).value_or(ProcessEnd{SIGKILL, true});
}

}  // namespace sim::tvsim
