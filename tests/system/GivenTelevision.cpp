// SPDX-License-Identifier: Apache-2.0
#include "tests/system/GivenTelevision.h"

#include <cmath>
#include <fstream>

namespace sim::tvsim {
namespace {

/// Of Debian's mate-backgrounds, 1920 x 1200 or more.
constexpr const char* kPhotograph = "/usr/share/backgrounds/mate/nature/Garden.jpg";
constexpr double kGoodLikeness = 32;  // dB; what two good scalers differ by

std::string Size(int width, int height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

/// The turn that brings an upright picture into the orientation: the inverse of what a viewer does.
std::vector<std::string> TurnInto(int orientation) {
  switch (orientation) {
    case 2:
      return {"-flop"};
    case 3:
      return {"-rotate", "180"};
    case 4:
      return {"-flip"};
    case 5:
      return {"-transpose"};
    case 6:
      return {"-rotate", "270"};
    case 7:
      return {"-transverse"};
    case 8:
      return {"-rotate", "90"};
    default:
      return {};
  }
}

}  // namespace

void GivenTelevision::Convert(const std::vector<std::string>& arguments) {
  ProcessRequest request{{"convert"}, {}, {}};
  request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
  auto convert = ChildProcess::Start(request);
  ASSERT_TRUE(convert) << convert.error().reason;
  const auto end = convert->Wait(std::chrono::minutes(1));
  ASSERT_TRUE(end && !end->signalled && end->status == 0) << "convert failed";
}

std::string GivenTelevision::Photograph(int width, int height, int orientation) {
  const std::string file = PathOf("photograph-" + Size(width, height) + "-" + std::to_string(orientation) + ".jpg");
  std::vector<std::string> arguments = {kPhotograph, "-strip", "-resize", Size(width, height) + "!"};
  for (const std::string& turn : TurnInto(orientation)) {
    arguments.push_back(turn);
  }
  arguments.insert(arguments.end(), {"+repage", "-quality", "95", file});
  Convert(arguments);
  SetOrientation(file, orientation);
  return file;
}

std::string GivenTelevision::Plain(const std::string& colour, int width, int height) {
  const std::string file = PathOf(colour + ".png");
  Convert({"-size", Size(width, height), "xc:" + colour, file});
  return file;
}

std::string GivenTelevision::WhiteOn(Area area) {
  Picture screen{kScreen.width, kScreen.height, {}};
  screen.rgb.resize(size_t(screen.width) * size_t(screen.height) * 3);
  for (int y = area.y; y < area.y + area.height; ++y) {
    const auto row = screen.rgb.begin() + (std::ptrdiff_t(y) * screen.width + area.x) * 3;
    std::fill(row, row + area.width * 3, 255);
  }
  const std::string file = PathOf("white-" + Size(area.width, area.height) + "-at-" + Size(area.x, area.y) + ".png");
  EXPECT_TRUE(WritePng(screen, file));
  return file;
}

Area GivenTelevision::FitInto(Area window, int width, int height) {
  const double scale = std::min(double(window.width) / width, double(window.height) / height);
  const int shown_width = int(std::lround(width * scale)), shown_height = int(std::lround(height * scale));
  return {window.x + (window.width - shown_width) / 2, window.y + (window.height - shown_height) / 2, shown_width,
          shown_height};
}

void GivenTelevision::ExpectShown(const Picture& screen, const std::string& picture, Area placed) {
  const std::string oracle = PathOf("oracle.png");
  Convert({picture, "-auto-orient", "-resize", Size(placed.width, placed.height) + "!", oracle});
  const Result<Picture> expected = ReadPng(oracle);
  ASSERT_TRUE(expected);
  const Result<double> likeness = Psnr(*expected, Crop(screen, placed));
  ASSERT_TRUE(likeness);
  RecordProperty("psnr", std::to_string(*likeness));
  EXPECT_GE(*likeness, kGoodLikeness);
  EXPECT_EQ(LitOutside(screen, placed), 0u);
}

void SetOrientation(const std::string& jpeg, int orientation) {
  std::string bytes = ContentsOf(jpeg);
  ASSERT_EQ(bytes.substr(0, 2), "\xFF\xD8");
  // An APP1 segment of 34 bytes: EXIF with a little-endian TIFF directory of the one entry 274, a SHORT.
  std::string segment(
      "\xFF\xE1\0\x22"
      "Exif\0\0"
      "II*\0\x08\0\0\0"
      "\x01\0"
      "\x12\x01\x03\0\x01\0\0\0",
      28);
  segment += static_cast<char>(orientation);
  segment += std::string(7, '\0');
  std::ofstream(jpeg, std::ios::binary) << bytes.insert(2, segment);
}

Picture Crop(const Picture& picture, Area area) {
  Picture part{area.width, area.height, {}};
  for (int y = area.y; y < area.y + area.height; ++y) {
    const auto row = picture.rgb.begin() + (std::ptrdiff_t(y) * picture.width + area.x) * 3;
    part.rgb.insert(part.rgb.end(), row, row + area.width * 3);
  }
  return part;
}

size_t LitOutside(const Picture& picture, Area area) {
  size_t lit = 0;
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      const bool inside = x >= area.x && x < area.x + area.width && y >= area.y && y < area.y + area.height;
      const uint8_t* pixel = &picture.rgb[(size_t(y) * size_t(picture.width) + size_t(x)) * 3];
      lit += !inside && (pixel[0] | pixel[1] | pixel[2]) != 0;
    }
  }
  return lit;
}

}  // namespace sim::tvsim
