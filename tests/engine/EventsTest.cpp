// SPDX-License-Identifier: Apache-2.0
/// From the library's reports to the application's events.
#include "tests/engine/AdapterGiven.h"

namespace {

using olm::CPictureAdapter;

lumaview_event_type_e Type(int type) {
  return static_cast<lumaview_event_type_e>(type);
}
lumaview_event_result_e Result(int result) {
  return static_cast<lumaview_event_result_e>(result);
}

TEST(EventNumbers, AreTheApplications) {
  EXPECT_EQ(int{olm::RENDER_ERROR}, 6);
  EXPECT_EQ(int{olm::RENDER_COMPLETED}, 8);
  EXPECT_EQ(int{olm::DECODE_COMPLETED}, 10);
  EXPECT_EQ(int{olm::PHOTO_PLAYER_RESULT_SUCCESS}, 12);
  EXPECT_EQ(int{olm::PHOTO_PLAYER_RESULT_ERROR}, 13);
}

/// An engine whose adapter plays a picture.
struct GivenPlayingEngine : kit::EngineTest {
  void SetUp() override {
    EngineTest::SetUp();
    engine = &MakeEngine();
    adapter = &Adapter(*engine);
    ASSERT_EQ(adapter->InitPlayer("/pictures/a.jpg"), 1);
    ASSERT_EQ(adapter->StartPlayback(0), 1);
    kit::Begin();
  }
  int PostMessage(int event, int result = 12) {
    return kit::Run([&] {
      return adapter->PostMessage(static_cast<olm::E_PHOTO_PLAYER_EVENT>(event),
                                  static_cast<olm::E_PHOTO_PLAYER_RESULT>(result));
    });
  }

