// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/LogStage.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace sim {
namespace {

constexpr uint64_t kMagic = 0x6567617453676f4c;
/// A command logs ten lines of a hundred bytes; one that logs more than this has other things to wait for.
constexpr size_t kRoom = 60 << 10;

}  // namespace

/// Who holds his lines adds to them without the lock, as a command has many; all else is done with it.
struct LogStage::Shared {
  uint64_t magic;
  pthread_mutex_t mutex;
  std::atomic<pthread_t> holder;  ///< 0: nobody; in here, as each library has thread-local variables of its own
  std::atomic<size_t> used;       ///< bytes that the holder has added
  size_t written;                 ///< of these
  char lines[kRoom];
};
static_assert(std::atomic<pthread_t>::is_always_lock_free);
static_assert(std::atomic<size_t>::is_always_lock_free);

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

bool LogStage::IsHolder() const {
  return m_shared->holder.load(std::memory_order_relaxed) == pthread_self();
}

void LogStage::Hold() {
  m_shared->holder.store(pthread_self(), std::memory_order_relaxed);
}

void LogStage::Release(const Writer& write) {
  const Lock lock(*m_shared);
  FlushLocked(write);
  BeginAnewLocked();
  m_shared->holder.store(0, std::memory_order_relaxed);
}

void LogStage::Add(std::string_view line, const Writer& write) {
  if (IsHolder() && Keep(line)) {
    return;
  }
  const Lock lock(*m_shared);
  FlushLocked(write);
  if (IsHolder()) {
    BeginAnewLocked();
    if (Keep(line)) {
      return;
    }
  }
  write(line);
}

void LogStage::Flush(const Writer& write) {
  const Lock lock(*m_shared);
  FlushLocked(write);
}

/// The holder's. False when there is no room; it counts, for whoever else looks, once it is there as a whole.
bool LogStage::Keep(std::string_view line) {
  const size_t used = m_shared->used.load(std::memory_order_relaxed);
  if (line.size() > kRoom - used) {
    return false;
  }
  std::memcpy(m_shared->lines + used, line.data(), line.size());
  m_shared->used.store(used + line.size(), std::memory_order_release);
  return true;
}

void LogStage::FlushLocked(const Writer& write) {
  const size_t used = m_shared->used.load(std::memory_order_acquire);
  if (used > m_shared->written) {
    write({m_shared->lines + m_shared->written, used - m_shared->written});
    m_shared->written = used;
  }
}

/// When all is written. The holder only, as he may add to the lines at any time.
void LogStage::BeginAnewLocked() {
  m_shared->used.store(0, std::memory_order_relaxed);
  m_shared->written = 0;
}

}  // namespace sim
