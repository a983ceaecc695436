// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SLIDESHOW_SLIDESHOW_H
#define SIMULATOR_TVSIM_SLIDESHOW_SLIDESHOW_H

#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "simulator/tvsim/session/Television.h"

namespace sim::tvsim {

struct SlideShowOptions {
  std::vector<std::string> pictures;               ///< absolute paths, at least one
  std::array<int, 4> area{0, 0, 0, 0};             ///< x, y, width, height in the application's layout of 540 lines
  std::string effect;                              ///< a number or a name of the engine's list; empty: no transition
  std::chrono::milliseconds interval{3000};        ///< for which each picture stands
  std::chrono::milliseconds picture_limit{30000};  ///< after which a picture without an event has failed
  std::string screenshots;                         ///< a folder that exists; empty: none
  bool loop = false;
  bool shuffle = false;
  bool json = false;
};

/// Plays pictures as an application does: InitPlayer, SetDisplayArea, StartPlayback, the events 10 then 8,
/// ChangePlayingURL for the next picture, ... and Stop. Reports each picture on standard output.
class SlideShow {
 public:
  SlideShow(Television& television, SlideShowOptions options);

  /// Until the last picture, or an interruption. Returns an exit status: kFailed when a picture was not shown.
  int Play();

 private:
  /// Why it was not shown; nothing when it was.
  std::optional<std::string> Show(const std::string& picture);
  std::optional<std::string> Load(const std::string& picture);
  std::optional<std::string> Start();
  std::optional<std::string> AwaitShown();
  std::optional<std::string> ResolveEffect();
  bool Present(size_t index);
  std::optional<std::string> Screenshot(size_t index);

  Television& m_television;
  SlideShowOptions m_options;
  std::string m_effect_number;
  int m_restarts = 0;          ///< of the engine, when the three below were true
  bool m_initialised = false;  ///< a first picture was taken, so the next ones replace it
  bool m_placed = false;       ///< the display area was set
  bool m_shown = false;        ///< something stands in the window that a transition can start from
};

}  // namespace sim::tvsim

#endif
