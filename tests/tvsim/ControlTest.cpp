// SPDX-License-Identifier: Apache-2.0
#include <sys/socket.h>
#include <sys/un.h>

#include <cstdlib>
#include <cstring>

#include "simulator/tvsim/control/CommandTable.h"
#include "simulator/tvsim/control/ControlClient.h"
#include "simulator/tvsim/control/Notifications.h"
#include "simulator/tvsim/engine/Wire.h"
#include "tests/tvsim/GivenRunningSession.h"

namespace sim::tvsim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class GivenControlSocket : public GivenRunningSession {
 protected:
  GivenControlSocket() {
    setenv("XDG_RUNTIME_DIR", PathOf("runtime").c_str(), 1);
    m_client = Connected([this](const std::string& method, const rpc::JsonText& params) {
      if (method == kEventMethod) {
        m_events.push_back(*ReadEvent(params));
      }
    });
  }

  static std::unique_ptr<ControlClient> Connected(ControlClient::OnNotification on_notification = {}) {
    auto client = ControlClient::Connect("tv", std::move(on_notification));
    EXPECT_TRUE(client) << (client ? "" : client.error().reason);
    return client ? std::move(*client) : nullptr;
  }

  std::string Call(const std::string& method, const std::string& params = "") {
    return TextOf(m_client->Call(method, {params}));
  }
  int ErrorOf(const std::string& method, const std::string& params) {
    const rpc::Answer answer = m_client->Call(method, {params});
    const auto* error = std::get_if<rpc::CallError>(&answer);
    return error != nullptr ? error->code : 0;
  }

  /// Lets notifications come until `condition` holds.
  void AwaitNotifications(const std::string& what, const std::function<bool()>& condition) {
    Await(what, [&] {
      while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
      }
      return condition();
    });
  }

  std::vector<SessionEvent> m_events;
  std::unique_ptr<ControlClient> m_client;
};

TEST_F(GivenControlSocket, ATypedCommandReachesTheEngineAsTexts) {
  EXPECT_EQ(Call("command.SetDisplayArea", R"({"x":1,"y":2,"width":3,"height":-4})"), "1");

  EXPECT_THAT(EngineLog(), HasSubstr(R"("command":"SetDisplayArea","params":["1","2","3","-4"])"));
}

TEST_F(GivenControlSocket, ParametersThatArePlainReachTheEngineAsTheyCame) {
  EXPECT_EQ(Call("engine.execute", R"({ "params": ["/pictures/c.jpg"], "command": "ChangePlayingURL" })"), "1");
  EXPECT_EQ(Call("engine.executeWithParamList", R"(["SetDisplayArea",["1","2","3","4","5"]])"), "1");
  EXPECT_EQ(Call("engine.execute", R"({"command":"StartPlayback"})"), "1");

  EXPECT_THAT(EngineLog(), HasSubstr(R"({ "params": ["/pictures/c.jpg"], "command": "ChangePlayingURL" })"));
  EXPECT_THAT(EngineLog(), HasSubstr(R"(["SetDisplayArea",["1","2","3","4","5"]])"));
  AwaitNotifications("two events", [&] { return m_events.size() == 2; });
  EXPECT_EQ(m_events[1].picture, "/pictures/c.jpg");
}

TEST_F(GivenControlSocket, ParametersThatAreNotPlainReachTheEngineWrittenAnew) {
  EXPECT_EQ(Call("engine.execute", R"({"params":["\/pictures\/\u0064.jpg"],"command":"ChangePlayingURL"})"), "1");

  EXPECT_THAT(EngineLog(), HasSubstr(R"({"command":"ChangePlayingURL","params":["/pictures/d.jpg"]})"));
}

