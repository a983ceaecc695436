// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/EndSignals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

namespace sim {
namespace {

UniqueFd BlockAndWatch() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    sigaddset(&signals, signal);
  }
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return UniqueFd(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

}  // namespace

EndSignals::EndSignals() : m_fd(BlockAndWatch()) {}

bool EndSignals::Take() const {
  signalfd_siginfo signal{};
  return read(m_fd.Get(), &signal, sizeof signal) > 0;
}

}  // namespace sim
