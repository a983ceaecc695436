// SPDX-License-Identifier: Apache-2.0
/// Looks at the screen from a connection of its own, as another client of the server does.
#ifndef TESTS_SYSTEM_SCREENOBSERVER_H
#define TESTS_SYSTEM_SCREENOBSERVER_H

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

struct Place {
  int x, y, width, height;  ///< pixels, from the screen's upper left corner
  bool operator==(const Place&) const = default;
};

struct Property {
  xcb_atom_t type;
  int format;  ///< bits of an item
  std::vector<uint8_t> bytes;

  std::vector<uint32_t> Items() const;  ///< of format 32
  std::string Text() const { return {bytes.begin(), bytes.end()}; }
};

/// Windows that do not exist have no place, no attributes, no property. One thread.
class ScreenObserver {
 public:
  ScreenObserver();
  ~ScreenObserver();
  ScreenObserver(const ScreenObserver&) = delete;
  ScreenObserver& operator=(const ScreenObserver&) = delete;

  const xcb_screen_t& Screen() const { return *m_screen; }
  xcb_atom_t Atom(const std::string& name);

  bool Exists(xcb_window_t window) { return Attributes(window).has_value(); }
  bool IsOnScreen(xcb_window_t window);
  std::optional<Place> PlaceOf(xcb_window_t window);
  std::optional<xcb_get_window_attributes_reply_t> Attributes(xcb_window_t window);
  std::optional<xcb_get_geometry_reply_t> Geometry(xcb_window_t window);
  std::optional<Property> PropertyOf(xcb_window_t window, const std::string& name);
  xcb_window_t ParentOf(xcb_window_t window);
  xcb_window_t Focused();
  xcb_window_t OwnerOf(const std::string& selection);

  /// The child of the root in which `window` stands: a window manager's frame, or the window itself.
  xcb_window_t TopLevelOf(xcb_window_t window);
  /// Whether `lower` is stacked below `upper`; both are on the screen.
  bool IsBelow(xcb_window_t lower, xcb_window_t upper);

  /// The pixel in the window after it was cleared to its background there.
  uint32_t BackgroundPixel(xcb_window_t window);

  /// What the client that made `id` holds in the server, as counts by type.
  std::map<std::string, uint32_t> ResourcesOf(uint32_t id);
  size_t Clients();

  /// A mapped window as an application has it.
  xcb_window_t MakeNormalWindow(const Place& place);
  void Destroy(xcb_window_t window);

  /// Waits until `condition` holds, looking again whenever the server reports something; false when it takes longer
  /// than `kPatience`.
  bool Await(const std::function<bool()>& condition);
  static constexpr int kPatienceMs = 20000;

 private:
  void DropEvents();

  xcb_connection_t* m_connection;
  const xcb_screen_t* m_screen;
};

#endif
