// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_BASE_ENDSIGNALS_H
#define SIMULATOR_BASE_ENDSIGNALS_H

#include "simulator/base/UniqueFd.h"

namespace sim {

/// The signals that ask the process to end: SIGTERM, SIGINT, SIGHUP. They are blocked for the rest of the process, so
/// that it does not matter who sets handlers, and told by a descriptor. One object a process, made before other
/// threads, which take its mask over. Loop thread only.
class EndSignals {
 public:
  EndSignals();

  /// Is readable when there is a signal.
  int Descriptor() const { return m_fd.Get(); }
  /// Whether there was one.
  bool Take() const;

 private:
  const UniqueFd m_fd;
};

}  // namespace sim

#endif
