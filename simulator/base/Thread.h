// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_BASE_THREAD_H
#define SIMULATOR_BASE_THREAD_H

#include <functional>
#include <thread>

namespace sim {

/// A thread that gets no signals: they stay with the threads that the program has made for itself.
/// Throws std::system_error when the system gives no more threads. `name`: at most 15 characters, as debuggers show it.
std::thread StartThread(const char* name, std::function<void()> body);

}  // namespace sim

#endif
