// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/command/Command.h"
#include "simulator/tvsim/serve/WebServer.h"
#include "simulator/tvsim/session/RuntimeFolder.h"
#include "simulator/tvsim/slideshow/PictureList.h"

namespace sim::tvsim {
namespace {

struct ServeOptions {
  SessionOptions session;
  std::vector<std::string> arguments;
  std::vector<std::string> origins;
  int port = 0;
};

int ServeUntilInterrupted(const OpenSession& session, LoopbackListener listener, WebServerOptions options) {
  const auto server = WebServer::Start(std::move(listener), std::move(options), session.control);
  if (!server) {
    return Fail(kNotReady, server.error().reason);
  }
  const PageAddress address = (*server)->Address();
  if (const Status written = WritePageAddress(session.folder, address); !written) {
    return Fail(kNotReady, written.error().reason);
  }
  Say(address.control);
  Say("To look on only: " + address.view);
  session.television.RunUntilInterrupted();
  return kDone;
}

int Serve(const ServeOptions& options) {
  std::vector<std::string> pictures;
  if (!options.arguments.empty()) {
    auto listed = ListPictures(options.arguments);
    if (!listed) {
      return Fail(kNotReady, listed.error().reason);
    }
    pictures = std::move(*listed);
  }
  const Result<Tokens> tokens = Tokens::Make();
  // Here and not in the session: that may be in a network namespace of its own, where no browser comes.
  Result<LoopbackListener> listener = LoopbackListener::Open(options.port);
  if (!tokens || !listener) {
    return Fail(kNotReady, tokens ? listener.error().reason : tokens.error().reason);
  }
  return RunInSession(options.session, [&](const OpenSession& session) {
    session.control.Context().pictures = pictures;
    return ServeUntilInterrupted(session, std::move(*listener), {options.origins, *tokens});
  });
}

struct UrlOptions {
  std::string session = "tv";
  bool view = false;
};

int PrintUrl(const UrlOptions& options) {
  const Result<std::string> folder = RuntimeFolder::Find(options.session);
  const Result<PageAddress> address = folder ? ReadPageAddress(*folder) : folder.error();
  if (!address) {
    return Fail(kNotReady, address.error().reason);
  }
  Say(options.view ? address->view : address->control);
  return kDone;
}

}  // namespace

std::function<int()> ConfigureServe(CLI::App& app) {
  auto options = std::make_shared<ServeOptions>();
  app.add_option("PICTURES", options->arguments, "Pictures, or folders of pictures, to choose from in the browser");
  app.add_option("--port", options->port, "On 127.0.0.1; 0 for any that is free")
      ->capture_default_str()
      ->check(CLI::Range(0, 65535));
  app.add_option("--allow-origin", options->origins, "A page from elsewhere that may connect, http://host:port");
  AddSessionOptions(app, options->session);
  return [options] { return Serve(*options); };
}

std::function<int()> ConfigureUrl(CLI::App& app) {
  auto options = std::make_shared<UrlOptions>();
  AddSessionName(app, options->session);
  app.add_flag("--view", options->view, "The address that only lets look on");
  return [options] { return PrintUrl(*options); };
}

}  // namespace sim::tvsim
