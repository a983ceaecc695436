// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_DOCTOR_DOCTOR_H
#define SIMULATOR_TVSIM_DOCTOR_DOCTOR_H

#include <string>
#include <vector>

namespace sim::tvsim {

enum class Health {
  kGood,
  kLacking,  ///< a session works without it, but not as well
  kMissing,  ///< no session works without it
};

/// What was found out about one thing that a session needs.
struct Finding {
  Health health = Health::kGood;
  std::string what;   ///< "X server"
  std::string found;  ///< "none on \":0\", a session makes one"
  std::string mend;   ///< what to do; empty when good
};

/// Looks at everything that a session of `engine` needs, in the order in which a session does. Starts the engine once,
/// without a screen. Takes some tenths of a second.
std::vector<Finding> Examine(const std::string& engine);

/// Whether a session can be had.
bool IsFit(const std::vector<Finding>& findings);

}  // namespace sim::tvsim

#endif
