// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/animate/Presenter.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <string>
#include <utility>

#include "simulator/base/Log.h"
#include "simulator/base/Thread.h"
#include "simulator/lumaview/screen/Reply.h"

namespace sim::lumaview {
namespace {

/// One frame is read by the server, one waits, one is the last transition's and one is being drawn.
constexpr size_t kEffectFrames = 4;
constexpr auto kOpenLimit = std::chrono::milliseconds(3 * kServerMilliseconds);
constexpr auto kCloseLimit = std::chrono::milliseconds(kServerMilliseconds);
constexpr Time kNever = Time::max();

}  // namespace

Presenter::Presenter(xcb_window_t parent, Services services)
    : m_parent(parent), m_services(std::move(services)), m_effect_frames(kEffectFrames) {}

Presenter::~Presenter() {
  Close();
}

Result<std::shared_ptr<Presenter>> Presenter::Open(xcb_window_t parent, Services services) {
  std::shared_ptr<Presenter> presenter(new Presenter(parent, std::move(services)));
  auto opened = std::make_shared<std::promise<Status>>();
  auto answer = opened->get_future();
  // The thread borrows the presenter; one that could not be opened in time keeps itself alive until it can end.
  auto abandoned = std::make_shared<std::shared_ptr<Presenter>>();
  presenter->m_thread =
      StartThread("lumaview-screen", [raw = presenter.get(), opened, abandoned] { raw->Run(*opened); });
  if (answer.wait_for(kOpenLimit) != std::future_status::ready) {
    *abandoned = presenter;
    presenter->m_tasks.Post([raw = presenter.get()] { raw->m_closing = true; });
    presenter->m_thread.detach();
    return Error{kDisplayFailed, "the X server does not answer"};
  }
  SIM_TRY(answer.get());
  return presenter;
}

void Presenter::Close() {
  if (!m_thread.joinable()) {
    return;
  }
  m_tasks.Post([this] { m_closing = true; });
  if (m_ended.get_future().wait_for(kCloseLimit) != std::future_status::ready) {
    // A server that takes no more bytes holds the thread in a write; without a connection it comes back.
    shutdown(m_connection_fd, SHUT_RDWR);
  }
  m_thread.join();
}

Size Presenter::GetSize() const {
  const uint64_t packed = m_packed_size;
  return {static_cast<int>(packed >> 32), static_cast<int>(packed & 0xFFFFFFFF)};
}

void Presenter::StoreSize(Size size) {
  m_packed_size = static_cast<uint64_t>(size.width) << 32 | static_cast<uint64_t>(size.height);
  m_services.on_size(size);
}

void Presenter::Run(std::promise<Status>& opened) {
  auto surface = Surface::Open(m_parent);
  if (surface) {
    m_surface = std::move(*surface);
    m_connection_fd = m_surface->GetFd();
    StoreSize(m_surface->GetSize());
    Log(LogLevel::kInfo, "lumaview", std::string("pictures are drawn by ") + m_surface->GetPainterName());
    opened.set_value(Ok());
    Loop();
    LoseWindow({kDisplayFailed, "the display was destroyed"});
    m_tasks.Close();
    m_surface.reset();
  } else {
    opened.set_value(surface.error());
  }
  m_ended.set_value();
}

void Presenter::Loop() {
  while (true) {
    m_tasks.Run();
    if (m_closing) {
      return;
    }
    if (!m_gone) {
      Pump();
      m_surface->Flush();
      // Sending may have read answers along the way, which poll would not tell of any more.
      const Surface::News news = m_surface->HandleEvents();
      HandleNews(news);
      if (news.any) {
        continue;
      }
    }
    Wait();
  }
}

void Presenter::Pump() {
  FinishPuts();
  StepTransition();
  StepAnimation();
  PutWanted();
  StepMotion();
}

void Presenter::HandleNews(const Surface::News& news) {
  if (news.gone) {
    Log(LogLevel::kWarning, "lumaview", "the window for pictures is gone");
    LoseWindow({kDisplayFailed, "the window is gone"});
    return;
  }
  m_exposed |= news.exposed;
  if (news.resized) {
    FollowSize();
  }
}

void Presenter::LoseWindow(const Error& error) {
  m_gone = true;
  StopAnimation();
  StopMotion();
  std::vector<Done> waiting;
  const auto collect = [&waiting](std::vector<Done>& done) {
    std::move(done.begin(), done.end(), std::back_inserter(waiting));
  };
  DropRerender(0, waiting);
  if (m_transition) {
    waiting.push_back(std::move(m_transition->done));
    m_transition.reset();
  }
  if (m_wanted) {
    collect(m_wanted->done);
    m_wanted.reset();
  }
  for (OnItsWay& put : m_on_their_way) {
    collect(put.done);
  }
  m_on_their_way.clear();
  m_content.reset();
  m_displayed.reset();
  m_effect_frames.Clear();
  for (const Done& done : waiting) {
    done(error);
  }
}

Time Presenter::NextWakeUp() const {
  Time next = kNever;
  if (m_gone) {
    return next;
  }
  for (const OnItsWay& put : m_on_their_way) {
    next = std::min(next, put.since + std::chrono::milliseconds(kServerMilliseconds));
  }
  if (!m_surface->CanPut()) {
    return next;  // the server's answer wakes up
  }
  if (m_transition) {
    next = std::min(next, m_transition->timeline.GetNextTime());
  }
  if (m_motion) {
    next = std::min(next, m_motion->timeline.GetNextTime());
  }
  if (m_animation && m_animation->next) {
    next = std::min(next, m_animation->timeline.GetNextTime());
  }
  return next;
}

void Presenter::Wait() {
  pollfd sources[] = {{m_tasks.GetFd(), POLLIN, 0}, {m_gone ? -1 : m_surface->GetFd(), POLLIN, 0}};
  const Time next = NextWakeUp();
  if (next == kNever) {
    ppoll(sources, 2, nullptr, nullptr);
    return;
  }
  const auto left = std::max(Duration(0), Duration(next - m_services.clock.Now()));
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  const timespec timeout{static_cast<time_t>(seconds.count()), static_cast<long>((left - seconds).count())};
  ppoll(sources, 2, &timeout, nullptr);
}

}  // namespace sim::lumaview
