// SPDX-License-Identifier: Apache-2.0
#include "simulator/vconf/include/Store.h"

#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <fstream>

#include "tests/vconf/SessionFixture.h"

namespace sim::vconf {
namespace {

class GivenStore : public SessionFixture {
 protected:
  std::unique_ptr<Store> m_store = OpenStore();
};

TEST_F(GivenStore, NewestValueIsRead) {
  EXPECT_EQ(Get(*m_store, "state"), std::nullopt);
  Set(*m_store, "state", "pause");
  Set(*m_store, "other", "x");
  Set(*m_store, "state", "resume");
  Set(*m_store, "empty", "");
  EXPECT_EQ(Get(*m_store, "state"), "resume");
  EXPECT_EQ(Get(*m_store, "empty"), "");
}

TEST_F(GivenStore, AnotherProcessReadsTheValue) {
  Set(*m_store, "state", "pause");
  EXPECT_EQ(ExitStatus(Fork([&] { return Get(*OpenStore(), "state") == "pause"; })), 0);
}

TEST_F(GivenStore, ManyProcessesAddTheirRecordsToEachOthers) {
  std::vector<pid_t> writers;
  for (int writer = 0; writer < 4; ++writer) {
    writers.push_back(Fork([&, writer] {
      const auto store = Store::Open(m_folder);
      for (int i = 0; i < 250; ++i) {
        if (!(*store)->Set("key" + std::to_string(writer), std::to_string(i))) {
          return false;
        }
      }
      return true;
    }));
  }
  for (const pid_t writer : writers) {
    EXPECT_EQ(ExitStatus(writer), 0);
  }
  for (int writer = 0; writer < 4; ++writer) {
    EXPECT_EQ(Get(*m_store, "key" + std::to_string(writer)), "249");
  }
}

TEST_F(GivenStore, KeysAndValuesHaveLimits) {
  EXPECT_EQ(m_store->Set("", "x").error().code, EINVAL);
  EXPECT_EQ(m_store->Set(std::string(Store::kMaxKey + 1, 'k'), "x").error().code, EMSGSIZE);
  EXPECT_EQ(m_store->Set("key", std::string(Store::kMaxValue + 1, 'v')).error().code, EMSGSIZE);
  EXPECT_EQ(m_store->Set("key", std::string("a\0b", 3)).error().code, EINVAL);
  Set(*m_store, std::string(Store::kMaxKey, 'k'), std::string(Store::kMaxValue, 'v'));
  EXPECT_EQ(Get(*m_store, std::string(Store::kMaxKey, 'k')), std::string(Store::kMaxValue, 'v'));
}

TEST_F(GivenStore, FullStoreRefusesAndKeepsWhatItHas) {
  const std::string value(Store::kMaxValue, 'v');
  Status set = Ok();
  while (set) {
    set = m_store->Set("key", value);
  }
  EXPECT_EQ(set.error().code, EFBIG);
  EXPECT_LE(std::filesystem::file_size(File()), Store::kMaxFile);
  EXPECT_EQ(Get(*m_store, "key"), value);
}

TEST_F(GivenStore, NewSessionKeepsTheNewestValuesOnly) {
  for (int i = 0; i < 1000; ++i) {
    Set(*m_store, "a", std::to_string(i));
    Set(*m_store, "b", std::to_string(-i));
  }
  const auto before = std::filesystem::file_size(File());
  const auto created = Store::Create(m_folder);
  ASSERT_TRUE(created);
  EXPECT_LT(std::filesystem::file_size(File()), before / 100);
  EXPECT_EQ(Get(**created, "a"), "999");
  EXPECT_EQ(Get(**created, "b"), "-999");
  Set(**created, "a", "next");
  EXPECT_EQ(Get(*OpenStore(), "a"), "next");
}

TEST_F(GivenStore, NothingButTheStoreIsLeftInTheFolder) {
  ASSERT_TRUE(Store::Create(m_folder));
  const auto files = std::filesystem::directory_iterator(m_folder);
  EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

TEST_F(GivenStore, UnfinishedRecordIsNeverSeenAndOverwritten) {
  Set(*m_store, "state", "pause");
  std::ofstream(File(), std::ios::app | std::ios::binary) << "half of a record of a writer that was killed";
  EXPECT_EQ(Get(*m_store, "state"), "pause");
  Set(*m_store, "state", "resume");
  EXPECT_EQ(Get(*OpenStore(), "state"), "resume");
}

TEST_F(GivenStore, DamagedFileIsRefusedWithItsName) {
  std::ofstream(File(), std::ios::binary) << std::string(100, 'x');
  const auto store = Store::Open(m_folder);
  ASSERT_FALSE(store);
  EXPECT_NE(store.error().reason.find(File().string()), std::string::npos);
  std::filesystem::resize_file(File(), 0);
  EXPECT_FALSE(Store::Open(m_folder));
}

TEST_F(GivenStore, MissingFolderIsAnError) {
  EXPECT_EQ(Store::Open(m_folder / "nowhere").error().code, ENOENT);
  EXPECT_EQ(Store::Create(m_folder / "nowhere").error().code, ENOENT);
}

TEST_F(GivenStore, FullDiskIsReportedToWhoAskedAndLeavesTheStoreWhole) {
  Set(*m_store, "state", "pause");
  const auto limited = [&] {
    const rlimit limit{.rlim_cur = std::filesystem::file_size(File()) + 10, .rlim_max = RLIM_INFINITY};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    const Status set = m_store->Set("state", "a value that has no room");
    return !set && set.error().code == EFBIG && Get(*m_store, "state") == "pause";
  };
  EXPECT_EQ(ExitStatus(Fork(limited)), 0);
  EXPECT_EQ(Get(*m_store, "state"), "pause");
  Set(*m_store, "state", "resume");
  EXPECT_EQ(Get(*m_store, "state"), "resume");
}

TEST_F(GivenStore, ReadOnlyStoreIsReadAndRefusesToBeSet) {
  Set(*m_store, "state", "pause");
  std::filesystem::permissions(File(), std::filesystem::perms(0444));
  std::filesystem::permissions(m_folder, std::filesystem::perms(0555));
  const auto unprivileged = [&] {
    if (geteuid() == 0 && seteuid(65534) != 0) {  // root may write everything
      return false;
    }
    const auto store = OpenStore();
    const Status set = store->Set("state", "resume");
    return Get(*store, "state") == "pause" && !set && set.error().code == EBADF;
  };
  EXPECT_EQ(ExitStatus(Fork(unprivileged)), 0);
  std::filesystem::permissions(m_folder, std::filesystem::perms(0755));
}

TEST_F(GivenStore, SessionFolderComesFromTheEnvironment) {
  EXPECT_EQ(*Store::SessionFolder(), m_folder);
  unsetenv("VCONF_SESSION");
  EXPECT_FALSE(Store::SessionFolder());
}

}  // namespace
}  // namespace sim::vconf
