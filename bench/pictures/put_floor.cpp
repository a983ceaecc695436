// SPDX-License-Identifier: Apache-2.0
/// put_floor < PATHS: the least that showing a JPEG can cost here. For each path on a line of its own it decodes with
/// libjpeg-turbo alone (the same scale as the picture library, no pixel looked at), puts one picture of the window's
/// size from shared memory, waits until the X server has read it, and prints "WALL CPU", both in milliseconds.
#include <fcntl.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/pictures/JpegFloor.h"
#include "simulator/base/CHandle.h"

namespace {

using sim::lumaview::Size;

constexpr Size kWindow{1920, 1080};
constexpr size_t kBytes = size_t{1920} * 1080 * 4;

double Milliseconds(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// A window and one buffer that the server reads.
class Screen {
 public:
  bool Open() {
    m_connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(m_connection) != 0 || !MapBuffer()) {
      return false;
    }
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    m_depth = screen->root_depth;
    m_window = xcb_generate_id(m_connection);
    const uint32_t values[] = {1};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, screen->root, 0, 0, kWindow.width, kWindow.height,
                      0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, values);
    m_gc = xcb_generate_id(m_connection);
    xcb_create_gc(m_connection, m_gc, m_window, 0, nullptr);
    return true;
  }

  /// In front of everything, or away: a window that is hidden would cost the server less.
  void SetVisible(bool visible) {
    if (visible) {
      xcb_map_window(m_connection, m_window);
    } else {
      xcb_unmap_window(m_connection, m_window);
    }
    sim::MallocPtr<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
  }

  /// Returns when the server has read the buffer.
  bool Put() {
    constexpr uint8_t kSendEvent = 1;
    xcb_shm_put_image(m_connection, m_window, m_gc, kWindow.width, kWindow.height, 0, 0, kWindow.width, kWindow.height,
                      0, 0, m_depth, XCB_IMAGE_FORMAT_Z_PIXMAP, kSendEvent, m_segment, 0);
    xcb_flush(m_connection);
    const xcb_query_extension_reply_t* shm = xcb_get_extension_data(m_connection, &xcb_shm_id);
    while (const auto event = sim::MallocPtr<xcb_generic_event_t>(xcb_wait_for_event(m_connection))) {
      if ((event->response_type & 0x7F) == shm->first_event + XCB_SHM_COMPLETION) {
        return true;
      }
    }
    return false;
  }

 private:
  bool MapBuffer() {
    const int fd = memfd_create("put_floor", MFD_CLOEXEC);
    if (fd < 0 || ftruncate(fd, kBytes) != 0 ||
        mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, fd, 0) == MAP_FAILED) {
      return false;
    }
    m_segment = xcb_generate_id(m_connection);
    xcb_shm_attach_fd(m_connection, m_segment, fd, 1);
    return true;
  }

  xcb_connection_t* m_connection = nullptr;
  xcb_window_t m_window = XCB_NONE;
  xcb_gcontext_t m_gc = XCB_NONE;
  xcb_shm_seg_t m_segment = XCB_NONE;
  uint8_t m_depth = 0;
};

/// False when the file is no JPEG or the server is gone.
bool Measure(Screen& screen, const std::string& path) {
  screen.SetVisible(true);
  const double wall = Milliseconds(CLOCK_MONOTONIC);
  const double cpu = Milliseconds(CLOCK_PROCESS_CPUTIME_ID);
  if (!bench::DecodeJpegFloor(path.c_str(), kWindow) || !screen.Put()) {
    return false;
  }
  std::printf("%.3f %.3f\n", Milliseconds(CLOCK_MONOTONIC) - wall, Milliseconds(CLOCK_PROCESS_CPUTIME_ID) - cpu);
  screen.SetVisible(false);
  std::fflush(stdout);
  return true;
}

}  // namespace

int main() {
  Screen screen;
  if (!screen.Open()) {
    std::fprintf(stderr, "put_floor: no X server that shares memory; set DISPLAY\n");
    return 2;
  }
  std::string path;
  for (int c = std::getchar(); c != EOF; c = std::getchar()) {
    if (c != '\n') {
      path += static_cast<char>(c);
      continue;
    }
    if (!Measure(screen, path)) {
      std::fprintf(stderr, "put_floor: %s is no JPEG that can be read\n", path.c_str());
      return 1;
    }
    path.clear();
  }
  return 0;
}
