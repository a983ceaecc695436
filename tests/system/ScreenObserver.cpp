// SPDX-License-Identifier: Apache-2.0
#include "tests/system/ScreenObserver.h"

#include <poll.h>
#include <xcb/res.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace {

struct Freed {
  void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, Freed>;

template <typename T>
Reply<T> Own(T* reply) {
  return Reply<T>(reply);
}

constexpr int kLookAgainMs = 20;  // for what changes without an event
constexpr uint32_t kWholeProperty = 1U << 16;

}  // namespace

std::vector<uint32_t> Property::Items() const {
  std::vector<uint32_t> items(bytes.size() / sizeof(uint32_t));
  std::memcpy(items.data(), bytes.data(), items.size() * sizeof(uint32_t));
  return items;
}

ScreenObserver::ScreenObserver() : m_connection(xcb_connect(nullptr, nullptr)), m_screen(nullptr) {
  if (xcb_connection_has_error(m_connection) != 0) throw std::runtime_error("no X server to look at");
  m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
  const uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(m_connection, m_screen->root, XCB_CW_EVENT_MASK, &events);
}

ScreenObserver::~ScreenObserver() {
  xcb_disconnect(m_connection);
}

xcb_atom_t ScreenObserver::Atom(const std::string& name) {
  const auto cookie = xcb_intern_atom(m_connection, 0, static_cast<uint16_t>(name.size()), name.c_str());
  const auto reply = Own(xcb_intern_atom_reply(m_connection, cookie, nullptr));
  return reply ? reply->atom : XCB_NONE;
}

std::optional<xcb_get_window_attributes_reply_t> ScreenObserver::Attributes(xcb_window_t window) {
  const auto cookie = xcb_get_window_attributes(m_connection, window);
  const auto reply = Own(xcb_get_window_attributes_reply(m_connection, cookie, nullptr));
  return reply ? std::optional(*reply) : std::nullopt;
}

