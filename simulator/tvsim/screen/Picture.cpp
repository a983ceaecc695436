// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/screen/Picture.h"

#include <png.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace sim::tvsim {
namespace {

constexpr png_uint_32 kLargestSide = 16384;  // the largest X screen there is

/// libpng's simplified interface keeps its state in this; freed however the function is left.
struct PngImage : png_image {
  PngImage() : png_image{} { version = PNG_IMAGE_VERSION; }
  PngImage(const PngImage&) = delete;
  PngImage& operator=(const PngImage&) = delete;
  ~PngImage() { png_image_free(this); }
};

}  // namespace

Status WritePng(const Picture& picture, const std::string& path) {
  PngImage image;
  image.width = static_cast<png_uint_32>(picture.width);
  image.height = static_cast<png_uint_32>(picture.height);
  image.format = PNG_FORMAT_RGB;
  image.flags = PNG_IMAGE_FLAG_FAST;
  const std::string unfinished = path + ".part";
  if (png_image_write_to_file(&image, unfinished.c_str(), 0, picture.rgb.data(), 0, nullptr) == 0) {
    std::remove(unfinished.c_str());
    return Error{EIO, "cannot write " + path + ": " + image.message};
  }
  if (std::rename(unfinished.c_str(), path.c_str()) != 0) {
    return Error{errno, "cannot write " + path + ": " + std::strerror(errno)};
  }
  return Ok();
}

Result<Picture> ReadPng(const std::string& path) {
  PngImage image;
  if (png_image_begin_read_from_file(&image, path.c_str()) == 0) {
    return Error{EIO, "cannot read " + path + ": " + image.message};
  }
  if (image.width > kLargestSide || image.height > kLargestSide) {
    return Error{EFBIG, path + " is larger than any screen"};
  }
  image.format = PNG_FORMAT_RGB;
  Picture picture{static_cast<int>(image.width), static_cast<int>(image.height), {}};
  picture.rgb.resize(PNG_IMAGE_SIZE(image));
  const png_color black{0, 0, 0};
  if (png_image_finish_read(&image, &black, picture.rgb.data(), 0, nullptr) == 0) {
    return Error{EIO, "cannot read " + path + ": " + image.message};
  }
  return picture;
}

Result<double> Psnr(const Picture& one, const Picture& other) {
  if (one.width != other.width || one.height != other.height) {
    const auto size = [](const Picture& picture) {
      return std::to_string(picture.width) + "x" + std::to_string(picture.height);
    };
    return Error{EINVAL, "the pictures are of different sizes, " + size(one) + " and " + size(other)};
  }
  double sum = 0;
  for (size_t i = 0; i < one.rgb.size(); ++i) {
    const double difference = double(one.rgb[i]) - double(other.rgb[i]);
    sum += difference * difference;
  }
  if (sum == 0) {
    return std::numeric_limits<double>::infinity();
  }
  return 10 * std::log10(255.0 * 255.0 * static_cast<double>(one.rgb.size()) / sum);
}

}  // namespace sim::tvsim
