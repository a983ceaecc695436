// SPDX-License-Identifier: Apache-2.0
// A picture from its file to the screen.
#include "simulator/lumaview/api/Picture.h"

#include <atomic>
#include <utility>

namespace sim::lumaview {

Presenter::Owner NextOwner() {
  static std::atomic<Presenter::Owner> last{0};
  return ++last;
}

Picture::Picture(Services& services, PictureFilePtr file)
    : m_services(services),
      m_file(std::move(file)),
      m_id(NextOwner()),
      m_recipient(services.reporter.AddRecipient(&m_record)),
      m_view(services.first_view) {}

Result<std::shared_ptr<Picture>> Picture::Create(Services& services, const std::string& path) {
  auto file = PictureFile::Open(path);
  if (!file) {
    return WithPath(path, file.error());
  }
  std::shared_ptr<Picture> picture(new Picture(services, std::move(*file)));
  const std::lock_guard lock(picture->m_mutex);
  picture->Prepare();
  return picture;
}

Status Picture::SetCallback(lumaview_event_type_e type, lumaview_event_cb callback) {
  if (type != LUMAVIEW_EVENT_PARSE && type != LUMAVIEW_EVENT_DECODE) {
    return Error{kBadArgument, "pictures have no event " + std::to_string(type)};
  }
  m_services.reporter.SetCallback(m_recipient, type, callback);
  return Ok();
}

Status Picture::Parse() {
  if (!m_services.reporter.HasCallback(m_recipient, LUMAVIEW_EVENT_PARSE)) {
    const auto info = GetInfo();
    return info ? Ok() : Status(info.error());
  }
  const std::lock_guard lock(m_mutex);
  if (m_header) {
    Report(LUMAVIEW_EVENT_PARSE, *m_header ? LUMAVIEW_RESULT_PARSE_OK : LUMAVIEW_RESULT_PARSE_FAILED);
  } else {
    ++m_parse_reports;
  }
  return Ok();
}

Status Picture::Decode() {
  const std::lock_guard lock(m_mutex);
  m_show_wanted = true;
  ++m_decode_reports;
  const bool played = m_handed_over && m_rendered && *m_rendered && (*m_rendered)->info.frames > 1;
  if (played && !m_rendering) {
    Prepare();  // an animation starts again from its first frame
  } else if (m_rendered && !m_rendering) {
    ShowPrepared();
  }
  return Ok();
}

Result<PictureInfo> Picture::GetInfo() {
  {
    const std::lock_guard lock(m_mutex);
    if (m_header) {
      return *m_header ? *m_header : Result<PictureInfo>(WithPath(m_file->GetPath(), m_header->error()));
    }
  }
  const auto header = ReadHeader(m_file);
  return header ? header : Result<PictureInfo>(WithPath(m_file->GetPath(), header.error()));
}

Size Picture::ExpectedSize() const {
  const auto presenter = m_services.displays.Find(m_window);
  return presenter ? presenter->GetSize() : m_services.displays.GetLastSize();
}

/// Starts to decode for the present view and window, or takes what the cache has.
void Picture::Prepare() {
  if (m_rendering) {
    m_rendering->Cancel();
    m_rendering.reset();
  }
  const uint64_t generation = ++m_generation;
  m_rendered.reset();
  m_handed_over = false;
  m_outdated = false;
  const Size size = ExpectedSize();
  m_prepared_size = size;
  if (auto cached = m_services.cache.Take(m_file->GetIdentity(), m_view, size)) {
    m_header = cached->info;
    m_rendered = std::move(*cached);
    Report(LUMAVIEW_EVENT_PARSE, LUMAVIEW_RESULT_PARSE_OK, std::exchange(m_parse_reports, 0));
    return;
  }
  m_rendering = Rendering::Start(
      m_services.pool, m_file, m_view, size,
      [weak = weak_from_this(), generation](const Result<PictureInfo>& header) {
        if (const auto self = weak.lock()) {
          self->OnHeader(generation, header);
        }
      },
      [weak = weak_from_this(), generation](Result<Rendered> rendered) {
        if (const auto self = weak.lock()) {
          self->OnFrame(generation, std::move(rendered));
        }
      });
}

void Picture::OnHeader(uint64_t generation, const Result<PictureInfo>& header) {
  const std::lock_guard lock(m_mutex);
  if (m_closed || generation != m_generation) {
    return;
  }
  m_header = header;
  Report(LUMAVIEW_EVENT_PARSE, header ? LUMAVIEW_RESULT_PARSE_OK : LUMAVIEW_RESULT_PARSE_FAILED,
         std::exchange(m_parse_reports, 0));
}

void Picture::OnFrame(uint64_t generation, Result<Rendered> rendered) {
  const std::lock_guard lock(m_mutex);
  if (m_closed || generation != m_generation) {
    return;
  }
  m_rendering.reset();
  if (!rendered) {
    LogFailure(m_file->GetPath(), rendered.error());
  }
  m_rendered = std::move(rendered);
  if (m_show_wanted) {
    ShowPrepared();
  }
  if (m_outdated) {
    Prepare();
    if (m_rendered && m_show_wanted) {
      ShowPrepared();
    }
  }
}

void Picture::ShowPrepared() {
  const int reports = std::exchange(m_decode_reports, 0);
  if (!*m_rendered) {
    Report(LUMAVIEW_EVENT_DECODE, LUMAVIEW_RESULT_DECODE_FAILED, reports);
    return;
  }
  if (m_window == 0) {
    m_decoded = true;
    Report(LUMAVIEW_EVENT_DECODE, LUMAVIEW_RESULT_DECODE_OK, reports);
    return;
  }
  const auto presenter = m_services.displays.Find(m_window);
  if (!presenter) {
    LogFailure(m_file->GetPath(), {kDisplayFailed, "cannot be shown: its window has no display"});
    Report(LUMAVIEW_EVENT_DECODE, LUMAVIEW_RESULT_DECODE_FAILED, reports);
    return;
  }
  m_handed_over = true;
  presenter->Show(**m_rendered, m_id, [weak = weak_from_this(), reports](const Status& shown) {
    if (const auto self = weak.lock()) {
      self->OnShown(shown, reports);
    }
  });
  (*m_rendered)->stream.reset();  // the presenter plays it
}

void Picture::OnShown(const Status& shown, int reports) {
  const std::lock_guard lock(m_mutex);
  if (m_closed) {
    return;
  }
  if (!shown) {
    LogFailure(m_file->GetPath(), {shown.error().code, "was not shown: " + shown.error().reason});
  }
  m_decoded |= static_cast<bool>(shown);
  Report(LUMAVIEW_EVENT_DECODE, shown ? LUMAVIEW_RESULT_DECODE_OK : LUMAVIEW_RESULT_DECODE_FAILED, reports);
}

void Picture::Report(lumaview_event_type_e type, lumaview_event_result_e result, int times) {
  for (int i = 0; i < times; ++i) {
    m_services.reporter.Post(m_recipient, shared_from_this(), type, result);
  }
}

void Picture::Close() {
  unsigned long window = 0;
  {
    const std::lock_guard lock(m_mutex);
    m_closed = true;
    window = m_window;
    if (m_rendering) {
      m_rendering->Cancel();
    }
    if (m_rendered && *m_rendered && !m_handed_over) {
      m_services.cache.Put(std::move(**m_rendered));
    }
    m_rendered.reset();
  }
  if (const auto presenter = m_services.displays.Find(window)) {
    presenter->Leave(m_id);
  }
  m_services.reporter.Close(m_recipient);
}

}  // namespace sim::lumaview