std::optional<xcb_get_geometry_reply_t> ScreenObserver::Geometry(xcb_window_t window) {
  const auto reply = Own(xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
  return reply ? std::optional(*reply) : std::nullopt;
}

bool ScreenObserver::IsOnScreen(xcb_window_t window) {
  const auto attributes = Attributes(window);
  return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

std::optional<Place> ScreenObserver::PlaceOf(xcb_window_t window) {
  const auto geometry = Geometry(window);
  const auto cookie = xcb_translate_coordinates(m_connection, window, m_screen->root, 0, 0);
  const auto corner = Own(xcb_translate_coordinates_reply(m_connection, cookie, nullptr));
  if (!geometry || !corner) return std::nullopt;
  return Place{corner->dst_x, corner->dst_y, geometry->width, geometry->height};
}

std::optional<Property> ScreenObserver::PropertyOf(xcb_window_t window, const std::string& name) {
  const auto cookie = xcb_get_property(m_connection, 0, window, Atom(name), XCB_ATOM_ANY, 0, kWholeProperty);
  const auto reply = Own(xcb_get_property_reply(m_connection, cookie, nullptr));
  if (!reply || reply->type == XCB_NONE) return std::nullopt;
  const auto* bytes = static_cast<const uint8_t*>(xcb_get_property_value(reply.get()));
  return Property{reply->type, reply->format, {bytes, bytes + xcb_get_property_value_length(reply.get())}};
}

xcb_window_t ScreenObserver::ParentOf(xcb_window_t window) {
  const auto reply = Own(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
  return reply ? reply->parent : XCB_NONE;
}

xcb_window_t ScreenObserver::Focused() {
  const auto reply = Own(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
  return reply ? reply->focus : XCB_NONE;
}

xcb_window_t ScreenObserver::OwnerOf(const std::string& selection) {
  const auto cookie = xcb_get_selection_owner(m_connection, Atom(selection));
  const auto reply = Own(xcb_get_selection_owner_reply(m_connection, cookie, nullptr));
  return reply ? reply->owner : XCB_NONE;
}

xcb_window_t ScreenObserver::TopLevelOf(xcb_window_t window) {
  for (xcb_window_t parent = ParentOf(window); parent != XCB_NONE && parent != m_screen->root;) {
    window = parent;
    parent = ParentOf(window);
  }
  return window;
}

bool ScreenObserver::IsBelow(xcb_window_t lower, xcb_window_t upper) {
  const xcb_window_t lowerTop = TopLevelOf(lower);
  const xcb_window_t upperTop = TopLevelOf(upper);
  const auto tree = Own(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, m_screen->root), nullptr));
  if (!tree) return false;
  const xcb_window_t* children = xcb_query_tree_children(tree.get());
  const xcb_window_t* end = children + xcb_query_tree_children_length(tree.get());
  const auto* at = std::find(children, end, lowerTop);
  return at != end && std::find(at, end, upperTop) != end;
}

uint32_t ScreenObserver::BackgroundPixel(xcb_window_t window) {
  constexpr uint32_t kNotBlack = 0x00FFFFFF;
  const xcb_gcontext_t context = xcb_generate_id(m_connection);
  xcb_create_gc(m_connection, context, window, XCB_GC_FOREGROUND, &kNotBlack);
  const xcb_rectangle_t pixel = {0, 0, 1, 1};
  xcb_poly_fill_rectangle(m_connection, window, context, 1, &pixel);
  xcb_free_gc(m_connection, context);
  xcb_clear_area(m_connection, 0, window, 0, 0, 1, 1);
  const auto cookie = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0, 1, 1, ~0U);
  const auto image = Own(xcb_get_image_reply(m_connection, cookie, nullptr));
  if (!image) return kNotBlack;
  uint32_t value = 0;
  std::memcpy(&value, xcb_get_image_data(image.get()), sizeof value);
  return value & kNotBlack;
}

std::map<std::string, uint32_t> ScreenObserver::ResourcesOf(uint32_t id) {
  std::map<std::string, uint32_t> counts;
  const auto cookie = xcb_res_query_client_resources(m_connection, id);
  const auto reply = Own(xcb_res_query_client_resources_reply(m_connection, cookie, nullptr));
  if (!reply) return counts;
  const xcb_res_type_t* types = xcb_res_query_client_resources_types(reply.get());
  for (int i = 0; i < xcb_res_query_client_resources_types_length(reply.get()); ++i) {
    const auto name =
        Own(xcb_get_atom_name_reply(m_connection, xcb_get_atom_name(m_connection, types[i].resource_type), nullptr));
    if (!name) continue;
    const auto length = static_cast<size_t>(xcb_get_atom_name_name_length(name.get()));
    counts[std::string(xcb_get_atom_name_name(name.get()), length)] = types[i].count;
  }
  return counts;
}

size_t ScreenObserver::Clients() {
  const auto reply = Own(xcb_res_query_clients_reply(m_connection, xcb_res_query_clients(m_connection), nullptr));
  return reply ? reply->num_clients : 0;
}

xcb_window_t ScreenObserver::MakeNormalWindow(const Place& place) {
  const xcb_window_t window = xcb_generate_id(m_connection);
  xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_screen->root, static_cast<int16_t>(place.x),
                    static_cast<int16_t>(place.y), static_cast<uint16_t>(place.width),
                    static_cast<uint16_t>(place.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                    XCB_CW_BACK_PIXEL, &m_screen->white_pixel);
  constexpr char kNameAndClass[] = "application\0Application";
  xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                      sizeof kNameAndClass, kNameAndClass);
  xcb_map_window(m_connection, window);
  xcb_flush(m_connection);
  return window;
}

void ScreenObserver::Destroy(xcb_window_t window) {
  xcb_destroy_window(m_connection, window);
  xcb_flush(m_connection);
}

void ScreenObserver::DropEvents() {
  while (const auto event = Own(xcb_poll_for_event(m_connection))) {
  }
}

bool ScreenObserver::Await(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatienceMs);
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline || xcb_connection_has_error(m_connection) != 0) return false;
    pollfd server = {xcb_get_file_descriptor(m_connection), POLLIN, 0};
    poll(&server, 1, kLookAgainMs);
    DropEvents();
  }
  return true;
}
