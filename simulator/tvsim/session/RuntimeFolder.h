// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SESSION_RUNTIMEFOLDER_H
#define SIMULATOR_TVSIM_SESSION_RUNTIMEFOLDER_H

#include <string>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"

namespace sim::tvsim {

/// The folder of one session, for its owner alone (0700): control socket, key store, the engine's log. It stands in
/// XDG_RUNTIME_DIR, or in /tmp where there is none, and is called after the session.
class RuntimeFolder {
 public:
  /// Makes the folder and holds it. What a session of the same name that is over left there is removed.
  /// Errors: the name is not of letters, digits, '-' and '_'; a session of that name runs; the folder is not ours.
  static Result<RuntimeFolder> Create(const std::string& session);

  /// The folder of a running session. Errors: there is none of that name; the reason says how to start one.
  static Result<std::string> Find(const std::string& session);

  const std::string& Path() const { return m_path; }

  /// Removes it with all that stands in it.
  void Remove() const;

 private:
  RuntimeFolder(std::string path, UniqueFd lock) : m_path(std::move(path)), m_lock(std::move(lock)) {}

  std::string m_path;
  UniqueFd m_lock;  ///< held for as long as the session lives, also by its forked processes
};

std::string ControlSocketIn(const std::string& folder);
std::string EngineLogIn(const std::string& folder);

}  // namespace sim::tvsim

#endif
