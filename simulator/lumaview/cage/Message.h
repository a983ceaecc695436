// SPDX-License-Identifier: Apache-2.0
/// What the engine, the nursery and the processes that decode say to each other: one fixed record a packet.
#ifndef SIMULATOR_LUMAVIEW_CAGE_MESSAGE_H
#define SIMULATOR_LUMAVIEW_CAGE_MESSAGE_H

#include <array>
#include <cstdint>
#include <string>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"
#include "simulator/lumaview/image/Render.h"

namespace sim::lumaview::cage {

enum class Verb : uint32_t {
  // To the nursery.
  kSpawn = 1,  ///< text: the modules that the child shall have; descriptor: its end of its channel
  // To a child.
  kOpen,     ///< descriptor: the picture's file; bytes: its size
  kRender,   ///< descriptor: memory for the frame; numbers: the view and the size
  kPreview,  ///< likewise
  kScratch,  ///< descriptor: the file that was asked for, or none; code and text: why
  // From a child.
  kHeader,       ///< code and text: the error; else numbers: the info, and which bars hold
  kDrawn,        ///< code and text: the error; else numbers: the milliseconds
  kWantScratch,  ///< bytes: how much
  // From the nursery, behind the child's last word.
  kEnded,  ///< numbers: how it ended, as wait() tells it
};

struct Message {
  Verb verb{};
  int32_t code = 0;
  uint64_t bytes = 0;
  std::array<int32_t, 10> numbers{};
  std::array<char, 256> text{};

  /// Cut to what fits.
  void SetText(const std::string& value);
  /// Also of a text without an end.
  std::string GetText() const;

  void SetStatus(const Status& status);
  Status GetStatus() const;

  void SetView(const View& view, Size size);
  View GetView() const;
  Size GetSize() const;

  /// `bars`: see Bars.h.
  void SetInfo(const PictureInfo& info, uint32_t bars);
  /// Believes nothing: kDamaged or kOverLimit when a picture cannot be like that.
  Result<PictureInfo> GetInfo(const Limits& limits) const;
  uint32_t GetBars() const { return static_cast<uint32_t>(numbers[6]); }
};

/// Two ends; packets keep their borders. Errors: kOutOfMemory.
struct Channel {
  UniqueFd ours;
  UniqueFd theirs;
};
Result<Channel> CreateChannel();

/// Sends without waiting, with a copy of `attached` unless that is -1. False when the other end is gone or does not
/// read.
bool Send(int channel, const Message& message, int attached = -1);

enum class Received { kMessage, kClosed, kGarbage };
/// Waits for a packet. Descriptors that come with it are taken by `attached`, or dropped where that is null.
Received Receive(int channel, Message& message, UniqueFd* attached = nullptr);

}  // namespace sim::lumaview::cage

#endif
