// SPDX-License-Identifier: Apache-2.0
/// Files that no tool at hand writes, put together from bytes.
#ifndef TESTS_LUMAVIEW_ODDFILES_H
#define TESTS_LUMAVIEW_ODDFILES_H

#include <cstdint>
#include <vector>

#include "tests/lumaview/TestPictures.h"

namespace sim::lumaview::test {

/// A multi-picture file of two JPEGs. `attributes`: of the second one in the file's index, where 0x020002 makes the
/// two a stereo pair and 0x020001 a panorama.
std::vector<uint8_t> MakeMpo(const std::vector<uint8_t>& left, const std::vector<uint8_t>& right, uint32_t attributes);

/// A QOI that uses all the ways to write a pixel: whole, as a difference, from the table, as a run.
std::vector<uint8_t> MakeQoi(const Picture& picture);

/// An ICC profile of version 2 that is sRGB with red and green exchanged.
std::vector<uint8_t> MakeSwappedProfile();

}  // namespace sim::lumaview::test

#endif
