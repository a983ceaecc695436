// SPDX-License-Identifier: Apache-2.0
#include "tests/lumaview/TestPictures.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "simulator/base/UniqueFd.h"

namespace sim::lumaview::test {

TempFolder::TempFolder() {
  std::string name = std::filesystem::temp_directory_path() / "pictures-XXXXXX";
  EXPECT_NE(mkdtemp(name.data()), nullptr);
  m_path = name;
}

TempFolder::~TempFolder() {
  std::filesystem::remove_all(m_path);
}

Picture Picture::Crop(const Rect& rect) const {
  Picture part{rect.width, rect.height, {}};
  for (int y = rect.y; y < rect.y + rect.height; ++y) {
    const auto row = pixels.begin() + y * width + rect.x;
    part.pixels.insert(part.pixels.end(), row, row + rect.width);
  }
  return part;
}

void Convert(const std::vector<std::string>& arguments) {
  std::vector<std::string> words = {"convert"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  pid_t child = -1;
  ASSERT_EQ(posix_spawnp(&child, argv[0], nullptr, nullptr, argv.data(), environ), 0) << "ImageMagick is needed";
  int status = -1;
  waitpid(child, &status, 0);
  ASSERT_EQ(status, 0) << "convert " << ::testing::PrintToString(arguments);
}

std::vector<uint8_t> ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  ASSERT_TRUE(file) << path;
}

Picture Oracle(const std::string& path, const std::vector<std::string>& options) {
  const TempFolder folder;
  const std::string output = folder / "oracle.ppm";
  std::vector<std::string> arguments = {path};
  arguments.insert(arguments.end(), options.begin(), options.end());
  arguments.insert(arguments.end(), {"-depth", "8", "ppm:" + output});
  Convert(arguments);
  std::ifstream file(output, std::ios::binary);
  std::string magic;
  Picture picture;
  int most = 0;
  file >> magic >> picture.width >> picture.height >> most;
  file.get();
  EXPECT_EQ(magic, "P6");
  picture.pixels.resize(static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height));
  for (uint32_t& pixel : picture.pixels) {
    char rgb[3];
    file.read(rgb, 3);
    const auto byte = [&rgb](int i) { return uint32_t{static_cast<uint8_t>(rgb[i])}; };
    pixel = 0xFF000000 | byte(0) << 16 | byte(1) << 8 | byte(2);
  }
  EXPECT_TRUE(file);
  return picture;
}

double Psnr(const Picture& a, const Picture& b) {
  EXPECT_EQ(a.width, b.width);
  EXPECT_EQ(a.height, b.height);
  if (a.pixels.size() != b.pixels.size()) {
    return 0;
  }
  double squares = 0;
  for (size_t i = 0; i < a.pixels.size(); ++i) {
    for (const int shift : {0, 8, 16}) {
      const int difference =
          static_cast<int>(a.pixels[i] >> shift & 0xFF) - static_cast<int>(b.pixels[i] >> shift & 0xFF);
      squares += difference * difference;
    }
  }
  const double mean = squares / (3.0 * static_cast<double>(a.pixels.size()));
  return mean == 0 ? 99.0 : std::min(99.0, 10 * std::log10(255.0 * 255.0 / mean));
}

std::vector<uint8_t> WithOrientation(const std::vector<uint8_t>& jpeg, int orientation) {
  const std::vector<uint8_t> exif = {
      0xFF, 0xE1, 0,    34,   'E', 'x', 'i', 'f', 0, 0,                                              // segment
      'M',  'M',  0,    42,   0,   0,   0,   8,                                                      // TIFF header
      0,    1,    0x01, 0x12, 0,   3,   0,   0,   0, 1, 0, static_cast<uint8_t>(orientation), 0, 0,  // one entry
      0,    0,    0,    0};
  std::vector<uint8_t> result(jpeg.begin(), jpeg.begin() + 2);
  result.insert(result.end(), exif.begin(), exif.end());
  result.insert(result.end(), jpeg.begin() + 2, jpeg.end());
  return result;
}

Outcome Show(const std::string& path, Size window, const View& view, const Limits& limits) {
  Outcome outcome;
  const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_TRUE(file) << path;
  const std::atomic<bool> cancelled{false};
  Source source(file.Get(), limits, cancelled);
  Result<std::unique_ptr<Decoder>> decoder = OpenPicture(source);
  if (!decoder) {
    outcome.error = decoder.error();
    return outcome;
  }
  outcome.info = (*decoder)->GetInfo();
  const auto pixels = static_cast<size_t>(window.width) * static_cast<size_t>(window.height);
  outcome.window = {window.width, window.height, std::vector<uint32_t>(pixels, 0x12345678)};
  if (const Status rendered = RenderFrame(**decoder, view, outcome.window.View()); !rendered) {
    outcome.error = rendered.error();
  }
  return outcome;
}

}  // namespace sim::lumaview::test
