// SPDX-License-Identifier: Apache-2.0
#ifndef FUZZ_FUZZ_PICTURE_H
#define FUZZ_FUZZ_PICTURE_H

#include <cstddef>
#include <cstdint>

/// Opens the bytes as the library opens a file and draws up to three frames into a small window, turned and zoomed as
/// the length of the bytes says. Bytes that do not begin as `format` (a name of the table of formats) are not opened.
/// What LLVMFuzzerTestOneInput returns: -1 = of no use to this target.
int DrawPicture(const char* format, const uint8_t* data, size_t size);

/// The same, by one thread and by two where the format has a second one; stops the process when they disagree.
int DrawPictureTwice(const char* format, const uint8_t* data, size_t size);

#endif
