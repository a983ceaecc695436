// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SLIDESHOW_PICTUREREPORT_H
#define SIMULATOR_TVSIM_SLIDESHOW_PICTUREREPORT_H

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace sim::tvsim {

/// What became of one picture of a slide show.
struct PictureReport {
  size_t number = 0;  ///< from 1
  size_t count = 0;
  std::string path;
  std::optional<std::string> failure{};             ///< why it was not shown
  std::optional<std::string> screenshot_failure{};  ///< why there is no screenshot of it
  std::string size{};                               ///< "1920*1200"; "0" when a transition has shown it
  std::chrono::milliseconds took{};                 ///< from the first command to the last event
};

/// One line for people.
std::string TextOf(const PictureReport& report);

/// One JSON object on one line.
std::string JsonOf(const PictureReport& report);

}  // namespace sim::tvsim

#endif
