// SPDX-License-Identifier: Apache-2.0
/// Answers of the X server, waited for with a limit: a server that hangs must not hang the library.
#ifndef SIMULATOR_LUMAVIEW_SCREEN_REPLY_H
#define SIMULATOR_LUMAVIEW_SCREEN_REPLY_H

#include <xcb/xcb.h>

#include "simulator/base/CHandle.h"
#include "simulator/base/Result.h"

namespace sim::lumaview {

/// A server answers in well under a millisecond; one that needs two seconds is as good as gone.
inline constexpr int kServerMilliseconds = 2000;

/// Waits for the reply to request `sequence`. `what` names the request in the error (kDisplayFailed).
Result<MallocPtr<void>> AwaitAnyReply(xcb_connection_t* connection, unsigned int sequence, const char* what);

template <typename Reply, typename Cookie>
Result<MallocPtr<Reply>> AwaitReply(xcb_connection_t* connection, Cookie cookie, const char* what) {
  auto reply = AwaitAnyReply(connection, cookie.sequence, what);
  if (!reply) {
    return reply.error();
  }
  return MallocPtr<Reply>(static_cast<Reply*>(reply->release()));
}

/// Waits until the server has carried out a request that was sent as "checked".
Status AwaitDone(xcb_connection_t* connection, xcb_void_cookie_t checked, const char* what);

/// "BadWindow (3) for request 1.0, resource 0x400001".
std::string DescribeError(const xcb_generic_error_t& error);

}  // namespace sim::lumaview

#endif
