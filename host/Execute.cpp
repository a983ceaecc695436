// SPDX-License-Identifier: Apache-2.0
/// The frame around every command: the lock, the adapter, the row, the first parameter, the result.
#include <algorithm>
#include <cstdlib>

#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"
#include "host/CommandTable.h"

namespace olm {
namespace {

void LogParam1(const CommandCall& call, const char* name) {
  LOG_BLUE(call.operation, "%s string strParam1: %s \n", name, call.param1.c_str());
  LOG_BLUE(call.operation, "%s int strParam1: %d \n", name, Number(call.param1));
}

void Run(const CommandRow& row, const CommandCall& call) {
  const char* name = row.name.data();
  if (row.param1 != Param1::kUnused && !RequireParam1(call)) {
    return;
  }
  if (row.param1 == Param1::kNeededAndLogged) {
    LogParam1(call, name);
  }
  switch (row.run(call)) {
    case Outcome::kDone:
      call.engine.SetReturnValueInteger(call.result, 1);
      break;
    case Outcome::kFailed:
      LOG_RED(call.operation, "%s failed\n", name);
      call.engine.SetReturnValueInteger(call.result, 0);
      break;
    case Outcome::kAnswered:
      break;
  }
}

}  // namespace

int Number(const std::string& text) {
  return static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
}

bool RequireParam1(const CommandCall& call) {
  if (call.param1.empty()) {
    LOG_RED(call.operation, "strParam1.empty()\n");
    call.engine.SetReturnValueInteger(call.result, 0);
    return false;
  }
  return true;
}

bool CEmpEnginePicture::Execute(std::string& result, const std::string& command, const std::string& strParam1,
                                const std::string& strParam2, const std::string& strParam3,
                                const std::string& strParam4) {
  const Operation op{__FUNCTION__};
  LOG_RED(op, "[picture-emp] Execute(%s,%s,%s,%s,%s) CEmpEngineObject: 0x%x  thread: 0x%x", command.c_str(),
          strParam1.c_str(), strParam2.c_str(), strParam3.c_str(), strParam4.c_str(), Hex32(this),
          Hex32(pthread_self()));
  TRACED_LOCK(op, m_EngineMut);
  if (m_pAdapter == nullptr) {
    LOG_RED(op, "Execute m_pAdapter == NULL\n");
    SetReturnValueInteger(result, 0);
    return true;
  }
  const auto commands = CommandTable();
  const auto row = std::ranges::find(commands, command, &CommandRow::name);
  if (row == commands.end()) {
    LOG_RED(op, " %s is not supported!!! \n", command.c_str());
    return false;
  }
  Run(*row, {op, *this, *m_pAdapter, result, strParam1, strParam2, strParam3, strParam4});
  return true;
}

}  // namespace olm
