// SPDX-License-Identifier: Apache-2.0
/// A session folder of the test's own, other processes, and a deadline for what they do.
#ifndef TESTS_VCONF_SESSIONFIXTURE_H
#define TESTS_VCONF_SESSIONFIXTURE_H

#include <glib.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "simulator/vconf/include/Store.h"

namespace sim::vconf {

class SessionFixture : public testing::Test {
 protected:
  SessionFixture() {
    std::string path = testing::TempDir() + "vconf-XXXXXX";
    m_folder = mkdtemp(path.data());
    setenv("VCONF_SESSION", m_folder.c_str(), 1);
  }
  ~SessionFixture() override { std::filesystem::remove_all(m_folder); }

  std::filesystem::path File() const { return m_folder / "store.log"; }

  std::unique_ptr<Store> OpenStore() const {
    auto store = Store::Open(m_folder);
    EXPECT_TRUE(store) << store.error().reason;
    return store ? std::move(*store) : nullptr;
  }

  static void Set(Store& store, std::string_view key, std::string_view value) {
    const Status set = store.Set(key, value);
    EXPECT_TRUE(set) << set.error().reason;
  }

  static std::optional<std::string> Get(const Store& store, std::string_view key) {
    const auto value = store.Get(key);
    EXPECT_TRUE(value);
    return value ? *value : std::nullopt;
  }

  /// Runs `work` in a process of its own, which ends with 0 when `work` returns true.
  template <typename Work>
  static pid_t Fork(Work work) {
    const pid_t pid = fork();
    if (pid == 0) {
      _exit(work() ? 0 : 1);
    }
    return pid;
  }

  static int ExitStatus(pid_t pid) {
    int status = 0;
    EXPECT_EQ(waitpid(pid, &status, 0), pid);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

  /// Runs `context` (null: the default one) until `condition` holds; a failure after a minute.
  template <typename Condition>
  static void RunUntil(GMainContext* context, Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition() && std::chrono::steady_clock::now() < deadline) {
      if (!g_main_context_iteration(context, FALSE)) {
        g_usleep(100);
      }
    }
    EXPECT_TRUE(condition()) << "still not so after a minute";
  }

  std::filesystem::path m_folder;
};

}  // namespace sim::vconf

#endif
