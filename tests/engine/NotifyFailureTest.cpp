// SPDX-License-Identifier: Apache-2.0
/// Pause and destroy never fail, and the handler knows what to do if they did.
#include "tests/engine/DisplayGivens.h"

namespace {

/// While true, the operations below do nothing and report failure.
bool operationsFail = false;

}  // namespace

// The names that the compiler gives the two operations; the linker puts these in their place.
extern "C" {
int __real__ZN3olm15CPictureAdapter8AppPauseEv(olm::CPictureAdapter* adapter);
int __wrap__ZN3olm15CPictureAdapter8AppPauseEv(olm::CPictureAdapter* adapter) {
  return operationsFail ? 0 : __real__ZN3olm15CPictureAdapter8AppPauseEv(adapter);
}
bool __real__ZN3olm17CEmpEnginePicture10AppDestroyEv(olm::CEmpEnginePicture* engine);
bool __wrap__ZN3olm17CEmpEnginePicture10AppDestroyEv(olm::CEmpEnginePicture* engine) {
  return operationsFail ? false : __real__ZN3olm17CEmpEnginePicture10AppDestroyEv(engine);
}
}

namespace {

struct GivenOperationsThatFail : kit::EngineTest {
  void SetUp() override {
    EngineTest::SetUp();
    engine = &MakeEngine();
    operationsFail = true;
    kit::Begin();
  }
  void TearDown() override {
    operationsFail = false;
    EngineTest::TearDown();
  }

  void Notify(const char* value) const {
    std::string key = "db/KestWebApp/abcd1234";
    std::string text = value;
    keynode_t node{};
    node.keyname = key.data();
    node.value.s = text.data();
    olm::CPictureAdapter::AppNotifyCB(&node, engine);
  }

  olm::CEmpEnginePicture* engine = nullptr;
};

TEST_F(GivenOperationsThatFail, PauseIsReportedWithoutLeave) {
  Notify("pause");

  kit::ExpectGolden("AppNotifyCB", "pause, when pausing fails");
}

TEST_F(GivenOperationsThatFail, DestroyIsReportedWithoutLeaveAndTheAdapterStays) {
  Notify("destroy");

  kit::ExpectGolden("AppNotifyCB", "destroy, when destroying fails");
  EXPECT_NE(engine->GetAdapter(), nullptr);
}

}  // namespace
