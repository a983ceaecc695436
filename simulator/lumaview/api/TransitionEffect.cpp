// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/api/TransitionEffect.h"

#include <utility>

#include "simulator/lumaview/api/Picture.h"
#include "simulator/lumaview/effect/Effect.h"
#include "simulator/lumaview/effect/Kernels.h"

namespace sim::lumaview {

TransitionEffect::TransitionEffect(Services& services, int type)
    : m_services(services), m_id(NextOwner()), m_recipient(services.reporter.AddRecipient(&m_record)), m_type(type) {}

std::shared_ptr<TransitionEffect> TransitionEffect::Create(Services& services, int type) {
  return std::shared_ptr<TransitionEffect>(new TransitionEffect(services, type));
}

Status TransitionEffect::SetCallback(lumaview_event_type_e type, lumaview_event_cb callback) {
  if (type != LUMAVIEW_EVENT_EFFECT) {
    return Error{kBadArgument, "effects have no event " + std::to_string(type)};
  }
  m_services.reporter.SetCallback(m_recipient, type, callback);
  return Ok();
}

void TransitionEffect::SetType(int type) {
  const std::lock_guard lock(m_mutex);
  m_type = type;
}

Status TransitionEffect::SetWindow(unsigned long window) {
  constexpr unsigned long kNoWindow = ~0ul;
  if (window == 0 || window == kNoWindow) {
    return Error{kBadArgument, "there is no window for the effect"};
  }
  const std::lock_guard lock(m_mutex);
  m_window = window;
  if (!m_services.displays.Find(window)) {
    return Error{kDisplayFailed, "the window for the effect has no display"};
  }
  return Ok();
}

Status TransitionEffect::Run(const std::string& path) {
  std::unique_lock lock(m_mutex);
  if (m_type != LUMAVIEW_EFFECT_CHOOSE && (m_type < 0 || m_type >= kEffectCount)) {
    return Error{kBadArgument, "there is no effect " + std::to_string(m_type) + "; there are 0 to 23, and 36"};
  }
  const auto presenter = m_services.displays.Find(m_window);
  if (!presenter) {
    return Error{kDisplayFailed, "the effect's window has no display"};
  }
  const auto file = PictureFile::Open(path);
  if (!file) {
    return WithPath(path, file.error());
  }
  if (m_rendering) {
    m_rendering->Cancel();
    m_rendering.reset();
    m_services.reporter.Post(m_recipient, shared_from_this(), LUMAVIEW_EVENT_EFFECT, LUMAVIEW_RESULT_EFFECT_FAILED);
  }
  // Loaded by the time of the first frame, beside the picture.
  m_services.pool.Post([] { BestKernels(); });
  const int number = m_type == LUMAVIEW_EFFECT_CHOOSE ? m_services.chooser.Choose() : m_type;
  const uint64_t generation = ++m_generation;
  if (auto cached = m_services.cache.Take((*file)->GetIdentity(), m_services.first_view, presenter->GetSize())) {
    Present(number, std::move(*cached));
    return Ok();
  }
  m_rendering = Rendering::Start(
      m_services.pool, *file, m_services.first_view, presenter->GetSize(), [](const auto&) {},
      [weak = weak_from_this(), generation, number, path](Result<Rendered> rendered) {
        if (const auto self = weak.lock()) {
          self->OnFrame(generation, number, path, std::move(rendered));
        }
      });
  return Ok();
}

void TransitionEffect::OnFrame(uint64_t generation, int number, const std::string& path, Result<Rendered> rendered) {
  const std::lock_guard lock(m_mutex);
  if (m_closed || generation != m_generation) {
    return;
  }
  m_rendering.reset();
  if (rendered) {
    Present(number, std::move(*rendered));
    return;
  }
  LogFailure(path, rendered.error());
  m_services.reporter.Post(m_recipient, shared_from_this(), LUMAVIEW_EVENT_EFFECT, LUMAVIEW_RESULT_EFFECT_FAILED);
}

void TransitionEffect::Present(int number, Rendered rendered) {
  const std::string path = rendered.file->GetPath();
  auto on_end = [weak = weak_from_this(), path](const Status& end) {
    if (const auto self = weak.lock()) {
      self->OnEnd(path, end);
    }
  };
  if (const auto presenter = m_services.displays.Find(m_window)) {
    presenter->RunEffect(number, std::move(rendered), m_id, std::move(on_end));
  } else {
    m_services.pool.Post([on_end = std::move(on_end)] { on_end(Error{kDisplayFailed, "the window has no display"}); });
  }
}

void TransitionEffect::OnEnd(const std::string& path, const Status& end) {
  const std::lock_guard lock(m_mutex);
  if (m_closed) {
    return;
  }
  if (!end) {
    LogFailure(path, {end.error().code, "was not shown by the effect: " + end.error().reason});
  }
  m_services.reporter.Post(m_recipient, shared_from_this(), LUMAVIEW_EVENT_EFFECT,
                           end ? LUMAVIEW_RESULT_EFFECT_OK : LUMAVIEW_RESULT_EFFECT_FAILED);
}

void TransitionEffect::Close() {
  unsigned long window = 0;
  {
    const std::lock_guard lock(m_mutex);
    m_closed = true;
    window = m_window;
    if (m_rendering) {
      m_rendering->Cancel();
    }
  }
  if (const auto presenter = m_services.displays.Find(window)) {
    presenter->Leave(m_id);
  }
  m_services.reporter.Close(m_recipient);
}

}  // namespace sim::lumaview
