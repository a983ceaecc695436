// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_ENGINE_WAITREPORT_H
#define SIMULATOR_TVSIM_ENGINE_WAITREPORT_H

#include <sys/types.h>

#include <string>

namespace sim::tvsim {

/// What each thread of a process that does not answer is at, for people: "picture-player waits for a lock, pool runs,
/// reporter waits for input from socket:[4711]". Threads that do the same are counted. Empty for a process that has
/// gone or may not be looked at.
std::string WhatItWaitsFor(pid_t process);

}  // namespace sim::tvsim

#endif
