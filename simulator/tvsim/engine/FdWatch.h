// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_ENGINE_FDWATCH_H
#define SIMULATOR_TVSIM_ENGINE_FDWATCH_H

#include <cstdint>
#include <functional>

namespace sim::tvsim {

/// Calls a function as often as a descriptor has something to tell, but not while that call runs, which may run the
/// main context. For descriptors that hardly ever do: a thread waits for all of them together and wakes the default
/// main context, as each that the context polls by itself costs every command of a client its share. Loop thread only.
class FdWatch {
 public:
  enum class For {
    kInput,   ///< also when the other side has gone
    kHangUp,  ///< only then
  };

  /// `fd` outlives the watch: a socket, or another descriptor that can be waited for.
  FdWatch(int fd, For what, std::function<void()> on_ready);
  /// May come from within `on_ready`.
  ~FdWatch();
  FdWatch(const FdWatch&) = delete;
  FdWatch& operator=(const FdWatch&) = delete;

 private:
  class Hub;

  void Arm(int operation) const;

  const int m_fd;
  const uint32_t m_events;
  const uint64_t m_number;  ///< no other watch has ever had it
  const std::function<void()> m_on_ready;
};

}  // namespace sim::tvsim

#endif
