// SPDX-License-Identifier: Apache-2.0
// usage: show_bench PICTURE [ROUNDS [IDLE-SECONDS]]   (on a running X server)
//
// How long a prepared picture takes to the screen: from the first call of a showing (window, callback, parse; decode
// from inside the parse callback) to the report that it is seen. Then how often the library's threads wake up while
// the picture stands still.
#include <dirent.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "platform/lumaview.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
/// A still picture waits for no frame clock.
constexpr double kBarMilliseconds = 5;

std::promise<lumaview_event_result_e>* shown = nullptr;

int OnDecode(void*, lumaview_event_type_e, lumaview_event_result_e result) {
  shown->set_value(result);
  return 0;
}

int OnParse(void* record, lumaview_event_type_e, lumaview_event_result_e) {
  auto* picture = static_cast<_lumaview_s*>(record);
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, OnDecode);
  lumaview_decode(picture, 0);
  return 0;
}

xcb_window_t MakeWindow(xcb_connection_t* connection) {
  const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
  const xcb_window_t window = xcb_generate_id(connection);
  const uint32_t values[] = {screen->black_pixel, 1};
  xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, kWidth, kHeight, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
                    values);
  xcb_map_window(connection, window);
  std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
  return window;
}

/// Milliseconds to the report; negative when it is a failure.
double Show(const char* path, Window window, std::chrono::milliseconds lead, _lumaview_s** picture) {
  std::promise<lumaview_event_result_e> promise;
  shown = &promise;
  if (lumaview_create_from_url(path, picture) != 0) {
    return -1;
  }
  std::this_thread::sleep_for(lead);
  const auto start = Clock::now();
  lumaview_set_window(*picture, window);
  lumaview_add_event_callback(*picture, LUMAVIEW_EVENT_PARSE, OnParse);
  lumaview_parse(*picture);
  const auto result = promise.get_future().get();
  const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
  return result == LUMAVIEW_RESULT_DECODE_OK ? taken.count() : -1;
}

/// Of all the library's threads together.
long CountWakeUps() {
  long wake_ups = 0;
  DIR* tasks = opendir("/proc/self/task");
  while (const dirent* task = readdir(tasks)) {
    std::ifstream status(std::string("/proc/self/task/") + task->d_name + "/status");
    bool ours = false;
    for (std::string line; std::getline(status, line);) {
      ours |= line.rfind("Name:\tlumaview-", 0) == 0;
      if (ours && line.rfind("voluntary_ctxt_switches:", 0) == 0) {
        wake_ups += std::stol(line.substr(line.find('\t') + 1));
      }
    }
  }
  closedir(tasks);
  return wake_ups;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: show_bench PICTURE [ROUNDS [IDLE-SECONDS]]\n");
    return 2;
  }
  const int rounds = argc > 2 ? std::atoi(argv[2]) : 20;
  const int idle_seconds = argc > 3 ? std::atoi(argv[3]) : 10;
  xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
  Window window = MakeWindow(connection);
  if (lumaview_init_display(&window) != 0) {
    return 1;
  }
  _lumaview_s* picture = nullptr;
  const double cold = Show(argv[1], window, std::chrono::milliseconds(0), &picture);
  lumaview_destroy(&picture);
  std::vector<double> taken;
  for (int round = 0; round < rounds; ++round) {
    const auto lead = std::chrono::milliseconds(static_cast<int>(cold * 2) + 100);
    taken.push_back(Show(argv[1], window, lead, &picture));
    if (round + 1 < rounds) {
      lumaview_destroy(&picture);
    }
  }
  std::sort(taken.begin(), taken.end());
  const double median = taken[taken.size() / 2];
  std::printf("command to pixels, not prepared: %.1f ms\n", cold);
  std::printf("prepared: median %.2f ms, %.2f to %.2f ms of %d\n", median, taken.front(), taken.back(), rounds);

  std::this_thread::sleep_for(std::chrono::seconds(1));
  const long before = CountWakeUps();
  std::printf("idle for %d s (pid %d)\n", idle_seconds, static_cast<int>(getpid()));
  std::fflush(stdout);
  std::this_thread::sleep_for(std::chrono::seconds(idle_seconds));
  const long wake_ups = CountWakeUps() - before;
  const bool good = taken.front() >= 0 && median <= kBarMilliseconds && wake_ups == 0;
  std::printf("%s: prepared %.2f ms (bar %.0f), wake-ups: %ld (bar 0)\n", good ? "ok" : "FAILED", median,
              kBarMilliseconds, wake_ups);
  lumaview_destroy(&picture);
  lumaview_destroy_display(&window);
  xcb_disconnect(connection);
  return good ? 0 : 1;
}
