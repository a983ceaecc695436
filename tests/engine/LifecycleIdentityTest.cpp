// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/DisplayGivens.h"

namespace {

struct GivenIdentity : given::FreshAdapter {
  void SetAppID(int task, const char* app, const char* widget) {
    kit::Begin();
    adapter->SetAppID(task, app, widget);
  }
  int Register() {
    kit::Begin();
    return kit::Run([&] { return adapter->RegisterVconfKeys(); });
  }
  int Unregister() {
    kit::Begin();
    return kit::Run([&] { return adapter->UnregisterVconfKeys(); });
  }
  void ExpectIdentity(int task, const char* app, const char* name, const char* shortName) {
    EXPECT_EQ(adapter->m_taskID, task);
    EXPECT_EQ(adapter->m_strAppID, app);
    EXPECT_EQ(adapter->m_strAppName, name);
    EXPECT_EQ(adapter->m_strAppShortName, shortName);
  }
  void ExpectKey(const char* key, bool registered) {
    EXPECT_EQ(adapter->m_strVconfKey, key);
    EXPECT_EQ(adapter->m_bVconfRegistered, registered);
  }
};

TEST_F(GivenIdentity, SetAppIDAlwaysTakesTheNewValues) {
  SetAppID(0, "app", "abcd1234.Viewer");
  kit::ExpectGolden("SetAppID", "first time");
  ExpectIdentity(0, "app", "abcd1234.Viewer", "abcd1234");

  SetAppID(5, "app", "a.b.c");
  kit::ExpectGolden("SetAppID", "again without a task");
  ExpectIdentity(5, "app", "a.b.c", "a");

  SetAppID(0, "other", "whole");
  kit::ExpectGolden("SetAppID", "again with a task");
  ExpectIdentity(0, "other", "whole", "whole");

  SetAppID(0, "", "");
  kit::ExpectGolden("SetAppID", "empty texts");
  ExpectIdentity(0, "", "", "");
}

TEST_F(GivenIdentity, NameThatBeginsWithADotIsEmpty) {
  SetAppID(0, "app", ".hidden");

  ExpectIdentity(0, "app", ".hidden", "");
}

TEST_F(GivenIdentity, SetAppIDRegistersNothing) {
  SetAppID(0, "app", "abcd1234.Viewer");

  EXPECT_EQ(kit::CallCount("vconf_notify_key_changed"), 0U);
  ExpectKey("", false);
}

TEST_F(GivenIdentity, RegisterVconfKeysFollowsTheKeyOfTheName) {
  adapter->SetAppID(0, "app", "abcd1234.Viewer");

  EXPECT_EQ(Register(), 1);

  kit::ExpectGolden("RegisterVconfKeys", "first time");
  ExpectKey("db/KestWebApp/abcd1234", true);
}

TEST_F(GivenIdentity, RegisterVconfKeysTakesEffectOnce) {
  adapter->SetAppID(0, "app", "abcd1234.Viewer");
  Register();

  EXPECT_EQ(Register(), 1);
  kit::ExpectGolden("RegisterVconfKeys", "again");

  adapter->SetAppID(0, "app", "other.Viewer");
  EXPECT_EQ(Register(), 1);
  kit::ExpectGolden("RegisterVconfKeys", "again under another name");
  ExpectKey("db/KestWebApp/other", true);
}

TEST_F(GivenIdentity, RegisterVconfKeysTakesTheNameOfTheDay) {
  adapter->SetAppID(0, "app", "other.Viewer");
  Register();
  Unregister();

  EXPECT_EQ(Register(), 1);

  kit::ExpectGolden("RegisterVconfKeys", "after it was let go");
  ExpectKey("db/KestWebApp/other", true);
}

TEST_F(GivenIdentity, WithoutANameTheKeyIsTheFolder) {
  EXPECT_EQ(Register(), 1);

  kit::ExpectGolden("RegisterVconfKeys", "no name");
  ExpectKey("db/KestWebApp/", true);
}

TEST_F(GivenIdentity, RegisterVconfKeysFailsWithTheStore) {
  adapter->SetAppID(0, "app", "a.b.c");
  kit::FailNext("vconf_notify_key_changed", -3);

  EXPECT_EQ(Register(), 0);

  kit::ExpectGolden("RegisterVconfKeys", "refused");
  ExpectKey("db/KestWebApp/a", false);
}

TEST_F(GivenIdentity, UnregisterVconfKeysDoesNothingWithoutASubscription) {
  EXPECT_EQ(Unregister(), 1);

  kit::ExpectGolden("UnregisterVconfKeys", "no subscription");
}

TEST_F(GivenIdentity, UnregisterVconfKeysEndsTheSubscription) {
  adapter->SetAppID(0, "app", "abcd1234.Viewer");
  Register();

  EXPECT_EQ(Unregister(), 1);
  kit::ExpectGolden("UnregisterVconfKeys", "subscription in force");
  ExpectKey("db/KestWebApp/abcd1234", false);

  EXPECT_EQ(Unregister(), 1);
  kit::ExpectGolden("UnregisterVconfKeys", "again");
}

TEST_F(GivenIdentity, UnregisterVconfKeysNamesTheKeyAsItWasRebuilt) {
  adapter->SetAppID(0, "app", "abcd1234.Viewer");
  Register();
  adapter->SetAppID(0, "app", "other.Viewer");
  Register();

  EXPECT_EQ(Unregister(), 1);

  kit::ExpectGolden("UnregisterVconfKeys", "renamed meanwhile");
}

TEST_F(GivenIdentity, UnregisterVconfKeysDoesNotLookAtTheAnswer) {
  adapter->SetAppID(0, "app", "x");
  Register();
  kit::FailNext("vconf_ignore_key_changed", -3);

  EXPECT_EQ(Unregister(), 1);

  kit::ExpectGolden("UnregisterVconfKeys", "refused");
  ExpectKey("db/KestWebApp/x", false);
}

}  // namespace
