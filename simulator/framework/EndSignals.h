// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_FRAMEWORK_ENDSIGNALS_H
#define SIMULATOR_FRAMEWORK_ENDSIGNALS_H

#include <glib.h>

#include <functional>

namespace sim::framework {

/// The signals that ask the process to end: SIGTERM, SIGINT, SIGHUP. Needs no thread. One object a process.
class EndSignals {
 public:
  /// `onSignal` is called on the thread that runs `context`, before other sources that are ready.
  EndSignals(GMainContext* context, std::function<void()> onSignal);
  ~EndSignals();
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

  /// Sets handlers and the calling thread's mask. To be called again after every command: ecore_x, when a command
  /// initialises it, puts handlers of its own in their place that throw the signals away.
  void Assert();

 private:
  static gboolean OnReadable(gint fd, GIOCondition, gpointer self);

  const std::function<void()> m_onSignal;
  GSource* m_source;
};

}  // namespace sim::framework

#endif
