// SPDX-License-Identifier: Apache-2.0
#include "simulator/framework/EndSignals.h"

#include <glib-unix.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <utility>

namespace sim::framework {
namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};

/// For the handler, which finds nothing but globals. Never closed, because a signal may come at any time.
int wakeUp = -1;

void OnEndSignal(int) {
  const int saved = errno;
  const uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(wakeUp, &one, sizeof one);
  errno = saved;
}

}  // namespace

EndSignals::EndSignals(GMainContext* context, std::function<void()> onSignal) : m_onSignal(std::move(onSignal)) {
  wakeUp = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  m_source = g_unix_fd_source_new(wakeUp, G_IO_IN);
  g_source_set_priority(m_source, G_PRIORITY_HIGH);
  g_source_set_callback(m_source, G_SOURCE_FUNC(OnReadable), this, nullptr);
  g_source_attach(m_source, context);
  Assert();
}

EndSignals::~EndSignals() {
  g_source_destroy(m_source);
  g_source_unref(m_source);
}

void EndSignals::Assert() {
  struct sigaction current {};
  if (sigaction(kSignals[0], nullptr, &current) == 0 && current.sa_handler == OnEndSignal) {
    return;
  }
  struct sigaction action {};
  action.sa_handler = OnEndSignal;
  action.sa_flags = SA_RESTART;
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : kSignals) {
    sigaction(signal, &action, nullptr);
    sigaddset(&signals, signal);
  }
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

gboolean EndSignals::OnReadable(gint fd, GIOCondition, gpointer self) {
  uint64_t count = 0;
  if (read(fd, &count, sizeof count) > 0) {
    static_cast<EndSignals*>(self)->m_onSignal();
  }
  return G_SOURCE_CONTINUE;
}

}  // namespace sim::framework
