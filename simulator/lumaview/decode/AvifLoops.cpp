// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/AvifLoops.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>

namespace sim::lumaview {
namespace {

constexpr int kForEver = 0;

uint64_t BigEndian64(const uint8_t* bytes) {
  return uint64_t{BigEndian32(bytes)} << 32 | BigEndian32(bytes + 4);
}

/// The content of the first box of type `type` in `boxes`; empty when there is none, or a damaged box before it.
Bytes FindBox(Bytes boxes, std::string_view type) {
  constexpr size_t kHead = 8;
  constexpr size_t kLongHead = 16;
  while (boxes.size() >= kHead) {
    const uint32_t written = BigEndian32(boxes.data());
    const bool is_long = written == 1 && boxes.size() >= kLongHead;
    const size_t head = is_long ? kLongHead : kHead;
    const uint64_t size = is_long ? BigEndian64(&boxes[kHead]) : written == 0 ? boxes.size() : written;
    if (size < head || size > boxes.size()) {
      return {};
    }
    if (HasText(boxes, 4, type)) {
      return boxes.subspan(head, static_cast<size_t>(size) - head);
    }
    boxes = boxes.subspan(static_cast<size_t>(size));
  }
  return {};
}

/// A duration in a box whose version says whether its times have 4 or 8 bytes; nothing when the box is too short, or
/// when it says that the duration has no end.
std::optional<uint64_t> ReadDuration(Bytes box, size_t at, size_t at_long) {
  const bool is_long = !box.empty() && box[0] == 1;
  if (box.size() < (is_long ? at_long + 8 : at + 4)) {
    return std::nullopt;
  }
  const uint64_t duration = is_long ? BigEndian64(&box[at_long]) : BigEndian32(&box[at]);
  const uint64_t endless = is_long ? std::numeric_limits<uint64_t>::max() : std::numeric_limits<uint32_t>::max();
  return duration == endless ? std::nullopt : std::optional(duration);
}

}  // namespace

int ReadAvifLoops(Bytes file) {
  const Bytes track = FindBox(FindBox(file, "moov"), "trak");
  const Bytes edits = FindBox(FindBox(track, "edts"), "elst");
  // Behind version and flags stands the number of edits.
  constexpr size_t kFirstEdit = 8;
  if (edits.size() < kFirstEdit || BigEndian32(&edits[4]) != 1) {
    return kForEver;
  }
  if ((edits[3] & 1) == 0) {
    return 1;
  }
  // The track lasts as long as all its repetitions.
  const auto whole = ReadDuration(FindBox(track, "tkhd"), 20, 28);
  const auto once = ReadDuration(edits, kFirstEdit, kFirstEdit);
  if (!whole || !once || *once == 0) {
    return kForEver;
  }
  const uint64_t loops = *whole / *once + (*whole % *once != 0 ? 1 : 0);
  return static_cast<int>(std::clamp<uint64_t>(loops, 1, std::numeric_limits<int>::max()));
}

}  // namespace sim::lumaview
