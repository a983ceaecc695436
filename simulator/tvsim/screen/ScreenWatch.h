// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SCREEN_SCREENWATCH_H
#define SIMULATOR_TVSIM_SCREEN_SCREENWATCH_H

#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <functional>
#include <memory>
#include <string>

#include "simulator/base/CHandle.h"
#include "simulator/base/Result.h"
#include "simulator/tvsim/engine/Timer.h"
#include "simulator/tvsim/screen/Screen.h"

namespace sim::tvsim {

/// Tells when the screen has changed, and gives it as a JPEG that is made at most once a change. A screen that stands
/// costs nothing. A connection that is cut is made again where the X server lives. Loop thread only.
class ScreenWatch {
 public:
  /// `on_change` is called with a number that grows with every change, at most some thirty times a second.
  /// Errors: no X server answers, or it lacks the Damage extension.
  static Result<std::unique_ptr<ScreenWatch>> Start(Screen& screen, std::function<void(int64_t)> on_change);
  ~ScreenWatch();
  ScreenWatch(const ScreenWatch&) = delete;
  ScreenWatch& operator=(const ScreenWatch&) = delete;

  /// There is another X server: the screen has changed, and is watched there from now on. Errors: as for `Start`.
  Status Follow();

  /// The number of the newest change; 1 before the first.
  int64_t Number() const { return m_number; }

  /// What the screen shows, with the number in `number`. Errors: as for `Screen::Capture`.
  Result<std::string> Jpeg(int64_t& number);

 private:
  ScreenWatch(Screen& screen, std::function<void(int64_t)> on_change)
      : m_screen(screen), m_on_change(std::move(on_change)) {}

  Status Connect();
  void Disconnect();
  void OnReadable();
  void Report();

  Screen& m_screen;
  const std::function<void(int64_t)> m_on_change;
  CHandle<xcb_connection_t, xcb_disconnect> m_connection;
  xcb_damage_damage_t m_damage = 0;
  uint8_t m_first_event = 0;
  unsigned int m_source = 0;
  std::unique_ptr<Timer> m_pause;  ///< runs between a change and its report
  int64_t m_number = 1;
  int64_t m_jpeg_number = 0;  ///< the change that `m_jpeg` shows
  std::string m_jpeg;
};

}  // namespace sim::tvsim

#endif
