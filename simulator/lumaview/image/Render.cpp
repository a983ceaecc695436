// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/image/Render.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <optional>
#include <vector>

#include "simulator/lumaview/image/Colour.h"
#include "simulator/lumaview/image/Placer.h"
#include "simulator/lumaview/image/RowPipe.h"
#include "simulator/lumaview/image/RowScaler.h"
#include "simulator/lumaview/image/Turn.h"

namespace sim::lumaview {
namespace {

constexpr uint32_t kBlack = 0xFF000000;

/// The stored rectangle that `turn` takes to `upright`, which lies in a picture that is `size` after the turn.
Rect ToStored(Turn turn, Size size, const Rect& upright) {
  const Rect mirrored{turn.mirror_x ? size.width - upright.x - upright.width : upright.x,
                      turn.mirror_y ? size.height - upright.y - upright.height : upright.y, upright.width,
                      upright.height};
  return turn.transpose ? Rect{mirrored.y, mirrored.x, mirrored.height, mirrored.width} : mirrored;
}

/// The part of the upright picture that is shown: all of it, or the left view of a packed pair.
Rect ShownPart(Size upright, bool is_stereo, StereoMode mode) {
  Rect part{0, 0, upright.width, upright.height};
  if (!is_stereo && mode == StereoMode::kSideBySide) {
    part.width = (part.width + 1) / 2;
  } else if (!is_stereo && mode == StereoMode::kTopAndBottom) {
    part.height = (part.height + 1) / 2;
  }
  return part;
}

Rect Intersect(const Rect& rect, Size window) {
  const int left = std::max(rect.x, 0);
  const int top = std::max(rect.y, 0);
  const int right = std::min(rect.x + rect.width, window.width);
  const int bottom = std::min(rect.y + rect.height, window.height);
  return {left, top, std::max(right - left, 0), std::max(bottom - top, 0)};
}

void FillOutside(ImageView target, const Rect& covered) {
  for (int y = 0; y < target.height; ++y) {
    uint32_t* row = target.Row(y);
    if (y < covered.y || y >= covered.y + covered.height) {
      std::fill(row, row + target.width, kBlack);
    } else {
      std::fill(row, row + covered.x, kBlack);
      std::fill(row + covered.x + covered.width, row + target.width, kBlack);
    }
  }
}

ImageView Part(ImageView image, const Rect& rect) {
  return {image.Row(rect.y) + rect.x, rect.width, rect.height, image.stride};
}

/// Where everything lies, worked out before the first row comes.
struct Layout {
  Layout(const PictureInfo& info, const View& view, Size window)
      : stored_to_upright(Turn::FromOrientation(info.orientation)),
        turn(stored_to_upright.Rotated(view.rotation)),
        stereo(view.stereo),
        is_stereo(info.stereo),
        placed(PlaceInWindow(UprightSize(info), view, window)),
        covered(Intersect(placed, window)) {}

  Size PlacedStored() const { return turn.Apply({placed.width, placed.height}); }

  /// The rows and columns of the placed picture that are inside the window, in stored orientation.
  Rect VisibleStored() const {
    return ToStored(turn, {placed.width, placed.height},
                    {covered.x - placed.x, covered.y - placed.y, covered.width, covered.height});
  }

  /// What of a frame of `size` is shown, in stored orientation.
  Rect SourcePart(Size size) const {
    const Size upright = stored_to_upright.Apply(size);
    return ToStored(stored_to_upright, upright, ShownPart(upright, is_stereo, stereo));
  }

  /// What the decoder is asked for: the placed size, or more where only a part of the frame is stretched over it.
  Size Ideal(Size stored) const {
    const Rect part = SourcePart(stored);
    const Size size = PlacedStored();
    const auto stretch = [](int length, int whole, int shown) {
      return static_cast<int>(std::min<int64_t>(int64_t{length} * whole / shown, kLongestPlacedSide));
    };
    return {stretch(size.width, stored.width, part.width), stretch(size.height, stored.height, part.height)};
  }

