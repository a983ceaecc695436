// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_CAGE_BARS_H
#define SIMULATOR_LUMAVIEW_CAGE_BARS_H

#include <cstdint>
#include <string>

namespace sim::lumaview::cage {

/// What a kernel may or may not offer to hold a decoder; all else always holds: a process of its own that dies with the
/// engine, no new privileges, limits on memory, files and processor time.
enum Bar : uint32_t {
  kFileBar = 1,  ///< landlock: no path leads anywhere
  kCallBar = 2,  ///< seccomp: the calls that decoding needs and no others
  kAllBars = kFileBar | kCallBar,
};

/// The channel's descriptor in a child; the calls' filter knows it by this number.
inline constexpr int kChannelFd = 3;

/// Confines the calling process, of one thread, for good, and tells which bars hold. Descriptors that are open stay
/// usable, but there will be few more.
uint32_t CloseCage();

/// Gives this process, when it is confined, the processor time for one request of at most `seconds`.
void AllowRequest(uint64_t seconds);

/// "landlock, seccomp", or what of them is missing and why that is so: for people.
std::string DescribeBars(uint32_t bars);

/// The bars that hold on this system, tried out in a process of its own.
uint32_t TryBars();

}  // namespace sim::lumaview::cage

#endif
