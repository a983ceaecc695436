// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/screen/ShmQueue.h"

#include <string>
#include <utility>

#include "simulator/lumaview/decode/Decoder.h"
#include "simulator/lumaview/screen/Reply.h"

namespace sim::lumaview {

Status RequireShm(xcb_connection_t* connection, unsigned int major, unsigned int minor) {
  const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_shm_id);
  if (extension == nullptr || extension->present == 0) {
    return Error{kDisplayFailed, "the X server has no shared memory"};
  }
  const auto version = AwaitReply<xcb_shm_query_version_reply_t>(connection, xcb_shm_query_version(connection),
                                                                 "asking for the version of shared memory");
  if (!version) {
    return version.error();
  }
  if (std::pair<unsigned int, unsigned int>((*version)->major_version, (*version)->minor_version) <
      std::pair(major, minor)) {
    return Error{kDisplayFailed, "the X server's shared memory is older than version " + std::to_string(major) + "." +
                                     std::to_string(minor)};
  }
  return Ok();
}

ShmQueue::ShmQueue(const PaintTarget& target) : m_target(target) {
  if (const auto* extension = xcb_get_extension_data(target.connection, &xcb_shm_id); extension != nullptr) {
    m_completion_event = static_cast<uint8_t>(extension->first_event + XCB_SHM_COMPLETION);
  }
}

void ShmQueue::Put(xcb_shm_seg_t segment, Size size, std::shared_ptr<const void> held, uint64_t put) {
  const auto width = static_cast<uint16_t>(size.width);
  const auto height = static_cast<uint16_t>(size.height);
  constexpr uint8_t kTellCompletion = 1;
  xcb_shm_put_image(m_target.connection, m_target.window, m_target.gc, width, height, 0, 0, width, height, 0, 0,
                    m_target.depth, XCB_IMAGE_FORMAT_Z_PIXMAP, kTellCompletion, segment, 0);
  m_in_flight.push_back({segment, std::move(held), put});
}

void ShmQueue::HandleEvent(const xcb_generic_event_t& event) {
  constexpr uint8_t kSentByOtherClient = 0x80;
  if ((event.response_type & ~kSentByOtherClient) != m_completion_event) {
    return;
  }
  const auto& completion = reinterpret_cast<const xcb_shm_completion_event_t&>(event);
  // A put that the server refused has no completion; what was sent before this one is over all the same.
  while (!m_in_flight.empty()) {
    const InFlight ended = std::move(m_in_flight.front());
    m_in_flight.pop_front();
    m_completed = ended.put;
    if (ended.segment == completion.shmseg) {
      return;
    }
  }
}

}  // namespace sim::lumaview
