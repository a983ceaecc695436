// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/cage/Nursery.h"

#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "simulator/lumaview/cage/Bars.h"
#include "simulator/lumaview/cage/Child.h"
#include "simulator/lumaview/cage/Message.h"
#include "simulator/lumaview/decode/Module.h"
#include "simulator/lumaview/image/Colour.h"

namespace sim::lumaview::cage {
namespace {

/// On kernels that let a process ask for it (from 6.12) its turns are longer, and what is woken beside it has the
/// processor at once. Its share stays the same; it computes for long, and nobody waits for its next millisecond.
void AskForLongTurns() {
  if (sched_getscheduler(0) != SCHED_OTHER) {
    return;  // somebody has decided
  }
  struct {
    uint32_t size;
    uint32_t policy;
    uint64_t flags;
    int32_t nice;
    uint32_t priority;
    uint64_t runtime_ns;
    uint64_t deadline_ns;
    uint64_t period_ns;
  } attributes{};  // the C library has no name for it
  attributes.size = sizeof attributes;
  attributes.policy = SCHED_OTHER;
  attributes.nice = getpriority(PRIO_PROCESS, 0);
  attributes.runtime_ns = 20'000'000;
  syscall(SYS_sched_setattr, 0, &attributes, 0);
}

/// Until `Leave`, a process and those that it forks have the engine's processor and no other. An engine that starts
/// waits for the X server again and again; what is prepared meanwhile fills these gaps, and the server, which would
/// else find its own processor taken, has another for itself.
class SharedProcessor {
 public:
  void Enter(int processor) {
    if (processor < 0 || sched_getaffinity(0, sizeof m_before, &m_before) != 0) {
      return;
    }
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<size_t>(processor), &one);
    m_is_entered = sched_setaffinity(0, sizeof one, &one) == 0;
  }
  void Leave() {
    if (std::exchange(m_is_entered, false)) {
      sched_setaffinity(0, sizeof m_before, &m_before);
    }
  }

 private:
  cpu_set_t m_before{};
  bool m_is_entered = false;
};

/// This process ends with the thread that forked it.
void DieWith(pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(0);
  }
}

void CloseFrom(int first) {
  if (close_range(static_cast<unsigned int>(first), ~0u, 0) != 0) {
    const long most = sysconf(_SC_OPEN_MAX);
    for (int fd = first; fd < most; ++fd) {
      close(fd);
    }
  }
}

/// Keeps `kept` as `kChannelFd` and nothing else; the standard ones lead nowhere.
void KeepOnly(int kept) {
  dup2(kept, kChannelFd);
  CloseFrom(kChannelFd + 1);
  const int nowhere = open("/dev/null", O_RDWR);
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    dup2(nowhere, fd);
  }
  if (nowhere > kChannelFd) {
    close(nowhere);
  }
}

/// What the engine does with its signals is not for these processes: they are ended by closing or killing.
void ForgetSignals() {
  for (int number = 1; number < NSIG; ++number) {
    std::signal(number, SIG_DFL);
  }
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, nullptr);
}

/// In a child those that tell of its own faults have their way.
void AllowFaultSignals() {
  sigset_t faults;
  sigemptyset(&faults);
  for (const int number : {SIGSYS, SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGXCPU}) {
    sigaddset(&faults, number);
  }
  sigprocmask(SIG_UNBLOCK, &faults, nullptr);
}

class Children {
 public:
  /// `channel`: the child's end. It is kept here too: it tells when the engine lets go, and carries the last word.
  void Spawn(UniqueFd channel) {
    const pid_t nursery = getpid();
    const pid_t pid = fork();
    if (pid == 0) {
      DieWith(nursery);
      prctl(PR_SET_NAME, "lumaview-decode");
      KeepOnly(channel.Get());
      AllowFaultSignals();
      RunChild();
    }
    if (pid > 0) {
      m_children.push_back({pid, std::move(channel)});
      return;
    }
    Message refusal{.verb = Verb::kHeader};
    refusal.SetStatus(Error{kOutOfMemory, std::string("no process to decode in: ") + std::strerror(errno)});
    Send(channel.Get(), refusal);
  }

  void AddTo(std::vector<pollfd>& polled) const {
    for (const Child& child : m_children) {
      polled.push_back({child.channel.Get(), 0, 0});
    }
  }

  /// `polled`: of `AddTo`, looked at.
  void KillUnwanted(const pollfd* polled) {
    for (Child& child : m_children) {
      if ((polled++)->revents != 0) {
        kill(child.pid, SIGKILL);
        child.channel.Reset();
      }
    }
  }

  /// Before this process ends: nobody else would wait for them.
  void EndAll() {
    for (const Child& child : m_children) {
      kill(child.pid, SIGKILL);
    }
    for (const Child& child : m_children) {
      waitpid(child.pid, nullptr, 0);
    }
  }

