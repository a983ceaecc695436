// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/screen/Screen.h"

#include <poll.h>
#include <sys/socket.h>
#include <xcb/composite.h>
#include <xcb/xcbext.h>

#include <cerrno>
#include <cstdlib>
#include <thread>

namespace sim::tvsim {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kBetweenLooks(5);
constexpr std::chrono::milliseconds kOneWindow(300);
constexpr std::chrono::milliseconds kCalm(60);  // longer than a compositor takes for a frame

template <typename Condition>
bool Await(std::chrono::milliseconds patience, Condition condition) {
  const auto deadline = Clock::now() + patience;
  while (!condition()) {
    if (Clock::now() >= deadline) {
      return false;
    }
    std::this_thread::sleep_for(kBetweenLooks);
  }
  return true;
}

}  // namespace

Result<std::unique_ptr<Screen>> Screen::Connect() {
  int number = 0;
  xcb_connection_t* connection = xcb_connect(kDisplay, &number);
  if (xcb_connection_has_error(connection) != 0) {
    xcb_disconnect(connection);
    return Error{ENOTCONN, std::string("no X server answers on ") + kDisplay};
  }
  // The engine's window always stands on the first screen.
  xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
  return std::unique_ptr<Screen>(new Screen(connection, screen));
}

Status Screen::Reconnect() {
  auto screen = Connect();
  if (!screen) {
    return screen.error();
  }
  std::swap(m_connection, (*screen)->m_connection);
  std::swap(m_screen, (*screen)->m_screen);
  return Ok();
}

bool Screen::IsLost() const {
  pollfd connection{Descriptor(), 0, 0};
  return xcb_connection_has_error(m_connection.get()) != 0 || poll(&connection, 1, 0) == 1;
}

void Screen::AwaitAnswer(std::chrono::milliseconds patience) {
  const unsigned int question = xcb_get_input_focus(m_connection.get()).sequence;
  xcb_flush(m_connection.get());
  Await(patience, [&] {
    void* answer = nullptr;
    xcb_generic_error_t* error = nullptr;
    const bool over = xcb_poll_for_reply(m_connection.get(), question, &answer, &error) != 0;
    std::free(answer);
    std::free(error);
    return over || IsLost();
  });
}

pid_t Screen::ServerProcess() const {
  ucred server{};
  socklen_t size = sizeof server;
  return getsockopt(Descriptor(), SOL_SOCKET, SO_PEERCRED, &server, &size) == 0 ? server.pid : 0;
}

xcb_atom_t Screen::Atom(const std::string& name) {
  const auto cookie = xcb_intern_atom(m_connection.get(), 0, static_cast<uint16_t>(name.size()), name.data());
  const MallocPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection.get(), cookie, nullptr));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

bool Screen::RootHas(const std::string& property) {
  const auto cookie =
      xcb_get_property(m_connection.get(), 0, m_screen->root, Atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 1);
  const MallocPtr<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection.get(), cookie, nullptr));
  return reply && reply->type != XCB_ATOM_NONE;
}

void Screen::PaintBackgroundBlack() {
  xcb_connection_t* connection = m_connection.get();
  const xcb_pixmap_t pixmap = xcb_generate_id(connection);
  xcb_create_pixmap(connection, m_screen->root_depth, pixmap, m_screen->root, 1, 1);
  const xcb_gcontext_t black = xcb_generate_id(connection);
  xcb_create_gc(connection, black, pixmap, XCB_GC_FOREGROUND, &m_screen->black_pixel);
  const xcb_rectangle_t all{0, 0, 1, 1};
  xcb_poly_fill_rectangle(connection, pixmap, black, 1, &all);
  xcb_free_gc(connection, black);
  xcb_change_property(connection, XCB_PROP_MODE_REPLACE, m_screen->root, Atom("_XROOTPMAP_ID"), XCB_ATOM_PIXMAP, 32, 1,
                      &pixmap);
  xcb_change_window_attributes(connection, m_screen->root, XCB_CW_BACK_PIXMAP, &pixmap);
  xcb_clear_area(connection, 0, m_screen->root, 0, 0, 0, 0);
  xcb_flush(connection);
}

bool Screen::HasWindowManager() {
  return RootHas("_NET_SUPPORTING_WM_CHECK");
}

bool Screen::AwaitWindowManager(std::chrono::milliseconds patience) {
  return Await(patience, [this] { return HasWindowManager(); });
}

/// Compositing managers own this selection; the oldest, xcompmgr, too.
bool Screen::HasCompositor() {
  const auto cookie = xcb_get_selection_owner(m_connection.get(), Atom("_NET_WM_CM_S0"));
  const MallocPtr<xcb_get_selection_owner_reply_t> reply(
      xcb_get_selection_owner_reply(m_connection.get(), cookie, nullptr));
  return reply && reply->owner != XCB_WINDOW_NONE;
}

