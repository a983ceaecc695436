// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_TVSIM_GIVENRUNNINGSESSION_H
#define TESTS_TVSIM_GIVENRUNNINGSESSION_H

#include <gmock/gmock.h>

#include "tests/tvsim/TvsimFixture.h"

namespace sim::tvsim {

/// A slide show of one picture that stands for an hour, with an engine that shows nothing.
class GivenRunningSession : public TvsimFixture {
 protected:
  static constexpr std::chrono::milliseconds kGenerousTime{30000};

  GivenRunningSession() : m_tvsim(Start({"run", "--interval=3600", PictureNamed("a.jpg")})) {
    Await("the first picture", [this] { return ContentsOf(PathOf("output")).find("shown in") != std::string::npos; });
  }

  void ExpectNothingLeft() {
    Await("the end of all processes", [this] { return Processes().empty(); });
    EXPECT_THAT(SessionFiles(), testing::IsEmpty());
  }

  ChildProcess m_tvsim;
};

}  // namespace sim::tvsim

#endif
