// SPDX-License-Identifier: Apache-2.0
// The exported calls on pictures.
#include "simulator/lumaview/api/Export.h"
#include "simulator/lumaview/api/Library.h"
#include "simulator/lumaview/api/Thumbnail.h"

namespace sim::lumaview {
namespace {

/// Runs `body` with the live picture behind `record`.
template <typename Body>
int AnswerFor(const char* function, _lumaview_s* record, Body body) {
  return Answer(function, [&]() -> Status {
    const auto picture = FindPicture(record);
    return picture ? body(**picture) : Status(picture.error());
  });
}

Status NullArgument() {
  return Error{kBadArgument, "an argument is null"};
}

}  // namespace
}  // namespace sim::lumaview

using namespace sim::lumaview;

LUMAVIEW_EXPORT int lumaview_pre_loading() {
  return Answer("lumaview_pre_loading", [] {
    GetLibrary();
    return sim::Ok();
  });
}

LUMAVIEW_EXPORT int lumaview_create_from_url(const char* path, _lumaview_s** picture) {
  return Answer("lumaview_create_from_url", [&]() -> sim::Status {
    if (path == nullptr || picture == nullptr) {
      return NullArgument();
    }
    auto made = Picture::Create(GetLibrary().services, path);
    if (!made) {
      return made.error();
    }
    GetLibrary().pictures.Add(*made);
    *picture = (*made)->GetRecord();
    return sim::Ok();
  });
}

LUMAVIEW_EXPORT int lumaview_destroy(_lumaview_s** picture) {
  return Answer("lumaview_destroy", [&]() -> sim::Status {
    if (picture == nullptr) {
      return NullArgument();
    }
    const auto destroyed = GetLibrary().pictures.Remove(*picture);
    if (!destroyed) {
      return FindPicture(*picture).error();
    }
    destroyed->Close();
    *picture = nullptr;
    return sim::Ok();
  });
}

LUMAVIEW_EXPORT int lumaview_parse(_lumaview_s* picture) {
  return AnswerFor("lumaview_parse", picture, [](Picture& live) { return live.Parse(); });
}

LUMAVIEW_EXPORT int lumaview_decode(_lumaview_s* picture, int) {
  return AnswerFor("lumaview_decode", picture, [](Picture& live) { return live.Decode(); });
}

LUMAVIEW_EXPORT int lumaview_add_event_callback(void* record, lumaview_event_type_e type, lumaview_event_cb callback) {
  return Answer("lumaview_add_event_callback", [&]() -> sim::Status {
    if (const auto effect = GetLibrary().effects.Find(record)) {
      return effect->SetCallback(type, callback);
    }
    const auto picture = FindPicture(record);
    return picture ? (*picture)->SetCallback(type, callback) : sim::Status(picture.error());
  });
}

LUMAVIEW_EXPORT int lumaview_get_picture_type(_lumaview_s* picture, picture_type_e* type) {
  return AnswerFor("lumaview_get_picture_type", picture, [&](Picture& live) -> sim::Status {
    if (type == nullptr) {
      return NullArgument();
    }
    const auto info = live.GetInfo();
    if (!info) {
      return info.error();
    }
    *type = info->type;
    return sim::Ok();
  });
}

LUMAVIEW_EXPORT int lumaview_get_size(_lumaview_s* picture, int* width, int* height) {
  return AnswerFor("lumaview_get_size", picture, [&](Picture& live) -> sim::Status {
    if (width == nullptr || height == nullptr) {
      return NullArgument();
    }
    const auto info = live.GetInfo();
    if (!info) {
      return info.error();
    }
    const Size size = UprightSize(*info);
    *width = size.width;
    *height = size.height;
    return sim::Ok();
  });
}

LUMAVIEW_EXPORT int lumaview_get_thumbnail(_lumaview_thumbnail_s* thumbnail) {
  return Answer("lumaview_get_thumbnail", [&]() -> sim::Status {
    if (thumbnail == nullptr) {
      return NullArgument();
    }
    const auto last = GetLibrary().pictures.GetLast();
    if (!last) {
      return sim::Error{kNotReady, "there is no picture"};
    }
    const auto filled = FillThumbnail(last->GetFile(), last->GetWhole(), *thumbnail);
    return filled ? filled : sim::Status(WithPath(last->GetFile()->GetPath(), filled.error()));
  });
}

LUMAVIEW_EXPORT int lumaview_get_zoom_ratio(_lumaview_s* picture, float* ratio) {
  return AnswerFor("lumaview_get_zoom_ratio", picture, [&](Picture& live) -> sim::Status {
    if (ratio == nullptr) {
      return NullArgument();
    }
    const auto zoom = live.GetZoom();
    if (!zoom) {
      return zoom.error();
    }
    *ratio = *zoom;
    return sim::Ok();
  });
}

LUMAVIEW_EXPORT int lumaview_set_zoom_move(_lumaview_s* picture, lumaview_key_direction_e direction, int* x, int* y) {
  return AnswerFor("lumaview_set_zoom_move", picture, [&](Picture& live) {
    return x == nullptr || y == nullptr ? NullArgument() : live.Move(direction, *x, *y);
  });
}

LUMAVIEW_EXPORT int lumaview_set_display_param(_lumaview_s* picture, lumaview_display_param_s param) {
  return AnswerFor("lumaview_set_display_param", picture, [&](Picture& live) {
    return live.SetZoomAndRotation(param.field[kDisplayParamZoomRatio], param.field[kDisplayParamRotation]);
  });
}

LUMAVIEW_EXPORT int lumaview_set_display_lock(_lumaview_s* picture, Window window, int lock) {
  return AnswerFor("lumaview_set_display_lock", picture,
                   [&](Picture& live) { return live.SetDisplayLock(window, lock != 0); });
}

LUMAVIEW_EXPORT int lumaview_set_window(_lumaview_s* picture, Window window) {
  return AnswerFor("lumaview_set_window", picture, [&](Picture& live) { return live.SetWindow(window); });
}

LUMAVIEW_EXPORT int lumaview_set_3d_mode(_lumaview_s* picture, int mode) {
  return AnswerFor("lumaview_set_3d_mode", picture, [&](Picture& live) { return live.SetStereo(mode); });
}
