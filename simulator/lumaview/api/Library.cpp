// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/api/Library.h"

#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "simulator/base/Faults.h"
#include "simulator/base/Log.h"
#include "simulator/base/SlowCall.h"
#include "simulator/lumaview/cage/Cage.h"

namespace sim::lumaview {
namespace {

/// LUMAVIEW_FIT=fill covers the window and cuts what sticks out; anything else fits the picture into it. A picture
/// that pans and zooms always covers the window.
View FirstView() {
  const char* fit = std::getenv("LUMAVIEW_FIT");
  View view;
  view.fill = (fit != nullptr && std::string_view(fit) == "fill") || KenBurnsDuration() > Duration(0);
  return view;
}

void LogCall(const char* function, const std::string& reason) {
  Log(LogLevel::kError, "lumaview", std::string(function) + ": " + reason);
}

}  // namespace

Library& GetLibrary() {
  static Library* const library = [] {
    StartCage();  // forks, so before this library has threads
    return new Library{Services(FirstView()), {}, {}};
  }();
  return *library;
}

Result<std::shared_ptr<Picture>> FindPicture(const void* record) {
  if (auto picture = GetLibrary().pictures.Find(record)) {
    return picture;
  }
  return Error{kBadArgument, record == nullptr ? "the picture is null" : "this is not a picture, or no longer"};
}

Result<std::shared_ptr<TransitionEffect>> FindEffect(const void* record) {
  if (auto effect = GetLibrary().effects.Find(record)) {
    return effect;
  }
  return Error{kBadArgument, record == nullptr ? "the effect is null" : "this is not an effect, or no longer"};
}

int Answer(const char* function, const std::function<Status()>& body) {
  const SlowCall slow("lumaview", function);
  if (const Fault fault = NextFaultOfCall(function); fault.action == FaultAction::kFail) {
    return fault.value;
  }
  try {
    const Status status = body();
    if (status) {
      return 0;
    }
    LogCall(function, status.error().reason);
    return status.error().code;
  } catch (const std::bad_alloc&) {
    LogCall(function, "no memory");
    return kOutOfMemory;
  } catch (const std::exception& problem) {
    LogCall(function, problem.what());
    return kOutOfMemory;  // threads and other means of the system are used up
  }
}

}  // namespace sim::lumaview
