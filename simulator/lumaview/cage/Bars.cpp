// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/cage/Bars.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "simulator/lumaview/cage/CallFilter.h"
#include "simulator/lumaview/cage/PathFilter.h"

namespace sim::lumaview::cage {
namespace {

/// Memory of the decoder itself, beside the frame and a file for coefficients: a picture of 64 Mpx, the most that is
/// held as a whole, takes 1.2 GB in the hungriest format (JPEG XL).
constexpr rlim_t kDataBytes = 1536u << 20;
/// A file of coefficients is mapped as a whole; the largest picture has 3 GB of them.
constexpr rlim_t kMappedBytes = rlim_t{4096} << 20;
/// The three standard ones, the channel, the file, the frame, coefficients, and some that libraries hold for a moment.
constexpr rlim_t kDescriptors = 16;
/// Threads of one decode that count together.
constexpr rlim_t kBusyThreads = 4;

void Limit(int resource, rlim_t most) {
  rlimit limit{};
  getrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
  limit.rlim_cur = std::min(most, limit.rlim_max);
  limit.rlim_max = limit.rlim_cur;
  setrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
}

/// What is mapped already: libraries, mostly.
rlim_t MappedBytes() {
  std::ifstream file("/proc/self/statm");
  rlim_t pages = 0;
  file >> pages;
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

/// When memory runs out, the picture goes before the engine does.
void OfferToTheMemoryKiller() {
  std::ofstream file("/proc/self/oom_score_adj");
  file << 1000;
}

void SetLimits() {
  if (sizeof(void*) > 4) {
    Limit(RLIMIT_AS, MappedBytes() + kDataBytes + kMappedBytes);
  }
  Limit(RLIMIT_DATA, kDataBytes);
  Limit(RLIMIT_FSIZE, 0);
  Limit(RLIMIT_CORE, 0);
  Limit(RLIMIT_NOFILE, kDescriptors);
  Limit(RLIMIT_MEMLOCK, 0);
}

}  // namespace

uint32_t CloseCage() {
  OfferToTheMemoryKiller();
  SetLimits();
  prctl(PR_SET_DUMPABLE, 0);
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  uint32_t bars = 0;
  bars |= ForbidPaths() ? kFileBar : 0u;
  bars |= ForbidCalls() ? kCallBar : 0u;
  return bars;
}

void AllowRequest(uint64_t seconds) {
  timespec used{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  rlimit limit{};
  limit.rlim_cur = static_cast<rlim_t>(used.tv_sec) + 1 + static_cast<rlim_t>(seconds) * kBusyThreads;
  limit.rlim_max = RLIM_INFINITY;
  setrlimit(RLIMIT_CPU, &limit);
}

std::string DescribeBars(uint32_t bars) {
  std::string text = "limits on memory and time";
  text += (bars & kFileBar) != 0 ? ", no files (landlock)" : ", but files are not barred (this kernel has no landlock)";
  text += (bars & kCallBar) != 0 ? ", no other system calls (seccomp)"
                                 : ", but system calls are not barred (seccomp is forbidden here)";
  return text;
}

uint32_t TryBars() {
  const pid_t child = fork();
  if (child == 0) {
    _exit(static_cast<int>(CloseCage()));
  }
  int status = 0;
  const bool ended = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
  return ended ? static_cast<uint32_t>(WEXITSTATUS(status)) : 0;
}

}  // namespace sim::lumaview::cage
