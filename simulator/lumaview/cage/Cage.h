// SPDX-License-Identifier: Apache-2.0
/// Decoders in processes of their own: the engine's side.
#ifndef SIMULATOR_LUMAVIEW_CAGE_CAGE_H
#define SIMULATOR_LUMAVIEW_CAGE_CAGE_H

#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"
#include "simulator/lumaview/cage/Nursery.h"

namespace sim::lumaview {

/// Gives out processes that each decode one picture. One waits in advance. Thread-safe.
class Cage {
 public:
  /// Errors: kNotReady when the process has threads already, as then it cannot be forked; kOutOfMemory.
  static Result<std::unique_ptr<Cage>> Start();
  /// Ends all its processes and waits for that.
  ~Cage();
  Cage(const Cage&) = delete;
  Cage& operator=(const Cage&) = delete;

  /// A channel to a process that has the modules for `file` and has seen no other picture. Closing the channel ends the
  /// process. Errors: kNotReady when the cage is lost; kOutOfMemory.
  Result<UniqueFd> Take(int file);
  /// Lets the process for the next picture be made, if it is not there yet: at a time when nobody waits.
  void Warm();

  /// Whether pictures can be decoded here; not when its processes were ended from outside.
  bool IsUp() const;
  /// Notes, and logs once, what holds the children; see Bars.h.
  void NoteBars(uint32_t bars);

 private:
  explicit Cage(cage::Nursery nursery) : m_nursery(std::move(nursery)) {}

  Result<UniqueFd> Spawn();

  cage::Nursery m_nursery;
  mutable std::mutex m_mutex;
  std::set<std::string> m_modules;  ///< that children shall have
  UniqueFd m_warm;                  ///< to a child that has `m_modules`; empty = none
  bool m_lost = false;
  bool m_logged = false;
};

/// The cage of this process; null while pictures are decoded in the process itself.
Cage* GetCage();

/// Starts the cage of this process, once, unless LUMAVIEW_CAGE or the build says no; where pictures are decoded in the
/// process itself the log says why. To be called before there are threads; one thread at a time.
void StartCage();
/// Ends it, for tests and tools. No stream may be open.
void StopCage();

}  // namespace sim::lumaview

#endif
