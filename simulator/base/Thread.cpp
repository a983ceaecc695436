// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/Thread.h"

#include <pthread.h>

#include <csignal>
#include <utility>

namespace sim {
namespace {

class BlockedSignals {
 public:
  BlockedSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &m_before);
  }
  ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

 private:
  sigset_t m_before;
};

}  // namespace

std::thread StartThread(const char* name, std::function<void()> body) {
  // A new thread inherits the mask; blocking inside the body would leave a gap.
  const BlockedSignals blocked;
  return std::thread([name, run = std::move(body)] {
    pthread_setname_np(pthread_self(), name);
    run();
  });
}

}  // namespace sim
