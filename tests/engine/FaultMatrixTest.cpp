// SPDX-License-Identifier: Apache-2.0
/// Every call of the engine to the outside fails, one at a time, at every place from which it is called. Nothing
/// crashes, nothing hangs; results, log and fields are those of the expected sequences.
///
/// `g_main_loop_new` is left out: the real one never returns null, it ends the process.
#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string>

#include "tests/engine/FaultScenarios.h"

namespace {

/// What the failing call returns, where that is a code. Of all codes this is the one that every operation looks at.
constexpr int kCode = -2;

constexpr std::array<const char*, 39> kCallsThatCanFail = {"XCreateGC",
                                                           "XCreateImage",
                                                           "XCreateSimpleWindow",
                                                           "XInitThreads",
                                                           "XInternAtom",
                                                           "XOpenDisplay",
                                                           "calloc",
                                                           "ecore_x_init",
                                                           "lumaview_add_event_callback",
                                                           "lumaview_create_from_url",
                                                           "lumaview_create_transition_effect",
                                                           "lumaview_decode",
                                                           "lumaview_destroy",
                                                           "lumaview_destroy_display",
                                                           "lumaview_destroy_transition_effect",
                                                           "lumaview_get_picture_type",
                                                           "lumaview_get_size",
                                                           "lumaview_get_thumbnail",
                                                           "lumaview_get_transition_effect_list",
                                                           "lumaview_get_zoom_ratio",
                                                           "lumaview_init_display",
                                                           "lumaview_is_transition_effect_available",
                                                           "lumaview_parse",
                                                           "lumaview_pre_loading",
                                                           "lumaview_run_transition_effect",
                                                           "lumaview_set_3d_mode",
                                                           "lumaview_set_display_lock",
                                                           "lumaview_set_display_param",
                                                           "lumaview_set_effect_type",
                                                           "lumaview_set_effect_window_handle",
                                                           "lumaview_set_window",
                                                           "lumaview_set_zoom_move",
                                                           "malloc",
                                                           "pthread_create",
                                                           "pthread_detach",
                                                           "pthread_join",
                                                           "pthread_mutex_init",
                                                           "vconf_ignore_key_changed",
                                                           "vconf_notify_key_changed"};

/// Calls that the engine makes and that have no failure it could see.
const std::set<std::string> kCallsThatCannotFail = {"XChangeProperty",
                                                    "XChangeWindowAttributes",
                                                    "XCloseDisplay",
                                                    "XDestroyImage",
                                                    "XDestroyWindow",
                                                    "XFillRectangle",
                                                    "XFlush",
                                                    "XFreeGC",
                                                    "XLowerWindow",
                                                    "XMapWindow",
                                                    "XMoveResizeWindow",
                                                    "XNextEvent",
                                                    "XPutImage",
                                                    "XSelectInput",
                                                    "XSetForeground",
                                                    "XSync",
                                                    "free",
                                                    "ecore_x_window_focus_get",
                                                    "g_main_loop_quit",
                                                    "pthread_mutex_destroy"};

class FaultMatrix : public kit::EngineTest, public testing::WithParamInterface<faults::Scenario> {
 protected:
  void SetUp() override {
    ExpectViolations();  // some failures lead there by rule; the expected sequences show them
    EngineTest::SetUp();
  }

  void Live() {
    kit::ResetWorld();
    kit::ResetProcessWideState();
    LiveWith([] {});
  }
  void LiveWithFault(const std::string& call, size_t nth) {
    kit::ResetWorld();
    kit::ResetProcessWideState();
    LiveWith([&] { kit::FailAt(call, nth, kCode); });
  }

  /// How often the plain life makes each call that can fail.
  std::map<std::string, size_t> CountPlaces() {
    Live();
    std::map<std::string, size_t> places;
    for (const char* call : kCallsThatCanFail) places[call] = kit::CallCount(call);
    return places;
  }

  std::string File() const { return std::string("Fault-") + GetParam().name; }

 private:
  template <typename Prepare>
  void LiveWith(Prepare prepare) {
    prepare();
    faults::LiveThrough(GetParam());
    ASSERT_TRUE(kit::AwaitWorkers()) << "a worker does not return";
    EXPECT_EQ(kit::PendingFailures(), 0U) << "the call was not made so often";
  }
};

TEST_P(FaultMatrix, EveryFailureAtEveryPlaceIsAsExpected) {
  for (const auto& [call, places] : CountPlaces()) {
    for (size_t nth = 1; nth <= places; ++nth) {
      const std::string path = call + " " + std::to_string(nth) + " fails";
      SCOPED_TRACE(path);
      LiveWithFault(call, nth);
      kit::ExpectGolden(File(), path);
    }
  }
  // What a failure leaves open was looked at with its sequence.
  kit::ResetWorld();
}

TEST_P(FaultMatrix, NothingFailsInThePlainLife) {
  Live();

  kit::ExpectGolden(File(), "plain");
  kit::ResetWorld();
}

TEST_P(FaultMatrix, NoCallIsForgotten) {
  Live();

  for (const std::string& entry : kit::Entries()) {
    const size_t start = entry.starts_with("call ") ? 5 : entry.starts_with("x ") ? 2 : std::string::npos;
    if (start == std::string::npos) continue;
    const std::string call = entry.substr(start, entry.find('(') - start);
    const bool canFail = std::find(kCallsThatCanFail.begin(), kCallsThatCanFail.end(), call) != kCallsThatCanFail.end();
    EXPECT_TRUE(canFail || kCallsThatCannotFail.contains(call)) << call;
  }
  kit::ResetWorld();
}

INSTANTIATE_TEST_SUITE_P(Lives, FaultMatrix,
                         testing::Values(faults::Playing(), faults::Effects(), faults::Lifecycle(), faults::Views()),
                         [](const auto& life) { return std::string(life.param.name); });

/// Together the lives make every call that can fail; one that none of them makes would be tested by none.
struct AllFaultScenarios : kit::EngineTest {};

TEST_F(AllFaultScenarios, MakeEveryCallThatCanFail) {
  std::set<std::string> missing(kCallsThatCanFail.begin(), kCallsThatCanFail.end());
  for (const auto& scenario : {faults::Playing(), faults::Effects(), faults::Lifecycle(), faults::Views()}) {
    kit::ResetWorld();
    kit::ResetProcessWideState();
    faults::LiveThrough(scenario);
    ASSERT_TRUE(kit::AwaitWorkers());
    std::erase_if(missing, [](const std::string& call) { return kit::CallCount(call) != 0; });
  }
  EXPECT_EQ(missing, std::set<std::string>());
}

}  // namespace