TEST_F(GivenControlSocket, WrongParametersAreRefusedBeforeTheEngine) {
  EXPECT_EQ(ErrorOf("command.SetDisplayArea", R"({"x":1})"), rpc::kInvalidParams);
  EXPECT_EQ(ErrorOf("command.SetDisplayArea", R"({"x":"1","y":2,"width":3,"height":4})"), rpc::kInvalidParams);
  EXPECT_EQ(ErrorOf("command.Frobnicate", "{}"), rpc::kMethodNotFound);
  EXPECT_EQ(ErrorOf("engine.execute", R"({"command":"frobnicate","params":[]})"), rpc::kMethodNotFound);
  EXPECT_EQ(ErrorOf("engine.execute", R"({"command":"SetDisplayArea","params":["7"],"more":1})"), rpc::kInvalidParams);

  EXPECT_THAT(EngineLog(), testing::Not(HasSubstr(R"(SetDisplayArea","params":["1")")));
  EXPECT_THAT(EngineLog(), testing::Not(HasSubstr(R"(SetDisplayArea","params":["7")")));
}

TEST_F(GivenControlSocket, EventsAreNumberedAndNameTheirPicture) {
  EXPECT_EQ(Call("command.ChangePlayingURL", R"({"url":"/pictures/b.jpg"})"), "1");
  EXPECT_EQ(Call("command.StartPlayback"), "1");

  AwaitNotifications("two events", [&] { return m_events.size() == 2; });
  EXPECT_EQ(m_events[0].event.number, 10);
  EXPECT_EQ(m_events[1].event.number, 8);
  EXPECT_EQ(m_events[1].sequence, m_events[0].sequence + 1);
  EXPECT_EQ(m_events[1].picture, "/pictures/b.jpg");
  EXPECT_GT(m_events[1].milliseconds, 0);
}

TEST_F(GivenControlSocket, AClientThatComesLaterAsksForWhatItMissed) {
  // The slide show's own picture gave the events 1 and 2.
  const std::string missed = Call("events.since", R"({"sequence":1})");

  EXPECT_THAT(missed, HasSubstr(R"("sequence":2)"));
  EXPECT_THAT(missed, testing::Not(HasSubstr(R"("sequence":1)")));
  EXPECT_EQ(Call("events.since", R"({"sequence":2})"), R"({"events":[],"missing":0})");
}

TEST_F(GivenControlSocket, EveryClientHearsOfEveryEvent) {
  std::vector<std::string> heard;
  const auto other = Connected([&](const std::string& method, const rpc::JsonText&) { heard.push_back(method); });

  EXPECT_EQ(Call("command.StartPlayback"), "1");

  AwaitNotifications("both clients' events", [&] { return m_events.size() == 2 && heard.size() == 2; });
  EXPECT_THAT(heard, ElementsAre(kEventMethod, kEventMethod));
}

TEST_F(GivenControlSocket, TheEndOfAnEngineIsReportedWithItsLastWords) {
  std::string report;
  const auto other = Connected([&](const std::string& method, const rpc::JsonText& params) {
    report = method == kExitMethod ? params.text : report;
  });

  EXPECT_THAT(Call("command.ChangePlayingURL", R"({"url":"/pictures/crash.jpg"})"), HasSubstr("signal 11"));

  AwaitNotifications("the report", [&] { return !report.empty(); });
  EXPECT_THAT(report, HasSubstr(R"("signal":11)"));
  EXPECT_THAT(report, HasSubstr(R"("restarted":true)"));
  EXPECT_THAT(report, HasSubstr("about to crash"));
  EXPECT_EQ(Call("command.InitPlayer", R"({"url":"/pictures/b.jpg"})"), "1");
}

TEST_F(GivenControlSocket, AnEngineThatEndsOftenIsStartedAgainLater) {
  std::vector<std::string> reports;
  bool started = false;
  const auto other = Connected([&](const std::string& method, const rpc::JsonText& params) {
    if (method == kExitMethod) {
      reports.push_back(params.text);
    }
    started = started || method == kStartMethod;
  });

  for (size_t ends = 1; ends <= 6; ++ends) {
    Call("command.ChangePlayingURL", R"({"url":"/pictures/crash.jpg"})");
    AwaitNotifications("the report", [&] { return reports.size() == ends; });
  }
  EXPECT_THAT(reports[4], HasSubstr(R"("restarted":true)"));
  EXPECT_THAT(reports[5], HasSubstr(R"("restarted":false)"));
  EXPECT_THAT(Call("command.Stop"), HasSubstr("started again in some seconds"));
  AwaitNotifications("a late start", [&] { return started; });
  EXPECT_EQ(Call("command.InitPlayer", R"({"url":"/pictures/b.jpg"})"), "1");
}

TEST_F(GivenControlSocket, AnErrorNamesItsStageCommandPathAndAHint) {
  const rpc::Answer answer = m_client->Call("command.InitPlayer", {R"({"url":"/pictures/crash.jpg"})"});

  const std::string data = std::get<rpc::CallError>(answer).data.text;
  EXPECT_THAT(data, HasSubstr(R"("stage":"engine")"));
  EXPECT_THAT(data, HasSubstr(R"("command":"InitPlayer")"));
  EXPECT_THAT(data, HasSubstr(R"("path":"/pictures/crash.jpg")"));
  EXPECT_THAT(data, HasSubstr(R"("hint":"a new engine is started)"));
}

TEST_F(GivenControlSocket, FaultsAreCheckedBeforeTheyAreTaken) {
  EXPECT_EQ(Call("session.setFaults", R"({"rules":["lumaview_parse 3 fail 7","event:8 * drop"]})"), "true");
  for (const char* rule : {"", "lumaview_parse", "lumaview_parse 0 fail", "lumaview_parse 1 drop", "event:8 1 fail",
                           "event:8 1 delay 500", "x 1 fail 7 8", "x one fail"}) {
    EXPECT_EQ(ErrorOf("session.setFaults", R"({"rules":[")" + std::string(rule) + "\"]}"), -32002) << rule;
  }
}

TEST_F(GivenControlSocket, AFullDiskUnderTheKeyStoreIsTold) {
  EXPECT_EQ(Call("session.setFaults", R"({"rules":["store 2 fail"]})"), "true");

  EXPECT_EQ(Call("app.setState", R"({"state":"pause"})"), "true");
  EXPECT_THAT(Call("app.setState", R"({"state":"resume"})"), HasSubstr("no space left"));
  EXPECT_EQ(Call("app.setState", R"({"state":"resume"})"), "true");
}

TEST_F(GivenControlSocket, LogLinesComeToWhoAskedForThem) {
  std::vector<std::string> lines;
  const auto asker = Connected([&](const std::string& method, const rpc::JsonText& params) {
    if (method == kLogMethod) {
      lines.push_back(params.text);
    }
  });
  EXPECT_EQ(TextOf(asker->Call("session.followLog", {R"({"on":true})"})), "true");

  EXPECT_EQ(Call("command.Stop"), "1");

  AwaitNotifications("a line", [&] { return !lines.empty(); });
  EXPECT_THAT(lines.front(), HasSubstr("Stop"));
}

TEST_F(GivenControlSocket, ItDescribesItself) {
  const std::string document = Call("rpc.discover");

  EXPECT_THAT(document, HasSubstr(R"("openrpc":)"));
  for (const EngineCommand& command : EngineCommands()) {
    EXPECT_THAT(document, HasSubstr(std::string("\"command.") + command.name + "\""));
  }
}

TEST_F(GivenControlSocket, AClientThatDoesNotReadLosesEventsAndIsToldHowMany) {
  const UniqueFd lazy(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{AF_UNIX, {}};
  std::strcpy(address.sun_path, PathOf("runtime/tvsim/tv/control").c_str());
  ASSERT_EQ(connect(lazy.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);

  // Some hundred kilobytes wait in the socket, then a thousand events in the session, and then they get lost.
  for (int i = 0; i < 4000; ++i) {
    ASSERT_EQ(Call("command.StartPlayback"), "1");
  }
  std::string read_at_last(16 << 20, '\0');
  size_t count = 0;
  Await("the number of lost events", [&] {
    const ssize_t got = recv(lazy.Get(), &read_at_last[count], read_at_last.size() - count, MSG_DONTWAIT);
    count += got > 0 ? static_cast<size_t>(got) : 0;
    if (got < 0) {
      Call("command.StartPlayback");  // the next event brings the number
    }
    return read_at_last.find("session.lost") != std::string::npos;
  });
  EXPECT_THAT(read_at_last.substr(read_at_last.find("session.lost"), 60), HasSubstr(R"("params":{"count":)"));
}

TEST_F(GivenControlSocket, RubbishGetsAnErrorAndTheSessionLives) {
  const UniqueFd rude(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{AF_UNIX, {}};
  std::strcpy(address.sun_path, PathOf("runtime/tvsim/tv/control").c_str());
  ASSERT_EQ(connect(rude.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);

  const std::string rubbish = "no json\n" + std::string(100000, '[') + "\n{\"half\":";
  ASSERT_EQ(send(rude.Get(), rubbish.data(), rubbish.size(), 0), ssize_t(rubbish.size()));

  char reply[64] = {};
  ASSERT_GT(recv(rude.Get(), reply, sizeof reply - 1, 0), 0);
  EXPECT_THAT(std::string(reply), HasSubstr("-32700"));
  EXPECT_EQ(Call("command.Stop"), "1");
}

}  // namespace
}  // namespace sim::tvsim
