// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SLIDESHOW_SLIDESHOW_H
#define SIMULATOR_TVSIM_SLIDESHOW_SLIDESHOW_H

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulator/tvsim/session/Television.h"
#include "simulator/tvsim/slideshow/FrameLog.h"
#include "simulator/tvsim/slideshow/Keys.h"

namespace sim::tvsim {

struct SlideShowOptions {
  std::vector<std::string> pictures;         ///< absolute paths, at least one
  std::array<int, 4> area{0, 0, 0, 0};       ///< x, y, width, height in the application's layout of 540 lines
  std::string effect;                        ///< a number or a name of the engine's list, or "random"; empty: none
  std::chrono::milliseconds interval{3000};  ///< for which each picture stands
  std::chrono::milliseconds picture_limit{30000};  ///< after which a picture without an event has failed
  std::string screenshots;                         ///< a folder that exists; empty: none
  bool loop = false;
  bool shuffle = false;
  bool json = false;
  bool keys = false;  ///< standard input gives single keys, see KeyboardMode
};

/// Plays pictures as an application does: InitPlayer, SetDisplayArea, StartPlayback, the events 10 then 8,
/// ChangePlayingURL for the next picture, ... and Stop. Reports each picture on standard output, and in the end the
/// frames of what moved.
class SlideShow {
 public:
  SlideShow(Television& television, SlideShowOptions options);

  /// Until the last picture, the key that quits, or an interruption. Returns an exit status: kFailed when a picture was
  /// not shown.
  int Play();

 private:
  /// Why it was not shown; nothing when it was.
  std::optional<std::string> Show(const std::string& picture);
  std::optional<std::string> Load(const std::string& picture);
  std::optional<std::string> Start();
  std::optional<std::string> AwaitShown();
  bool EngineHasEnded() const;
  std::optional<std::string> TransitionsFailure(const std::string& picture, int transitions_before);
  std::optional<std::string> ResolveEffect();
  bool Present(size_t index);
  int Stand(size_t index);
  void TakeKey(Key key, const std::string& picture);
  size_t Neighbour(size_t index, int direction) const;
  void ChangeView(const std::string& command, int& shown, int value, const std::string& picture);
  std::optional<std::string> LoadAgain(const std::string& picture);
  bool IsOver() const;
  bool Finish();
  void Notice(const std::string& text) const;
  std::optional<std::string> Screenshot(size_t index);

  Television& m_television;
  SlideShowOptions m_options;
  std::string m_effect_number;
  std::unique_ptr<FrameLog> m_frames;  ///< null where the log cannot be followed
  std::optional<Keys> m_keys;
  bool m_stands = false;  ///< the last picture was shown
  int m_failures = 0;     ///< pictures in a row that were not
  bool m_paused = false;
  int m_rotation = 0;          ///< of the picture that stands, degrees
  int m_zoom = 1;              ///< likewise
  int m_restarts = 0;          ///< of the engine, when the three below were true
  bool m_initialised = false;  ///< a first picture was taken, so the next ones replace it
  bool m_placed = false;       ///< the display area was set
  bool m_loaded = false;       ///< the engine holds a picture; a transition leaves it none
  bool m_shown = false;        ///< something stands in the window that a transition can start from
};

}  // namespace sim::tvsim

#endif
