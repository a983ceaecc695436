// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_PICTURE_THREAD_H
#define SIMULATOR_LUMAVIEW_PICTURE_THREAD_H

#include <functional>
#include <thread>

namespace sim::lumaview {

/// A thread of the library. Signals stay with the threads of the program that uses it: all are blocked.
/// Throws std::system_error when the system gives no more threads. `name`: at most 15 characters, as debuggers show it.
std::thread StartThread(const char* name, std::function<void()> body);

}  // namespace sim::lumaview

#endif
