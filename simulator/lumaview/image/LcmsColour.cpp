// SPDX-License-Identifier: Apache-2.0
/// The colour module: embedded profiles by Little CMS.
#include <lcms2.h>

#include <vector>

#include "simulator/base/CHandle.h"
#include "simulator/lumaview/image/Colour.h"

namespace sim::lumaview {
namespace {

/// Little CMS calls its handles void pointers.
struct ContextDeleter {
  void operator()(void* context) const { cmsDeleteContext(static_cast<cmsContext>(context)); }
};
using Context = std::unique_ptr<void, ContextDeleter>;
struct ProfileDeleter {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, ProfileDeleter>;
struct TransformDeleter {
  void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Transform = std::unique_ptr<void, TransformDeleter>;

/// What the transform reads of a row.
enum class Input { kColour, kGrayRow, kGrayOfColour, kColourOfGray, kInk };

class LcmsTransform : public ColourTransform {
 public:
  LcmsTransform(Context context, Transform transform, Input input)
      : m_context(std::move(context)), m_transform(std::move(transform)), m_input(input) {}

  void Convert(const uint8_t* in, uint32_t* out, int count) override {
    const auto pixels = static_cast<cmsUInt32Number>(count);
    cmsDoTransform(m_transform.get(), Prepare(in, count), out, pixels);
    for (int i = 0; i < count; ++i) {
      out[i] |= 0xFF000000;
    }
  }

 private:
  /// Rows of one kind under a profile of the other kind are repacked first.
  const uint8_t* Prepare(const uint8_t* in, int count) {
    if (m_input == Input::kGrayOfColour) {
      m_repacked.resize(static_cast<size_t>(count));
      for (int i = 0; i < count; ++i) {
        m_repacked[static_cast<size_t>(i)] = in[4 * i + 1];
      }
      return m_repacked.data();
    }
    if (m_input == Input::kColourOfGray) {
      m_repacked.resize(static_cast<size_t>(count) * 4);
      for (int i = 0; i < count * 4; ++i) {
        m_repacked[static_cast<size_t>(i)] = in[i / 4];
      }
      return m_repacked.data();
    }
    return in;
  }

  const Context m_context;
  const Transform m_transform;
  const Input m_input;
  std::vector<uint8_t> m_repacked;
};

/// How rows of `layout` are read under a profile of that colour space; false = they do not fit.
bool FindInput(cmsColorSpaceSignature space, PixelLayout layout, Input& input) {
  switch (space) {
    case cmsSigRgbData:
      input = layout == PixelLayout::kGray ? Input::kColourOfGray : Input::kColour;
      return layout != PixelLayout::kCmyk;
    case cmsSigGrayData:
      input = layout == PixelLayout::kGray ? Input::kGrayRow : Input::kGrayOfColour;
      return layout != PixelLayout::kCmyk;
    case cmsSigCmykData:
      input = Input::kInk;
      return layout == PixelLayout::kCmyk;
    default:
      return false;
  }
}

cmsUInt32Number InputFormat(Input input) {
  switch (input) {
    case Input::kGrayRow:
    case Input::kGrayOfColour:
      return TYPE_GRAY_8;
    case Input::kInk:
      return TYPE_CMYK_8;
    case Input::kColour:
    case Input::kColourOfGray:
      break;
  }
  return TYPE_BGRA_8;
}

std::unique_ptr<ColourTransform> Create(std::span<const uint8_t> icc, PixelLayout layout) {
  Context context(cmsCreateContext(nullptr, nullptr));
  const auto id = static_cast<cmsContext>(context.get());
  const Profile from(cmsOpenProfileFromMemTHR(id, icc.data(), static_cast<cmsUInt32Number>(icc.size())));
  const Profile to(cmsCreate_sRGBProfileTHR(id));
  Input input{};
  if (!from || !to || !FindInput(cmsGetColorSpace(from.get()), layout, input)) {
    return nullptr;
  }
  Transform transform(cmsCreateTransformTHR(id, from.get(), InputFormat(input), to.get(), TYPE_BGRA_8,
                                            INTENT_PERCEPTUAL, cmsFLAGS_BLACKPOINTCOMPENSATION));
  if (!transform) {
    return nullptr;
  }
  return std::make_unique<LcmsTransform>(std::move(context), std::move(transform), input);
}

}  // namespace
}  // namespace sim::lumaview

extern "C" __attribute__((visibility("default"))) const sim::lumaview::ColourTransformFactory lumaview_module_colour;
const sim::lumaview::ColourTransformFactory lumaview_module_colour = sim::lumaview::Create;
