// SPDX-License-Identifier: Apache-2.0
/// The engine's log lines. Each is two framework calls with the same module and level: the framework's prefix, then
/// the message. The forms join string literals, so that the compiler checks every argument against its format.
#ifndef ADAPTER_PICTURELOG_H
#define ADAPTER_PICTURELOG_H

#include <pthread.h>

#include <cstdint>
#include <type_traits>

#include "platform/olm_emp.h"

namespace olm {

/// The operation that a line is logged for. Made once at the start of an operation with `__FUNCTION__` and handed to
/// its helpers, so that their lines name the operation too.
struct Operation {
  const char* name;
};

inline constexpr unsigned int kLogModule = 2;

/// What "%x" prints of a handle, an address or a thread: its low 32 bits.
template <typename T>
unsigned int Hex32(T value) {
  if constexpr (std::is_pointer_v<T>) {
    return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(value));
  } else {
    return static_cast<unsigned int>(value);
  }
}

}  // namespace olm

#define PICTURE_LOG(operation, line, level, format, ...)                                            \
  do {                                                                                              \
    ::olm::COLMDebug::PrintLog(::olm::kLogModule, level, "[OLM][%s(%d)] ", (operation).name, line); \
    ::olm::COLMDebug::PrintLog(::olm::kLogModule, level, format __VA_OPT__(, ) __VA_ARGS__);        \
  } while (0)

#define PICTURE_LOG_COLOURED(operation, line, level, colour, format, ...)                                  \
  PICTURE_LOG(operation, line, level, colour "[Picture-EMP][%s (%d)] " format "\033[0m", (operation).name, \
              line __VA_OPT__(, ) __VA_ARGS__)

/// Failures, and the lines around every library call and every lock.
#define LOG_RED(operation, ...) PICTURE_LOG_COLOURED(operation, __LINE__, 1, "\033[31m", __VA_ARGS__)
/// Warnings.
#define LOG_YELLOW(operation, ...) PICTURE_LOG_COLOURED(operation, __LINE__, 2, "\033[33m", __VA_ARGS__)
/// Information.
#define LOG_BLUE(operation, ...) PICTURE_LOG_COLOURED(operation, __LINE__, 4, "\033[34m", __VA_ARGS__)
/// A bare message: neither colour nor the engine's prefix.
#define LOG_PLAIN(operation, level, ...) PICTURE_LOG(operation, __LINE__, level, __VA_ARGS__)
/// The traces of an operation. Leave is logged on some exits only, so these are statements and not a guard.
#define LOG_ENTER(operation) \
  PICTURE_LOG(operation, __LINE__, 2, "\033[34m[Picture-EMP] %s ==========> Enter\033[0m", (operation).name)
#define LOG_LEAVE(operation) \
  PICTURE_LOG(operation, __LINE__, 2, "\033[34m[Picture-EMP] %s ==========> Leave\033[0m", (operation).name)

namespace olm {

/// Holds a mutex for a scope, with the four traces that show a deadlock in the log. Made by TRACED_LOCK.
class TracedLock {
 public:
  TracedLock(const Operation& operation, int line, pthread_mutex_t& mutex, const char* name)
      : m_operation(operation), m_line(line), m_mutex(mutex), m_name(name) {
    PICTURE_LOG_COLOURED(m_operation, m_line, 1, "\033[31m", "wait to lock %s", m_name);
    pthread_mutex_lock(&m_mutex);
    PICTURE_LOG_COLOURED(m_operation, m_line, 1, "\033[31m", "lock %s", m_name);
  }
  ~TracedLock() {
    PICTURE_LOG_COLOURED(m_operation, m_line, 1, "\033[31m", "wait to unlock %s", m_name);
    pthread_mutex_unlock(&m_mutex);
    PICTURE_LOG_COLOURED(m_operation, m_line, 1, "\033[31m", "unlock %s", m_name);
  }
  TracedLock(const TracedLock&) = delete;
  TracedLock& operator=(const TracedLock&) = delete;

 private:
  const Operation& m_operation;
  const int m_line;
  pthread_mutex_t& m_mutex;
  const char* const m_name;
};

}  // namespace olm

/// Takes `mutex`, a member named as the traces name it, until the end of the scope.
#define TRACED_LOCK(operation, mutex) const ::olm::TracedLock tracedLock(operation, __LINE__, mutex, #mutex)

#endif
