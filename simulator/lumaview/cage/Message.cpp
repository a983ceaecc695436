// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/cage/Message.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <type_traits>

namespace sim::lumaview::cage {

static_assert(std::is_trivially_copyable_v<Message>, "it is sent as it lies in memory");

void Message::SetText(const std::string& value) {
  text = {};
  std::copy_n(value.begin(), std::min(value.size(), text.size() - 1), text.begin());
}

std::string Message::GetText() const {
  return {text.begin(), std::find(text.begin(), text.end(), '\0')};
}

void Message::SetStatus(const Status& status) {
  code = status ? 0 : status.error().code;
  SetText(status ? "" : status.error().reason);
}

Status Message::GetStatus() const {
  if (code == 0) {
    return Ok();
  }
  // The library's own numbers and no others; nobody but this process cancels.
  const bool known = code <= kBadArgument && code >= kOverLimit;
  return Error{known ? code : kDamaged, GetText()};
}

void Message::SetView(const View& view, Size size) {
  numbers = {view.zoom,         view.pan_x, view.pan_y, view.rotation, static_cast<int>(view.stereo),
             view.fill ? 1 : 0, size.width, size.height};
}

View Message::GetView() const {
  View view;
  view.zoom = numbers[0];
  view.pan_x = numbers[1];
  view.pan_y = numbers[2];
  view.rotation = numbers[3];
  view.stereo = static_cast<StereoMode>(numbers[4]);
  view.fill = numbers[5] != 0;
  return view;
}

Size Message::GetSize() const {
  return {numbers[6], numbers[7]};
}

void Message::SetInfo(const PictureInfo& info, uint32_t bars) {
  numbers = {info.type,   info.stored.width, info.stored.height,         info.orientation,
             info.frames, info.loops,        static_cast<int32_t>(bars), info.stereo ? 1 : 0};
}

Result<PictureInfo> Message::GetInfo(const Limits& limits) const {
  PictureInfo info;
  info.type = static_cast<picture_type_e>(numbers[0]);
  info.stored = {std::max(numbers[1], 0), std::max(numbers[2], 0)};
  info.orientation = static_cast<Orientation>(numbers[3]);
  info.frames = numbers[4];
  info.loops = numbers[5];
  info.stereo = numbers[7] != 0;
  SIM_TRY(CheckSize(static_cast<uint64_t>(info.stored.width), static_cast<uint64_t>(info.stored.height), limits));
  const bool possible = numbers[0] >= LUMAVIEW_TYPE_JPEG && numbers[0] <= LUMAVIEW_TYPE_PNM && numbers[3] >= 1 &&
                        numbers[3] <= 8 && info.frames >= 1 && static_cast<uint64_t>(info.frames) <= limits.frames &&
                        info.loops >= 0;
  return possible ? Result<PictureInfo>(info) : Error{kDamaged, "the decoder says what no picture can be like"};
}

Result<Channel> CreateChannel() {
  int ends[2] = {-1, -1};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    return Error{kOutOfMemory, std::string("no channel to a decoder: ") + std::strerror(errno)};
  }
  return Channel{UniqueFd(ends[0]), UniqueFd(ends[1])};
}

bool Send(int channel, const Message& message, int attached) {
  iovec part{const_cast<Message*>(&message), sizeof message};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
  msghdr packet{};
  packet.msg_iov = &part;
  packet.msg_iovlen = 1;
  if (attached >= 0) {
    packet.msg_control = control.data();
    packet.msg_controllen = control.size();
    cmsghdr* header = CMSG_FIRSTHDR(&packet);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof attached);
    std::memcpy(CMSG_DATA(header), &attached, sizeof attached);
  }
  ssize_t sent = -1;
  do {
    sent = sendmsg(channel, &packet, MSG_NOSIGNAL | MSG_DONTWAIT);
  } while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(sizeof message);
}

Received Receive(int channel, Message& message, UniqueFd* attached) {
  iovec part{&message, sizeof message};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
  msghdr packet{};
  packet.msg_iov = &part;
  packet.msg_iovlen = 1;
  if (attached != nullptr) {
    packet.msg_control = control.data();
    packet.msg_controllen = control.size();
  }
  ssize_t got = -1;
  do {
    got = recvmsg(channel, &packet, MSG_CMSG_CLOEXEC);
  } while (got < 0 && errno == EINTR);
  if (got <= 0) {
    return Received::kClosed;
  }
  const cmsghdr* header = CMSG_FIRSTHDR(&packet);
  if (header != nullptr && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS) {
    int fd = -1;
    std::memcpy(&fd, CMSG_DATA(header), sizeof fd);
    attached->Reset(fd);
  }
  const bool whole = got == static_cast<ssize_t>(sizeof message) && (packet.msg_flags & MSG_TRUNC) == 0;
  return whole ? Received::kMessage : Received::kGarbage;
}

}  // namespace sim::lumaview::cage
