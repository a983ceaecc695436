// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/PagesAhead.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <vector>

namespace sim::lumaview::test {
namespace {

constexpr auto kPatience = std::chrono::seconds(60);

/// Fresh memory between two pages that nobody may touch.
class GivenFreshMemory : public testing::TestWithParam<PagesAhead::From> {
 protected:
  static constexpr size_t kBytes = (5 << 20) + 8192;  // not a whole number of parts

  GivenFreshMemory() {
    m_all = mmap(nullptr, kBytes + 2 * m_page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(m_all, MAP_FAILED);
    EXPECT_EQ(mprotect(Begin(), kBytes, PROT_READ | PROT_WRITE), 0);
  }
  ~GivenFreshMemory() override { munmap(m_all, kBytes + 2 * m_page); }

  std::byte* Begin() const { return static_cast<std::byte*>(m_all) + m_page; }
  std::span<std::byte> Memory() const { return {Begin(), kBytes}; }
  size_t PagesTaken() const {
    std::vector<unsigned char> pages(kBytes / m_page);
    EXPECT_EQ(mincore(Begin(), kBytes, pages.data()), 0);
    return static_cast<size_t>(std::ranges::count_if(pages, [](unsigned char page) { return (page & 1) != 0; }));
  }

  bool IsTaken(size_t at) const {
    unsigned char page = 0;
    EXPECT_EQ(mincore(Begin() + at, m_page, &page), 0);
    return (page & 1) != 0;
  }

  const size_t m_page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  void* m_all = nullptr;
};

TEST_P(GivenFreshMemory, AllPagesAreTakenAndWhatWasWrittenStays) {
  if (madvise(Begin(), m_page, MADV_POPULATE_WRITE) != 0 || PagesTaken() != 1) {
    GTEST_SKIP() << "this kernel, or what emulates it, takes no pages ahead";
  }
  PagesAhead pages;
  pages.Start(Memory(), GetParam());
  for (size_t at = 0; at < kBytes; at += kBytes / 16) {
    Begin()[at] = std::byte{42};
  }

  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (PagesTaken() < kBytes / m_page && std::chrono::steady_clock::now() < end) {
    usleep(1000);
  }

  EXPECT_EQ(PagesTaken(), kBytes / m_page);
  for (size_t at = 0; at < kBytes; at += kBytes / 16) {
    EXPECT_EQ(Begin()[at], std::byte{42}) << at;
  }
}

TEST_P(GivenFreshMemory, EndsBeforeItIsDoneAndThenTakesNoMore) {
  const bool from_begin = GetParam() == PagesAhead::From::kBegin;
  size_t fewest = kBytes / m_page;
  for (int i = 0; i < 100; ++i) {
    std::optional<PagesAhead> pages;
    pages.emplace().Start(Memory(), GetParam());
    usleep(static_cast<useconds_t>(i));
    pages.reset();
    const size_t taken = PagesTaken();
    EXPECT_TRUE(taken == 0 || IsTaken(from_begin ? 0 : kBytes - m_page)) << "it began at the other end";
    fewest = std::min(fewest, taken);
    ASSERT_EQ(madvise(Begin(), kBytes, MADV_DONTNEED), 0);
    ASSERT_EQ(PagesTaken(), 0u);
  }
  EXPECT_LT(fewest, kBytes / m_page);
}

TEST_P(GivenFreshMemory, LittleMemoryIsLeftToItsWriter) {
  PagesAhead pages;
  pages.Start(Memory().first(1 << 19), GetParam());
  usleep(20000);

  EXPECT_EQ(PagesTaken(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Ends, GivenFreshMemory, testing::Values(PagesAhead::From::kBegin, PagesAhead::From::kEnd),
                         [](const auto& test) { return test.param == PagesAhead::From::kBegin ? "Begin" : "End"; });

}  // namespace
}  // namespace sim::lumaview::test
