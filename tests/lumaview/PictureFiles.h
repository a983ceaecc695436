// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_LUMAVIEW_PICTUREFILES_H
#define TESTS_LUMAVIEW_PICTUREFILES_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace lumaview_test {

/// 0xRRGGBB of the pixel at x, y.
using Painting = std::function<uint32_t(int x, int y)>;

Painting Solid(uint32_t colour);
/// Four quarters: upper left, upper right, lower left, lower right.
Painting Quarters(int width, int height, uint32_t upper_left, uint32_t upper_right, uint32_t lower_left,
                  uint32_t lower_right);

/// A folder of the test's own, removed with it.
class PictureFolder {
 public:
  PictureFolder();
  ~PictureFolder();
  PictureFolder(const PictureFolder&) = delete;
  PictureFolder& operator=(const PictureFolder&) = delete;

  std::string GetPath(const std::string& name) const { return m_path + "/" + name; }
  /// Each returns the path of the new file.
  std::string WritePng(const std::string& name, int width, int height, const Painting& painting) const;
  /// `orientation`: EXIF's number, 1 to 8; 0 = the file says nothing.
  std::string WriteJpeg(const std::string& name, int width, int height, const Painting& painting,
                        int orientation = 0) const;
  /// An animation of one colour after the other, each shown for `milliseconds`. `loops`: 0 = for ever.
  std::string WriteGif(const std::string& name, int width, int height, const std::vector<uint32_t>& colours,
                       int milliseconds, int loops) const;
  std::string WriteBytes(const std::string& name, const std::string& bytes) const;

 private:
  std::string m_path;
};

}  // namespace lumaview_test

#endif
