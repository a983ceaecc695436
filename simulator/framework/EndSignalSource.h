// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_FRAMEWORK_ENDSIGNALSOURCE_H
#define SIMULATOR_FRAMEWORK_ENDSIGNALSOURCE_H

#include <glib.h>

#include <functional>

#include "simulator/base/EndSignals.h"

namespace sim::framework {

/// Tells a main loop of the signals that ask the process to end, without a thread. That they are blocked matters here:
/// ecore_x, when a command initialises it, sets handlers that throw them away.
class EndSignalSource {
 public:
  /// `onSignal` is called on the thread that runs `context`, before other sources that are ready.
  EndSignalSource(GMainContext* context, std::function<void()> onSignal);
  ~EndSignalSource();
  EndSignalSource(const EndSignalSource&) = delete;
  EndSignalSource& operator=(const EndSignalSource&) = delete;

 private:
  static gboolean OnReadable(gint fd, GIOCondition, gpointer self);

  const std::function<void()> m_onSignal;
  const EndSignals m_signals;
  GSource* const m_source;
};

}  // namespace sim::framework

#endif