  void Bury() {
    int status = 0;
    for (pid_t dead = waitpid(-1, &status, WNOHANG); dead > 0; dead = waitpid(-1, &status, WNOHANG)) {
      const auto child = std::find_if(m_children.begin(), m_children.end(),
                                      [dead](const Child& candidate) { return candidate.pid == dead; });
      if (child != m_children.end()) {
        Message last{.verb = Verb::kEnded};
        last.numbers[0] = status;
        Send(child->channel.Get(), last);
        m_children.erase(child);
      }
    }
  }

 private:
  struct Child {
    pid_t pid;
    UniqueFd channel;
  };
  std::vector<Child> m_children;
};

/// `names`: with a space behind each. What is loaded stays so; what is missing is missed where it is needed.
void LoadModules(const std::string& names) {
  std::istringstream words(names);
  for (std::string name; words >> name;) {
    (void)FindInModule(name.c_str(), name == kColourModule ? kColourSymbol : kDecoderSymbol);
  }
}

/// A process that begins with each picture meets every page of its memory for the first time, and half of what large
/// pictures cost is that. So children inherit a heap that is there already, though not one page of it is taken, and
/// comes in large pages; and what a library gives back is kept for what it asks for next.
void PrepareHeap() {
  constexpr int kMost = std::numeric_limits<int>::max();
  constexpr int kHeapBytes = 512 << 20;
  if (sizeof(void*) <= 4) {
    return;  // no room for it
  }
  mallopt(M_ARENA_MAX, 1);
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, kMost);
  mallopt(M_TOP_PAD, kHeapBytes);
  constexpr size_t kMoreThanIsFree = 1 << 20;
  void* volatile taken = std::malloc(kMoreThanIsFree);  // else the compiler leaves both calls out
  std::free(taken);
  mallopt(M_TOP_PAD, kHeapBytes / 8);
  const auto end = reinterpret_cast<uintptr_t>(sbrk(0));
  const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  const uintptr_t start = (end - kHeapBytes) / page * page;
  madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
}

[[noreturn]] void RunNursery(SharedProcessor& processor) {
  prctl(PR_SET_NAME, "lumaview-nursery");
  PrepareHeap();
  sigset_t deaths;
  sigemptyset(&deaths);
  sigaddset(&deaths, SIGCHLD);
  const int death = signalfd(-1, &deaths, SFD_CLOEXEC | SFD_NONBLOCK);
  Children children;
  std::vector<pollfd> polled;
  while (true) {
    polled.assign({{kChannelFd, POLLIN, 0}, {death, POLLIN, 0}});
    children.AddTo(polled);
    if (poll(polled.data(), polled.size(), -1) < 0 && errno != EINTR) {
      _exit(1);
    }
    children.KillUnwanted(polled.data() + 2);
    if (polled[1].revents != 0) {
      signalfd_siginfo info{};
      while (read(death, &info, sizeof info) > 0) {
      }
      children.Bury();
    }
    if (polled[0].revents != 0) {
      Message request;
      UniqueFd attached;
      if (Receive(kChannelFd, request, &attached) != Received::kMessage) {
        children.EndAll();
        _exit(0);
      }
      if (request.verb == Verb::kSpawn) {
        LoadModules(request.GetText());
        processor.Leave();  // its children have work to do
        children.Spawn(std::move(attached));
      }
    }
  }
}

/// Makes a nursery again when it was killed: by hand, or for lack of memory. One that ends by itself has no engine.
[[noreturn]] void RunKeeper(pid_t engine, int channel, int engines_processor) {
  SharedProcessor processor;
  processor.Enter(engines_processor);
  AskForLongTurns();
  DieWith(engine);
  prctl(PR_SET_NAME, "lumaview-keeper");
  // Not reached by what is meant for the engine's terminal.
  setsid();
  // Children of a nursery that was killed come here to be waited for.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  ForgetSignals();
  KeepOnly(channel);
  while (true) {
    const pid_t keeper = getpid();
    const pid_t nursery = fork();
    if (nursery == 0) {
      DieWith(keeper);
      RunNursery(processor);
    }
    int status = 0;
    for (pid_t dead = 0; dead != nursery;) {
      dead = waitpid(-1, &status, 0);
      if (dead < 0) {
        _exit(1);
      }
    }
    if (WIFEXITED(status)) {
      _exit(0);
    }
  }
}

}  // namespace

Result<Nursery> StartNursery() {
  auto channel = CreateChannel();
  if (!channel) {
    return channel.error();
  }
  const pid_t engine = getpid();
  const int processor = sched_getcpu();
  const pid_t keeper = fork();
  if (keeper < 0) {
    return Error{kOutOfMemory, std::string("no process for the decoders: ") + std::strerror(errno)};
  }
  if (keeper == 0) {
    RunKeeper(engine, channel->theirs.Get(), processor);
  }
  return Nursery{std::move(channel->ours), keeper};
}

}  // namespace sim::lumaview::cage
