// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/cage/CallFilter.h"

#include <fcntl.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>

#include "simulator/base/CHandle.h"
#include "simulator/lumaview/cage/Bars.h"

#ifndef PR_SET_VMA
#define PR_SET_VMA 0x53564d41
#endif

namespace sim::lumaview::cage {
namespace {

using Filter = CHandle<void, seccomp_release>;

/// Allowed whatever their arguments.
constexpr int kAllowed[] = {
    // Reading what is open.
    SCMP_SYS(read), SCMP_SYS(pread64), SCMP_SYS(readv), SCMP_SYS(lseek), SCMP_SYS(_llseek), SCMP_SYS(fstat),
    SCMP_SYS(fstat64), SCMP_SYS(close),
    // Memory; see below for what may not be mapped.
    SCMP_SYS(brk), SCMP_SYS(munmap), SCMP_SYS(mremap),
    // Threads.
    SCMP_SYS(futex), SCMP_SYS(futex_time64), SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(sched_yield),
    SCMP_SYS(sched_getaffinity), SCMP_SYS(gettid), SCMP_SYS(getpid), SCMP_SYS(exit), SCMP_SYS(exit_group),
    SCMP_SYS(set_tls), SCMP_SYS(set_tid_address),
    // Signals of its own.
    SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn), SCMP_SYS(sigreturn),
    SCMP_SYS(sigaltstack),
    // Time, chance and the machine.
    SCMP_SYS(clock_gettime), SCMP_SYS(clock_gettime64), SCMP_SYS(clock_getres), SCMP_SYS(clock_getres_time64),
    SCMP_SYS(gettimeofday), SCMP_SYS(time), SCMP_SYS(nanosleep), SCMP_SYS(clock_nanosleep),
    SCMP_SYS(clock_nanosleep_time64), SCMP_SYS(getrandom), SCMP_SYS(uname), SCMP_SYS(sysinfo),
    SCMP_SYS(restart_syscall), SCMP_SYS(cacheflush), SCMP_SYS(getcpu)};

/// What libraries ask on the way and do without: settings, the number of processors, names, the terminal.
constexpr int kDenied[] = {SCMP_SYS(access),     SCMP_SYS(faccessat), SCMP_SYS(faccessat2), SCMP_SYS(readlink),
                           SCMP_SYS(readlinkat), SCMP_SYS(stat),      SCMP_SYS(stat64),     SCMP_SYS(lstat),
                           SCMP_SYS(lstat64),    SCMP_SYS(statx),     SCMP_SYS(newfstatat), SCMP_SYS(fstatat64),
                           SCMP_SYS(ioctl),      SCMP_SYS(fcntl),     SCMP_SYS(fcntl64)};

/// Adds rules to a filter. A call that this machine does not have needs none.
class Rules {
 public:
  explicit Rules(scmp_filter_ctx filter) : m_filter(filter) {}

  void Add(uint32_t action, int call, std::initializer_list<scmp_arg_cmp> arguments = {}) {
    const int result =
        seccomp_rule_add_array(m_filter, action, call, static_cast<unsigned int>(arguments.size()), arguments.begin());
    m_good = m_good && (result == 0 || result == -EDOM);
  }
  bool AreGood() const { return m_good; }

 private:
  const scmp_filter_ctx m_filter;
  bool m_good = true;
};

constexpr uint32_t Deny(int error) {
  return SCMP_ACT_ERRNO(static_cast<uint32_t>(error));
}

void AddMemory(Rules& rules) {
  for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mmap2), SCMP_SYS(mprotect)}) {
    rules.Add(SCMP_ACT_ALLOW, call, {SCMP_A2_64(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0)});
  }
  // Giving memory back and taking it, and no holes in files that others read.
  for (const scmp_datum_t advice : {MADV_NORMAL, MADV_SEQUENTIAL, MADV_WILLNEED, MADV_DONTNEED, MADV_FREE,
                                    MADV_HUGEPAGE, MADV_NOHUGEPAGE, MADV_POPULATE_WRITE}) {
    rules.Add(SCMP_ACT_ALLOW, SCMP_SYS(madvise), {SCMP_A2_64(SCMP_CMP_EQ, advice)});
  }
}

