// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/screen/ScreenWatch.h"

#include <glib-unix.h>

#include <cerrno>
#include <utility>

#include "simulator/tvsim/screen/Jpeg.h"

namespace sim::tvsim {
namespace {

/// A browser shows no more, and each costs a capture and a compression.
constexpr std::chrono::milliseconds kBetweenChanges(33);

}  // namespace

Result<std::unique_ptr<ScreenWatch>> ScreenWatch::Start(Screen& screen, std::function<void(int64_t)> on_change) {
  std::unique_ptr<ScreenWatch> watch(new ScreenWatch(screen, std::move(on_change)));
  SIM_TRY(watch->Connect());
  return watch;
}

ScreenWatch::~ScreenWatch() {
  Disconnect();
}

void ScreenWatch::Disconnect() {
  if (m_source != 0) {
    g_source_remove(std::exchange(m_source, 0u));
  }
  m_pause.reset();
  m_connection.reset();
}

Status ScreenWatch::Follow() {
  Disconnect();
  SIM_TRY(Connect());
  m_on_change(++m_number);
  return Ok();
}

/// A connection of its own: the session's is asked synchronously and its events are taken elsewhere.
Status ScreenWatch::Connect() {
  m_connection.reset(xcb_connect(kDisplay, nullptr));
  xcb_connection_t* connection = m_connection.get();
  if (xcb_connection_has_error(connection) != 0) {
    return Error{ENOTCONN, std::string("no X server answers on ") + kDisplay};
  }
  const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_damage_id);
  if (extension == nullptr || extension->present == 0) {
    return Error{ENOTSUP, std::string("the X server on ") + kDisplay + " lacks the Damage extension"};
  }
  m_first_event = extension->first_event;
  const MallocPtr<xcb_damage_query_version_reply_t> version(
      xcb_damage_query_version_reply(connection, xcb_damage_query_version(connection, 1, 1), nullptr));
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
  m_damage = xcb_generate_id(connection);
  xcb_damage_create(connection, m_damage, root, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
  xcb_flush(connection);
  m_source = g_unix_fd_add(
      xcb_get_file_descriptor(connection), G_IO_IN,
      [](gint, GIOCondition, gpointer self) -> gboolean {
        static_cast<ScreenWatch*>(self)->OnReadable();
        return G_SOURCE_CONTINUE;
      },
      this);
  return Ok();
}

void ScreenWatch::OnReadable() {
  bool changed = false;
  while (const MallocPtr<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get())}) {
    changed = changed || (event->response_type & 0x7F) == m_first_event + XCB_DAMAGE_NOTIFY;
  }
  if (changed && !m_pause) {
    m_pause = std::make_unique<Timer>(kBetweenChanges, [this] { Report(); });
  }
  if (xcb_connection_has_error(m_connection.get()) != 0) {
    (void)Follow();  // where the X server has gone, the session says when there is one again
  }
}

/// Only now does the server look for further changes.
void ScreenWatch::Report() {
  m_pause.reset();
  xcb_damage_subtract(m_connection.get(), m_damage, XCB_NONE, XCB_NONE);
  xcb_flush(m_connection.get());
  m_on_change(++m_number);
}

Result<std::string> ScreenWatch::Jpeg(int64_t& number) {
  number = m_number;
  if (m_jpeg_number != m_number) {
    const Result<Picture> picture = m_screen.Capture();
    if (!picture) {
      return picture.error();
    }
    m_jpeg = EncodeJpeg(*picture);
    m_jpeg_number = m_number;
  }
  return m_jpeg;
}

}  // namespace sim::tvsim
