// SPDX-License-Identifier: Apache-2.0
// How a picture is looked at: window, zoom, pan, rotation, third dimension.
#include <string>

#include "simulator/lumaview/api/Picture.h"

namespace sim::lumaview {
namespace {

constexpr int kHighestZoom = 16;
/// A step of panning, as a part of the window.
constexpr int kStepsAcross = 8;

Status CheckZoomAndRotation(int zoom, int rotation) {
  if (zoom < 1 || zoom > kHighestZoom) {
    return Error{kBadArgument, "the zoom ratio is " + std::to_string(zoom) + "; it may be 1 to 16"};
  }
  if (rotation != 0 && rotation != 90 && rotation != 180 && rotation != 270) {
    return Error{kBadArgument, "the rotation is " + std::to_string(rotation) + "; it may be 0, 90, 180 or 270"};
  }
  return Ok();
}

}  // namespace

Status Picture::SetWindow(unsigned long window) {
  constexpr unsigned long kNoWindow = ~0ul;
  if (window == 0 || window == kNoWindow) {
    return Error{kBadArgument, "there is no window to show the picture in"};
  }
  const std::lock_guard lock(m_mutex);
  m_window = window;
  const auto presenter = m_services.displays.Find(window);
  if (!presenter) {
    return Error{kDisplayFailed, "the window for " + m_file->GetPath() + " has no display"};
  }
  if (!m_handed_over && m_prepared_size != presenter->GetSize()) {
    Prepare();  // better begun again now than once it is finished for nothing
  }
  return Ok();
}

Status Picture::SetDisplayLock(unsigned long window, bool locked) {
  const auto presenter = m_services.displays.Find(window);
  if (!presenter) {
    return Error{kDisplayFailed, "a window without a display cannot be locked"};
  }
  presenter->SetLock(locked);
  return Ok();
}

Status Picture::SetStereo(int mode) {
  if (mode < static_cast<int>(StereoMode::kOff) || mode > static_cast<int>(StereoMode::kAnaglyph)) {
    return Error{kBadArgument, "the 3D mode is " + std::to_string(mode) + "; it may be 0 to 3"};
  }
  const std::lock_guard lock(m_mutex);
  View view = m_view;
  view.stereo = static_cast<StereoMode>(mode);
  ChangeView(view);
  return Ok();
}

Status Picture::SetZoomAndRotation(int zoom, int rotation) {
  SIM_TRY(CheckZoomAndRotation(zoom, rotation));
  const std::lock_guard lock(m_mutex);
  View view = m_view;
  // What stands in the middle of the window stays there.
  view.pan_x = rotation == view.rotation ? view.pan_x * zoom / view.zoom : 0;
  view.pan_y = rotation == view.rotation ? view.pan_y * zoom / view.zoom : 0;
  view.zoom = zoom;
  view.rotation = rotation;
  ChangeView(m_header && *m_header ? ClampPan(UprightSize(**m_header), view, ExpectedSize()) : view);
  return Ok();
}

Status Picture::Move(lumaview_key_direction_e direction, int& x, int& y) {
  const auto info = GetInfo();
  if (!info) {
    return info.error();
  }
  const std::lock_guard lock(m_mutex);
  const Size window = ExpectedSize();
  View view = m_view;
  switch (direction) {
    case LUMAVIEW_DIRECTION_UP:
      view.pan_y += window.height / kStepsAcross;
      break;
    case LUMAVIEW_DIRECTION_DOWN:
      view.pan_y -= window.height / kStepsAcross;
      break;
    case LUMAVIEW_DIRECTION_LEFT:
      view.pan_x += window.width / kStepsAcross;
      break;
    case LUMAVIEW_DIRECTION_RIGHT:
      view.pan_x -= window.width / kStepsAcross;
      break;
    default:
      return Error{kBadArgument, "the direction is " + std::to_string(direction) + "; it may be 0 to 3"};
  }
  view = ClampPan(UprightSize(*info), view, window);
  x = -view.pan_x;
  y = -view.pan_y;
  ChangeView(view);
  return Ok();
}

Result<float> Picture::GetZoom() const {
  const std::lock_guard lock(m_mutex);
  if (!m_decoded) {
    return Error{kNotReady, m_file->GetPath() + " is not decoded yet"};
  }
  return static_cast<float>(m_view.zoom);
}

std::optional<Rendered> Picture::GetWhole() const {
  const std::lock_guard lock(m_mutex);
  const bool is_whole = m_rendered && *m_rendered && (*m_rendered)->view == View{};
  return is_whole ? std::optional(**m_rendered) : std::nullopt;
}

/// A view that is asked for while another is being decoded for the screen waits for that one: a key that is held down
/// shall move the picture, not keep it from ever being shown.
void Picture::ChangeView(const View& view) {
  if (view == m_view) {
    return;
  }
  m_view = view;
  if (m_rendering && m_show_wanted) {
    m_outdated = true;
    return;
  }
  Prepare();
  if (m_show_wanted && m_rendered) {
    ShowPrepared();
  }
}

}  // namespace sim::lumaview
