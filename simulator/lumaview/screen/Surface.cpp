// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/screen/Surface.h"

#include <xcb/shm.h>

#include <cstdlib>
#include <string>

#include "simulator/base/Log.h"
#include "simulator/lumaview/decode/Decoder.h"
#include "simulator/lumaview/screen/Reply.h"

namespace sim::lumaview {
namespace {

Status CheckConnection(xcb_connection_t* connection) {
  if (xcb_connection_has_error(connection) == 0) {
    return Ok();
  }
  const char* display = std::getenv("DISPLAY");
  return Error{kDisplayFailed,
               std::string("no connection to the X server ") + (display != nullptr ? display : "(DISPLAY is not set)")};
}

}  // namespace

Result<std::unique_ptr<Surface>> Surface::Open(xcb_window_t parent) {
  Connection connection(xcb_connect(nullptr, nullptr));
  SIM_TRY(CheckConnection(connection.get()));
  std::unique_ptr<Surface> surface(new Surface(std::move(connection), parent));
  SIM_TRY(surface->Prepare());
  return surface;
}

Surface::~Surface() {
  m_painter.reset();
  // The server destroys the child with the connection; asking for it says so to whoever reads a protocol trace.
  if (m_child != XCB_NONE) {
    xcb_destroy_window(m_connection.get(), m_child);
    xcb_flush(m_connection.get());
  }
}

Status Surface::Prepare() {
  xcb_connection_t* connection = m_connection.get();
  xcb_prefetch_extension_data(connection, &xcb_shm_id);
  // Selected before the size is asked for, so that no change is missed.
  const uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  const auto selected = xcb_change_window_attributes_checked(connection, m_parent, XCB_CW_EVENT_MASK, &events);
  const auto asked_geometry = xcb_get_geometry(connection, m_parent);
  const auto asked_attributes = xcb_get_window_attributes(connection, m_parent);
  const auto geometry = AwaitReply<xcb_get_geometry_reply_t>(connection, asked_geometry, "looking at the window");
  const auto attributes =
      AwaitReply<xcb_get_window_attributes_reply_t>(connection, asked_attributes, "looking at the window");
  SIM_TRY(AwaitDone(connection, selected, "following the window"));
  if (!geometry || !attributes) {
    return geometry ? attributes.error() : geometry.error();
  }
  m_size = {(*geometry)->width, (*geometry)->height};
  return MakeChild((*geometry)->depth, (*attributes)->visual);
}

Status Surface::MakeChild(uint8_t depth, xcb_visualid_t visual) {
  xcb_connection_t* connection = m_connection.get();
  const auto format = PixelFormat::Find(*xcb_get_setup(connection), visual, depth);
  if (!format) {
    return format.error();
  }
  // No background and kept contents: between a change of size and the next frame nothing black appears.
  const uint32_t attributes[] = {XCB_BACK_PIXMAP_NONE, XCB_GRAVITY_NORTH_WEST,
                                 XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_EXPOSURE};
  m_child = xcb_generate_id(connection);
  SIM_TRY(AwaitDone(connection,
                    xcb_create_window_checked(connection, XCB_COPY_FROM_PARENT, m_child, m_parent, 0, 0,
                                              static_cast<uint16_t>(m_size.width), static_cast<uint16_t>(m_size.height),
                                              0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                                              XCB_CW_BACK_PIXMAP | XCB_CW_BIT_GRAVITY | XCB_CW_EVENT_MASK, attributes),
                    "making the window for pictures"));
  const xcb_gcontext_t gc = xcb_generate_id(connection);
  const uint32_t no_exposures = 0;
  xcb_create_gc(connection, gc, m_child, XCB_GC_GRAPHICS_EXPOSURES, &no_exposures);
  auto painter = CreatePainter({connection, m_child, gc, depth, *format});
  if (!painter) {
    return painter.error();
  }
  m_painter = std::move(*painter);
  return Ok();
}

Surface::News Surface::HandleEvents() {
  News news;
  const uint64_t completed = GetCompleted();
  while (const MallocPtr<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get())}) {
    HandleEvent(*event, news);
    news.any = true;
  }
  m_painter->Poll();
  news.any |= GetCompleted() != completed;
  news.gone |= xcb_connection_has_error(m_connection.get()) != 0;
  return news;
}

void Surface::HandleEvent(const xcb_generic_event_t& event, News& news) {
  constexpr uint8_t kSentByOtherClient = 0x80;
  switch (event.response_type & ~kSentByOtherClient) {
    case 0:
      HandleError(reinterpret_cast<const xcb_generic_error_t&>(event), news);
      break;
    case XCB_CONFIGURE_NOTIFY: {
      const auto& configure = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
      const Size size{configure.width, configure.height};
      if (configure.window == m_parent && size != m_size) {
        m_size = size;
        const uint32_t sides[] = {configure.width, configure.height};
        xcb_configure_window(m_connection.get(), m_child, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, sides);
        news.resized = true;
      }
      break;
    }
    case XCB_EXPOSE:
      news.exposed |= reinterpret_cast<const xcb_expose_event_t&>(event).count == 0;
      break;
    case XCB_DESTROY_NOTIFY:
      news.gone = true;
      break;
    default:
      m_painter->HandleEvent(event);
  }
}

void Surface::HandleError(const xcb_generic_error_t& error, News& news) {
  Log(LogLevel::kWarning, "lumaview", "the X server refused: " + DescribeError(error));
  // Between the parent's death and the event that tells it, requests fail; so does everything for a window that the
  // owner took out of the tree.
  news.gone |= error.resource_id == m_child || error.resource_id == m_parent;
}

Result<uint64_t> Surface::Put(const FramePtr& frame) {
  if (!m_mapped) {
    xcb_map_window(m_connection.get(), m_child);
    m_mapped = true;
  }
  SIM_TRY(m_painter->Put(frame, m_puts + 1));
  return ++m_puts;
}

void Surface::Flush() {
  m_painter->Sweep();
  xcb_flush(m_connection.get());
}

}  // namespace sim::lumaview
