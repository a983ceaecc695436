// SPDX-License-Identifier: Apache-2.0
/// The stored path: whole up to 499 characters; from 500 on the process ends at the copy.
#include "tests/engine/AdapterGiven.h"

namespace {

constexpr size_t kLongest = 499;

std::string PathOf(size_t length) {
  return "/" + std::string(length - 1, 'p');
}

struct GivenLongPath : GivenAdapter {
  void ExpectStored(const std::string& path) const {
    EXPECT_EQ(std::string(adapter->m_cURL, kLongest), path);
    EXPECT_EQ(adapter->m_cURL[kLongest], '\0');
  }
};

TEST_F(GivenLongPath, InitPlayerStores499CharactersWhole) {
  const std::string path = PathOf(kLongest);
  EXPECT_EQ(InitPlayer(path.c_str()), 1);
  ExpectStored(path);
}

TEST_F(GivenLongPath, InitPlayerCountsWithoutTheFilePrefix) {
  const std::string path = PathOf(kLongest);
  EXPECT_EQ(InitPlayer(("file://" + path).c_str()), 1);
  ExpectStored(path);
}

TEST_F(GivenLongPath, PlayStores499CharactersWhole) {
  const std::string path = PathOf(kLongest);
  EXPECT_EQ(Play(path.c_str()), 1);
  ExpectStored(path);
}

class GivenLongPathDeathTest : public GivenLongPath {
 protected:
  GivenLongPathDeathTest() { GTEST_FLAG_SET(death_test_style, DEATH_TEST_STYLE); }
};

TEST_F(GivenLongPathDeathTest, InitPlayerEndsTheProcessAt500) {
  EXPECT_EXIT(adapter->InitPlayer(PathOf(500).c_str()), testing::KilledBySignal(SIGABRT), "buffer overflow detected");
}

TEST_F(GivenLongPathDeathTest, InitPlayerEndsTheProcessFarAbove500) {
  EXPECT_EXIT(adapter->InitPlayer(PathOf(5000).c_str()), testing::KilledBySignal(SIGABRT), "buffer overflow detected");
}

TEST_F(GivenLongPathDeathTest, PlayEndsTheProcessAt500AndCountsThePrefix) {
  const std::string path = "file://" + PathOf(493);
  EXPECT_EXIT(adapter->Play(path.c_str(), 0), testing::KilledBySignal(SIGABRT), "buffer overflow detected");
}

}  // namespace
