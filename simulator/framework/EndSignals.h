// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_FRAMEWORK_ENDSIGNALS_H
#define SIMULATOR_FRAMEWORK_ENDSIGNALS_H

#include <glib.h>

#include <functional>

#include "simulator/base/UniqueFd.h"

namespace sim::framework {

/// The signals that ask the process to end: SIGTERM, SIGINT, SIGHUP. They are blocked for the rest of the process, so
/// that it does not matter who sets handlers: ecore_x, when a command initialises it, sets some that throw the signals
/// away. Needs no thread. One object a process, made before other threads, which take its mask over.
class EndSignals {
 public:
  /// `onSignal` is called on the thread that runs `context`, before other sources that are ready.
  EndSignals(GMainContext* context, std::function<void()> onSignal);
  ~EndSignals();
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

 private:
  static gboolean OnReadable(gint fd, GIOCondition, gpointer self);

  const std::function<void()> m_onSignal;
  const UniqueFd m_fd;
  GSource* const m_source;
};

}  // namespace sim::framework

#endif