bool Screen::AwaitCompositor(std::chrono::milliseconds patience) {
  return Await(patience, [this] { return HasCompositor(); });
}

/// Makes a window like the engine's, of one pixel, and waits a moment for its first exposure.
bool Screen::WindowAppears() {
  xcb_connection_t* connection = m_connection.get();
  const xcb_window_t window = xcb_generate_id(connection);
  const uint32_t values[] = {m_screen->black_pixel, XCB_EVENT_MASK_EXPOSURE};
  xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, m_screen->root, 0, 0, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
  const xcb_atom_t below = Atom("_NET_WM_STATE_BELOW");
  xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, Atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32, 1, &below);
  xcb_map_window(connection, window);
  xcb_flush(connection);
  const bool exposed = Await(kOneWindow, [&] {
    const MallocPtr<xcb_generic_event_t> event(xcb_poll_for_event(connection));
    return event && (event->response_type & 0x7F) == XCB_EXPOSE &&
           reinterpret_cast<const xcb_expose_event_t*>(event.get())->window == window;
  });
  xcb_destroy_window(connection, window);
  xcb_flush(connection);
  return exposed;
}

bool Screen::AwaitWindowsAppear(std::chrono::milliseconds patience) {
  return Await(patience, [this] { return WindowAppears(); });
}

Status Screen::EnsureRedirected() {
  if (IsLost()) {
    return Error{ENOTCONN, std::string("the X server on ") + kDisplay + " has gone"};
  }
  const xcb_query_extension_reply_t* composite = xcb_get_extension_data(m_connection.get(), &xcb_composite_id);
  if (composite == nullptr || composite->present == 0) {
    return Error{ENOTSUP, std::string("the X server on ") + kDisplay +
                              " lacks the Composite extension; start it with \"+extension Composite\""};
  }
  const auto version = xcb_composite_query_version(m_connection.get(), 0, 4);
  const MallocPtr<xcb_composite_query_version_reply_t> answered(
      xcb_composite_query_version_reply(m_connection.get(), version, nullptr));
  // Any number of clients may redirect automatically, beside a compositor that does so manually, now or later.
  const auto cookie =
      xcb_composite_redirect_subwindows_checked(m_connection.get(), m_screen->root, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
  const MallocPtr<xcb_generic_error_t> refused(xcb_request_check(m_connection.get(), cookie));
  return refused ? Status(Error{refused->error_code, "the X server does not redirect windows"}) : Ok();
}

Result<Picture> Screen::Capture() {
  const MallocPtr<xcb_get_geometry_reply_t> root(
      xcb_get_geometry_reply(m_connection.get(), xcb_get_geometry(m_connection.get(), m_screen->root), nullptr));
  if (root) {
    m_screen->width_in_pixels = root->width;
    m_screen->height_in_pixels = root->height;
  }
  const auto cookie = xcb_get_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_screen->root, 0, 0,
                                    m_screen->width_in_pixels, m_screen->height_in_pixels, ~0u);
  const MallocPtr<xcb_get_image_reply_t> reply(xcb_get_image_reply(m_connection.get(), cookie, nullptr));
  if (!reply) {
    return Error{EIO, std::string("the X server on ") + kDisplay + " does not show its screen"};
  }
  Picture picture{Width(), Height(), {}};
  const size_t pixels = size_t(Width()) * size_t(Height());
  const size_t bytes = static_cast<size_t>(xcb_get_image_data_length(reply.get()));
  if (reply->depth < 24 || bytes != pixels * sizeof(uint32_t) ||
      xcb_get_setup(m_connection.get())->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST) {
    return Error{ENOTSUP, "only screens of 24 bits in four little-endian bytes can be captured"};
  }
  picture.rgb.resize(pixels * 3);
  const uint8_t* from = xcb_get_image_data(reply.get());
  for (uint8_t* to = picture.rgb.data(); to != picture.rgb.data() + pixels * 3; from += 4, to += 3) {
    to[0] = from[2];
    to[1] = from[1];
    to[2] = from[0];
  }
  return picture;
}

Result<Picture> Screen::CaptureWhenCalm(std::chrono::milliseconds patience,
                                        const std::function<void(std::chrono::milliseconds)>& wait) {
  const auto deadline = Clock::now() + patience;
  Result<Picture> last = Capture();
  while (last && Clock::now() < deadline) {
    wait(kCalm);
    Result<Picture> next = Capture();
    const bool calm = next && *next == *last;
    last = std::move(next);
    if (calm) {
      break;
    }
  }
  return last;
}

}  // namespace sim::tvsim
