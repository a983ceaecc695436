// SPDX-License-Identifier: Apache-2.0
/// Servers that do nothing, to measure against.
#ifndef BENCH_PROTOCOL_ECHO_H
#define BENCH_PROTOCOL_ECHO_H

#include <string>

/// Listens at `path` and gives each line of its clients back, by way of a second process: the hops of a command through
/// tvsim to the engine, without anything in between but read, poll and write. Does not return.
[[noreturn]] void ServeTwoHops(const std::string& path);

/// A WebSocket server of libsoup's that gives each message back; prints its port. Does not return.
[[noreturn]] void ServeSoupEcho();

#endif
