// SPDX-License-Identifier: Apache-2.0
/// usage: effects_frame WIDTH HEIGHT EFFECT PROGRESS <PICTURES >FRAME
///        effects_frame --list
/// Draws one frame of one effect. Standard input: two pictures one after the other, four bytes a pixel in the order
/// blue, green, red, alpha; standard output: the frame, likewise. `--list` prints the names of all effects.
/// Exit status 1 when the input is too short or the output cannot be written, 2 for wrong use.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "simulator/lumaview/effect/Effect.h"

namespace {

using sim::lumaview::ConstImageView;
using sim::lumaview::Size;
using Pixels = std::vector<uint32_t>;

constexpr int kLongestSide = 16384;

bool ReadPicture(Pixels& pixels) {
  return std::fread(pixels.data(), sizeof pixels[0], pixels.size(), stdin) == pixels.size();
}

int DrawFrame(Size size, int effect, float progress) {
  const auto count = static_cast<size_t>(size.width) * static_cast<size_t>(size.height);
  Pixels from(count), to(count), frame(count);
  if (!ReadPicture(from) || !ReadPicture(to)) {
    std::fprintf(stderr, "effects_frame: standard input ends before two pictures of %d x %d\n", size.width,
                 size.height);
    return 1;
  }
  const auto view = [&](Pixels& pixels) {
    return sim::lumaview::ImageView{pixels.data(), size.width, size.height, size.width};
  };
  sim::lumaview::DrawEffect(effect, AsConst(view(from)), AsConst(view(to)), progress, view(frame), 0, size.height);
  const bool written = std::fwrite(frame.data(), sizeof frame[0], count, stdout) == count && std::fflush(stdout) == 0;
  return written ? 0 : 1;
}

bool IsSide(int side) {
  return side >= 1 && side <= kLongestSide;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
    std::fputs(std::string(sim::lumaview::EffectList()).c_str(), stdout);
    return 0;
  }
  const Size size = argc == 5 ? Size{std::atoi(argv[1]), std::atoi(argv[2])} : Size{};
  const int effect = argc == 5 ? sim::lumaview::FindEffect(argv[3]) : -1;
  if (effect < 0 || !IsSide(size.width) || !IsSide(size.height)) {
    std::fprintf(stderr,
                 "usage: effects_frame WIDTH HEIGHT EFFECT PROGRESS <PICTURES >FRAME\n"
                 "       effects_frame --list\n");
    return 2;
  }
  return DrawFrame(size, effect, static_cast<float>(std::atof(argv[4])));
}
