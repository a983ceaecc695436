// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SERVE_PAGEFILES_H
#define SIMULATOR_TVSIM_SERVE_PAGEFILES_H

#include <initializer_list>
#include <span>
#include <string_view>

namespace sim::tvsim {

/// One file of the browser application.
struct PageFile {
  std::string_view name;  ///< "index.html"
  std::string_view content;
};

/// All files of simulator/web, as they were when this program was built.
std::span<const PageFile> PageFiles();

}  // namespace sim::tvsim

#endif
