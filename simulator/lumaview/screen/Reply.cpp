// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/screen/Reply.h"

#include <poll.h>
#include <xcb/xcbext.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <string>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {
namespace {

using SteadyTime = std::chrono::steady_clock::time_point;

/// False when `deadline` has passed.
bool AwaitBytes(xcb_connection_t* connection, SteadyTime deadline) {
  const auto left =
      std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
  if (left <= 0) {
    return false;
  }
  pollfd connected{xcb_get_file_descriptor(connection), POLLIN, 0};
  poll(&connected, 1, static_cast<int>(left));
  return true;
}

const char* ErrorName(uint8_t code) {
  static constexpr std::array<const char*, 18> kNames = {
      "Success",   "BadRequest", "BadValue",    "BadWindow",   "BadPixmap", "BadAtom",
      "BadCursor", "BadFont",    "BadMatch",    "BadDrawable", "BadAccess", "BadAlloc",
      "BadColor",  "BadGC",      "BadIDChoice", "BadName",     "BadLength", "BadImplementation"};
  return code < kNames.size() ? kNames[code] : "an extension's error";
}

}  // namespace

std::string DescribeError(const xcb_generic_error_t& error) {
  char text[96];
  std::snprintf(text, sizeof text, "%s (%u) for request %u.%u, resource 0x%x", ErrorName(error.error_code),
                error.error_code, error.major_code, error.minor_code, error.resource_id);
  return text;
}

Result<MallocPtr<void>> AwaitAnyReply(xcb_connection_t* connection, unsigned int sequence, const char* what) {
  const SteadyTime deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kServerMilliseconds);
  xcb_flush(connection);
  void* reply = nullptr;
  xcb_generic_error_t* error = nullptr;
  while (xcb_poll_for_reply(connection, sequence, &reply, &error) == 0) {
    if (!AwaitBytes(connection, deadline)) {
      return Error{kDisplayFailed, std::string(what) + ": the X server does not answer"};
    }
  }
  const MallocPtr<xcb_generic_error_t> owned_error(error);
  if (error != nullptr) {
    return Error{kDisplayFailed, std::string(what) + ": " + DescribeError(*error)};
  }
  if (reply == nullptr) {
    return Error{kDisplayFailed, std::string(what) + ": the connection to the X server is lost"};
  }
  return MallocPtr<void>(reply);
}

Status AwaitDone(xcb_connection_t* connection, xcb_void_cookie_t checked, const char* what) {
  // Once the answer to a later request is here, that to the checked one is known and the check waits no more.
  const auto later = AwaitReply<xcb_get_input_focus_reply_t>(connection, xcb_get_input_focus(connection), what);
  if (!later) {
    return later.error();
  }
  const MallocPtr<xcb_generic_error_t> error(xcb_request_check(connection, checked));
  if (error) {
    return Error{kDisplayFailed, std::string(what) + ": " + DescribeError(*error)};
  }
  return Ok();
}

}  // namespace sim::lumaview
