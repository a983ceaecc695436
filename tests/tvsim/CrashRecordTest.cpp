// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/CrashRecord.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/tvsim/TvsimFixture.h"

namespace sim::tvsim {
namespace {

namespace fs = std::filesystem;

class CrashRecordTest : public testing::Test {
 protected:
  CrashRecordTest() {
    std::string name = testing::TempDir() + "crash-XXXXXX";
    m_folder = mkdtemp(name.data());
    setenv("XDG_STATE_HOME", m_folder.c_str(), 1);
  }
  ~CrashRecordTest() override {
    unsetenv("XDG_STATE_HOME");
    fs::remove_all(m_folder);
  }

  fs::path m_folder;
};

TEST_F(CrashRecordTest, IsAFileForPeople) {
  const auto file = WriteCrashRecord({"signal 11 (Segmentation fault)", "Play(/a.jpg)", "/a.jpg", {"one", "two"}});
  ASSERT_TRUE(file);
  EXPECT_EQ(ContentsOf(*file),
            "end:     signal 11 (Segmentation fault)\ncommand: Play(/a.jpg)\npicture: /a.jpg\n\none\ntwo\n");
}

TEST_F(CrashRecordTest, IsForItsOwnerAlone) {
  const auto file = WriteCrashRecord({"exit status 1", "", "", {}});
  ASSERT_TRUE(file);
  struct stat status {};
  ASSERT_EQ(stat(file->c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(CrashRecordTest, TheNewestIsFound) {
  EXPECT_FALSE(NewestCrashRecord());
  ASSERT_TRUE(WriteCrashRecord({"exit status 1", "", "", {}}));
  const auto second = WriteCrashRecord({"exit status 2", "", "", {}});
  ASSERT_TRUE(second);
  EXPECT_EQ(NewestCrashRecord(), *second);
}

TEST_F(CrashRecordTest, OnlyTheLastOnesAreKept) {
  std::ofstream(m_folder / "other") << "stays";
  for (size_t crash = 0; crash < kKeptCrashRecords + 3; ++crash) {
    ASSERT_TRUE(WriteCrashRecord({"exit status " + std::to_string(crash), "", "", {}}));
  }
  const fs::directory_iterator files(m_folder / "tvsim");
  EXPECT_EQ(static_cast<size_t>(std::distance(begin(files), end(files))), kKeptCrashRecords);
  EXPECT_THAT(ContentsOf(*NewestCrashRecord()), testing::StartsWith("end:     exit status 12\n"));
  EXPECT_TRUE(fs::exists(m_folder / "other"));
}

TEST_F(CrashRecordTest, AFolderThatCannotBeMadeIsNamed) {
  std::ofstream(m_folder / "tvsim") << "a file in its place";
  const auto file = WriteCrashRecord({"exit status 1", "", "", {}});
  ASSERT_FALSE(file);
  EXPECT_THAT(file.error().reason, testing::HasSubstr((m_folder / "tvsim").string()));
}

}  // namespace
}  // namespace sim::tvsim
