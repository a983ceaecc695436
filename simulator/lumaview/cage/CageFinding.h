// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_CAGE_CAGEFINDING_H
#define SIMULATOR_LUMAVIEW_CAGE_CAGEFINDING_H

#include <string>

namespace sim::lumaview {

/// Why pictures are not to be decoded in processes of their own: LUMAVIEW_CAGE or the build says so. Null when they
/// are.
const char* ReasonAgainstCage();

/// What the library would do on this system, in words.
struct CageFinding {
  bool is_whole = false;  ///< wanted, and every bar holds
  std::string text;
};
/// Tries it out in a process of its own; a few milliseconds.
CageFinding ExamineCage();

}  // namespace sim::lumaview

#endif
