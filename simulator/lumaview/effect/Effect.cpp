// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/effect/Effect.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <string>

#include "simulator/lumaview/effect/Frame.h"

namespace sim::lumaview {
namespace {

struct Effect {
  std::string_view name;
  EffectFunction draw;
};

constexpr std::array<Effect, kEffectCount> kEffects = {{
    {"fade", DrawFade},
    {"fadeblack", DrawFadeBlack},
    {"fadewhite", DrawFadeWhite},
    {"dissolve", DrawDissolve},
    {"pixelize", DrawPixelize},
    {"wipeleft", DrawWipeLeft},
    {"wiperight", DrawWipeRight},
    {"wipeup", DrawWipeUp},
    {"wipedown", DrawWipeDown},
    {"slideleft", DrawSlideLeft},
    {"slideright", DrawSlideRight},
    {"slideup", DrawSlideUp},
    {"slidedown", DrawSlideDown},
    {"smoothleft", DrawSmoothLeft},
    {"smoothright", DrawSmoothRight},
    {"circleopen", DrawCircleOpen},
    {"circleclose", DrawCircleClose},
    {"radial", DrawRadial},
    {"diagtl", DrawDiagTopLeft},
    {"diagbr", DrawDiagBottomRight},
    {"squeezeh", DrawSqueezeH},
    {"squeezev", DrawSqueezeV},
    {"zoomin", DrawZoomIn},
    {"blur", DrawBlur},
}};

/// What the list may take in the caller's buffer of 400 bytes, whose first 254 an application is shown.
constexpr size_t kLongestList = 254;

constexpr size_t ListLength() {
  size_t length = 0;
  for (const Effect& effect : kEffects) {
    length += effect.name.size() + 1;
  }
  return length;
}
static_assert(ListLength() <= kLongestList);

std::string JoinNames() {
  std::string list;
  for (const Effect& effect : kEffects) {
    list.append(effect.name).append("\n");
  }
  return list;
}

const Effect& GetEffect(int number) {
  assert(number >= 0 && number < kEffectCount);
  return kEffects[static_cast<size_t>(number)];
}

}  // namespace

std::string_view EffectName(int number) {
  return GetEffect(number).name;
}

int FindEffect(std::string_view name) {
  const auto found =
      std::find_if(kEffects.begin(), kEffects.end(), [name](const Effect& effect) { return effect.name == name; });
  return found == kEffects.end() ? -1 : static_cast<int>(found - kEffects.begin());
}

std::string_view EffectList() {
  static const std::string list = JoinNames();
  return list;
}

void DrawEffectWith(const Kernels& kernels, int number, ConstImageView from, ConstImageView to, float progress,
                    ImageView target, int first_row, int last_row) {
  assert(from.GetSize() == target.GetSize() && to.GetSize() == target.GetSize() && target.width > 0);
  assert(0 <= first_row && last_row <= target.height);
  const Frame frame{from, to, target, progress, first_row, last_row, kernels};
  if (progress > 0.0F && progress < 1.0F) {
    GetEffect(number).draw(frame);
  } else {
    for (int y = first_row; y < last_row; ++y) {
      (progress >= 1.0F ? CopyTo : CopyFrom)(kernels, frame.GetRow(y));
    }
  }
  FinishStores();
}

void DrawEffect(int number, ConstImageView from, ConstImageView to, float progress, ImageView target, int first_row,
                int last_row) {
  DrawEffectWith(BestKernels(), number, from, to, progress, target, first_row, last_row);
}

}  // namespace sim::lumaview
