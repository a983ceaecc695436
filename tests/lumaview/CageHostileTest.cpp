// SPDX-License-Identifier: Apache-2.0
// Decoders that an attacker has taken over, through the library's exported calls. The test's folder holds the library
// and, in place of a format's module, HostileModule.cpp.
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/lumaview.h"
#include "simulator/lumaview/cage/CageFinding.h"
#include "tests/lumaview/PictureFiles.h"
#include "tests/lumaview/Processes.h"
#include "tests/lumaview/Screen.h"

namespace lumaview_test {
namespace {

using Clock = std::chrono::steady_clock;

/// A hundred times what a death takes to be told on an idle machine.
constexpr std::chrono::seconds kSoon{1};

std::string ReadLog() {
  std::ifstream file(std::getenv("OLM_LOG_FILE"));
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

class GivenTakenOverDecoder : public ::testing::Test {
 protected:
  GivenTakenOverDecoder() { Reports::Get().Clear(); }
  ~GivenTakenOverDecoder() override {
    if (picture != nullptr) {
      lumaview_destroy(&picture);
    }
  }

  /// What is tried does harm where nothing holds it.
  void SetUp() override {
    static const auto cage = sim::lumaview::ExamineCage();
    if (!cage.is_whole) {
      GTEST_SKIP() << cage.text;
    }
    lumaview_pre_loading();
  }

  static int DecodeWhenParsed(void* record, lumaview_event_type_e type, lumaview_event_result_e result) {
    Reports::Callback(record, type, result);
    lumaview_decode(static_cast<_lumaview_s*>(record), 0);
    return 0;
  }

  void Start(const std::string& path) {
    ASSERT_EQ(lumaview_create_from_url(path.c_str(), &picture), 0);
    lumaview_add_event_callback(picture, LUMAVIEW_EVENT_PARSE, DecodeWhenParsed);
    lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, Reports::Callback);
    ASSERT_EQ(lumaview_parse(picture), 0);
  }
  std::string WriteHostile(const std::string& deed) {
    using namespace std::string_literals;
    return folder.WriteBytes(deed + ".tif", "II*\0"s + deed);
  }

  void ExpectNextPicturePlays() {
    Start(folder.WritePng("next.png", 64, 48, Solid(0xFF0000)));
    EXPECT_EQ(Reports::Get().Next(), (Report{picture, LUMAVIEW_EVENT_PARSE, LUMAVIEW_RESULT_PARSE_OK}));
    EXPECT_EQ(Reports::Get().Next(), (Report{picture, LUMAVIEW_EVENT_DECODE, LUMAVIEW_RESULT_DECODE_OK}));
    EXPECT_EQ(lumaview_destroy(&picture), 0);
  }

  PictureFolder folder;
  _lumaview_s* picture = nullptr;
};

struct Try {
  const char* deed;
  const char* reason;  ///< a part of the line in the log
  bool fails_in_header = false;
};
std::ostream& operator<<(std::ostream& out, const Try& tried) {
  return out << tried.deed;
}

class GivenTakenOverDecoderThatTries : public GivenTakenOverDecoder, public ::testing::WithParamInterface<Try> {};

TEST_P(GivenTakenOverDecoderThatTries, ItsPictureFailsOnceAndTheNextOnePlays) {
  const Try& tried = GetParam();
  const std::string path = WriteHostile(tried.deed);
  const auto begin = Clock::now();

  Start(path);
  const auto parsed = tried.fails_in_header ? LUMAVIEW_RESULT_PARSE_FAILED : LUMAVIEW_RESULT_PARSE_OK;
  EXPECT_EQ(Reports::Get().Next(), (Report{picture, LUMAVIEW_EVENT_PARSE, parsed}));
  EXPECT_EQ(Reports::Get().Next(), (Report{picture, LUMAVIEW_EVENT_DECODE, LUMAVIEW_RESULT_DECODE_FAILED}));

  const auto taken = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
  RecordProperty("milliseconds", static_cast<int>(taken.count()));
  const auto limit = std::string(tried.deed) == "run-for-ever" ? std::chrono::seconds(1) : std::chrono::seconds(0);
  EXPECT_LT(taken, limit + kSoon);
  EXPECT_NE(ReadLog().find(path + ": " + tried.reason), std::string::npos) << "looked for: " << tried.reason;
  EXPECT_EQ(lumaview_destroy(&picture), 0);
  EXPECT_TRUE(Reports::Get().IsEmpty());
  ExpectNextPicturePlays();
}

constexpr char kBadCall[] = "the decoder was killed: bad system call";
constexpr char kFault[] = "the decoder was killed: segmentation fault";
constexpr char kNonsense[] = "the decoder talks nonsense";

INSTANTIATE_TEST_SUITE_P(
    Deeds, GivenTakenOverDecoderThatTries,
    ::testing::Values(
        Try{"open-for-reading", "the system refused"}, Try{"open-for-writing", kBadCall}, Try{"socket", kBadCall},
        Try{"execute", kBadCall}, Try{"trace", kBadCall}, Try{"kill-parent", kBadCall}, Try{"fork", kBadCall},
        Try{"look-up", "the system refused"}, Try{"make-code", kBadCall},
        Try{"take-memory", "no memory to decode the picture"}, Try{"write-beyond", kFault},
        Try{"run-for-ever", "decoding took longer than 1 s"}, Try{"abort", "the decoder was killed: aborted"},
        Try{"leave", "the decoder ended without a result"}, Try{"talk-nonsense", kNonsense},
        Try{"too-few-rows", "the picture ends before its last row"}, Try{"lie-about-size", "the picture", true},
        Try{"grow-behind-the-check", "the picture is too large", true}, Try{"crash-in-header", kFault, true}),
    [](const auto& test) {
      std::string name = test.param.deed;
      std::erase(name, '-');
      return name;
    });

TEST_F(GivenTakenOverDecoder, KeepingTheMemoryOfItsPictureGainsItNothing) {
  Start(WriteHostile("keep-the-frame"));

  EXPECT_EQ(Reports::Get().Next(), (Report{picture, LUMAVIEW_EVENT_PARSE, LUMAVIEW_RESULT_PARSE_OK}));
  EXPECT_EQ(Reports::Get().Next(), (Report{picture, LUMAVIEW_EVENT_DECODE, LUMAVIEW_RESULT_DECODE_OK}));
  EXPECT_EQ(lumaview_destroy(&picture), 0);
  ExpectNextPicturePlays();
}

TEST_F(GivenTakenOverDecoder, DestroyEndsItsProcess) {
  Start(WriteHostile("run-for-ever"));
  EXPECT_EQ(Reports::Get().Next(), (Report{picture, LUMAVIEW_EVENT_PARSE, LUMAVIEW_RESULT_PARSE_OK}));
  ASSERT_TRUE(Eventually([] { return CountRunning("lumaview-decode") > 0; }));
  const auto begin = Clock::now();

  EXPECT_EQ(lumaview_destroy(&picture), 0);

  EXPECT_TRUE(Eventually([] { return CountRunning("lumaview-decode") == 0; }));
  EXPECT_LT(Clock::now() - begin, kSoon);
}

TEST_F(GivenTakenOverDecoder, NextPicturePlaysWhenTheNurseryWasKilled) {
  ExpectNextPicturePlays();
  // A child has its name when it has lived for a moment.
  ASSERT_TRUE(Eventually([] { return FindDescendants("lumaview-nurser").size() == 1; }));
  const pid_t nursery = FindDescendants("lumaview-nurser").front();

  kill(nursery, SIGKILL);
  ASSERT_TRUE(Eventually([nursery] { return !IsAlive(nursery); }));

  ExpectNextPicturePlays();
}

TEST_F(GivenTakenOverDecoder, AllProcessesEndWithTheEngine) {
  prctl(PR_SET_CHILD_SUBREAPER, 1);  // its children come here when it is gone
  const pid_t engine = fork();
  if (engine == 0) {
    // The copy has no threads, and starts everything again.
    execl("/proc/self/exe", "engine", "--gtest_filter=GivenEngine.DISABLED_WaitsToBeKilled",
          "--gtest_also_run_disabled_tests", nullptr);
    _exit(1);
  }
  ASSERT_TRUE(Eventually([&] { return FindDescendants("lumaview-decode", engine).size() == 1; }));
  const auto all = FindDescendants("", engine);

  kill(engine, SIGKILL);
  waitpid(engine, nullptr, 0);

  EXPECT_EQ(all.size(), 3u);
  for (const pid_t pid : all) {
    EXPECT_TRUE(Eventually([pid] { return !IsAlive(pid); })) << pid;
    waitpid(pid, nullptr, 0);
  }
  prctl(PR_SET_CHILD_SUBREAPER, 0);
}

TEST(GivenEngine, DISABLED_WaitsToBeKilled) {
  lumaview_pre_loading();
  for (;;) {
    pause();
  }
}

}  // namespace
}  // namespace lumaview_test
