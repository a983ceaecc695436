// SPDX-License-Identifier: Apache-2.0
/// How the calls of the engine's channel are written.
#ifndef SIMULATOR_TVSIM_ENGINE_WIRE_H
#define SIMULATOR_TVSIM_ENGINE_WIRE_H

#include <string>
#include <vector>

#include "simulator/rpc/Answer.h"

namespace sim::tvsim {

/// The application that the engine works for.
struct Application {
  std::string id = "org.example.slideshow";
  std::string widget = "slideshow.tvsim";
};

/// The key that announces the application's state: its widget id up to the first dot, in a fixed folder.
std::string StateKeyOf(const Application& application);

/// Of "app.open".
rpc::JsonText ParamsOf(const Application& application);

/// Of "engine.execute" and "engine.executeWithParamList". Texts are bytes: file names need not be UTF-8.
rpc::JsonText ParamsOf(const std::string& command, const std::vector<std::string>& params);

/// An answer for people: the text of a result without its quotes, or "error -32601: ...".
std::string TextOf(const rpc::Answer& answer);

/// Whether the command answered the integer 1, which means success.
bool Succeeded(const rpc::Answer& answer);

}  // namespace sim::tvsim

#endif
