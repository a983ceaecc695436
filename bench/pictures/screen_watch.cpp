// SPDX-License-Identifier: Apache-2.0
/// screen_watch: looks at some rows of the screen every millisecond and prints, for each look that differs from the one
/// before, the time on the monotonic clock in milliseconds. Ends with its input.
#include <poll.h>
#include <time.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <cstdio>
#include <string>

#include "simulator/base/CHandle.h"

namespace {

/// Parts of the screen's height: a picture that is drawn from the top is not ready when its upper half is.
constexpr double kRows[] = {0.1, 0.35, 0.5, 0.65, 0.9};
constexpr int kMilliseconds = 1;

double Now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// The pixels of all rows, one behind the other.
std::string Look(xcb_connection_t* connection, const xcb_screen_t& screen) {
  xcb_get_image_cookie_t cookies[std::size(kRows)];
  for (size_t i = 0; i < std::size(kRows); ++i) {
    const auto y = static_cast<int16_t>(kRows[i] * screen.height_in_pixels);
    cookies[i] =
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, screen.root, 0, y, screen.width_in_pixels, 1, ~0u);
  }
  std::string pixels;
  for (const xcb_get_image_cookie_t cookie : cookies) {
    const sim::MallocPtr<xcb_get_image_reply_t> reply(xcb_get_image_reply(connection, cookie, nullptr));
    if (reply) {
      pixels.append(reinterpret_cast<const char*>(xcb_get_image_data(reply.get())),
                    static_cast<size_t>(xcb_get_image_data_length(reply.get())));
    }
  }
  return pixels;
}

}  // namespace

int main() {
  xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
  if (xcb_connection_has_error(connection) != 0) {
    std::fprintf(stderr, "screen_watch: no X server; set DISPLAY\n");
    return 2;
  }
  const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
  std::string before = Look(connection, screen);
  for (pollfd input{STDIN_FILENO, POLLIN, 0}; poll(&input, 1, kMilliseconds) == 0;) {
    std::string pixels = Look(connection, screen);
    if (pixels != before) {
      std::printf("%.3f\n", Now());
      std::fflush(stdout);
      before.swap(pixels);
    }
  }
  xcb_disconnect(connection);
  return 0;
}
