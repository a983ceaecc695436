// SPDX-License-Identifier: Apache-2.0
// Transitions from what a window shows to the next picture.
#include <cstdlib>
#include <string>
#include <utility>

#include "simulator/base/Log.h"
#include "simulator/lumaview/animate/Presenter.h"
#include "simulator/lumaview/effect/Effect.h"

namespace sim::lumaview {
namespace {

constexpr int kEffectMilliseconds = 1000;

/// LUMAVIEW_EFFECT_MS, or the default.
Duration EffectDuration() {
  static const Duration duration = [] {
    const char* text = std::getenv("LUMAVIEW_EFFECT_MS");
    const int milliseconds = text != nullptr && *text != '\0' ? std::atoi(text) : kEffectMilliseconds;
    return std::chrono::milliseconds(milliseconds < 0 ? kEffectMilliseconds : milliseconds);
  }();
  return duration;
}

}  // namespace

void Presenter::StartTransition(int number, Rendered picture, Owner owner, std::vector<Done> done) {
  ReplaceTransition();
  StopAnimation();
  StopMotion();
  const Size size = m_surface->GetSize();
  FramePtr from = m_displayed;
  if (!from || from->GetSize() != size) {
    auto made = from ? CreateStretchedFrame(*from, size) : CreateBlackFrame(size);
    if (!made) {
      ShowNow(std::move(picture), owner, std::move(done));
      return;
    }
    from = std::move(*made);
  }
  m_content = picture;
  m_owner = owner;
  DropWanted();
  // Taken before the clock starts, so that the first frames are not late for it.
  m_effect_frames.Take(size);
  m_transition.emplace(Transition{number, std::move(from), std::move(picture), owner,
                                  [list = std::move(done)](const Status& status) {
                                    for (const Done& one : list) {
                                      one(status);
                                    }
                                  },
                                  TransitionTimeline(m_services.clock.Now(), EffectDuration())});
}

void Presenter::StepTransition() {
  if (!m_transition || !m_surface->CanPut()) {
    return;
  }
  const auto step = m_transition->timeline.Next(m_services.clock.Now());
  if (!step) {
    return;
  }
  if (step->last) {
    FinishTransition();
  } else {
    DrawStep(step->progress);
  }
}

void Presenter::DrawStep(float progress) {
  const Size size = m_surface->GetSize();
  const std::shared_ptr<Frame> frame = m_effect_frames.Take(size);
  if (!frame) {
    FinishTransition();  // without memory the new picture comes at once
    return;
  }
  m_bands.Run(size, [&](int first, int last) {
    DrawEffect(m_transition->number, m_transition->from->GetPixels(), m_transition->to.frame->GetPixels(), progress,
               frame->GetPixels(), first, last);
  });
  Put(frame, {});
}

/// The last frame is the new picture itself.
void Presenter::FinishTransition() {
  if (!m_transition) {
    return;
  }
  Transition ended = std::move(*m_transition);
  m_transition.reset();
  m_effect_frames.Clear();
  Log(LogLevel::kInfo, "lumaview",
      "effect " + std::string(EffectName(ended.number)) + ": " + TextOf(ended.timeline.GetStatistics()));
  Want(m_content->frame, ended.owner, {std::move(ended.done)});
  StartAnimation();
  StartMotion();
}

/// Another picture or effect comes; it starts from what the window shows in this moment.
void Presenter::ReplaceTransition() {
  if (!m_transition) {
    return;
  }
  const Transition replaced = std::move(*m_transition);
  m_transition.reset();
  replaced.done(Error{kCancelled, "another picture took its place"});
}

}  // namespace sim::lumaview
