// SPDX-License-Identifier: Apache-2.0
/// Every picture of the set has the outcome that its list says: in a process of its own, so that a crash, the time and
/// the memory are that picture's.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <set>
#include <thread>

#include "tests/lumaview/PictureSet.h"

namespace sim::lumaview::test {
namespace {

using Kind = ShownPicture::Kind;

#if defined(__SANITIZE_ADDRESS__)
constexpr double kSlowness = 12;  // instrumented code, and its shadow memory counts as growth
constexpr bool kMeasuresMemory = false;
#elif defined(__arm__)
constexpr double kSlowness = 10;  // emulated wherever these tests are built for it
constexpr bool kMeasuresMemory = true;
#else
constexpr double kSlowness = 1;
constexpr bool kMeasuresMemory = true;
#endif

constexpr double kMostSeconds = 3;
constexpr double kMostSecondsOfLarge = 10;
constexpr long kLargePixels = 50'000'000;
constexpr long kMostKibibytes = 512 * 1024;
constexpr long kMostKibibytesBesideTheCage = 128 * 1024;

/// Where the list is not followed, and why.
struct Exception {
  const char* path;
  const char* reason;
};
constexpr Exception kExceptions[] = {
    {"odd/png/wuffs-apng-skip-idat.png", "the list counts the still picture that is not part of the animation"},
};

bool IsException(const std::string& path) {
  for (const Exception& exception : kExceptions) {
    if (path == exception.path) {
      return true;
    }
  }
  return false;
}

/// Whether the list's number of frames counts what the format calls frames.
bool CountsFrames(const std::string& path) {
  static const std::set<std::string> formats = {"gif", "png", "webp", "avif"};
  return formats.contains(path.substr(path.rfind('.') + 1));
}

std::string CheckShown(const ListedPicture& listed, const ShownPicture& shown) {
  if (listed.expect == "refuse") {
    return "shown, although every other decoder refuses it";
  }
  const bool says_size = listed.expect == "show" || listed.expect == "show-or-refuse";
  if (says_size && (shown.width != listed.width || shown.height != listed.height)) {
    return "of another size than " + std::to_string(listed.width) + " x " + std::to_string(listed.height);
  }
  if (says_size && listed.frames > 0 && CountsFrames(listed.path) && shown.frames != listed.frames) {
    return "with another number of frames than " + std::to_string(listed.frames);
  }
  return "";
}

bool IsCaged() {
  const char* cage = std::getenv("LUMAVIEW_CAGE");
  return cage != nullptr && std::string_view(cage) == "on";
}

/// What is wrong with the outcome; empty = nothing.
std::string Check(const ListedPicture& listed, const ShownPicture& shown) {
  const bool is_large = static_cast<long>(listed.width) * listed.height > kLargePixels;
  if (shown.kind == Kind::kCrashed) {
    return "crashed";
  }
  if (shown.kind == Kind::kHung) {
    return "never ended";
  }
  if (shown.cpu_seconds > (is_large ? kMostSecondsOfLarge : kMostSeconds) * kSlowness) {
    return "took too long";
  }
  if (kMeasuresMemory && shown.kibibytes > kMostKibibytes) {
    return "took too much memory";
  }
  if (kMeasuresMemory && IsCaged() && shown.own_kibibytes > kMostKibibytesBesideTheCage) {
    return "took too much memory outside the cage";
  }
  if (shown.kind == Kind::kRefused) {
    return listed.expect == "show" ? "refused" : "";
  }
  return CheckShown(listed, shown);
}

class GivenPicturesOf : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (kSlowness > 1) {
      setenv("LUMAVIEW_LIMITS", "seconds=100", 1);
    }
    m_pictures = ReadManifest(PicturesFolder(), GetParam());
    if (m_pictures.empty()) {
      GTEST_SKIP() << "no such pictures in " << PicturesFolder();
    }
  }

  /// On every core: pictures are independent.
  void ShowAll() {
    std::atomic<size_t> next{0};
    std::vector<std::jthread> workers;
    for (unsigned int i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i) {
      workers.emplace_back([&] {
        for (size_t n = next++; n < m_pictures.size(); n = next++) {
          Show(m_pictures[n]);
        }
      });
    }
  }

  std::vector<ListedPicture> m_pictures;
  std::vector<std::string> m_complaints;

 private:
  void Show(const ListedPicture& listed) {
    const ShownPicture shown = ShowInProcess(PicturesFolder() + "/" + listed.path, 1920, 1080);
    const std::string complaint = Check(listed, shown);
    if (!complaint.empty() && !IsException(listed.path)) {
      const std::lock_guard lock(m_mutex);
      m_complaints.push_back(listed.path + " (" + listed.expect + "): " + complaint + "; " +
                             std::to_string(shown.cpu_seconds) + " s, " + shown.output);
    }
  }

  std::mutex m_mutex;
};

TEST_P(GivenPicturesOf, EachHasItsExpectedOutcome) {
  ShowAll();

  for (const std::string& complaint : m_complaints) {
    ADD_FAILURE() << complaint;
  }
  RecordProperty("pictures", static_cast<int>(m_pictures.size()));
  std::printf("%zu pictures of %s, %zu not as listed\n", m_pictures.size(), PicturesFolder().c_str(),
              m_complaints.size());
}

/// The set that the build makes stands in for a larger one, so it has to have something of every format.
TEST_P(GivenPicturesOf, SmallSetHasARightAndARefusedOne) {
  const std::vector<ListedPicture> pictures = ReadManifest(SMALL_PICTURES_FOLDER, GetParam());
  for (const char* expect : {"show", "refuse"}) {
    EXPECT_TRUE(std::any_of(pictures.begin(), pictures.end(),
                            [expect](const ListedPicture& picture) { return picture.expect == expect; }))
        << "no picture of the kind \"" << expect << "\"";
  }
}

INSTANTIATE_TEST_SUITE_P(Pictures, GivenPicturesOf,
                         ::testing::Values("jpeg", "png", "gif", "webp", "tiff", "bmp", "heif", "avif", "jxl", "pnm",
                                           "qoi", "tga", "other"),
                         [](const auto& test) { return std::string(test.param); });

}  // namespace
}  // namespace sim::lumaview::test
