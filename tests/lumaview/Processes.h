// SPDX-License-Identifier: Apache-2.0
/// The processes below a test, as the system lists them.
#ifndef TESTS_LUMAVIEW_PROCESSES_H
#define TESTS_LUMAVIEW_PROCESSES_H

#include <unistd.h>

#include <string>
#include <vector>

namespace lumaview_test {

/// False for a process that is gone, also where nobody has waited for it yet.
bool IsAlive(pid_t pid);
/// The living children of `ancestor`, theirs and so on, of this name (as /proc cuts it: 15 characters), or of any.
std::vector<pid_t> FindDescendants(const std::string& name, pid_t ancestor = getpid());
/// Of the above, those that use a processor at the moment.
size_t CountRunning(const std::string& name);

}  // namespace lumaview_test

#endif
