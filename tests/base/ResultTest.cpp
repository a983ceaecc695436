// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/Result.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <memory>

#include "simulator/base/UniqueFd.h"

namespace sim {
namespace {

Result<int> Halve(int number) {
  if (number % 2 != 0) {
    return Error{number, "the number is odd"};
  }
  return number / 2;
}

Status CheckEven(int number) {
  const Result<int> half = Halve(number);
  return half ? Ok() : half.error();
}

Status CheckBoth(int first, int second) {
  SIM_TRY(CheckEven(first));
  SIM_TRY(CheckEven(second));
  return Ok();
}

TEST(Result, IsAValueOrAnError) {
  EXPECT_EQ(*Halve(4), 2);
  EXPECT_FALSE(Halve(3));
  EXPECT_EQ(Halve(3).error().code, 3);
  EXPECT_EQ(Halve(3).error().reason, "the number is odd");
}

TEST(Result, FirstErrorLeavesTheFunction) {
  EXPECT_TRUE(CheckBoth(2, 4));
  EXPECT_EQ(CheckBoth(2, 5).error().code, 5);
  EXPECT_EQ(CheckBoth(3, 5).error().code, 3);
}

TEST(Result, CarriesWhatCanOnlyBeMoved) {
  Result<std::unique_ptr<int>> result = std::make_unique<int>(7);
  const std::unique_ptr<int> value = std::move(*result);
  EXPECT_EQ(*value, 7);
}

bool IsOpen(int fd) {
  return fcntl(fd, F_GETFD) >= 0;
}

TEST(UniqueFd, ClosesWhatItOwns) {
  const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
  {
    UniqueFd first(fd);
    const UniqueFd second = std::move(first);
    EXPECT_FALSE(first);
    EXPECT_EQ(second.Get(), fd);
    EXPECT_TRUE(IsOpen(fd));
  }
  EXPECT_FALSE(IsOpen(fd));
}

TEST(UniqueFd, ReleasedDescriptorStaysOpen) {
  UniqueFd owner(open("/dev/null", O_RDONLY | O_CLOEXEC));
  const int fd = owner.Release();
  EXPECT_FALSE(owner);
  EXPECT_TRUE(IsOpen(fd));
  UniqueFd(fd).Reset();
  EXPECT_FALSE(IsOpen(fd));
}

}  // namespace
}  // namespace sim
