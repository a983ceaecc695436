// SPDX-License-Identifier: Apache-2.0
#include "tests/lumaview/Screen.h"

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <thread>

namespace lumaview_test {
namespace {

template <typename T>
using Malloced = std::unique_ptr<T, decltype([](T* pointer) { std::free(pointer); })>;

xcb_window_t Id(Window window) {
  return static_cast<xcb_window_t>(window);
}

}  // namespace

bool Eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::yield();
  }
  return true;
}

Screen::Screen() : m_connection(xcb_connect(nullptr, nullptr)) {
  if (xcb_connection_has_error(m_connection) != 0) {
    throw std::runtime_error("no X server");
  }
  m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
}

Screen::~Screen() {
  xcb_disconnect(m_connection);
}

Window Screen::MakeWindow(int width, int height) {
  const xcb_window_t window = xcb_generate_id(m_connection);
  const uint32_t values[] = {m_screen->black_pixel, 1};
  xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_screen->root, 0, 0, static_cast<uint16_t>(width),
                    static_cast<uint16_t>(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                    XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
  xcb_map_window(m_connection, window);
  PixelAt(window, 0, 0);
  return window;
}

void Screen::Resize(Window window, int width, int height) {
  const uint32_t sides[] = {static_cast<uint32_t>(width), static_cast<uint32_t>(height)};
  xcb_configure_window(m_connection, Id(window), XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, sides);
  xcb_flush(m_connection);
}

void Screen::Destroy(Window window) {
  xcb_destroy_window(m_connection, Id(window));
  // An answer means that the server has done what came before it, whoever asks it next.
  std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

void Screen::FillWhite(Window window) {
  const xcb_gcontext_t gc = xcb_generate_id(m_connection);
  xcb_create_gc(m_connection, gc, Id(window), XCB_GC_FOREGROUND, &m_screen->white_pixel);
  const xcb_rectangle_t all{0, 0, 0x7FFF, 0x7FFF};
  xcb_poly_fill_rectangle(m_connection, Id(window), gc, 1, &all);
  xcb_free_gc(m_connection, gc);
  PixelAt(window, 0, 0);
}

uint32_t Screen::PixelAt(Window window, int x, int y) {
  const auto cookie = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, Id(window), static_cast<int16_t>(x),
                                    static_cast<int16_t>(y), 1, 1, ~0u);
  const Malloced<xcb_get_image_reply_t> image(xcb_get_image_reply(m_connection, cookie, nullptr));
  if (!image) {
    return 0xFF000000;  // no colour at all
  }
  const uint8_t* bytes = xcb_get_image_data(image.get());
  if (GetDepth() == 16) {
    const uint32_t pixel = static_cast<uint32_t>(bytes[0] | bytes[1] << 8);
    return (pixel >> 11 & 0x1F) << 19 | (pixel >> 5 & 0x3F) << 10 | (pixel & 0x1F) << 3;
  }
  return static_cast<uint32_t>(bytes[0] | bytes[1] << 8 | bytes[2] << 16);
}

std::vector<uint32_t> Screen::Grab(Window window, int width, int height) {
  const auto cookie = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, Id(window), 0, 0,
                                    static_cast<uint16_t>(width), static_cast<uint16_t>(height), ~0u);
  const Malloced<xcb_get_image_reply_t> image(xcb_get_image_reply(m_connection, cookie, nullptr));
  std::vector<uint32_t> pixels;
  if (image) {
    const auto* first = reinterpret_cast<const uint32_t*>(xcb_get_image_data(image.get()));
    pixels.assign(first, first + static_cast<size_t>(width) * static_cast<size_t>(height));
    for (uint32_t& pixel : pixels) {
      pixel &= 0xFFFFFF;
    }
  }
  return pixels;
}

std::vector<Window> Screen::ChildrenOf(Window window) {
  const auto cookie = xcb_query_tree(m_connection, Id(window));
  const Malloced<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(m_connection, cookie, nullptr));
  std::vector<Window> children;
  if (tree) {
    const xcb_window_t* first = xcb_query_tree_children(tree.get());
    children.assign(first, first + xcb_query_tree_children_length(tree.get()));
  }
  return children;
}

std::ostream& operator<<(std::ostream& out, const Report& report) {
  return out << "event " << report.type << " result " << report.result << " of " << report.record;
}

Reports& Reports::Get() {
  static Reports reports;
  return reports;
}

int Reports::Callback(void* record, lumaview_event_type_e type, lumaview_event_result_e result) {
  Reports& reports = Get();
  const std::lock_guard lock(reports.m_mutex);
  reports.m_reports.push_back({record, type, result});
  reports.m_came.notify_all();
  return 0;
}

void Reports::Clear() {
  const std::lock_guard lock(m_mutex);
  m_reports.clear();
}

Report Reports::Next() {
  std::unique_lock lock(m_mutex);
  if (!m_came.wait_for(lock, kPatience, [this] { return !m_reports.empty(); })) {
    return {nullptr, -1, -1};
  }
  const Report report = m_reports.front();
  m_reports.pop_front();
  return report;
}

bool Reports::IsEmpty() {
  const std::lock_guard lock(m_mutex);
  return m_reports.empty();
}

}  // namespace lumaview_test
