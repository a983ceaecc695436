// SPDX-License-Identifier: Apache-2.0
/// Folds the two framework calls of each engine log line into one journal entry, and only where both follow the
/// convention to the letter; anything else becomes an entry that begins with "log!" and so matches no golden.
#ifndef TESTS_KIT_LOGFOLD_H
#define TESTS_KIT_LOGFOLD_H

#include <string>

namespace kit {

/// The calling thread's prefix that still waits for its message, as text; empty when there is none. Forgets it.
std::string TakePendingPrefix();
void DropPendingPrefix();

}  // namespace kit

#endif
