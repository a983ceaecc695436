// SPDX-License-Identifier: Apache-2.0
#include "simulator/framework/EndSignals.h"

#include <glib-unix.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <utility>

namespace sim::framework {
namespace {

/// A descriptor that tells of the signals, which nothing else does from now on.
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

EndSignals::EndSignals(GMainContext* context, std::function<void()> onSignal)
    : m_onSignal(std::move(onSignal)), m_fd(BlockAndWatch()), m_source(g_unix_fd_source_new(m_fd.Get(), G_IO_IN)) {
  g_source_set_priority(m_source, G_PRIORITY_HIGH);
  g_source_set_callback(m_source, G_SOURCE_FUNC(OnReadable), this, nullptr);
  g_source_attach(m_source, context);
}

EndSignals::~EndSignals() {
  g_source_destroy(m_source);
  g_source_unref(m_source);
}

gboolean EndSignals::OnReadable(gint fd, GIOCondition, gpointer self) {
  signalfd_siginfo signal{};
  if (read(fd, &signal, sizeof signal) > 0) {
    static_cast<EndSignals*>(self)->m_onSignal();
  }
  return G_SOURCE_CONTINUE;
}

}  // namespace sim::framework
