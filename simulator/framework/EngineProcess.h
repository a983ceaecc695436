// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_FRAMEWORK_ENGINEPROCESS_H
#define SIMULATOR_FRAMEWORK_ENGINEPROCESS_H

#include <glib.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/olm_emp.h"
#include "simulator/base/CHandle.h"
#include "simulator/base/Log.h"
#include "simulator/base/Result.h"
#include "simulator/framework/EndSignalSource.h"
#include "simulator/rpc/Binder.h"
#include "simulator/rpc/MessageHandler.h"
#include "simulator/rpc/Transport.h"

namespace sim::framework {

/// One engine and its application, from the first command to the orderly end. Starts no thread and opens no display;
/// everything in here runs on the thread that calls `Run`, on a main context of its own. The default context belongs
/// to the engine's worker.
class EngineProcess {
 public:
  /// Takes `app` over.
  explicit EngineProcess(std::unique_ptr<olm::CEmpAppBase> app);
  ~EngineProcess();
  EngineProcess(const EngineProcess&) = delete;
  EngineProcess& operator=(const EngineProcess&) = delete;

  /// Opens the channel and asks the application object for its engine.
  Status Start();

  /// Runs commands, one after the other, until the channel ends or a signal asks for the end.
  void Run();

  /// Ends key deliveries, the application and the engine, in this order, and sends what is still to be sent.
  void End();

 private:
  struct OpenParams {
    std::string applicationId;
    std::string widgetId;
  };
  struct CommandParams {
    std::string command;
    std::vector<std::string> params;
  };

  void Quit(LogLevel level, const std::string& reason);
  std::vector<rpc::MethodEntry> Methods();
  rpc::Answer OpenApp(const OpenParams& params);
  bool CloseApp();
  rpc::Answer Execute(CommandParams params);
  rpc::Answer ExecuteWithParamList(const CommandParams& params);
  rpc::Answer FinishCommand(const std::string& command, bool supported, const std::string& result);

  const CHandle<GMainContext, g_main_context_unref> m_context;
  const CHandle<GMainLoop, g_main_loop_unref> m_loop;
  EndSignalSource m_signals;
  const rpc::Binder m_binder;
  const rpc::MessageHandler m_handler;
  std::shared_ptr<rpc::Transport> m_channel;
  const std::unique_ptr<olm::CEmpAppBase> m_app;
  std::unique_ptr<olm::CEmpEngineBase> m_engine;
  int m_handle = 0;  ///< of the application that was opened last
  bool m_isOpen = false;
};

}  // namespace sim::framework

#endif
