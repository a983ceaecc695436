// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/screen/Jpeg.h"

#include <cassert>
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

namespace sim::tvsim {
namespace {

constexpr int kQuality = 85;
constexpr int kLargestSide = 16384;

}  // namespace

std::string EncodeJpeg(const Picture& picture) {
  assert(picture.width >= 1 && picture.height >= 1 && picture.width <= kLargestSide && picture.height <= kLargestSide);
  jpeg_compress_struct encoder{};
  jpeg_error_mgr errors{};
  encoder.err =
      jpeg_std_error(&errors);  // its end of the process is for wrong use only; memory is the only other cause
  jpeg_create_compress(&encoder);
  unsigned char* bytes = nullptr;
  unsigned long count = 0;
  jpeg_mem_dest(&encoder, &bytes, &count);
  encoder.image_width = static_cast<JDIMENSION>(picture.width);
  encoder.image_height = static_cast<JDIMENSION>(picture.height);
  encoder.input_components = 3;
  encoder.in_color_space = JCS_RGB;
  jpeg_set_defaults(&encoder);
  jpeg_set_quality(&encoder, kQuality, TRUE);
  encoder.dct_method = JDCT_IFAST;
  jpeg_start_compress(&encoder, TRUE);
  while (encoder.next_scanline < encoder.image_height) {
    const size_t row = encoder.next_scanline;
    auto* pixels = const_cast<JSAMPLE*>(&picture.rgb[row * static_cast<size_t>(picture.width) * 3]);
    jpeg_write_scanlines(&encoder, &pixels, 1);
  }
  jpeg_finish_compress(&encoder);
  std::string jpeg(reinterpret_cast<const char*>(bytes), count);
  jpeg_destroy_compress(&encoder);
  std::free(bytes);
  return jpeg;
}

}  // namespace sim::tvsim
