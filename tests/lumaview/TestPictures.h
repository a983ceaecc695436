// SPDX-License-Identifier: Apache-2.0
/// What the tests of formats and scaling share: files made on the spot, rendering, and ImageMagick as the judge.
#ifndef TESTS_LUMAVIEW_TESTPICTURES_H
#define TESTS_LUMAVIEW_TESTPICTURES_H

// Before anything that includes X11/X.h, whose macro None breaks it.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "simulator/lumaview/image/Render.h"

namespace sim::lumaview::test {

/// A folder that goes with the object.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  std::string operator/(const std::string& name) const { return m_path / name; }

 private:
  std::filesystem::path m_path;
};

/// Pixels that own their memory.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<uint32_t> pixels;  ///< 0xFFRRGGBB, rows without gaps

  uint32_t At(int x, int y) const { return pixels[static_cast<size_t>(y * width + x)]; }
  ImageView View() { return {pixels.data(), width, height, width}; }
  Picture Crop(const Rect& rect) const;
};

/// Runs ImageMagick's `convert`; the test fails when it does.
void Convert(const std::vector<std::string>& arguments);
std::vector<uint8_t> ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::vector<uint8_t>& bytes);

/// `path` as `convert` with `options` ("-auto-orient", "-resize", ...) sees it, without its transparency.
Picture Oracle(const std::string& path, const std::vector<std::string>& options);

/// Decibels between two pictures of one size; 99 when they are equal.
double Psnr(const Picture& a, const Picture& b);

/// The JPEG with an EXIF block that says `orientation`.
std::vector<uint8_t> WithOrientation(const std::vector<uint8_t>& jpeg, int orientation);

/// What came of opening and rendering a file.
struct Outcome {
  std::optional<Error> error;
  PictureInfo info;
  Picture window;
};
Outcome Show(const std::string& path, Size window, const View& view = {}, const Limits& limits = {});

}  // namespace sim::lumaview::test

#endif