void AddThreads(Rules& rules) {
  constexpr scmp_datum_t kThread = CLONE_VM | CLONE_FS | CLONE_FILES | CLONE_SIGHAND | CLONE_THREAD;
  rules.Add(SCMP_ACT_ALLOW, SCMP_SYS(clone), {SCMP_A0_64(SCMP_CMP_MASKED_EQ, kThread, kThread)});
  // Its flags lie in memory, where a filter cannot look; the C library then takes the older call.
  rules.Add(Deny(ENOSYS), SCMP_SYS(clone3));
  const auto self = static_cast<scmp_datum_t>(getpid());
  rules.Add(SCMP_ACT_ALLOW, SCMP_SYS(tgkill), {SCMP_A0_64(SCMP_CMP_EQ, self)});
  rules.Add(SCMP_ACT_ALLOW, SCMP_SYS(prctl), {SCMP_A0_64(SCMP_CMP_EQ, PR_SET_NAME)});
  rules.Add(SCMP_ACT_ALLOW, SCMP_SYS(prctl), {SCMP_A0_64(SCMP_CMP_EQ, PR_SET_VMA)});
  for (const int call : {SCMP_SYS(sched_setscheduler), SCMP_SYS(sched_getscheduler), SCMP_SYS(sched_getparam),
                         SCMP_SYS(setpriority), SCMP_SYS(membarrier)}) {
    rules.Add(Deny(EPERM), call);
  }
  // Threads that work together keep to processors of their own.
  rules.Add(SCMP_ACT_ALLOW, SCMP_SYS(sched_setaffinity), {SCMP_A0_64(SCMP_CMP_EQ, 0)});
}

void AddChannel(Rules& rules) {
  for (const int call : {SCMP_SYS(sendmsg), SCMP_SYS(recvmsg)}) {
    rules.Add(SCMP_ACT_ALLOW, call, {SCMP_A0_64(SCMP_CMP_EQ, kChannelFd)});
  }
  // Complaints of libraries, which go nowhere.
  for (const scmp_datum_t fd : {STDOUT_FILENO, STDERR_FILENO}) {
    rules.Add(SCMP_ACT_ALLOW, SCMP_SYS(write), {SCMP_A0_64(SCMP_CMP_EQ, fd)});
    rules.Add(SCMP_ACT_ALLOW, SCMP_SYS(writev), {SCMP_A0_64(SCMP_CMP_EQ, fd)});
  }
}

void AddLimits(Rules& rules) {
  // Its own processor time, a request at a time; and reading any of its own.
  rules.Add(SCMP_ACT_ALLOW, SCMP_SYS(prlimit64), {SCMP_A0_64(SCMP_CMP_EQ, 0), SCMP_A1_64(SCMP_CMP_EQ, RLIMIT_CPU)});
  rules.Add(SCMP_ACT_ALLOW, SCMP_SYS(prlimit64), {SCMP_A0_64(SCMP_CMP_EQ, 0), SCMP_A2_64(SCMP_CMP_EQ, 0)});
}

void AddPaths(Rules& rules) {
  constexpr scmp_datum_t kChanges = O_ACCMODE | O_CREAT | O_TRUNC | O_APPEND;
  rules.Add(Deny(EACCES), SCMP_SYS(openat), {SCMP_A2_64(SCMP_CMP_MASKED_EQ, kChanges, O_RDONLY)});
  rules.Add(Deny(EACCES), SCMP_SYS(open), {SCMP_A1_64(SCMP_CMP_MASKED_EQ, kChanges, O_RDONLY)});
  for (const int call : kDenied) {
    rules.Add(Deny(EACCES), call);
  }
}

}  // namespace

bool ForbidCalls() {
  const Filter filter(seccomp_init(SCMP_ACT_KILL_PROCESS));
  if (!filter) {
    return false;
  }
  // Decoders do without the guard against speculation: they are slower by some per cent with it, and there is nothing
  // in their memory but the picture.
  seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_SSB, 1);
  Rules rules(filter.get());
  for (const int call : kAllowed) {
    rules.Add(SCMP_ACT_ALLOW, call);
  }
  AddMemory(rules);
  AddThreads(rules);
  AddChannel(rules);
  AddLimits(rules);
  AddPaths(rules);
  return rules.AreGood() && seccomp_load(filter.get()) == 0;
}

}  // namespace sim::lumaview::cage
