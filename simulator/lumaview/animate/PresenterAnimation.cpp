// SPDX-License-Identifier: Apache-2.0
// Animated pictures: the next frame is decoded while the present one is shown.
#include <utility>

#include "simulator/base/Log.h"
#include "simulator/lumaview/animate/Presenter.h"

namespace sim::lumaview {

/// Of `m_content`, whose first frame is shown from now on.
void Presenter::StartAnimation() {
  StopAnimation();
  if (!m_content || !m_content->stream) {
    return;
  }
  const AnimationTimeline timeline(m_services.clock.Now(), m_content->milliseconds, m_content->info.frames,
                                   m_content->info.loops);
  m_animation.emplace(Animation{std::exchange(m_content->stream, nullptr), timeline, false, nullptr, 0});
  PrepareNextFrame();
}

void Presenter::StopAnimation() {
  if (m_animation) {
    m_animation->stream->Cancel();
    m_animation.reset();
  }
}

void Presenter::PrepareNextFrame() {
  if (!m_animation->timeline.HasNext()) {
    m_animation.reset();
    return;
  }
  const uint64_t number = ++m_animations;
  m_services.pool.Post([weak = weak_from_this(), number, stream = m_animation->stream, view = m_content->view,
                        size = m_surface->GetSize()] {
    auto frame = stream->RenderNext(view, size);
    const auto self = weak.lock();
    if (!self) {
      return;
    }
    self->m_tasks.Post([raw = self.get(), number, frame = std::move(frame), shown = stream->GetFrameMilliseconds()] {
      if (!raw->m_animation || number != raw->m_animations) {
        return;
      }
      if (!frame) {
        Log(LogLevel::kError, "lumaview",
            raw->m_content->file->GetPath() + ": the animation ends: " + frame.error().reason);
        raw->StopAnimation();
        return;
      }
      raw->m_animation->next = *frame;
      raw->m_animation->next_milliseconds = shown;
    });
  });
}

void Presenter::StepAnimation() {
  const bool due = m_animation && m_animation->next && m_services.clock.Now() >= m_animation->timeline.GetNextTime();
  if (!due || !m_surface->CanPut()) {
    return;
  }
  FramePtr frame = std::exchange(m_animation->next, nullptr);
  if (frame->GetSize() != m_surface->GetSize()) {
    auto stretched = CreateStretchedFrame(*frame, m_surface->GetSize());
    if (!stretched) {
      StopAnimation();
      return;
    }
    frame = std::move(*stretched);
  }
  m_animation->timeline.Advance(m_services.clock.Now(), m_animation->next_milliseconds);
  m_content->frame = frame;
  Want(std::move(frame), m_owner, {});
  PrepareNextFrame();
}

}  // namespace sim::lumaview
