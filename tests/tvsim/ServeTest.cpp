// SPDX-License-Identifier: Apache-2.0
#include "tests/tvsim/GivenServedSession.h"

namespace sim::tvsim {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsNull;
using testing::Not;
using testing::NotNull;
using testing::StartsWith;

std::string WebSocketAddress(const std::string& address, const std::string& token) {
  return "ws" + address.substr(4) + "/ws?token=" + token;
}

TEST_F(GivenServedSession, TheScreenIsAJpegForWhoHasAToken) {
  const Page screen = Get("/screen.jpg?token=" + m_view);

  EXPECT_EQ(screen.status, 200u);
  EXPECT_EQ(screen.type, "image/jpeg");
  EXPECT_THAT(screen.body, StartsWith("\xFF\xD8\xFF"));
  EXPECT_EQ(Get("/screen.jpg", {{"Authorization", "Bearer " + m_control}}).status, 200u);
  EXPECT_EQ(Get("/screen.jpg").status, 401u);
  EXPECT_EQ(Get("/screen.jpg?token=" + m_view + "0").status, 401u);
  EXPECT_EQ(Get("/screen.jpg?token=").status, 401u);
}

TEST_F(GivenServedSession, PagesFromElsewhereAreRefused) {
  const std::string path = "/screen.jpg?token=" + m_control;

  EXPECT_EQ(Get(path, {{"Origin", "http://evil.example"}}).status, 403u);
  EXPECT_EQ(Get(path, {{"Origin", "null"}}).status, 403u);
  EXPECT_EQ(Get(path, {{"Host", "evil.example"}}).status, 421u);
  EXPECT_EQ(Get(path, {{"Origin", m_address}}).status, 200u);
  EXPECT_EQ(Get("/", {}, "POST").status, 405u);
  EXPECT_EQ(Get("/../etc/passwd").status, 404u);
  EXPECT_THAT(Get("/nowhere").policy, HasSubstr("default-src 'self'"));
}

TEST_F(GivenServedSession, AWebSocketSpeaksTheProtocolOfTheControlSocket) {
  const auto socket = Socket::Open(m_soup, WebSocketAddress(m_address, m_control));
  ASSERT_THAT(socket, NotNull());

  socket->Send(R"({"jsonrpc":"2.0","id":"one","method":"command.InitPlayer","params":{"url":"/pictures/b.jpg"}})");
  EXPECT_EQ(socket->Await("\"one\""), R"({"jsonrpc":"2.0","result":1,"id":"one"})");
  socket->Send(R"({"jsonrpc":"2.0","method":"command.StartPlayback"})");

  EXPECT_THAT(socket->Await("engine.event"), HasSubstr(R"("picture":"/pictures/b.jpg","event":10)"));
  EXPECT_THAT(socket->Await("engine.event"), HasSubstr(R"("event":8)"));
}

TEST_F(GivenServedSession, ALongMessageComesWholeInBothDirections) {
  const auto socket = Socket::Open(m_soup, WebSocketAddress(m_address, m_control));
  ASSERT_THAT(socket, NotNull());
  const std::string name(900000, 'x');

  socket->Send(R"({"jsonrpc":"2.0","id":1,"method":")" + name + "\"}");

  EXPECT_THAT(socket->Await("\"id\":1"), HasSubstr("there is no method \\\"" + name));
  socket->Send(std::string(2 << 20, 'x'));
  EXPECT_THAT(socket->Await("\"id\":null"), HasSubstr("too long"));
}

TEST_F(GivenServedSession, WhoLooksOnMayNotCommand) {
  const auto socket = Socket::Open(m_soup, WebSocketAddress(m_address, m_view));
  ASSERT_THAT(socket, NotNull());

  socket->Send(R"({"jsonrpc":"2.0","id":1,"method":"command.Stop"})");
  EXPECT_THAT(socket->Await("\"id\":1"), HasSubstr(R"("code":-32003)"));
  socket->Send(R"({"jsonrpc":"2.0","id":2,"method":"session.status"})");
  EXPECT_THAT(socket->Await("\"id\":2"), HasSubstr(R"("display")"));
}

TEST_F(GivenServedSession, AWebSocketNeedsATokenAndTheRightOrigin) {
  EXPECT_THAT(Socket::Open(m_soup, WebSocketAddress(m_address, "wrong")), IsNull());
  EXPECT_THAT(Socket::Open(m_soup, WebSocketAddress(m_address, m_control), "http://evil.example"), IsNull());
  EXPECT_THAT(Socket::Open(m_soup, WebSocketAddress(m_address, m_control), m_address.c_str()), NotNull());
}

TEST_F(GivenServedSession, ItsPicturesAreListed) {
  const auto socket = Socket::Open(m_soup, WebSocketAddress(m_address, m_view));
  ASSERT_THAT(socket, NotNull());

  socket->Send(R"({"jsonrpc":"2.0","id":1,"method":"pictures.list"})");

  EXPECT_THAT(socket->Await("\"id\":1"), HasSubstr(R"("name":"a.jpg")"));
}

TEST_F(GivenServedSession, TheAddressIsFoundBySessionAndForItsOwnerAlone) {
  EXPECT_EQ(Run({"url"}).output, m_address + "/#token=" + m_control + "\n");
  EXPECT_EQ(Run({"url", "--view"}).output, m_address + "/#token=" + m_view + "\n");
  const auto permissions = std::filesystem::status(PathOf("runtime/tvsim/tv/page")).permissions();
  EXPECT_EQ(permissions, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(GivenServedSession, InterruptingLeavesNothing) {
  const auto socket = Socket::Open(m_soup, WebSocketAddress(m_address, m_control));
  ASSERT_THAT(socket, NotNull());

  m_tvsim.Signal(SIGTERM);

  ASSERT_TRUE(m_tvsim.Wait(kGenerousTime));
  Await("the end of all processes", [this] { return Processes().empty(); });
  EXPECT_THAT(SessionFiles(), testing::IsEmpty());
  EXPECT_EQ(Get("/").status, 0u);
}

}  // namespace
}  // namespace sim::tvsim
