// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_CONTROL_RIGHTS_H
#define SIMULATOR_TVSIM_CONTROL_RIGHTS_H

namespace sim::tvsim {

/// What a client may do.
enum class Rights {
  kView,     ///< look on: methods that change nothing
  kControl,  ///< everything
};

}  // namespace sim::tvsim

#endif
