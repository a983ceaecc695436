// SPDX-License-Identifier: Apache-2.0
/// What the simulator's libvconf offers beyond the television's, for the simulator's framework.
#ifndef SIMULATOR_VCONF_INCLUDE_VCONF_SIMULATOR_H
#define SIMULATOR_VCONF_INCLUDE_VCONF_SIMULATOR_H

extern "C" {

/// Ends every subscription of the process and waits for a callback that is running on another thread. When it returns,
/// no callback runs, and none will until the next `vconf_notify_key_changed`. The caller holds no lock that a callback
/// may wait for.
void vconf_stop_deliveries();

}  // extern "C"

#endif
