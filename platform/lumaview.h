// SPDX-License-Identifier: Apache-2.0
/// The television's picture library (liblumaview.so.0), as far as the engine calls it. C linkage.
///
/// Every function returns 0 for success and another number, the library's error code, for failure. All enumerations
/// are ints, so that any number passes through. Handles are made and destroyed through their address.
#ifndef PLATFORM_LUMAVIEW_H
#define PLATFORM_LUMAVIEW_H

#include <X11/X.h>

#include <cstddef>
#include <cstdint>

extern "C" {

enum lumaview_event_type_e : int {
  LUMAVIEW_EVENT_PARSE = 0,
  LUMAVIEW_EVENT_DECODE = 1,
  LUMAVIEW_EVENT_EFFECT = 3,
};

enum lumaview_event_result_e : int {
  LUMAVIEW_RESULT_PARSE_OK = 0,
  LUMAVIEW_RESULT_PARSE_FAILED = 1,
  LUMAVIEW_RESULT_DECODE_OK = 3,
  LUMAVIEW_RESULT_DECODE_FAILED = 4,
  LUMAVIEW_RESULT_EFFECT_OK = 8,
  LUMAVIEW_RESULT_EFFECT_FAILED = 9,
};

enum picture_type_e : int {
  LUMAVIEW_TYPE_JPEG = 0,
  LUMAVIEW_TYPE_PNG = 1,
  LUMAVIEW_TYPE_BMP = 2,
  LUMAVIEW_TYPE_GIF = 3,
  LUMAVIEW_TYPE_MPO = 4,
  LUMAVIEW_TYPE_UNKNOWN = 5,
  LUMAVIEW_TYPE_TIFF = 6,
  LUMAVIEW_TYPE_WEBP = 7,
  LUMAVIEW_TYPE_HEIC = 8,
  LUMAVIEW_TYPE_AVIF = 9,
  LUMAVIEW_TYPE_JXL = 10,
  LUMAVIEW_TYPE_PNM = 11,
};

enum lumaview_key_direction_e : int {
  LUMAVIEW_DIRECTION_UP = 0,
  LUMAVIEW_DIRECTION_DOWN = 1,
  LUMAVIEW_DIRECTION_LEFT = 2,
  LUMAVIEW_DIRECTION_RIGHT = 3,
};

/// 0 to 23 in the order of the library's list; 36 lets the library choose.
enum effect_type_e : int { LUMAVIEW_EFFECT_CHOOSE = 36 };

/// Begins every picture object of the library.
struct _lumaview_s {
  void* user_data;    ///< the caller's own; the engine keeps its adapter here and its callbacks read it back
  int32_t reserved1;  ///< the library's
  int32_t reserved2;  ///< the library's
  int32_t flag;       ///< the engine sets 1 before each parse
};

/// Begins every transition-effect object of the library.
struct _lumaview_effect_s {
  int32_t reserved1;  ///< the library's
  int32_t reserved2;  ///< the library's
  void* user_data;    ///< the caller's own, as in the picture record
};

// On the 32-bit television the flag is the picture record's fourth 32-bit field and the caller's slot the effect
// record's third; the library was compiled with just these offsets.
static_assert(offsetof(_lumaview_s, user_data) == 0 && sizeof(_lumaview_s::user_data) == sizeof(void*));
static_assert(offsetof(_lumaview_s, flag) == (sizeof(void*) == 4 ? 3 * 4 : 16) && sizeof(_lumaview_s::flag) == 4);
static_assert(offsetof(_lumaview_effect_s, user_data) == 2 * 4 &&
              sizeof(_lumaview_effect_s::user_data) == sizeof(void*));

/// Twelve numbers, passed by value. 8 is the zoom ratio, 9 the rotation in degrees; the others are the library's.
struct lumaview_display_param_s {
  int32_t field[12];
};
inline constexpr int kDisplayParamZoomRatio = 8;
inline constexpr int kDisplayParamRotation = 9;
static_assert(sizeof(lumaview_display_param_s) == 48 && alignof(lumaview_display_param_s) == 4);

/// Filled by `lumaview_get_thumbnail`. The pixels belong to the library and stay valid until the next such call.
struct _lumaview_thumbnail_s {
  int32_t width;       ///< pixels
  int32_t height;      ///< pixels
  int32_t stride;      ///< bytes from row to row
  int32_t format;      ///< 0: 0xAARRGGBB in the machine's byte order, alpha 0xFF
  const void* pixels;  ///< `height` rows
  char reserved[256 - 4 * sizeof(int32_t) - sizeof(void*)];
};
static_assert(offsetof(_lumaview_thumbnail_s, pixels) == 16);
static_assert(sizeof(_lumaview_thumbnail_s) == 256);

/// `record` is the picture or effect record that the callback was registered on. What it returns is not looked at.
/// Called on the library's reporting thread, with no lock of the library held.
typedef int (*lumaview_event_cb)(void* record, lumaview_event_type_e type, lumaview_event_result_e result);

/// Loads what the library needs; may be called again.
int lumaview_pre_loading();

/// Opens `path` (NUL-terminated) and fills `*picture`. `*picture` is left alone on failure.
int lumaview_create_from_url(const char* path, _lumaview_s** picture);
/// Destroys `*picture` and sets it to null. Afterwards no callback for that record runs or will run, except the one
/// that this call was made from.
int lumaview_destroy(_lumaview_s** picture);
/// With a parse callback: starts, and reports there. Without one: reads the header before it returns.
int lumaview_parse(_lumaview_s* picture);
int lumaview_decode(_lumaview_s* picture, int mode);
/// `record`: a picture (parse, decode) or an effect. Replaces an earlier callback of the same type.
int lumaview_add_event_callback(void* record, lumaview_event_type_e type, lumaview_event_cb callback);

/// Prepare the library's drawing on `*window`, and undo it.
int lumaview_init_display(Window* window);
int lumaview_destroy_display(Window* window);
int lumaview_set_window(_lumaview_s* picture, Window window);
/// 0 off, 1 side by side, 2 top and bottom, 3 red-cyan anaglyph.
int lumaview_set_3d_mode(_lumaview_s* picture, int mode);

int lumaview_get_picture_type(_lumaview_s* picture, picture_type_e* type);
/// Pixels, after the orientation that the file asks for.
int lumaview_get_size(_lumaview_s* picture, int* width, int* height);
/// Of the picture that was created last.
int lumaview_get_thumbnail(_lumaview_thumbnail_s* thumbnail);
int lumaview_get_zoom_ratio(_lumaview_s* picture, float* ratio);
/// Pans one step; the two numbers receive the offset in window pixels.
int lumaview_set_zoom_move(_lumaview_s* picture, lumaview_key_direction_e direction, int* x, int* y);
int lumaview_set_display_param(_lumaview_s* picture, lumaview_display_param_s param);
/// While locked nothing new reaches the screen.
int lumaview_set_display_lock(_lumaview_s* picture, Window window, int lock);

int lumaview_create_transition_effect(int type, _lumaview_effect_s** effect);
/// As `lumaview_destroy`, for an effect.
int lumaview_destroy_transition_effect(_lumaview_effect_s** effect);
int lumaview_set_effect_window_handle(_lumaview_effect_s* effect, Window window);
int lumaview_set_effect_type(_lumaview_effect_s* effect, effect_type_e type);
/// Goes from what the window shows to the picture at `path`; the effect callback reports the end.
int lumaview_run_transition_effect(_lumaview_effect_s* effect, const char* path);
/// 0: an effect can run now.
int lumaview_is_transition_effect_available(_lumaview_s* picture, _lumaview_effect_s* effect, Window window);
/// Fills `list`, 400 bytes, with one name a line. A library may fill all 400 without a terminating NUL.
int lumaview_get_transition_effect_list(char* list);

}  // extern "C"

#endif
