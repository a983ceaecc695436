// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/slideshow/PictureList.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <string_view>

namespace sim::tvsim {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 23> kExtensions = {
    ".jpg",  ".jpeg", ".jpe", ".mpo", ".png", ".apng", ".bmp", ".gif", ".tif", ".tiff", ".webp", ".heic",
    ".heif", ".avif", ".jxl", ".pnm", ".pbm", ".pgm",  ".ppm", ".pam", ".tga", ".qoi",  ".dib"};

bool HasPicturesExtension(const fs::path& file) {
  std::string extension = file.extension();
  std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return std::tolower(c); });
  return std::ranges::find(kExtensions, extension) != kExtensions.end();
}

std::vector<std::string> PicturesIn(const fs::path& folder) {
  std::vector<std::string> pictures;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.is_regular_file(error) && HasPicturesExtension(entry.path())) {
      pictures.push_back(fs::absolute(entry.path()).lexically_normal());
    }
  }
  std::ranges::sort(pictures);
  return pictures;
}

}  // namespace

Result<std::vector<std::string>> ListPictures(const std::vector<std::string>& arguments) {
  std::vector<std::string> pictures;
  for (const std::string& argument : arguments) {
    std::error_code error;
    if (fs::is_directory(argument, error)) {
      const std::vector<std::string> found = PicturesIn(argument);
      if (found.empty()) {
        return Error{ENOENT, argument + " holds no pictures"};
      }
      pictures.insert(pictures.end(), found.begin(), found.end());
    } else if (fs::exists(argument, error)) {
      pictures.push_back(fs::absolute(argument).lexically_normal());
    } else {
      return Error{ENOENT, "there is no " + argument};
    }
  }
  return pictures;
}

}  // namespace sim::tvsim
