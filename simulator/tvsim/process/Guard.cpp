// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/process/Guard.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>

#include "simulator/base/Log.h"
#include "simulator/tvsim/process/Namespaces.h"

namespace sim::tvsim {
namespace {

constexpr int kFailed = 1;
constexpr int kNoEnvironment = 2;
/// After a signal: the engine's orderly end, then the X server's. A job that takes longer hangs.
constexpr timespec kJobsTime{10, 0};

sigset_t GuardedSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) {
    sigaddset(&signals, number);
  }
  return signals;
}

/// Takes every ended child; true when `job` was among them, with its status.
bool Reap(pid_t job, int& status) {
  bool ended = false;
  int one = 0;
  for (pid_t child; (child = waitpid(-1, &one, WNOHANG)) > 0;) {
    if (child == job) {
      status = one;
      ended = true;
    }
  }
  return ended;
}

/// A signal from the terminal has reached the whole foreground group already.
bool FromTerminal(const siginfo_t& info) {
  return info.si_code == SI_KERNEL;
}

/// Waits until `job` has ended; returns its wait status.
int Watch(pid_t job, const sigset_t& signals) {
  int status = 0;
  bool ending = false;
  while (!Reap(job, status)) {
    siginfo_t info{};
    const int number = ending ? sigtimedwait(&signals, &info, &kJobsTime) : sigwaitinfo(&signals, &info);
    if (number < 0 && errno == EAGAIN) {
      Log(LogLevel::kError, "tvsim", "does not end when asked; it is killed");
      kill(job, SIGKILL);
    } else if (number > 0 && number != SIGCHLD) {
      ending = true;
      if (!FromTerminal(info)) {
        kill(job, number);
      }
    }
  }
  return status;
}

/// Ends what the job left: as their reaper (PR_SET_CHILD_SUBREAPER or first of a namespace) this process is the parent
/// of every orphan. Killing an orphan hands its own children over, hence the loop.
void EndOrphans() {
  char path[64];
  std::snprintf(path, sizeof path, "/proc/self/task/%d/children", getpid());
  for (;;) {
    FILE* list = std::fopen(path, "re");
    int child = 0;
    bool any = false;
    while (list != nullptr && std::fscanf(list, "%d", &child) == 1) {
      any = true;
      kill(child, SIGKILL);
    }
    if (list != nullptr) {
      std::fclose(list);
    }
    if (!any || waitpid(-1, nullptr, 0) < 0) {
      return;
    }
  }
}

int ExitStatus(int wait_status) {
  return WIFEXITED(wait_status) ? WEXITSTATUS(wait_status) : kFailed;
}

/// Forks, runs `inside` in the child and watches it. `before` is the signal mask that the job shall have.
int GuardChild(const sigset_t& before, const std::function<int()>& inside, const std::function<void()>& clean_up) {
  const pid_t child = fork();
  if (child < 0) {
    Log(LogLevel::kError, "tvsim", "cannot start another process");
    return kNoEnvironment;
  }
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const int status = inside();
    std::fflush(nullptr);
    _exit(status);
  }
  const int status = Watch(child, GuardedSignals());
  EndOrphans();
  clean_up();
  sigprocmask(SIG_SETMASK, &before, nullptr);
  return ExitStatus(status);
}

int GuardJob(const sigset_t& before, const std::function<int()>& job, const std::function<void()>& clean_up) {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  return GuardChild(
      before,
      [&] {
        sigprocmask(SIG_SETMASK, &before, nullptr);
        return job();
      },
      clean_up);
}

}  // namespace

int RunGuarded(bool own_namespaces, const std::function<int()>& job, const std::function<void()>& clean_up) {
  const sigset_t signals = GuardedSignals();
  sigset_t before;
  sigprocmask(SIG_BLOCK, &signals, &before);
  if (!own_namespaces) {
    return GuardJob(before, job, clean_up);
  }
  const auto no_display = [](const Error& error) {
    Log(LogLevel::kError, "tvsim", "cannot make a private X display: " + error.reason);
    return kNoEnvironment;
  };
  if (const Status left = LeaveNamespaces(); !left) {
    clean_up();
    return no_display(left.error());
  }
  // The signals stay blocked in the first process: unblocked ones are lost there.
  const auto guard_inside = [&] {
    const Status furnished = FurnishNamespaces();
    return furnished ? GuardJob(before, job, clean_up) : no_display(furnished.error());
  };
  return GuardChild(before, guard_inside, clean_up);
}

}  // namespace sim::tvsim