  olm::CEmpEnginePicture* engine = nullptr;
  CPictureAdapter* adapter = nullptr;
};

struct GivenEvent : GivenPlayingEngine, testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(GivenEvent, PostMessageSendsExactlyTheThreeThatAreSent) {
  const auto [event, answer] = GetParam();
  EXPECT_EQ(PostMessage(event), answer);
  kit::ExpectGolden("PostMessage", std::to_string(event));
}

INSTANTIATE_TEST_SUITE_P(Events, GivenEvent,
                         testing::Values(std::pair(8, 1), std::pair(10, 1), std::pair(6, 1), std::pair(0, 1),
                                         std::pair(7, 1), std::pair(11, 1), std::pair(12, 0), std::pair(-1, 0)));

TEST_F(GivenPlayingEngine, TheOtherEventsAreNotSent) {
  for (const int event : {1, 2, 3, 4, 5, 9}) EXPECT_EQ(PostMessage(event), 1);
  EXPECT_EQ(kit::Count("event "), 0U);
}

TEST_F(GivenPlayingEngine, PostMessageSendsNoResult) {
  EXPECT_EQ(PostMessage(8, 13), 1);
  kit::ExpectGolden("PostMessage", "8");
}

TEST_F(GivenAdapter, PostMessageWithoutEngineSendsNothing) {
  kit::Run([&] { return adapter->PostMessage(olm::RENDER_COMPLETED, olm::PHOTO_PLAYER_RESULT_SUCCESS); });
  kit::ExpectGolden("PostMessage", "no engine");
}

TEST_F(GivenAdapter, PostMessageTestsTheEventBeforeTheEngine) {
  kit::Run([&] {
    return adapter->PostMessage(static_cast<olm::E_PHOTO_PLAYER_EVENT>(12), olm::PHOTO_PLAYER_RESULT_SUCCESS);
  });
  kit::ExpectGolden("PostMessage", "12");
}

TEST_F(GivenPlayingEngine, AParsedPictureIsDecoded) {
  EXPECT_TRUE(kit::FireParse(0));
  kit::ExpectGolden("OnParseEventCB", "parsed");
}

TEST_F(GivenPlayingEngine, ADecodingThatCannotStartGivesNoEvent) {
  kit::FailNext("lumaview_add_event_callback", 4);
  kit::FailNext("lumaview_decode", -2);
  EXPECT_TRUE(kit::FireParse(0));
  kit::ExpectGolden("OnParseEventCB", "parsed, decoding cannot be started");
}

TEST_F(GivenPlayingEngine, TheEventTypeIsLoggedOnly) {
  CPictureAdapter::OnParseEventCB(adapter->m_pPicture, Type(77), Result(0));
  kit::ExpectGolden("OnParseEventCB", "an event type that nobody tests");
}

TEST_F(GivenPlayingEngine, AFailedParsingGivesTheErrorEventAlone) {
  EXPECT_TRUE(kit::FireParse(26));
  kit::ExpectGolden("OnParseEventCB", "parsing failed");
}

TEST_F(GivenPlayingEngine, ADecodedPictureGivesBothEvents) {
  ASSERT_TRUE(kit::FireParse(0));
  kit::Begin();
  EXPECT_TRUE(kit::FireDecode(3));
  kit::ExpectGolden("OnDecodeEventCB", "decoded");
}

TEST_F(GivenPlayingEngine, AFailedDecodingGivesTheErrorEventAlone) {
  ASSERT_TRUE(kit::FireParse(0));
  kit::Begin();
  EXPECT_TRUE(kit::FireDecode(4));
  kit::ExpectGolden("OnDecodeEventCB", "decoding failed");
  kit::Begin();
  EXPECT_TRUE(kit::FireDecode(0));
  kit::ExpectGolden("OnDecodeEventCB", "0 is no success here");
}

TEST_F(GivenPlayingEngine, AnEffectGivesBothEventsHoweverItEnded) {
  ASSERT_EQ(adapter->EffectShow(static_cast<effect_type_e>(1)), 1);
  kit::Begin();
  EXPECT_TRUE(kit::FireEffect(8));
  kit::ExpectGolden("OnEffectEventCB", "shown");
  kit::Begin();
  EXPECT_TRUE(kit::FireEffect(9));
  kit::ExpectGolden("OnEffectEventCB", "failed, and reported as shown");
}

TEST_F(GivenPlayingAdapter, WithoutAnEngineTheReportsAreOnlyLogged) {
  EXPECT_TRUE(kit::FireParse(1));
  kit::ExpectGolden("OnParseEventCB", "parsing failed, no engine");
  ASSERT_TRUE(kit::FireParse(0));
  kit::Begin();
  EXPECT_TRUE(kit::FireDecode(3));
  kit::ExpectGolden("OnDecodeEventCB", "decoded, no engine");
}

TEST_F(GivenPlayingEngine, AReportWithoutARecordIsDropped) {
  CPictureAdapter::OnParseEventCB(nullptr, Type(0), Result(0));
  kit::ExpectGolden("OnParseEventCB", "null record");
  kit::Begin();
  CPictureAdapter::OnDecodeEventCB(nullptr, Type(1), Result(3));
  kit::ExpectGolden("OnDecodeEventCB", "null record");
  kit::Begin();
  CPictureAdapter::OnEffectEventCB(nullptr, Type(3), Result(8));
  kit::ExpectGolden("OnEffectEventCB", "null record");
}

TEST_F(GivenPlayingEngine, AReportOfARecordWithoutAdapterIsDropped) {
  _lumaview_s picture{nullptr, 1, 2, 3};
  _lumaview_effect_s effect{1, 2, nullptr};
  CPictureAdapter::OnParseEventCB(&picture, Type(0), Result(1));
  kit::ExpectGolden("OnParseEventCB", "record without an adapter");
  kit::Begin();
  CPictureAdapter::OnDecodeEventCB(&picture, Type(1), Result(3));
  kit::ExpectGolden("OnDecodeEventCB", "record without an adapter");
  kit::Begin();
  CPictureAdapter::OnEffectEventCB(&effect, Type(3), Result(8));
  kit::ExpectGolden("OnEffectEventCB", "record without an adapter");
}

TEST_F(GivenPlayingAdapter, DecodePictureRegistersItsCallbackAndStarts) {
  adapter->DecodePicture(adapter->m_pPicture);
  kit::ExpectGolden("DecodePicture", "decoding starts");
}

TEST_F(GivenPlayingAdapter, DecodePictureSaysItselfWhoseThePictureIs) {
  adapter->m_pPicture->user_data = nullptr;
  adapter->DecodePicture(adapter->m_pPicture);
  kit::ExpectGolden("DecodePicture", "decoding starts");
}

TEST_F(GivenPlayingAdapter, DecodePictureDropsNull) {
  adapter->DecodePicture(nullptr);
  kit::ExpectGolden("DecodePicture", "null picture");
}

TEST_F(GivenPlayingAdapter, DecodePictureOnlyLogsARefusal) {
  kit::FailNext("lumaview_add_event_callback", 4);
  kit::FailNext("lumaview_decode", -2);
  adapter->DecodePicture(adapter->m_pPicture);
  kit::ExpectGolden("DecodePicture", "decoding cannot be started");
}

int NeverCalled(olm::E_PHOTO_PLAYER_EVENT, olm::E_PHOTO_PLAYER_RESULT, void*) {
  ADD_FAILURE() << "the adapter calls the stored function";
  return 0;
}

TEST_F(GivenPlayingAdapter, AddEventCallbackStoresAndNothingCalls) {
  EXPECT_EQ(kit::Run([&] { return adapter->AddEventCallback(&NeverCalled); }), 1);
  kit::ExpectGolden("AddEventCallback", "any callback");
  EXPECT_EQ(adapter->m_pEventCallback, &NeverCalled);
  kit::FireParse(0);
  kit::FireDecode(3);

  EXPECT_EQ(adapter->AddEventCallback(nullptr), 1);
  EXPECT_EQ(adapter->m_pEventCallback, nullptr);
}

picture_type_e Probe(CPictureAdapter& adapter, std::string url) {
  return kit::Run([&] { return adapter.ParsePictureType(url.data()); });
}

using GivenProbe = GivenAdapter;

TEST_F(GivenProbe, ParsePictureTypeReadsTheTypeOfAFile) {
  kit::world().pictureType = 1;
  EXPECT_EQ(Probe(*adapter, "/pictures/a.png"), 1);
  kit::ExpectGolden("ParsePictureType", "a picture, no window");
}

TEST_F(GivenPlayingAdapter, ParsePictureTypeLeavesThePictureAlone) {
  const _lumaview_s* shown = adapter->m_pPicture;
  kit::world().pictureType = 1;
  EXPECT_EQ(Probe(*adapter, "/pictures/a.png"), 1);
  kit::ExpectGolden("ParsePictureType", "beside a picture in the window");
  EXPECT_EQ(adapter->m_pPicture, shown);
  EXPECT_STREQ(adapter->m_cURL, "/pictures/a.jpg");
}

TEST_F(GivenProbe, ParsePictureTypeAnswers5WithoutAPicture) {
  kit::FailNext("lumaview_create_from_url", -4);
  kit::FailNext("lumaview_set_window", -1);
  kit::FailNext("lumaview_parse", -1);
  kit::FailNext("lumaview_destroy", -1);
  EXPECT_EQ(Probe(*adapter, ""), 5);
  kit::ExpectGolden("ParsePictureType", "no picture can be made");
}

TEST_F(GivenProbe, ParsePictureTypeAnswers5WithoutAType) {
  kit::FailNext("lumaview_set_window", 3);
  kit::FailNext("lumaview_get_picture_type", -2);
  EXPECT_EQ(Probe(*adapter, "/pictures/a.png"), 5);
  kit::ExpectGolden("ParsePictureType", "the type cannot be read");
}

}  // namespace
