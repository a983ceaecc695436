// SPDX-License-Identifier: Apache-2.0
#include "bench/pictures/JpegFloor.h"

#include <csetjmp>
#include <cstdio>
#include <vector>
// jpeglib.h needs stdio.h before it.
#include <jpeglib.h>

#include "simulator/base/CHandle.h"
#include "simulator/lumaview/image/Render.h"

namespace bench {
namespace {

using namespace sim::lumaview;

using FileHandle = sim::CHandle<std::FILE, std::fclose>;

struct Errors {
  jpeg_error_mgr manager;
  std::jmp_buf escape;
};

void ChooseScale(jpeg_decompress_struct& cinfo, Size window) {
  const Rect placed =
      PlaceInWindow({static_cast<int>(cinfo.image_width), static_cast<int>(cinfo.image_height)}, {}, window);
  cinfo.scale_denom = 8;
  for (const unsigned int numerator : {1u, 2u, 4u, 8u}) {
    cinfo.scale_num = numerator;
    jpeg_calc_output_dimensions(&cinfo);
    if (static_cast<int>(cinfo.output_width) >= placed.width &&
        static_cast<int>(cinfo.output_height) >= placed.height) {
      return;
    }
  }
}

/// Jumped out of on an error: `row` belongs to the caller.
bool Decode(jpeg_decompress_struct& cinfo, Errors& errors, std::FILE* file, Size window, std::vector<uint8_t>& row) {
  if (setjmp(errors.escape) != 0) {
    return false;
  }
  jpeg_create_decompress(&cinfo);
  jpeg_stdio_src(&cinfo, file);
  jpeg_read_header(&cinfo, TRUE);
  cinfo.out_color_space = cinfo.jpeg_color_space == JCS_GRAYSCALE ? JCS_GRAYSCALE : JCS_EXT_BGRX;
  ChooseScale(cinfo, window);
  jpeg_start_decompress(&cinfo);
  row.resize(size_t{cinfo.output_width} * 4);
  JSAMPROW rows[] = {row.data()};
  while (cinfo.output_scanline < cinfo.output_height) {
    jpeg_read_scanlines(&cinfo, rows, 1);
  }
  jpeg_finish_decompress(&cinfo);
  return true;
}

}  // namespace

bool DecodeJpegFloor(const char* path, Size window) {
  const FileHandle file(std::fopen(path, "rb"));
  if (!file) {
    return false;
  }
  jpeg_decompress_struct cinfo{};
  Errors errors{};
  cinfo.err = jpeg_std_error(&errors.manager);
  errors.manager.error_exit = [](j_common_ptr failed) {
    std::longjmp(reinterpret_cast<Errors*>(failed->err)->escape, 1);
  };
  std::vector<uint8_t> row;
  const bool decoded = Decode(cinfo, errors, file.get(), window, row);
  jpeg_destroy_decompress(&cinfo);
  return decoded;
}

}  // namespace bench
