// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/api/Services.h"

#include <random>
#include <string>

#include "simulator/base/Log.h"

namespace sim::lumaview {

Services::Services(const View& view) : first_view(view), chooser(std::random_device()()) {}

Error WithPath(const std::string& path, const Error& error) {
  // A caller may hand in a path of megabytes; its beginning tells enough.
  constexpr size_t kLoggedBytes = 4096;
  const bool whole = path.size() <= kLoggedBytes;
  return {error.code, (whole ? path : path.substr(0, kLoggedBytes) + "...") + ": " + error.reason};
}

void LogFailure(const std::string& path, const Error& error) {
  Log(LogLevel::kError, "lumaview", WithPath(path, error).reason);
}

}  // namespace sim::lumaview
