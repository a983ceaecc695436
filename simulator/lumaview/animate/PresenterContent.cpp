// SPDX-License-Identifier: Apache-2.0
// Which picture a window shows, and the way of its frames to the screen.
#include <algorithm>
#include <iterator>
#include <utility>

#include "simulator/base/Log.h"
#include "simulator/lumaview/animate/Presenter.h"
#include "simulator/lumaview/screen/Reply.h"

namespace sim::lumaview {
namespace {

using DoneList = std::vector<Presenter::Done>;

void TellAll(const DoneList& list, const Status& status) {
  for (const Presenter::Done& done : list) {
    if (done) {
      done(status);
    }
  }
}

void Append(DoneList& list, DoneList more) {
  std::move(more.begin(), more.end(), std::back_inserter(list));
}

Error Replaced() {
  return {kCancelled, "another picture took its place"};
}

}  // namespace

void Presenter::Show(Rendered picture, Owner owner, Done done) {
  PostAccept(std::move(picture), owner, std::move(done), std::nullopt);
}

void Presenter::RunEffect(int number, Rendered picture, Owner owner, Done done) {
  PostAccept(std::move(picture), owner, std::move(done), number);
}

void Presenter::PostAccept(Rendered picture, Owner owner, Done done, std::optional<int> effect) {
  const bool posted = m_tasks.Post([this, picture = std::move(picture), owner, done, effect]() mutable {
    Accept(std::move(picture), owner, {std::move(done)}, effect);
  });
  if (!posted) {
    // Not on the caller's thread: it may hold what the answer needs.
    m_services.pool.Post([done = std::move(done)] { done(Error{kDisplayFailed, "the display was destroyed"}); });
  }
}

void Presenter::SetLock(bool locked) {
  m_tasks.Post([this, locked] {
    m_locked = locked;
    if (locked) {
      FinishTransition();
      StopMotion();
    }
  });
}

void Presenter::Leave(Owner owner) {
  m_tasks.Post([this, owner] {
    if (m_rerender && m_rerender->owner == owner && !m_rerender->refresh) {
      DoneList dropped;
      DropRerender(owner, dropped);
      TellAll(dropped, Error{kCancelled, "the picture was destroyed"});
    }
    if (m_transition && m_transition->owner == owner) {
      FinishTransition();
    }
    if (m_owner == owner) {
      StopAnimation();
      StopMotion();
    }
  });
}

void Presenter::Accept(Rendered picture, Owner owner, DoneList done, std::optional<int> effect) {
  if (m_gone) {
    TellAll(done, Error{kDisplayFailed, "the window is gone"});
    return;
  }
  DropRerender(owner, done);
  if (picture.frame->GetSize() != m_surface->GetSize()) {
    RenderAgain({std::move(picture), owner, std::move(done), effect, false, nullptr});
  } else if (effect && !m_locked) {
    StartTransition(*effect, std::move(picture), owner, std::move(done));
  } else {
    ShowNow(std::move(picture), owner, std::move(done));
  }
}

void Presenter::ShowNow(Rendered picture, Owner owner, DoneList done) {
  ReplaceTransition();
  StopAnimation();
  m_content = std::move(picture);
  m_owner = owner;
  Want(m_content->frame, owner, std::move(done));
  StartAnimation();
  StartMotion();
}

/// What waited for the earlier re-rendering goes on waiting when `successor` is the same handle, and is told
/// otherwise.
void Presenter::DropRerender(Owner successor, DoneList& done) {
  if (!m_rerender) {
    return;
  }
  m_rerender->rendering->Cancel();
  Rerender dropped = std::move(*m_rerender);
  m_rerender.reset();
  if (dropped.owner == successor || successor == 0) {
    Append(done, std::move(dropped.done));
  } else {
    TellAll(dropped.done, Replaced());
  }
}

void Presenter::RenderAgain(Rerender request) {
  const uint64_t number = ++m_rerenders;
  request.rendering = Rendering::Start(
      m_services.pool, request.picture.file, request.picture.view, m_surface->GetSize(), [](const auto&) {},
      [weak = weak_from_this(), number](Result<Rendered> rendered) {
        if (const auto self = weak.lock()) {
          self->m_tasks.Post([raw = self.get(), number, rendered = std::move(rendered)]() mutable {
            raw->OnRenderedAgain(number, std::move(rendered));
          });
        }
      });
  m_rerender = std::move(request);
}

void Presenter::OnRenderedAgain(uint64_t number, Result<Rendered> rendered) {
  if (!m_rerender || number != m_rerenders || m_gone) {
    return;
  }
  Rerender request = std::move(*m_rerender);
  m_rerender.reset();
  if (!rendered) {
    Log(LogLevel::kError, "lumaview", request.picture.file->GetPath() + ": " + rendered.error().reason);
    TellAll(request.done, rendered.error());
  } else if (request.refresh) {
    m_content = std::move(*rendered);
    Want(m_content->frame, request.owner, {});
  } else {
    Accept(std::move(*rendered), request.owner, std::move(request.done), request.effect);
  }
}

/// The window has a new size: what it shows is stretched at once and decoded again behind that.
void Presenter::FollowSize() {
  StoreSize(m_surface->GetSize());
  m_effect_frames.Clear();
  FinishTransition();
  StopMotion();
  if (m_content) {
    auto stretched = CreateStretchedFrame(*m_content->frame, m_surface->GetSize());
    if (stretched) {
      m_content->frame = *stretched;
      Want(std::move(*stretched), m_owner, {});
    }
  }
  if (m_rerender) {
    m_rerender->rendering->Cancel();
    Rerender request = std::move(*m_rerender);
    RenderAgain(std::move(request));
  } else if (m_content && m_content->info.frames == 1) {
    RenderAgain({*m_content, m_owner, {}, std::nullopt, true, nullptr});
  }
}

void Presenter::Want(FramePtr frame, Owner owner, DoneList done) {
  if (m_wanted) {
    Wanted earlier = std::move(*m_wanted);
    if (earlier.owner == owner) {
      Append(done, std::move(earlier.done));
    } else {
      TellAll(earlier.done, Replaced());
    }
  }
  if (m_locked) {
    TellAll(std::exchange(done, {}), Ok());
  }
  m_wanted = Wanted{std::move(frame), owner, std::move(done)};
}

void Presenter::DropWanted() {
  if (m_wanted) {
    const Wanted dropped = std::move(*m_wanted);
    m_wanted.reset();
    TellAll(dropped.done, Replaced());
  }
}

void Presenter::PutWanted() {
  if (!m_surface->CanPut()) {
    return;
  }
  if (m_wanted && !m_locked) {
    Wanted wanted = std::move(*m_wanted);
    m_wanted.reset();
    Put(wanted.frame, std::move(wanted.done));
  } else if (m_exposed && m_displayed && !m_transition) {
    Put(m_displayed, {});
  }
  m_exposed = false;
}

bool Presenter::Put(const FramePtr& frame, DoneList done) {
  // The window may have changed since the frame was made; the change itself puts another one.
  const auto put = m_surface->Put(frame);
  if (!put) {
    Log(LogLevel::kError, "lumaview", "drawing failed: " + put.error().reason);
    TellAll(done, put.error());
    return false;
  }
  // The server gets to work before the frame that was displayed is let go, which takes a while.
  m_surface->Flush();
  m_displayed = frame;
  m_on_their_way.push_back({*put, m_services.clock.Now(), std::move(done)});
  return true;
}

/// Tells those whose picture has reached the screen, and those who have waited too long for a server that hangs.
void Presenter::FinishPuts() {
  const uint64_t completed = m_surface->GetCompleted();
  const Time too_old = m_services.clock.Now() - std::chrono::milliseconds(kServerMilliseconds);
  std::vector<OnItsWay> ended;
  std::erase_if(m_on_their_way, [&](OnItsWay& put) {
    const bool over = put.put <= completed || put.since <= too_old;
    if (over) {
      ended.push_back(std::move(put));
    }
    return over;
  });
  for (const OnItsWay& put : ended) {
    TellAll(put.done, put.put <= completed ? Ok() : Status(Error{kDisplayFailed, "the X server does not answer"}));
  }
}

}  // namespace sim::lumaview
