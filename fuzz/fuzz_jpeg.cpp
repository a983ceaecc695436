// SPDX-License-Identifier: Apache-2.0
#include "fuzz/fuzz_picture.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return DrawPictureTwice("JPEG", data, size);
}
