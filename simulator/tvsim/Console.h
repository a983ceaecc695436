// SPDX-License-Identifier: Apache-2.0
/// What tvsim tells its user: results on standard output, everything else on standard error.
#ifndef SIMULATOR_TVSIM_CONSOLE_H
#define SIMULATOR_TVSIM_CONSOLE_H

#include <string>

namespace sim::tvsim {

/// What a shell learns from tvsim.
enum ExitStatus : int {
  kDone = 0,
  kFailed = 1,    ///< a picture, an expectation, the engine
  kNotReady = 2,  ///< wrong use, or something is missing on this machine
};

/// "tvsim: text" on standard error.
void Complain(const std::string& text);

/// A line on standard output, written at once. Control characters in it are shown as \xNN: paths stand in it.
void Say(const std::string& text);

/// Complains and gives `status` back: `return Fail(kNotReady, reason)`.
int Fail(ExitStatus status, const std::string& text);

}  // namespace sim::tvsim

#endif
