// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_PROCESS_GUARD_H
#define SIMULATOR_TVSIM_PROCESS_GUARD_H

#include <functional>

namespace sim::tvsim {

/// Runs `job` in a child process and sees to it that nothing of it stays: passes SIGINT, SIGTERM and SIGHUP on, gives
/// the job `kJobsTime` to end after such a signal, and when the job has ended, in whatever way, kills all its
/// descendants and calls `clean_up`, once or twice. If the guard itself is killed, the job gets SIGTERM.
/// With `own_namespaces` the child is the first process of namespaces of its own (Namespaces.h) and guards the job
/// there once more, so that even a killed guard leaves no process behind.
/// Returns the job's exit status; 1 after a signal ended it, 2 when the namespaces could not be made.
/// To be called before any thread exists; the job runs on the main thread of its process.
int RunGuarded(bool own_namespaces, const std::function<int()>& job, const std::function<void()>& clean_up);

}  // namespace sim::tvsim

#endif
