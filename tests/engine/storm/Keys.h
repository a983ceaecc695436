// SPDX-License-Identifier: Apache-2.0
/// The key-value store of the storms: keys come from a GSource on the default main context, one at a time, on whatever
/// thread runs that context. All calls are thread-safe.
#ifndef TESTS_ENGINE_STORM_KEYS_H
#define TESTS_ENGINE_STORM_KEYS_H

#include <chrono>
#include <functional>
#include <string>

namespace storm {

/// Sets the key that `engine` follows. False: it follows none, or deliveries to it have been stopped.
bool SetKey(const void* engine, const std::string& value);

/// Waits until `engine` has no delivery before it or running, also because its subscription has ended.
bool AwaitDeliveries(const void* engine, std::chrono::seconds limit = std::chrono::seconds(60));

/// As the framework does before it deletes an engine: nothing is delivered to it any more, and a running delivery has
/// returned. The caller holds no lock.
void StopDeliveries(const void* engine);

/// Called on the delivering thread after each delivery has returned. Set while nothing is delivered.
void OnDelivered(std::function<void(const void* engine, const std::string& value)> listener);

}  // namespace storm

#endif
