// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/FdWatch.h"

#include <glib.h>
#include <poll.h>
#include <sys/epoll.h>

#include <atomic>
#include <map>
#include <utility>

#include "simulator/base/Thread.h"
#include "simulator/base/UniqueFd.h"

namespace sim::tvsim {

/// All watches of the process, and the thread that waits for them. Never ends, as the main context does not.
class FdWatch::Hub {
 public:
  static Hub& OfProcess() {
    static auto* const hub = new Hub;
    return *hub;
  }

  int Descriptor() const { return m_epoll.Get(); }

  uint64_t Add(FdWatch* watch) {
    m_watches.emplace(++m_last_number, watch);
    return m_last_number;
  }
  void Remove(uint64_t number) { m_watches.erase(number); }

 private:
  struct Source {
    GSource base;
    Hub* hub;
  };

  Hub() : m_epoll(epoll_create1(EPOLL_CLOEXEC)) {
    static GSourceFuncs functions = {OnPrepare, OnCheck, OnDispatch, nullptr, nullptr, nullptr};
    GSource* source = g_source_new(&functions, sizeof(Source));
    reinterpret_cast<Source*>(source)->hub = this;
    g_source_set_can_recurse(source, TRUE);  // for those whose call does not run
    g_source_attach(source, nullptr);
    g_source_unref(source);
    StartThread("tvsim-watch", [this] { Wait(); }).detach();
  }

  /// The thread: says that there is something to tell, and then rests until nothing is left.
  void Wait() {
    pollfd any{m_epoll.Get(), POLLIN, 0};
    while (true) {
      if (poll(&any, 1, -1) == 1) {
        m_ready = true;
        g_main_context_wakeup(nullptr);
        m_ready.wait(true);
      }
    }
  }

  static gboolean OnPrepare(GSource* source, gint* timeout) {
    *timeout = -1;
    return OnCheck(source);
  }
  static gboolean OnCheck(GSource* source) { return reinterpret_cast<Source*>(source)->hub->m_ready; }
  static gboolean OnDispatch(GSource* source, GSourceFunc, gpointer) {
    reinterpret_cast<Source*>(source)->hub->TellOne();
    return G_SOURCE_CONTINUE;
  }

  /// One a turn, as its call may end any other.
  void TellOne() {
    epoll_event event{};
    if (epoll_wait(m_epoll.Get(), &event, 1, 0) != 1) {
      m_ready = false;
      m_ready.notify_one();
      return;
    }
    const uint64_t number = event.data.u64;
    if (const auto found = m_watches.find(number); found != m_watches.end()) {
      const auto on_ready = found->second->m_on_ready;
      on_ready();
    }
    if (const auto left = m_watches.find(number); left != m_watches.end()) {
      left->second->Arm(EPOLL_CTL_MOD);
    }
  }

  const UniqueFd m_epoll;
  std::atomic<bool> m_ready{false};  ///< a watch may have something to tell
  std::map<uint64_t, FdWatch*> m_watches;
  uint64_t m_last_number = 0;
};

FdWatch::FdWatch(int fd, For what, std::function<void()> on_ready)
    : m_fd(fd),
      m_events(what == For::kInput ? uint32_t{EPOLLIN} : 0),
      m_number(Hub::OfProcess().Add(this)),
      m_on_ready(std::move(on_ready)) {
  Arm(EPOLL_CTL_ADD);
}

FdWatch::~FdWatch() {
  epoll_ctl(Hub::OfProcess().Descriptor(), EPOLL_CTL_DEL, m_fd, nullptr);
  Hub::OfProcess().Remove(m_number);
}

/// For one call: what is ready is not told again while that runs.
void FdWatch::Arm(int operation) const {
  epoll_event event{.events = m_events | EPOLLONESHOT, .data = {.u64 = m_number}};
  epoll_ctl(Hub::OfProcess().Descriptor(), operation, m_fd, &event);
}

}  // namespace sim::tvsim
