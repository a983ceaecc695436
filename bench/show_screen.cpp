// SPDX-License-Identifier: Apache-2.0
#include "bench/show_screen.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "simulator/base/CHandle.h"

namespace bench {
namespace {

[[noreturn]] void GiveUp(const char* reason) {
  std::fprintf(stderr, "show_transitions: %s\n", reason);
  std::exit(2);
}

void AwaitServer(xcb_connection_t* connection) {
  sim::MallocPtr<xcb_get_input_focus_reply_t>(
      xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

}  // namespace

ShowScreen::ShowScreen(sim::lumaview::Size size)
    : m_size(size),
      m_bytes(static_cast<size_t>(size.width) * static_cast<size_t>(size.height) * sizeof(uint32_t)),
      m_connection(xcb_connect(nullptr, nullptr)) {
  if (xcb_connection_has_error(m_connection) != 0) {
    GiveUp("no X server answers");
  }
  MakeWindow();
  ShareMemory();
}

ShowScreen::~ShowScreen() {
  xcb_disconnect(m_connection);
  munmap(const_cast<uint32_t*>(m_pixels), m_bytes);
}

void ShowScreen::MakeWindow() {
  const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
  m_window = xcb_generate_id(m_connection);
  const uint32_t values[] = {screen->black_pixel, 1};
  xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, screen->root, 0, 0,
                    static_cast<uint16_t>(m_size.width), static_cast<uint16_t>(m_size.height), 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
                    values);
  xcb_map_window(m_connection, m_window);
  AwaitServer(m_connection);
}

void ShowScreen::ShareMemory() {
  const int fd = memfd_create("shot", MFD_CLOEXEC);
  void* pixels = MAP_FAILED;
  if (fd >= 0 && ftruncate(fd, static_cast<off_t>(m_bytes)) == 0) {
    pixels = mmap(nullptr, m_bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, fd, 0);
  }
  if (pixels == MAP_FAILED) {
    GiveUp("no memory for what the screen shows");
  }
  m_pixels = static_cast<const uint32_t*>(pixels);
  m_segment = xcb_generate_id(m_connection);
  xcb_shm_attach_fd(m_connection, m_segment, fd, 0);  // takes fd
  AwaitServer(m_connection);
}

Shot ShowScreen::Capture() {
  const auto cookie =
      xcb_shm_get_image(m_connection, m_window, 0, 0, static_cast<uint16_t>(m_size.width),
                        static_cast<uint16_t>(m_size.height), ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, m_segment, 0);
  const sim::MallocPtr<xcb_shm_get_image_reply_t> reply(xcb_shm_get_image_reply(m_connection, cookie, nullptr));
  if (!reply || reply->size != m_bytes) {
    GiveUp("the X server does not share what it shows");
  }
  Shot shot(m_pixels, m_pixels + m_bytes / sizeof(uint32_t));
  for (uint32_t& pixel : shot) {
    pixel &= 0x00FFFFFF;
  }
  return shot;
}

}  // namespace bench
