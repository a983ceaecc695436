// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SYSTEM_GIVENTELEVISION_H
#define TESTS_SYSTEM_GIVENTELEVISION_H

#include <string>
#include <vector>

#include "simulator/tvsim/screen/Picture.h"
#include "tests/tvsim/TvsimFixture.h"

namespace sim::tvsim {

struct Area {
  int x = 0, y = 0, width = 0, height = 0;
};

/// The whole television: the engine, its libraries, X server, window manager and compositor, 1920 x 1080.
class GivenTelevision : public TvsimFixture {
 protected:
  static constexpr Area kScreen{0, 0, 1920, 1080};

  GivenTelevision() : TvsimFixture(WithEngine()) {}

  Outcome Play(const std::string& scenario) { return Run({"exec", FileWith("scenario", scenario)}); }

  /// A photograph of `width` x `height` upright pixels, stored in one of the eight EXIF orientations.
  std::string Photograph(int width, int height, int orientation = 1);
  /// One colour, as PNG.
  std::string Plain(const std::string& colour, int width, int height);
  /// The screen black but for `area`, which is white; as PNG.
  std::string WhiteOn(Area area);
  std::string BlackScreen() { return WhiteOn({}); }

  /// Runs ImageMagick's convert.
  void Convert(const std::vector<std::string>& arguments);

  /// Where a picture of that size stands in `window`: as large as fits, centred.
  static Area FitInto(Area window, int width, int height);

  /// Expects `screen` to show `picture`, scaled as ImageMagick does, in `placed`, and black around it.
  void ExpectShown(const Picture& screen, const std::string& picture, Area placed);
};

/// Writes the EXIF orientation, 1 to 8, into a JPEG file that has none.
void SetOrientation(const std::string& jpeg, int orientation);

/// That part of a picture; it lies inside.
Picture Crop(const Picture& picture, Area area);

/// How many bytes of the picture outside `area` are not 0.
size_t LitOutside(const Picture& picture, Area area);

}  // namespace sim::tvsim

#endif
