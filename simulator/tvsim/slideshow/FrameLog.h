// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SLIDESHOW_FRAMELOG_H
#define SIMULATOR_TVSIM_SLIDESHOW_FRAMELOG_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulator/tvsim/engine/LogFollower.h"

namespace sim::tvsim {

/// What moved on the screen, all of it together.
struct FrameTotals {
  int transitions = 0;  ///< that came to their end
  int shown = 0;        ///< frames of transitions, pans and zooms
  int skipped = 0;
  int worst_gap_ms = 0;  ///< between two frames
};

/// "Frames: 1437 shown, 3 skipped (99.79 % on time), worst gap 34 ms".
std::string TextOf(const FrameTotals& totals);
/// One JSON object on one line.
std::string JsonOf(const FrameTotals& totals);

/// What the picture library says in the engine's log about frames, and about pictures that it could not show: the
/// engine's events tell neither. Without the lines of level 4 in the log there are no frames.
/// On the default main context.
class FrameLog {
 public:
  /// What is added to `log` from now on. Errors: the log's folder cannot be watched.
  static Result<std::unique_ptr<FrameLog>> Follow(const std::string& log);
  FrameLog(const FrameLog&) = delete;
  FrameLog& operator=(const FrameLog&) = delete;

  /// Up to now.
  const FrameTotals& Totals();
  /// Why `picture` was not shown, since `ForgetFailures`; nothing where the library has not said.
  std::optional<std::string> FailureOf(const std::string& picture);
  void ForgetFailures();

 private:
  FrameLog() = default;
  void Take(const std::string& line);

  FrameTotals m_totals;
  std::vector<std::string> m_failures;  ///< "path: reason", in the log's form
  std::unique_ptr<LogFollower> m_follower;
};

}  // namespace sim::tvsim

#endif
