// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SCREEN_PICTURE_H
#define SIMULATOR_TVSIM_SCREEN_PICTURE_H

#include <cstdint>
#include <string>
#include <vector>

#include "simulator/base/Result.h"

namespace sim::tvsim {

/// What a screen shows: rows from top to bottom without gaps, three bytes a pixel: red, green, blue.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> rgb;

  friend bool operator==(const Picture&, const Picture&) = default;
};

/// Writes an 8-bit RGB PNG, over an existing file only when it is complete. Errors: the file cannot be written.
Status WritePng(const Picture& picture, const std::string& path);

/// Reads any PNG up to 16384 x 16384, transparency over black. Errors: no such file, no PNG, damaged.
Result<Picture> ReadPng(const std::string& path);

/// Peak signal-to-noise ratio over all channels in dB; infinity for equal pictures. Errors: the sizes differ.
Result<double> Psnr(const Picture& one, const Picture& other);

}  // namespace sim::tvsim

#endif
