// SPDX-License-Identifier: Apache-2.0
/// A folder of pictures with a list of what must come of each, and a process per picture that shows it.
#ifndef TESTS_LUMAVIEW_PICTURESET_H
#define TESTS_LUMAVIEW_PICTURESET_H

#include <string>
#include <vector>

namespace sim::lumaview::test {

/// A line of MANIFEST.tsv.
struct ListedPicture {
  std::string path;    ///< "valid/jpeg/name.jpg", in the folder
  std::string expect;  ///< show, show-or-refuse, refuse, any, bomb
  int width = 0;       ///< after orientation; 0 = not said
  int height = 0;
  int frames = 0;  ///< 0 = not said
};

/// The folder in PICTURES_DIR, else the small set that the build has made.
std::string PicturesFolder();

/// All pictures whose second folder is `format`.
std::vector<ListedPicture> ReadManifest(const std::string& folder, const std::string& format);

/// What became of a process that opened and drew one picture.
struct ShownPicture {
  enum class Kind { kShown, kRefused, kCrashed, kHung };
  Kind kind = Kind::kCrashed;
  int type = -1;
  int width = 0;
  int height = 0;
  int frames = 0;
  int error = 0;
  double cpu_seconds = 0;
  long own_kibibytes = 0;  ///< growth of the peak of the process that would be the engine's
  long kibibytes = 0;      ///< of that or of a decoder's process, whichever is more
  std::string output;      ///< what it said
};

/// Runs picture-outcome on `path`. `ppm`: where the pixels are to be written, or empty.
ShownPicture ShowInProcess(const std::string& path, int width, int height, const std::string& ppm = "");

}  // namespace sim::lumaview::test

#endif
