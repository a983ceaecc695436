// SPDX-License-Identifier: Apache-2.0
/// A main context of the test's own, and descriptors to talk over.
#ifndef TESTS_RPC_LOOPFIXTURE_H
#define TESTS_RPC_LOOPFIXTURE_H

#include <fcntl.h>
#include <glib.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include "simulator/base/CHandle.h"
#include "simulator/base/UniqueFd.h"
#include "simulator/rpc/Transport.h"

namespace sim::rpc {

inline std::pair<UniqueFd, UniqueFd> MakeSockets() {
  int ends[2];
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

/// The end to read from, then the end to write to.
inline std::pair<UniqueFd, UniqueFd> MakePipe() {
  int ends[2];
  EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
  return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

inline void WriteAll(const UniqueFd& fd, std::string_view bytes) {
  ASSERT_EQ(write(fd.Get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

/// What can be read without waiting.
inline std::string ReadAvailable(const UniqueFd& fd) {
  fcntl(fd.Get(), F_SETFL, O_NONBLOCK);
  std::string text;
  char bytes[65536];
  for (ssize_t count; (count = read(fd.Get(), bytes, sizeof bytes)) > 0;) {
    text.append(bytes, static_cast<size_t>(count));
  }
  return text;
}

class LoopFixture : public testing::Test {
 protected:
  GMainContext* Context() const { return m_context.get(); }

  std::shared_ptr<Transport> Connect(UniqueFd socket, TransportLimits limits = {}) {
    return *Transport::Create(Context(), std::move(socket), limits);
  }

  /// Runs the context until `condition` holds; a failure after a minute.
  template <typename Condition>
  void RunUntil(Condition condition) {
    const CHandle<GSource, g_source_unref> alarm(g_timeout_source_new(10));
    g_source_set_callback(
        alarm.get(), [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
    g_source_attach(alarm.get(), Context());
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition() && std::chrono::steady_clock::now() < deadline) {
      g_main_context_iteration(Context(), TRUE);
    }
    g_source_destroy(alarm.get());
    EXPECT_TRUE(condition()) << "still not so after a minute";
  }

 private:
  const CHandle<GMainContext, g_main_context_unref> m_context{g_main_context_new()};
};

}  // namespace sim::rpc

#endif
