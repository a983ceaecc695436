// SPDX-License-Identifier: Apache-2.0
#include "tests/lumaview/PictureFiles.h"

#include <gif_lib.h>
#include <png.h>
#include <stdlib.h>

#include <cstdio>
// libjpeg's header wants FILE declared before it.
#include <jpeglib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace lumaview_test {
namespace {

std::vector<uint8_t> RowsOf(int width, int height, const Painting& painting) {
  std::vector<uint8_t> rows;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const uint32_t pixel = painting(x, y);
      rows.push_back(static_cast<uint8_t>(pixel >> 16));
      rows.push_back(static_cast<uint8_t>(pixel >> 8));
      rows.push_back(static_cast<uint8_t>(pixel));
    }
  }
  return rows;
}

/// The smallest EXIF block that says how the picture is to be turned.
void WriteOrientation(jpeg_compress_struct& compress, int orientation) {
  const JOCTET exif[] = {'E',
                         'x',
                         'i',
                         'f',
                         0,
                         0,  // marker of the block
                         'I',
                         'I',
                         0x2A,
                         0,
                         8,
                         0,
                         0,
                         0,  // little-endian, directory at 8
                         1,
                         0,  // one entry
                         0x12,
                         0x01,
                         3,
                         0,
                         1,
                         0,
                         0,
                         0,  // orientation, one short
                         static_cast<JOCTET>(orientation),
                         0,
                         0,
                         0,
                         0,
                         0,
                         0,
                         0};  // value; no further directory
  jpeg_write_marker(&compress, JPEG_APP0 + 1, exif, sizeof exif);
}

}  // namespace

Painting Solid(uint32_t colour) {
  return [colour](int, int) { return colour; };
}

Painting Quarters(int width, int height, uint32_t upper_left, uint32_t upper_right, uint32_t lower_left,
                  uint32_t lower_right) {
  return [=](int x, int y) {
    const bool right = x >= width / 2;
    return y < height / 2 ? (right ? upper_right : upper_left) : (right ? lower_right : lower_left);
  };
}

PictureFolder::PictureFolder() {
  char pattern[] = "/tmp/lumaview-test-XXXXXX";
  if (mkdtemp(pattern) == nullptr) {
    throw std::runtime_error("no folder for pictures");
  }
  m_path = pattern;
}

PictureFolder::~PictureFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

std::string PictureFolder::WritePng(const std::string& name, int width, int height, const Painting& painting) const {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(height);
  image.format = PNG_FORMAT_RGB;
  const auto rows = RowsOf(width, height, painting);
  const std::string path = GetPath(name);
  if (png_image_write_to_file(&image, path.c_str(), 0, rows.data(), 0, nullptr) == 0) {
    throw std::runtime_error(image.message);
  }
  return path;
}

std::string PictureFolder::WriteJpeg(const std::string& name, int width, int height, const Painting& painting,
                                     int orientation) const {
  auto rows = RowsOf(width, height, painting);
  const std::string path = GetPath(name);
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) {
    throw std::runtime_error("cannot write " + path);
  }
  jpeg_compress_struct compress{};
  jpeg_error_mgr errors{};
  compress.err = jpeg_std_error(&errors);
  jpeg_create_compress(&compress);
  jpeg_stdio_dest(&compress, file);
  compress.image_width = static_cast<JDIMENSION>(width);
  compress.image_height = static_cast<JDIMENSION>(height);
  compress.input_components = 3;
  compress.in_color_space = JCS_RGB;
  jpeg_set_defaults(&compress);
  jpeg_set_quality(&compress, 92, TRUE);
  jpeg_start_compress(&compress, TRUE);
  if (orientation != 0) {
    WriteOrientation(compress, orientation);
  }
  while (compress.next_scanline < compress.image_height) {
    JSAMPROW row = rows.data() + size_t{compress.next_scanline} * static_cast<size_t>(width) * 3;
    jpeg_write_scanlines(&compress, &row, 1);
  }
  jpeg_finish_compress(&compress);
  jpeg_destroy_compress(&compress);
  std::fclose(file);
  return path;
}

std::string PictureFolder::WriteGif(const std::string& name, int width, int height,
                                    const std::vector<uint32_t>& colours, int milliseconds, int loops) const {
  const std::string path = GetPath(name);
  GifFileType* gif = EGifOpenFileName(path.c_str(), false, nullptr);
  if (gif == nullptr) {
    throw std::runtime_error("cannot write " + path);
  }
  EGifSetGifVersion(gif, true);
  GifColorType palette[4] = {};
  for (size_t i = 0; i < colours.size() && i < 4; ++i) {
    palette[i] = {static_cast<GifByteType>(colours[i] >> 16), static_cast<GifByteType>(colours[i] >> 8),
                  static_cast<GifByteType>(colours[i])};
  }
  ColorMapObject* map = GifMakeMapObject(4, palette);
  EGifPutScreenDesc(gif, width, height, 8, 0, map);
  const GifByteType repeat[] = {1, static_cast<GifByteType>(loops), static_cast<GifByteType>(loops >> 8)};
  EGifPutExtensionLeader(gif, APPLICATION_EXT_FUNC_CODE);
  EGifPutExtensionBlock(gif, 11, "NETSCAPE2.0");
  EGifPutExtensionBlock(gif, sizeof repeat, repeat);
  EGifPutExtensionTrailer(gif);
  for (size_t i = 0; i < colours.size(); ++i) {
    const int hundredths = milliseconds / 10;
    const GifByteType control[] = {0, static_cast<GifByteType>(hundredths), static_cast<GifByteType>(hundredths >> 8),
                                   0};
    EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, sizeof control, control);
    EGifPutImageDesc(gif, 0, 0, width, height, false, nullptr);
    std::vector<GifPixelType> row(static_cast<size_t>(width), static_cast<GifPixelType>(i));
    for (int y = 0; y < height; ++y) {
      EGifPutLine(gif, row.data(), width);
    }
  }
  EGifCloseFile(gif, nullptr);
  GifFreeMapObject(map);
  return path;
}

std::string PictureFolder::WriteBytes(const std::string& name, const std::string& bytes) const {
  const std::string path = GetPath(name);
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

}  // namespace lumaview_test