  const Turn stored_to_upright;
  const Turn turn;
  const StereoMode stereo;
  const bool is_stereo;
  const Rect placed;   ///< in the window, perhaps beyond it
  const Rect covered;  ///< its part inside the window
};

/// Takes a frame's rows through scaling, colours and placing into the window's pixels.
class FrameSink : public RowSink {
 public:
  FrameSink(const Layout& layout, ImageView target)
      : m_layout(layout), m_placer(Part(target, layout.covered), layout.turn) {}

  Status Begin(const FrameFormat& format) override {
    m_format = format;
    const Rect part = m_layout.SourcePart(format.size);
    const Size placed = m_layout.PlacedStored();
    const Rect visible = m_layout.VisibleStored();
    m_scaler.emplace(BytesPerPixel(format.layout),
                     Axis::Range{part.x, part.width, placed.width, visible.x, visible.x + visible.width},
                     Axis::Range{part.y, part.height, placed.height, visible.y, visible.y + visible.height});
    m_transform = CreateColourTransform(format.icc, format.layout);
    if (format.layout == PixelLayout::kBgra || m_scaler->ReadsBehind()) {
      m_row.resize((static_cast<size_t>(format.size.width) + 1) * static_cast<size_t>(BytesPerPixel(format.layout)));
    }
    return Ok();
  }

  Status Row(int y, const uint8_t* row) override {
    m_scaler->Push(y, Prepare(row), [this](int target_row, const uint8_t* bytes) {
      FinishRow(bytes, m_format.layout, m_transform.get(), m_placer.RowBuffer(target_row),
                m_placer.GetStoredSize().width);
      m_placer.Place(target_row);
    });
    return Ok();
  }

  bool IsComplete() const { return m_scaler && m_scaler->IsComplete(); }

 private:
  const uint8_t* Prepare(const uint8_t* row) {
    if (m_format.layout == PixelLayout::kBgra) {
      PremultiplyRow(row, m_row.data(), m_format.size.width);
      return m_row.data();
    }
    if (m_scaler->ReadsBehind()) {
      std::memcpy(m_row.data(), row, m_row.size() - static_cast<size_t>(BytesPerPixel(m_format.layout)));
      return m_row.data();
    }
    return row;
  }

  const Layout& m_layout;
  Placer m_placer;
  FrameFormat m_format;
  std::optional<RowScaler> m_scaler;
  std::unique_ptr<ColourTransform> m_transform;
  std::vector<uint8_t> m_row;
};

using DecodeFunction = Status (Decoder::*)(Size, RowSink&);

Status RenderView(Decoder& decoder, DecodeFunction decode, const View& view, ImageView target) {
  const Layout layout(decoder.GetInfo(), view, target.GetSize());
  FrameSink sink(layout, target);
  RowPipe pipe(sink);
  SIM_TRY((decoder.*decode)(layout.Ideal(decoder.GetInfo().stored), pipe));
  SIM_TRY(pipe.Finish());
  if (!sink.IsComplete()) {
    return Error{kDamaged, "the picture ends before its last row"};
  }
  // Last, as it touches every page of the target: by now they are there.
  FillOutside(target, layout.covered);
  return Ok();
}

/// Red from the left view, green and blue from the right one.
Status AddRightView(Decoder& decoder, const View& view, ImageView target) {
  std::vector<uint32_t> pixels(static_cast<size_t>(target.width) * static_cast<size_t>(target.height));
  const ImageView right{pixels.data(), target.width, target.height, target.width};
  SIM_TRY(RenderView(decoder, &Decoder::DecodeRightView, view, right));
  for (int y = 0; y < target.height; ++y) {
    for (int x = 0; x < target.width; ++x) {
      uint32_t& pixel = target.Row(y)[x];
      pixel = (pixel & 0xFFFF0000) | (right.Row(y)[x] & 0x0000FFFF);
    }
  }
  return Ok();
}

}  // namespace

Status RenderFrame(Decoder& decoder, const View& view, ImageView target) {
  assert(target.width >= 1 && target.height >= 1);
  SIM_TRY(RenderView(decoder, &Decoder::Decode, view, target));
  if (view.stereo == StereoMode::kAnaglyph && decoder.GetInfo().stereo) {
    return AddRightView(decoder, view, target);
  }
  return Ok();
}

}  // namespace sim::lumaview
