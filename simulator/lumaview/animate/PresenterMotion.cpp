// SPDX-License-Identifier: Apache-2.0
// The slow pan and zoom that keeps the still pictures of a slide show alive, where it is wanted.
#include <algorithm>
#include <array>
#include <cstdlib>

#include "simulator/base/Log.h"
#include "simulator/lumaview/animate/Presenter.h"
#include "simulator/lumaview/effect/KenBurns.h"

namespace sim::lumaview {
namespace {

/// How much larger the picture has become at the end. More would show that it was decoded for the window's size.
constexpr double kEnlargement = 1.2;

Area WholeOf(Size size) {
  return {0, 0, static_cast<double>(size.width), static_cast<double>(size.height)};
}

/// The part that is left at the end lies in one corner after the other.
Area EndOf(Size size, uint64_t picture) {
  struct Corner {
    double x;
    double y;
  };
  static constexpr std::array<Corner, 4> kCorners = {{{0, 0}, {1, 1}, {1, 0}, {0, 1}}};
  const Corner& corner = kCorners[picture % kCorners.size()];
  const double width = size.width / kEnlargement;
  const double height = size.height / kEnlargement;
  return {corner.x * (size.width - width), corner.y * (size.height - height), width, height};
}

}  // namespace

Duration KenBurnsDuration() {
  static const Duration duration = [] {
    const char* text = std::getenv("LUMAVIEW_KEN_BURNS");
    return std::chrono::milliseconds(text != nullptr ? std::max(0, std::atoi(text)) : 0);
  }();
  return duration;
}

/// Of `m_content`, which is shown as a whole from now on.
void Presenter::StartMotion() {
  StopMotion();
  const bool moves = KenBurnsDuration() > Duration(0) && !m_locked && m_content && m_content->info.frames == 1 &&
                     m_content->view.zoom == 1;
  if (!moves) {
    return;
  }
  const Size size = m_content->frame->GetSize();
  m_motion.emplace(Motion{m_content->frame, WholeOf(size), EndOf(size, m_motions++),
                          TransitionTimeline(m_services.clock.Now(), KenBurnsDuration())});
}

void Presenter::StopMotion() {
  if (m_motion) {
    Log(LogLevel::kInfo, "lumaview", "pan and zoom: " + TextOf(m_motion->timeline.GetStatistics()));
    m_motion.reset();
    m_effect_frames.Clear();
  }
}

void Presenter::StepMotion() {
  // The whole picture is seen before it moves.
  if (!m_motion || m_wanted || !m_surface->CanPut()) {
    return;
  }
  const auto step = m_motion->timeline.Next(m_services.clock.Now());
  if (!step) {
    return;
  }
  const Size size = m_motion->picture->GetSize();
  if (const std::shared_ptr<Frame> frame = m_effect_frames.Take(size)) {
    m_bands.Run(size, [&](int first, int last) {
      DrawKenBurns(m_motion->picture->GetPixels(), m_motion->from, m_motion->to, step->progress, frame->GetPixels(),
                   first, last);
    });
    Put(frame, {});
  }
  if (step->last) {
    StopMotion();
  }
}

}  // namespace sim::lumaview
