// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_LUMAVIEW_SCREEN_H
#define TESTS_LUMAVIEW_SCREEN_H

#include <X11/X.h>
#include <xcb/xcb.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "platform/lumaview.h"

namespace lumaview_test {

/// Long enough for the slowest machine; a test that passes never waits that long.
inline constexpr std::chrono::seconds kPatience{20};

/// True once `condition` holds; looks again and again until `kPatience` is over.
bool Eventually(const std::function<bool()>& condition);

/// What the owner of a window has: a connection, and top-level windows that no window manager touches.
class Screen {
 public:
  Screen();
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  /// A mapped, black window.
  Window MakeWindow(int width, int height);
  void Resize(Window window, int width, int height);
  void Destroy(Window window);
  /// Fills the window itself, below its children, with white.
  void FillWhite(Window window);

  /// 0xRRGGBB of what is seen at x, y of `window`.
  uint32_t PixelAt(Window window, int x, int y);
  /// Row by row, 0xRRGGBB.
  std::vector<uint32_t> Grab(Window window, int width, int height);
  std::vector<Window> ChildrenOf(Window window);
  uint8_t GetDepth() const { return m_screen->root_depth; }

 private:
  xcb_connection_t* m_connection;
  xcb_screen_t* m_screen;
};

/// What the library reported, in order.
struct Report {
  void* record;
  int type;
  int result;
  bool operator==(const Report&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Report& report);

/// Where the callbacks of the tests write; one for the whole process, as the library's callbacks have no argument for
/// more. Cleared by each fixture.
class Reports {
 public:
  static Reports& Get();
  /// For lumaview_add_event_callback.
  static int Callback(void* record, lumaview_event_type_e type, lumaview_event_result_e result);

  void Clear();
  /// The next report that was not taken yet; type -1 when none comes in time.
  Report Next();
  bool IsEmpty();

 private:
  std::mutex m_mutex;
  std::condition_variable m_came;
  std::deque<Report> m_reports;
};

}  // namespace lumaview_test

#endif
