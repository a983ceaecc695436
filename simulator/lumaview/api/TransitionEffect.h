// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_API_TRANSITIONEFFECT_H
#define SIMULATOR_LUMAVIEW_API_TRANSITIONEFFECT_H

#include <memory>
#include <mutex>
#include <string>

#include "platform/lumaview.h"
#include "simulator/lumaview/api/Services.h"

namespace sim::lumaview {

/// One transition-effect handle. All operations are thread-safe and return at once.
class TransitionEffect : public std::enable_shared_from_this<TransitionEffect> {
 public:
  /// Any `type` will do; it is looked at when the effect runs.
  static std::shared_ptr<TransitionEffect> Create(Services& services, int type);
  TransitionEffect(const TransitionEffect&) = delete;
  TransitionEffect& operator=(const TransitionEffect&) = delete;

  _lumaview_effect_s* GetRecord() { return &m_record; }

  /// A null callback ends the reports. Errors: kBadArgument for an event that effects do not have.
  Status SetCallback(lumaview_event_type_e type, lumaview_event_cb callback);
  void SetType(int type);
  /// Errors: kBadArgument; kDisplayFailed where no display is prepared, and the window is kept all the same.
  Status SetWindow(unsigned long window);

  /// Decodes the picture at `path` while the window goes on showing what it shows, then goes over to it; the end of
  /// either is reported. A run that still lasts ends in favour of this one, and is reported as failed.
  /// Errors: kBadArgument for a type that is no effect, kDisplayFailed, kCannotOpen.
  Status Run(const std::string& path);

  /// Ends everything, as `Picture::Close` does; a running transition ends on its picture.
  void Close();

 private:
  TransitionEffect(Services& services, int type);

  void OnFrame(uint64_t generation, int number, const std::string& path, Result<Rendered> rendered);
  void Present(int number, Rendered rendered);  ///< with m_mutex held
  void OnEnd(const std::string& path, const Status& end);

  _lumaview_effect_s m_record{};
  Services& m_services;
  const Presenter::Owner m_id;
  const Reporter::RecipientPtr m_recipient;

  std::mutex m_mutex;
  bool m_closed = false;
  int m_type;
  unsigned long m_window = 0;              ///< 0 = none was set
  std::shared_ptr<Rendering> m_rendering;  ///< null unless a run's picture is being decoded
  uint64_t m_generation = 0;               ///< of the run started last
};

}  // namespace sim::lumaview

#endif
