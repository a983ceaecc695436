// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/LogStage.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>

namespace sim {
namespace {

constexpr uint64_t kMagic = 0x6567617453676f4c;
/// A command logs ten lines of a hundred bytes; one that logs more than this has other things to wait for.
constexpr size_t kRoom = 60 << 10;
/// Who follows the log of a long command sees it grow.
constexpr int64_t kLongestHold = 10;

/// Milliseconds, as exact as the system's tick: a look costs less than what it saves.
int64_t Now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

}  // namespace

struct LogStage::Shared {
  uint64_t magic;
  pthread_mutex_t mutex;
  bool held;
  int64_t since;
  size_t used;
  char lines[kRoom];
};

/// A process that is killed while it has the lock leaves everything in order: what was not counted is not there.
class LogStage::Lock {
 public:
  explicit Lock(Shared& shared) : m_mutex(shared.mutex) {
    if (pthread_mutex_lock(&m_mutex) == EOWNERDEAD) {
      pthread_mutex_consistent(&m_mutex);
    }
  }
  ~Lock() { pthread_mutex_unlock(&m_mutex); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  pthread_mutex_t& m_mutex;
};

Result<UniqueFd> LogStage::MakeMemory() {
  UniqueFd memory(memfd_create("log stage", MFD_CLOEXEC));
  if (!memory || ftruncate(memory.Get(), sizeof(Shared)) != 0) {
    return Error{errno, std::string("no memory for the log's lines: ") + std::strerror(errno)};
  }
  void* mapped = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED, memory.Get(), 0);
  if (mapped == MAP_FAILED) {
    return Error{errno, std::string("no memory for the log's lines: ") + std::strerror(errno)};
  }
  auto* shared = static_cast<Shared*>(mapped);
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  pthread_mutex_init(&shared->mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
  shared->magic = kMagic;
  munmap(mapped, sizeof(Shared));
  return memory;
}

Result<std::unique_ptr<LogStage>> LogStage::Open(int memory) {
  struct stat status {};
  if (fstat(memory, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size != sizeof(Shared)) {
    return Error{EBADF, "this descriptor is no log stage"};
  }
  void* mapped = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED, memory, 0);
  if (mapped == MAP_FAILED) {
    return Error{errno, std::string("cannot map the log stage: ") + std::strerror(errno)};
  }
  auto* shared = static_cast<Shared*>(mapped);
  if (shared->magic != kMagic) {
    munmap(mapped, sizeof(Shared));
    return Error{EBADF, "this descriptor is no log stage"};
  }
  madvise(mapped, sizeof(Shared), MADV_DONTFORK);  // a decoder's process has no business in here
  return std::unique_ptr<LogStage>(new LogStage(shared));
}

LogStage::~LogStage() {
  munmap(m_shared, sizeof(Shared));
}

void LogStage::Hold() {
  const Lock lock(*m_shared);
  m_shared->held = true;
  m_shared->since = Now();
}

void LogStage::Release(const Writer& write) {
  const Lock lock(*m_shared);
  m_shared->held = false;
  FlushLocked(write);
}

void LogStage::Add(std::string_view line, const Writer& write) {
  const Lock lock(*m_shared);
  m_shared->held = m_shared->held && Now() - m_shared->since <= kLongestHold;
  if (!m_shared->held || line.size() > kRoom - m_shared->used) {
    FlushLocked(write);
  }
  if (!m_shared->held || line.size() > kRoom) {
    return write(line);
  }
  std::memcpy(m_shared->lines + m_shared->used, line.data(), line.size());
  m_shared->used += line.size();
}

void LogStage::Flush(const Writer& write) {
  const Lock lock(*m_shared);
  FlushLocked(write);
}

void LogStage::FlushLocked(const Writer& write) {
  if (m_shared->used > 0) {
    write({m_shared->lines, m_shared->used});
    m_shared->used = 0;
  }
}

}  // namespace sim
