// SPDX-License-Identifier: Apache-2.0
/// Watches the engine's mutexes through the wrapped pthread calls.
///
/// Violations: a named mutex taken by the thread that holds it already; the engine's taken by a thread that holds an
/// adapter's; any named one taken by a thread that holds one of the engine's inner locks.
#ifndef TESTS_KIT_MUTEXES_H
#define TESTS_KIT_MUTEXES_H

#include <pthread.h>

#include <cstddef>
#include <string_view>

namespace kit {

/// False for a trace such as "lock m_AdapterMut" that is logged while the calling thread does not hold that mutex, or
/// "unlock m_AdapterMut" while it does. True for every other text.
bool LockLineIsTrue(std::string_view text);

/// Whether the calling thread holds a mutex of that name ("m_EngineMut", "m_AdapterMut").
bool ThisThreadHolds(std::string_view name);

/// Whether the calling thread holds one of the engine's locks without a name.
bool ThisThreadHoldsInnerLock();

void ForgetMutexes();

}  // namespace kit

#endif
