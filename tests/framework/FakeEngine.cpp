// SPDX-License-Identifier: Apache-2.0
/// An engine whose commands show what the framework gives it and does to it. Its life stands in the log, a plain line a
/// step.
#include <glib.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <thread>

#include "platform/olm_emp.h"
#include "platform/vconf.h"

namespace {

void Note(const char* format, const std::string& text = {}) {
  olm::COLMDebug::PrintLog(2, 0, format, text.c_str());  // NOLINT
}

long CountThreads() {
  const std::filesystem::directory_iterator threads("/proc/self/task");
  return std::distance(begin(threads), end(threads)) - THREADS_OF_EMULATOR;
}

/// As the real one: commands and "destroy" take a lock, and the end joins the worker that keys are delivered on.
class Engine : public olm::CEmpEngineBase {
 public:
  ~Engine() override {
    Note("~Engine%s");
    const std::lock_guard lock(m_mutex);
    if (m_worker.joinable()) {
      g_main_loop_quit(m_loop);
      m_worker.join();
      g_main_loop_unref(m_loop);
    }
  }

  bool Execute(std::string& result, const std::string& command, const std::string& param1, const std::string& param2,
               const std::string& param3, const std::string& param4) override {
    const std::lock_guard lock(m_mutex);
    const auto found = m_commands.find(command);
    if (found != m_commands.end()) {
      (this->*found->second)(result, {param1, param2, param3, param4});
    }
    return found != m_commands.end();
  }

  bool ExecuteWithParamList(std::string& result, const std::string& command, const olm::ParamList& params) override {
    std::string texts;
    for (unsigned int position = 0; position < params.size(); ++position) {
      texts += params[position] + "|";
    }
    SetReturnValueASCII(result, texts);
    return command == "Echo";
  }

  void Destroy() override { Note("Destroy%s"); }

 private:
  using Params = std::vector<std::string>;

  void Echo(std::string& result, const Params& params) {
    std::string texts = params[0] + "|" + params[1] + "|" + params[2] + "|" + params[3];
    SetReturnValueASCII(result, texts);
  }
  void Number(std::string& result, const Params& params) {
    SetReturnValueInteger(result, std::atoi(params[0].c_str()));
  }
  void Length(std::string& result, const Params& params) {
    SetReturnValueInteger(result, static_cast<int>(params[0].size()));
  }
  void Nothing(std::string&, const Params&) {}
  void Identity(std::string& result, const Params&) {
    const std::string identity = GetAppInfo(olm::E_APP_INFO_DESKTOP_ID) + "|" + GetAppInfo(olm::E_APP_INFO_APP_ID) +
                                 "|" + GetAppInfo(olm::E_APP_INFO_WIDGET_ID);
    SetReturnValueASCII(result, identity.c_str());
  }
  void Event(std::string& result, const Params& params) {
    SendEvent(std::atoi(params[0].c_str()), params[1], params[2]);
    SetReturnValueInteger(result, 1);
  }
  /// Sends as many events as the first parameter says, from a thread of its own, while the command runs.
  void Events(std::string& result, const Params& params) {
    std::thread sender([&] {
      for (int event = 0; event < std::atoi(params[0].c_str()); ++event) {
        SendEvent(8, std::to_string(event), params[1]);
      }
    });
    sender.join();
    Note("sent%s");
    SetReturnValueInteger(result, 1);
  }
  void Print(std::string& result, const Params& params) {
    std::puts(params[0].c_str());
    std::fflush(stdout);
    SetReturnValueInteger(result, 1);
  }
  void Environment(std::string& result, const Params& params) {
    const char* value = std::getenv(params[0].c_str());
    SetReturnValueASCII(result, value != nullptr ? value : "unset");
  }
  /// What ecore_x_init does to the signals.
  void SwallowSignals(std::string& result, const Params&) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
      std::signal(signal, [](int) {});
    }
    SetReturnValueInteger(result, 1);
  }
  /// What Xlib does when the X server has gone.
  void Exit(std::string&, const Params&) { std::exit(1); }
  void Die(std::string&, const Params&) { raise(SIGKILL); }
  void OwnsDefaultContext(std::string& result, const Params&) {
    SetReturnValueInteger(result, g_main_context_is_owner(nullptr) ? 1 : 0);
  }
  /// Follows the key in the first parameter on a worker that runs the default loop. A delivery waits for the end of the
  /// FIFO in the second.
  void Follow(std::string& result, const Params& params) {
    m_gate = params[1];
    m_loop = g_main_loop_new(nullptr, FALSE);
    m_worker = std::thread([this] { g_main_loop_run(m_loop); });
    SetReturnValueInteger(result, vconf_notify_key_changed(params[0].c_str(), OnKey, this));
  }
  static void OnKey(keynode_t* node, void* self) { static_cast<Engine*>(self)->Deliver(node->value.s); }
  void Deliver(const std::string& value) {
    SendEvent(0, "delivering", value);
    std::string line;
    std::getline(std::ifstream(m_gate), line);
    const std::lock_guard lock(m_mutex);
    Note("delivered %s", value);
  }

  const std::map<std::string, void (Engine::*)(std::string&, const Params&)> m_commands = {
      {"Echo", &Engine::Echo},
      {"Number", &Engine::Number},
      {"Length", &Engine::Length},
      {"Nothing", &Engine::Nothing},
      {"Identity", &Engine::Identity},
      {"Event", &Engine::Event},
      {"Events", &Engine::Events},
      {"Print", &Engine::Print},
      {"Environment", &Engine::Environment},
      {"SwallowSignals", &Engine::SwallowSignals},
      {"Exit", &Engine::Exit},
      {"Die", &Engine::Die},
      {"OwnsDefaultContext", &Engine::OwnsDefaultContext},
      {"Follow", &Engine::Follow},
  };
  std::mutex m_mutex;
  GMainLoop* m_loop = nullptr;
  std::thread m_worker;
  std::string m_gate;
};

class App : public olm::CEmpAppBase {
 public:
  ~App() override { Note("~App%s"); }

  using CEmpAppBase::Close;
  using CEmpAppBase::Open;
  bool Open(int handle, const std::string& appId, const std::string& widgetId, const std::string& param) override {
    Note("Open %s", std::to_string(handle) + " " + appId + " " + widgetId + param);
    return CEmpAppBase::Open(handle, appId, widgetId, param);
  }
  bool Close(int handle) override {
    Note("Close %s", std::to_string(handle));
    return CEmpAppBase::Close(handle);
  }
  void Destroy() override { Note("App::Destroy%s"); }

  olm::CEmpEngineBase* CreateEmpEngine() override {
    Note("CreateEmpEngine, threads: %s", std::to_string(CountThreads()));
    Note("ECORE_NO_SYSTEM_MODULES=%s", std::getenv("ECORE_NO_SYSTEM_MODULES"));
    return std::getenv("FAKE_NO_ENGINE") == nullptr ? new Engine : nullptr;
  }
};

}  // namespace

int main(int argc, char** argv) {
  return olm::EmpMain(argc, argv, new App);
}
